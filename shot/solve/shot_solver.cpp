// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/frame_fit.h"
#include "shot/solve/rebase.h"
#include "shot/solve/surface_map.h"
#include "shot/solve/track_runs.h"
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
        runs_(tracks.names.size()),
        worst_(visibleIn(boxAround(surface_))) {
    result_.baseFrame = result_.referenceFrame = base_.frame();
    result_.baseTracks = static_cast<int>(base_.places().size());
    result_.leftOut = static_cast<int>(tracks.names.size() - base_.places().size());
    result_.units = options.units;
    result_.loss = options.loss;
    result_.seed = options.seed;
    result_.baseCentre = units_.fileToFit.centre;
    result_.frames.resize(static_cast<std::size_t>(tracks.frameCount()));
    if (const std::string flaw = flawOf(options.quads); !flaw.empty()) {
      throw std::invalid_argument(flaw);
    }
    if (options.reference) {
      requireFrame(*options.reference, tracks.firstFrame(), tracks.lastFrame());
    }
  }

  ShotResult solve() {
    addBaseFrame();
    sweep(+1, tracks_.lastFrame());
    sweep(-1, tracks_.firstFrame());
    placeQuads();
    addTrust(+1, tracks_.lastFrame());
    addTrust(-1, tracks_.firstFrame());
    for (const TrackStretch& stretch : worst_.worst(kListed)) {
      result_.worst.push_back({tracks_.names[static_cast<std::size_t>(stretch.track)], stretch});
    }
    addTracks();
    makeRelative();
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
    for (int track : base_.tracks()) runs_.add(track, base_.frame(), TrackUse::Good);
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
      result.why = whyOf(result);
      result.reason = reasonOf(result.verdict);
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

  // Puts what the figures of trust are about into the base frame.
  void placeQuads() {
    const int reference = options_.reference.value_or(base_.frame());
    result_.quads = quadsOf(options_, surface_);
    if (!options_.quads.empty() && reference != base_.frame()) {
      result_.quads = carriedToBase(options_.quads, resultOf(reference), result_.baseCentre);
    }
    for (const NamedQuad& quad : result_.quads) quads_.push_back(quad.corners);
    resultOf(base_.frame()).figures = baseFrameFigures(quads_.size());
  }

  void makeRelative() {
    if (!options_.reference) return;
    rebase(result_, *options_.reference);
    if (!options_.quads.empty()) result_.quads = options_.quads;  // without a rounding
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
    addUses(file, fitted.weights, result);
    result.figures = figuresOf(file, fitted, quads_, front);
    if (toldBad(result) && result.verdict.status == Status::Solved) {
      fitted.weights = lossWeights(file, result.h, front, result.loss, result.width);
    }
    std::vector<TrackInfluence> influences = influencesOf(file, fitted, quads_.front());
    worst_.addFrame(result.frame, influences);
    if (options_.influences) result.influences = std::move(influences);
  }

  // What each track that is seen in a frame is there. Matches have the order of the observations.
  void addUses(const Matches& file, const std::vector<double>& weights, const FrameResult& result) {
    std::size_t i = 0;
    for (const Observation& o : tracks_.inFrame(result.frame)) {
      if (!(o.weight > 0.0f)) continue;
      const bool used = i < file.size() && file.tracks()[i] == o.track;
      const bool good = used && weights[i] > 0.0 && result.verdict.status != Status::Held;
      runs_.add(o.track, result.frame, good ? TrackUse::Good : TrackUse::Ignored);
      if (used) ++i;
    }
  }

  // The standard deviation of one coordinate of a track in the median frame.
  double usualNoise() const {
    std::vector<double> noises;
    for (const FrameResult& frame : result_.frames) {
      if (std::isfinite(frame.figures.noise)) noises.push_back(frame.figures.noise);
    }
    return lowerMedian(noises);
  }

  void addTracks() {
    const double variance = std::pow(usualNoise(), 2);
    for (std::size_t t = 0; t < tracks_.names.size(); ++t) {
      const int track = static_cast<int>(t);
      TrackResult result;
      result.name = tracks_.names[t];
      result.place = map_.placeOf(track);
      if (map_.knows(track) && std::isfinite(variance)) {
        result.covariance = {variance, 0.0, variance};
      }
      result.runs = runs_.of(track, tracks_.firstFrame(), tracks_.lastFrame());
      result_.tracks.push_back(std::move(result));
    }
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
  TrackRuns runs_;
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
