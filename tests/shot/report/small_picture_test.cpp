// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/small_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "shot/files/input_error.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/made_tiff.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Image = std::unique_ptr<gdImage, void (*)(gdImagePtr)>;

Image imageOf(std::string jpeg) {
  return {::gdImageCreateFromJpegPtr(static_cast<int>(jpeg.size()), jpeg.data()), ::gdImageDestroy};
}

std::string refusalOf(const std::string& path) {
  try {
    smallPicture(path, 100);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

}  // namespace

TEST(SmallPicture, IsAsWideAsIsAskedForWithTheSameShape) {
  const TemporaryFolder folder;
  writePng(folder / "a.png", 1000, 501);
  writeJpeg(folder / "b.jpg", 1000, 501);
  writeWebP(folder / "c.webp", 1000, 501);
  writeGif(folder / "d.gif", 1000, 501);
  writeTiff(folder / "e.tif", 1000, 501);
  for (const char* name : {"a.png", "b.jpg", "c.webp", "d.gif", "e.tif"}) {
    const Image image = imageOf(smallPicture(folder / name, 100));
    ASSERT_TRUE(image) << name;
    EXPECT_EQ(gdImageSX(image.get()), 100);
    EXPECT_EQ(gdImageSY(image.get()), 50);
    EXPECT_LT(gdImageRed(image.get(), gdImageGetPixel(image.get(), 20, 25)), 30);
    EXPECT_GT(gdImageRed(image.get(), gdImageGetPixel(image.get(), 80, 25)), 225);
  }
}

TEST(SmallPicture, IsNotEnlarged) {
  const TemporaryFolder folder;
  writePng(folder / "a.png", 30, 20);
  const Image image = imageOf(smallPicture(folder / "a.png", 100));
  EXPECT_EQ(gdImageSX(image.get()), 30);
  EXPECT_EQ(gdImageSY(image.get()), 20);
}

TEST(SmallPicture, HasAtLeastARow) {
  const TemporaryFolder folder;
  writePng(folder / "a.png", 1000, 1);
  EXPECT_EQ(gdImageSY(imageOf(smallPicture(folder / "a.png", 100)).get()), 1);
}

TEST(SmallPicture, IsRefusedByNameWhereTheFileIsBroken) {
  const TemporaryFolder folder;
  writePng(folder / "a.png", 60, 60);
  const std::string png = readFile(folder / "a.png");
  for (const std::size_t length : {std::size_t{33}, png.size() / 2}) {
    writeFile(folder / "a.png", png.substr(0, length));
    testing::internal::CaptureStderr();
    EXPECT_EQ(refusalOf(folder / "a.png"), (folder / "a.png") + ": is not a whole picture");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
  writeFile(folder / "b.jpg", std::string("\xff\xd8\xff\xc0\0\x11\x08\0\x07\x01\x02\x03", 12));
  EXPECT_EQ(refusalOf(folder / "b.jpg"), (folder / "b.jpg") + ": is not a whole picture");
  EXPECT_EQ(refusalOf(folder / "none"), (folder / "none") + ": cannot be opened");
}

// The files' heads are whole: a TIFF file has its own at its end.
TEST(SmallPicture, IsRefusedByNameWhereAnotherKindIsBroken) {
  const TemporaryFolder folder;
  writeWebP(folder / "a.webp", 60, 60);
  writeTiff(folder / "a.tif", 60, 60);
  const std::string webp = readFile(folder / "a.webp");
  writeFile(folder / "a.webp", webp.substr(0, webp.size() / 2));
  std::string tiff = readFile(folder / "a.tif");
  tiff.replace(8, 16, 16, 'x');
  writeFile(folder / "a.tif", tiff);
  testing::internal::CaptureStderr();
  for (const char* name : {"a.webp", "a.tif"})
    EXPECT_EQ(refusalOf(folder / name), (folder / name) + ": is not a whole picture");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
