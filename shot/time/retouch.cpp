// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/retouch.h"

#include "shot/solve/judge.h"
#include "shot/solve/rebase.h"
#include "shot/time/between.h"
#include "shot/time/fill.h"
#include "shot/time/smooth.h"
#include "shot/time/untouched.h"

namespace cornerpin {

namespace {

// Gives a frame what was done to it, relative to the same frame.
void take(FrameResult& frame, const FrameResult& retouched) {
  if (!retouched.untouched) return;
  keepUntouched(frame);
  frame.h = retouched.h;
  frame.smoothed = retouched.smoothed;
  if (!retouched.filled) return;
  frame.filled = true;
  frame.figures.quads = retouched.figures.quads;
}

void begin(Phase phase, const Progress& progress) {
  if (progress) progress(phase, 0, 0);
}

}  // namespace

void retouch(ShotResult& result, const RetouchOptions& options, const Progress& progress) {
  if (options.smooth || options.fill) {
    ShotResult relative = result;
    rebase(relative, result.baseFrame);
    if (options.smooth) {
      begin(Phase::Smoothing, progress);
      smooth(relative, *options.smooth, result.referenceFrame);
    }
    if (options.fill) {
      begin(Phase::Filling, progress);
      fill(relative);
    }
    rebase(relative, result.referenceFrame);
    for (std::size_t i = 0; i < result.frames.size(); ++i) {
      take(result.frames[i], relative.frames[i]);
    }
    judgeFigures(result);
    result.smooth = options.smooth;
    result.fill = options.fill;
  }
  if (!options.at.empty()) addBetween(result, options.at);
}

}  // namespace cornerpin
