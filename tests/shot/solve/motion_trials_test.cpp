// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/motion_trials.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/solve/known_transforms.h"

using namespace cornerpin;

namespace {

const Quad kSurface = {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}};

Homography shifted(double x, double y) { return {{{1, 0, x}, {0, 1, y}, {0, 0, 1}}}; }

Homography scaled(double scale) { return {{{scale, 0, 0}, {0, scale, 0}, {0, 0, 1}}}; }

// The surface grows by a thousandth of its first size in each frame.
double scaleIn(int frame) { return 1.0 + 0.001 * frame; }

Known growing(int frames) {
  Known known;
  for (int f = 0; f < frames; ++f) known.push_back(scaled(scaleIn(f)));
  return known;
}

// How far (100, 0) is off, on the square, where a track at (0, 0) is all that a frame has.
double missOf(const Known& known, const Offsets& from, double sigma = 1.0) {
  const Matches tracks = {{{0, 0}, {0, 0}}};
  const TrialFrame frame{tracks, kSurface, kIdentity};
  const MotionTrials trials(pointersTo(known));
  const std::vector<double> misses =
      FrameTrials(trials, frame).misses({Model::Translation, from}, {{100, 0}}, 1, {sigma, 5});
  return misses.empty() ? -1.0 : misses[0];
}

// The same from the scales alone, for one frame that is kept.
double expectedMiss(int first, int last, int offset) {
  double sum = 0.0;
  const int count = last - first + 1;
  for (int f = first; f <= last; ++f) {
    const double off = 100.0 * (scaleIn(f + offset) / scaleIn(f) - 1.0);
    sum += off * off;
  }
  return sum / count * (count + 2.0) / count;
}

}  // namespace

TEST(TakenFrom, IsTheTransformItselfOfOneFrame) {
  EXPECT_EQ(takenFrom({shifted(3, 4)}, {-7}, kSurface), shifted(3, 4));
}

TEST(TakenFrom, GoesStraightBetweenTwoFrames) {
  const Homography h = takenFrom({shifted(0, 40), shifted(40, 0)}, {-1, 3}, kSurface);
  const Point p = map(h, {50, 50});
  EXPECT_NEAR(p.x, 60.0, 1e-9);
  EXPECT_NEAR(p.y, 80.0, 1e-9);
}

// The corners decide: where they go straight, a transform with perspective does not.
TEST(TakenFrom, CarriesTheCornersAndNotTheElements) {
  const Homography bent = {{{1.2, 0.1, 5}, {-0.1, 1.1, 7}, {1e-3, -5e-4, 1}}};
  const Homography h = takenFrom({kIdentity, bent}, {-1, 1}, kSurface);
  for (const Point& corner : kSurface) {
    const Point end = map(bent, corner);
    const Point p = map(h, corner);
    EXPECT_NEAR(p.x, (corner.x + end.x) / 2, 1e-9);
    EXPECT_NEAR(p.y, (corner.y + end.y) / 2, 1e-9);
  }
}

// One in a thousand for one pair above and five below is a ratio of 14.91.
TEST(Contradicts, AsOneInAThousandFrames) {
  EXPECT_FALSE(contradicts(2 * 14.89 * 0.25, 1, {0.5, 5}));
  EXPECT_TRUE(contradicts(2 * 14.93 * 0.25, 1, {0.5, 5}));
  EXPECT_FALSE(contradicts(1e9, 0, {0.5, 5}));
}

TEST(FrameTrials, SayWhatAFrameThatIsKeptMisses) {
  EXPECT_NEAR(missOf(growing(20), {-3}), expectedMiss(3, 19, -3), 1e-9);
  EXPECT_NEAR(missOf(growing(20), {5}), expectedMiss(0, 14, 5), 1e-9);
}

TEST(FrameTrials, SkipFramesThatAreNotKnown) {
  Known known = growing(20);
  for (std::size_t f = 0; f < 20; ++f) {
    if (f < 4 || f > 11) known[f].reset();
  }
  EXPECT_NEAR(missOf(known, {-3}), expectedMiss(7, 11, -3), 1e-9);
}

// Two trials of three frames off would be enough: there is one.
TEST(FrameTrials, GoByHalfTheWayWhereTheWholeIsTooLong) {
  EXPECT_NEAR(missOf(growing(4), {-6}), 36.0 * expectedMiss(1, 3, -1), 1e-9);
  EXPECT_NEAR(missOf(growing(5), {-6}), 4.0 * expectedMiss(3, 4, -3), 1e-9);
}

TEST(FrameTrials, FindHardlyAMissBetweenTwoFramesOfSteadyMotion) {
  EXPECT_LT(missOf(growing(20), {-3, 4}), 1e-4 * missOf(growing(20), {-3}));
  EXPECT_GE(missOf(growing(20), {-3, 4}), 0.0);
}

TEST(FrameTrials, SayNothingWithoutKnownFrames) {
  EXPECT_EQ(missOf(Known(20), {-3}), -1.0);
  EXPECT_EQ(missOf(growing(1), {-3}), -1.0);
}

TEST(FrameTrials, UseFiftyOfManyFrames) {
  double sum = 0.0;
  for (std::size_t i = 0; i < 50; ++i) {
    const int f = static_cast<int>(1 + i * 199 / 50);
    const double off = 100.0 * (scaleIn(f - 1) / scaleIn(f) - 1.0);
    sum += off * off;
  }
  EXPECT_NEAR(missOf(growing(200), {-1}), sum / 50 * 52 / 50, 1e-12);
}

// The surface doubles once; two tracks show it wherever noise does not hide it.
TEST(FrameTrials, LeaveOutWhatTracksWouldContradict) {
  Known known;
  for (int f = 0; f < 20; ++f) known.push_back(scaled(f < 10 ? 1.0 : 2.0));
  const Matches tracks = {{{0, 0}, {0, 0}}, {{10, 0}, {10, 0}}};
  const TrialFrame frame{tracks, kSurface, kIdentity};
  const MotionTrials motion(pointersTo(known));
  FrameTrials trials(motion, frame);
  const LowerModel lower = {Model::Translation, {-1}};
  EXPECT_NEAR(trials.misses(lower, {{100, 0}}, 2, {0.1, 5}).at(0), 0.0, 1e-12);
  // Half of the size: the image of 100 lies at 50, and the mean of the tracks 2.5 off that.
  EXPECT_NEAR(trials.misses(lower, {{100, 0}}, 2, {10.0, 5}).at(0), 47.5 * 47.5 / 19 * 21 / 19,
              1e-9);
}

// The tracks' frame is seen turned and twice as large, and so is what it misses.
TEST(FrameTrials, PutTheMotionOnTopOfWhatIsSeen) {
  const Matches tracks = {{{0, 0}, {0, 0}}};
  const Homography turned = {{{0, -2, 30}, {2, 0, 40}, {0, 0, 1}}};
  const Homography around = {{{1, 0, 30}, {0, 1, 40}, {0, 0, 1}}};
  const TrialFrame frame{tracks, kSurface, turned};
  Known known;
  for (const std::optional<Homography>& h : growing(20)) {
    known.push_back(product(around, product(*h, inverse(around))));
  }
  const MotionTrials trials(pointersTo(known));
  const std::vector<double> misses =
      FrameTrials(trials, frame).misses({Model::Translation, {-3}}, {{100, 0}}, 1, {1.0, 5});
  EXPECT_NEAR(misses.at(0), 4.0 * expectedMiss(3, 19, -3), 1e-9);
}

// Asked for one model and stretch of time after the other, they say what they say when asked once.
TEST(FrameTrials, SayOfEachModelWhatTheySayOfItAlone) {
  const Matches tracks = {{{0, 0}, {0, 0}}, {{40, 10}, {40, 10}}, {{20, 60}, {20, 60}}};
  const TrialFrame frame{tracks, kSurface, kIdentity};
  Known bending = growing(20);
  for (std::size_t f = 0; f < 20; ++f) (*bending[f])[2][0] = 1e-5 * static_cast<double>(f * f);
  const MotionTrials trials(pointersTo(bending));
  FrameTrials all(trials, frame);
  const Points points = {{100, 0}, {100, 100}};
  for (const Offsets& from : {Offsets{-1}, Offsets{2}, Offsets{-1, 2}, Offsets{-1}}) {
    for (Model model : {Model::Affine, Model::Similarity, Model::Translation}) {
      const LowerModel lower = {model, from};
      const std::vector<double> alone =
          FrameTrials(trials, frame).misses(lower, points, 3, {10.0, 5});
      ASSERT_EQ(alone.size(), 2U);
      EXPECT_EQ(all.misses(lower, points, 3, {10.0, 5}), alone);
    }
  }
  const std::vector<double> before = all.misses({Model::Affine, {-1}}, points, 3, {10.0, 5});
  const std::vector<double> closer =
      all.misses({Model::Affine, {-1}}, {{50, 0}, {50, 50}}, 3, {10.0, 5});
  EXPECT_LT(closer.at(0), before.at(0));
}
