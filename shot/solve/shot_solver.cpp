// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"
#include "shot/solve/base_choice.h"
#include "shot/solve/judge.h"
#include "shot/solve/rebase.h"
#include "shot/solve/shot_sweeps.h"
#include "shot/solve/track_runs.h"
#include "shot/trust/final_weights.h"
#include "shot/trust/lasting_errors.h"
#include "shot/trust/subset_posterior.h"

namespace cornerpin {

namespace {

constexpr std::size_t kListed = 5;
// Of the extent of the base frame's tracks.
constexpr double kVisible = 1e-3;    // the least move of a corner that people see: a pixel of 1,000
constexpr double kTolerable = 5e-3;  // the largest expected error of a good frame

double extentOf(const Box& surface) {
  return std::max(surface.high.x - surface.low.x, surface.high.y - surface.low.y);
}

// A track's residual comes out alike but for this in two ways of rounding.
constexpr double kRounding = 1.0 + 1e-6;

// What is likely of the tracks' noise, where no frames tell it, counts as much as so many errors.
constexpr double kLikelyFreedom = 4.0;

std::vector<NamedQuad> quadsOf(const SolveOptions& options, const Points& surface) {
  if (!options.quads.empty()) return options.quads;
  return {{"tracks", cornersOf(boxAround(surface))}};
}

int strongestOf(const std::vector<TrackInfluence>& influences) {
  int strongest = -1;
  double most = 0.0;
  for (const TrackInfluence& one : influences) {
    if (!(one.influence > most)) continue;
    most = one.influence;
    strongest = one.track;
  }
  return strongest;
}

// In how many solved frames a track is good, and in how many it is not.
class TrackRecord {
 public:
  void add(bool good) { ++(good ? good_ : missed_); }

  // The share of the latter in all frames but one, in which it is good or not.
  double shareMissedBut(bool good) const {
    const int others = good_ + missed_ - 1;
    return others > 0 ? static_cast<double>(missed_ - (good ? 0 : 1)) / others : 0.0;
  }

 private:
  int good_ = 0;
  int missed_ = 0;
};

// What comes after the sweeps: the figures of trust, and what became of the tracks.
class ShotSolver {
 public:
  ShotSolver(const Tracks& tracks, const SolveOptions& options, ShotSweeps& sweeps,
             const Progress& progress)
      : tracks_(tracks),
        options_(options),
        sweeps_(sweeps),
        count_(progress, Phase::Figures, passes(sweeps) * sweeps.frames().size()),
        base_(sweeps.base()),
        frames_(sweeps.frames()),
        runs_(tracks.names.size()),
        extent_(extentOf(boxAround(sweeps.surface()))),
        lasting_(tracks.names.size()),
        worst_(kVisible * extent_, frames_.size()),
        records_(tracks.names.size()) {
    result_.provenance.picture = tracks_.picture;
    result_.baseFrame = result_.referenceFrame = base_.frame();
    result_.baseTracks = static_cast<int>(base_.tracks().size());
    result_.handedOver = sweeps.handedOver();
    findUnused();
    result_.units = options.units;
    result_.loss = options.loss;
    result_.seed = options.seed;
    result_.maxError = options.maxError.value_or(kTolerable * extent_);
    result_.baseCentre = sweeps.units().fileToFit.centre;
    errors_.resize(frames_.size());
  }

  ShotResult solve() {
    placeQuads();
    if (result_.handedOver > 0) findJointCovariances();
    for (int track : base_.tracks()) runs_.add(track, base_.frame(), TrackUse::Good);
    addTrust(+1, tracks_.lastFrame());
    addTrust(-1, tracks_.firstFrame());
    addFigures();
    for (const TrackStretch& stretch : worst_.worst(kListed)) {
      result_.worst.push_back({tracks_.names[static_cast<std::size_t>(stretch.track)], stretch});
    }
    addTracks();
    result_.frames = std::move(frames_);
    judge(result_);
    makeRelative();
    return std::move(result_);
  }

 private:
  // In which all frames are looked at: a third where tracks were handed over to.
  static std::size_t passes(const ShotSweeps& sweeps) { return sweeps.handedOver() > 0 ? 3 : 2; }

  std::size_t indexOf(int frame) const {
    return static_cast<std::size_t>(frame - tracks_.firstFrame());
  }
  FrameResult& resultOf(int frame) { return frames_[indexOf(frame)]; }
  FrameErrors& errorsOf(const FrameResult& result) { return errors_[indexOf(result.frame)]; }

  void findUnused() {
    std::vector<bool> seen(tracks_.names.size());
    for (const Observation& o : tracks_.observations) {
      if (o.weight > 0.0f) seen[static_cast<std::size_t>(o.track)] = true;
    }
    result_.unused.emplace();
    for (std::size_t t = 0; t < seen.size(); ++t) {
      const int track = static_cast<int>(t);
      const bool known = sweeps_.surfaceMap().knows(track);
      if (base_.sees(track) || (result_.handedOver > 0 && known)) continue;
      result_.unused->push_back({tracks_.names[t], seen[t] ? whyUnused(known) : whyUnseen(t)});
    }
    result_.leftOut = static_cast<int>(result_.unused->size());
  }

  // Of a track that the base frame lacks.
  Unused whyUnused(bool known) const {
    if (!options_.handOver || options_.loss == Loss::None) return Unused::AbsentInBase;
    return known ? Unused::NotNeeded : Unused::NoPlace;
  }

  Unused whyUnseen(std::size_t track) const {
    return track < tracks_.emptied.size() ? tracks_.emptied[track].value_or(Unused::NoWeight)
                                          : Unused::NoWeight;
  }

  // Puts what the figures of trust are about into the base frame.
  void placeQuads() {
    const int reference = options_.reference.value_or(base_.frame());
    result_.quads = quadsOf(options_, sweeps_.surface());
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

  // Of the corners of all quads, in every frame.
  void findJointCovariances() {
    Points corners;
    for (const Quad& quad : quads_) {
      for (Point corner : quad) corners.add(corner);
    }
    covariances_ = sweeps_.jointCovariancesOf(corners, [this] { count_.add(); });
  }

  // Of the frames of a sweep, in its order.
  void addTrust(int step, int last) {
    for (int frame = base_.frame(); frame != last;) {
      frame += step;
      addTrust(resultOf(frame));
      count_.add();
    }
  }

  // What the figures of trust come from: the frame's errors, of its good tracks alone, and what
  // each track does, with the weight that the fit left it.
  void addTrust(FrameResult& result) {
    const Point front = result_.baseCentre;
    const Matches used = sweeps_.usedIn(result);
    const FittedFrame good = sweeps_.fittedAs(result, used);
    FittedFrame last = good;
    const bool solved = result.verdict.status == Status::Solved;
    if (solved && result.handedOver > 0) addResiduals(result, used, good.weights);
    const bool bent = solved && sweeps_.toldBad(result);
    if (bent) addRecords(used, good.weights);
    if (bent) last.weights = lossWeights(used, result.h, front, result.loss, result.width);
    if (bent && result.loss != Loss::None) {
      last.stiffness = lossStiffness(used, result.h, result.loss, result.width);
    }
    const FrameFits fits(used, good, last);
    std::vector<TrackInfluence> influences = influencesOf(fits, quads_.front());
    errorsOf(result) = cornerpin::errorsOf(fits, quads_, front);
    worst_.addFrame(result.frame, influences);
    result.strongest = strongestOf(influences);
    if (options_.influences) result.influences = std::move(influences);
    addUses(result, used, good.weights);
  }

  // Of the good tracks whose places other frames have told.
  void addResiduals(const FrameResult& result, const Matches& used,
                    const std::vector<double>& weights) {
    for (std::size_t i = 0; i < used.size(); ++i) {
      const Match match = used[i];
      if (!(weights[i] > 0.0) || base_.sees(match.track)) continue;
      lasting_.add(match.track, result.frame, residual(match, result.h));
    }
  }

  void addRecords(const Matches& used, const std::vector<double>& weights) {
    for (std::size_t i = 0; i < used.size(); ++i) {
      records_[static_cast<std::size_t>(used.tracks()[i])].add(weights[i] > 0.0);
    }
  }

  // How far the corners of all frames may be off, with what the frames say of each other's noise.
  void addFigures() {
    const std::vector<NoiseEstimate> ofFrames = noises();
    const NoiseEstimate shot = shotNoise(ofFrames);
    const double likely = sweeps_.units().lengthFromFit(kLikelySigma);
    const NoiseEstimate quiet = quietNoise(ofFrames, {likely * likely, kLikelyFreedom});
    for (FrameResult& result : frames_) {
      count_.add();
      if (result.frame == base_.frame()) continue;
      const FrameErrors errors = std::move(errorsOf(result));
      result.figures = figuresOf(errors, shot);
      addOpinions(quiet, result);
      sweeps_.takeCovariances(result, quads_, result.figures);
      if (result.handedOver > 0 && sweeps_.isFirm(result)) {
        takeJoint(covariances_[indexOf(result.frame)], lasting_.varianceRatio(), errors,
                  result.figures);
      }
    }
  }

  // Without tracks that are off by more than the surface is wide, or lie behind the horizon: nobody
  // takes these for good ones.
  Matches nearIn(const FrameResult& result) const {
    const Matches used = sweeps_.usedIn(result);
    const std::vector<double> squares = squaresFrom(used, result.h, result_.baseCentre);
    std::vector<bool> near(used.size());
    for (std::size_t i = 0; i < near.size(); ++i) near[i] = squares[i] <= extent_ * extent_;
    return used.subset(near);
  }

  // Whether `SubsetPosterior` may find something to ask. A good track is a near one, so where many
  // are good it is only asked whether those are that most frames do without.
  bool mayBeAsked(const FrameResult& result) const {
    const bool many = result.good > static_cast<int>(SubsetPosterior::kMost);
    if (!many || kGoodWithin * result.sigma > extent_) return true;
    const double farthest = kRounding * kGoodWithin * result.sigma;
    const Tracks::Range seen = tracks_.inFrame(result.frame);
    return std::any_of(seen.begin(), seen.end(), [&](const Observation& o) {
      const TrackRecord& record = records_[static_cast<std::size_t>(o.track)];
      if (!(record.shareMissedBut(true) > SubsetPosterior::kMostMissed)) return false;
      const Point place = sweeps_.surfaceMap().placeOf(o.track);
      return squaredDistance(map(result.h, place), {o.x, o.y}) <= farthest * farthest;
    });
  }

  // What is open about a solved frame: which of its tracks keep to the surface.
  void addOpinions(const NoiseEstimate& quiet, FrameResult& result) const {
    if (result.verdict.status != Status::Solved || !sweeps_.toldBad(result)) return;
    if (!mayBeAsked(result)) return;
    const Matches near = nearIn(result);
    const FittedFrame fitted = sweeps_.fittedAs(result, near);
    std::vector<double> missed(near.size());
    for (std::size_t i = 0; i < near.size(); ++i) {
      const TrackRecord& record = records_[static_cast<std::size_t>(near.tracks()[i])];
      missed[i] = record.shareMissedBut(fitted.weights[i] > 0.0);
    }
    const SubsetPosterior opinions(near, fitted, quiet, missed);
    if (!opinions.isKnown()) return;
    for (std::size_t q = 0; q < quads_.size(); ++q) {
      for (std::size_t i = 0; i < 4; ++i) {
        Symmetric2& covariance = result.figures.quads[q][i];
        const Symmetric2 ofAll = opinions.covarianceAt(quads_[q][i]);
        if (ofAll.trace() > covariance.trace()) covariance = ofAll;
      }
    }
  }

  std::vector<NoiseEstimate> noises() const {
    std::vector<NoiseEstimate> frames;
    frames.reserve(errors_.size());
    for (const FrameErrors& one : errors_) {
      if (std::isfinite(one.noise)) frames.push_back({one.noise * one.noise, one.freedom});
    }
    return frames;
  }

  // What each track that is seen in a frame is there.
  void addUses(const FrameResult& result, const Matches& used, const std::vector<double>& weights) {
    const bool held = result.verdict.status == Status::Held;
    std::size_t i = 0;  // of the matches, which have the order of the observations
    for (const Observation& o : tracks_.inFrame(result.frame)) {
      if (!(o.weight > 0.0f)) continue;
      const bool isUsed = i < used.size() && used.tracks()[i] == o.track;
      const bool good = isUsed ? weights[i] > 0.0 : keepsToPlace(o, result);
      runs_.add(o.track, result.frame, good && !held ? TrackUse::Good : TrackUse::Ignored);
      if (isUsed) ++i;
    }
  }

  // Of a track that the fit did without: it may still be good.
  bool keepsToPlace(const Observation& o, const FrameResult& result) const {
    const SurfaceMap& map = sweeps_.surfaceMap();
    if (!map.knows(o.track)) return false;
    if (!sweeps_.toldBad(result)) return true;
    const Matches one = {
        {map.placeOf(o.track), {o.x, o.y}, static_cast<double>(o.weight), o.track}};
    return goodWeights(one, result.h, result_.baseCentre, result.sigma).front() > 0.0;
  }

  // The standard deviation of one coordinate of a track in the median frame.
  double usualNoise() const {
    std::vector<double> noises;
    for (const FrameResult& frame : frames_) {
      if (std::isfinite(frame.figures.noise)) noises.push_back(frame.figures.noise);
    }
    return lowerMedian(noises);
  }

  void addTracks() {
    const double noise = usualNoise();
    const double variance = noise * noise;
    for (std::size_t t = 0; t < tracks_.names.size(); ++t) {
      const int track = static_cast<int>(t);
      TrackResult result;
      result.name = tracks_.names[t];
      result.place = sweeps_.surfaceMap().placeOf(track);
      if (!base_.sees(track) && sweeps_.surfaceMap().knows(track)) {
        result.covariance = times(lasting_.varianceRatio(), sweeps_.places()[t].covariance);
      } else if (sweeps_.surfaceMap().knows(track) && std::isfinite(variance)) {
        result.covariance = {variance, 0.0, variance};
      }
      result.runs = runs_.of(track, tracks_.firstFrame(), tracks_.lastFrame());
      result_.tracks.push_back(std::move(result));
    }
  }

  const Tracks& tracks_;
  const SolveOptions& options_;
  ShotSweeps& sweeps_;
  PhaseCount count_;
  const BaseFrame& base_;
  std::vector<FrameResult>& frames_;  // the sweeps' own, which become the result's
  TrackRuns runs_;
  std::vector<Quad> quads_;                           // in the base frame
  std::vector<std::vector<Symmetric2>> covariances_;  // by frame, of the quads' corners
  double extent_;                                     // of the surface in the base frame
  LastingErrors lasting_;
  std::vector<FrameErrors> errors_;  // by frame
  WorstTracks worst_;
  std::vector<TrackRecord> records_;  // by track
  ShotResult result_;
};

void check(const Tracks& tracks, const SolveOptions& options) {
  if (const std::string flaw = flawOf(options.quads); !flaw.empty()) {
    throw std::invalid_argument(flaw);
  }
  if (options.reference) {
    requireFrame(*options.reference, tracks.firstFrame(), tracks.lastFrame());
  }
}

std::vector<PilotFrame> pilotOf(const ShotSweeps& sweeps) {
  std::vector<PilotFrame> pilot;
  for (const FrameResult& frame : sweeps.frames()) {
    const bool counts = frame.verdict.status == Status::Base || sweeps.isFirm(frame);
    pilot.push_back({counts, frame.h, frame.sigma});
  }
  return pilot;
}

// Whether no base frame lacks a track.
bool allSeenInAll(const Tracks& tracks) {
  const auto isSeen = [](const Observation& o) { return o.weight > 0.0f; };
  const auto seen = std::count_if(tracks.observations.begin(), tracks.observations.end(), isSeen);
  return static_cast<std::size_t>(seen) ==
         tracks.names.size() * static_cast<std::size_t>(tracks.frameCount());
}

// The quad that bases are compared by, in the pilot's base frame; none where it cannot be carried
// there.
std::optional<Quad> quadFor(const SolveOptions& options, const ShotSweeps& pilot) {
  if (options.quads.empty()) return std::nullopt;
  const int reference = options.reference.value_or(pilot.base().frame());
  const FrameResult& frame =
      pilot.frames()[static_cast<std::size_t>(reference - pilot.frames().front().frame)];
  try {
    return carriedToBase({options.quads.front()}, frame, pilot.units().fileToFit.centre)
        .front()
        .corners;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

}  // namespace

ShotResult solveShot(const Tracks& tracks, const SolveOptions& options, const Progress& progress) {
  check(tracks, options);
  const bool handsOver = options.handOver && options.loss != Loss::None;
  std::optional<PhaseCount> frames;
  const std::function<void()> report = [&frames] { frames->add(); };
  const std::size_t others = static_cast<std::size_t>(tracks.frameCount()) - 1;
  std::optional<ShotSweeps> sweeps;
  const auto sweepFrom = [&](int base) {
    sweeps.emplace(tracks, options, base, report);
    if (!frames) {
      frames.emplace(progress, Phase::Solving,
                     options.base ? sweeps->mostReports()
                                  : (handsOver && !allSeenInAll(tracks) ? 3 : 2) * others);
    }
    sweeps->sweepFirst();
  };
  std::string why;
  if (options.base) {
    sweepFrom(*options.base);
  } else {
    sweepFrom(guessBaseFrame(tracks, handsOver));
    const BaseChoice choice = chooseBase(tracks, sweeps->base().frame(), pilotOf(*sweeps),
                                         quadFor(options, *sweeps), handsOver, progress);
    if (choice.frame != sweeps->base().frame()) sweepFrom(choice.frame);
    why = choice.why;
  }
  sweeps->handOver(progress);
  sweeps->chooseModels();
  ShotResult result = ShotSolver(tracks, options, *sweeps, progress).solve();
  result.whyBase = why;
  return result;
}

}  // namespace cornerpin
