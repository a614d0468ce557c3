// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_QUAD_PATH_H
#define SHOT_PLANE_QUAD_PATH_H

#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// Where a quad's corners are at a time, by the transforms of other times: each goes along the
/// polynomial through the places that these give it (Lagrange), which is a straight line for two
/// and a cubic for four.
///
/// \param times  of the transforms, no two alike
Quad quadAt(double time, const std::vector<double>& times,
            const std::vector<Homography>& transforms, const Quad& quad);

}  // namespace cornerpin

#endif
