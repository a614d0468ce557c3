// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_COMPARE_TWO_RESULTS_H
#define TESTS_SHOT_COMPARE_TWO_RESULTS_H

#include "shot/solve/result.h"

// A shot whose surface moves right by a pixel from frame to frame; its quad is 100 pixels wide.
inline cornerpin::ShotResult steadyShot(int first, int last, int base) {
  using namespace cornerpin;
  ShotResult result;
  result.baseFrame = result.referenceFrame = base;
  result.loss = Loss::Tukey;
  result.quads = {{"tracks", {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}}}};
  result.baseCentre = {50, 50};
  result.provenance.options.emplace();
  for (int number = first; number <= last; ++number) {
    FrameResult frame;
    frame.frame = number;
    frame.h = {{{1, 0, double(number - base)}, {0, 1, 0}, {0, 0, 1}}};
    frame.verdict.status = number == base ? Status::Base : Status::Solved;
    frame.figures.quads.resize(1);
    result.frames.push_back(frame);
  }
  return result;
}

#endif
