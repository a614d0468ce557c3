// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_PIN_H
#define SHOT_FILES_PIN_H

#include <array>
#include <string>
#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/picture.h"
#include "shot/plane/points.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The corners of a pin in the order in which it has them, named as they are seen in the picture.
enum Corner : std::size_t { kBottomLeft, kBottomRight, kTopRight, kTopLeft };
constexpr std::array<const char*, 4> kCornerNames = {"bottom_left", "bottom_right", "top_right",
                                                     "top_left"};

struct PinFrame {
  int frame = 0;
  Homography h{};  ///< from the rectangle to this frame; the last element is 1
  /// Where the rectangle's corners go; NaN where that is on or behind the horizon, so that nothing
  /// but the transform says what the frame shows.
  Quad to{};
};

/// Where the corners of a rectangle go, frame by frame: what the writers of pins write.
struct Pin {
  std::string name;              ///< of what is pinned
  Picture picture;               ///< what all numbers are those of
  Quad from{};                   ///< the rectangle, by `Corner`: mostly the whole picture
  std::vector<PinFrame> frames;  ///< by rising frame, every frame of the shot
};

/// The corners of the whole picture by `Corner`, in its own coordinates, which are pixels; its size
/// is known.
Quad pictureCorners(const Picture& picture);

/// The same with numbers of another picture, of which nothing may be missing (`missingBetween`).
Pin converted(const Pin& pin, const Picture& to);

/// The four corners as tracks with the names of `kCornerNames`; corners that go nowhere are absent.
Tracks tracksOf(const Pin& pin);

/// The pin that tracks with the names of `kCornerNames` are, of the whole picture, whose size is
/// known. It has every frame from the first to the last; corners that are absent there are NaN.
Pin pinOf(const Tracks& corners, const std::string& name);

/// What writers of pins are told beside the pin.
struct PinStyle {
  enum class Nk { Points, Matrix, Both } nk = Nk::Points;
  enum class Keyframes { Pin, Transform } keyframes = Keyframes::Pin;
  double framesPerSecond = 24.0;
  double pixelAspect = 1.0;  ///< width of a pixel over its height
};

/// What a writer could not carry, for people: one text for each.
using WriteNotes = std::vector<std::string>;

}  // namespace cornerpin

#endif
