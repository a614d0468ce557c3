// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_MEDIAN_H
#define SHOT_PLANE_MEDIAN_H

#include <cstddef>
#include <vector>

namespace cornerpin {

/// The number that has `rank` others before it when they are sorted; `rank` below the count. NaN
/// is not allowed among them.
double ranked(std::vector<double> numbers, std::size_t rank);

/// The median: of an even count the lower, or the upper, of the two middle ones. NaN for none.
double lowerMedian(std::vector<double> numbers);
double upperMedian(std::vector<double> numbers);

}  // namespace cornerpin

#endif
