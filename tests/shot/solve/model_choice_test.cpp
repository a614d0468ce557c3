// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/model_choice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/shot/solve/known_transforms.h"

using namespace cornerpin;

namespace {

const Quad kSurface = {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}};
const Points kCorner = {{0, 0}};

const MotionTrials kNoTrials({});
// A camera that never moved.
const MotionTrials kStill(std::vector<const Homography*>(10, &kIdentity));

// Nine tracks around (50, 50), as far apart as `step`.
WeakFrame patch(double step, const Homography& motion = kIdentity) {
  WeakFrame frame;
  for (int i = 0; i < 9; ++i) {
    const Point p = {50 + step * (i % 3 - 1), 50 + step * (std::floor(i / 3.0) - 1)};
    frame.tracks.add({p, map(motion, p)});
  }
  frame.full = motion;
  frame.corners = kSurface;
  frame.seen = kIdentity;
  return frame;
}

WeakFrame withoutFull(WeakFrame frame) {
  frame.full.reset();
  return frame;
}

// What is left of squares is spread over the tracks as +-off in x, in a way that no model follows.
void disturb(WeakFrame& frame, double off) {
  Matches disturbed;
  constexpr int kSigns[] = {1, -2, 1, -2, 4, -2, 1, -2, 1};  // x^2 y^2 without lower terms
  for (std::size_t i = 0; i < 9; ++i) {
    Match match = frame.tracks[i];
    match.present.x += off * kSigns[i];
    disturbed.add(match);
  }
  frame.tracks = disturbed;
}

Candidate translated(const Kept& kept = {kIdentity, {-1}}) {
  return {{Model::Translation, kept.from}, kept, kept.h};
}

const Homography kBent = {{{1, 0, 0}, {0, 1, 0}, {1e-3, 0, 1}}};

}  // namespace

TEST(ModelChoice, PoolsTheSigmasOfFrameAndShot) {
  WeakFrame frame = patch(20);
  disturb(frame, 0.1);  // squares: 0.01 * (4 + 16 + 16), 5 pairs left over
  EXPECT_NEAR(ModelChoice(frame, kNoTrials, {0.5, 5}).sigma(), std::sqrt((0.36 + 10 * 0.25) / 20.0),
              1e-9);
  EXPECT_EQ(ModelChoice(withoutFull(frame), kNoTrials, {0.5, 5}).sigma(), 0.5);
}

TEST(ModelChoice, TakesTheSigmaOfTheTracksElsewhereWhereItIsLarger) {
  WeakFrame frame = patch(20);
  frame.sigma = 2.0;
  EXPECT_EQ(ModelChoice(frame, kNoTrials, {0.5, 5}).sigma(), 2.0);
  EXPECT_EQ(ModelChoice(withoutFull(frame), kNoTrials, {0.5, 5}).sigma(), 2.0);
  frame.sigma = 0.1;
  EXPECT_EQ(ModelChoice(withoutFull(frame), kNoTrials, {0.5, 5}).sigma(), 0.5);
}

TEST(ModelChoice, HasNoFullErrorWithoutFullTransform) {
  EXPECT_EQ(ModelChoice(withoutFull(patch(20)), kNoTrials, {0.5, 5}).fullError(), HUGE_VAL);
  WeakFrame beyond = patch(5, {{{1, 0, 0}, {0, 1, 0}, {0.011, 0, 1}}});
  EXPECT_TRUE(std::isfinite(ModelChoice(beyond, kNoTrials, {0.5, 5}).fullError()));
  beyond = patch(5, {{{1, 0, 0}, {0, 1, 0}, {-0.011, 0, 1}}});  // the right edge lies behind
  EXPECT_EQ(ModelChoice(beyond, kNoTrials, {0.5, 5}).fullError(), HUGE_VAL);
}

// A mean of nine tracks varies by a ninth in each coordinate, and a camera that stands misses
// nothing.
TEST(ModelChoice, ExpectsNoiseAloneOfACameraThatStands) {
  const WeakFrame frame = withoutFull(patch(20));
  ModelChoice choice(frame, kStill, {0.5, 5});
  const Symmetric2 c = choice.covariances(translated(), kCorner).front();
  EXPECT_NEAR(c.xx, 0.25 / 9, 1e-12);
  EXPECT_NEAR(c.yy, 0.25 / 9, 1e-12);
  EXPECT_NEAR(choice.squaredError(translated()), 0.5 / 9, 1e-12);
}

TEST(ModelChoice, AddsWhatTheKeptTransformIsOff) {
  const WeakFrame frame = withoutFull(patch(20));
  ModelChoice choice(frame, kStill, {0.5, 5});
  EXPECT_NEAR(choice.squaredError(translated({kIdentity, {-1}, 9.0})), 9.0 + 0.5 / 9, 1e-12);
}

TEST(ModelChoice, ExpectsSharesOfTheExtentWhereTheShotTellsNothing) {
  const WeakFrame frame = withoutFull(patch(20));
  ModelChoice choice(frame, kNoTrials, {1e-6, 5});
  Candidate candidate = translated();
  candidate.kept.h = {{{5, 0, 300}, {0, 5, 0}, {0, 0, 1}}};
  EXPECT_NEAR(choice.squaredError(candidate), 100.0 * 100.0, 1e-3);
  candidate.lower.model = Model::Similarity;
  EXPECT_NEAR(choice.squaredError(candidate), 50.0 * 50.0, 1e-3);
  candidate.lower.model = Model::Affine;
  EXPECT_NEAR(choice.squaredError(candidate), 25.0 * 25.0, 1e-3);
}

// A tenth smaller moves corners by 5 each way from where their mean goes.
TEST(ModelChoice, ExpectsAsMuchAsTheModelItselfMovesWhereThatIsLess) {
  const WeakFrame frame = withoutFull(patch(20));
  ModelChoice choice(frame, kNoTrials, {1e-6, 5});
  const Homography nearly = {{{0.9, 0, 3}, {0, 0.9, 40}, {0, 0, 1}}};
  Candidate candidate = {{Model::Affine, {-1}}, {kIdentity, {-1}}, nearly};
  EXPECT_NEAR(choice.squaredError(candidate), 2 * 5.0 * 5.0, 1e-3);
  candidate = {{Model::Translation, {-1}}, {kIdentity, {-1}}, {{{1, 0, 3}, {0, 1, 4}, {0, 0, 1}}}};
  EXPECT_NEAR(choice.squaredError(candidate), 25.0, 1e-3);
}

// An affine map by the mean square t^2 = 625 of its bias, the full transform d off with a noise of
// V more.
TEST(ModelChoice, LetsTheFullTransformTellOfTheBias) {
  for (double step : {2.0, 10.0, 40.0}) {
    const WeakFrame frame = patch(step, kBent);
    ModelChoice choice(frame, kNoTrials, {0.5, 5});
    const Homography larger = {{{3, 0, 0}, {0, 3, 0}, {0, 0, 1}}};
    const Candidate affine = {{Model::Affine, {-1}}, {larger, {-1}}, kIdentity};
    const LinearisedFit full(frame.tracks,
                             {Model::Projective, kIdentity, *frame.full, frame.tracks.weights()});
    const LinearisedFit lower(frame.tracks,
                              {Model::Affine, kIdentity, kIdentity, frame.tracks.weights()});
    const double s2 = choice.sigma() * choice.sigma();
    const Point corner = kSurface[1];
    const double noise = s2 * lower.responseAt(corner).trace();
    const double more = s2 * full.responseAt(corner).trace() - noise;
    const double off = squaredDistance(map(kBent, corner), corner);
    const double k = 625.0 / (625.0 + more);
    EXPECT_NEAR(choice.covariances(affine, {corner}).front().trace(),
                noise + k * k * off + k * more, 1e-9 * (noise + off + more));
  }
}

// What the tracks see of the perspective is more than noise would be, or less.
TEST(ModelChoice, RefusesWhatTheTracksContradict) {
  const WeakFrame frame = patch(40, kBent);
  const std::vector<Kept> kept = {{kIdentity, {-1}}};
  EXPECT_FALSE(ModelChoice(frame, kStill, {0.01, 5}).bestOnTopOf(kept));
  EXPECT_TRUE(ModelChoice(frame, kStill, {5.0, 5}).bestOnTopOf(kept));
}

TEST(ModelChoice, TakesWhatMissesLeast) {
  const WeakFrame frame = patch(2);
  const auto best = ModelChoice(frame, kStill, {0.5, 5}).bestOnTopOf({{kIdentity, {-1}}});
  ASSERT_TRUE(best);
  EXPECT_EQ(best->lower.model, Model::Translation);
  Known turning;
  for (int f = 0; f < 10; ++f) {
    const double a = 0.5 * f;
    turning.push_back(
        Homography{{{std::cos(a), -std::sin(a), 0}, {std::sin(a), std::cos(a), 0}, {0, 0, 1}}});
  }
  // Not to be turned costs more than noise in the turn does.
  WeakFrame wide = patch(20);
  const MotionTrials trials(pointersTo(turning));
  const auto turned = ModelChoice(wide, trials, {20.0, 5}).bestOnTopOf({{kIdentity, {-1}}});
  ASSERT_TRUE(turned);
  EXPECT_EQ(turned->lower.model, Model::Similarity);
}

// Among the lower models on several transforms, each judged for itself. The camera creeps on, so
// that all of them miss something.
TEST(ModelChoice, TakesTheLeastOfAll) {
  Known creeping;
  for (int f = 0; f < 20; ++f)
    creeping.push_back(Homography{{{1.0 + 0.004 * f, 0.001 * f, 0.3 * f},
                                   {-0.002 * f, 1.0 + 0.001 * f, 0},
                                   {1e-5 * f, 0, 1}}});
  const MotionTrials trials(pointersTo(creeping));
  const std::vector<Kept> kept = {{*creeping[9], {4}},     {*creeping[2], {-3}, 0.5},
                                  {*creeping[4], {-1}},    {*creeping[6], {1}, 0.1},
                                  {kIdentity, {-5}, 10.0}, {*creeping[5], {-2, 2}}};
  std::size_t chosen[6] = {};
  for (double step : {2.0, 5.0, 10.0, 30.0}) {
    for (double sigma : {0.05, 0.2, 1.0, 4.0}) {
      const WeakFrame frame = patch(step, *creeping[5]);
      double least = std::numeric_limits<double>::infinity();
      std::size_t place = 0;
      for (std::size_t k = 0; k < kept.size(); ++k) {
        const auto best = ModelChoice(frame, trials, {sigma, 5}).bestOnTopOf({kept[k]});
        if (!best) continue;
        const double error = ModelChoice(frame, trials, {sigma, 5}).squaredError(*best);
        EXPECT_EQ(best->squaredError, error);
        if (!(error < least)) continue;
        least = error;
        place = k;
      }
      const auto best = ModelChoice(frame, trials, {sigma, 5}).bestOnTopOf(kept);
      ASSERT_TRUE(best);
      EXPECT_EQ(best->squaredError, least);
      EXPECT_EQ(best->lower.from, kept[place].from);
      const auto within = [&](double bound) {
        return ModelChoice(frame, trials, {sigma, 5}).bestOnTopOf(kept, bound);
      };
      EXPECT_FALSE(within(least));
      ASSERT_TRUE(within(1.001 * least));
      EXPECT_EQ(within(1.001 * least)->squaredError, least);
      ++chosen[place];
    }
  }
  EXPECT_LT(chosen[0], 16U);  // they differ in what they take
}

// Without a full transform to take instead, the closest model says how noisy the tracks are.
TEST(ModelChoice, TakesNoiseToBeWhatTheClosestModelLeaves) {
  WeakFrame frame = patch(20);
  disturb(frame, 5.0);  // squares of 900
  frame = withoutFull(frame);
  ModelChoice choice(frame, kStill, {0.1, 5});
  EXPECT_TRUE(choice.bestOnTopOf({{kIdentity, {-1}}}));
  // Of the translation 8 pairs are left, of the similarity 7, of the affine map 6.
  EXPECT_NEAR(choice.sigma(), std::sqrt(900.0 / 16.0), 1e-9);
}

TEST(ModelChoice, FitsNoMoreThanTheTracksFix) {
  WeakFrame frame;
  frame.tracks = {{{50, 50}, {53, 54}}};
  frame.corners = kSurface;
  frame.seen = kIdentity;
  const auto best = ModelChoice(frame, kStill, {0.5, 5}).bestOnTopOf({{kIdentity, {-1}}});
  ASSERT_TRUE(best);
  EXPECT_EQ(best->lower.model, Model::Translation);
  EXPECT_EQ(best->h[0][2], 3.0);
  EXPECT_EQ(best->h[1][2], 4.0);
}

// Nothing is to be had instead, whatever the bound.
TEST(ModelChoice, TakesTheBestWhereThereIsNoFullTransform) {
  WeakFrame frame = patch(20);
  disturb(frame, 5.0);
  frame = withoutFull(frame);
  const std::vector<Kept> kept = {{kIdentity, {-1}}};
  ModelChoice unbound(frame, kStill, {5.0, 5});
  ModelChoice bound(frame, kStill, {5.0, 5});
  const auto best = unbound.bestOnTopOf(kept);
  const auto same = bound.bestOnTopOf(kept, 0.0);
  ASSERT_TRUE(best);
  ASSERT_TRUE(same);
  EXPECT_EQ(same->squaredError, best->squaredError);
  EXPECT_EQ(bound.sigma(), 5.0);
}
