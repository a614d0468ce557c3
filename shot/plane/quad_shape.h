// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_QUAD_SHAPE_H
#define SHOT_PLANE_QUAD_SHAPE_H

#include "shot/plane/points.h"

namespace cornerpin {

/// What keeps four corners from being the picture of a rectangle.
enum class QuadShape {
  Convex,   ///< nothing
  Flat,     ///< three corners on one line, or two in one place; also what is not finite
  Crossed,  ///< two sides cross
  Dented,   ///< a corner lies inside the triangle of the others
};

/// The same whichever way round the corners go and with whichever they begin. Three corners are on
/// one line where their triangle has less than a thousand-millionth of the squared extent.
QuadShape shapeOf(const Quad& quad);

}  // namespace cornerpin

#endif
