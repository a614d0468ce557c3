// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/start_places.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/shot/surface/relay_shot.h"

using namespace cornerpin;

namespace {

// Frames that are shifted by 10 pixels each against the first, which is fixed.
std::vector<JointFrame> shifted(std::size_t count) {
  std::vector<JointFrame> frames(count);
  for (std::size_t f = 0; f < count; ++f) {
    frames[f].h[0][2] = 10.0 * static_cast<double>(f);
    frames[f].part = f == 0 ? JointFrame::Part::Fixed : JointFrame::Part::Free;
    frames[f].sigma = 1.0;
  }
  return frames;
}

// One track, by its places as they would be seen in the first frame.
relay::Shot oneTrack(const std::vector<Point>& places) {
  relay::Shot shot;
  shot.frames = shifted(places.size());
  shot.seen.resize(places.size());
  for (std::size_t f = 0; f < places.size(); ++f) {
    shot.seen[f].push_back({{}, map(shot.frames[f].h, places[f])});
  }
  return shot;
}

Place placeIn(const relay::Shot& shot) {
  return startPlaces(shot.frames, shot.observations(), 1)[0];
}

void expectPoint(Point p, Point expected) {
  EXPECT_NEAR(p.x, expected.x, 1e-9);
  EXPECT_NEAR(p.y, expected.y, 1e-9);
}

}  // namespace

TEST(StartPlaces, AreTheMeansOfWhatSightingsSay) {
  const Place place = placeIn(oneTrack({{100, 50}, {101, 50}, {102, 53}}));
  expectPoint(place.point, {101, 51});
  EXPECT_NEAR(place.covariance.xx, 1.0 / 3.0, 1e-12);
  EXPECT_NEAR(place.covariance.xy, 0.0, 1e-12);
  EXPECT_NEAR(place.covariance.yy, 1.0 / 3.0, 1e-12);
}

TEST(StartPlaces, WeighTheSightingsByWeightAndNoise) {
  relay::Shot shot = oneTrack({{100, 50}, {101, 50}, {102, 50}});
  shot.seen[1][0].weight = 2.0;
  shot.frames[2].sigma = 2.0;  // the median is 1
  // (100 + 4 * 101 + 102 / 4) / (1 + 4 + 1 / 4)
  const Place place = placeIn(shot);
  expectPoint(place.point, {529.5 / 5.25, 50});
  EXPECT_NEAR(place.covariance.xx, 1.0 / 5.25, 1e-12);
}

TEST(StartPlaces, AreWhereMostSightingsAgree) {
  std::vector<Point> places(20, Point{100, 50});
  for (std::size_t f = 0; f < 9; ++f) places[f] = {300.0 + 8.0 * static_cast<double>(f), 50};
  expectPoint(placeIn(oneTrack(places)).point, {100, 50});
}

TEST(StartPlaces, DoNotMoveWithASlideOrAJump) {
  std::vector<Point> places(40, Point{100, 50});
  for (std::size_t f = 20; f < 35; ++f) {
    places[f] = {100.0 + 4.0 * static_cast<double>(f - 19), 50};
  }
  places[37] = {900, 900};
  expectPoint(placeIn(oneTrack(places)).point, {100, 50});
}

// Two of four at 100, one at 100 + d: its own place has as many votes only where it is within.
TEST(StartPlaces, AreSupportedFromWithinThreeAndAHalfSigmas) {
  expectPoint(placeIn(oneTrack({{100, 50}, {103.4, 50}, {100, 50}, {100, 50}})).point,
              {100.85, 50});
  expectPoint(placeIn(oneTrack({{100, 50}, {103.6, 50}, {100, 50}, {100, 50}})).point, {100, 50});
}

// All six support 103.4, but their mean, 102.1, has lost the last of them.
TEST(StartPlaces, AreTheMeanOfThoseThatSupportTheMean) {
  const relay::Shot shot =
      oneTrack({{100, 50}, {100, 50}, {100, 50}, {103.4, 50}, {103.4, 50}, {106, 50}});
  expectPoint(placeIn(shot).point, {506.8 / 5.0, 50});
}

TEST(StartPlaces, AreTheFirstOfEquals) {
  expectPoint(placeIn(oneTrack({{100, 50}, {200, 50}})).point, {100, 50});
}

TEST(StartPlaces, TakeTheFixedFrameFirst) {
  relay::Shot shot = oneTrack({{200, 50}, {300, 50}, {100, 50}});
  shot.frames[0].part = JointFrame::Part::Free;
  shot.frames[2].part = JointFrame::Part::Fixed;
  expectPoint(placeIn(shot).point, {100, 50});
}

TEST(StartPlaces, NeedThreeSupportersWhereTheFixedFrameDoesNotShowTheTrack) {
  relay::Shot shot = oneTrack({{0, 0}, {100, 50}, {100, 50}, {100, 50}});
  shot.seen[0].clear();
  expectPoint(placeIn(shot).point, {100, 50});
  shot.seen[2].clear();
  EXPECT_FALSE(isKnown(placeIn(shot)));
  EXPECT_TRUE(std::isnan(placeIn(shot).covariance.xx));
}

TEST(StartPlaces, AreUnknownWithoutASighting) {
  const relay::Shot shot = oneTrack({{100, 50}, {100, 50}});
  const std::vector<Place> places = startPlaces(shot.frames, shot.observations(), 3);
  EXPECT_TRUE(isKnown(places[0]));
  EXPECT_FALSE(isKnown(places[1]));
  EXPECT_FALSE(isKnown(places[2]));
}

TEST(StartPlaces, TakeNoNoticeOfFramesWithoutATransformNorOfAWeightOfZero) {
  relay::Shot shot = oneTrack({{100, 50}, {900, 900}, {900, 900}, {900, 900}, {100, 50}});
  shot.frames[1].part = JointFrame::Part::None;
  shot.frames[2].part = JointFrame::Part::None;
  shot.seen[3][0].weight = 0.0;
  expectPoint(placeIn(shot).point, {100, 50});
  EXPECT_NEAR(placeIn(shot).covariance.yy, 0.5, 1e-12);
}

// x' = x / (1 - x / 1000): a sighting at -2000 would come from 2000, beyond the horizon at 1000.
TEST(StartPlaces, TakeNoCandidateFromBehindTheHorizon) {
  relay::Shot shot = oneTrack({{100, 50}, {100, 50}, {100, 50}});
  shot.frames[1].h = {{{1, 0, 0}, {0, 1, 0}, {-1e-3, 0, 1}}};
  shot.seen[0].clear();
  shot.seen[2].clear();
  shot.seen[1][0].present = {-2000, 0};
  shot.frames[1].part = JointFrame::Part::Fixed;
  EXPECT_FALSE(isKnown(placeIn(shot)));
  shot.seen[1][0].present = {1000, 0};
  expectPoint(placeIn(shot).point, {500, 0});
}

TEST(StartPlaces, FollowPerspective) {
  relay::Plan plan;
  plan.noise = 1e-3;
  plan.alive = 20;
  plan.tilt = 3e-4;
  const relay::Shot shot = relay::shot(plan);
  const std::vector<Place> places =
      startPlaces(shot.frames, shot.observations(), shot.places.size());
  std::size_t known = 0;
  for (std::size_t t = 0; t < places.size(); ++t) {
    if (!isKnown(places[t])) continue;
    ++known;
    EXPECT_LT(std::sqrt(squaredDistance(places[t].point, shot.places[t])), 0.02) << t;
  }
  EXPECT_GT(known, places.size() / 2);
}

TEST(RefinePlaces, MovesTheChosenOnes) {
  relay::Shot shot = oneTrack({{100, 50}, {102, 50}, {500, 500}});
  for (auto& seen : shot.seen) {
    seen.push_back(seen[0]);
    seen[1].track = 1;
  }
  std::vector<Place> places(2, Place{{100, 50}, {}});
  refinePlaces(shot.frames, {1.0, 1.0, 1.0}, shot.observations(), {false, true}, places);
  expectPoint(places[0].point, {100, 50});
  expectPoint(places[1].point, {101, 50});
}

TEST(RefinePlaces, LeavesThoseThatNoSightingSupports) {
  const relay::Shot shot = oneTrack({{100, 50}, {102, 50}});
  std::vector<Place> places(1, Place{{300, 50}, {7, 0, 7}});
  refinePlaces(shot.frames, {1.0, 1.0}, shot.observations(), {true}, places);
  expectPoint(places[0].point, {300, 50});
  EXPECT_EQ(places[0].covariance.xx, 7.0);
}

// x' = x / (1 - x / 1000) carries 2000 to -2000, but from behind.
TEST(RefinePlaces, TakesNoSupportFromBehindTheHorizon) {
  relay::Shot shot = oneTrack({{0, 0}});
  shot.frames[0].h = {{{1, 0, 0}, {0, 1, 0}, {-1e-3, 0, 1}}};
  shot.seen[0][0].present = {-1999, 0};
  std::vector<Place> places(1, Place{{2000, 0}, {}});
  refinePlaces(shot.frames, {1.0}, shot.observations(), {true}, places);
  expectPoint(places[0].point, {2000, 0});
}
