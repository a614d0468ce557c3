// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/worst_tracks.h"

#include <algorithm>
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
  std::vector<double> residuals;
  for (const TrackInfluence& t : influences) {
    if (t.weight > 0.0 && std::isfinite(unfitted(t))) residuals.push_back(unfitted(t));
  }
  double deviation = kNone;
  if (residuals.size() >= kFewest) {
    deviation = lowerMedian(std::move(residuals)) / kMedianOfLengths;
    deviations_.push_back(deviation);
  }
  std::vector<Entry> entries;
  for (const TrackInfluence& t : influences) {
    if (t.influence > 0.0) {
      entries.push_back({t.track, frame, t.influence, unfitted(t), deviation});
    }
  }
  const auto greater = [](const Entry& a, const Entry& b) {
    return std::tie(b.moves, a.track) < std::tie(a.moves, b.track);
  };
  const std::size_t kept = std::min(entries.size(), kPerFrame);
  std::partial_sort(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(kept),
                    entries.end(), greater);
  entries_.insert(entries_.end(), entries.begin(),
                  entries.begin() + static_cast<std::ptrdiff_t>(kept));
}

TrackStretch WorstTracks::judged(const Entry& entry, double usual) const {
  const double deviation = entry.deviation < usual ? usual : entry.deviation;  // NaN stays
  const double off = entry.residual / deviation;
  const bool standsOut = off > kUnlikely && entry.moves > visible_;
  return {entry.track, entry.frame, entry.frame, entry.frame, entry.moves, off, standsOut};
}

std::vector<TrackStretch> WorstTracks::worst(std::size_t count) const {
  const double usual = lowerMedian(deviations_);
  std::vector<Entry> entries = entries_;  // by track and frame; moves 0 once in a stretch
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.track, a.frame) < std::tie(b.track, b.frame);
  });
  std::vector<TrackStretch> result;
  const auto less = [&](const Entry& a, const Entry& b) {
    return std::make_tuple(judged(a, usual).standsOut, a.moves) <
           std::make_tuple(judged(b, usual).standsOut, b.moves);
  };
  // The greatest entry that is left, and the frames around it that belong to it; then the next.
  while (result.size() < count && !entries.empty()) {
    const auto peak = std::max_element(entries.begin(), entries.end(), less);
    if (!(peak->moves > 0.0)) break;
    const auto joins = [&](const Entry& a, const Entry& b) {
      return b.track == a.track && std::abs(b.frame - a.frame) == 1 && b.moves >= peak->moves / 2;
    };
    auto first = peak;
    while (first != entries.begin() && joins(*first, first[-1])) --first;
    auto last = peak;
    while (last + 1 != entries.end() && joins(*last, last[1])) ++last;
    result.push_back(judged(*peak, usual));
    result.back().first = first->frame;
    result.back().last = last->frame;
    std::for_each(first, last + 1, [](Entry& e) { e.moves = 0.0; });
  }
  return result;
}

}  // namespace cornerpin
