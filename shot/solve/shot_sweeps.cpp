// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_sweeps.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <optional>

#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"
#include "shot/solve/hand_over.h"
#include "shot/surface/joint_covariances.h"
#include "shot/surface/joint_fit.h"
#include "shot/surface/start_places.h"
#include "shot/trust/final_weights.h"
#include "shot/trust/uncertainty.h"

namespace cornerpin {

namespace {

ShotUnits unitsOf(const Points& surface, Units units) {
  const Similarity fileToFit = Similarity::fitting(surface);
  return {fileToFit, units == Units::Fit ? fileToFit : Similarity{}};
}

}  // namespace

ShotSweeps::ShotSweeps(const Tracks& tracks, const SolveOptions& options, int base,
                       const std::function<void()>& report)
    : tracks_(tracks),
      options_(options),
      report_(report),
      base_(tracks, base),
      surface_(surfacePlaces(base_.places(), options.loss)),
      units_(unitsOf(surface_, options.units)),
      map_(base_, tracks.names.size()),
      frames_(static_cast<std::size_t>(tracks.frameCount())),
      swept_(frames_.size()) {
  FrameResult& result = frames_[static_cast<std::size_t>(base - tracks.firstFrame())];
  result.frame = base;
  result.verdict.status = Status::Base;
  result.tracks = static_cast<int>(base_.tracks().size());
  result.rms = 0.0;
  result.h = kIdentity;
}

std::size_t ShotSweeps::mostReports() const { return (hasOthers() ? 2 : 1) * (frames_.size() - 1); }

void ShotSweeps::sweepFirst() { sweepBothWays(hasOthers()); }

void ShotSweeps::handOver(const Progress& progress) {
  if (!hasOthers()) return;
  PhaseCount steps(progress, Phase::HandingOver, kMostJointSteps);
  const ObservationsOf observations = observationsOf(tracks_);
  std::vector<JointFrame> frames = jointFrames();
  places_ = startPlaces(frames, observations, tracks_.names.size());
  if (takePlaces() == 0 || !othersMatter()) return;
  fitJointly(frames, places_, observations, [&steps] { steps.add(); });
  trusted_ = othersAgree(frames);
  if (!trusted_ && !usesOthers()) return;
  handedOver_ = takePlaces();
  sweepBothWays(false);
}

// Whether there are tracks that the base frame lacks, and they may take part.
bool ShotSweeps::hasOthers() const {
  return options_.handOver && options_.loss != Loss::None &&
         tracks_.names.size() > base_.tracks().size();
}

// Whether a frame was fitted to tracks that the base frame lacks.
bool ShotSweeps::usesOthers() const {
  return std::any_of(frames_.begin(), frames_.end(),
                     [](const FrameResult& frame) { return frame.handedOver > 0; });
}

// Whether the tracks that the base frame lacks took part in a frame, or may help one.
bool ShotSweeps::othersMatter() const {
  return usesOthers() ||
         std::any_of(frames_.begin(), frames_.end(),
                     [this](const FrameResult& frame) { return othersMayHelp(frame); });
}

bool ShotSweeps::othersMayHelp(const FrameResult& frame) const {
  if (frame.verdict.status == Status::Base) return false;
  const Matches known = map_.matchesIn(tracks_, frame.frame);
  if (othersIn(base_, known) == 0) return false;
  if (!isFirm(frame)) return true;
  std::vector<bool> keeps;
  for (double weight : fittedAs(frame, known).weights) keeps.push_back(weight > 0.0);
  const Matches good = known.subset(keeps);
  return othersHelp(good.base(), good.subset(seenIn(base_, good)).base(),
                    cornersOf(boxAround(surface_)));
}

// Into the map, for the tracks that the base frame lacks. Returns how many of them are known.
int ShotSweeps::takePlaces() {
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
bool ShotSweeps::othersAgree(const std::vector<JointFrame>& joint) const {
  std::vector<double> moves;
  for (std::size_t f = 0; f < joint.size(); ++f) {
    const FrameResult& frame = frames_[f];
    if (!isFirm(frame) || frame.handedOver > 0) continue;
    if (othersIn(base_, map_.matchesIn(tracks_, frame.frame)) == 0) continue;
    moves.push_back(moveOf(frame, joint[f].h));
  }
  return moves.empty() || lowerMedian(moves) <= 1.0;
}

// The mean square over the surface's corners, in units of the frame's own variance there.
double ShotSweeps::moveOf(const FrameResult& frame, const Homography& h) const {
  const Quad corners = cornersOf(boxAround(surface_));
  const Matches used = usedIn(frame);
  const Uncertainty uncertainty(used, fittedAs(frame, used));
  double sum = 0.0;
  for (Point corner : corners) {
    if (!onSameSide(frame.h, corner, units_.fileToFit.centre)) return kNoFigure;
    sum += squaredDistance(map(h, corner), map(frame.h, corner)) /
           uncertainty.covarianceAt(corner).trace();
  }
  return sum / 4.0;
}

std::vector<JointFrame> ShotSweeps::jointFrames() const {
  std::vector<JointFrame> frames;
  for (const FrameResult& frame : frames_) {
    JointFrame::Part part = JointFrame::Part::None;
    if (frame.verdict.status == Status::Base) part = JointFrame::Part::Fixed;
    if (isFirm(frame)) part = JointFrame::Part::Free;
    frames.push_back({frame.h, part, std::isfinite(frame.sigma) ? frame.sigma : 0.0});
  }
  return frames;
}

std::vector<std::vector<Symmetric2>> ShotSweeps::jointCovariancesOf(
    const Points& places, const std::function<void()>& report) {
  return jointCovariances(jointFrames(), places_, observationsOf(tracks_), places, report);
}

void ShotSweeps::sweepBothWays(bool learns) {
  const auto sweepBack = [&] { sweep(-1, tracks_.firstFrame(), learns); };
  const bool atOnce = options_.threads > 1 && base_.frame() != tracks_.firstFrame() &&
                      base_.frame() != tracks_.lastFrame();
  // Deferred until `get` where no thread is to be had.
  const auto policy = atOnce ? std::launch::async | std::launch::deferred : std::launch::deferred;
  std::future<void> back = std::async(policy, sweepBack);
  sweep(+1, tracks_.lastFrame(), learns);
  back.get();
}

// From the base frame to the last one, each frame from its neighbour.
void ShotSweeps::sweep(int step, int last, bool learns) {
  FrameFitter fitter(units_, options_);
  Sweep sweep{toLibrary(kIdentity), kIdentity, false, SweepMemory(tracks_.names.size())};
  cover(surface_, sweep);
  std::optional<LearningMap> learning;
  if (learns) learning.emplace(base_, tracks_.names.size());
  for (int frame = base_.frame(); frame != last;) {
    frame += step;
    const SurfaceMap& map = learning ? learning->map() : map_;
    Matches file = map.matchesIn(tracks_, frame);
    const std::shared_ptr<const Quad> corners = sweep.corners;
    const FrameFit fit =
        trusted_ ? fitByAll(fitter, base_, file, sweep) : fitHandedOver(fitter, base_, file, sweep);
    record(frame, file, fit, corners);
    if (learning && isFirm(frames_[static_cast<std::size_t>(frame - tracks_.firstFrame())])) {
      learning->learn(tracks_.inFrame(frame), file, fit.robust.good, fit.h,
                      units_.lengthFromFit(sweep.memory.sigmaOf(fit.robust)));
    }
    report_();
  }
}

int ShotSweeps::neighbourOf(int frame) const { return frame + (frame > base_.frame() ? -1 : 1); }

std::size_t ShotSweeps::indexOf(const FrameResult& frame) const {
  return static_cast<std::size_t>(frame.frame - tracks_.firstFrame());
}

bool ShotSweeps::isFirm(const FrameResult& frame) const {
  return frame.verdict.status == Status::Solved && swept_[indexOf(frame)].gain <= kLargestGain &&
         !isLikelyByChance(frame.verdict.origin);
}

void ShotSweeps::chooseModels() {
  if (options_.loss == Loss::None || !options_.reduce) return;
  models_.emplace(
      frames_, swept_, static_cast<std::size_t>(base_.frame() - tracks_.firstFrame()),
      [this](const FrameResult& frame) { return usedIn(frame); },
      [this](const FrameResult& frame) { return map_.matchesIn(tracks_, frame.frame); },
      [this](const Matches& file, const Homography& start, Prior prior) {
        prior.recentSigma *= units_.fileToFit.scale;
        prior.lowSigma *= units_.fileToFit.scale;
        RobustFit fit =
            fitRobustly(file.in(units_.fileToFit), {{Stage::Neighbour, units_.toFit(start)}}, prior,
                        {options_.loss, options_.seed});
        fit.h = units_.fromFit(fit.h);
        return fit;
      },
      units_.lengthFromFit(kLikelySigma));
}

void ShotSweeps::record(int frame, const Matches& file, const FrameFit& fit,
                        const std::shared_ptr<const Quad>& corners) {
  FrameResult& result = frames_[static_cast<std::size_t>(frame - tracks_.firstFrame())];
  result = {};
  result.frame = frame;
  result.h = fit.h;
  result.verdict = fit.verdict;
  if (result.verdict.onTop) result.verdict.keptFrom = {neighbourOf(frame)};
  result.tracks = static_cast<int>(file.size());
  result.handedOver = othersIn(base_, file);
  result.rms = rmsResidual(file, fit.h);
  swept_[indexOf(result)] = {corners, fit.gain, {}};
  if (fit.robust.found) swept_[indexOf(result)].good = fit.robust.good;
  if (fit.robust.found) addRobust(fit, result);
  if (fit.verdict.status == Status::Solved) addSolved(file, fit, result);
}

// What the robust fit says of the frame's errors, where the frame was fitted.
void ShotSweeps::addRobust(const FrameFit& fit, FrameResult& result) const {
  if (fit.verdict.status == Status::Held) return;
  result.sigma = units_.lengthFromFit(fit.robust.sigma);
  result.good = static_cast<int>(fit.robust.goodCount);
}

void ShotSweeps::addSolved(const Matches& file, const FrameFit& fit, FrameResult& result) const {
  if (options_.loss == Loss::None) {
    result.good = result.tracks;
    result.goodRms = result.rms;
    return;
  }
  result.loss = fit.robust.loss;
  result.width = units_.lengthFromFit(fit.robust.width);
  result.goodRms = rmsResidual(file.subset(fit.robust.good), result.h);
}

bool ShotSweeps::toldBad(const FrameResult& frame) const {
  return options_.loss != Loss::None && std::isfinite(frame.sigma) &&
         static_cast<std::size_t>(frame.tracks) >= kFewestForRobust;
}

Matches ShotSweeps::usedIn(const FrameResult& frame) const {
  const Matches known = map_.matchesIn(tracks_, frame.frame);
  return othersIn(base_, known) == frame.handedOver ? known : known.subset(seenIn(base_, known));
}

FittedFrame ShotSweeps::fittedAs(const FrameResult& frame, const Matches& used) const {
  FittedFrame fitted{frame.verdict.model, kIdentity, frame.h, used.weights()};
  if (models_ && frame.verdict.status == Status::Reduced) {
    fitted.kept = models_->keptIn(indexOf(frame));
  } else if (frame.verdict.onTop) {
    fitted.kept =
        frames_[static_cast<std::size_t>(neighbourOf(frame.frame) - tracks_.firstFrame())].h;
  }
  if (frame.handedOver > 0) fitted.placeNoise = 0.0;
  if (toldBad(frame)) {
    fitted.weights = goodWeights(used, frame.h, units_.fileToFit.centre, frame.sigma);
  }
  return fitted;
}

void ShotSweeps::takeCovariances(const FrameResult& frame, const std::vector<Quad>& quads,
                                 FrameFigures& figures) const {
  if (models_ && frame.verdict.status == Status::Reduced) {
    models_->takeCovariances(indexOf(frame), quads, figures);
  }
}

}  // namespace cornerpin
