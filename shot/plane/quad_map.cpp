// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/quad_map.h"

#include <array>

#include "cornerpin/geometry/MGeometry.h"

namespace cornerpin {

namespace {

LvVector2<double> corner(Point p) { return LvVector2<double>(p.x, p.y); }

}  // namespace

Homography quadToQuad(const Quad& from, const Quad& to) {
  LvMatrix44Tmpl<double> m;
  MComputeQuadToQuadProjectionMatrix(corner(from[0]), corner(from[1]), corner(from[2]),
                                     corner(from[3]), corner(to[0]), corner(to[1]), corner(to[2]),
                                     corner(to[3]), m);
  constexpr std::array<int, 3> kPlane = {0, 1, 3};  // z stays out
  Homography h;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) h[i][j] = m(kPlane[i], kPlane[j]) / m(3, 3);
  }
  return h;
}

}  // namespace cornerpin
