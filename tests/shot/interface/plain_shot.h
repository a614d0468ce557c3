// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_INTERFACE_PLAIN_SHOT_H
#define TESTS_SHOT_INTERFACE_PLAIN_SHOT_H

#include <cornerpin/shot.h>

#include <cstddef>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

// Shots of which all is known, as arrays.
namespace plain {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Arrays {
  std::size_t frames = 0;
  std::size_t tracks = 0;
  std::vector<double> positions;  // frames x tracks x 2
  std::vector<double> weights;    // frames x tracks

  double& x(std::size_t f, std::size_t t) { return positions[2 * (f * tracks + t)]; }
  double& y(std::size_t f, std::size_t t) { return positions[2 * (f * tracks + t) + 1]; }
  double& weight(std::size_t f, std::size_t t) { return weights[f * tracks + t]; }

  cornerpin::shot::TrackArrays given() const {
    cornerpin::shot::TrackArrays arrays;
    arrays.positions = {positions.data(), {frames, tracks, 2}};
    arrays.weights = {weights.data(), {frames, tracks}};
    return arrays;
  }
};

// Goes 3 to the right and 2 up from one frame to the next. All numbers are exact in both
// precisions.
inline Arrays pan(std::size_t frames = 8, std::size_t tracks = 12) {
  Arrays shot;
  shot.frames = frames;
  shot.tracks = tracks;
  for (std::size_t f = 0; f < frames; ++f) {
    for (std::size_t t = 0; t < tracks; ++t) {
      const std::size_t across = t * 37 % 101;
      const std::size_t down = t * t * 13 % 59;
      shot.positions.push_back(static_cast<double>(100 + 8 * across + 3 * f));
      shot.positions.push_back(static_cast<double>(600 + 8 * down) - static_cast<double>(2 * f));
    }
  }
  shot.weights.assign(frames * tracks, 1.0);
  return shot;
}

// The same for 40 frames, but each of the tracks is there for 16 of them, is off by up to a quarter
// of a pixel, and tracks come and go all the time.
inline Arrays relay() {
  Arrays shot = pan(40, 60);
  for (std::size_t t = 0; t < shot.tracks; ++t) {
    const std::size_t begin = t * 7 % 37;
    for (std::size_t f = 0; f < shot.frames; ++f) {
      shot.x(f, t) += static_cast<double>((7 * f + 3 * t + f * t) % 5) / 8.0 - 0.25;
      shot.y(f, t) += static_cast<double>((5 * f + 11 * t + f * t * t) % 5) / 8.0 - 0.25;
      if (f + 8 < begin || f > begin + 8) shot.weight(f, t) = 0.0;
    }
  }
  return shot;
}

// As the command reads it: every place, also of weight 0, with all digits.
inline std::string csv(const cornerpin::shot::Tracks& tracks) {
  const std::vector<std::string> names = tracks.names();
  std::string text = "track,frame,x,y,weight\n";
  for (const cornerpin::shot::Observation& row : tracks.observations()) {
    char line[200];
    std::snprintf(line, sizeof line, "%s,%d,%.17g,%.17g,%.17g\n", names[row.track].c_str(),
                  row.frame, row.x, row.y, row.weight);
    text += line;
  }
  return text;
}

}  // namespace plain

#endif
