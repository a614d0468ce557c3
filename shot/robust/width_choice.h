// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_WIDTH_CHOICE_H
#define SHOT_ROBUST_WIDTH_CHOICE_H

#include "shot/fit/homography_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/plane/points.h"

namespace cornerpin {

/// How far the images of the corners are expected to be off after a fit with Tukey's loss, for the
/// worst of them: the root mean square distance. The errors are what the residuals show, however
/// they are distributed. With psi = w^2 u r, u the loss's weight of a residual r, J the derivative
/// of psi by r and S the image's slopes, the parameters have the covariance inv(A) B inv(A), A =
/// sum of S'J S and B = sum of S'psi psi'S; times n / (n - 4), n the sum of u. Infinite where A is
/// not positive definite: so narrow a loss hangs on single matches.
///
/// P. J. Huber, "The behavior of maximum likelihood estimates under nonstandard conditions",
/// Proceedings of the Fifth Berkeley Symposium 1 (1967).
double expectedErrorOf(const Matches& matches, const Homography& h, double width,
                       const Quad& corners);

/// A fit, and where its loss bends.
struct WidthChoice {
  HomographyFit fit;
  double width = 0.0;
};

/// Of the fits with the width and with 2, 4 and 8 times the width, each from the one before, the
/// one whose worst corner is expected to be the least off. A loss that is narrow for errors with
/// heavy tails may have settled on some of the matches that keep to the surface, where all of them
/// lead elsewhere; among matches that agree closely while others do not, the narrow one is expected
/// to be better. \param matches  in the fit's unit: the corners are those of the square from -1 to
/// 1
WidthChoice chooseWidth(const Matches& matches, const Homography& start, double width);

}  // namespace cornerpin

#endif
