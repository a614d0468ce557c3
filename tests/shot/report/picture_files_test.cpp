// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "shot/files/input_error.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::string refusalOf(const std::string& text) {
  try {
    PictureFiles files(text);
  } catch (const std::exception& error) {
    return error.what();
  }
  return "";
}

constexpr const char* kWhatToGive =
    ": give a pattern such as img_%04d.jpg or img_####.jpg, a folder with pictures, or a text file "
    "with the name of one on each line";

}  // namespace

TEST(PictureFiles, FollowAPattern) {
  const TemporaryFolder folder;
  for (const char* name : {"a_0007.jpg", "b_7.jpg", "c_007.jpg", "100%_07.jpg", "d_-007.jpg"})
    writeFile(folder / name, "");
  EXPECT_EQ(PictureFiles(folder / "a_%04d.jpg").of(7), folder / "a_0007.jpg");
  EXPECT_EQ(PictureFiles(folder / "a_####.jpg").of(7), folder / "a_0007.jpg");
  EXPECT_EQ(PictureFiles(folder / "b_%d.jpg").of(7), folder / "b_7.jpg");
  EXPECT_EQ(PictureFiles(folder / "c_%03d.jpg").of(7), folder / "c_007.jpg");
  EXPECT_EQ(PictureFiles(folder / "100%%_##.jpg").of(7), folder / "100%_07.jpg");
  EXPECT_EQ(PictureFiles(folder / "d_%04d.jpg").of(-7), folder / "d_-007.jpg");
  EXPECT_EQ(PictureFiles(folder / "a_%04d.jpg").of(8), "");
  EXPECT_EQ(PictureFiles(folder / "a_%04d.jpg").nameOf(8), folder / "a_0008.jpg");
}

TEST(PictureFiles, AreThoseOfAFolder) {
  const TemporaryFolder folder;
  for (const char* name : {"shot2_0010.JPG", "shot2_0012.png", "notes_11.txt", "cover.jpg"})
    writeFile(folder / name, "");
  std::filesystem::create_directory(folder / "0013.jpg");
  const PictureFiles files(folder.path().string());
  EXPECT_EQ(files.of(10), folder / "shot2_0010.JPG");
  EXPECT_EQ(files.of(12), folder / "shot2_0012.png");
  for (const int frame : {2, 11, 13}) EXPECT_EQ(files.of(frame), "") << frame;
}

TEST(PictureFiles, AreListed) {
  const TemporaryFolder folder;
  writeFile(folder / "list.txt", "a/x_5.jpg\r\n\n/tmp/y_0006.png\n");
  const PictureFiles files(folder / "list.txt");
  EXPECT_EQ(files.of(5), folder / "a/x_5.jpg");
  EXPECT_EQ(files.of(6), "/tmp/y_0006.png");
  EXPECT_EQ(files.of(7), "");
}

TEST(PictureFiles, RefuseWhatTellsNoFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(refusalOf("img.jpg"),
            "\"img.jpg\" is no file or folder, and has no place for a frame's number" +
                std::string(kWhatToGive));
  EXPECT_EQ(refusalOf("img_%04d_##.jpg"),
            "\"img_%04d_##.jpg\" has more than one place for a frame's number" +
                std::string(kWhatToGive));
  for (const char* text :
       {"a%s.jpg", "a%4d.jpg", "a%", "a%04", "a%00d.jpg", "a%0xd.jpg", "a%-4d"}) {
    EXPECT_EQ(refusalOf(text),
              "\"" + std::string(text) + "\" has a % that is not %d or %04d" + kWhatToGive);
  }
  for (const char* text : {"a%099d.jpg", "a################.jpg"}) {
    EXPECT_EQ(refusalOf(text), "\"" + std::string(text) +
                                   "\" has room for more digits than a frame has" + kWhatToGive);
  }
  const std::string empty = folder.path().string();
  EXPECT_EQ(refusalOf(empty),
            "\"" + empty + "\" holds no picture with a number in its name" + kWhatToGive);
}

TEST(PictureFiles, RefuseListsThatTellNoFrames) {
  const TemporaryFolder folder;
  const std::string list = folder / "list.txt";
  writeFile(list, "a_1.jpg\nb.jpg\n");
  EXPECT_EQ(refusalOf(list), list + ":2: this picture's name has no number, which tells its frame");
  writeFile(list, "b_1.jpg\na_01.jpg\n");
  EXPECT_EQ(refusalOf(list), "\"" + (folder / "a_01.jpg") + "\" and \"" + (folder / "b_1.jpg") +
                                 "\" are both of frame 1: take one away");
  writeFile(list, "\n");
  EXPECT_EQ(refusalOf(list), "\"" + list + "\" is empty" + kWhatToGive);
  writeJpeg(folder / "one.jpg", 4, 4);
  EXPECT_EQ(refusalOf(folder / "one.jpg"),
            "\"" + (folder / "one.jpg") + "\" is one picture" + kWhatToGive);
}
