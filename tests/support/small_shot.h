// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_SMALL_SHOT_H
#define TESTS_SUPPORT_SMALL_SHOT_H

#include <string>

/// A shot of a few tracks, as CSV, that moves by some pixels a frame: it is solved in no time.
inline std::string smallShot(int step) {
  std::string text = "track,frame,x,y\n";
  for (int t = 0; t < 6; ++t) {
    for (int f = 0; f < 3; ++f) {
      text += "t" + std::to_string(t) + "," + std::to_string(f) + "," +
              std::to_string(t * 37 % 100 + f * step) + "," + std::to_string(t * t * 13 % 70) +
              "\n";
    }
  }
  return text;
}

#endif
