// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_TRACK_SLOPES_H
#define SHOT_FIT_TRACK_SLOPES_H

#include <cstddef>
#include <memory>
#include <vector>

#include "shot/fit/lapack.h"
#include "shot/plane/homography.h"
#include "shot/plane/points.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// N arrays of numbers, each with one for each match and more up to a whole number of fours.
template <std::size_t N>
class Columns {
 public:
  Columns() = default;
  explicit Columns(std::size_t matches)
      : count_((matches + 3) / 4 * 4), numbers_(std::make_unique<double[]>(N * count_)) {}

  std::size_t count() const { return count_; }
  double* operator[](std::size_t column) { return numbers_.get() + column * count_; }
  const double* operator[](std::size_t column) const { return numbers_.get() + column * count_; }

 private:
  std::size_t count_ = 0;
  std::unique_ptr<double[]> numbers_;
};

/// How the images of matches move with a homography's first eight elements, row by row; the last is
/// 1. With s the denominator and m = (x, y, 1) / s, the image (X, Y) has the slopes
///
///     of X   (m, 0, -X m0, -X m1),      of Y   (0, m, -Y m0, -Y m1).
///
/// The columns are m0, m1, m2, X and Y. Zeros for matches without weight, and behind the last one.
using TrackSlopes = Columns<5>;

/// Symmetric 2 x 2 matrices: the columns are xx, xy and yy.
using Symmetric2s = Columns<3>;

/// Those products of a match's slopes that differ, or what they are multiplied by: of the rows of X
/// with themselves, with those of Y, of the latter with themselves, and of each with the last
/// row's.
struct SlopeProducts {
  double xx[6] = {};  ///< m0m0 m0m1 m1m1 m0m2 m1m2 m2m2
  double xy[6] = {};
  double yy[6] = {};
  double xz[5] = {};  ///< without m2m2
  double yz[5] = {};
  double zz[3] = {};  ///< m0m0 m0m1 m1m1
};

/// Of the transform `h` at places behind `unit`.
///
/// \param weights  as many as `places` is padded to; slopes are 0 where they are not above 0
TrackSlopes trackSlopes(const Points& places, const Similarity& unit, const Homography& h,
                        const std::vector<double>& weights);

/// The sum of S' V S over the matches, with S their slopes, as a symmetric matrix.
SquareMatrix<8> sumOfProducts(const TrackSlopes& slopes, const Symmetric2s& v);

/// S C S' of each match, for a symmetric C.
Symmetric2s responses(const TrackSlopes& slopes, const SquareMatrix<8>& c);

/// What a pass over the matches reads and writes: columns one behind the other, each of `count`
/// numbers, a multiple of four.
struct SlopePasses {
  const char* name;
  void (*slopes)(const double* x, const double* y, const double* weights, std::size_t count,
                 const double unit[3], const double h[9], double* slopes);
  void (*sums)(const double* slopes, const double* v, std::size_t count, SlopeProducts& sums);
  void (*responses)(const double* slopes, const SlopeProducts& c, std::size_t count, double* g);
  /// Of each match the largest of four squared moves. A corner's is that of (f0, f1) / (1 + f2),
  /// each f one of its three rows times S' (u, v). NaN where one is not finite.
  void (*moves)(const double* slopes, const double* uv, const double corners[12][8],
                std::size_t count, double* squares);
};

/// Those that this build has and this processor runs, the definition first and the fastest, which
/// is the one in use, last. All give the same bits. A variant calls no inline function of another
/// file: the linker may take its copy, in its own instructions, for all callers.
const std::vector<SlopePasses>& slopePasses();
const SlopePasses& fastestSlopePasses();

}  // namespace cornerpin

#endif
