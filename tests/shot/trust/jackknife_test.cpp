// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/jackknife.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <random>

#include "shot/fit/homography_fit.h"
#include "shot/trust/final_weights.h"
#include "shot/trust/uncertainty.h"
#include "tests/shot/lists.h"
#include "tests/shot/refit.h"

using namespace cornerpin;
using lists::Frame;

namespace {

const Point kCorner = {560, 430};
const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};

Symmetric2 covarianceOf(const Matches& matches, const FittedFrame& fitted) {
  return Jackknife::ofLast(FrameFits(matches, fitted, fitted)).covarianceAt(kCorner);
}

Symmetric2 covarianceOf(const Frame& frame) {
  const Matches matches = frame.arrays();
  return covarianceOf(matches, frame.fitted());
}

// Of the elements of `kTilted` in units of about the same effect.
Eigen::Matrix<double, 2, 8> scaledSlopes(Point p) {
  constexpr double kUnits[] = {1e-2, 1e-2, 1, 1e-2, 1e-2, 1, 1e-5, 1e-5};
  const Slopes slopes = slopesOf(kTilted, p);
  Eigen::Matrix<double, 2, 8> result;
  for (Eigen::Index k = 0; k < 8; ++k) {
    const auto i = static_cast<std::size_t>(k);
    result(0, k) = kUnits[i] * slopes.x[i];
    result(1, k) = kUnits[i] * slopes.y[i];
  }
  return result;
}

// Noise of its own for each track.
Frame noisy(std::size_t count, unsigned seed, double noise, bool weighted) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> x(60, 560), y(70, 430), w(0.5, 2);
  std::normal_distribution<double> normal(0, noise);
  Frame frame;
  for (std::size_t i = 0; i < count; ++i) {
    const double px = x(random), py = y(random), nx = normal(random), ny = normal(random);
    const Point q = map(kTilted, {px, py});
    frame.matches.push_back({{px, py}, {q.x + nx, q.y + ny}, weighted ? w(random) : 1.0});
  }
  return frame;
}

// By a fit without each track in turn.
Symmetric2 refitted(const Frame& frame, const Eigen::MatrixXd& directions) {
  Symmetric2 sum;
  const auto count = static_cast<double>(frame.matches.size());
  const Point all = map(frame.h, kCorner);
  for (std::size_t i = 0; i < frame.matches.size(); ++i) {
    std::vector<Match> others = frame.matches;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
    const Point without = map(refit::fit(others, frame.h, directions), kCorner);
    const double dx = without.x - all.x, dy = without.y - all.y;
    sum.xx += dx * dx * (count - 1) / count;
    sum.xy += dx * dy * (count - 1) / count;
    sum.yy += dy * dy * (count - 1) / count;
  }
  return sum;
}

}  // namespace

// Of a mean of n it is the variance of a mean: the sum of r^2 over n (n - 1).
TEST(Jackknife, OfATranslationIsTheVarianceOfAMean) {
  Frame frame;
  frame.model = Model::Translation;
  frame.h = {{{1, 0, 10}, {0, 1, 0}, {0, 0, 1}}};
  frame.matches = {{{0, 0}, {11, 2}}, {{5, 0}, {14, 0}}, {{9, 4}, {19, 2}}};
  // Residuals (1, 2), (-1, 0), (0, -2).
  const Symmetric2 c = covarianceOf(frame);
  EXPECT_NEAR(c.xx, 2.0 / 6, 1e-12);
  EXPECT_NEAR(c.xy, 2.0 / 6, 1e-12);
  EXPECT_NEAR(c.yy, 8.0 / 6, 1e-12);
}

TEST(Jackknife, IsThatOfFitsWithoutEachTrack) {
  for (bool weighted : {false, true}) {
    Frame frame = noisy(9, 3, 5.0, weighted);
    frame.model = Model::Affine;
    frame.h = refit::fit(frame.matches, kIdentity, refit::affineDirections());
    const Symmetric2 c = covarianceOf(frame);
    const Symmetric2 plain = refitted(frame, refit::affineDirections());
    EXPECT_NEAR(c.xx / plain.xx, 1.0, 1e-8);
    EXPECT_NEAR(c.xy / plain.xy, 1.0, 1e-8);
    EXPECT_NEAR(c.yy / plain.yy, 1.0, 1e-8);
  }
}

// To first order for a projective fit.
TEST(Jackknife, IsThatOfProjectiveFitsWithoutEachTrack) {
  Frame frame = noisy(9, 5, 1e-4, true);
  frame.h = refit::fit(frame.matches, kTilted);
  const Symmetric2 c = covarianceOf(frame);
  const Symmetric2 plain = refitted(frame, refit::projectiveDirections());
  EXPECT_NEAR(c.xx / plain.xx, 1.0, 1e-4);
  EXPECT_NEAR(c.yy / plain.yy, 1.0, 1e-4);
}

// Of 60 tracks a third is about as far off as Tukey's loss bends back: without one of these the fit
// moves further than squares of the same weights would.
TEST(Jackknife, IsThatOfFitsWithALossWithoutEachTrack) {
  constexpr double kWidth = 1.0;
  Frame frame = noisy(60, 9, 0.05, false);
  for (std::size_t i = 0; i < frame.matches.size(); i += 3) {
    const double turn = 0.7 * static_cast<double>(i * i);
    frame.matches[i].present.x += 0.65 * std::cos(turn);
    frame.matches[i].present.y += 0.65 * std::sin(turn);
  }
  const auto fit = [&](const std::vector<Match>& matches) {
    return fitHomography(lists::matches(matches), kTilted, Loss::Tukey, kWidth).h;
  };
  frame.h = fit(frame.matches);
  double moved = 0.0;
  for (std::size_t i = 0; i < frame.matches.size(); ++i) {
    std::vector<Match> others = frame.matches;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
    moved += squaredDistance(map(fit(others), kCorner), map(frame.h, kCorner)) * 59.0 / 60.0;
  }
  const Matches matches = frame.arrays();
  FittedFrame fitted = frame.fitted();
  fitted.weights = lossWeights(matches, frame.h, {300, 200}, Loss::Tukey, kWidth);
  const double ofSquares = covarianceOf(matches, fitted).trace();
  fitted.stiffness = lossStiffness(matches, frame.h, Loss::Tukey, kWidth);
  const double ofLoss = covarianceOf(matches, fitted).trace();
  std::printf("moved %.5f, of squares %.5f, of the loss %.5f\n", moved, ofSquares, ofLoss);
  EXPECT_NEAR(ofLoss / moved, 1.0, 0.15);
  EXPECT_LT(ofSquares / moved, 0.8);
}

TEST(Jackknife, PassesOverTracksWithoutWeight) {
  Frame frame = noisy(9, 3, 0.5, false);
  frame.h = refit::fit(frame.matches, kTilted);
  const double before = covarianceOf(frame).trace();
  frame.matches.push_back({{300, 200}, {900, 900}, 0.0});
  EXPECT_EQ(covarianceOf(frame).trace(), before);
}

// Four tracks are met wherever they are.
TEST(Jackknife, IsNothingWhereAllTracksAreMet) {
  Frame frame;
  frame.h = kTilted;
  for (const Point& p : {Point{60, 70}, Point{560, 90}, Point{540, 430}, Point{80, 410}}) {
    frame.matches.push_back({p, map(kTilted, p)});
  }
  EXPECT_LT(covarianceOf(frame).trace(), 1e-12);
}

// A shift by two tracks of the weights 4 and 1, which are 17 px apart. Their leverages are 16 / 17
// and 1 / 17, their residuals 1 and 16: without the second the first moves the fit by 1, without
// the first it would move by 16, which counts as 16 / 17 * 8.
TEST(Jackknife, BelievesNoResidualMoreThanEightTimes) {
  Frame frame;
  frame.model = Model::Translation;
  frame.matches = {{{-3, 0}, {-3, 0}, 4.0}, {{3, 0}, {20, 0}, 1.0}};
  frame.h = {{{1, 0, 1}, {0, 1, 0}, {0, 0, 1}}};
  const double first = 16.0 / 17 * 8;
  EXPECT_NEAR(covarianceOf(frame).xx, (first * first + 1.0) / 2, 1e-9);
  EXPECT_NEAR(covarianceOf(frame).yy, 0.0, 1e-12);
}

// A track that alone tells the perspective across a row of others: along one axis of its plane it
// hides 10 parts of 11 of its residual, across hardly any. Only the first counts at most eight
// times. All other tracks are met.
TEST(Jackknife, BoundsEachAxisOfAResidualByItself) {
  const std::vector<Point> places = {{551, 287}, {77, 218}, {521, 211}, {525, 214},
                                     {67, 208},  {71, 216}, {279, 219}};
  const std::vector<double> weights = {2, 2, 2, 0.5, 2, 4, 0.5};
  for (std::size_t own = 0; own < places.size(); ++own) {
    Frame frame;
    frame.h = kTilted;
    Eigen::Matrix<double, 8, 8> normal = Eigen::Matrix<double, 8, 8>::Zero();
    std::vector<Eigen::Matrix<double, 2, 8>> slopes;
    for (std::size_t i = 0; i < places.size(); ++i) {
      Point q = map(kTilted, places[i]);
      if (i == own) q = {q.x + 0.3, q.y + 0.5};
      frame.matches.push_back({places[i], q, weights[i]});
      slopes.push_back(scaledSlopes(places[i]));
      normal += weights[i] * weights[i] * slopes[i].transpose() * slopes[i];
    }
    const Eigen::Matrix<double, 8, 8> inverse = normal.inverse();
    const double w2 = weights[own] * weights[own];
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> left(
        Eigen::Matrix2d::Identity() - w2 * slopes[own] * inverse * slopes[own].transpose());
    const Eigen::Vector2d share = left.eigenvalues().cwiseMax(1.0 / 8.0).cwiseInverse();
    const Eigen::Vector2d r = left.eigenvectors() * share.asDiagonal() *
                              left.eigenvectors().transpose() * Eigen::Vector2d(0.3, 0.5);
    const Eigen::Vector2d move = w2 * scaledSlopes(kCorner) * inverse * slopes[own].transpose() * r;
    EXPECT_NEAR(covarianceOf(frame).trace() / (6.0 / 7.0 * move.squaredNorm()), 1.0, 1e-6) << own;
  }
}

// The tracks towards the corner are eight times as noisy as the others, on which an average noise
// is based; 2,000 copies.
TEST(Jackknife, HoldsWhereNoiseIsNotTheSameEverywhere) {
  constexpr int kCopies = 2000;
  std::mt19937_64 random(11);
  std::normal_distribution<double> normal;
  double seen = 0.0, jackknife = 0.0, equal = 0.0;
  for (int copy = 0; copy < kCopies; ++copy) {
    Frame frame;
    for (int i = 0; i < 40; ++i) {
      const Point p = {100.0 + 60 * (i % 8), 100.0 + 75 * std::floor(static_cast<double>(i) / 8.0)};
      const double noise = i % 8 >= 6 && i / 8 >= 3 ? 0.8 : 0.1;
      const double nx = noise * normal(random), ny = noise * normal(random);
      const Point q = map(kTilted, p);
      frame.matches.push_back({p, {q.x + nx, q.y + ny}});
    }
    frame.h = refit::fit(frame.matches, kTilted);
    seen += squaredDistance(map(frame.h, kCorner), map(kTilted, kCorner));
    jackknife += covarianceOf(frame).trace();
    equal += Uncertainty(frame.arrays(), frame.fitted()).covarianceAt(kCorner).trace();
  }
  std::printf("variance %.4f, jackknife %.4f, of equal noise %.4f\n", seen / kCopies,
              jackknife / kCopies, equal / kCopies);
  EXPECT_LT(equal, 0.6 * seen);
  EXPECT_GT(jackknife, 0.95 * seen);
  EXPECT_LT(jackknife, 2.0 * seen);
}
