// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LINEAR_FIT_H
#define SHOT_FIT_LINEAR_FIT_H

#include <vector>

#include "shot/plane/similarity.h"

namespace cornerpin {

/// The transform that carries the points `from` to the points `to`, as many, in the linear sense:
/// the last right singular vector of the system of cross products, each side in coordinates of its
/// own box. Exact for four points in general position; for more, near the least-squares optimum
/// and a place to start from. The last element is 1; not finite when there is no such transform.
Homography linearFit(const std::vector<Point>& from, const std::vector<Point>& to);

}  // namespace cornerpin

#endif
