// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/uncertainty.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/shot/lists.h"
#include "tests/shot/refit.h"

using namespace cornerpin;
using lists::Frame;

namespace {

const Quad kCorners = {{{60, 70}, {560, 90}, {540, 430}, {80, 410}}};
const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
const Homography kTurned = {{{1.5, -0.5, 30}, {0.5, 1.5, -20}, {0, 0, 1}}};
const Homography kSheared = {{{1.5, 0.3, 30}, {-0.4, 0.7, -20}, {0, 0, 1}}};
const Homography kShifted = {{{1, 0, 30}, {0, 1, -20}, {0, 0, 1}}};

Uncertainty uncertaintyOf(const Frame& frame) {
  return Uncertainty(frame.arrays(), frame.fitted());
}

// A grid of tracks; the weights 1, 1/2 and 2 in turn when they are to differ.
std::vector<Match> grid(int columns, int rows, const Homography& truth, bool weighted) {
  std::vector<Match> matches;
  for (int i = 0; i < columns; ++i) {
    for (int j = 0; j < rows; ++j) {
      const Point p = {100.0 + 420.0 * i / (columns - 1) + 7 * j,
                       100.0 + 300.0 * j / (rows - 1) - 5 * i};
      const double weights[] = {1.0, 0.5, 2.0};
      matches.push_back({p, map(truth, p), weighted ? weights[(i + j) % 3] : 1.0});
    }
  }
  return matches;
}

// The root mean square over noisy copies of what the fit says and of what happens, per corner.
struct Spreads {
  double noise = 0.0;
  std::array<double, 4> figure{};
  std::array<double, 4> seen{};
};

Spreads simulate(const std::vector<Match>& exact, const Homography& truth, Model model,
                 const Eigen::MatrixXd& directions, double noise, double baseNoise) {
  constexpr int kCopies = 1000;
  std::mt19937_64 random(20240611);
  std::normal_distribution<double> normal;
  Spreads s;
  for (int copy = 0; copy < kCopies; ++copy) {
    Frame frame;
    frame.model = model;
    frame.matches = std::vector<Match>(exact);
    for (Match& m : frame.matches) {
      m.base.x += baseNoise * normal(random);
      m.base.y += baseNoise * normal(random);
      m.present.x += noise * normal(random);
      m.present.y += noise * normal(random);
    }
    frame.h = refit::fit(frame.matches, truth, directions);
    const Uncertainty uncertainty = uncertaintyOf(frame);
    s.noise += std::pow(uncertainty.noise(), 2) / kCopies;
    for (std::size_t c = 0; c < 4; ++c) {
      const Point p = map(frame.h, kCorners[c]);
      const Point q = map(truth, kCorners[c]);
      s.seen[c] += (std::pow(p.x - q.x, 2) + std::pow(p.y - q.y, 2)) / kCopies;
      s.figure[c] += std::pow(uncertainty.deviationAt(kCorners[c]), 2) / kCopies;
    }
  }
  s.noise = std::sqrt(s.noise);
  for (std::size_t c = 0; c < 4; ++c) {
    s.seen[c] = std::sqrt(s.seen[c]);
    s.figure[c] = std::sqrt(s.figure[c]);
  }
  return s;
}

// A spread over 1,000 copies is itself known to 1 / sqrt(2000) = 2 % or so: 8 % is four of those.
void expectTheFigureHolds(const Spreads& s) {
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_NEAR(s.figure[c] / s.seen[c], 1.0, 0.08) << "corner " << c;
    std::printf("corner %zu: figure %.4f px, spread %.4f px\n", c, s.figure[c], s.seen[c]);
  }
}

}  // namespace

TEST(Uncertainty, IsTheSpreadOfTheCornersOverAThousandNoisyCopies) {
  for (int columns : {3, 8}) {
    const Spreads s = simulate(grid(columns, 4, kTilted, false), kTilted, Model::Projective,
                               refit::projectiveDirections(), 0.5, 0.5);
    EXPECT_NEAR(s.noise, 0.5, 0.02);
    expectTheFigureHolds(s);
  }
}

TEST(Uncertainty, HoldsForWeightsThatSayNothingOfTheNoise) {
  const Spreads s = simulate(grid(5, 4, kTilted, true), kTilted, Model::Projective,
                             refit::projectiveDirections(), 0.5, 0.5);
  EXPECT_NEAR(s.noise, 0.5, 0.02);
  expectTheFigureHolds(s);
}

TEST(Uncertainty, HoldsForLowerModels) {
  expectTheFigureHolds(simulate(grid(3, 3, kSheared, true), kSheared, Model::Affine,
                                refit::affineDirections(), 0.5, 0.5));
  expectTheFigureHolds(simulate(grid(3, 2, kTurned, true), kTurned, Model::Similarity,
                                refit::similarityDirections(), 0.5, 0.5));
  expectTheFigureHolds(simulate(grid(2, 2, kShifted, true), kShifted, Model::Translation,
                                refit::translationDirections(), 0.5, 0.5));
}

// A mean of n tracks: deviation of the shift in each axis is the noise / sqrt(n).
TEST(Uncertainty, OfATranslationIsThatOfAMean) {
  Frame frame;
  frame.model = Model::Translation;
  for (double d : {-3.0, 3.0}) frame.matches.push_back({{d, 0}, {d + 10, d}, 1.0});
  frame.h = {{{1, 0, 10}, {0, 1, 0}, {0, 0, 1}}};
  // Residuals (0, -3) and (0, 3) with 2 n - 2 = 2 left: the residuals' variance is 9 in each axis,
  // half of it from the base frame.
  const Uncertainty uncertainty = uncertaintyOf(frame);
  EXPECT_NEAR(uncertainty.noise(), std::sqrt(4.5), 1e-12);
  const Symmetric2 c = uncertainty.covarianceAt({50, 60});
  EXPECT_NEAR(c.xx, 4.5, 1e-12);
  EXPECT_NEAR(c.xy, 0.0, 1e-12);
  EXPECT_NEAR(c.yy, 4.5, 1e-12);
  EXPECT_NEAR(uncertainty.deviationAt({50, 60}), 3.0, 1e-12);
}

TEST(Uncertainty, DoesNotChangeWhenAllWeightsDo) {
  Frame frame;
  frame.matches = grid(3, 3, kTilted, true);
  frame.matches[4].present.x += 3;
  frame.h = kTilted;
  const double before = uncertaintyOf(frame).deviationAt(kCorners[2]);
  EXPECT_GT(before, 0.1);
  for (double factor : {1e-30, 1e30}) {
    Frame scaled = frame;
    for (Match& m : scaled.matches) m.weight *= factor;
    EXPECT_NEAR(uncertaintyOf(scaled).deviationAt(kCorners[2]) / before, 1.0, 1e-12);
  }
}

TEST(Uncertainty, GrowsAwayFromTheTracks) {
  Frame frame;
  frame.matches = grid(3, 3, kTilted, false);
  frame.matches[4].present.x += 3;
  frame.h = refit::fit(frame.matches, kTilted);
  const Uncertainty uncertainty = uncertaintyOf(frame);
  EXPECT_LT(uncertainty.deviationAt({310, 250}), uncertainty.deviationAt({110, 110}));
  EXPECT_LT(uncertainty.deviationAt({110, 110}), uncertainty.deviationAt({-300, -300}));
}

TEST(Uncertainty, HasNoFigureForAnExactFit) {
  Frame frame;
  frame.matches = grid(2, 2, kTilted, false);
  frame.h = kTilted;
  EXPECT_TRUE(std::isnan(uncertaintyOf(frame).noise()));
  EXPECT_TRUE(std::isnan(uncertaintyOf(frame).deviationAt(kCorners[0])));
  // A fifth track that does not count leaves none over either.
  frame.matches.push_back({{300, 200}, {0, 0}, 0.0});
  EXPECT_TRUE(std::isnan(uncertaintyOf(frame).noise()));
  frame.model = Model::Held;
  EXPECT_TRUE(std::isnan(uncertaintyOf(frame).deviationAt(kCorners[0])));
  frame.matches.clear();
  frame.model = Model::Projective;
  EXPECT_TRUE(std::isnan(uncertaintyOf(frame).deviationAt(kCorners[0])));
}

TEST(Uncertainty, HasNoFigureForTracksOnALine) {
  Frame frame;
  for (int i = 0; i < 8; ++i)
    frame.matches.push_back({{10.0 * i, 20.0 * i}, {10.0 * i, 20.0 * i}, 1});
  EXPECT_FALSE(uncertaintyOf(frame).deviationAt({100, 0}) < 1e3);
}

// With exact base places every coordinate has the same noise: s^2 = sum of r^2 / (2 n - 8).
TEST(Uncertainty, OfExactPlacesHasTheFamiliarDivisor) {
  Frame frame;
  frame.model = Model::Projective;
  frame.h = kTilted;
  frame.matches = grid(5, 4, kTilted, false);
  double squares = 0.0;
  for (std::size_t i = 0; i < frame.matches.size(); ++i) {
    const double off = 0.1 * static_cast<double>(i % 7);
    frame.matches[i].present.x += off;
    squares += off * off;
  }
  FittedFrame fitted = frame.fitted();
  fitted.placeNoise = 0.0;
  const double noise = Uncertainty(frame.arrays(), fitted).noise();
  EXPECT_NEAR(noise, std::sqrt(squares / (2.0 * 20 - 8)), 1e-9);
  EXPECT_GT(noise, Uncertainty(frame.arrays(), frame.fitted()).noise());
}
