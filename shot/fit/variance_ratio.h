// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_VARIANCE_RATIO_H
#define SHOT_FIT_VARIANCE_RATIO_H

#include <cstddef>

namespace cornerpin {

/// How likely the ratio of two mean squares of normal errors is to be larger than `ratio` by
/// chance: the upper tail of the F distribution. Coordinates come in pairs, so both have an even
/// number of degrees of freedom, and the tail is a finite sum.
///
/// \param above  pairs of degrees of freedom of the mean square above the line, at least 1
/// \param below  of that below the line, at least 1
double chanceOfRatio(double ratio, std::size_t above, std::size_t below);

}  // namespace cornerpin

#endif
