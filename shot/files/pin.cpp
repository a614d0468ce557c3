// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "shot/plane/quad_map.h"

namespace cornerpin {

Quad pictureCorners(const Picture& picture) {
  const double first = picture.pixelCentre.value_or(0.5) - 0.5;
  const double right = first + picture.width.value();
  const double last = first + picture.height.value();
  const bool up = picture.y.value_or(YAxis::Down) == YAxis::Up;
  const double bottom = up ? first : last;
  const double top = up ? last : first;
  return {{{first, bottom}, {right, bottom}, {right, top}, {first, top}}};
}

Pin converted(const Pin& pin, const Picture& to) {
  Pin other = pin;
  const PictureMap map(pin.picture, to);
  const int shift = frameShift(pin.picture, to);
  other.picture = completed(to, pin.picture);
  for (Point& corner : other.from) corner = map(corner);
  for (PinFrame& frame : other.frames) {
    frame.frame += shift;
    frame.h = map(frame.h);
    for (Point& corner : frame.to) corner = map(corner);
  }
  return other;
}

Tracks tracksOf(const Pin& pin) {
  Tracks tracks;
  tracks.picture = pin.picture;
  tracks.names.assign(kCornerNames.begin(), kCornerNames.end());
  tracks.observations.reserve(4 * pin.frames.size());
  for (const PinFrame& frame : pin.frames) {
    for (std::size_t corner = 0; corner < frame.to.size(); ++corner) {
      const Point p = frame.to[corner];
      if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
      Observation row;
      row.x = p.x;
      row.y = p.y;
      row.track = static_cast<std::int32_t>(corner);
      row.frame = frame.frame;
      tracks.observations.push_back(row);
    }
  }
  tracks.sortNames();
  if (!tracks.observations.empty()) tracks.arrange();
  return tracks;
}

Pin pinOf(const Tracks& corners, const std::string& name) {
  constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
  Pin pin;
  pin.name = name;
  pin.picture = corners.picture;
  pin.from = pictureCorners(corners.picture);
  std::vector<std::size_t> corner;
  for (const std::string& track : corners.names) {
    const auto found = std::find(kCornerNames.begin(), kCornerNames.end(), track);
    corner.push_back(static_cast<std::size_t>(found - kCornerNames.begin()));
  }
  for (int number = corners.firstFrame(); number <= corners.lastFrame(); ++number) {
    PinFrame frame;
    frame.frame = number;
    frame.to.fill({kNowhere, kNowhere});
    for (const Observation& row : corners.inFrame(number)) {
      frame.to.at(corner[static_cast<std::size_t>(row.track)]) = {row.x, row.y};
    }
    frame.h = quadToQuad(pin.from, frame.to);
    pin.frames.push_back(frame);
  }
  return pin;
}

}  // namespace cornerpin
