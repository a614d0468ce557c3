// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LINEARISED_FIT_H
#define SHOT_FIT_LINEARISED_FIT_H

#include <array>
#include <cstddef>
#include <vector>

#include "shot/fit/lapack.h"
#include "shot/fit/matches.h"
#include "shot/fit/model.h"
#include "shot/fit/track_slopes.h"
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

inline double dot(const Parameters& a, const Parameters& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < 8; ++i) sum += a[i] * b[i];
  return sum;
}

/// How the two coordinates of a point's image move with the parameters.
struct Slopes {
  Parameters x{};
  Parameters y{};
};

/// Those of a homography's first eight elements, row by row, at p; the last is 1. With X = U / s,
/// dX/dh0i = m_i / s and dX/dh2i = -X m_i / s.
inline Slopes slopesOf(const Homography& h, Point p) {
  const double s = denominator(h, p);
  const Point q = map(h, p);
  const Point a = {p.x / s, p.y / s};
  return {{a.x, a.y, 1.0 / s, 0.0, 0.0, 0.0, -q.x * a.x, -q.x * a.y},
          {0.0, 0.0, 0.0, a.x, a.y, 1.0 / s, -q.y * a.x, -q.y * a.y}};
}

/// Those of a match's `TrackSlopes`.
inline Slopes slopesAt(const TrackSlopes& slopes, std::size_t i) {
  const double m0 = slopes[0][i], m1 = slopes[1][i], m2 = slopes[2][i];
  const double X = slopes[3][i], Y = slopes[4][i];
  return {{m0, m1, m2, 0.0, 0.0, 0.0, -X * m0, -X * m1},
          {0.0, 0.0, 0.0, m0, m1, m2, -Y * m0, -Y * m1}};
}

Parameters multiplied(const SquareMatrix<8>& a, const Parameters& v);
SquareMatrix<8> multiplied(const SquareMatrix<8>& a, const SquareMatrix<8>& b);

/// Adds p x' + q y'.
void addProducts(const Parameters& p, const Parameters& x, const Parameters& q, const Parameters& y,
                 SquareMatrix<8>& a);

/// S C S': of a point's image, with C the covariance of the parameters.
Symmetric2 covarianceOf(const Slopes& slopes, const SquareMatrix<8>& covariance);

/// Where a fit is linearised. Its parameters are a homography's first eight elements row by row,
/// the last being 1, between coordinates of the tracks' own boxes; a lower model moves some of
/// them, or sums of them.
struct FitPlace {
  FitPlace() = default;
  /// \param base     of the matches, behind `frame.kept`
  /// \param weights  of the matches; the boxes are those around all above 0
  FitPlace(const Points& base, const Points& present, const FittedFrame& frame,
           const std::vector<double>& weights);

  Slopes slopesAt(Point base) const { return slopesOf(fitted, from.apply(map(kept, base))); }

  Homography kept = kIdentity;
  Similarity from;  // behind `kept`
  Similarity to;
  Homography fitted =
      kIdentity;  // of a lower model, to which its parameters are added, the identity
};

/// The same with the slopes of all matches, for all the fits of a frame.
struct FrameSlopes {
  /// \param weights  above 0 for the matches that any of the fits counts
  FrameSlopes(const Matches& matches, const FittedFrame& frame, std::vector<double> weights);

  FitPlace place;
  TrackSlopes tracks;
};

/// A fit linearised at its solution, A = sum of w^2 S'K S with S a track's slopes and K its
/// stiffness. Squared pixels would leave A without a usable inverse: see `FitPlace`.
class LinearisedFit {
 public:
  LinearisedFit(const Matches& matches, const FittedFrame& frame);
  enum class Stiffness { OfFrame, None };
  LinearisedFit(const FrameSlopes& slopes, const FittedFrame& frame,
                Stiffness stiffness = Stiffness::OfFrame);

  /// Of places that stay where they are, all of weight 1. Has no `relativeSquares`.
  LinearisedFit(const Points& places, Model model);

  /// False when the tracks of a weight above 0 do not fix the parameters, or so weakly (also by
  /// weights a million times smaller than others) that A has no inverse in double precision; the
  /// rest then means nothing.
  bool isDetermined() const { return determined_; }

  /// One pixel of the frame in the coordinates of the slopes.
  double scale() const { return place_.to.scale; }
  Slopes slopesAt(Point base) const { return place_.slopesAt(base); }
  /// inv(A) * v, nothing for what the model does not move.
  Parameters solve(const Parameters& v) const;
  /// S inv(A) S' at a point of the base frame: its image's covariance, were each track's noise
  /// 1 / w. At a track, times w^2, the track's block of the hat matrix.
  Symmetric2 responseAt(Point base) const;

  SquareMatrix<8> inverse() const;  ///< inv(A)

  /// With the weights over the largest of them, whose squares can overflow: inv(A), and squares as
  /// many as there are slopes.
  const SquareMatrix<8>& relativeInverse() const { return inverse_; }
  const std::vector<double>& relativeSquares() const { return squares_; }
  /// The tracks' blocks of the hat matrix, w^2 S inv(A) S'.
  Symmetric2s hatsOf(const TrackSlopes& slopes) const;

 private:
  void invert(const TrackSlopes& slopes, const FittedFrame& frame, bool stiff);
  void invertWithin(Model model);

  FitPlace place_;
  double largest_ = 1.0;  // weight
  std::vector<double> squares_;
  SquareMatrix<8> inverse_{};
  bool determined_ = false;
};

}  // namespace cornerpin

#endif
