// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LINEAR_FIT_H
#define SHOT_FIT_LINEAR_FIT_H

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// The transform that carries the base places to the present ones in the linear sense, whatever the
/// weights: the last right singular vector of the system of cross products, each side in
/// coordinates of its own box. Exact for four matches in general position; for more, near the
/// least-squares optimum and a place to start from. The last element is 1; not finite when there is
/// no such transform.
///
/// R. Hartley, A. Zisserman, "Multiple View Geometry in Computer Vision", 2nd ed., 4.1 and 4.4.
Homography linearFit(const Matches& matches);

}  // namespace cornerpin

#endif
