// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/worst_tracks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <utility>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// The median length of plane errors with a standard deviation of 1 in each coordinate.
constexpr double kMedianOfLengths = 1.1774100225154747;  // sqrt(2 ln 2)

// The residual, had the fit not come towards the track.
double unfitted(const TrackInfluence& t) { return t.residual / std::sqrt(1.0 - t.leverage); }

}  // namespace

void WorstTracks::addFrame(int frame, const std::vector<TrackInfluence>& influences) {
  residuals_.clear();
  std::array<std::size_t, kPerFrame> greatest{};  // the greatest first
  std::size_t kept = 0;
  for (std::size_t i = 0; i < influences.size(); ++i) {
    const TrackInfluence& t = influences[i];
    const double residual = t.weight > 0.0 ? unfitted(t) : kNone;
    if (std::isfinite(residual)) residuals_.push_back(residual);
    if (!(t.influence > 0.0)) continue;
    const auto isGreater = [&](std::size_t other) {
      return std::tie(influences[other].influence, t.track) <
             std::tie(t.influence, influences[other].track);
    };
    if (kept == kPerFrame && !isGreater(greatest.back())) continue;
    std::size_t place = kept < kPerFrame ? kept++ : kPerFrame - 1;
    for (; place > 0 && isGreater(greatest[place - 1]); --place) {
      greatest[place] = greatest[place - 1];
    }
    greatest[place] = i;
  }
  for (std::size_t k = 0; k < kept; ++k) {
    const TrackInfluence& t = influences[greatest[k]];
    entries_.push_back(
        {t.track, static_cast<std::uint32_t>(frames_.size()), t.influence, unfitted(t)});
  }
  const bool enough = residuals_.size() >= kFewest;
  frames_.push_back({frame, enough ? lowerMedian(residuals_) / kMedianOfLengths : kNone});
}

// Of the frames that have one.
double WorstTracks::usualDeviation() const {
  std::vector<double> deviations;
  deviations.reserve(frames_.size());
  for (const Frame& frame : frames_) {
    if (!std::isnan(frame.deviation)) deviations.push_back(frame.deviation);
  }
  return lowerMedian(std::move(deviations));
}

TrackStretch WorstTracks::judged(const Entry& entry, double usual) const {
  const Frame& frame = frames_[entry.frame];
  const double deviation = frame.deviation < usual ? usual : frame.deviation;  // NaN stays
  const double off = entry.residual / deviation;
  const bool standsOut = off > kUnlikely && entry.moves > visible_;
  return {entry.track, frame.number, frame.number, frame.number, entry.moves, off, standsOut};
}

std::vector<TrackStretch> WorstTracks::worst(std::size_t count) {
  const double usual = usualDeviation();
  std::sort(entries_.begin(), entries_.end(), [this](const Entry& a, const Entry& b) {
    return std::make_pair(a.track, frameOf(a)) < std::make_pair(b.track, frameOf(b));
  });
  std::vector<bool> taken(entries_.size());  // into a stretch
  const auto isLeft = [&](const Entry& e) {
    return !taken[static_cast<std::size_t>(&e - entries_.data())];
  };
  const auto less = [&](const Entry& a, const Entry& b) {
    return std::make_tuple(isLeft(a), judged(a, usual).standsOut, a.moves) <
           std::make_tuple(isLeft(b), judged(b, usual).standsOut, b.moves);
  };
  std::vector<TrackStretch> result;
  // The greatest entry that is left, and the frames around it that belong to it; then the next.
  while (result.size() < count && !entries_.empty()) {
    const auto peak = std::max_element(entries_.begin(), entries_.end(), less);
    if (!isLeft(*peak)) break;
    const auto joins = [&](const Entry& a, const Entry& b) {
      return isLeft(b) && b.track == a.track && std::abs(frameOf(b) - frameOf(a)) == 1 &&
             b.moves >= peak->moves / 2;
    };
    auto first = peak;
    while (first != entries_.begin() && joins(*first, first[-1])) --first;
    auto last = peak;
    while (last + 1 != entries_.end() && joins(*last, last[1])) ++last;
    result.push_back(judged(*peak, usual));
    result.back().first = frameOf(*first);
    result.back().last = frameOf(*last);
    std::fill(taken.begin() + (first - entries_.begin()),
              taken.begin() + (last + 1 - entries_.begin()), true);
  }
  return result;
}

}  // namespace cornerpin
