// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/model_pass.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "shot/fit/reduced_fit.h"
#include "shot/fit/residuals.h"
#include "shot/fit/support.h"
#include "shot/plane/extent.h"
#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What a firm frame's worst corner may be off, in the surface's extent.
constexpr double kFirm = 0.005;
// The expected error is at most this many times the noise gain and sigma: two coordinates, noise in
// both frames, and a corner that may be seen larger than the surface as a whole.
constexpr double kMostOfGain = 4.0;
// A lower model has to come so much nearer than the full one; where the tracks are well spread, and
// only their noise is large, nearer yet.
constexpr double kNearer = 0.5;
constexpr double kNearerWhereSpread = 0.25;
// The sigma of the shot counts as much as this many tracks of the frame beyond the four that a
// transform meets.
constexpr std::size_t kUsualPairs = 5;
constexpr int kFramesAround = 8;  // on each side

double extentOf(const Quad& corners) {
  const Box box = boxAround({corners[0], corners[1], corners[2], corners[3]});
  return std::max(box.high.x - box.low.x, box.high.y - box.low.y);
}

std::size_t shifted(std::size_t frame, std::ptrdiff_t offset) {
  return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(frame) + offset);
}

// Of tracks with these squared residuals; 0 without any. What slid off in some frames counts as far
// as four times the median.
double sigmaOf(const std::vector<std::vector<double>>& squares, const std::vector<bool>& chosen) {
  std::vector<double> all;
  for (std::size_t t = 0; t < squares.size(); ++t) {
    if (chosen[t]) all.insert(all.end(), squares[t].begin(), squares[t].end());
  }
  if (all.empty()) return 0.0;
  const double most = 16.0 * lowerMedian(all);
  double sum = 0.0;
  for (double square : all) sum += std::min(square, most);
  return std::sqrt(sum / (2.0 * static_cast<double>(all.size())));
}

std::size_t trackAt(const Matches& matches, std::size_t i) {
  return static_cast<std::size_t>(matches.tracks()[i]);
}

std::size_t lastTrack(const Matches& matches) {
  int last = 0;
  for (int track : matches.tracks()) last = std::max(last, track);
  return static_cast<std::size_t>(last);
}

std::ptrdiff_t distance(std::size_t from, std::size_t to) {
  return static_cast<std::ptrdiff_t>(to) - static_cast<std::ptrdiff_t>(from);
}

}  // namespace

ModelPass::ModelPass(std::vector<FrameResult>& frames, const std::vector<SweptFrame>& swept,
                     std::size_t base, TracksOf tracksOf, TracksOf knownIn, Refit refit,
                     double likely)
    : frames_(frames),
      swept_(swept),
      base_(base),
      tracksOf_(std::move(tracksOf)),
      knownIn_(std::move(knownIn)),
      refit_(std::move(refit)),
      certain_(frames.size()),
      firm_(frames.size()) {
  findFirm(likely);
  trials_.emplace(firmTransforms());
  for (std::size_t f = base; f + 1 < frames.size(); ++f) settle(f + 1, +1);
  for (std::size_t f = base; f > 0; --f) settle(f - 1, -1);
}

void ModelPass::findFirm(double likely) {
  std::vector<double> sigmas;
  for (std::size_t f = 0; f < frames_.size(); ++f) {
    const bool counts =
        frames_[f].verdict.status == Status::Solved && swept_[f].gain <= kLargestGain;
    if (counts && std::isfinite(frames_[f].sigma)) sigmas.push_back(frames_[f].sigma);
  }
  firmFrames_.reserve(frames_.size());
  usual_ = sigmas.empty() ? Noise{likely, 1} : Noise{lowerMedian(sigmas), kUsualPairs};
  for (std::size_t f = 0; f < frames_.size(); ++f) {
    certain_[f] = f == base_ || isCertain(f);
    firm_[f] = certain_[f] && !isLikelyByChance(frames_[f].verdict.origin);
    if (firm_[f]) firmFrames_.push_back(f);
  }
}

std::vector<const Homography*> ModelPass::firmTransforms() const {
  std::vector<const Homography*> transforms(frames_.size());
  for (std::size_t f = 0; f < frames_.size(); ++f) {
    if (firm_[f]) transforms[f] = &frames_[f].h;
  }
  return transforms;
}

bool ModelPass::isCertain(std::size_t frame) const {
  const FrameResult& result = frames_[frame];
  if (result.verdict.status != Status::Solved) return false;
  const Quad& corners = *swept_[frame].corners;
  Quad seen;
  for (std::size_t i = 0; i < 4; ++i) seen[i] = map(result.h, corners[i]);
  const double limit = kFirm * extentOf(corners);
  const double magnified = std::max(extentOf(seen) / extentOf(corners), 1.0);
  const double sigma = std::max(result.sigma, usual_.sigma);
  if (kMostOfGain * swept_[frame].gain * sigma * magnified <= limit) return true;
  const WeakFrame weak = weakFrame(frame);
  const MotionTrials none({});
  return ModelChoice(weak, none, usual_).fullError() <= limit;
}

WeakFrame ModelPass::weakFrame(std::size_t frame) const {
  const FrameResult& result = frames_[frame];
  WeakFrame weak;
  weak.tracks = tracksOf_(result);
  if (!swept_[frame].good.empty()) weak.tracks = weak.tracks.subset(swept_[frame].good);
  if (result.verdict.status == Status::Solved) weak.full = result.h;
  weak.corners = *swept_[frame].corners;
  return weak;
}

// With the tracks that the frames around call good, and the full transform that these agree on
// where they are others than those of the search.
WeakFrame ModelPass::seenAround(std::size_t frame) const {
  WeakFrame weak = weakFrame(frame);
  const Matches used = tracksOf_(frames_[frame]);
  std::vector<bool> good = swept_[frame].good;
  if (good.empty()) good.assign(used.size(), true);
  const Around others = around(frame, used, good);
  weak.seen = frames_[*firmFrom(frame, frame > base_ ? -1 : 1)].h;
  weak.sigma = sigmaOf(others.squares, others.reliable);
  if (others.reliable == good) return weak;
  const Matches reliable = used.subset(others.reliable);
  if (!weak.full || reliable.size() < kFewestForRobust) {
    weak.tracks = reliable;
    weak.full.reset();
    return weak;
  }
  Prior prior;
  prior.lowSigma = usual_.sigma;
  prior.recentSigma = std::max(usual_.sigma, frames_[frame].sigma);
  for (std::size_t t = 0; t < others.odds.size(); ++t) {
    if (others.reliable[t]) prior.odds.push_back(others.odds[t]);
  }
  const RobustFit again = refit_(reliable, *weak.full, std::move(prior));
  if (!again.found) return weak;
  weak.tracks = reliable.subset(again.good);
  weak.full = again.h;
  return weak;
}

// What the nearest firm frames on both sides, but for the base frame, say of a frame's tracks:
// which of them are good there more often than not, on each side where they are seen. Of a track
// that is seen in none the frame itself says.
ModelPass::Around ModelPass::around(std::size_t frame, const Matches& tracks,
                                    const std::vector<bool>& good) const {
  constexpr auto kNone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> places(1 + lastTrack(tracks), kNone);  // by track
  for (std::size_t t = 0; t < tracks.size(); ++t) places[trackAt(tracks, t)] = t;
  Around result;
  result.squares.resize(tracks.size());
  result.odds.assign(tracks.size(), 1.0);
  std::vector<bool> bad(tracks.size());
  std::vector<int> kept(tracks.size());
  for (std::ptrdiff_t step : {-1, 1}) {
    std::vector<int> votes(tracks.size());
    std::vector<bool> seen(tracks.size());
    std::optional<std::size_t> near = firmFrom(frame, step);
    for (int i = 0; near && i < kFramesAround; ++i, near = firmFrom(*near, step)) {
      if (*near == base_) continue;
      const Matches there = knownIn_(frames_[*near]);
      const double farthest = kGoodWithin * frames_[*near].sigma;
      for (std::size_t t = 0; t < there.size(); ++t) {
        const std::size_t track = trackAt(there, t);
        const std::size_t place = track < places.size() ? places[track] : kNone;
        if (place == kNone) continue;
        const double square = squaredResidual(there[t], frames_[*near].h);
        result.squares[place].push_back(square);
        const bool keeps = square <= farthest * farthest;
        votes[place] += keeps ? 1 : -1;
        kept[place] += keeps ? 1 : 0;
        seen[place] = true;
      }
    }
    for (std::size_t t = 0; t < bad.size(); ++t) bad[t] = bad[t] || (seen[t] && votes[t] <= 0);
  }
  for (std::size_t t = 0; t < tracks.size(); ++t) {
    result.reliable.push_back(result.squares[t].empty() ? good[t] : !bad[t]);
    const double missed = static_cast<double>(result.squares[t].size()) - kept[t];
    result.odds[t] = (1.0 + kept[t]) / (1.0 + missed);
  }
  if (countOf(result.reliable) == 0) result.reliable = good;
  return result;
}

std::optional<std::size_t> ModelPass::firmFrom(std::size_t frame, std::ptrdiff_t step) const {
  if (step > 0) {
    const auto next = std::upper_bound(firmFrames_.begin(), firmFrames_.end(), frame);
    return next == firmFrames_.end() ? std::nullopt : std::optional<std::size_t>(*next);
  }
  const auto next = std::lower_bound(firmFrames_.begin(), firmFrames_.end(), frame);
  return next == firmFrames_.begin() ? std::nullopt : std::optional<std::size_t>(next[-1]);
}

// The farthest firm frame up to so many frames behind the first one, which is firm itself.
std::optional<std::size_t> ModelPass::secondFrom(std::size_t first, std::ptrdiff_t step,
                                                 std::ptrdiff_t most) const {
  const auto reach = static_cast<std::size_t>(most);
  const auto begin = firmFrames_.begin();
  const auto end = firmFrames_.end();
  const std::size_t found = step > 0
                                ? *(std::upper_bound(begin, end, first + reach) - 1)
                                : *std::lower_bound(begin, end, first - std::min(first, reach));
  return found == first ? std::nullopt : std::optional<std::size_t>(found);
}

std::vector<Kept> ModelPass::groundsFor(std::size_t frame, std::ptrdiff_t step,
                                        const Quad& corners) const {
  std::vector<Kept> grounds;
  const auto add = [&](const std::vector<std::size_t>& others) {
    Kept kept;
    std::vector<Homography> transforms;
    for (std::size_t other : others) {
      transforms.push_back(frames_[other].h);
      kept.from.push_back(distance(frame, other));
    }
    kept.h = takenFrom(transforms, kept.from, corners);
    if (isFinite(kept.h)) grounds.push_back(std::move(kept));
  };
  const std::size_t near = *firmFrom(frame, -step);
  const std::optional<std::size_t> far = firmFrom(frame, step);
  const std::ptrdiff_t apart = std::abs(distance(near, far.value_or(frame)));
  add({near});
  if (far) add({*far});
  if (far) add({near, *far});
  for (std::ptrdiff_t reach : {(apart + 2) / 3, apart}) {
    const std::optional<std::size_t> beforeNear = secondFrom(near, -step, reach);
    if (beforeNear) add({near, *beforeNear});
    if (!far) continue;
    const std::optional<std::size_t> behindFar = secondFrom(*far, step, reach);
    if (behindFar) add({*far, *behindFar});
    if (beforeNear && behindFar) add({near, *far, *beforeNear, *behindFar});
  }
  if (near != base_) add({base_});
  const std::size_t neighbour = shifted(frame, -step);
  const auto settled = settled_.find(neighbour);
  if (settled != settled_.end() && std::isfinite(settled->second.squaredError)) {
    grounds.push_back({frames_[neighbour].h, {-step}, settled->second.squaredError});
  }
  return grounds;
}

void ModelPass::settle(std::size_t frame, std::ptrdiff_t step) {
  if (firm_[frame]) return;
  const std::size_t neighbour = shifted(frame, -step);
  const Status status = frames_[frame].verdict.status;
  if (certain_[frame]) return;  // and yet it may be an accident
  if (status == Status::Held) {
    frames_[frame].h = frames_[neighbour].h;
    frames_[frame].rms = rmsResidual(tracksOf_(frames_[frame]), frames_[frame].h);
    return;
  }
  const WeakFrame weak = seenAround(frame);
  ModelChoice choice(weak, *trials_, usual_);
  const double fullError =
      weak.full ? choice.fullError() : ModelChoice(weakFrame(frame), *trials_, usual_).fullError();
  const double nearer = swept_[frame].gain > kLargestGain ? kNearer : kNearerWhereSpread;
  const double bound =
      status == Status::Solved ? nearer * nearer * fullError * fullError : kInfinity;
  const std::optional<Candidate> best =
      choice.bestOnTopOf(groundsFor(frame, step, weak.corners), bound);
  if (best && best->squaredError < bound) {
    reduceTo(*best, weak, frame);
    if (frames_[frame].sigma < choice.sigma()) frames_[frame].sigma = choice.sigma();
    settled_[frame] = {weak, *best, best->squaredError};
  } else if (status == Status::Solved) {
    settled_[frame].squaredError = fullError * fullError;
  } else {
    keepSwept(weak, frame, neighbour);
  }
}

void ModelPass::reduceTo(const Candidate& candidate, const WeakFrame& weak, std::size_t frame) {
  FrameResult& result = frames_[frame];
  if (result.verdict.status == Status::Solved) {
    result.verdict.shortfall = Shortfall::LowerIsNearer;
    result.loss = Loss::None;
    result.width = 0.0;
    result.goodRms = kNoFigure;
  }
  result.verdict.status = Status::Reduced;
  result.verdict.model = candidate.lower.model;
  result.verdict.onTop = true;
  result.verdict.fitted = weak.tracks.size();
  result.verdict.keptFrom.clear();
  for (std::ptrdiff_t offset : candidate.lower.from) {
    result.verdict.keptFrom.push_back(result.frame + static_cast<int>(offset));
  }
  std::sort(result.verdict.keptFrom.begin(), result.verdict.keptFrom.end());
  result.h = candidate.h;
  result.rms = rmsResidual(tracksOf_(result), result.h);
}

// The sweep's model, on top of what the neighbour has come out as.
void ModelPass::keepSwept(const WeakFrame& weak, std::size_t frame, std::size_t neighbour) {
  FrameResult& result = frames_[frame];
  const ReducedFit fit = fitReduced(weak.tracks, result.verdict.model, frames_[neighbour].h);
  settled_[frame].candidate.kept.h = fit.onTop ? frames_[neighbour].h : kIdentity;
  result.verdict.model = fit.model;
  result.verdict.onTop = fit.onTop;
  result.verdict.keptFrom = {};
  if (fit.onTop) result.verdict.keptFrom = {frames_[neighbour].frame};
  result.verdict.status = fit.model == Model::Held ? Status::Held : Status::Reduced;
  result.h = fit.h;
  result.rms = rmsResidual(tracksOf_(result), result.h);
}

const Homography& ModelPass::keptIn(std::size_t frame) const {
  return settled_.at(frame).candidate.kept.h;
}

void ModelPass::takeCovariances(std::size_t frame, const std::vector<Quad>& quads,
                                FrameFigures& figures) const {
  const Settled& settled = settled_.at(frame);
  if (!std::isfinite(settled.squaredError)) return;
  ModelChoice choice(settled.weak, *trials_, usual_);
  for (std::size_t q = 0; q < quads.size(); ++q) {
    const std::vector<Symmetric2> covariances =
        choice.covariances(settled.candidate, {quads[q][0], quads[q][1], quads[q][2], quads[q][3]});
    std::copy(covariances.begin(), covariances.end(), figures.quads[q].begin());
  }
}

}  // namespace cornerpin
