// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_ERROR_MODEL_H
#define SHOT_ROBUST_ERROR_MODEL_H

#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// The least sigma, and the least spread, in the fit's unit: an eighth of a pixel over tracks 1,000
/// wide.
constexpr double kSigmaFloor = 2.5e-4;
/// What good tracks are likely to have: half a pixel over tracks 1,000 wide.
constexpr double kLikelySigma = 1e-3;

/// Of a homography.
constexpr double kParameters = 8.0;

/// Of nearly normal errors; fewer are heavy tails.
constexpr int kNormalFreedom = 16;

/// How the errors of a frame's tracks are distributed: a bivariate t distribution, whose core is
/// normal and whose tails are the heavier the fewer degrees of freedom it has, and a share of
/// strays that lie anywhere in an area.
struct ErrorModel {
  int freedom = kNormalFreedom;  ///< 1, 2, 4 or 16: from heavy tails to nearly normal errors
  double spread = 0.0;           ///< the t distribution's own parameter, at least `kSigmaFloor`
  double strays = 0.1;
  double area = 4.0;  ///< stays as it is given; `strayArea`

  /// The standard deviation of one coordinate of a good track's error: that of normal errors with
  /// the same median length, which is 1.1774 of it.
  double sigma() const;
};

/// What earlier frames of the sweep say of a frame's errors.
struct Prior {
  double recentSigma = 0.0;  ///< the usual one of the frames searched last; 0 where nothing tells
  double lowSigma = 0.0;     ///< a low one of all frames searched; 0 where nothing tells
  int freedom = 0;           ///< of the frame searched last; 0 where nothing tells
  std::vector<double> odds;  ///< per match, that it is a good one over a stray; empty: even
  /// Per match: the larger, the sooner samples are drawn from it; empty: all alike.
  std::vector<double> confidence;
};

/// The area of the box around the places (at least one) without the far-off ones
/// (`withoutFarOff`): wherever such a one is, it says nothing of where the other strays are.
double strayArea(const Points& present);

/// How many of the errors of good matches, two coordinates each, tell how large errors are: all but
/// the eight that a homography's parameters take up, or of few matches a quarter.
double remainingErrors(double goodMatches);

/// How often each match's logarithmic likelihood counts: as its squared weight, relative to the
/// mean. None counts more than the eighth heaviest or, of more than 32, the upper quartile's:
/// weights say how much a match pulls, and a few heavy ones, which a transform meets whatever they
/// are, tell nothing of the errors.
std::vector<double> votesOf(const Matches& matches);

}  // namespace cornerpin

#endif
