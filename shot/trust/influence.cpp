// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/influence.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace cornerpin {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// Below this determinant of I - hat the other tracks do not fix the model.
constexpr double kNoneLeft = 1e-9;

// What each match pulls the parameters by when it leaves; NaN where the others do not fix them.
// With A the normal matrix, S the match's slopes and G = S inv(A) S', the matrix without the match
// is A - w^2 S'S, whose inverse is
//
//     inv(A) + w^2 inv(A) S' inv(I - w^2 G) S inv(A)    (Sherman, Morrison, Woodbury).
//
// The gradient of the others is w^2 S' r, r being the match's residual, as all together it is 0; so
// the step is inv(A) S' times the pull -w^2 inv(I - w^2 G) r.
Columns<2> pullsWithout(const FrameFits& fits, const Symmetric2s& hats) {
  const std::vector<double>& squares = fits.lastFit().relativeSquares();
  Columns<2> pulls(squares.size());
  for (std::size_t i = 0; i < fits.matches().size(); ++i) {
    const double a = 1.0 - hats[0][i];
    const double b = -hats[1][i];
    const double d = 1.0 - hats[2][i];
    const double det = a * d - b * b;
    const double k = det > kNoneLeft ? -squares[i] / det : kNone;
    const double x = fits.residuals()[0][i];
    const double y = fits.residuals()[1][i];
    pulls[0][i] = k * (d * x - b * y);
    pulls[1][i] = k * (a * y - b * x);
  }
  return pulls;
}

// The largest squared move of a corner when the match leaves: exact for every model, not only to
// first order. With n = S d the move of a corner's image that its slopes make of a step d, and m
// the first two of its (x, y, 1) / s, the image moves by n / (1 + m' (d6, d7)).
std::vector<double> squaredMoves(const FrameFits& fits, const Symmetric2s& hats,
                                 const Quad& corners) {
  const SquareMatrix<8>& inverse = fits.lastFit().relativeInverse();
  const double scale = fits.lastFit().scale();
  double rows[12][8];
  for (std::size_t c = 0; c < 4; ++c) {
    const Slopes s = fits.place().slopesAt(corners[c]);
    const Parameters depth = {0, 0, 0, 0, 0, 0, scale * s.x[0], scale * s.x[1]};
    const Parameters of[3] = {multiplied(inverse, s.x), multiplied(inverse, s.y),
                              multiplied(inverse, depth)};
    for (std::size_t k = 0; k < 3; ++k) std::copy(of[k].begin(), of[k].end(), rows[3 * c + k]);
  }
  const Columns<2> pulls = pullsWithout(fits, hats);
  std::vector<double> squares(pulls.count());
  fastestSlopePasses().moves(fits.slopes()[0], pulls[0], rows, pulls.count(), squares.data());
  return squares;
}

void addFit(const FrameFits& fits, const Quad& corners, std::vector<TrackInfluence>& result) {
  const LinearisedFit& fit = fits.lastFit();
  const Symmetric2s& hats = fits.lastHats();
  const std::vector<double> moves = squaredMoves(fits, hats, corners);
  for (std::size_t i = 0; i < result.size(); ++i) {
    const double weight = fits.last().weights[i];
    if (!(weight > 0.0)) continue;
    const double leverage = (hats[0][i] + hats[2][i]) / 2.0;
    result[i].weight = weight;
    result[i].leverage = fit.isDetermined() ? std::clamp(leverage, 0.0, 1.0) : kNone;
    result[i].influence = fit.isDetermined() ? std::sqrt(moves[i]) : kNone;
  }
}

}  // namespace

std::vector<TrackInfluence> influencesOf(const FrameFits& fits, const Quad& corners) {
  std::vector<TrackInfluence> result(fits.matches().size());
  bool fitted = false;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const double x = fits.residuals()[0][i];
    const double y = fits.residuals()[1][i];
    result[i].track = fits.matches().tracks()[i];
    result[i].residual = std::sqrt(x * x + y * y);
    fitted = fitted || fits.last().weights[i] > 0.0;
  }
  if (fitted && fits.last().model != Model::Held) addFit(fits, corners, result);
  return result;
}

}  // namespace cornerpin
