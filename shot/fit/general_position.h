// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_GENERAL_POSITION_H
#define SHOT_FIT_GENERAL_POSITION_H

#include "shot/plane/points.h"

namespace cornerpin {

/// Whether the points fix a projective transform: at least four, and not all but one of them on
/// one line.
///
/// The measure is the linear system of the eight parameters, two rows per point,
/// (x, y, 1, 0, 0, 0, -xx, -xy) and (0, 0, 0, x, y, 1, -yx, -yy), in coordinates centred on the
/// points and scaled to an RMS distance of sqrt(2). The points are in general position when its
/// smallest singular value is above `kGeneralPosition` times its largest. That ratio is about the
/// points' thickness across a line relative to their extent, and does not depend on the units.
bool inGeneralPosition(const Points& points);

/// The ratio itself; 0 for fewer than four points, points that coincide and points not finite.
/// Computed from the eigenvalues of the normal matrix, so ratios below about 1e-7 are noise.
double positionRatio(const Points& points);

/// Of the shots under data/ the lowest frame has 6e-3 (its four corners nearly in line), all others
/// more than 0.1. Points on a line across a picture, written with three decimals of a pixel, have
/// less than 1e-5.
constexpr double kGeneralPosition = 1e-5;

}  // namespace cornerpin

#endif
