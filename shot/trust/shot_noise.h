// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_SHOT_NOISE_H
#define SHOT_TRUST_SHOT_NOISE_H

#include <vector>

namespace cornerpin {

/// How noisy tracks are along each axis, as errors have told it.
struct NoiseEstimate {
  double variance = 0.0;  ///< in pixels^2; means nothing without freedom
  double freedom = 0.0;   ///< how many errors have told it
};

/// What the frames of a shot say of any of them: the lower median of their variances, and the more
/// freedom the less the frames differ. Where their variances differ by no more than so few errors
/// make any two, the freedom of all together. Of fewer than five frames none.
///
/// The logarithm of a variance that f errors have told varies by the trigamma function of f / 2;
/// by what the frames' logarithms vary beyond that, a frame's own noise differs from the median,
/// and the freedom is the one whose trigamma function says as much: G. K. Smyth, "Linear models and
/// empirical Bayes methods for assessing differential expression in microarray experiments",
/// Statistical Applications in Genetics and Molecular Biology 3 (2004).
NoiseEstimate shotNoise(const std::vector<NoiseEstimate>& frames);

/// What the quietest frames of a shot say of any of them: the lower tenth of their variances, each
/// over what the lower tenth of variances is that as many errors tell (E. B. Wilson, M. M.
/// Hilferty, "The distribution of chi-square", Proceedings of the National Academy of Sciences 17
/// (1931)). Tracks that are off only ever enlarge a variance. A single frame's noise may well be
/// another: all together they count as 16 errors. Of fewer than five frames `likely`.
NoiseEstimate quietNoise(const std::vector<NoiseEstimate>& frames, const NoiseEstimate& likely);

/// A frame's noise by its own errors and by the shot's, in proportion to their freedom. Where its
/// own say more than the shot's by two standard errors, they alone count: a blurred frame is not
/// excused by sharp ones.
NoiseEstimate pooled(const NoiseEstimate& frame, const NoiseEstimate& shot);

/// By how much a variance has to be larger because it is itself estimated, so that two deviations
/// hold as much of a round error as of one whose variance is known: of r^2 / (2 s^2), which has the
/// F distribution with 2 and f degrees of freedom, what is exceeded with the chance exp(-4), over
/// 4. That is f / 8 (exp(8 / f) - 1).
double estimatedNoiseFactor(double freedom);

}  // namespace cornerpin

#endif
