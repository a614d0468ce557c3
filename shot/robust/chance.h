// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_CHANCE_H
#define SHOT_ROBUST_CHANCE_H

#include <cstddef>
#include <vector>

namespace cornerpin {

/// The most that `chanceOf` may say of an agreement that is no accident: less than one picture in a
/// million, of pictures all of whose tracks are strays, shows one as good.
constexpr double kMostByChance = -6.0;

/// The common logarithm of how many transforms through four of `count` matches have `agreeing`
/// matches, these four included, within the root of `square` of their places, where every present
/// place is anywhere in the area: (n - 4) C(n, k) C(k, 4) (pi square / area)^(k - 4). To the
/// hundredth. Weights do not enter: each match counts as one. \param agreeing  at least 5
///
/// L. Moisan, B. Stival, "A probabilistic criterion to detect rigid point matches between two
/// images and estimate the fundamental matrix", International Journal of Computer Vision 57 (2004).
double chanceOf(std::size_t count, std::size_t agreeing, double square, double area);

/// The least of `chanceOf` over the closest 5, 6 ... of the matches with these squared residuals (5
/// at least). Those below `kSigmaFloor` count as that.
double chanceOf(std::vector<double> squares, double area);

}  // namespace cornerpin

#endif
