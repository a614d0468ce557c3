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

/// Calls with every four of so many indices, in their order.
template <typename Call>
void forAllFours(std::size_t count, Call call) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j) {
      for (std::size_t k = j + 1; k < count; ++k) {
        for (std::size_t l = k + 1; l < count; ++l) call(std::array<std::size_t, 4>{i, j, k, l});
      }
    }
  }
}

/// Transforms that are exact for four matches.
///
/// Four matches that no camera sees so lead to none: three of them nearly on one line in either
/// frame, or the two quads turned over against each other.
class QuadSamples {
 public:
  /// Draws from all matches before a frame is given up. Of 60 tracks or fewer that is every
  /// quadruple; of more it finds a tenth that is good. It takes 0.05 s with 150 tracks.
  static constexpr std::size_t kMost = 500000;

  /// And however many are good: errors of four good ones may be large, and half of the matches may
  /// agree more closely than all. Of a half it finds four with a chance of one in a million.
  static constexpr std::size_t kFewest = 214;

  /// However many are good, of which it is known that fewer would not do.
  static constexpr std::size_t kFewestOfSome = 32;

  QuadSamples(const Matches& matches, const std::vector<double>& confidence, std::uint64_t seed);

  /// At random: every other one from the most confident matches, a group that grows by one every
  /// ten draws; the others from all. The numbers are those of std::mt19937_64 scaled by
  /// multiplication, so they are the same everywhere. False where the four lead to no transform.
  bool draw(Homography& h);

  /// How many of the draws were from all matches, each quadruple as likely as another.
  std::size_t drawnFromAll() const { return drawnFromAll_; }

  /// The transform through the matches `chosen`; false where they lead to none.
  bool through(const std::array<std::size_t, 4>& chosen, Homography& h) const;

  /// How many quadruples the matches have.
  double quadruples() const;

  /// Draws from all matches until the chance that none was four of the good ones and led to a
  /// transform is below one in a million; between `kFewest` and `kMost`. How many of the good ones'
  /// quadruples lead to a transform is that of up to eight of them. \param good  indices
  std::size_t needed(const std::vector<std::size_t>& good) const;

  /// The same for so many good ones, all of whose quadruples lead to a transform, and between
  /// `kFewestOfSome` and `kMost`: it is no matter whether half of them agree more closely.
  std::size_t needed(std::size_t good) const;

 private:
  std::size_t below(std::size_t bound);
  double usableShare(const std::vector<std::size_t>& good) const;
  std::size_t neededFor(std::size_t good, double usableShare) const;

  const Matches& matches_;
  std::vector<std::size_t> order_;  // by falling confidence
  std::mt19937_64 random_;
  std::size_t drawn_ = 0;
  std::size_t drawnFromAll_ = 0;
};

}  // namespace cornerpin

#endif
