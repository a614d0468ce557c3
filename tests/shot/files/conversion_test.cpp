// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/conversion.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/refusal.h"

using namespace cornerpin;

namespace {

Picture told(std::optional<YAxis> y, std::optional<double> centre = std::nullopt, int width = 0,
             int height = 0) {
  Picture picture;
  picture.y = y;
  picture.pixelCentre = centre;
  if (width > 0) picture.width = width;
  if (height > 0) picture.height = height;
  return picture;
}

Tracks oneRow(const Picture& picture, double x, double y, int frame) {
  Tracks tracks;
  tracks.picture = picture;
  tracks.names = {"a"};
  Observation row;
  row.x = x;
  row.y = y;
  row.frame = frame;
  row.weight = 0.25f;
  row.line = 9;
  tracks.observations = {row};
  tracks.arrange();
  return tracks;
}

}  // namespace

TEST(Tell, NotesWhatTheFileDoesNotSay) {
  Tracks tracks = oneRow({}, 1, 2, 3);
  const Picture contradicted = tell(tracks, Format::Csv, told(YAxis::Up, 0.0, 20, 10));
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.0);
  EXPECT_EQ(tracks.picture.width, 20);
  EXPECT_EQ(tracks.picture.height, 10);
  EXPECT_FALSE(contradicted.y || contradicted.pixelCentre || contradicted.width);
}

TEST(Tell, ReturnsWhatTheFileSaysOtherwise) {
  Tracks tracks = oneRow(factsOf(Format::Points).picture, 1, 2, 3);
  const Picture contradicted = tell(tracks, Format::Points, told(YAxis::Down, 0.0));
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(contradicted.y, YAxis::Down);
  EXPECT_EQ(contradicted.pixelCentre, 0.0);
  EXPECT_EQ(refusal([&] { refuseContradiction(contradicted, tracks.picture, "f.txt"); }),
            "--y-down: \"f.txt\" has y growing up: leave the option out");
  EXPECT_EQ(refusal([&] { refuseContradiction(told({}, 0.0), tracks.picture, "f.txt"); }),
            "--pixel-center: \"f.txt\" has the centre of its first pixel at 0.5: leave the option "
            "out");
  const Picture sized = told({}, {}, 640, 480);
  EXPECT_EQ(refusal([&] { refuseContradiction(told({}, {}, 1, 1), sized, "f"); }),
            "--size: \"f\" is from a picture of 640x480: leave the option out");
  EXPECT_EQ(refusal([&] { refuseContradiction({}, sized, "f"); }), "");
}

TEST(Tell, MovesFramesThatCountFromTheClipsFirst) {
  Picture first;
  first.firstFrame = 1001;
  Tracks tracks = oneRow(factsOf(Format::Points).picture, 1, 2, 3);
  tell(tracks, Format::Points, first);
  EXPECT_EQ(tracks.observations[0].frame, 1003);
  EXPECT_EQ(tracks.picture.firstFrame, 1001);
  Tracks absolute = oneRow({}, 1, 2, 1003);
  tell(absolute, Format::Csv, first);
  EXPECT_EQ(absolute.observations[0].frame, 1003);
  EXPECT_EQ(absolute.picture.firstFrame, 1001);
  Tracks far = oneRow(factsOf(Format::Points).picture, 1, 2, kFurthestFrame);
  EXPECT_EQ(refusal([&] { tell(far, Format::Points, first); }),
            "--first-frame: frame 1000001000 has no place in it");
}

TEST(Tell, BelievesPeopleAboutThePixelCentreOfPaths) {
  Tracks tracks = oneRow(factsOf(Format::Paths).picture, 0, 0, 1);
  const Picture contradicted = tell(tracks, Format::Paths, told({}, 0.5));
  EXPECT_EQ(tracks.picture.pixelCentre, 0.5);
  EXPECT_FALSE(contradicted.pixelCentre);
}

TEST(PictureFor, TakesWhatTheFormatLeavesOpen) {
  const Picture from = told(YAxis::Down, 0.5, 20, 10);
  EXPECT_EQ(pictureFor(Format::Csv, from, "f").y, YAxis::Down);
  EXPECT_EQ(pictureFor(Format::Points, from, "f").y, YAxis::Up);
  EXPECT_EQ(pictureFor(Format::Points, from, "f").width, 20);
  EXPECT_EQ(pictureFor(Format::Csv, {}, "f").y, std::nullopt);
}

TEST(PictureFor, AsksForAllThatIsMissing) {
  EXPECT_EQ(refusal([] { pictureFor(Format::Nk, {}, "f.csv"); }),
            "nk files need to know, and \"f.csv\" does not say, where y grows to: add --y-up or "
            "--y-down; and where a pixel's centre is: add --pixel-center 0.5 where whole numbers "
            "are edges of pixels, or 0 where they are centres");
  const std::string size =
      "nk files need to know, and \"f\" does not say, how large the picture is: add --size WxH";
  EXPECT_EQ(refusal([] { pictureFor(Format::Nk, told(YAxis::Down, 0.5), "f"); }), size);
  EXPECT_EQ(refusal([] { pictureFor(Format::Nk, told(YAxis::Up, 0.5), "f"); }), "");
  EXPECT_EQ(refusal([] { pictureFor(Format::Nk, told(YAxis::Up, 0.5), "f", Needs::Size); }), size);
  EXPECT_EQ(refusal([] { pictureFor(Format::Nk, told(YAxis::Down, 0.5), "f", Needs::Size); }),
            size);
}

TEST(ConvertedTracks, KeepWeightsAndLines) {
  Picture to = told(YAxis::Down, 0.0);
  to.firstFrame = 0;
  Picture from = told(YAxis::Up, 0.5, 20, 10);
  from.firstFrame = 1;
  const Tracks tracks = converted(oneRow(from, 3, 4, 5), to);
  EXPECT_EQ(tracks.observations[0].x, 2.5);
  EXPECT_EQ(tracks.observations[0].y, 5.5);
  EXPECT_EQ(tracks.observations[0].frame, 4);
  EXPECT_EQ(tracks.observations[0].weight, 0.25f);
  EXPECT_EQ(tracks.observations[0].line, 9u);
  EXPECT_EQ(tracks.picture.width, 20);
  EXPECT_EQ(tracks.picture.y, YAxis::Down);
}

TEST(InPixels, NeedsTheSizeOfNumbersThatAreNoPixels) {
  EXPECT_EQ(inPixels(oneRow({}, 3, 4, 5), "f").observations[0].x, 3.0);
  Picture uv = factsOf(Format::Uv).picture;
  EXPECT_EQ(refusal([&] { inPixels(oneRow(uv, 0.5, 0.25, 5), "f.uv"); }),
            "to convert \"f.uv\" it must be known, and it does not say, how large the picture is: "
            "add --size WxH");
  uv.width = 20;
  uv.height = 10;
  const Tracks pixels = inPixels(oneRow(uv, 0.5, 0.25, 5), "f");
  EXPECT_EQ(pixels.observations[0].x, 10.0);
  EXPECT_EQ(pixels.observations[0].y, 2.5);
  EXPECT_EQ(pixels.picture.scale, Scale::Pixels);
  EXPECT_EQ(pixels.picture.y, YAxis::Up);
  EXPECT_EQ(pixels.picture.pixelCentre, 0.5);
}

TEST(AsAskedFor, TurnsWhatIsContradicted) {
  const Tracks tracks =
      asAskedFor(oneRow(told(YAxis::Up, 0.5, 20, 10), 3, 4, 5), told(YAxis::Down), "f");
  EXPECT_EQ(tracks.observations[0].x, 3.0);
  EXPECT_EQ(tracks.observations[0].y, 6.0);
  EXPECT_EQ(tracks.picture.y, YAxis::Down);
}

TEST(TakesSize, WhereYIsTurnedOrTheScaleChanges) {
  Picture down = factsOf(Format::Rz2).picture;
  down.width = 640;
  down.height = 360;
  EXPECT_TRUE(takesSize(down, factsOf(Format::Nk).picture));
  EXPECT_TRUE(takesSize(down, factsOf(Format::Uv).picture));
  EXPECT_FALSE(takesSize(down, factsOf(Format::Keyframes).picture));
}
