// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/frame_fit.h"
#include "shot/solve/hand_over.h"
#include "shot/solve/rebase.h"
#include "shot/solve/surface_map.h"
#include "shot/solve/track_runs.h"
#include "shot/surface/joint_covariances.h"
#include "shot/surface/joint_fit.h"
#include "shot/surface/start_places.h"
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
    total_ = result_.frames.size();
    if (handsOver()) total_ += total_ - 1;  // the base frame is fitted to nothing
    if (const std::string flaw = flawOf(options.quads); !flaw.empty()) {
      throw std::invalid_argument(flaw);
    }
    if (options.reference) {
      requireFrame(*options.reference, tracks.firstFrame(), tracks.lastFrame());
    }
  }

  ShotResult solve() {
    addBaseFrame();
    handsOver() ? learnAndSweep() : sweepBothWays(false);
    placeQuads();
    if (result_.handedOver > 0) findJointCovariances();
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

  // Whether there are tracks that could be handed to.
  bool handsOver() const {
    return options_.handOver && options_.loss != Loss::None &&
           tracks_.names.size() > base_.tracks().size();
  }

  // Both sweeps learn the places of tracks that the base frame lacks. These are refined together
  // with all transforms, and the shot is swept once more where that is of any use.
  void learnAndSweep() {
    sweepBothWays(true);
    const ObservationsOf observations = observationsOf(tracks_);
    std::vector<JointFrame> frames = jointFrames();
    places_ = startPlaces(frames, observations, tracks_.names.size());
    const int others = takePlaces();
    if (others == 0) return;
    fitJointly(frames, places_, observations);
    trusted_ = othersAgree(frames);
    if (!trusted_ && !usesOthers()) return;
    result_.handedOver = takePlaces();
    result_.leftOut -= result_.handedOver;
    sweepBothWays(false);
  }

  // Into the map, for the tracks that the base frame lacks. Returns how many of them are known.
  int takePlaces() {
    int known = 0;
    for (std::size_t t = 0; t < places_.size(); ++t) {
      const int track = static_cast<int>(t);
      if (!isKnown(places_[t]) || base_.sees(track)) continue;
      map_.setPlace(track, places_[t].point);
      ++known;
    }
    return known;
  }

  // Whether the tracks that the base frame lacks agree with its own: the joint fit of all has moved
  // the surface, in the median of the frames that the base frame's tracks decided alone, by no more
  // than these may be off. Normal errors make it about a third of their variance; tracks that creep
  // off together the longer they are followed, several times as much.
  bool othersAgree(const std::vector<JointFrame>& joint) const {
    std::vector<double> moves;
    for (std::size_t f = 0; f < joint.size(); ++f) {
      const FrameResult& frame = result_.frames[f];
      if (frame.verdict.status != Status::Solved || frame.handedOver > 0) continue;
      if (map_.matchesIn(tracks_, frame.frame).size() == static_cast<std::size_t>(frame.tracks)) {
        continue;
      }
      moves.push_back(moveOf(frame, joint[f].h));
    }
    return moves.empty() || lowerMedian(moves) <= 1.0;
  }

  // The mean square over the surface's corners, in units of the frame's own variance there.
  double moveOf(const FrameResult& frame, const Homography& h) const {
    const Quad corners = cornersOf(boxAround(surface_));
    const Matches file = usedIn(frame);
    const FrameFigures figures =
        figuresOf(file, fittedAs(frame, kIdentity, file), {corners}, result_.baseCentre);
    double sum = 0.0;
    for (std::size_t c = 0; c < 4; ++c) {
      sum += squaredDistance(map(h, corners[c]), map(frame.h, corners[c])) /
             figures.quads[0][c].trace();
    }
    return sum / 4.0;
  }

  // Whether a frame was fitted to tracks that the base frame lacks.
  bool usesOthers() const {
    return std::any_of(result_.frames.begin(), result_.frames.end(),
                       [](const FrameResult& frame) { return frame.handedOver > 0; });
  }

  std::vector<JointFrame> jointFrames() const {
    std::vector<JointFrame> frames;
    for (const FrameResult& frame : result_.frames) {
      JointFrame::Part part = JointFrame::Part::None;
      if (frame.verdict.status == Status::Base) part = JointFrame::Part::Fixed;
      if (frame.verdict.status == Status::Solved) part = JointFrame::Part::Free;
      frames.push_back({frame.h, part, std::isfinite(frame.sigma) ? frame.sigma : 0.0});
    }
    return frames;
  }

  // Of the corners of all quads, in every frame, with all that the shot's other frames say.
  void findJointCovariances() {
    Points corners;
    for (const Quad& quad : quads_) {
      for (Point corner : quad) corners.add(corner);
    }
    covariances_ = jointCovariances(jointFrames(), places_, observationsOf(tracks_), corners);
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

  void sweepBothWays(bool learns) {
    sweep(+1, tracks_.lastFrame(), learns);
    sweep(-1, tracks_.firstFrame(), learns);
  }

  // From the base frame to the last one, each frame from its neighbour.
  void sweep(int step, int last, bool learns) {
    Sweep sweep = startOfSweep();
    std::optional<LearningMap> learning;
    if (learns) learning.emplace(base_, tracks_.names.size());
    for (int frame = base_.frame(); frame != last;) {
      frame += step;
      const SurfaceMap& map = learning ? learning->map() : map_;
      Matches file = map.matchesIn(tracks_, frame);
      const FrameFit fit =
          trusted_ ? fitter_.fit(file, sweep) : fitHandedOver(fitter_, base_, file, sweep);
      record(frame, file, fit);
      if (learning && fit.verdict.status == Status::Solved) {
        learning->learn(tracks_.inFrame(frame), file, fit.robust.good, fit.h,
                        units_.lengthFromFit(fit.robust.sigma));
      }
      report();
    }
  }

  void record(int frame, const Matches& file, const FrameFit& fit) {
    FrameResult& result = resultOf(frame);
    result = {};
    result.frame = frame;
    result.h = fit.h;
    result.verdict = fit.verdict;
    result.tracks = static_cast<int>(file.size());
    result.handedOver = handedOverIn(file);
    result.rms = rmsResidual(file, fit.h);
    if (fit.robust.found) addRobust(fit, result);
    if (fit.verdict.status == Status::Solved) addSolved(file, fit, result);
    result.why = whyOf(result);
    result.reason = reasonOf(result.verdict);
  }

  int handedOverIn(const Matches& matches) const {
    const auto& tracks = matches.tracks();
    return static_cast<int>(
        std::count_if(tracks.begin(), tracks.end(), [this](int t) { return !base_.sees(t); }));
  }

  // What the robust fit says of the frame's errors, where the frame was fitted.
  void addRobust(const FrameFit& fit, FrameResult& result) const {
    if (fit.verdict.status == Status::Held) return;
    result.sigma = units_.lengthFromFit(fit.robust.sigma);
    result.good = static_cast<int>(fit.robust.goodCount);
  }

  void addSolved(const Matches& file, const FrameFit& fit, FrameResult& result) const {
    if (options_.loss == Loss::None) {
      result.good = result.tracks;
      result.goodRms = result.rms;
      return;
    }
    result.loss = fit.robust.loss;
    result.width = units_.lengthFromFit(fit.robust.width);
    result.goodRms = rmsResidual(file.subset(fit.robust.good), result.h);
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
      FrameResult& result = resultOf(frame);
      addTrust(usedIn(result), neighbour, result);
    }
  }

  // The matches that a frame was fitted to.
  Matches usedIn(const FrameResult& result) const {
    const Matches known = map_.matchesIn(tracks_, result.frame);
    return result.handedOver > 0 ? known : known.subset(seenIn(base_, known));
  }

  // With the weights of its good tracks, in full.
  FittedFrame fittedAs(const FrameResult& result, const Homography& neighbour,
                       const Matches& file) const {
    FittedFrame fitted{result.verdict.model, kIdentity, result.h, file.weights()};
    if (result.verdict.onTop) fitted.kept = neighbour;
    if (result.handedOver > 0) fitted.placeNoise = 0.0;
    if (toldBad(result)) {
      fitted.weights = goodWeights(file, result.h, result_.baseCentre, result.sigma);
    }
    return fitted;
  }

  // The figures of trust: of the frame about its good tracks alone, of each track with the weight
  // that the fit left it.
  void addTrust(const Matches& file, const Homography& neighbour, FrameResult& result) {
    const Point front = result_.baseCentre;
    FittedFrame fitted = fittedAs(result, neighbour, file);
    addUses(result);
    result.figures = figuresOf(file, fitted, quads_, front);
    if (result.handedOver > 0 && result.verdict.status == Status::Solved) takeJoint(result);
    if (toldBad(result) && result.verdict.status == Status::Solved) {
      fitted.weights = lossWeights(file, result.h, front, result.loss, result.width);
    }
    std::vector<TrackInfluence> influences = influencesOf(file, fitted, quads_.front());
    worst_.addFrame(result.frame, influences);
    if (options_.influences) result.influences = std::move(influences);
  }

  // The covariances of a frame that was fitted to places which others have told.
  void takeJoint(FrameResult& result) const {
    const auto& all = covariances_[static_cast<std::size_t>(result.frame - tracks_.firstFrame())];
    for (std::size_t q = 0; q < quads_.size(); ++q) {
      CornerCovariances& quad = result.figures.quads[q];
      std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(4 * q), 4, quad.begin());
    }
  }

  // What each track that is seen in a frame is there. A track that the fit did without may still
  // keep to its place.
  void addUses(const FrameResult& result) {
    const Matches known = map_.matchesIn(tracks_, result.frame);
    std::vector<double> weights = known.weights();
    if (toldBad(result)) weights = goodWeights(known, result.h, result_.baseCentre, result.sigma);
    const bool held = result.verdict.status == Status::Held;
    std::size_t i = 0;  // of the matches, which have the order of the observations
    for (const Observation& o : tracks_.inFrame(result.frame)) {
      if (!(o.weight > 0.0f)) continue;
      const bool isKnown = i < known.size() && known.tracks()[i] == o.track;
      const bool good = isKnown && weights[i] > 0.0 && !held;
      runs_.add(o.track, result.frame, good ? TrackUse::Good : TrackUse::Ignored);
      if (isKnown) ++i;
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
      if (!base_.sees(track) && map_.knows(track)) {
        result.covariance = places_[t].covariance;
      } else if (map_.knows(track) && std::isfinite(variance)) {
        result.covariance = {variance, 0.0, variance};
      }
      result.runs = runs_.of(track, tracks_.firstFrame(), tracks_.lastFrame());
      result_.tracks.push_back(std::move(result));
    }
  }

  void report() {
    ++done_;
    if (progress_) progress_(done_, total_);
  }

  const Tracks& tracks_;
  const SolveOptions& options_;
  const Progress& progress_;
  BaseFrame base_;
  Points surface_;  // the places in the base frame that tell how far the surface reaches
  ShotUnits units_;
  FrameFitter fitter_;
  SurfaceMap map_;
  bool trusted_ = false;       // all known tracks decide, not the base frame's where they suffice
  std::vector<Place> places_;  // as the solved frames have told them; empty where nobody asked
  TrackRuns runs_;
  std::vector<Quad> quads_;                           // in the base frame
  std::vector<std::vector<Symmetric2>> covariances_;  // by frame, of the quads' corners
  WorstTracks worst_;
  ShotResult result_;
  std::size_t done_ = 0;
  std::size_t total_ = 0;  // of the frames that are reported
};

}  // namespace

ShotResult solveShot(const Tracks& tracks, const SolveOptions& options, const Progress& progress) {
  return ShotSolver(tracks, options, progress).solve();
}

}  // namespace cornerpin
