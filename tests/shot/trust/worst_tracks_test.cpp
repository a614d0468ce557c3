// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/worst_tracks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace cornerpin;

namespace {

void add(WorstTracks& worst, int frame, const std::vector<double>& moves) {
  std::vector<TrackInfluence> influences;
  for (std::size_t t = 0; t < moves.size(); ++t) {
    influences.push_back({static_cast<int>(t), 0, 1, 0, moves[t]});
  }
  worst.addFrame(frame, influences);
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

TEST(WorstTracks, JoinsFramesWhicheverCameFirst) {
  WorstTracks worst(0.0, 4);
  for (int frame : {61, 62, 60, 59}) add(worst, frame, {1, frame == 61 ? 8.0 : 5.0});
  const auto list = worst.worst(1);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].first, 59);
  EXPECT_EQ(list[0].last, 62);
  EXPECT_EQ(list[0].peak, 61);
  EXPECT_EQ(worst.worst(1).front().last, 62);  // asked again
}

TEST(WorstTracks, JoinsWhatIsHalfThePeakToTheBit) {
  WorstTracks worst(0.0);
  add(worst, 1, {std::nextafter(4.0, 0.0)});
  add(worst, 2, {4});
  add(worst, 3, {8});
  add(worst, 4, {4});
  EXPECT_EQ(worst.worst(1).front().first, 2);
  EXPECT_EQ(worst.worst(1).front().last, 4);
}

TEST(WorstTracks, TakesTheSmallerOfTwoTracksThatMoveTheCornerAlike) {
  WorstTracks worst(0.0);
  add(worst, 0, {3, 3, 3, 3, 3, 3, 3});
  std::vector<int> kept;
  for (const TrackStretch& s : worst.worst(9)) kept.push_back(s.track);
  std::sort(kept.begin(), kept.end());
  EXPECT_EQ(kept, (std::vector<int>{0, 1, 2, 3, 4}));
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
    std::vector<TrackInfluence> influences;
    for (std::size_t t = 0; t < count; ++t) {
      const double residual = t % 3 == 1 ? 0.5 : t % 3 == 2 ? 1.5 : 1.0;
      influences.push_back({static_cast<int>(t), residual, 1, 0, 0.01});
    }
    if (frame == 1) influences[0] = first;
    worst.addFrame(frame, influences);
  }
  return worst.worst(1).front();
}

// Eight tracks that are much alike, or the one given among them.
void addAlike(WorstTracks& worst, int frame, double residual, int odd = -1,
              const TrackInfluence& of = {}) {
  std::vector<TrackInfluence> influences;
  for (int t = 0; t < 8; ++t) {
    influences.push_back(t == odd ? of : TrackInfluence{t, residual, 1, 0, 0.01});
  }
  worst.addFrame(frame, influences);
}

}  // namespace

TEST(WorstTracks, StandOutWhereNoiseDoesNotExplainThemAndTheyMatter) {
  const TrackStretch bad = judged({0, 9, 1, 0, 3});
  EXPECT_EQ(bad.track, 0);
  EXPECT_EQ(bad.peak, 1);
  EXPECT_TRUE(bad.standsOut);
  EXPECT_NEAR(bad.off, 9 * 1.1774, 1e-3);
  EXPECT_TRUE(judged({0, 5.2, 1, 0, 3}).standsOut);  // 6 deviations are 5.10
  EXPECT_FALSE(judged({0, 5.0, 1, 0, 3}).standsOut);
  EXPECT_TRUE(judged({0, 3.2, 1, 0.64, 3}).standsOut);  // 60 % of what a fit without it leaves
  EXPECT_FALSE(judged({0, 9, 1, 0, 3}, 8, 3.5).standsOut);
}

// sqrt(2 ln 2) deviations are the median length of normal errors.
TEST(WorstTracks, StandOutBeyondSixDeviationsAndTheLeastVisibleMove) {
  const double deviation = 1 / std::sqrt(2 * std::log(2.0));
  EXPECT_FALSE(judged({0, 5.999 * deviation, 1, 0, 3}).standsOut);
  EXPECT_TRUE(judged({0, 6.001 * deviation, 1, 0, 3}).standsOut);
  EXPECT_FALSE(judged({0, 9, 1, 0, 3}, 8, 3.0).standsOut);
  EXPECT_TRUE(judged({0, 9, 1, 0, 3}, 8, 2.999).standsOut);
}

TEST(WorstTracks, DoNotStandOutAmongTooFew) {
  EXPECT_TRUE(judged({0, 9, 1, 0, 3}, 6).standsOut);
  EXPECT_FALSE(judged({0, 9, 1, 0, 3}, 5).standsOut);
  EXPECT_TRUE(std::isnan(judged({0, 9, 1, 0, 3}, 5).off));
}

TEST(WorstTracks, DoNotStandOutOfAFrameWhoseTracksHappenToAgree) {
  WorstTracks worst(0.1);
  for (int frame = 0; frame < 5; ++frame) addAlike(worst, frame, 1.0);
  addAlike(worst, 5, 0.01, 0, {0, 1.0, 1, 0, 3});
  EXPECT_EQ(worst.worst(1).front().peak, 5);
  EXPECT_FALSE(worst.worst(1).front().standsOut);
}

TEST(WorstTracks, StandOutAmongAnyNumberOfOthersThatDo) {
  WorstTracks worst(0.1);
  std::vector<TrackInfluence> influences;
  for (int t = 0; t < 20; ++t) {
    influences.push_back({t, t < 9 ? 50.0 : 1.0, 1, 0, 1.0});
  }
  worst.addFrame(0, influences);
  EXPECT_TRUE(worst.worst(1).front().standsOut);
}

TEST(WorstTracks, NameThoseThatStandOutFirst) {
  WorstTracks worst(0.1);
  addAlike(worst, 0, 1.0, 3, {3, 1, 1, 0, 50});
  addAlike(worst, 1, 1.0, 5, {5, 9, 1, 0, 4});
  const auto list = worst.worst(2);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].track, 5);
  EXPECT_TRUE(list[0].standsOut);
  EXPECT_EQ(list[1].track, 3);
  EXPECT_FALSE(list[1].standsOut);
}
