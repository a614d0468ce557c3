// SPDX-License-Identifier: BSD-3-Clause
#include "shot/plane/picture.h"

#include <stdexcept>

namespace cornerpin {

namespace {

bool hasSize(const Picture& picture) { return picture.width && picture.height; }

// Where neither says it, both have what the other has.
bool isFlipped(const Picture& from, const Picture& to) {
  return from.y && to.y && *from.y != *to.y;
}

// Along an axis of `length` pixels: v to the distance from the picture's edge at which v begins to
// count, in pixels. The length is looked at for coordinates that are no pixels.
AxisMap toEdge(const Picture& picture, double length) {
  const double centre = picture.pixelCentre.value_or(0.5);
  switch (picture.scale) {
    case Scale::Pixels:
      return {1.0, 0.5 - centre, 1.0};
    case Scale::Picture:
      return {length, 0.0, 1.0};
    default:
      return {centre == 0.0 ? length - 1.0 : length, length, 2.0};
  }
}

AxisMap fromEdge(const Picture& picture, double length) {
  const double centre = picture.pixelCentre.value_or(0.5);
  switch (picture.scale) {
    case Scale::Pixels:
      return {1.0, centre - 0.5, 1.0};
    case Scale::Picture:
      return {1.0, 0.0, length};
    default:
      return {2.0, -length, centre == 0.0 ? length - 1.0 : length};
  }
}

// Products of whole and half numbers, which are exact.
AxisMap axisMap(const Picture& from, const Picture& to, double length, bool flips) {
  const AxisMap in = toEdge(from, length);
  const AxisMap out = fromEdge(to, length);
  const double sign = flips ? -1.0 : 1.0;
  AxisMap map;
  map.times = sign * in.times * out.times;
  map.over = in.over * out.over;
  map.plus = (sign * in.plus + (flips ? length * in.over : 0.0)) * out.times + out.plus * in.over;
  if (map.times == map.over || map.times == -map.over) {
    map = {map.times / map.over, map.plus / map.over, 1.0};
  }
  return map;
}

}  // namespace

Picture completed(Picture to, const Picture& from) {
  if (!to.width) to.width = from.width;
  if (!to.height) to.height = from.height;
  if (!to.y) to.y = from.y;
  if (!to.pixelCentre) to.pixelCentre = from.pixelCentre;
  if (!to.firstFrame) to.firstFrame = from.firstFrame;
  return to;
}

std::vector<PictureFact> missingBetween(const Picture& from, const Picture& to) {
  std::vector<PictureFact> missing;
  if (from.y.has_value() != to.y.has_value()) missing.push_back(PictureFact::YAxis);
  const bool centres = from.pixelCentre.has_value() != to.pixelCentre.has_value();
  if (centres) missing.push_back(PictureFact::PixelCentre);
  const bool scales = from.scale != to.scale ||
                      (from.scale == Scale::AboutZero && from.pixelCentre != to.pixelCentre);
  if ((scales || isFlipped(from, to)) && !hasSize(from) && !hasSize(to)) {
    missing.push_back(PictureFact::Size);
  }
  return missing;
}

PictureMap::PictureMap(const Picture& from, const Picture& to) {
  if (!missingBetween(from, to).empty()) throw std::logic_error("what the pictures are is missing");
  const Picture& sized = hasSize(to) ? to : from;
  // Any length will do where nothing is missing without one.
  constexpr int kAny = 2;
  x_ = axisMap(from, to, sized.width.value_or(kAny), false);
  y_ = axisMap(from, to, sized.height.value_or(kAny), isFlipped(from, to));
}

Homography PictureMap::matrix() const {
  return {{{x_.times / x_.over, 0.0, x_.plus / x_.over},
           {0.0, y_.times / y_.over, y_.plus / y_.over},
           {0.0, 0.0, 1.0}}};
}

Homography PictureMap::inverseMatrix() const {
  return {{{x_.over / x_.times, 0.0, -x_.plus / x_.times},
           {0.0, y_.over / y_.times, -y_.plus / y_.times},
           {0.0, 0.0, 1.0}}};
}

Homography PictureMap::operator()(const Homography& h) const {
  if (isIdentity()) return h;
  return withLastOne(product(matrix(), product(h, inverseMatrix())));
}

int frameShift(const Picture& from, const Picture& to) {
  return from.firstFrame && to.firstFrame ? *to.firstFrame - *from.firstFrame : 0;
}

}  // namespace cornerpin
