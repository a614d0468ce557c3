// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/track_slopes.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "shot/fit/linearised_fit.h"
#include "tests/support/processor.h"

using namespace cornerpin;

namespace {

using Matrix = Eigen::Matrix<double, 8, 8>;
using Rows = Eigen::Matrix<double, 2, 8>;

constexpr unsigned kSeed = 20241123;
const Homography kTilted = {{{1.1, 0.12, 0.3}, {-0.15, 0.95, -0.2}, {0.3, -0.2, 1}}};
const Similarity kUnit = {{300, 200}, 1.0 / 250};

// Numbers of -1 .. 1.
class Uniform {
 public:
  double operator()() { return 2.0 * static_cast<double>(random_()) / 4294967296.0 - 1.0; }

 private:
  std::mt19937 random_{kSeed};
};

// Eleven places, of which the fifth has no weight.
struct Scene {
  Scene() {
    Uniform uniform;
    for (int i = 0; i < 11; ++i) {
      const double x = 300 + 250 * uniform();
      const double y = 200 + 250 * uniform();
      places.add({x, y});
      weights.push_back(i == 4 ? 0.0 : 1.5 + uniform());
    }
    weights.resize(places.paddedSize());
    v = Symmetric2s(places.size());
    for (std::size_t i = 0; i < v.count(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) v[c][i] = uniform();
    }
  }

  TrackSlopes slopes() const { return trackSlopes(places, kUnit, kTilted, weights); }

  // By the definition, one match at a time.
  Rows rowsOf(std::size_t i) const {
    const Slopes s = slopesOf(kTilted, kUnit.apply(places[i]));
    Rows rows;
    for (int k = 0; k < 8; ++k) rows.col(k) << s.x[std::size_t(k)], s.y[std::size_t(k)];
    return weights[i] > 0.0 ? rows : Rows::Zero();
  }

  Eigen::Matrix2d matrixOf(std::size_t i) const {
    Eigen::Matrix2d m;
    m << v[0][i], v[1][i], v[1][i], v[2][i];
    return m;
  }

  Points places;
  std::vector<double> weights;
  Symmetric2s v;
};

Matrix asMatrix(const SquareMatrix<8>& m) { return Eigen::Map<const Matrix>(m.data()); }

SquareMatrix<8> symmetric() {
  Uniform uniform;
  SquareMatrix<8> c{};
  for (std::size_t i = 0; i < 8; ++i) {
    for (std::size_t j = 0; j <= i; ++j) c[i * 8 + j] = c[j * 8 + i] = uniform();
  }
  return c;
}

bool sameBits(const double* a, const double* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(a[i]) && std::isnan(b[i])) continue;
    if (std::memcmp(a + i, b + i, sizeof(double)) != 0) return false;
  }
  return true;
}

}  // namespace

TEST(TrackSlopes, AreThoseOfEachMatch) {
  const Scene scene;
  const TrackSlopes slopes = scene.slopes();
  ASSERT_EQ(slopes.count(), 12u);
  for (std::size_t i = 0; i < 11; ++i) {
    const Rows rows = scene.rowsOf(i);
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(slopes[std::size_t(c)][i], rows(0, c), 1e-14) << i;
    EXPECT_NEAR(slopes[3][i] * slopes[0][i], -rows(0, 6), 1e-14) << i;
    EXPECT_NEAR(slopes[4][i] * slopes[0][i], -rows(1, 6), 1e-14) << i;
  }
}

TEST(TrackSlopes, AreZeroWithoutWeightEvenOnTheHorizon) {
  Scene scene;
  Points places;
  for (std::size_t i = 0; i < 11; ++i)
    places.add(i == 4 ? Point{300 - 250 / 0.3, 200} : scene.places[i]);
  scene.places = places;
  const TrackSlopes slopes = scene.slopes();
  for (std::size_t c = 0; c < 5; ++c) {
    EXPECT_EQ(slopes[c][4], 0.0);
    EXPECT_EQ(slopes[c][11], 0.0);
  }
}

TEST(SumOfProducts, IsThatOfTheRows) {
  const Scene scene;
  Matrix expected = Matrix::Zero();
  for (std::size_t i = 0; i < 11; ++i) {
    expected += scene.rowsOf(i).transpose() * scene.matrixOf(i) * scene.rowsOf(i);
  }
  const Matrix sum = asMatrix(sumOfProducts(scene.slopes(), scene.v));
  EXPECT_LT((sum - expected).cwiseAbs().maxCoeff(), 1e-13 * expected.norm());
}

TEST(Responses, AreThoseOfTheRows) {
  const Scene scene;
  const SquareMatrix<8> c = symmetric();
  const Symmetric2s g = responses(scene.slopes(), c);
  for (std::size_t i = 0; i < 11; ++i) {
    const Eigen::Matrix2d expected = scene.rowsOf(i) * asMatrix(c) * scene.rowsOf(i).transpose();
    EXPECT_NEAR(g[0][i], expected(0, 0), 1e-13) << i;
    EXPECT_NEAR(g[1][i], expected(0, 1), 1e-13) << i;
    EXPECT_NEAR(g[2][i], expected(1, 1), 1e-13) << i;
  }
}

namespace {

// What the passes of all variants are run on.
struct Work {
  Work() {
    Uniform uniform;
    for (auto& row : corners) {
      for (double& element : row) element = 0.1 * uniform();
    }
    uv = Columns<2>(scene.places.size());
    for (std::size_t i = 0; i < uv.count(); ++i) {
      uv[0][i] = uniform();
      uv[1][i] = uniform();
    }
  }

  std::vector<double> movesBy(const SlopePasses& passes) const {
    std::vector<double> squares(uv.count());
    passes.moves(scene.slopes()[0], uv[0], corners, uv.count(), squares.data());
    return squares;
  }

  Scene scene;
  double corners[12][8];
  Columns<2> uv;
};

}  // namespace

TEST(SlopePasses, FindTheLargestOfFourSquaredMoves) {
  const Work work;
  const std::vector<double> squares = work.movesBy(slopePasses().front());
  for (std::size_t i = 0; i < 11; ++i) {
    const Eigen::Vector2d uv(work.uv[0][i], work.uv[1][i]);
    const Eigen::Matrix<double, 8, 1> pull = work.scene.rowsOf(i).transpose() * uv;
    double worst = 0.0;
    for (std::size_t c = 0; c < 12; c += 3) {
      double f[3];
      for (std::size_t k = 0; k < 3; ++k) {
        f[k] = Eigen::Map<const Eigen::Matrix<double, 8, 1>>(work.corners[c + k]).dot(pull);
      }
      worst = std::max(worst, (f[0] * f[0] + f[1] * f[1]) / ((1 + f[2]) * (1 + f[2])));
    }
    EXPECT_NEAR(squares[i], worst, 1e-13 * worst) << i;
  }
}

TEST(SlopePasses, HaveNoMoveWhereOneCornersIsNotFinite) {
  Work work;
  work.uv[0][2] = std::numeric_limits<double>::quiet_NaN();
  work.uv[1][5] = std::numeric_limits<double>::infinity();
  const std::vector<double> squares = work.movesBy(slopePasses().front());
  for (std::size_t i = 0; i < 11; ++i) EXPECT_EQ(std::isnan(squares[i]), i == 2 || i == 5) << i;
}

TEST(SlopePasses, AllGiveTheSameBits) {
  Work work;
  work.uv[0][2] = std::numeric_limits<double>::quiet_NaN();
  work.scene.v[0][7] = 1e300;
  const SlopePasses& base = slopePasses().front();
  const std::size_t count = work.uv.count();
  const double unit[3] = {kUnit.scale, kUnit.centre.x, kUnit.centre.y};
  SlopeProducts factors;
  Uniform uniform;
  for (double& f : factors.xx) f = uniform();
  for (double& f : factors.xz) f = uniform();
  for (double& f : factors.zz) f = uniform();
  for (const SlopePasses& passes : slopePasses()) {
    TrackSlopes slopes[2] = {TrackSlopes(11), TrackSlopes(11)};
    Symmetric2s g[2] = {Symmetric2s(11), Symmetric2s(11)};
    SlopeProducts sums[2];
    const SlopePasses* both[] = {&base, &passes};
    for (int k = 0; k < 2; ++k) {
      both[k]->slopes(work.scene.places.x(), work.scene.places.y(), work.scene.weights.data(),
                      count, unit, kTilted[0].data(), slopes[k][0]);
      both[k]->sums(slopes[k][0], work.scene.v[0], count, sums[k]);
      both[k]->responses(slopes[k][0], factors, count, g[k][0]);
    }
    EXPECT_TRUE(sameBits(slopes[0][0], slopes[1][0], 5 * count)) << passes.name;
    EXPECT_TRUE(sameBits(g[0][0], g[1][0], 3 * count)) << passes.name;
    EXPECT_TRUE(sameBits(sums[0].xx, sums[1].xx, sizeof(SlopeProducts) / sizeof(double)))
        << passes.name;
    EXPECT_TRUE(sameBits(work.movesBy(base).data(), work.movesBy(passes).data(), count))
        << passes.name;
  }
}

TEST(SlopePasses, RunTheFastestThatTheProcessorHas) {
  EXPECT_STREQ(slopePasses().front().name, "base");
  const bool avx2 = processor::flags().count("avx2") > 0;
  EXPECT_STREQ(fastestSlopePasses().name, avx2 ? "avx2" : "base");
}
