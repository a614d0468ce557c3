// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/linearised_fit.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <utility>
#include <vector>

#include "tests/shot/lists.h"
#include "tests/shot/refit.h"

using namespace cornerpin;

namespace {

const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {4e-4, -3e-4, 1}}};
const Homography kBefore = {{{0.9, -0.1, 12}, {0.2, 1.05, 5}, {-2e-4, 1e-4, 1}}};
const std::vector<double> kWeights = {1.0, 0.5, 2.0, 0.25, 1.5};
const Model kModels[] = {Model::Translation, Model::Similarity, Model::Affine, Model::Projective};

Matches matchesFor(const Homography& h) {
  Matches matches;
  for (Point p : Points{{100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}}) {
    matches.add({p, map(h, p)});
  }
  return matches;
}

FittedFrame frameOf(Model model) {
  FittedFrame frame;
  frame.model = model;
  frame.kept = model == Model::Projective ? kIdentity : kBefore;
  frame.h = model == Model::Projective ? kTilted : kIdentity;
  frame.weights = kWeights;
  return frame;
}

LinearisedFit fitOf(Model model) {
  return {matchesFor(model == Model::Projective ? kTilted : kBefore), frameOf(model)};
}

Parameters unit(std::size_t i) {
  Parameters p{};
  p[i] = 1.0;
  return p;
}

// Two matches at -1 and 1 of the tracks' own box, the second of this weight.
bool isDetermined(double weight) {
  FittedFrame frame;
  frame.model = Model::Similarity;
  frame.weights = {1.0, weight};
  return LinearisedFit({{{-1, 0}, {-1, 0}}, {{1, 0}, {1, 0}}}, frame).isDetermined();
}

}  // namespace

TEST(Dot, SumsTheProducts) {
  EXPECT_EQ(dot({1, 2, 3, 4, 5, 6, 7, 8}, {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7}), 87654321.0);
}

// At (3, 4) the denominator is 2 and the image (5, 7).
TEST(SlopesOf, AreThoseOfTheElementsOfAHomography) {
  const Homography h = {{{2, 1, 0}, {1, 2, 3}, {0.2, 0.1, 1}}};
  const Slopes slopes = slopesOf(h, {3, 4});
  EXPECT_EQ(slopes.x, (Parameters{1.5, 2, 0.5, 0, 0, 0, -7.5, -10}));
  EXPECT_EQ(slopes.y, (Parameters{0, 0, 0, 1.5, 2, 0.5, -10.5, -14}));
}

// The box is 2 wide around (20, 30.25): (22, 31.25) lies at (2, 1). A lower model is fitted on top
// of a transform, so its own is near the identity.
TEST(SlopesAt, OfAMatchAreThoseOfItsPlace) {
  const Matches matches = matchesFor(kTilted);
  const FrameSlopes all(matches, frameOf(Model::Projective), kWeights);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Slopes expected = all.place.slopesAt(matches.base()[i]);
    const Slopes slopes = slopesAt(all.tracks, i);
    for (std::size_t k = 0; k < 8; ++k) {
      EXPECT_NEAR(slopes.x[k], expected.x[k], 1e-14);
      EXPECT_NEAR(slopes.y[k], expected.y[k], 1e-14);
    }
  }
}

TEST(AddProducts, AddsBothToEachElement) {
  const Parameters p = {1, 2, 3, 4, 5, 6, 7, 8}, x = {9, 8, 7, 6, 5, 4, 3, 2};
  const Parameters q = {2, 7, 1, 8, 2, 8, 1, 8}, y = {3, 1, 4, 1, 5, 9, 2, 6};
  SquareMatrix<8> a;
  for (std::size_t k = 0; k < 64; ++k) a[k] = static_cast<double>(k);
  addProducts(p, x, q, y, a);
  for (std::size_t k = 0; k < 64; ++k) {
    const std::size_t i = k % 8, j = k / 8;
    EXPECT_EQ(a[k], static_cast<double>(k) + p[i] * x[j] + q[i] * y[j]);
  }
}

TEST(LinearisedFit, OfPlacesThatStayIsThatOfMatchesThatStay) {
  Matches still;
  const Matches matches = matchesFor(kIdentity);
  for (Point p : matches.base()) still.add({p, p});
  for (Model model : kModels) {
    FittedFrame frame;
    frame.model = model;
    frame.weights.assign(still.size(), 1.0);
    const Symmetric2 expected = LinearisedFit(still, frame).responseAt({22, 31.25});
    const Symmetric2 response = LinearisedFit(still.base(), model).responseAt({22, 31.25});
    EXPECT_NEAR(response.xx / expected.xx, 1.0, 1e-11);
    EXPECT_NEAR(response.xy, expected.xy, 1e-11 * expected.xx);
    EXPECT_NEAR(response.yy / expected.yy, 1.0, 1e-11);
  }
}

TEST(LinearisedFit, HasTheInverseThatItSolvesWith) {
  const LinearisedFit fit = fitOf(Model::Projective);
  const SquareMatrix<8> inverse = fit.inverse();
  for (std::size_t j = 0; j < 8; ++j) {
    const Parameters column = fit.solve(unit(j));
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(inverse[j * 8 + i], column[i]);
  }
}

TEST(LinearisedFit, HasTheSlopesOfATransformInTheTracksOwnBox) {
  FittedFrame frame;
  frame.weights = {1, 1, 1};
  const Matches matches = {{{19, 30}, {19, 30}}, {{21, 30}, {21, 30}}, {{20, 30.5}, {20, 29.5}}};
  for (Model model : {Model::Held, Model::Translation, Model::Similarity, Model::Affine}) {
    frame.model = model;
    frame.h = kTilted;
    const Slopes slopes = LinearisedFit(matches, frame).slopesAt({22, 31.25});
    EXPECT_EQ(slopes.x, (Parameters{2, 1, 1, 0, 0, 0, -4, -2})) << nameOf(model);
    EXPECT_EQ(slopes.y, (Parameters{0, 0, 0, 2, 1, 1, -2, -1})) << nameOf(model);
  }
}

// With the model's directions in the columns of L, L inv(L'AL) L'.
TEST(LinearisedFit, SolvesWithTheWeightedSumOfProductsOfSlopes) {
  const std::pair<Model, Eigen::MatrixXd> cases[] = {
      {Model::Translation, refit::translationDirections()},
      {Model::Similarity, refit::similarityDirections()},
      {Model::Affine, refit::affineDirections()},
      {Model::Projective, refit::projectiveDirections()}};
  const Matches matches = matchesFor(kTilted);
  for (const auto& [model, l] : cases) {
    const LinearisedFit fit = fitOf(model);
    ASSERT_TRUE(fit.isDetermined()) << nameOf(model);
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(8, 8);
    for (std::size_t k = 0; k < matches.size(); ++k) {
      const Slopes s = fit.slopesAt(matches.base()[k]);
      const Eigen::Map<const Eigen::VectorXd> x(s.x.data(), 8), y(s.y.data(), 8);
      a += kWeights[k] * kWeights[k] * (x * x.transpose() + y * y.transpose());
    }
    const Eigen::MatrixXd inverse = l * (l.transpose() * a * l).inverse() * l.transpose();
    for (std::size_t i = 0; i < 8; ++i) {
      const Parameters solution = fit.solve(unit(i));
      for (std::size_t j = 0; j < 8; ++j) {
        EXPECT_NEAR(solution[j], inverse(Eigen::Index(j), Eigen::Index(i)), 1e-11 * inverse.norm())
            << nameOf(model) << " " << i << " " << j;
      }
    }
  }
}

TEST(LinearisedFit, RespondsWithTheCovarianceOfTheImage) {
  for (Model model : kModels) {
    const LinearisedFit fit = fitOf(model);
    const Point p = {350, 190};
    const Slopes s = fit.slopesAt(p);
    const Symmetric2 response = fit.responseAt(p);
    EXPECT_NEAR(response.xx, dot(s.x, fit.solve(s.x)), 1e-12) << nameOf(model);
    EXPECT_NEAR(response.xy, dot(s.x, fit.solve(s.y)), 1e-12) << nameOf(model);
    EXPECT_NEAR(response.yy, dot(s.y, fit.solve(s.y)), 1e-12) << nameOf(model);
    EXPECT_EQ(response.trace(), response.xx + response.yy);
  }
}

// The mean of places with weights 1, 1/2, 2, 1/4, 3/2.
TEST(LinearisedFit, OfATranslationRespondsEverywhereAsTheWeightedMean) {
  const Symmetric2 response = fitOf(Model::Translation).responseAt({9999, -9999});
  EXPECT_NEAR(response.xx, 1.0 / (1.0 + 0.25 + 4.0 + 0.0625 + 2.25), 1e-15);
  EXPECT_EQ(response.yy, response.xx);
  EXPECT_EQ(response.xy, 0.0);
}

// As many responses as parameters, whatever the weights: the trace of a projection.
TEST(LinearisedFit, HasHatBlocksWhoseTracesAddUpToTheParameters) {
  for (Model model : kModels) {
    for (double unitOfWeights : {0x1p-500, 1.0, 0x1p500}) {
      const Matches matches = matchesFor(model == Model::Projective ? kTilted : kBefore);
      FittedFrame frame = frameOf(model);
      for (double& w : frame.weights) w *= unitOfWeights;
      const LinearisedFit fit(matches, frame);
      ASSERT_TRUE(fit.isDetermined());
      double sum = 0.0;
      for (std::size_t i = 0; i < matches.size(); ++i) {
        const double w = frame.weights[i];
        sum += w * fit.responseAt(matches.base()[i]).trace() * w;
      }
      EXPECT_NEAR(sum, 2.0 * static_cast<double>(tracksFor(model)), 1e-10) << nameOf(model);
    }
  }
}

TEST(LinearisedFit, TakesNoNoticeOfAMatchWithoutWeight) {
  Matches matches = matchesFor(kTilted);
  matches.add({{-9e4, 7e4}, {4e5, -3e5}});
  FittedFrame frame = frameOf(Model::Projective);
  frame.weights.push_back(0.0);
  const LinearisedFit fit(matches, frame);
  EXPECT_EQ(fit.scale(), fitOf(Model::Projective).scale());
  const Point p = {350, 190};
  EXPECT_EQ(fit.responseAt(p).xx, fitOf(Model::Projective).responseAt(p).xx);
}

TEST(LinearisedFit, IsNotDeterminedWithoutAWeight) {
  FittedFrame frame = frameOf(Model::Translation);
  EXPECT_TRUE(LinearisedFit(matchesFor(kBefore), frame).isDetermined());
  frame.weights.assign(5, 0.0);
  EXPECT_FALSE(LinearisedFit(matchesFor(kBefore), frame).isDetermined());
}

TEST(LinearisedFit, IsNotDeterminedByTooFewTracks) {
  FittedFrame frame;
  frame.weights = {1, 1, 1};
  EXPECT_FALSE(
      LinearisedFit({{{0, 0}, {0, 0}}, {{9, 0}, {9, 0}}, {{0, 9}, {0, 9}}}, frame).isDetermined());
}

// With squared weights 1 and e^2 at -1 and 1, a slope's element of A is 1 + e^2 and that of its
// inverse (1 + e^2) / (4 e^2): together 1e12 where e is 5e-7.
TEST(LinearisedFit, IsNotDeterminedByWeightsAMillionTimesSmaller) {
  EXPECT_TRUE(isDetermined(5.1e-7));
  EXPECT_FALSE(isDetermined(4.9e-7));
  EXPECT_FALSE(isDetermined(1e-9));
}
