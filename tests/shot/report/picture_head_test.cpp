// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_head.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <array>
#include <tuple>
#include <vector>

#include "shot/files/input_error.h"
#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/made_tiff.h"
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

TEST(PictureHead, TellsThatOfWebPGifAndTiffFiles) {
  const TemporaryFolder folder;
  const auto expectHead = [&](const char* name, PictureKind kind) {
    const PictureHead head = headOf(folder / name);
    EXPECT_EQ(head.kind, kind) << name;
    EXPECT_EQ(head.size.width, 321) << name;
    EXPECT_EQ(head.size.height, 1123) << name;
    EXPECT_TRUE(isPicture(folder / name)) << name;
  };
  writeWebP(folder / "a", 321, 1123);
  expectHead("a", PictureKind::WebP);
  writeLosslessWebP(folder / "b", 321, 1123);
  expectHead("b", PictureKind::WebP);
  writeGif(folder / "c", 321, 1123);
  expectHead("c", PictureKind::Gif);
  writeTiff(folder / "d", 321, 1123);
  expectHead("d", PictureKind::Tiff);
}

// 16,384 pixels are the most that its sides have room for.
TEST(PictureHead, TellsThatOfAWebPFileInParts) {
  const TemporaryFolder folder;
  const auto extended = [](char flags) {
    return std::string("RIFF\x20\0\0\0WEBPVP8X\x0a\0\0\0", 20) + flags +
           std::string("\0\0\0\xff\x3f\0\x02\0\0", 9);
  };
  writeFile(folder / "a", extended('\x10'));
  EXPECT_EQ(headOf(folder / "a").size.width, 16'384);
  EXPECT_EQ(headOf(folder / "a").size.height, 3);
  writeFile(folder / "a", extended('\x12'));
  EXPECT_EQ(refusalOf(folder / "a"),
            (folder / "a") + ": is an animation: give its frames as pictures");
}

// Numbers of a TIFF file have their low or their high byte first, and positions 4 or 8 bytes.
TEST(PictureHead, ReadsTiffFilesOfEitherOrderAndSize) {
  const TemporaryFolder folder;
  for (const char* mode : {"wl", "wb", "wl8"}) {
    TIFF* file = ::TIFFOpen((folder / "a").c_str(), mode);
    ::TIFFSetField(file, TIFFTAG_IMAGEWIDTH, 3);
    ::TIFFSetField(file, TIFFTAG_IMAGELENGTH, 1);
    ::TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
    ::TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    std::array<unsigned char, 3> row{};
    ::TIFFWriteScanline(file, row.data(), 0, 0);
    ::TIFFClose(file);
    EXPECT_EQ(headOf(folder / "a").size.width, 3) << mode;
    EXPECT_EQ(headOf(folder / "a").size.height, 1) << mode;
  }
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
  for (const char* text : {"", "GIF88a", "\xff\xd8", "\x89PNG\r\n\x1a", "<svg/>", "II", "RIFF",
                           "BM", "RIFF\x10\x10\x10\x10WAVEfmt "}) {
    writeFile(folder / "a", text);
    EXPECT_EQ(refusalOf(folder / "a"),
              (folder / "a") + ": is no JPEG, PNG, WebP, GIF or TIFF file: convert it to one");
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

TEST(PictureHead, RefusesHeadsOfOtherKindsThatAreCutOff) {
  const TemporaryFolder folder;
  writeWebP(folder / "a.webp", 20, 10);
  writeLosslessWebP(folder / "b.webp", 20, 10);
  writeGif(folder / "a.gif", 20, 10);
  writeTiff(folder / "a.tif", 20, 10);
  testing::internal::CaptureStderr();
  for (const auto& [name, least, most] : std::vector<std::tuple<const char*, int, int>>{
           {"a.webp", 16, 30}, {"b.webp", 16, 25}, {"a.gif", 6, 10}, {"a.tif", 4, 60}}) {
    const std::string whole = readFile(folder / name);
    for (int length = least; length < most; ++length) {
      writeFile(folder / "cut", whole.substr(0, static_cast<std::size_t>(length)));
      EXPECT_EQ(refusalOf(folder / "cut"),
                (folder / "cut") + ": is not a whole picture: it does not tell its size")
          << name << " " << length;
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
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
