// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_pin.h"

#include <algorithm>
#include <limits>

#include "shot/plane/quad_map.h"

namespace cornerpin {

namespace {

// Twice the area, above 0 where the corners go from x to y.
double twiceArea(const Quad& q) {
  return (q[2].x - q[0].x) * (q[3].y - q[1].y) - (q[3].x - q[1].x) * (q[2].y - q[0].y);
}

// How far the corners lie to the left of, below, and so on, the middle, if the first is the lower
// left one: y grows upwards.
double fitness(const Quad& q) {
  return (q[1].x + q[2].x - q[0].x - q[3].x) + (q[2].y + q[3].y - q[0].y - q[1].y);
}

Quad upright(Quad quad, YAxis y) {
  if (y == YAxis::Down) {
    for (Point& p : quad) p.y = -p.y;
  }
  return quad;
}

// NaN unless the point is on the side of the horizon where `front` is.
Point across(const Homography& h, Point front, Point p) {
  constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
  return onSameSide(h, front, p) ? map(h, p) : Point{kNowhere, kNowhere};
}

Quad across(const Homography& h, Point front, const Quad& quad) {
  Quad to{};
  std::transform(quad.begin(), quad.end(), to.begin(),
                 [&](Point corner) { return across(h, front, corner); });
  return to;
}

}  // namespace

Quad byCorner(const Quad& corners, YAxis y) {
  Quad around = corners;
  if (twiceArea(upright(around, y)) < 0.0) std::swap(around[1], around[3]);
  Quad best = around;
  for (std::size_t turn = 1; turn < around.size(); ++turn) {
    std::rotate(around.begin(), around.begin() + 1, around.end());
    if (fitness(upright(around, y)) > fitness(upright(best, y))) best = around;
  }
  return best;
}

Pin pinOf(const ResultTransforms& result, PinKind kind, const NamedQuad* quad) {
  Pin pin;
  pin.name = quad != nullptr ? quad->name : "picture";
  pin.picture = result.picture;
  const YAxis y = pin.picture.y.value_or(YAxis::Down);
  const bool sized = pin.picture.width && pin.picture.height;
  const Quad placed = quad != nullptr ? byCorner(quad->corners, y) : Quad{};
  if (sized) {
    pin.from = pictureCorners(pin.picture);
  } else {
    pin.from = quad != nullptr ? placed : byCorner(result.quads.at(0).corners, y);
  }
  const bool puts = quad != nullptr && kind == PinKind::Pin;
  const Homography onto = puts ? quadToQuad(pin.from, placed) : kIdentity;
  pin.frames.reserve(result.frames.size());
  for (const FrameTransform& frame : result.frames) {
    PinFrame made;
    made.frame = frame.frame;
    const Point front = result.baseCentre;
    if (kind == PinKind::Stabilise) {
      made.h = withLastOne(inverse(frame.h));
      made.to = across(made.h, map(frame.h, front), pin.from);
    } else {
      made.h = puts ? withLastOne(product(frame.h, onto)) : frame.h;
      made.to = across(frame.h, front, puts ? placed : pin.from);
    }
    pin.frames.push_back(made);
  }
  return pin;
}

}  // namespace cornerpin
