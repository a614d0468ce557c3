// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/width_choice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "shot/robust/robust_fit.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;

namespace {

constexpr Quad kCorners = {{{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}};

using Matrix = std::array<std::array<double, 8>, 8>;

// Gauss-Jordan with pivots.
Matrix inverseOf(Matrix m) {
  Matrix inverse{};
  for (std::size_t i = 0; i < 8; ++i) inverse[i][i] = 1.0;
  for (std::size_t c = 0; c < 8; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c; r < 8; ++r) {
      if (std::fabs(m[r][c]) > std::fabs(m[pivot][c])) pivot = r;
    }
    std::swap(m[c], m[pivot]);
    std::swap(inverse[c], inverse[pivot]);
    const double by = 1.0 / m[c][c];
    for (std::size_t k = 0; k < 8; ++k) m[c][k] *= by, inverse[c][k] *= by;
    for (std::size_t r = 0; r < 8; ++r) {
      const double times = r == c ? 0.0 : m[r][c];
      for (std::size_t k = 0; k < 8; ++k) {
        m[r][k] -= times * m[c][k];
        inverse[r][k] -= times * inverse[c][k];
      }
    }
  }
  return inverse;
}

// How the image of p moves with each of the eight elements, by differences.
std::array<Point, 8> slopesByDifferences(const Homography& h, Point p) {
  constexpr double kStep = 1e-6;
  std::array<Point, 8> slopes{};
  for (std::size_t i = 0; i < 8; ++i) {
    Homography up = h;
    Homography down = h;
    up[i / 3][i % 3] += kStep;
    down[i / 3][i % 3] -= kStep;
    const Point a = map(up, p);
    const Point b = map(down, p);
    slopes[i] = {(a.x - b.x) / (2.0 * kStep), (a.y - b.y) / (2.0 * kStep)};
  }
  return slopes;
}

// Tukey's psi of a residual.
Point psiOf(Point r, double width) {
  const double rest = std::max(1.0 - (r.x * r.x + r.y * r.y) / (width * width), 0.0);
  return {rest * rest * r.x, rest * rest * r.y};
}

// The same figure with every derivative from differences.
double plainExpectedError(const Matches& matches, const Homography& h, double width) {
  Matrix a{};
  Matrix b{};
  double counted = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Match m = matches[i];
    const Point image = map(h, m.base);
    const Point r = {m.present.x - image.x, m.present.y - image.y};
    const double step = 1e-6 * width;
    const Point right = psiOf({r.x + step, r.y}, width), left = psiOf({r.x - step, r.y}, width);
    const Point above = psiOf({r.x, r.y + step}, width), below = psiOf({r.x, r.y - step}, width);
    const double xx = (right.x - left.x) / (2 * step), xy = (above.x - below.x) / (2 * step);
    const double yx = (right.y - left.y) / (2 * step), yy = (above.y - below.y) / (2 * step);
    const Point psi = psiOf(r, width);
    const double w2 = m.weight * m.weight;
    const auto s = slopesByDifferences(h, m.base);
    for (std::size_t j = 0; j < 8; ++j) {
      for (std::size_t k = 0; k < 8; ++k) {
        a[j][k] +=
            w2 * (s[j].x * (xx * s[k].x + xy * s[k].y) + s[j].y * (yx * s[k].x + yy * s[k].y));
        b[j][k] += w2 * w2 * (s[j].x * psi.x + s[j].y * psi.y) * (s[k].x * psi.x + s[k].y * psi.y);
      }
    }
    const double rest = std::max(1.0 - (r.x * r.x + r.y * r.y) / (width * width), 0.0);
    counted += rest * rest;
  }
  const Matrix inverse = inverseOf(a);
  double worst = 0.0;
  for (Point corner : kCorners) {
    const auto s = slopesByDifferences(h, corner);
    std::array<Point, 8> t{};  // inv(A) S'
    for (std::size_t j = 0; j < 8; ++j) {
      for (std::size_t k = 0; k < 8; ++k) {
        t[j].x += inverse[j][k] * s[k].x;
        t[j].y += inverse[j][k] * s[k].y;
      }
    }
    double trace = 0.0;
    for (std::size_t j = 0; j < 8; ++j) {
      for (std::size_t k = 0; k < 8; ++k) trace += b[j][k] * (t[j].x * t[k].x + t[j].y * t[k].y);
    }
    worst = std::max(worst, trace);
  }
  return std::sqrt(worst * counted / (counted - 4.0));
}

Matches normalMatches(int count, double sigma, std::uint32_t seed) {
  errors::Random random(seed);
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const Point base = random.place();
    const double length = random.normalLength(sigma);
    matches.add(errors::matchAt(base, errors::kView, length, random.angle()));
  }
  return matches;
}

// Half of the matches within 1e-3 of the view, half pushed aside by up to `far`.
Matches halfPushed(double far, std::uint32_t seed) {
  errors::Random random(seed);
  Matches matches;
  for (int i = 0; i < 60; ++i) {
    const Point base = random.place();
    const double noise = random.normalLength(1e-3);
    const double angle = random.angle();
    Match match = errors::matchAt(base, errors::kView, noise, angle);
    if (i % 2 == 1) match.present.x += far * random.uniform() * (i % 4 == 1 ? 1.0 : -0.3);
    matches.add(match);
  }
  return matches;
}

double farthestCorner(const Homography& h) {
  double farthest = 0.0;
  for (Point corner : kCorners) {
    farthest = std::max(farthest, squaredDistance(map(h, corner), map(errors::kView, corner)));
  }
  return std::sqrt(farthest);
}

}  // namespace

TEST(ExpectedErrorOf, IsWhatDifferencesGive) {
  Matches matches = normalMatches(40, 0.01, 7);
  matches.add({{0.3, 0.2}, {5.0, 5.0}, 1.0});  // counts nothing
  Matches weighted;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    Match match = matches[i];
    match.weight = 0.5 + 0.05 * static_cast<double>(i);
    weighted.add(match);
  }
  for (double width : {0.03, 0.05, 1.0}) {
    const double plain = plainExpectedError(weighted, errors::kView, width);
    ASSERT_TRUE(std::isfinite(plain));
    EXPECT_NEAR(expectedErrorOf(weighted, errors::kView, width, kCorners), plain, 1e-6 * plain)
        << width;
  }
}

// 400 shots: the root of the mean squared figure of a corner against that of its error.
TEST(ExpectedErrorOf, IsHowFarACornerIsOff) {
  for (Point corner : kCorners) {
    double expected = 0.0;
    double actual = 0.0;
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
      const Matches matches = normalMatches(300, 0.01, seed);
      const HomographyFit fit = fitHomography(matches, errors::kView, Loss::Tukey, 0.04);
      const double one = expectedErrorOf(matches, fit.h, 0.04, {corner, corner, corner, corner});
      expected += one * one;
      actual += squaredDistance(map(fit.h, corner), map(errors::kView, corner));
    }
    EXPECT_NEAR(std::sqrt(expected / actual), 1.0, 0.1);
  }
}

TEST(ExpectedErrorOf, IsInfiniteWithoutMatchesThatFixTheTransform) {
  const Matches four = normalMatches(4, 0.0, 3);
  EXPECT_EQ(expectedErrorOf(four, errors::kView, 1.0, kCorners),
            std::numeric_limits<double>::infinity());
  const Matches matches = normalMatches(40, 0.01, 3);
  EXPECT_EQ(expectedErrorOf(matches, errors::kView, 0.003, kCorners),
            std::numeric_limits<double>::infinity());
  EXPECT_EQ(expectedErrorOf({}, errors::kView, 1.0, kCorners),
            std::numeric_limits<double>::infinity());
}

TEST(ExpectedErrorOf, PassesOverMatchesBehindTheHorizon) {
  Matches matches = normalMatches(40, 0.01, 11);
  const double before = expectedErrorOf(matches, errors::kView, 0.05, kCorners);
  // The image of the place behind the horizon is just where the match is.
  const Point behind = {-12.0, 0.0};
  matches.add({behind, map(errors::kView, behind), 1.0});
  EXPECT_EQ(expectedErrorOf(matches, errors::kView, 0.05, kCorners), before);
}

TEST(ChooseWidth, TakesTheLeastExpectedError) {
  bool widened = false;
  bool stayed = false;
  for (std::uint32_t seed = 1; seed <= 40; ++seed) {
    const Matches matches = normalMatches(30, 0.01, seed);
    const WidthChoice choice = chooseWidth(matches, errors::kView, 0.025);
    double least = std::numeric_limits<double>::infinity();
    double width = 0.0;
    Homography last = errors::kView;
    for (double w : {0.025, 0.05, 0.1, 0.2}) {
      last = fitHomography(matches, last, Loss::Tukey, w).h;
      const double expected = plainExpectedError(matches, last, w);
      if (expected < least) least = expected, width = w;
    }
    EXPECT_EQ(choice.width, width) << seed;
    widened = widened || choice.width > 0.025;
    stayed = stayed || choice.width < 0.2;
  }
  EXPECT_TRUE(widened);
  EXPECT_TRUE(stayed);
}

// As when tracks creep off: those that stay agree, and all together do not.
TEST(ChooseWidth, StaysWithTheMatchesThatAgreeWhereTheOthersWouldPullItAway) {
  double chosen = 0.0;
  double byAll = 0.0;
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    const Matches matches = halfPushed(0.05, seed);
    const WidthChoice choice = chooseWidth(matches, errors::kView, 7e-3);
    EXPECT_LE(choice.width, 14e-3) << seed;
    chosen += farthestCorner(choice.fit.h);
    byAll += farthestCorner(fitHomography(matches, errors::kView, Loss::Tukey, 56e-3).h);
  }
  EXPECT_LT(chosen, byAll / 4.0);
}

// Whether the fit of a frame may be wider than its mixture says.
TEST(RobustFitWidth, IsChosenWhereTailsAreHeavyAndNoFrameBeforeTells) {
  int widened = 0;
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    errors::Random random(seed);
    Matches matches;
    for (int i = 0; i < 40; ++i) {
      const Point base = random.place();
      const double length = random.length(1, 2e-3);
      matches.add(errors::matchAt(base, errors::kView, length, random.angle()));
    }
    const std::vector<Start> starts = {{Stage::Neighbour, errors::kView}};
    const auto widthWith = [&](Loss loss, double recentSigma) {
      Prior prior;
      prior.recentSigma = recentSigma;
      prior.confidence.assign(matches.size(), 1.0);
      return fitRobustly(matches, starts, prior, {loss, 1}).width;
    };
    const double chosen = widthWith(Loss::Tukey, 0.0);
    const double told = widthWith(Loss::Tukey, 1e-3);
    // The bends of the two losses are 7 and 3 spreads of one mixture.
    EXPECT_NEAR(widthWith(Loss::Cauchy, 1e-3) / told, 3.0 / 7.0, 1e-12);
    const double unchosen = widthWith(Loss::Cauchy, 0.0) * 7.0 / 3.0;
    const double factor = chosen / unchosen;
    EXPECT_NEAR(factor, std::exp2(std::round(std::log2(factor))), 1e-9);
    if (factor > 1.5) ++widened;
  }
  EXPECT_GT(widened, 0);
}
