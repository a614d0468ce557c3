// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/motion_trials.h"

#include <algorithm>
#include <utility>

#include "shot/fit/residuals.h"
#include "shot/fit/variance_ratio.h"
#include "shot/plane/quad_map.h"
#include "shot/plane/quad_path.h"

namespace cornerpin {

namespace {

constexpr double kLevel = 1e-3;
constexpr std::size_t kMostTrials = 50;
constexpr double kFewestTrials = 2.0;
// Few trials may all be lucky: the mean square counts as if there were so many more like it.
constexpr double kUnseen = 2.0;

std::ptrdiff_t halved(std::ptrdiff_t offset) {
  return offset / 2 != 0 ? offset / 2 : (offset > 0 ? 1 : -1);
}

// By how much the square of what is missed grows from the shorter offsets to the longer ones: the
// polynomial's error has their product as a factor.
double growth(const Offsets& longer, const Offsets& shorter) {
  double factor = 1.0;
  for (std::size_t i = 0; i < longer.size(); ++i) {
    const double times = static_cast<double>(longer[i]) / static_cast<double>(shorter[i]);
    factor *= times * times;
  }
  return factor;
}

// Half the offsets, with all of them apart.
Offsets halved(const Offsets& from) {
  Offsets shorter;
  for (std::ptrdiff_t offset : from) {
    std::ptrdiff_t half = halved(offset);
    while (std::find(shorter.begin(), shorter.end(), half) != shorter.end()) {
      half += offset > 0 ? 1 : -1;
    }
    shorter.push_back(half);
  }
  return shorter;
}

bool areInFront(const Homography& h, const Points& points, Point track) {
  for (Point p : points) {
    if (!onSameSide(h, p, track)) return false;
  }
  return true;
}

// The matches as they would be without noise.
Matches exactlySeen(const TrialFrame& frame) {
  Matches exact = frame.tracks;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    Match match = exact[i];
    match.present = map(frame.seen, match.base);
    exact.set(i, match);
  }
  return exact;
}

}  // namespace

Homography takenFrom(const std::vector<Homography>& others, const Offsets& from,
                     const Quad& corners) {
  if (others.size() == 1) return others.front();
  const std::vector<double> times(from.begin(), from.end());
  return quadToQuad(corners, quadAt(0.0, times, others, corners));
}

bool contradicts(double squares, std::size_t pairs, const Noise& noise) {
  if (pairs == 0) return false;
  const double mean = squares / static_cast<double>(2 * pairs);
  return chanceOfRatio(mean / (noise.sigma * noise.sigma), pairs, noise.pairs) < kLevel;
}

MotionTrials::MotionTrials(std::vector<const Homography*> known) : known_(std::move(known)) {
  frames_.reserve(known_.size());
  for (std::size_t f = 0; f < known_.size(); ++f) {
    if (known_[f] != nullptr) frames_.push_back(f);
  }
}

std::vector<std::size_t> MotionTrials::framesFor(const Offsets& from) const {
  std::vector<std::size_t> all;
  const auto count = static_cast<std::ptrdiff_t>(known_.size());
  const auto isKnown = [&](std::ptrdiff_t frame) {
    return frame >= 0 && frame < count && known_[static_cast<std::size_t>(frame)] != nullptr;
  };
  for (const std::size_t f : frames_) {
    const bool usable = std::all_of(from.begin(), from.end(), [&](std::ptrdiff_t offset) {
      return isKnown(static_cast<std::ptrdiff_t>(f) + offset);
    });
    if (usable) all.push_back(f);
  }
  if (all.size() <= kMostTrials) return all;
  std::vector<std::size_t> spread;
  for (std::size_t i = 0; i < kMostTrials; ++i) spread.push_back(all[i * all.size() / kMostTrials]);
  return spread;
}

Homography MotionTrials::keptIn(std::size_t trial, const Offsets& from,
                                const TrialFrame& frame) const {
  const Homography back = product(inverse(*known_[trial]), frame.seen);
  std::vector<Homography> others;
  for (std::ptrdiff_t offset : from) {
    const auto other = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(trial) + offset);
    others.push_back(product(*known_[other], back));
  }
  // The motion from the frames at the offsets to the trial's, ending in what is seen.
  return takenFrom(others, from, frame.corners);
}

const std::vector<FrameTrials::Trial>& FrameTrials::trialsFor(const Offsets& from) {
  const auto [place, isNew] = all_.try_emplace(from);
  if (!isNew) return place->second;
  if (exact_.empty()) {
    exact_ = exactlySeen(frame_);
    squaredWeights_ = relativeSquares(exact_.weights());
  }
  for (std::size_t trial : trials_.framesFor(from)) {
    const Homography kept = trials_.keptIn(trial, from, frame_);
    if (isFinite(kept)) place->second.push_back({kept, FitsOnTop(exact_, squaredWeights_, kept)});
  }
  return place->second;
}

std::vector<double> FrameTrials::missesAt(const Offsets& from, Model model, const Points& points,
                                          std::size_t pairsLeft, const Noise& noise) {
  double count = 0.0;
  std::vector<double> sums(points.size(), 0.0);
  for (const Trial& trial : trialsFor(from)) {
    if (!areInFront(trial.kept, points, exact_.base()[0])) continue;
    const std::optional<Homography> h = trial.fits.of(model);
    if (!h || contradicts(weightedSquares(exact_, *h), pairsLeft, noise)) continue;
    count += 1.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
      sums[i] += squaredDistance(map(*h, points[i]), map(frame_.seen, points[i]));
    }
  }
  if (count < kFewestTrials) return {};
  for (double& sum : sums) sum *= (count + kUnseen) / (count * count);
  return sums;
}

std::vector<double> FrameTrials::misses(const LowerModel& lower, const Points& points,
                                        std::size_t pairs, const Noise& noise) {
  const Points& tracks = frame_.tracks.base();
  if (!areInFront(frame_.seen, points, tracks[0]) || !onOneSide(frame_.seen, tracks)) return {};
  const std::size_t pairsLeft = pairs - tracksFor(lower.model);
  for (Offsets from = lower.from;;) {
    std::vector<double> squares = missesAt(from, lower.model, points, pairsLeft, noise);
    const double factor = growth(lower.from, from);
    for (double& square : squares) square *= factor;
    Offsets shorter = halved(from);
    if (!squares.empty() || shorter == from) return squares;
    from = std::move(shorter);
  }
}

}  // namespace cornerpin
