// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_COMPARE_DISTURBED_TRACKS_H
#define TESTS_SHOT_COMPARE_DISTURBED_TRACKS_H

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>

#include "shot/solve/tracks.h"
#include "tests/shot/random.h"

namespace made {

/// Tracks that wander about a picture of 1920 x 1080 over frames 1 to `frames`, with so many
/// decimals; y is what it is.
inline cornerpin::Tracks wanderers(int count, int frames, std::uint32_t seed, int decimals = 3) {
  Random random(seed);
  const double power = std::pow(10.0, decimals);
  cornerpin::Tracks tracks;
  for (int t = 0; t < count; ++t) {
    tracks.names.push_back("track_" + std::string(t < 10 ? "0" : "") + std::to_string(t));
    double x = random.real(100.0, 1800.0);
    double y = random.real(100.0, 900.0);
    for (int f = 1; f <= frames; ++f) {
      x += random.real(-4.0, 5.0);
      y += random.real(-3.0, 4.0);
      cornerpin::Observation row;
      row.x = std::round(x * power) / power;
      row.y = std::round(y * power) / power;
      row.track = t;
      row.frame = f;
      tracks.observations.push_back(row);
    }
  }
  tracks.arrange();
  return tracks;
}

/// The same with every position changed.
inline cornerpin::Tracks changed(cornerpin::Tracks tracks,
                                 const std::function<void(cornerpin::Observation&)>& change) {
  for (cornerpin::Observation& row : tracks.observations) change(row);
  tracks.arrange();
  return tracks;
}

/// Without some.
inline cornerpin::Tracks without(cornerpin::Tracks tracks,
                                 const std::function<bool(const cornerpin::Observation&)>& isGone) {
  std::vector<cornerpin::Observation> left;
  for (const cornerpin::Observation& row : tracks.observations) {
    if (!isGone(row)) left.push_back(row);
  }
  tracks.observations = left;
  tracks.arrange();
  return tracks;
}

}  // namespace made

#endif
