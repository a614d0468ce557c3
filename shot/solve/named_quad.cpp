// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/named_quad.h"

#include <fmt/format.h>

#include <set>

#include "shot/plane/quad_shape.h"

namespace cornerpin {

namespace {

const char* describe(QuadShape shape) {
  switch (shape) {
    case QuadShape::Convex:
      return "";
    case QuadShape::Flat:
      return "is flat: three of its corners lie on one line";
    case QuadShape::Crossed:
      return "crosses itself: give its corners in the order around it";
    case QuadShape::Dented:
      return "is not convex: one of its corners lies inside the triangle of the others";
  }
  return "";
}

}  // namespace

std::string flawOf(const std::vector<NamedQuad>& quads) {
  std::set<std::string> names;
  for (const NamedQuad& quad : quads) {
    if (quad.name.empty()) return "a quad's name is empty";
    if (!names.insert(quad.name).second) {
      return fmt::format("the quad \"{}\" is given twice", quad.name);
    }
    const QuadShape shape = shapeOf(quad.corners);
    if (shape != QuadShape::Convex) {
      return fmt::format("the quad \"{}\" {}", quad.name, describe(shape));
    }
  }
  return {};
}

}  // namespace cornerpin
