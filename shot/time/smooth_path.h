// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_SMOOTH_PATH_H
#define SHOT_TIME_SMOOTH_PATH_H

#include <vector>

#include "shot/plane/points.h"

namespace cornerpin {

/// A point of a path that is known with some error.
struct PathPoint {
  int frame = 0;
  Point place;
  double error = 0.0;  ///< root mean square distance from the true place; 0: exact
};

/// The points without their jitter, at rising frames that may have gaps. Weights are 1 / error^2,
/// of which only the ratios matter; how strongly to smooth is told by the points themselves, by
/// generalised cross-validation (Craven and Wahba 1979): a point that is left out has to be met
/// best by the path through the others. So jitter goes, whatever its size, and what a motion does
/// for longer than a few frames stays. A motion that is different in each frame is jitter here.
///
/// Third differences that stand out (eight times the median one, each measured by the errors of its
/// four points) hold nothing together: the path is not smoothed across a cut, and a single frame
/// that is far off does not draw its neighbours. Fewer than eight points come back as they are.
std::vector<Point> smoothPath(const std::vector<PathPoint>& path);

}  // namespace cornerpin

#endif
