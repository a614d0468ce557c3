// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_PICTURE_H
#define SHOT_PLANE_PICTURE_H

#include <optional>
#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/points.h"

/// How a file's numbers lie on the picture and on the clip, and how they become another file's.
namespace cornerpin {

enum class YAxis { Down, Up };

/// What a coordinate counts.
enum class Scale {
  Pixels,
  Picture,    ///< 0 at one edge of the picture, 1 at the other
  AboutZero,  ///< -1 and 1 where the first and last pixels' centres are (`pixelCentre` 0), or the
              ///< edges of the picture (0.5)
};

/// Frames lie between this and its negative: twice a frame is an int too.
constexpr int kFurthestFrame = 1'000'000'000;

/// What is known of the picture and the clip that coordinates and frames are from; what is not
/// known is not there. x always grows to the right.
struct Picture {
  Scale scale = Scale::Pixels;
  std::optional<int> width;  ///< in pixels
  std::optional<int> height;
  std::optional<YAxis> y;             ///< where y grows to
  std::optional<double> pixelCentre;  ///< coordinates of the first pixel's middle: 0 or 0.5
  std::optional<int> firstFrame;      ///< the number that the clip's first frame has
};

/// What a conversion between pictures can lack.
enum class PictureFact { Size, YAxis, PixelCentre };

/// What is not known of `to` as it is in `from`, but for the scale: the file keeps it.
Picture completed(Picture to, const Picture& from);

/// The facts without which coordinates of one picture cannot become those of the other. Of the size
/// one of both is enough. Facts that neither tells are left as they are: a file without a direction
/// of y has what the other file has.
std::vector<PictureFact> missingBetween(const Picture& from, const Picture& to);

/// One coordinate to another: (v times + plus) / over, all three exact.
struct AxisMap {
  double times = 1.0;
  double plus = 0.0;
  double over = 1.0;

  bool isIdentity() const { return times == 1.0 && plus == 0.0 && over == 1.0; }
  double operator()(double v) const { return isIdentity() ? v : (v * times + plus) / over; }
};

/// How coordinates of one picture become another's: this is the one place that knows of directions,
/// pixel centres and scales.
class PictureMap {
 public:
  PictureMap() = default;
  /// Nothing may be missing (`missingBetween`): throws `std::logic_error`.
  PictureMap(const Picture& from, const Picture& to);

  bool isIdentity() const { return x_.isIdentity() && y_.isIdentity(); }
  Point operator()(Point p) const { return {x_(p.x), y_(p.y)}; }
  /// A transform between points of the one as one between points of the other, C H C^-1, with 1 as
  /// its last element; as it is for the identity.
  Homography operator()(const Homography& h) const;
  /// C itself, and its inverse.
  Homography matrix() const;
  Homography inverseMatrix() const;

 private:
  AxisMap x_;
  AxisMap y_;
};

/// How much is to be added to frames: 0 unless both tell the number of the clip's first frame.
int frameShift(const Picture& from, const Picture& to);

}  // namespace cornerpin

#endif
