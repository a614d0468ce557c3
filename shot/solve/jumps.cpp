// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/jumps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr std::ptrdiff_t kReach = 4;    // frames, to a neighbour
constexpr std::ptrdiff_t kWindow = 10;  // frames on a side, for what is usual
constexpr std::size_t kFewestUsual = 5;
constexpr double kDeviations = 4.0;
constexpr double kUsual = 8.0;
constexpr double kOfLimit = 0.2;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Where a corner is in one frame.
struct Sight {
  std::ptrdiff_t time = 0;
  Point place;
  double deviation = kNone;  // NaN: it takes no part
};

// How far a corner is from where other frames put it, and the deviation of that distance. The gain
// is that of the way from all four: large at the ends of the shot, where it leads outwards.
struct Miss {
  double distance = kNone;
  double deviation = kNone;
  double gain = kNone;
};

// Up to four, in the order of time.
struct Neighbours {
  std::array<const Sight*, 4> sights{};
  std::size_t count = 0;
};

std::vector<Sight> sightsOf(const ShotResult& result, std::size_t quad, std::size_t corner) {
  std::vector<Sight> sights;
  sights.reserve(result.frames.size());
  for (const FrameResult& frame : result.frames) {
    const Status status = frame.verdict.status;
    const bool fitted = status == Status::Base || status == Status::Solved;
    sights.push_back({static_cast<std::ptrdiff_t>(sights.size()),
                      carried(result, frame, result.quads[quad].corners[corner]),
                      fitted ? frame.figures.deviations(quad)[corner] : kNone});
  }
  return sights;
}

// The nearest on one side that take part, up to four, the nearest first.
Neighbours nearest(const std::vector<Sight>& sights, std::ptrdiff_t time, std::ptrdiff_t step) {
  Neighbours found;
  const auto end = static_cast<std::ptrdiff_t>(sights.size());
  for (std::ptrdiff_t t = time + step; t >= 0 && t < end && std::abs(t - time) <= kReach;
       t += step) {
    const Sight& sight = sights[static_cast<std::size_t>(t)];
    if (std::isfinite(sight.deviation)) found.sights[found.count++] = &sight;
  }
  return found;
}

// The four that a sight is compared with; fewer where there are not as many.
Neighbours neighboursOf(const std::vector<Sight>& sights, std::ptrdiff_t time) {
  const Neighbours before = nearest(sights, time, -1);
  const Neighbours behind = nearest(sights, time, +1);
  const std::size_t spareBefore = 2 - std::min<std::size_t>(before.count, 2);
  const std::size_t spareBehind = 2 - std::min<std::size_t>(behind.count, 2);
  Neighbours all;
  for (std::size_t i = std::min(before.count, 2 + spareBehind); i-- > 0;) {
    all.sights[all.count++] = before.sights[i];
  }
  for (std::size_t i = 0; i < std::min(behind.count, 2 + spareBefore); ++i) {
    all.sights[all.count++] = behind.sights[i];
  }
  return all;
}

// From where the polynomial through neighbours first .. last - 1 is at the sight's time.
Miss missOf(const Sight& sight, const Neighbours& neighbours, std::size_t first, std::size_t last) {
  Point put;
  double variance = sight.deviation * sight.deviation;
  double squaredGain = 1.0;
  for (std::size_t i = first; i < last; ++i) {
    const Sight& one = *neighbours.sights[i];
    double share = 1.0;
    for (std::size_t k = first; k < last; ++k) {
      if (k == i) continue;
      const std::ptrdiff_t other = neighbours.sights[k]->time;
      share *= static_cast<double>(sight.time - other) / static_cast<double>(one.time - other);
    }
    put.x += share * one.place.x;
    put.y += share * one.place.y;
    variance += share * share * one.deviation * one.deviation;
    squaredGain += share * share;
  }
  return {std::sqrt(squaredDistance(sight.place, put)), std::sqrt(variance),
          std::sqrt(squaredGain)};
}

// The least of the four ways to put it.
Miss leastMiss(const Sight& sight, const Neighbours& neighbours) {
  if (!std::isfinite(sight.deviation) || neighbours.count < 4) return {};
  Miss least = missOf(sight, neighbours, 0, 4);
  for (std::size_t first = 0; first < 3; ++first) {
    const Miss miss = missOf(sight, neighbours, first, first + 2);
    if (miss.distance < least.distance) least = {miss.distance, miss.deviation, least.gain};
  }
  return least;
}

double medianOf(const std::vector<double>& misses, std::ptrdiff_t first, std::ptrdiff_t last) {
  std::vector<double> distances;
  for (std::ptrdiff_t t = std::max<std::ptrdiff_t>(first, 0);
       t < std::min(last, static_cast<std::ptrdiff_t>(misses.size())); ++t) {
    const double distance = misses[static_cast<std::size_t>(t)];
    if (std::isfinite(distance)) distances.push_back(distance);
  }
  return distances.size() < kFewestUsual ? kNone : lowerMedian(distances);
}

// NaN where too few frames are around.
double usualAt(const std::vector<double>& misses, std::ptrdiff_t time) {
  return std::fmax(medianOf(misses, time - kWindow, time),
                   medianOf(misses, time + 1, time + 1 + kWindow));
}

// One corner in all frames.
class CornerPath {
 public:
  CornerPath(std::vector<Sight> sights, double limit) : sights_(std::move(sights)), limit_(limit) {
    misses_.reserve(sights_.size());
    distances_.reserve(sights_.size());
    for (const Sight& sight : sights_) {
      misses_.push_back(missOf(sight));
      distances_.push_back(misses_.back().distance);
    }
  }

  // Raises the figures of the frames in which the corner stands out. The one that stands out most
  // is set aside, and what it made of its neighbours goes with it; then the next one.
  void addTo(std::vector<double>& jumps) {
    std::vector<std::size_t> suspects;
    for (std::size_t i = 0; i < sights_.size(); ++i) {
      if (standsOut(i)) suspects.push_back(i);
    }
    const auto own = [&](std::size_t i) { return misses_[i].distance / misses_[i].gain; };
    for (;;) {
      suspects.erase(std::remove_if(suspects.begin(), suspects.end(),
                                    [&](std::size_t i) { return !standsOut(i); }),
                     suspects.end());
      if (suspects.empty()) return;
      const std::size_t worst =
          *std::max_element(suspects.begin(), suspects.end(),
                            [&](std::size_t a, std::size_t b) { return own(a) < own(b); });
      jumps[worst] = std::max(jumps[worst], misses_[worst].distance);
      setAside(worst);
    }
  }

 private:
  Miss missOf(const Sight& sight) const {
    return leastMiss(sight, neighboursOf(sights_, sight.time));
  }

  bool standsOut(std::size_t i) const {
    const Miss& miss = misses_[i];
    return miss.distance > kDeviations * miss.deviation && miss.distance > kOfLimit * limit_ &&
           miss.distance > kUsual * usualAt(distances_, sights_[i].time);
  }

  void setAside(std::size_t i) {
    sights_[i].deviation = kNone;
    const std::size_t first = i - std::min<std::size_t>(i, kReach);
    const std::size_t last = std::min(i + kReach, sights_.size() - 1);
    for (std::size_t k = first; k <= last; ++k) misses_[k] = missOf(sights_[k]);
  }

  std::vector<Sight> sights_;
  double limit_;
  std::vector<Miss> misses_;
  std::vector<double> distances_;  // of the misses before any sight was set aside
};

}  // namespace

std::vector<double> jumpsOf(const ShotResult& result) {
  std::vector<double> jumps(result.frames.size(), 0.0);
  for (std::size_t quad = 0; quad < result.quads.size(); ++quad) {
    for (std::size_t corner = 0; corner < 4; ++corner) {
      CornerPath(sightsOf(result, quad, corner), result.maxError).addTo(jumps);
    }
  }
  return jumps;
}

}  // namespace cornerpin
