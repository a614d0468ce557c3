// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/good_tracks.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace cornerpin {

namespace {

bool isGood(const TrackResult& track, int frame) {
  const auto run = std::upper_bound(track.runs.begin(), track.runs.end(), frame,
                                    [](int f, const TrackRun& r) { return f < r.first; });
  if (run == track.runs.begin()) return false;
  return frame <= run[-1].last && run[-1].use == TrackUse::Good;
}

}  // namespace

Tracks goodTracks(const Tracks& tracks, const ShotResult& result) {
  constexpr std::int32_t kNone = -1;
  Tracks good;
  good.picture = tracks.picture;
  std::vector<std::int32_t> numbers(tracks.names.size(), kNone);
  for (const Observation& row : tracks.observations) {
    const auto track = static_cast<std::size_t>(row.track);
    if (!(row.weight > 0.0f) || !isGood(result.tracks.at(track), row.frame)) continue;
    if (numbers[track] == kNone) {
      numbers[track] = static_cast<std::int32_t>(good.names.size());
      good.names.push_back(tracks.names[track]);
    }
    good.observations.push_back(row);
    good.observations.back().track = numbers[track];
  }
  good.sortNames();
  if (!good.observations.empty()) good.arrange();
  return good;
}

}  // namespace cornerpin
