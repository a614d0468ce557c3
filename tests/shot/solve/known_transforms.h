// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_SOLVE_KNOWN_TRANSFORMS_H
#define TESTS_SHOT_SOLVE_KNOWN_TRANSFORMS_H

#include <optional>
#include <vector>

#include "shot/plane/homography.h"

// By frame; empty where it is not known.
using Known = std::vector<std::optional<cornerpin::Homography>>;

// As `MotionTrials` take them.
inline std::vector<const cornerpin::Homography*> pointersTo(const Known& known) {
  std::vector<const cornerpin::Homography*> pointers;
  for (const auto& h : known) pointers.push_back(h ? &*h : nullptr);
  return pointers;
}

#endif
