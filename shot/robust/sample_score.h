// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_SAMPLE_SCORE_H
#define SHOT_ROBUST_SAMPLE_SCORE_H

#include <cstddef>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/fit/residuals.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// What the pass over a sample's matches reads: arrays of `count` numbers, a whole number of blocks
/// (`SampleScore::kBlock`), whose votes behind the last match are 0; the transform row by row.
struct SampleScoreInput {
  const float* x;
  const float* y;
  const float* u;
  const float* v;
  std::size_t count;
  const float* votes;
  float h[9];
  float least;
};

/// Its variants, the same bits from each; as `NormalEquationsVariant`.
struct SampleScoreVariant {
  const char* name;
  double (*run)(const SampleScoreInput& in, double bound);
};
const std::vector<SampleScoreVariant>& sampleScoreVariants();

/// How well a transform through few matches suits all of them: the sum of the logarithms of their
/// squared errors, which follows the many matches that are close rather than the few that are not
/// and needs no distance beyond which a match is bad. In single precision, which is far finer than
/// the errors.
class SampleScore {
 public:
  /// Matches that are looked at together.
  static constexpr std::size_t kBlock = 16;

  /// \param votes  per match, how often it counts
  /// \param least  an error below it is as good as it
  SampleScore(const Matches& matches, const std::vector<double>& votes, double least);
  SampleScore(const Matches& matches, const std::vector<double>& votes, double least,
              const SampleScoreVariant& variant);

  /// The lower the better, 0 for exact matches; above `bound` as soon as that is certain.
  double of(const Homography& h, double bound) const;

 private:
  double (*run_)(const SampleScoreInput& in, double bound);
  float least_;
  std::vector<float> x_, y_, u_, v_, votes_;  // a whole number of blocks
};

}  // namespace cornerpin

#endif
