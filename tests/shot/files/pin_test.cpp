// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/pin.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace cornerpin;

namespace {

constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();

Picture pictureOf(YAxis y, double centre) {
  Picture picture;
  picture.width = 200;
  picture.height = 100;
  picture.y = y;
  picture.pixelCentre = centre;
  return picture;
}

// Moved by (3, 4) in frame 7; in frame 8 the top left corner goes nowhere.
Pin smallPin() {
  Pin pin;
  pin.name = "sign";
  pin.picture = pictureOf(YAxis::Up, 0.5);
  pin.from = {{{0, 0}, {200, 0}, {200, 100}, {0, 100}}};
  PinFrame moved;
  moved.frame = 7;
  moved.h = {{{1, 0, 3}, {0, 1, 4}, {0, 0, 1}}};
  moved.to = {{{3, 4}, {203, 4}, {203, 104}, {3, 104}}};
  PinFrame half = moved;
  half.frame = 8;
  half.to[kTopLeft] = {kNowhere, kNowhere};
  pin.frames = {moved, half};
  return pin;
}

void expectCorners(const Quad& found, const std::vector<Point>& wanted) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].x, wanted[i].x) << kCornerNames[i];
    EXPECT_EQ(found[i].y, wanted[i].y) << kCornerNames[i];
  }
}

}  // namespace

TEST(PictureCorners, AreTheEdgesOfTheOuterPixels) {
  expectCorners(pictureCorners(pictureOf(YAxis::Up, 0.5)),
                {{0, 0}, {200, 0}, {200, 100}, {0, 100}});
  expectCorners(pictureCorners(pictureOf(YAxis::Down, 0.5)),
                {{0, 100}, {200, 100}, {200, 0}, {0, 0}});
  expectCorners(pictureCorners(pictureOf(YAxis::Down, 0.0)),
                {{-0.5, 99.5}, {199.5, 99.5}, {199.5, -0.5}, {-0.5, -0.5}});
}

TEST(Pin, IsConvertedWithItsTransformsAndFrames) {
  Pin pin = smallPin();
  pin.picture.firstFrame = 1;
  Picture down = pictureOf(YAxis::Down, 0.5);
  down.firstFrame = 0;
  const Pin other = converted(pin, down);
  expectCorners(other.from, {{0, 100}, {200, 100}, {200, 0}, {0, 0}});
  EXPECT_EQ(other.frames[0].frame, 6);
  expectCorners(other.frames[0].to, {{3, 96}, {203, 96}, {203, -4}, {3, -4}});
  EXPECT_EQ(other.frames[0].h[0][2], 3.0);
  EXPECT_EQ(other.frames[0].h[1][2], -4.0);
  EXPECT_TRUE(std::isnan(other.frames[1].to[kTopLeft].x));
  EXPECT_EQ(other.picture.y, YAxis::Down);
}

TEST(TracksOf, NamesTheCornersAndLeavesOutThoseThatGoNowhere) {
  const Tracks tracks = tracksOf(smallPin());
  EXPECT_EQ(tracks.names,
            (std::vector<std::string>{"bottom_left", "bottom_right", "top_left", "top_right"}));
  ASSERT_EQ(tracks.observations.size(), 7u);
  EXPECT_EQ(tracks.observations[2].y, 104.0);
  EXPECT_EQ(tracks.observations[2].x, 3.0);
  EXPECT_EQ(tracks.observations[6].track, 3);
  EXPECT_EQ(tracks.picture.width, 200);
}

TEST(PinOf, IsTheTracksOfAPinAgain) {
  const Pin pin = smallPin();
  Tracks tracks = tracksOf(pin);
  const Pin again = pinOf(tracks, "again");
  EXPECT_EQ(again.name, "again");
  expectCorners(again.from, {{0, 0}, {200, 0}, {200, 100}, {0, 100}});
  ASSERT_EQ(again.frames.size(), 2u);
  expectCorners(again.frames[0].to, {{3, 4}, {203, 4}, {203, 104}, {3, 104}});
  EXPECT_NEAR(again.frames[0].h[0][2], 3.0, 1e-12);
  EXPECT_TRUE(std::isnan(again.frames[1].to[kTopLeft].y));
  EXPECT_EQ(again.frames[1].to[kTopRight].y, 104.0);
  EXPECT_FALSE(isFinite(again.frames[1].h));
}

TEST(PinOf, HasTheFramesThatNoCornerIsSeenIn) {
  Pin pin = smallPin();
  pin.frames[1].frame = 9;
  const Pin again = pinOf(tracksOf(pin), "");
  ASSERT_EQ(again.frames.size(), 3u);
  EXPECT_EQ(again.frames[1].frame, 8);
  EXPECT_TRUE(std::isnan(again.frames[1].to[kBottomLeft].x));
}
