// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/influence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/shot/refit.h"

using namespace cornerpin;

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

double worstMove(const Homography& a, const Homography& b) {
  double worst = 0.0;
  for (Point corner : kCorners) {
    const Point p = map(a, corner);
    const Point q = map(b, corner);
    worst = std::max(worst, std::hypot(p.x - q.x, p.y - q.y));
  }
  return worst;
}

FittedFrame fitted(std::vector<Match> matches, Model model, const Eigen::MatrixXd& directions) {
  FittedFrame frame;
  frame.model = model;
  frame.matches = std::move(matches);
  frame.h = refit::fit(frame.matches, model == Model::Projective ? kTilted : kIdentityTransform,
                       directions);
  return frame;
}

double refittedMove(const FittedFrame& frame, std::size_t without,
                    const Eigen::MatrixXd& directions) {
  std::vector<Match> others = frame.matches;
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(without));
  return worstMove(refit::fit(others, frame.h, directions), frame.h);
}

}  // namespace

TEST(InfluencesOf, IsWhatARefitWithoutTheTrackGives) {
  const FittedFrame frame =
      fitted(noisyMatches(12, 0.5), Model::Projective, refit::projectiveDirections());
  const auto influences = influencesOf(frame, kCorners);
  for (std::size_t i = 0; i < 12; ++i) {
    const double move = refittedMove(frame, i, refit::projectiveDirections());
    EXPECT_NEAR(influences[i].influence, move, 0.02 * move + 0.01) << i;
  }
}

TEST(InfluencesOf, HoldsForATrackFarOff) {
  std::vector<Match> matches = noisyMatches(12, 0.5);
  matches[5].to.x += 16;
  matches[5].to.y -= 12;
  const FittedFrame frame = fitted(matches, Model::Projective, refit::projectiveDirections());
  const auto influences = influencesOf(frame, kCorners);
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
    const FittedFrame frame = fitted(noisyMatches(7, 0.5), model, directions);
    const auto influences = influencesOf(frame, kCorners);
    for (std::size_t i = 0; i < 7; ++i) {
      const double move = refittedMove(frame, i, directions);
      EXPECT_NEAR(influences[i].influence, move, 1e-9 * move) << nameOf(model) << " " << i;
    }
  }
}

TEST(InfluencesOf, HasLeveragesThatAddUpToHalfTheParameters) {
  for (Model model : {Model::Translation, Model::Similarity, Model::Affine, Model::Projective}) {
    FittedFrame frame;
    frame.model = model;
    frame.h = kTilted;
    frame.matches = noisyMatches(9, 0.5);
    double sum = 0.0;
    for (const TrackInfluence& t : influencesOf(frame, kCorners)) {
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
    FittedFrame frame;
    frame.h = kTilted;
    frame.matches = noisyMatches(12, 0.5);
    for (std::size_t i = 3; i < 12; ++i) frame.matches[i].weight *= light;
    double sum = 0.0;
    for (const TrackInfluence& t : influencesOf(frame, kCorners)) {
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
  FittedFrame frame;
  frame.model = Model::Translation;
  frame.matches = {{{0, 0}, {3, 4}, 0.25}, {{1, 0}, {1, 0}, 2.0}, {{5, 5}, {5, 8}, 0.0}};
  const auto influences = influencesOf(frame, kCorners);
  EXPECT_EQ(influences[0].residual, 5.0);
  EXPECT_EQ(influences[0].weight, 0.25);
  EXPECT_EQ(influences[1].residual, 0.0);
  EXPECT_EQ(influences[2].residual, 3.0);
  EXPECT_EQ(influences[2].weight, 0.0);
  EXPECT_EQ(influences[2].leverage, 0.0);
  EXPECT_EQ(influences[2].influence, 0.0);
}

TEST(InfluencesOf, HasNoFigureWhereTheOthersDoNotFixTheModel) {
  FittedFrame frame;
  frame.h = kTilted;
  frame.matches = noisyMatches(4, 0.0);
  for (const TrackInfluence& t : influencesOf(frame, kCorners)) {
    EXPECT_TRUE(std::isnan(t.influence));
    EXPECT_NEAR(t.leverage, 1.0, 1e-6);
  }
}

TEST(InfluencesOf, IsNothingInAHeldFrame) {
  FittedFrame frame;
  frame.model = Model::Held;
  frame.matches = {{{0, 0}, {3, 4}, 1.0}};
  const auto influences = influencesOf(frame, kCorners);
  EXPECT_EQ(influences[0].residual, 5.0);
  EXPECT_EQ(influences[0].weight, 0.0);
  EXPECT_EQ(influences[0].influence, 0.0);
  frame.matches.clear();
  EXPECT_TRUE(influencesOf(frame, kCorners).empty());
}

namespace {

void add(WorstTracks& worst, int frame, const std::vector<double>& moves) {
  std::vector<int> tracks;
  std::vector<TrackInfluence> influences;
  for (std::size_t t = 0; t < moves.size(); ++t) {
    tracks.push_back(static_cast<int>(t));
    influences.push_back({0, 1, 0, moves[t]});
  }
  worst.addFrame(frame, tracks, influences);
}

}  // namespace

TEST(WorstTracks, JoinsAStretchDownToHalfItsPeak) {
  WorstTracks worst(0.0);
  add(worst, 59, {1, 3.9});
  add(worst, 60, {1, 4.1});
  add(worst, 61, {1, 8});
  add(worst, 62, {1, 5});
  add(worst, 64, {1, 6});  // a gap ends the stretch
  const auto list = worst.worst(2);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].track, 1);
  EXPECT_EQ(list[0].first, 60);
  EXPECT_EQ(list[0].last, 62);
  EXPECT_EQ(list[0].peak, 61);
  EXPECT_EQ(list[0].moves, 8.0);
  EXPECT_EQ(list[1].track, 1);
  EXPECT_EQ(list[1].first, 64);
  EXPECT_EQ(list[1].last, 64);
}

TEST(WorstTracks, NamesTheGreatestFirstAndEachFrameOnce) {
  WorstTracks worst(0.0);
  for (int f = 0; f < 3; ++f) add(worst, f, {2, 0, std::nan(""), 5});
  const auto list = worst.worst(9);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].track, 3);
  EXPECT_EQ(list[0].last, 2);
  EXPECT_EQ(list[1].track, 0);
}

TEST(WorstTracks, KeepsTheFiveGreatestOfAFrame) {
  WorstTracks worst(0.0);
  add(worst, 0, {1, 2, 3, 4, 5, 6, 7});
  const auto list = worst.worst(9);
  ASSERT_EQ(list.size(), 5u);
  EXPECT_EQ(list.back().moves, 3.0);
}

namespace {

// Several tracks, the first of them with these figures in one frame of three. The others' residuals
// have a median of 1, which noise of 1 / 1.1774 along each axis gives.
TrackStretch judged(const TrackInfluence& first, std::size_t count = 8, double visible = 0.1) {
  WorstTracks worst(visible);
  for (int frame = 0; frame < 3; ++frame) {
    std::vector<int> tracks;
    std::vector<TrackInfluence> influences;
    for (std::size_t t = 0; t < count; ++t) {
      tracks.push_back(static_cast<int>(t));
      const double residual = t % 3 == 1 ? 0.5 : t % 3 == 2 ? 1.5 : 1.0;
      influences.push_back({residual, 1, 0, 0.01});
    }
    if (frame == 1) influences[0] = first;
    worst.addFrame(frame, tracks, influences);
  }
  return worst.worst(1).front();
}

// Eight tracks that are much alike, or the one given among them.
void addAlike(WorstTracks& worst, int frame, double residual, int odd = -1,
              const TrackInfluence& of = {}) {
  std::vector<int> tracks;
  std::vector<TrackInfluence> influences;
  for (int t = 0; t < 8; ++t) {
    tracks.push_back(t);
    influences.push_back(t == odd ? of : TrackInfluence{residual, 1, 0, 0.01});
  }
  worst.addFrame(frame, tracks, influences);
}

}  // namespace

TEST(WorstTracks, StandOutWhereNoiseDoesNotExplainThemAndTheyMatter) {
  const TrackStretch bad = judged({9, 1, 0, 3});
  EXPECT_EQ(bad.track, 0);
  EXPECT_EQ(bad.peak, 1);
  EXPECT_TRUE(bad.standsOut);
  EXPECT_NEAR(bad.off, 9 * 1.1774, 1e-3);
  EXPECT_TRUE(judged({5.2, 1, 0, 3}).standsOut);  // 6 deviations are 5.10
  EXPECT_FALSE(judged({5.0, 1, 0, 3}).standsOut);
  EXPECT_TRUE(judged({3.2, 1, 0.64, 3}).standsOut);  // 60 % of what a fit without it leaves
  EXPECT_FALSE(judged({9, 1, 0, 3}, 8, 3.5).standsOut);
}

TEST(WorstTracks, DoNotStandOutAmongTooFew) {
  EXPECT_TRUE(judged({9, 1, 0, 3}, 6).standsOut);
  EXPECT_FALSE(judged({9, 1, 0, 3}, 5).standsOut);
  EXPECT_TRUE(std::isnan(judged({9, 1, 0, 3}, 5).off));
}

TEST(WorstTracks, DoNotStandOutOfAFrameWhoseTracksHappenToAgree) {
  WorstTracks worst(0.1);
  for (int frame = 0; frame < 5; ++frame) addAlike(worst, frame, 1.0);
  addAlike(worst, 5, 0.01, 0, {1.0, 1, 0, 3});
  EXPECT_EQ(worst.worst(1).front().peak, 5);
  EXPECT_FALSE(worst.worst(1).front().standsOut);
}

TEST(WorstTracks, StandOutAmongAnyNumberOfOthersThatDo) {
  WorstTracks worst(0.1);
  std::vector<int> tracks;
  std::vector<TrackInfluence> influences;
  for (int t = 0; t < 20; ++t) {
    tracks.push_back(t);
    influences.push_back({t < 9 ? 50.0 : 1.0, 1, 0, 1.0});
  }
  worst.addFrame(0, tracks, influences);
  EXPECT_TRUE(worst.worst(1).front().standsOut);
}

TEST(WorstTracks, NameThoseThatStandOutFirst) {
  WorstTracks worst(0.1);
  addAlike(worst, 0, 1.0, 3, {1, 1, 0, 50});
  addAlike(worst, 1, 1.0, 5, {9, 1, 0, 4});
  const auto list = worst.worst(2);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].track, 5);
  EXPECT_TRUE(list[0].standsOut);
  EXPECT_EQ(list[1].track, 3);
  EXPECT_FALSE(list[1].standsOut);
}
