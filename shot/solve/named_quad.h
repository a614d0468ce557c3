// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_NAMED_QUAD_H
#define SHOT_SOLVE_NAMED_QUAD_H

#include <string>

#include "shot/plane/points.h"

namespace cornerpin {

/// Four corners of something on the surface.
struct NamedQuad {
  std::string name;
  Quad corners{};
};

}  // namespace cornerpin

#endif
