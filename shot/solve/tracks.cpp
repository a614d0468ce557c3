// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/tracks.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>
#include <utility>

namespace cornerpin {

namespace {

using Rows = std::vector<Observation>;
using Starts = std::vector<std::size_t>;

std::size_t distance(std::int32_t first, std::int32_t frame) {
  return static_cast<std::size_t>(frame - first);
}

// Where each frame begins in rows that are in order, and where the last one ends. Empty when a row
// does not come behind the one before it.
Starts startsIn(const Rows& rows) {
  Starts starts;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i > 0 && rows[i].frame == rows[i - 1].frame) {
      if (rows[i].track <= rows[i - 1].track) return {};
    } else {
      if (i > 0 && rows[i].frame < rows[i - 1].frame) return {};
      starts.resize(distance(rows.front().frame, rows[i].frame) + 1, i);
    }
  }
  starts.push_back(rows.size());
  return starts;
}

// The same for rows in any order: where each frame belongs.
Starts countedStarts(const Rows& rows, std::int32_t first, std::int32_t last) {
  Starts starts(distance(first, last) + 2);
  for (const Observation& o : rows) ++starts[distance(first, o.frame) + 1];
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  return starts;
}

// Puts the rows of each frame together and leaves them in their order there: follows the cycles of
// the permutation, so that the rows need no second place.
template <class Place>
void gather(Rows& rows, std::int32_t first, Starts next) {
  std::vector<Place> places;
  places.reserve(rows.size());
  for (const Observation& o : rows) {
    places.push_back(static_cast<Place>(next[distance(first, o.frame)]++));
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    while (places[i] != i) {
      const std::size_t place = places[i];
      std::swap(rows[i], rows[place]);
      std::swap(places[i], places[place]);
    }
  }
}

// Puts the rows of each frame together; says where each frame begins.
Starts gatherRows(Rows& rows) {
  const auto byFrame = [](const Observation& a, const Observation& b) { return a.frame < b.frame; };
  const auto ends = std::minmax_element(rows.begin(), rows.end(), byFrame);
  const std::int32_t first = ends.first->frame;
  Starts starts = countedStarts(rows, first, ends.second->frame);
  if (std::is_sorted(rows.begin(), rows.end(), byFrame)) return starts;
  if (rows.size() <= std::numeric_limits<std::uint32_t>::max()) {
    gather<std::uint32_t>(rows, first, starts);
  } else {
    gather<std::size_t>(rows, first, starts);
  }
  return starts;
}

void sortRows(Rows& rows) {
  const Starts starts = gatherRows(rows);
  const auto before = [](const Observation& a, const Observation& b) {
    return std::tie(a.track, a.line) < std::tie(b.track, b.line);
  };
  for (std::size_t f = 0; f + 1 < starts.size(); ++f) {
    const auto begin = rows.begin() + static_cast<std::ptrdiff_t>(starts[f]);
    const auto end = rows.begin() + static_cast<std::ptrdiff_t>(starts[f + 1]);
    if (!std::is_sorted(begin, end, before)) std::sort(begin, end, before);
  }
}

}  // namespace

void Tracks::sortNames() {
  if (std::is_sorted(names.begin(), names.end())) return;
  std::vector<std::size_t> order(names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [this](std::size_t a, std::size_t b) { return names[a] < names[b]; });
  std::vector<std::int32_t> places(names.size());
  std::vector<std::string> sorted(names.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    places[order[i]] = static_cast<std::int32_t>(i);
    sorted[i] = std::move(names[order[i]]);
  }
  names = std::move(sorted);
  for (Observation& o : observations) o.track = places[static_cast<std::size_t>(o.track)];
}

bool Tracks::arrange() {
  frameStarts = startsIn(observations);
  if (frameStarts.empty()) {
    sortRows(observations);
    frameStarts = startsIn(observations);
  }
  return !frameStarts.empty();
}

Tracks::Range Tracks::inFrame(int frame) const {
  const Observation* const rows = observations.data();
  if (frameStarts.size() > 1 && frameStarts.back() == observations.size()) {
    if (frame < firstFrame() || frame > lastFrame()) return {rows, rows};
    const std::size_t* const start = &frameStarts[distance(firstFrame(), frame)];
    return {rows + start[0], rows + start[1]};
  }
  const auto first = std::lower_bound(observations.begin(), observations.end(), frame,
                                      [](const Observation& o, int f) { return o.frame < f; });
  const auto last = std::upper_bound(first, observations.end(), frame,
                                     [](int f, const Observation& o) { return f < o.frame; });
  return {rows + (first - observations.begin()), rows + (last - observations.begin())};
}

}  // namespace cornerpin
