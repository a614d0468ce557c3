// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/influence.h"

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

std::vector<Match> noisyMatches(std::size_t count, double noise) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> x(60, 560), y(70, 430), w(0.5, 2);
  std::normal_distribution<double> normal(0, noise);
  std::vector<Match> matches;
  for (std::size_t i = 0; i < count; ++i) {
    const Point p = {x(random), y(random)};
    const Point q = map(kTilted, p);
    matches.push_back({p, {q.x + normal(random), q.y + normal(random)}, w(random)});
  }
  return matches;
}

std::vector<TrackInfluence> influencesIn(const Frame& frame) {
  const Matches matches = frame.arrays();
  const FittedFrame fitted = frame.fitted();
  return influencesOf(FrameFits(matches, fitted, fitted), kCorners);
}

double worstMove(const Homography& a, const Homography& b) {
  double worst = 0.0;
  for (Point corner : kCorners) {
    const Point p = map(a, corner);
    const Point q = map(b, corner);
    worst = std::max(worst, std::hypot(p.x - q.x, p.y - q.y));
  }
  return worst;
}

Frame fitted(std::vector<Match> matches, Model model, const Eigen::MatrixXd& directions) {
  Frame frame;
  frame.model = model;
  frame.matches = std::move(matches);
  frame.h = refit::fit(frame.matches, model == Model::Projective ? kTilted : kIdentity, directions);
  return frame;
}

double refittedMove(const Frame& frame, std::size_t without, const Eigen::MatrixXd& directions) {
  std::vector<Match> others = frame.matches;
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(without));
  return worstMove(refit::fit(others, frame.h, directions), frame.h);
}

}  // namespace

TEST(InfluencesOf, IsWhatARefitWithoutTheTrackGives) {
  const Frame frame =
      fitted(noisyMatches(12, 0.5), Model::Projective, refit::projectiveDirections());
  const auto influences = influencesIn(frame);
  for (std::size_t i = 0; i < 12; ++i) {
    const double move = refittedMove(frame, i, refit::projectiveDirections());
    EXPECT_NEAR(influences[i].influence, move, 0.02 * move + 0.01) << i;
  }
}

TEST(InfluencesOf, HoldsForATrackFarOff) {
  std::vector<Match> matches = noisyMatches(12, 0.5);
  matches[5].present.x += 16;
  matches[5].present.y -= 12;
  const Frame frame = fitted(matches, Model::Projective, refit::projectiveDirections());
  const auto influences = influencesIn(frame);
  const double move = refittedMove(frame, 5, refit::projectiveDirections());
  EXPECT_GT(move, 3.0);
  EXPECT_NEAR(influences[5].influence, move, 0.1 * move);
}

TEST(InfluencesOf, IsExactForLowerModels) {
  const std::pair<Model, Eigen::MatrixXd> cases[] = {
      {Model::Translation, refit::translationDirections()},
      {Model::Similarity, refit::similarityDirections()},
      {Model::Affine, refit::affineDirections()}};
  for (const auto& [model, directions] : cases) {
    const Frame frame = fitted(noisyMatches(7, 0.5), model, directions);
    const auto influences = influencesIn(frame);
    for (std::size_t i = 0; i < 7; ++i) {
      const double move = refittedMove(frame, i, directions);
      EXPECT_NEAR(influences[i].influence, move, 1e-9 * move) << nameOf(model) << " " << i;
    }
  }
}

TEST(InfluencesOf, HasLeveragesThatAddUpToHalfTheParameters) {
  for (Model model : {Model::Translation, Model::Similarity, Model::Affine, Model::Projective}) {
    Frame frame;
    frame.model = model;
    frame.h = kTilted;
    frame.matches = noisyMatches(9, 0.5);
    double sum = 0.0;
    for (const TrackInfluence& t : influencesIn(frame)) {
      EXPECT_GT(t.leverage, 0.0);
      EXPECT_LE(t.leverage, 1.0 + 1e-12);
      sum += t.leverage;
    }
    EXPECT_NEAR(sum, static_cast<double>(tracksFor(model)), 1e-9) << nameOf(model);
  }
}

// Where a few heavy tracks leave the rest of the transform to very light ones, double precision has
// no answer; then there is none, not a wrong one.
TEST(InfluencesOf, HasLeveragesThatAddUpOrNone) {
  for (double light : {1e-3, 1e-5, 1e-6, 1e-7, 1e-8, 1e-12}) {
    Frame frame;
    frame.h = kTilted;
    frame.matches = noisyMatches(12, 0.5);
    for (std::size_t i = 3; i < 12; ++i) frame.matches[i].weight *= light;
    double sum = 0.0;
    for (const TrackInfluence& t : influencesIn(frame)) {
      EXPECT_FALSE(t.leverage < 0.0 || t.leverage > 1.0) << light;
      sum += t.leverage;
    }
    if (light <= 1e-7) {
      EXPECT_TRUE(std::isnan(sum)) << light;
    } else if (light >= 1e-3) {
      EXPECT_NEAR(sum, 4.0, 1e-6);
    } else {
      EXPECT_FALSE(std::fabs(sum - 4.0) > 0.02) << light;
    }
  }
}

TEST(InfluencesOf, GivesResidualsAndWeights) {
  Frame frame;
  frame.model = Model::Translation;
  frame.matches = {{{0, 0}, {3, 4}, 0.25}, {{1, 0}, {1, 0}, 2.0}, {{5, 5}, {5, 8}, 0.0}};
  const auto influences = influencesIn(frame);
  EXPECT_EQ(influences[0].residual, 5.0);
  EXPECT_EQ(influences[0].weight, 0.25);
  EXPECT_EQ(influences[1].residual, 0.0);
  EXPECT_EQ(influences[2].residual, 3.0);
  EXPECT_EQ(influences[2].weight, 0.0);
  EXPECT_EQ(influences[2].leverage, 0.0);
  EXPECT_EQ(influences[2].influence, 0.0);
}

TEST(InfluencesOf, HasNoFigureWhereTheOthersDoNotFixTheModel) {
  Frame frame;
  frame.h = kTilted;
  frame.matches = noisyMatches(4, 0.0);
  for (const TrackInfluence& t : influencesIn(frame)) {
    EXPECT_TRUE(std::isnan(t.influence));
    EXPECT_NEAR(t.leverage, 1.0, 1e-6);
  }
}

TEST(InfluencesOf, IsNothingInAHeldFrame) {
  Frame frame;
  frame.model = Model::Held;
  frame.matches = {{{0, 0}, {3, 4}, 1.0}};
  const auto influences = influencesIn(frame);
  EXPECT_EQ(influences[0].residual, 5.0);
  EXPECT_EQ(influences[0].weight, 0.0);
  EXPECT_EQ(influences[0].influence, 0.0);
  frame.matches.clear();
  EXPECT_TRUE(influencesIn(frame).empty());
}
