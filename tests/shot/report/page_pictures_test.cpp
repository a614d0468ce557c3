// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page_pictures.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/unpacked.h"
#include "tests/support/files.h"

using namespace cornerpin;

TEST(PagePictures, AreSmallOnesInThePage) {
  const TemporaryFolder folder;
  writePng(folder / "p1.png", 1280, 20);
  const ShotPictures pictures(PictureFiles(folder / "p#.png"), "", 0, 2);
  const PagePictures page = embedded(pictures, {0, 1, 2});
  ASSERT_EQ(page.urls.size(), 3u);
  EXPECT_EQ(page.urls[0], "");
  const std::string begin = "data:image/jpeg;base64,";
  ASSERT_EQ(page.urls[1].rfind(begin, 0), 0u);
  std::string jpeg = fromBase64(page.urls[1].substr(begin.size()));
  gdImagePtr image = ::gdImageCreateFromJpegPtr(static_cast<int>(jpeg.size()), jpeg.data());
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(gdImageSX(image), 640);
  EXPECT_EQ(gdImageSY(image), 10);
  ::gdImageDestroy(image);
  EXPECT_FALSE(page.note.linked);
  EXPECT_EQ(page.note.frames, 1u);
  EXPECT_EQ(page.note.missing, "there is no file for 2 of 3 frames: 0, 2");
  EXPECT_TRUE(page.broken.empty());
}

TEST(PagePictures, LeaveOutBrokenOnesAndSayWhich) {
  const TemporaryFolder folder;
  writePng(folder / "p1.png", 60, 60);
  writePng(folder / "p2.png", 60, 60);
  writeFile(folder / "p2.png", readFile(folder / "p2.png").substr(0, 80));
  const ShotPictures pictures(PictureFiles(folder / "p#.png"), "", 1, 2);
  const PagePictures page = embedded(pictures, {1, 2});
  EXPECT_NE(page.urls[0], "");
  EXPECT_EQ(page.urls[1], "");
  EXPECT_EQ(page.broken,
            std::vector<std::string>{(folder / "p2.png") + ": is not a whole picture"});
  EXPECT_EQ(page.note.missing, page.broken[0]);
}

TEST(PagePictures, AreAskedForFromWhereThePageIs) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "shots");
  writePng(folder / "shots/p1.png", 60, 60);
  const ShotPictures pictures(PictureFiles(folder / "shots/p#.png"), "", 1, 1);
  const PagePictures page = linked(pictures, {1}, folder / "pages/page.html");
  EXPECT_EQ(page.urls, std::vector<std::string>{"../shots/p1.png"});
  EXPECT_TRUE(page.note.linked);
  EXPECT_EQ(page.note.missing, "");
}

TEST(UrlFrom, EncodesWhatMeansSomethingInUrls) {
  EXPECT_EQ(urlFrom("/a/page.html", "/a/b c%d#e?f:\"g\"<h>.jpg"),
            "b%20c%25d%23e%3Ff%3A%22g%22%3Ch%3E.jpg");
  EXPECT_EQ(urlFrom("/a/b/page.html", "/a/\xc3\xbc.jpg"), "../%C3%BC.jpg");
  EXPECT_EQ(urlFrom("page.html", "./pictures/../p1.jpg"), "p1.jpg");
}
