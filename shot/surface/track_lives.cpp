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

// By track; without sightings where a track has none or no known place.
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
  return lives;
}

// Chooses tracks frame by frame.
class Choice {
 public:
  Choice(const std::vector<Life>& lives, std::size_t frameCount)
      : lives_(lives), state_(lives.size(), State::Open), alive_(frameCount, 0) {}

  void addFrom(const Matches& seen) {
    std::size_t chosen = 0;
    std::vector<const Life*> open;
    for (std::size_t i = 0; i < seen.size(); ++i) {
      const auto t = static_cast<std::size_t>(seen.tracks()[i]);
      if (!isSighting(seen[i]) || lives_[t].sightings == 0) continue;
      if (state_[t] == State::Chosen) ++chosen;
      if (state_[t] == State::Open) open.push_back(&lives_[t]);
    }
    std::sort(open.begin(), open.end(), [](const Life* a, const Life* b) {
      return a->last != b->last ? a->last > b->last : a->track < b->track;
    });
    for (auto life = open.begin(); life != open.end() && chosen < kEnoughSeen; ++life) {
      if (choose(**life)) ++chosen;
    }
  }

  // By their first frame.
  std::vector<Life> chosen() const {
    std::vector<Life> chosen;
    for (std::size_t t = 0; t < lives_.size(); ++t) {
      if (state_[t] == State::Chosen) chosen.push_back(lives_[t]);
    }
    std::stable_sort(chosen.begin(), chosen.end(),
                     [](const Life& a, const Life& b) { return a.first < b.first; });
    return chosen;
  }

 private:
  enum class State : char { Open, Chosen, NoRoom };

  bool choose(const Life& life) {
    const auto first = alive_.begin() + static_cast<std::ptrdiff_t>(life.first);
    const auto end = alive_.begin() + static_cast<std::ptrdiff_t>(life.last + 1);
    const bool room = *std::max_element(first, end) < kMostAlive;
    if (room) std::for_each(first, end, [](std::size_t& count) { ++count; });
    state_[static_cast<std::size_t>(life.track)] = room ? State::Chosen : State::NoRoom;
    return room;
  }

  const std::vector<Life>& lives_;
  std::vector<State> state_;        // by track
  std::vector<std::size_t> alive_;  // of the chosen, by frame
};

std::vector<Life> chosenLives(const std::vector<double>& noise, const std::vector<Place>& places,
                              const ObservationsOf& observations) {
  const std::vector<Life> lives = allLives(noise, places, observations);
  Choice choice(lives, noise.size());
  for (std::size_t f = 0; f < noise.size(); ++f) {
    if (noise[f] > 0.0) choice.addFrom(observations(f));
  }
  return choice.chosen();
}

}  // namespace

TrackLives livesOf(const std::vector<double>& noise, const std::vector<Place>& places,
                   const ObservationsOf& observations) {
  TrackLives result;
  result.slots.assign(places.size(), TrackLives::kNoSlot);
  result.ending.resize(noise.size());
  result.extents.assign(noise.size(), 0);
  const std::vector<Life> lives = chosenLives(noise, places, observations);
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
