// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_NAMED_QUAD_H
#define SHOT_SOLVE_NAMED_QUAD_H

#include <string>
#include <vector>

#include "shot/plane/points.h"

namespace cornerpin {

/// Four corners of something on the surface.
struct NamedQuad {
  std::string name;
  Quad corners{};
};

/// What is wrong with the quads, for people, such as: the quad "sign" crosses itself. A name is
/// missing or there twice, or the corners are not simple and convex. Empty where nothing is.
std::string flawOf(const std::vector<NamedQuad>& quads);

}  // namespace cornerpin

#endif
