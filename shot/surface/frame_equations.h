// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_FRAME_EQUATIONS_H
#define SHOT_SURFACE_FRAME_EQUATIONS_H

#include <array>
#include <cstddef>
#include <vector>

#include "shot/fit/lapack.h"
#include "shot/fit/linearised_fit.h"
#include "shot/plane/similarity.h"
#include "shot/surface/joint_shot.h"

namespace cornerpin {

/// Numbers for the coordinates of the places in the front: x of a slot, its y, x of the next ...
using FrontVector = std::vector<double>;

/// A frame's part of the joint fit, linearised. With J how an image moves with the frame's eight
/// parameters, D how it moves with the track's place, r the residual and w its weight, the frame's
/// normal equations are
///
///     | A   B | | step of the parameters |   | g |      A = sum of w J'J    B = w J'D
///     | B'  C | | step of the places     | = | c |      g = sum of w J'r    C = w D'D, c = w D'r
///
/// where each track has two columns of B, and C has a 2 x 2 block for each and nothing between
/// them. Eliminating the parameters, A = L L', leaves C - Y'Y and c - Y'l with Y = inv(L) B and l =
/// inv(L) g. A fixed frame has C and c alone.
///
/// The parameters are those between coordinates of the frame's own tracks, as in `LinearisedFit`.
class FrameEquations {
 public:
  /// What a place takes from a sighting.
  struct Sighting {
    std::size_t slot;
    Symmetric2 c;
    Point gradient;
    double w;
    Point r;
    Derivative wd;  ///< w D
  };

  /// False when the frame does not take part, or its tracks do not fix its transform: fewer than
  /// four of them, or nearly on a line. The rest then means nothing.
  bool linearise(const JointShot& shot, std::size_t frame);

  bool isFree() const { return free_; }
  const std::vector<Sighting>& sightings() const { return sightings_; }
  std::size_t width() const { return width_; }    ///< columns of Y: two for each slot
  std::size_t stride() const { return stride_; }  ///< from row to row: the columns, filled up
  const double* y(std::size_t row) const { return y_.data() + row * stride_; }
  const Parameters& l() const { return l_; }

  /// The transform after the step that follows from those of the places.
  Homography stepped(const FrontVector& placeSteps) const;

  /// Takes the covariance of the places in the front, `width` x `width` within rows of `stride`,
  /// which are filled up too.
  void setCovariance(const FrontVector& ofPlaces, std::size_t stride);
  /// That of the image of a point that is exact on the surface, once that of the places is set; not
  /// a number on and behind the horizon.
  Symmetric2 covarianceAt(Point surface) const;

 private:
  void weigh(const Matches& matches, const TrackSlopes& slopes, const std::vector<int>& slots);
  SquareMatrix<8> information(const TrackSlopes& slopes) const;
  void take(const TrackSlopes& slopes);
  bool factorise(const SquareMatrix<8>& a);
  void eliminate();

  bool free_ = false;
  double noise_ = 0.0;
  Homography h_ = kIdentity;
  Similarity from_;
  Similarity to_;
  Homography normalised_ = kIdentity;
  std::size_t width_ = 0;
  std::size_t stride_ = 0;
  std::vector<Sighting> sightings_;
  std::vector<double> b_;  // by rows, as is Y
  Parameters g_{};
  SquareMatrix<8> inverse_{};  // of L
  std::vector<double> y_;
  Parameters l_{};
  SquareMatrix<8> covariance_{};  // of the parameters
};

}  // namespace cornerpin

#endif
