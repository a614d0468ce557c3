// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/shot_pictures.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "shot/files/input_error.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/made_tiff.h"
#include "tests/shot/report/small_result.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// Pictures of 50 x 40 of frames 3 and 5.
class ShotPicturesOf : public testing::Test {
 protected:
  ShotPicturesOf() {
    writeJpeg(folder_ / "p3.jpg", 50, 40);
    writeJpeg(folder_ / "p5.jpg", 50, 40);
  }

  ShotPictures pictures() const { return {PictureFiles(folder_ / "p#.jpg"), "p#.jpg", 0, 9}; }

  std::string refusalOf(const Picture& picture, std::optional<double> scale, const Tracks* tracks) {
    try {
      pictures().fit(picture, scale, tracks);
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "";
  }

  TemporaryFolder folder_;
};

Picture sized(int width, int height) {
  Picture picture;
  picture.width = width;
  picture.height = height;
  return picture;
}

}  // namespace

TEST_F(ShotPicturesOf, TheFramesThatHaveOne) {
  const ShotPictures found = pictures();
  EXPECT_EQ(found.of(3), folder_ / "p3.jpg");
  EXPECT_EQ(found.of(4), "");
  EXPECT_EQ(found.of(5), folder_ / "p5.jpg");
}

TEST_F(ShotPicturesOf, NoFrameAreRefused) {
  try {
    const ShotPictures none(PictureFiles(folder_ / "p#.jpg"), "p#.jpg", 6, 9);
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_EQ(error.what(), "--pictures: \"p#.jpg\" has no picture of frames 6 to 9, such as \"" +
                                (folder_ / "p6.jpg") +
                                "\": the numbers of the pictures are those of the frames");
  }
}

TEST_F(ShotPicturesOf, AKindThatBrowsersDoNotShowAreNotLinked) {
  pictures().refuseLinks();
  writeTiff(folder_ / "p6.jpg", 50, 40);
  const ShotPictures found = pictures();
  try {
    found.refuseLinks();
    ADD_FAILURE();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), (folder_ / "p6.jpg") +
                                ": is a TIFF file, which browsers do not show: convert it, or do "
                                "not link it");
  }
}

TEST_F(ShotPicturesOf, SeveralSizesAreRefused) {
  writeJpeg(folder_ / "p6.jpg", 50, 41);
  try {
    pictures();
    ADD_FAILURE();
  } catch (const std::invalid_argument& error) {
    EXPECT_EQ(error.what(), "--pictures: \"" + (folder_ / "p3.jpg") + "\" is 50x40 and \"" +
                                (folder_ / "p6.jpg") + "\" 50x41: give pictures of one size");
  }
}

TEST_F(ShotPicturesOf, ASizeThatGoesWithTheTracks) {
  ShotPictures found = pictures();
  found.fit(sized(100, 80), std::nullopt, nullptr);
  EXPECT_EQ(found.size().width, 100);
  EXPECT_EQ(found.size().height, 80);
  found.fit(sized(99, 81), std::nullopt, nullptr);
  EXPECT_EQ(found.size().width, 99);
  EXPECT_EQ(
      refusalOf(sized(100, 100), std::nullopt, nullptr),
      "--pictures: those of \"p#.jpg\" are 50x40 and the picture of the tracks 100x100, which "
      "is of another shape: give pictures of the whole frame");
  EXPECT_EQ(refusalOf(sized(100, 80), 0.25, nullptr),
            "--pictures: those of \"p#.jpg\" are 50x40 and the picture of the tracks 100x80, which "
            "is not so with --picture-scale 0.25: give pictures of the whole frame");
  EXPECT_EQ(refusalOf(sized(100, 80), 0.5, nullptr), "");
}

TEST_F(ShotPicturesOf, AnUnknownSizeTellIt) {
  ShotPictures found = pictures();
  found.fit({}, std::nullopt, nullptr);
  EXPECT_EQ(found.size().width, 50);
  found.fit({}, 0.5, nullptr);
  EXPECT_EQ(found.size().width, 100);
  EXPECT_EQ(found.size().height, 80);
}

// Tracks from (10, 20) to (14.5, 22.25), which move by (2, 1) in each frame.
TEST_F(ShotPicturesOf, AnUnknownSizeMayNotLeaveTheTracksOutside) {
  const Tracks inside = small::tracks(10, 16);
  const Tracks outside = small::tracks(10, 40);
  EXPECT_EQ(refusalOf({}, std::nullopt, &inside), "");
  EXPECT_EQ(refusalOf({}, 0.5, &outside), "");
  EXPECT_EQ(refusalOf({}, std::nullopt, &outside),
            "--pictures: those of \"p#.jpg\" are 50x40, and the tracks go far beyond that: add "
            "--picture-scale with the width of the pictures over that of the tracks' picture, such "
            "as 0.5");
}
