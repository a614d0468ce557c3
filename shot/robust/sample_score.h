// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_SAMPLE_SCORE_H
#define SHOT_ROBUST_SAMPLE_SCORE_H

#include <array>
#include <cstddef>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// How well a transform through few matches suits all of them: the sum of the logarithms of their
/// squared errors, which follows the many matches that are close rather than the few that are not
/// and needs no distance beyond which a match is bad. In single precision, which is far finer than
/// the errors.
class SampleScore {
 public:
  /// Matches that are looked at together.
  static constexpr std::size_t kBlock = 16;
  using Block = std::array<float, kBlock>;

  /// \param votes  per match, how often it counts
  /// \param least  an error below it is as good as it
  SampleScore(const Matches& matches, const std::vector<double>& votes, double least);

  /// The lower the better, 0 for exact matches; above `bound` as soon as that is certain.
  double of(const Homography& h, double bound) const;

 private:
  void squares(const std::array<float, 9>& h, std::size_t first, Block& result) const;

  float least_;
  std::vector<float> x_, y_, u_, v_, votes_;  // a whole number of blocks
};

}  // namespace cornerpin

#endif
