// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/tiff_file.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/made_tiff.h"
#include "tests/support/files.h"

using namespace cornerpin;

TEST(SizeOfTiff, IsNothingWithoutAWord) {
  const TemporaryFolder folder;
  writeTiff(folder / "a", 30, 20);
  EXPECT_EQ(sizeOfTiff(folder / "a").width, 30);
  EXPECT_EQ(sizeOfTiff(folder / "a").height, 20);
  writeFile(folder / "b", "II*");
  testing::internal::CaptureStderr();
  EXPECT_EQ(sizeOfTiff(folder / "b").width, 0);
  EXPECT_EQ(sizeOfTiff(folder / "none").width, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(QuietTiff, LetsTheLibrarySpeakAgain) {
  const TemporaryFolder folder;
  { const QuietTiff quiet; }
  testing::internal::CaptureStderr();
  EXPECT_EQ(::TIFFOpen((folder / "none").c_str(), "r"), nullptr);
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}
