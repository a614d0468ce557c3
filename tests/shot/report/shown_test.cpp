// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/shown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "tests/shot/report/small_result.h"

using namespace cornerpin;

namespace {

std::vector<std::size_t> upTo(std::size_t count) {
  std::vector<std::size_t> all(count);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

bool has(const std::vector<std::size_t>& items, std::size_t item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

PageLimits limitsOf(std::size_t frames, std::size_t tracks, std::size_t cells) {
  PageLimits limits;
  limits.frames = frames;
  limits.tracks = tracks;
  limits.cells = cells;
  return limits;
}

std::size_t widestStep(const std::vector<std::size_t>& rising) {
  std::size_t widest = 0;
  for (std::size_t i = 1; i < rising.size(); ++i)
    widest = std::max(widest, rising[i] - rising[i - 1]);
  return widest;
}

}  // namespace

TEST(Shown, IsAllOfWhatThereIsRoomFor) {
  const ShotResult result = small::result(7, 9);
  const Shown shown = shownOf({result, nullptr, ""}, limitsOf(9, 7, 63));
  EXPECT_EQ(shown.frames, upTo(9));
  EXPECT_EQ(shown.tracks, upTo(7));
  EXPECT_EQ(shown.howFrames, "");
  EXPECT_EQ(shown.howTracks, "");
}

TEST(Shown, KeepsTheFramesThatMatterAndSpreadsTheOthers) {
  ShotResult result = small::result(5, 1000, 100);
  result.referenceFrame = 333;
  for (const std::size_t f : {400u, 401u, 402u, 777u}) small::doubt(result.frames[f], 3.0);
  small::doubt(result.frames[401], 9.0);
  TrackStretch stretch;
  stretch.first = stretch.last = stretch.peak = 655;
  result.worst = {{"t3", stretch}};
  const Shown shown = shownOf({result, nullptr, ""}, limitsOf(40, 100, 1'000'000));
  EXPECT_EQ(shown.frames.size(), 40u);
  EXPECT_TRUE(std::is_sorted(shown.frames.begin(), shown.frames.end()));
  for (const std::size_t f : {0u, 233u, 400u, 401u, 402u, 555u, 777u, 999u})
    EXPECT_TRUE(has(shown.frames, f)) << f;
  // 32 others are spread over some 990.
  EXPECT_LE(widestStep(shown.frames), 33u);
  EXPECT_EQ(shown.howFrames,
            "the base and the reference frame, the first and the last one, every doubtful frame, "
            "and an even selection of the others");
}

TEST(Shown, LeavesHalfOfTheRoomWhereAllFramesAreDoubtful) {
  ShotResult result = small::result(5, 1000);
  for (std::size_t f = 1; f < 1000; ++f) small::doubt(result.frames[f], static_cast<double>(f));
  const Shown shown = shownOf({result, nullptr, ""}, limitsOf(40, 100, 1'000'000));
  EXPECT_EQ(shown.frames.size(), 40u);
  for (std::size_t f = 985; f < 1000; ++f) EXPECT_TRUE(has(shown.frames, f)) << f;
  EXPECT_LE(widestStep(shown.frames), 52u);
  EXPECT_EQ(shown.howFrames,
            "the base and the reference frame, the first and the last one, 39 of 999 doubtful "
            "frames, the worst first, and an even selection of the others");
}

TEST(Shown, KeepsTheWorstTracksAndThoseWithTheLargestResiduals) {
  ShotResult result = small::result(500, 10);
  result.worst = {{"t250", {}}};
  const Tracks tracks = small::tracks(500, 10, 0, 40.0);
  const Shown shown = shownOf({result, &tracks, ""}, limitsOf(100, 3000, 200));
  EXPECT_EQ(shown.frames, upTo(10));
  EXPECT_EQ(shown.tracks.size(), 20u);
  EXPECT_TRUE(has(shown.tracks, 0));
  EXPECT_TRUE(has(shown.tracks, 250));
  EXPECT_LE(widestStep(shown.tracks), 29u);
  EXPECT_EQ(shown.howTracks,
            "the worst tracks, those with the largest residuals where they are good, and an even "
            "selection of the others");
}

TEST(Shown, GoesByIgnoredFramesWithoutTracks) {
  ShotResult result = small::result(500, 10);
  result.tracks[123].runs = {{0, 4, TrackUse::Good}, {5, 9, TrackUse::Ignored}};
  const Shown shown = shownOf({result, nullptr, ""}, limitsOf(100, 3000, 200));
  EXPECT_TRUE(has(shown.tracks, 123));
  EXPECT_EQ(shown.howTracks,
            "the worst tracks, those that are ignored most, and an even selection of the others");
}

// A residual in a frame that does not go by the track says nothing of the fit.
TEST(Shown, LooksAtResidualsOfGoodTracksAlone) {
  ShotResult result = small::result(500, 10);
  result.tracks[0].runs = {{0, 9, TrackUse::Ignored}};
  result.tracks[0].place = {kNoFigure, kNoFigure};
  const Tracks tracks = small::tracks(500, 10, 0, 40.0);
  const Shown shown = shownOf({result, &tracks, ""}, limitsOf(100, 3000, 200));
  EXPECT_FALSE(has(shown.tracks, 0));
}

TEST(Shown, HasFewerFramesOfManyQuads) {
  ShotResult result = small::result(5, 100);
  result.quads.assign(30, result.quads[0]);
  PageLimits limits;
  limits.quads = 300;
  EXPECT_EQ(shownOf({result, nullptr, ""}, limits).frames.size(), 10u);
}

TEST(Shown, IsOneFrameAtLeast) {
  const ShotResult result = small::result(5, 3);
  const Shown shown = shownOf({result, nullptr, ""}, limitsOf(0, 0, 0));
  EXPECT_EQ(shown.frames, upTo(1));
  EXPECT_TRUE(shown.tracks.empty());
}

TEST(Shown, IsOfTransformsBetweenFramesAnEvenSelection) {
  ShotResult result = small::result(5, 20);
  for (int i = 0; i < 12; ++i) result.between.push_back({1.0 + 0.5 * i, small::shiftBy(0.5 * i)});
  Shown shown = shownOf({result, nullptr, ""}, limitsOf(20, 5, 1000));
  EXPECT_EQ(shown.between, upTo(12));
  EXPECT_EQ(shown.howBetween, "");
  shown = shownOf({result, nullptr, ""}, limitsOf(4, 5, 1000));
  EXPECT_EQ(shown.between, (std::vector<std::size_t>{0, 3, 6, 9}));
  EXPECT_EQ(shown.howBetween, "an even selection");
}

TEST(OnlyShown, LeavesWhatIsShown) {
  ShotResult result = small::result(6, 8);
  result.between = {{1.5, small::shiftBy(1.5)}, {2.5, small::shiftBy(2.5)}};
  Shown shown;
  shown.between = {1};
  shown.frames = {0, 3, 7};
  shown.tracks = {1, 4};
  const ShotResult only = onlyShown(result, shown);
  ASSERT_EQ(only.frames.size(), 3u);
  EXPECT_EQ(only.frames[1].frame, 3);
  ASSERT_EQ(only.tracks.size(), 2u);
  EXPECT_EQ(only.tracks[1].name, "t4");
  ASSERT_EQ(only.between.size(), 1u);
  EXPECT_EQ(only.between[0].frame, 2.5);
  EXPECT_EQ(only.baseTracks, 6);
}
