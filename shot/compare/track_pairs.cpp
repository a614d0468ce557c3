// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/track_pairs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

using Numbers = std::vector<std::int32_t>;

std::size_t index(std::int32_t track) { return static_cast<std::size_t>(track); }

Numbers allOf(const Tracks& tracks) {
  Numbers numbers(tracks.names.size());
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

// The tracks' middle places, in x and in y; NaN for a track without a position.
std::vector<Point> middlesOf(const Tracks& tracks) {
  std::vector<std::vector<double>> x(tracks.names.size());
  std::vector<std::vector<double>> y(tracks.names.size());
  for (const Observation& row : tracks.observations) {
    x[index(row.track)].push_back(row.x);
    y[index(row.track)].push_back(row.y);
  }
  std::vector<Point> middles(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    middles[i] = {lowerMedian(std::move(x[i])), lowerMedian(std::move(y[i]))};
  }
  return middles;
}

// Tracks without a position behind all others.
bool isLeft(Point a, Point b) {
  if (std::isnan(a.x) || std::isnan(b.x)) return !std::isnan(a.x) && std::isnan(b.x);
  return a.x != b.x ? a.x < b.x : a.y < b.y;
}

void sortFromLeft(Numbers& numbers, const std::vector<Point>& middles) {
  std::stable_sort(numbers.begin(), numbers.end(), [&](std::int32_t a, std::int32_t b) {
    return isLeft(middles[index(a)], middles[index(b)]);
  });
}

void matchInOrder(TrackMatch& match, const Numbers& first, const Numbers& second) {
  for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
    match[index(first[i])] = second[i];
  }
}

// The tracks that a match leaves alone, of either file.
std::pair<Numbers, Numbers> leftBy(const TrackMatch& match, const Tracks& second) {
  std::pair<Numbers, Numbers> left;
  std::vector<bool> taken(second.names.size(), false);
  for (std::size_t i = 0; i < match.size(); ++i) {
    if (match[i] == kNoTrack) {
      left.first.push_back(static_cast<std::int32_t>(i));
    } else {
      taken[index(match[i])] = true;
    }
  }
  for (std::size_t i = 0; i < taken.size(); ++i) {
    if (!taken[i]) left.second.push_back(static_cast<std::int32_t>(i));
  }
  return left;
}

void addPermutations(std::vector<TrackMatch>& matches) {
  TrackMatch order = {0, 1, 2, 3};
  while (std::next_permutation(order.begin(), order.end())) matches.push_back(order);
}

// How x goes on in a track from one frame to the next.
struct Motion {
  double x;
  int frame;
};

constexpr std::size_t kMostTracks = 20;
constexpr std::size_t kMostMotions = 200;  // of each track that are asked
constexpr std::ptrdiff_t kMostAlike = 20;  // one with more like it says nothing
constexpr std::size_t kMostElected = 3;

constexpr std::size_t kMostAsked = 1000;  // tracks about as far to the left as one

// The difference of two frames; 0 where it is no number of 32 bits with either sign.
int apart(std::int32_t frame, std::int32_t other) {
  const std::int64_t difference = std::int64_t{other} - frame;
  const bool fits = std::abs(difference) <= std::numeric_limits<std::int32_t>::max();
  return fits ? static_cast<int>(difference) : 0;
}

using TrackMotions = std::vector<std::vector<Motion>>;

// Of the tracks with these places in the list; others have -1.
TrackMotions motionsOf(const Tracks& tracks, const Numbers& places, std::size_t count) {
  TrackMotions motions(count);
  std::vector<const Observation*> before(count, nullptr);
  for (const Observation& row : tracks.observations) {
    const std::int32_t place = places[index(row.track)];
    if (place < 0) continue;
    const Observation*& last = before[index(place)];
    if (last != nullptr && last->frame == row.frame - 1)
      motions[index(place)].push_back({row.x - last->x, row.frame});
    last = &row;
  }
  return motions;
}

void vote(const std::vector<Motion>& first, std::vector<Motion> second, double allowed,
          std::map<int, int>& votes) {
  const auto before = [](const Motion& a, const Motion& b) { return a.x < b.x; };
  std::sort(second.begin(), second.end(), before);
  const std::size_t step = first.size() / kMostMotions + 1;
  for (std::size_t i = 0; i < first.size(); i += step) {
    const Motion& m = first[i];
    const auto low =
        std::lower_bound(second.begin(), second.end(), Motion{m.x - allowed, 0}, before);
    const auto high = std::upper_bound(low, second.end(), Motion{m.x + allowed, 0}, before);
    if (high - low > kMostAlike) continue;
    for (auto like = low; like != high; ++like) ++votes[apart(m.frame, like->frame)];
  }
}

std::vector<int> electedShifts(const Tracks& first, const Tracks& second, const TrackMatch& match,
                               double allowed) {
  Numbers places(match.size(), -1);
  Numbers otherPlaces(second.names.size(), -1);
  std::int32_t count = 0;
  for (std::size_t i = 0; i < match.size() && index(count) < kMostTracks; ++i) {
    if (match[i] == kNoTrack) continue;
    places[i] = count;
    otherPlaces[index(match[i])] = count++;
  }
  const TrackMotions motions = motionsOf(first, places, index(count));
  const TrackMotions others = motionsOf(second, otherPlaces, index(count));
  std::map<int, int> votes;
  for (std::size_t i = 0; i < motions.size(); ++i) vote(motions[i], others[i], allowed, votes);
  std::vector<std::pair<int, int>> ranked;
  ranked.reserve(votes.size());
  for (const auto& [shift, count_] : votes) ranked.emplace_back(-count_, shift);
  std::sort(ranked.begin(), ranked.end());
  std::vector<int> shifts;
  for (std::size_t i = 0; i < std::min(ranked.size(), kMostElected); ++i)
    shifts.push_back(ranked[i].second);
  return shifts;
}

}  // namespace

TrackMatch matchByName(const Tracks& first, const Tracks& second) {
  std::unordered_map<std::string_view, std::int32_t> numbers;
  for (std::size_t i = 0; i < second.names.size(); ++i)
    numbers.emplace(second.names[i], static_cast<std::int32_t>(i));
  TrackMatch match(first.names.size(), kNoTrack);
  for (std::size_t i = 0; i < match.size(); ++i) {
    const auto found = numbers.find(first.names[i]);
    if (found != numbers.end()) match[i] = found->second;
  }
  return match;
}

std::vector<TrackMatch> otherMatches(const Tracks& first, const Tracks& second) {
  const TrackMatch byName = matchByName(first, second);
  const std::vector<Point> middles = middlesOf(first);
  const std::vector<Point> others = middlesOf(second);
  std::vector<TrackMatch> matches;
  auto [left, right] = leftBy(byName, second);
  if (!left.empty() && left.size() == right.size()) {
    matches.push_back(byName);
    matchInOrder(matches.back(), left, right);
    sortFromLeft(left, middles);
    sortFromLeft(right, others);
    matches.push_back(byName);
    matchInOrder(matches.back(), left, right);
  }
  if (first.names.size() == second.names.size()) {
    Numbers all = allOf(first);
    Numbers otherAll = allOf(second);
    sortFromLeft(all, middles);
    sortFromLeft(otherAll, others);
    matches.emplace_back(first.names.size(), kNoTrack);
    matchInOrder(matches.back(), all, otherAll);
    if (all.size() == 4) addPermutations(matches);
  }
  std::vector<TrackMatch> once;
  for (TrackMatch& match : matches) {
    const bool isNew = match != byName && std::find(once.begin(), once.end(), match) == once.end();
    if (isNew) once.push_back(std::move(match));
  }
  return once;
}

TrackMatch matchByPlace(const Tracks& first, const Tracks& second, const AxisChange& x,
                        const AxisChange& y, double most) {
  const std::vector<Point> middles = middlesOf(first);
  const std::vector<Point> others = middlesOf(second);
  Numbers order = allOf(second);
  sortFromLeft(order, others);
  while (!order.empty() && std::isnan(others[index(order.back())].x)) order.pop_back();
  const auto isBefore = [&](std::int32_t track, double at) { return others[index(track)].x < at; };
  std::vector<bool> taken(second.names.size(), false);
  TrackMatch match(first.names.size(), kNoTrack);
  for (std::size_t i = 0; i < match.size(); ++i) {
    const Point p = {x(middles[i].x), y(middles[i].y)};
    double nearest = most * most;
    std::size_t asked = 0;
    for (auto at = std::lower_bound(order.begin(), order.end(), p.x - most, isBefore);
         at != order.end() && others[index(*at)].x <= p.x + most && asked < kMostAsked;
         ++at, ++asked) {
      const double distance = squaredDistance(p, others[index(*at)]);
      if (taken[index(*at)] || !(distance <= nearest)) continue;
      nearest = distance;
      match[i] = *at;
      if (distance == 0.0) break;
    }
    if (match[i] != kNoTrack) taken[index(match[i])] = true;
  }
  return match;
}

std::vector<int> likelyShifts(const Tracks& first, const Tracks& second, const TrackMatch& match,
                              double allowed) {
  std::vector<int> all = {apart(first.firstFrame(), second.firstFrame()),
                          apart(first.lastFrame(), second.lastFrame()), 1, -1};
  for (int shift : electedShifts(first, second, match, allowed)) all.push_back(shift);
  std::vector<int> shifts;
  for (int shift : all) {
    const bool isNew = shift != 0 && std::find(shifts.begin(), shifts.end(), shift) == shifts.end();
    if (isNew) shifts.push_back(shift);
  }
  return shifts;
}

std::vector<ObservationPair> pairsOf(const Tracks& first, const Tracks& second,
                                     const TrackMatch& match, int frames) {
  std::vector<ObservationPair> pairs;
  std::vector<const Observation*> rows(second.names.size(), nullptr);  // of the frame at hand
  Tracks::Range there = {nullptr, nullptr};
  for (std::size_t i = 0; i < first.observations.size(); ++i) {
    const Observation& row = first.observations[i];
    if (i == 0 || row.frame != first.observations[i - 1].frame) {
      for (const Observation& other : there) rows[index(other.track)] = nullptr;
      const std::int64_t frame = std::int64_t{row.frame} + frames;
      const bool isThere = frame >= second.firstFrame() && frame <= second.lastFrame();
      there = isThere ? second.inFrame(static_cast<int>(frame)) : Tracks::Range{nullptr, nullptr};
      for (const Observation& other : there) rows[index(other.track)] = &other;
    }
    const std::int32_t track = match[index(row.track)];
    if (track != kNoTrack && rows[index(track)] != nullptr)
      pairs.push_back({&row, rows[index(track)]});
  }
  return pairs;
}

std::vector<ObservationPair> someOf(std::vector<ObservationPair> pairs, std::size_t most) {
  if (pairs.size() <= most) return pairs;
  constexpr std::uint64_t kScatter = 0x9E3779B97F4A7C15U;
  const std::uint64_t below = ~std::uint64_t{0} / pairs.size() * most;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    if (i * kScatter < below) pairs[kept++] = pairs[i];
  }
  pairs.resize(kept);
  return pairs;
}

}  // namespace cornerpin
