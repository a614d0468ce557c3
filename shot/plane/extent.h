// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_EXTENT_H
#define SHOT_PLANE_EXTENT_H

#include <vector>

#include "shot/plane/points.h"

namespace cornerpin {

/// An upright rectangle.
struct Box {
  Point low;
  Point high;
};

/// The smallest box around the points (at least one).
Box boxAround(const Points& points);

/// The same around those of a weight above 0 (at least one).
Box boxAround(const Points& points, const std::vector<double>& weights);

/// From the low corner on, along the x axis first.
Quad cornersOf(const Box& box);

/// The points without the far-off ones: those up to four times the median distance from the median
/// point. All of them where that would leave out more than a quarter, as a dense group beside a
/// sparse one does.
Points withoutFarOff(const Points& points);

}  // namespace cornerpin

#endif
