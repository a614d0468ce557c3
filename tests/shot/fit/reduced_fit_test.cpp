// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/reduced_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/shot/refit.h"

using namespace cornerpin;

namespace {

const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
const Homography kShift = {{{1, 0, 7}, {0, 1, -3}, {0, 0, 1}}};
const Homography kTurn = {{{1.2, -0.3, 7}, {0.3, 1.2, -3}, {0, 0, 1}}};
const Homography kShear = {{{1.2, -0.1, 7}, {0.4, 0.9, -3}, {0, 0, 1}}};

const std::vector<Point> kPoints = {{100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}};

std::vector<Match> matchesFor(const Homography& truth, std::size_t count, double noise = 0.0) {
  std::vector<Match> matches;
  for (std::size_t i = 0; i < count; ++i) {
    const Point p = kPoints[i % kPoints.size()];
    const Point q = map(truth, p);
    const double sign = i % 2 == 0 ? 1 : -1;
    matches.push_back(
        {p, {q.x + sign * noise, q.y - sign * noise / 2}, 1.0 + 0.25 * static_cast<double>(i)});
  }
  return matches;
}

double worstError(const Homography& h, const Homography& truth) {
  double worst = 0.0;
  for (Point p : kPoints) {
    const Point a = map(h, p);
    const Point b = map(truth, p);
    worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
  }
  return worst;
}

}  // namespace

TEST(NoiseGain, OfFourCornersIsOne) {
  const std::vector<Point> corners = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  const Quad square = squareAround(corners);
  EXPECT_NEAR(noiseGain(Model::Projective, corners, square), 1.0, 1e-12);
  // The mean of four, and with it slopes of 1/4 each way: sqrt(1/4 + 1/4 + 1/4).
  EXPECT_NEAR(noiseGain(Model::Affine, corners, square), std::sqrt(0.75), 1e-12);
  // Centre 1/4, turn and scale: distance^2 / sum of distances^2 = 2 / 8.
  EXPECT_NEAR(noiseGain(Model::Similarity, corners, square), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(noiseGain(Model::Translation, corners, square), 0.5, 1e-12);
}

TEST(NoiseGain, DoesNotDependOnTheUnits) {
  const Quad square = squareAround(kPoints);
  const double gain = noiseGain(Model::Projective, kPoints, square);
  for (double unit : {1e-30, 1e30}) {
    std::vector<Point> points = kPoints;
    for (Point& p : points) p = {p.x * unit, p.y * unit};
    EXPECT_NEAR(noiseGain(Model::Projective, points, squareAround(points)) / gain, 1.0, 1e-9);
  }
}

TEST(NoiseGain, IsInfiniteWhereThePointsDoNotFixTheModel) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Quad square = squareAround(kPoints);
  EXPECT_EQ(noiseGain(Model::Projective, {{0, 0}, {1, 0}, {0, 1}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Affine, {{0, 0}, {1, 0}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Similarity, {{0, 0}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Translation, {}, square), infinity);
  EXPECT_FALSE(noiseGain(Model::Similarity, {{5, 5}, {5, 5}}, square) <= kLargestGain);
}

TEST(SupportedModel, ClimbsWithTheNumberOfPoints) {
  const Quad square = squareAround(kPoints);
  const Model expected[] = {Model::Held,   Model::Translation, Model::Similarity,
                            Model::Affine, Model::Projective,  Model::Projective};
  for (std::size_t n = 0; n <= 5; ++n) {
    const std::vector<Point> points(kPoints.begin(),
                                    kPoints.begin() + static_cast<std::ptrdiff_t>(n));
    EXPECT_EQ(supportedModel(points, square, Model::Projective), expected[n]) << n;
    EXPECT_LE(supportedModel(points, square, Model::Similarity), Model::Similarity) << n;
  }
}

TEST(SupportedModel, IsASimilarityForPointsOnALine) {
  std::vector<Point> points;
  for (int i = 0; i < 9; ++i) points.push_back({50.0 * i, 30.0 * i + 100});
  const Quad square = squareAround(points);
  EXPECT_EQ(supportedModel(points, square, Model::Projective), Model::Similarity);
  for (std::size_t i = 0; i < 9; i += 2) points[i].y += 1.0;  // a pixel off the line
  EXPECT_EQ(supportedModel(points, square, Model::Projective), Model::Similarity);
  for (std::size_t i = 0; i < 9; i += 2) points[i].y += 60.0;
  EXPECT_EQ(supportedModel(points, square, Model::Projective), Model::Projective);
}

TEST(SupportedModel, FallsWithTheSizeOfTheBunch) {
  const Quad square = squareAround(kPoints);
  const auto bunch = [](double size) {
    std::vector<Point> points;
    for (Point p : kPoints) points.push_back({300 + size * (p.x - 300), 250 + size * (p.y - 250)});
    return points;
  };
  EXPECT_EQ(supportedModel(bunch(0.5), square, Model::Projective), Model::Projective);
  EXPECT_EQ(supportedModel(bunch(0.1), square, Model::Projective), Model::Affine);
  EXPECT_EQ(supportedModel(bunch(0.01), square, Model::Projective), Model::Translation);
  EXPECT_EQ(supportedModel(bunch(0.0), square, Model::Projective), Model::Translation);
}

TEST(FitLadder, FindsEachModelExactly) {
  const std::pair<Model, Homography> cases[] = {
      {Model::Translation, kShift}, {Model::Similarity, kTurn}, {Model::Affine, kShear}};
  for (const auto& [model, truth] : cases) {
    for (std::size_t n = tracksFor(model); n <= 5; ++n) {
      const LadderFit fit = fitLadder(matchesFor(truth, n), model, kIdentityTransform);
      EXPECT_EQ(fit.model, model);
      EXPECT_TRUE(fit.onTop);
      EXPECT_LT(worstError(fit.h, truth), 1e-9) << nameOf(model) << " " << n;
    }
  }
}

TEST(FitLadder, IsTheWeightedLeastSquaresOptimum) {
  const std::pair<Model, Eigen::MatrixXd> cases[] = {
      {Model::Translation, refit::translationDirections()},
      {Model::Similarity, refit::similarityDirections()},
      {Model::Affine, refit::affineDirections()}};
  for (const auto& [model, directions] : cases) {
    const std::vector<Match> matches = matchesFor(kTilted, 5, 2.0);
    const Homography optimum = refit::fit(matches, kIdentityTransform, directions);
    EXPECT_LT(worstError(fitLadder(matches, model, kIdentityTransform).h, optimum), 1e-9)
        << nameOf(model);
  }
}

TEST(FitLadder, KeepsThePerspectiveOfTheNeighbour) {
  // The truth is the neighbour moved by the model: all of it is found from the fewest tracks.
  const std::pair<Model, Homography> cases[] = {
      {Model::Translation, kShift}, {Model::Similarity, kTurn}, {Model::Affine, kShear}};
  for (const auto& [model, move] : cases) {
    const Homography truth = product(move, kTilted);
    const LadderFit fit = fitLadder(matchesFor(truth, tracksFor(model)), model, kTilted);
    EXPECT_TRUE(fit.onTop);
    EXPECT_LT(worstError(fit.h, truth), 1e-9) << nameOf(model);
    EXPECT_EQ(fit.h[2], kTilted[2]);
  }
}

TEST(FitLadder, LeavesTheNeighbourThatFitsWorse) {
  const LadderFit fit = fitLadder(matchesFor(kShear, 5, 0.5), Model::Affine, kTilted);
  EXPECT_FALSE(fit.onTop);
  EXPECT_EQ(fit.h[2], kIdentityTransform[2]);
  EXPECT_LT(worstError(fit.h, kShear), 1.0);
  // A little better is not enough.
  const Homography nearly = {{{1, 0, 0}, {0, 1, 0}, {1e-6, 0, 1}}};
  EXPECT_TRUE(fitLadder(matchesFor(kShear, 5, 0.5), Model::Affine, nearly).onTop);
}

TEST(FitLadder, LeavesANeighbourThatPutsATrackBehindTheHorizon) {
  const Homography behind = {{{1, 0, 0}, {0, 1, 0}, {-1.0 / 300, 0, 1}}};
  const LadderFit fit = fitLadder(matchesFor(kShift, 3), Model::Affine, behind);
  EXPECT_FALSE(fit.onTop);
  EXPECT_LT(worstError(fit.h, kShift), 1e-9);
}

TEST(FitLadder, TakesALowerModelWhereAnAffineOneWouldMirror) {
  std::vector<Match> matches = matchesFor(kShift, 3);
  std::swap(matches[0].to, matches[1].to);
  EXPECT_EQ(fitLadder(matches, Model::Affine, kIdentityTransform).model, Model::Similarity);
}

TEST(FitLadder, HoldsTheNeighbourWithoutTracksOrFiniteFits) {
  EXPECT_EQ(fitLadder({}, Model::Affine, kTilted).model, Model::Held);
  EXPECT_EQ(fitLadder({}, Model::Affine, kTilted).h, kTilted);
  EXPECT_EQ(fitLadder(matchesFor(kShift, 3), Model::Held, kTilted).model, Model::Held);
  const std::vector<Match> huge = {{{0, 0}, {1e300, 0}, 1}, {{1, 0}, {-1e300, 1e300}, 1}};
  EXPECT_EQ(fitLadder(huge, Model::Similarity, kTilted).model, Model::Held);
}
