// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/width_choice.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/positive_definite.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kFewest = 4.0;  // as many matches meet any transform
// Around the surface, in the fit's unit.
constexpr Quad kSquare = {{{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}};

double& at(SquareMatrix<8>& m, std::size_t i, std::size_t j) { return m[j * 8 + i]; }

// S'V S into the upper triangle.
void add(SquareMatrix<8>& sum, const Slopes& s, const Symmetric2& v) {
  for (std::size_t j = 0; j < 8; ++j) {
    const double x = v.xx * s.x[j] + v.xy * s.y[j];
    const double y = v.xy * s.x[j] + v.yy * s.y[j];
    for (std::size_t i = 0; i <= j; ++i) at(sum, i, j) += s.x[i] * x + s.y[i] * y;
  }
}

// Of the symmetric matrix with this upper triangle.
Parameters product(const SquareMatrix<8>& upper, const Parameters& v) {
  Parameters result{};
  for (std::size_t i = 0; i < 8; ++i) {
    for (std::size_t j = 0; j < 8; ++j) {
      result[i] += upper[i <= j ? j * 8 + i : i * 8 + j] * v[j];
    }
  }
  return result;
}

}  // namespace

double expectedErrorOf(const Matches& matches, const Homography& h, double width,
                       const Quad& corners) {
  SquareMatrix<8> a{};
  SquareMatrix<8> b{};
  double counted = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Match match = matches[i];
    if (!(denominator(h, match.base) > kHorizon)) continue;
    const Point image = map(h, match.base);
    const Point r = {match.present.x - image.x, match.present.y - image.y};
    const double rest = 1.0 - (r.x * r.x + r.y * r.y) / (width * width);
    if (!(rest > 0.0)) continue;
    const double u = rest * rest;
    const double slope = -4.0 * rest / (width * width);  // J = u + slope r r'
    counted += u;
    const double w2 = match.weight * match.weight;
    const Slopes s = slopesOf(h, match.base);
    add(a, s, {w2 * (u + slope * r.x * r.x), w2 * slope * r.x * r.y, w2 * (u + slope * r.y * r.y)});
    const double psi2 = w2 * w2 * u * u;
    add(b, s, {psi2 * r.x * r.x, psi2 * r.x * r.y, psi2 * r.y * r.y});
  }
  if (!(counted > kFewest) || !invertPositiveDefinite(a)) return kInfinity;
  double worst = 0.0;
  for (Point corner : corners) {
    const Slopes s = slopesOf(h, corner);
    const Parameters x = product(a, s.x);
    const Parameters y = product(a, s.y);
    worst = std::max(worst, dot(x, product(b, x)) + dot(y, product(b, y)));
  }
  return std::sqrt(worst * counted / (counted - kFewest));
}

WidthChoice chooseWidth(const Matches& matches, const Homography& start, double width) {
  WidthChoice best{fitHomography(matches, start, Loss::Tukey, width), width};
  double least = expectedErrorOf(matches, best.fit.h, width, kSquare);
  Homography last = best.fit.h;
  for (double factor : {2.0, 4.0, 8.0}) {
    const HomographyFit wider = fitHomography(matches, last, Loss::Tukey, factor * width);
    last = wider.h;
    const double expected = expectedErrorOf(matches, wider.h, factor * width, kSquare);
    if (!(expected < least)) continue;
    least = expected;
    best = {wider, factor * width};
  }
  return best;
}

}  // namespace cornerpin
