// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_QUAD_SAMPLES_H
#define SHOT_ROBUST_QUAD_SAMPLES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// Transforms that are exact for four matches, drawn at random.
///
/// Every other sample comes from the most confident matches, a group that grows by one every ten
/// samples; the others from all. The numbers are those of std::mt19937_64 scaled by multiplication,
/// so they are the same everywhere.
class QuadSamples {
 public:
  static constexpr std::size_t kMost = 5000;

  QuadSamples(const Matches& matches, const std::vector<double>& confidence, std::uint64_t seed);

  /// False for four matches that no camera sees so: three of them nearly on one line in either
  /// frame, or the two quads turned over against each other.
  bool draw(Homography& h);

  /// Samples until four good matches have been missed with a chance of 1 in 1,000, when `good` of
  /// `count` matches are; at most `kMost`.
  static std::size_t needed(std::size_t good, std::size_t count);

 private:
  std::size_t below(std::size_t bound);

  const Matches& matches_;
  std::vector<std::size_t> order_;  // by falling confidence
  std::mt19937_64 random_;
  std::size_t drawn_ = 0;
};

}  // namespace cornerpin

#endif
