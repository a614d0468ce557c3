// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/track_lives.h"

#include <algorithm>

namespace cornerpin {

namespace {

struct Life {
  std::size_t first = 0;
  std::size_t last = 0;
  int sightings = 0;
  int track = 0;
};

// Of the tracks with a known place and a sighting.
std::vector<Life> allLives(const std::vector<double>& noise, const std::vector<Place>& places,
                           const ObservationsOf& observations) {
  std::vector<Life> lives(places.size());
  forEachSighting(noise, observations, [&](std::size_t f, const Match& m) {
    const auto t = static_cast<std::size_t>(m.track);
    if (!isKnown(places[t])) return;
    if (lives[t].sightings++ == 0) lives[t].first = f;
    lives[t].last = f;
    lives[t].track = m.track;
  });
  const auto unseen = [](const Life& life) { return life.sightings == 0; };
  lives.erase(std::remove_if(lives.begin(), lives.end(), unseen), lives.end());
  return lives;
}

// Those for which there is room, by their first frame.
std::vector<Life> withRoom(std::vector<Life> lives, std::size_t frameCount) {
  std::sort(lives.begin(), lives.end(), [](const Life& a, const Life& b) {
    return a.sightings != b.sightings ? a.sightings > b.sightings : a.track < b.track;
  });
  std::vector<std::size_t> alive(frameCount, 0);
  const auto at = [&](std::size_t f) { return alive.begin() + static_cast<std::ptrdiff_t>(f); };
  const auto crowded = [&](const Life& life) {
    const auto full = [](std::size_t count) { return count == kMostAlive; };
    if (std::any_of(at(life.first), at(life.last + 1), full)) return true;
    std::for_each(at(life.first), at(life.last + 1), [](std::size_t& count) { ++count; });
    return false;
  };
  std::vector<Life> chosen;
  for (const Life& life : lives) {
    if (!crowded(life)) chosen.push_back(life);
  }
  std::sort(chosen.begin(), chosen.end(), [](const Life& a, const Life& b) {
    return a.first != b.first ? a.first < b.first : a.track < b.track;
  });
  return chosen;
}

}  // namespace

TrackLives livesOf(const std::vector<double>& noise, const std::vector<Place>& places,
                   const ObservationsOf& observations) {
  TrackLives result;
  result.slots.assign(places.size(), TrackLives::kNoSlot);
  result.ending.resize(noise.size());
  result.extents.assign(noise.size(), 0);
  const std::vector<Life> lives = withRoom(allLives(noise, places, observations), noise.size());
  std::vector<bool> taken(kMostAlive, false);
  auto next = lives.begin();
  for (std::size_t f = 0; f < noise.size(); ++f) {
    for (; next != lives.end() && next->first == f; ++next) {
      const auto slot = std::find(taken.begin(), taken.end(), false);
      *slot = true;
      result.slots[static_cast<std::size_t>(next->track)] = static_cast<int>(slot - taken.begin());
      result.ending[next->last].push_back(next->track);
      result.meanLength += static_cast<double>(next->last - f + 1);
    }
    const auto highest = std::find(taken.rbegin(), taken.rend(), true);
    result.extents[f] = static_cast<std::size_t>(taken.rend() - highest);
    for (int track : result.ending[f]) {
      taken[static_cast<std::size_t>(result.slots[static_cast<std::size_t>(track)])] = false;
    }
  }
  if (!lives.empty()) result.meanLength /= static_cast<double>(lives.size());
  return result;
}

}  // namespace cornerpin
