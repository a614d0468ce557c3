// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LINEARISED_FIT_H
#define SHOT_FIT_LINEARISED_FIT_H

#include <array>
#include <vector>

#include "shot/fit/lapack.h"
#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/plane/homography.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// A symmetric 2 x 2 matrix.
struct Symmetric2 {
  double trace() const { return xx + yy; }

  double xx = 0.0;
  double xy = 0.0;
  double yy = 0.0;
};

Symmetric2 sum(const Symmetric2& a, const Symmetric2& b);
Symmetric2 times(double factor, const Symmetric2& s);

/// How a frame's matches were fitted: `h` is the model's transform behind `kept`, which is the
/// neighbour's where the model was fitted on top of it, and else the identity.
struct FittedFrame {
  Model model = Model::Projective;
  Homography kept = kIdentity;
  Homography h = kIdentity;
  std::vector<double> weights;  ///< of each match in the last step of the fit
  /// How noisy the base places are, as a share of the noise in the frame: 1 where one frame has
  /// told them, 0 where many have.
  double placeNoise = 1.0;
  /// Of each match, by what its pull on the fit grows with its residual, in units of its squared
  /// weight. Empty where each is the identity, as without a loss.
  std::vector<Symmetric2> stiffness = {};
};

using Parameters = std::array<double, 8>;

double dot(const Parameters& a, const Parameters& b);

/// How the two coordinates of a point's image move with the model's parameters; 0 beyond them.
struct Slopes {
  Parameters x{};
  Parameters y{};
};

/// Those of a homography's first eight elements, row by row, at p; the last is 1.
Slopes slopesOf(const Homography& h, Point p);

/// S C S': of a point's image, with C the covariance of the parameters.
Symmetric2 covarianceOf(const Slopes& slopes, const std::array<Parameters, 8>& covariance);

/// A fit linearised at its solution, A = sum of w^2 S'K S with S a track's slopes and K its
/// stiffness. Parameters and slopes are those between coordinates of the tracks' own boxes: squared
/// pixels would leave A without a usable inverse.
class LinearisedFit {
 public:
  LinearisedFit(const Matches& matches, const FittedFrame& frame);

  /// False when the tracks of a weight above 0 do not fix the parameters, or so weakly (also by
  /// weights a million times smaller than others) that A has no inverse in double precision; the
  /// rest then means nothing.
  bool isDetermined() const { return determined_; }

  /// One pixel of the frame in the coordinates of the slopes.
  double scale() const { return to_.scale; }
  Slopes slopesAt(Point base) const;
  /// inv(A) * v.
  Parameters solve(const Parameters& v) const;
  /// S inv(A) S' at a point of the base frame: its image's covariance, were each track's noise
  /// 1 / w. At a track, times w^2, the track's block of the hat matrix.
  Symmetric2 responseAt(Point base) const;
  /// How far the image of a point of the base frame moves, in pixels, when `step` is added to the
  /// parameters: exact for every model, not the slopes times the step.
  Point displacement(Point base, const Parameters& step) const;

 private:
  void invert(const Points& base, const FittedFrame& frame);

  Model model_;
  Homography kept_;
  Similarity from_;
  Similarity to_;
  Homography fitted_;          // of a projective model, between normalised coordinates
  SquareMatrix<8> inverse_{};  // of A; the identity beyond the model's parameters
  bool determined_ = false;
};

}  // namespace cornerpin

#endif
