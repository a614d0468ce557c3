// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_QUAD_MAP_H
#define SHOT_PLANE_QUAD_MAP_H

#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// The transform that carries each corner of a quad to the same corner of another one. Its last
/// element is 1; not finite where there is no such transform.
Homography quadToQuad(const Quad& from, const Quad& to);

}  // namespace cornerpin

#endif
