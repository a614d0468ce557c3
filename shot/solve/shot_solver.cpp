// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/frame_fit.h"
#include "shot/solve/surface_map.h"
#include "shot/trust/final_weights.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;
constexpr double kVisible = 1e-3;  // of the tracks' extent: a pixel of 1,000

ShotUnits unitsOf(const Points& surface, Units units) {
  const Similarity fileToFit = Similarity::fitting(surface);
  return {fileToFit, units == Units::Fit ? fileToFit : Similarity{}};
}

// The least move of a corner that people see.
double visibleIn(const Box& surface) {
  return kVisible * std::max(surface.high.x - surface.low.x, surface.high.y - surface.low.y);
}

std::vector<NamedQuad> quadsOf(const SolveOptions& options, const Points& surface) {
  if (!options.quads.empty()) return options.quads;
  return {{"tracks", cornersOf(boxAround(surface))}};
}

class ShotSolver {
 public:
  ShotSolver(const Tracks& tracks, const SolveOptions& options, const Progress& progress)
      : tracks_(tracks),
        options_(options),
        progress_(progress),
        base_(tracks, options.base ? *options.base : chooseBaseFrame(tracks)),
        surface_(surfacePlaces(base_.places(), options.loss)),
        units_(unitsOf(surface_, options.units)),
        fitter_(units_, options),
        map_(base_, tracks.names.size()),
        worst_(visibleIn(boxAround(surface_))) {
    result_.baseFrame = base_.frame();
    result_.baseTracks = static_cast<int>(base_.places().size());
    result_.leftOut = static_cast<int>(tracks.names.size() - base_.places().size());
    result_.units = options.units;
    result_.loss = options.loss;
    result_.seed = options.seed;
    result_.baseCentre = units_.fileToFit.centre;
    result_.quads = quadsOf(options, surface_);
    result_.frames.resize(static_cast<std::size_t>(tracks.frameCount()));
    for (const NamedQuad& quad : result_.quads) quads_.push_back(quad.corners);
  }

  ShotResult solve() {
    addBaseFrame();
    sweep(+1, tracks_.lastFrame());
    sweep(-1, tracks_.firstFrame());
    addTrust(+1, tracks_.lastFrame());
    addTrust(-1, tracks_.firstFrame());
    for (const TrackStretch& stretch : worst_.worst(kListed)) {
      result_.worst.push_back({tracks_.names[static_cast<std::size_t>(stretch.track)], stretch});
    }
    return std::move(result_);
  }

 private:
  FrameResult& resultOf(int frame) {
    return result_.frames[static_cast<std::size_t>(frame - tracks_.firstFrame())];
  }

  void addBaseFrame() {
    FrameResult& result = resultOf(base_.frame());
    result.frame = base_.frame();
    result.verdict.status = Status::Base;
    result.tracks = result_.baseTracks;
    result.rms = 0.0;
    result.h = kIdentity;
    result.figures = baseFrameFigures(quads_.size());
    report();
  }

  Sweep startOfSweep() const {
    return {toLibrary(kIdentity), kIdentity, false, SweepMemory(tracks_.names.size()),
            squareAround(surface_)};
  }

  // From the base frame to the last one, each frame from its neighbour.
  void sweep(int step, int last) {
    Sweep sweep = startOfSweep();
    for (int frame = base_.frame(); frame != last;) {
      frame += step;
      const Matches file = map_.matchesIn(tracks_, frame);
      const FrameFit fit = fitter_.fit(file, sweep);
      FrameResult& result = resultOf(frame);
      result.frame = frame;
      result.h = fit.h;
      result.verdict = fit.verdict;
      result.tracks = static_cast<int>(file.size());
      result.rms = rmsResidual(file, fit.h);
      if (fit.robust.found) addRobust(fit, result);
      if (fit.verdict.status == Status::Solved) addSolved(file, fit, sweep.memory, result);
      report();
    }
  }

  // What the robust fit says of the frame's errors, where the frame was fitted.
  void addRobust(const FrameFit& fit, FrameResult& result) const {
    if (fit.verdict.status == Status::Held) return;
    result.sigma = units_.lengthFromFit(fit.robust.sigma);
    result.good = static_cast<int>(fit.robust.goodCount);
  }

  void addSolved(const Matches& file, const FrameFit& fit, SweepMemory& memory,
                 FrameResult& result) const {
    if (options_.loss == Loss::None) {
      result.good = result.tracks;
      result.goodRms = result.rms;
      return;
    }
    result.loss = fit.robust.loss;
    result.width = units_.lengthFromFit(fit.robust.width);
    result.goodRms = rmsResidual(file.subset(fit.robust.good), result.h);
    memory.rememberGood(file, fit.robust.good);
  }

  // Whether the frame's fit told good tracks from bad ones.
  bool toldBad(const FrameResult& result) const {
    return options_.loss != Loss::None && std::isfinite(result.sigma) &&
           static_cast<std::size_t>(result.tracks) >= kFewestForRobust;
  }

  // Of the frames of a sweep, in its order.
  void addTrust(int step, int last) {
    for (int frame = base_.frame(); frame != last;) {
      const Homography& neighbour = resultOf(frame).h;
      frame += step;
      addTrust(map_.matchesIn(tracks_, frame), neighbour, resultOf(frame));
    }
  }

  // The figures of trust: of the frame about its good tracks alone, of each track with the weight
  // that the fit left it.
  void addTrust(const Matches& file, const Homography& neighbour, FrameResult& result) {
    const Point front = result_.baseCentre;
    FittedFrame fitted{result.verdict.model, kIdentity, result.h, file.weights()};
    if (result.verdict.onTop) fitted.kept = neighbour;
    if (toldBad(result)) fitted.weights = goodWeights(file, result.h, front, result.sigma);
    result.figures = figuresOf(file, fitted, quads_, front);
    if (toldBad(result) && result.verdict.status == Status::Solved) {
      fitted.weights = lossWeights(file, result.h, front, result.loss, result.width);
    }
    std::vector<TrackInfluence> influences = influencesOf(file, fitted, quads_.front());
    worst_.addFrame(result.frame, influences);
    if (options_.influences) result.influences = std::move(influences);
  }

  void report() {
    ++done_;
    if (progress_) progress_(done_, result_.frames.size());
  }

  const Tracks& tracks_;
  const SolveOptions& options_;
  const Progress& progress_;
  BaseFrame base_;
  Points surface_;  // the places in the base frame that tell how far the surface reaches
  ShotUnits units_;
  FrameFitter fitter_;
  SurfaceMap map_;
  std::vector<Quad> quads_;  // in the base frame
  WorstTracks worst_;
  ShotResult result_;
  std::size_t done_ = 0;
};

}  // namespace

ShotResult solveShot(const Tracks& tracks, const SolveOptions& options, const Progress& progress) {
  return ShotSolver(tracks, options, progress).solve();
}

}  // namespace cornerpin
