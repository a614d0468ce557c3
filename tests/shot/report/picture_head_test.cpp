// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_head.h"

#include <gtest/gtest.h>

#include "shot/files/input_error.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

std::string refusalOf(const std::string& path) {
  try {
    headOf(path);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

std::string pngHead(const std::string& width, const std::string& height) {
  return "\x89PNG\r\n\x1a\n" + std::string("\0\0\0\rIHDR", 8) + width + height +
         std::string("\x08\x02\0\0\0", 5);
}

}  // namespace

TEST(PictureHead, TellsKindAndSize) {
  const TemporaryFolder folder;
  writeJpeg(folder / "a", 321, 123);
  writePng(folder / "b", 70'000, 2);
  EXPECT_EQ(headOf(folder / "a").kind, PictureKind::Jpeg);
  EXPECT_EQ(headOf(folder / "a").size.width, 321);
  EXPECT_EQ(headOf(folder / "a").size.height, 123);
  EXPECT_EQ(headOf(folder / "b").kind, PictureKind::Png);
  EXPECT_EQ(headOf(folder / "b").size.width, 70'000);
  EXPECT_EQ(headOf(folder / "b").size.height, 2);
  EXPECT_TRUE(isPicture(folder / "a"));
  EXPECT_TRUE(isPicture(folder / "b"));
}

// Two bytes of a comment that look like a frame's marker, filling bytes, then a progressive frame.
TEST(PictureHead, SkipsWhatStandsBeforeTheFrameOfAJpegFile) {
  const TemporaryFolder folder;
  writeFile(
      folder / "a.jpg",
      std::string("\xff\xd8\xff\xfe\0\x06\xff\xc0\0\x11\xff\xff\xff\xc2\0\x11\x08\0\x07\x01\x02",
                  21));
  EXPECT_EQ(headOf(folder / "a.jpg").size.height, 7);
  EXPECT_EQ(headOf(folder / "a.jpg").size.width, 258);
}

TEST(PictureHead, RefusesOtherFiles) {
  const TemporaryFolder folder;
  EXPECT_EQ(refusalOf(folder / "none"), (folder / "none") + ": cannot be opened");
  for (const char* text : {"", "GIF89a", "\xff\xd8", "\x89PNG\r\n\x1a", "<svg/>"}) {
    writeFile(folder / "a", text);
    EXPECT_EQ(refusalOf(folder / "a"),
              (folder / "a") + ": is neither a JPEG nor a PNG file: convert it");
    EXPECT_FALSE(isPicture(folder / "a"));
  }
}

TEST(PictureHead, RefusesHeadsThatAreCutOffOrBroken) {
  const TemporaryFolder folder;
  const std::string whole = "\xff\xd8\xff\xc0" + std::string("\0\x11\x08\0\x07\x01\x02", 7);
  for (std::size_t length = 3; length < whole.size(); ++length) {
    writeFile(folder / "a", whole.substr(0, length));
    EXPECT_EQ(refusalOf(folder / "a"),
              (folder / "a") + ": is not a whole picture: it does not tell its size")
        << length;
  }
  // A segment that is no longer than nothing would be met for ever.
  for (const std::string& text :
       {std::string("\xff\xd8\xff\xe0\0\0", 6), std::string("\xff\xd8\xff\xe0\0\x02zz", 8),
        pngHead(std::string(4, '\0'), std::string("\0\0\0\1", 4)),
        pngHead("\xff\xff\xff\xff", std::string("\0\0\0\1", 4)),
        pngHead(std::string("\0\0\0\1", 4), std::string()).substr(0, 20)}) {
    writeFile(folder / "a", text);
    EXPECT_EQ(refusalOf(folder / "a"),
              (folder / "a") + ": is not a whole picture: it does not tell its size");
  }
}

TEST(PictureHead, RefusesWhatWouldFillTheMemory) {
  const TemporaryFolder folder;
  writeFile(folder / "a.png", pngHead(std::string("\0\0\x20\0", 4), std::string("\0\0\x20\0", 4)));
  EXPECT_EQ(headOf(folder / "a.png").size.width, 8192);
  writeFile(folder / "a.png", pngHead(std::string("\0\0\x20\0", 4), std::string("\0\0\x20\1", 4)));
  EXPECT_EQ(refusalOf(folder / "a.png"),
            (folder / "a.png") + ": has 8192 x 8193 pixels, which is too large: make it smaller");
  writeFile(folder / "a.png", pngHead("\x7f\xff\xff\xff", "\x7f\xff\xff\xff"));
  EXPECT_NE(refusalOf(folder / "a.png").find("2147483647 x 2147483647"), std::string::npos);
}
