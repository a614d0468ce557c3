// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "shot/plane/similarity.h"
#include "tests/shot/lists.h"

using namespace cornerpin;

namespace {

const std::vector<Point> kPoints = {{100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}};

}  // namespace

TEST(NoiseGain, OfFourCornersIsOne) {
  const Points corners = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  const Quad square = squareAround(corners);
  EXPECT_NEAR(noiseGain(Model::Projective, corners, square), 1.0, 1e-12);
  // The mean of four, and with it slopes of 1/4 each way: sqrt(1/4 + 1/4 + 1/4).
  EXPECT_NEAR(noiseGain(Model::Affine, corners, square), std::sqrt(0.75), 1e-12);
  // Centre 1/4, turn and scale: distance^2 / sum of distances^2 = 2 / 8.
  EXPECT_NEAR(noiseGain(Model::Similarity, corners, square), std::sqrt(0.5), 1e-12);
  EXPECT_NEAR(noiseGain(Model::Translation, corners, square), 0.5, 1e-12);
}

TEST(NoiseGain, DoesNotDependOnTheUnits) {
  const Quad square = squareAround(lists::points(kPoints));
  const double gain = noiseGain(Model::Projective, lists::points(kPoints), square);
  for (double unit : {1e-30, 1e30}) {
    Points points;
    for (Point p : kPoints) points.add({p.x * unit, p.y * unit});
    EXPECT_NEAR(noiseGain(Model::Projective, points, squareAround(points)) / gain, 1.0, 1e-9);
  }
}

TEST(NoiseGain, IsInfiniteWhereThePointsDoNotFixTheModel) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Quad square = squareAround(lists::points(kPoints));
  EXPECT_EQ(noiseGain(Model::Projective, {{0, 0}, {1, 0}, {0, 1}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Affine, {{0, 0}, {1, 0}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Similarity, {{0, 0}}, square), infinity);
  EXPECT_EQ(noiseGain(Model::Translation, {}, square), infinity);
  EXPECT_FALSE(noiseGain(Model::Similarity, {{5, 5}, {5, 5}}, square) <= kLargestGain);
}

TEST(SupportedModel, ClimbsWithTheNumberOfPoints) {
  const Quad square = squareAround(lists::points(kPoints));
  const Model expected[] = {Model::Held,   Model::Translation, Model::Similarity,
                            Model::Affine, Model::Projective,  Model::Projective};
  for (std::size_t n = 0; n <= 5; ++n) {
    Points points;
    for (std::size_t i = 0; i < n; ++i) points.add(kPoints[i]);
    EXPECT_EQ(supportedModel(points, square, Model::Projective), expected[n]) << n;
    EXPECT_LE(supportedModel(points, square, Model::Similarity), Model::Similarity) << n;
  }
}

TEST(SupportedModel, IsASimilarityForPointsOnALine) {
  std::vector<Point> points;
  for (int i = 0; i < 9; ++i) points.push_back({50.0 * i, 30.0 * i + 100});
  const Quad square = squareAround(lists::points(points));
  const auto supported = [&] {
    return supportedModel(lists::points(points), square, Model::Projective);
  };
  EXPECT_EQ(supported(), Model::Similarity);
  for (std::size_t i = 0; i < 9; i += 2) points[i].y += 1.0;  // a pixel off the line
  EXPECT_EQ(supported(), Model::Similarity);
  for (std::size_t i = 0; i < 9; i += 2) points[i].y += 60.0;
  EXPECT_EQ(supported(), Model::Projective);
}

TEST(SupportedModel, FallsWithTheSizeOfTheBunch) {
  const Quad square = squareAround(lists::points(kPoints));
  const auto bunch = [](double size) {
    Points points;
    for (Point p : kPoints) points.add({300 + size * (p.x - 300), 250 + size * (p.y - 250)});
    return points;
  };
  EXPECT_EQ(supportedModel(bunch(0.5), square, Model::Projective), Model::Projective);
  EXPECT_EQ(supportedModel(bunch(0.1), square, Model::Projective), Model::Affine);
  EXPECT_EQ(supportedModel(bunch(0.01), square, Model::Projective), Model::Translation);
  EXPECT_EQ(supportedModel(bunch(0.0), square, Model::Projective), Model::Translation);
}

// Of four points at (+-a, +-a), an affine transform puts the corner (1, 1) off by
// sqrt(1/4 + 2 / (4 a^2)) in each coordinate.
TEST(SupportedModel, HasAGainOfNoMoreThanTwenty) {
  const Quad square = {{{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}};
  const auto supported = [&](double gain) {
    const double a = std::sqrt(0.5 / (gain * gain - 0.25));
    const Points points = {{-a, -a}, {a, -a}, {a, a}, {-a, a}};
    EXPECT_NEAR(noiseGain(Model::Affine, points, square), gain, 1e-9 * gain);
    return supportedModel(points, square, Model::Affine);
  };
  EXPECT_EQ(supported(19.8), Model::Affine);
  EXPECT_EQ(supported(20.2), Model::Similarity);
}

TEST(NoiseGain, IsThatOfTheWorstCorner) {
  // Only the corner (3, 1) lies further out than the points do.
  const Points points = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  const Quad corners = {{{-1, -1}, {1, -1}, {3, 1}, {-1, 1}}};
  EXPECT_NEAR(noiseGain(Model::Affine, points, corners), std::sqrt(0.25 + (9.0 + 1.0) / 4.0),
              1e-12);
}

TEST(SupportedModel, IsNeverAboveTheHighest) {
  const Points points = lists::points(kPoints);
  const Quad square = squareAround(points);
  for (Model highest : {Model::Held, Model::Translation, Model::Similarity, Model::Affine}) {
    EXPECT_EQ(supportedModel(points, square, highest), highest);
  }
}
