// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/reduced_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/shot/lists.h"
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

ReducedFit reducedFit(const std::vector<Match>& matches, Model model, const Homography& neighbour) {
  return fitReduced(lists::matches(matches), model, neighbour);
}

std::optional<Homography> fitOnTop(const Matches& matches, Model model, const Homography& kept) {
  return FitsOnTop(matches, relativeSquares(matches.weights()), kept).of(model);
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

TEST(FitReduced, FindsEachModelExactly) {
  const std::pair<Model, Homography> cases[] = {
      {Model::Translation, kShift}, {Model::Similarity, kTurn}, {Model::Affine, kShear}};
  for (const auto& [model, truth] : cases) {
    for (std::size_t n = tracksFor(model); n <= 5; ++n) {
      const ReducedFit fit = reducedFit(matchesFor(truth, n), model, kIdentity);
      EXPECT_EQ(fit.model, model);
      EXPECT_TRUE(fit.onTop);
      EXPECT_LT(worstError(fit.h, truth), 1e-9) << nameOf(model) << " " << n;
    }
  }
}

TEST(FitReduced, IsTheWeightedLeastSquaresOptimum) {
  const std::pair<Model, Eigen::MatrixXd> cases[] = {
      {Model::Translation, refit::translationDirections()},
      {Model::Similarity, refit::similarityDirections()},
      {Model::Affine, refit::affineDirections()}};
  for (const auto& [model, directions] : cases) {
    const std::vector<Match> matches = matchesFor(kTilted, 5, 2.0);
    const Homography optimum = refit::fit(matches, kIdentity, directions);
    EXPECT_LT(worstError(reducedFit(matches, model, kIdentity).h, optimum), 1e-9) << nameOf(model);
  }
}

TEST(FitReduced, KeepsThePerspectiveOfTheNeighbour) {
  // The truth is the neighbour moved by the model: all of it is found from the fewest tracks.
  const std::pair<Model, Homography> cases[] = {
      {Model::Translation, kShift}, {Model::Similarity, kTurn}, {Model::Affine, kShear}};
  for (const auto& [model, move] : cases) {
    const Homography truth = product(move, kTilted);
    const ReducedFit fit = reducedFit(matchesFor(truth, tracksFor(model)), model, kTilted);
    EXPECT_TRUE(fit.onTop);
    EXPECT_LT(worstError(fit.h, truth), 1e-9) << nameOf(model);
    EXPECT_EQ(fit.h[2], kTilted[2]);
  }
}

TEST(FitReduced, LeavesTheNeighbourThatFitsWorse) {
  const ReducedFit fit = reducedFit(matchesFor(kShear, 5, 0.5), Model::Affine, kTilted);
  EXPECT_FALSE(fit.onTop);
  EXPECT_EQ(fit.h[2], kIdentity[2]);
  EXPECT_LT(worstError(fit.h, kShear), 1.0);
  // A little better is not enough.
  const Homography nearly = {{{1, 0, 0}, {0, 1, 0}, {1e-6, 0, 1}}};
  EXPECT_TRUE(reducedFit(matchesFor(kShear, 5, 0.5), Model::Affine, nearly).onTop);
}

TEST(FitReduced, LeavesANeighbourThatPutsATrackBehindTheHorizon) {
  const Homography behind = {{{1, 0, 0}, {0, 1, 0}, {-1.0 / 300, 0, 1}}};
  const ReducedFit fit = reducedFit(matchesFor(kShift, 3), Model::Affine, behind);
  EXPECT_FALSE(fit.onTop);
  EXPECT_LT(worstError(fit.h, kShift), 1e-9);
}

TEST(FitReduced, TakesALowerModelWhereAnAffineOneWouldMirror) {
  std::vector<Match> matches = matchesFor(kShift, 3);
  std::swap(matches[0].present, matches[1].present);
  EXPECT_EQ(reducedFit(matches, Model::Affine, kIdentity).model, Model::Similarity);
}

TEST(FitReduced, HoldsTheNeighbourWithoutTracksOrFiniteFits) {
  EXPECT_EQ(fitReduced({}, Model::Affine, kTilted).model, Model::Held);
  EXPECT_EQ(fitReduced({}, Model::Affine, kTilted).h, kTilted);
  EXPECT_EQ(reducedFit(matchesFor(kShift, 3), Model::Held, kTilted).model, Model::Held);
  const std::vector<Match> huge = {{{0, 0}, {1e300, 0}, 1}, {{1, 0}, {-1e300, 1e300}, 1}};
  EXPECT_EQ(reducedFit(huge, Model::Similarity, kTilted).model, Model::Held);
}

// Powers of two change no digit; their squares would leave the range of numbers.
TEST(FitReduced, DoesNotDependOnTheUnitOfTheWeights) {
  for (Model model : {Model::Translation, Model::Similarity, Model::Affine}) {
    std::vector<Match> matches = matchesFor(kTilted, 5, 2.0);
    const ReducedFit fit = reducedFit(matches, model, kShift);
    for (double unit : {0x1p-700, 0x1p700}) {
      std::vector<Match> other = matches;
      for (Match& m : other) m.weight *= unit;
      const ReducedFit again = reducedFit(other, model, kShift);
      EXPECT_EQ(again.model, model);
      EXPECT_EQ(again.onTop, fit.onTop);
      EXPECT_EQ(again.h, fit.h) << nameOf(model) << " " << unit;
    }
  }
}

// Two tracks go from 1 to 2 apart. By itself a translation costs (2 - 1)^2 / 2, on top of a
// neighbour that scales by k it costs (2 - k)^2 / 2.
TEST(FitReduced, LeavesTheNeighbourForLessThanHalfOfTheCost) {
  const std::vector<Match> matches = {{{-0.5, 0}, {-1, 0}}, {{0.5, 0}, {1, 0}}};
  const auto onTop = [&](double costs) {
    const double k = 2.0 - std::sqrt(costs);
    return reducedFit(matches, Model::Translation, {{{k, 0, 0}, {0, k, 0}, {0, 0, 1}}}).onTop;
  };
  EXPECT_TRUE(onTop(1.98));
  EXPECT_FALSE(onTop(2.02));
}

// The tracks lie 1 away from the origin and have not moved: by itself a translation costs nothing.
TEST(FitReduced, KeepsANeighbourThatIsExactUpToABillionth) {
  const std::vector<Match> matches = {{{-1, 0}, {-1, 0}}, {{1, 0}, {1, 0}}};
  const auto onTop = [&](double error) {
    const double k = 1.0 + error;
    return reducedFit(matches, Model::Translation, {{{k, 0, 0}, {0, k, 0}, {0, 0, 1}}}).onTop;
  };
  EXPECT_TRUE(onTop(0.98e-9));
  EXPECT_FALSE(onTop(1.02e-9));
}

// Rounding grows with the places: these lie 5 away from the origin and 3 from their mean.
TEST(FitReduced, MeasuresExactnessByTheDistanceFromTheOrigin) {
  const std::vector<Match> matches = {{{-3, 4}, {-3, 4}}, {{3, 4}, {3, 4}}};
  const auto onTop = [&](double error) {
    const double k = 1.0 + error / 3.0;  // what the tracks miss by
    return reducedFit(matches, Model::Translation, {{{k, 0, 0}, {0, k, 0}, {0, 0, 1}}}).onTop;
  };
  EXPECT_TRUE(onTop(0.98 * 5e-9));
  EXPECT_FALSE(onTop(1.02 * 5e-9));
}

TEST(FitsOnTop, PutsTheModelBehindWhatIsKept) {
  const Matches matches = lists::matches(matchesFor(product(kShear, kTilted), 4));
  const std::optional<Homography> h = fitOnTop(matches, Model::Affine, kTilted);
  ASSERT_TRUE(h);
  EXPECT_LT(worstError(*h, product(kShear, kTilted)), 1e-9);
}

TEST(FitsOnTop, MakesNoTransformThatTurnsTheSurfaceOverOrHasTracksBehind) {
  const Homography over = {{{1, 0, 0}, {0, -1, 0}, {0, 0, 1}}};
  EXPECT_FALSE(fitOnTop(lists::matches(matchesFor(over, 4)), Model::Affine, kIdentity));
  const Homography behind = {{{1, 0, 0}, {0, 1, 0}, {-4e-3, 0, 1}}};
  for (Model model : {Model::Affine, Model::Translation}) {
    EXPECT_FALSE(fitOnTop(lists::matches(matchesFor(kShift, 4)), model, behind));
    EXPECT_FALSE(fitOnTop(Matches(), model, kIdentity));
  }
}
