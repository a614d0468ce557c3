// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_head.h"

#include <fmt/format.h>
#include <gd.h>

#include <array>
#include <fstream>
#include <optional>
#include <string_view>

#include "shot/files/input_error.h"
#include "shot/report/tiff_file.h"

namespace cornerpin {

namespace {

constexpr std::size_t kLongestBeginning = 16;
constexpr int kFill = 0xff;  // before each marker of a JPEG file

// How a file of each kind begins: `more` stands at `moreAt`.
struct Beginning {
  PictureKind kind;
  const char* name;
  const char* extension;  // by which the library that reads pictures calls the kind
  std::string_view begins;
  std::string_view more = {};
  std::size_t moreAt = 0;
};

constexpr std::array<Beginning, 8> kBeginnings = {{
    {PictureKind::Jpeg, "JPEG", "a.jpg", "\xff\xd8\xff"},
    {PictureKind::Png, "PNG", "a.png", "\x89PNG\r\n\x1a\n"},
    {PictureKind::WebP, "WebP", "a.webp", "RIFF", "WEBPVP8", 8},
    {PictureKind::Gif, "GIF", "a.gif", "GIF87a"},
    {PictureKind::Gif, "GIF", "a.gif", "GIF89a"},
    {PictureKind::Tiff, "TIFF", "a.tif", {"II*\0", 4}},
    {PictureKind::Tiff, "TIFF", "a.tif", {"MM\0*", 4}},
    {PictureKind::Tiff, "TIFF", "a.tif", {"II+\0", 4}},
}};

int next(std::ifstream& file) { return file.get(); }

int nextTwo(std::ifstream& file) {
  const int high = next(file);
  const int low = next(file);
  return high < 0 || low < 0 ? -1 : 256 * high + low;
}

// Of the markers of a JPEG file those of frames, which tell the size.
bool isFrameMarker(int marker) {
  constexpr int kFirst = 0xc0;
  constexpr int kLast = 0xcf;
  constexpr std::array<int, 3> kOthers = {0xc4, 0xc8, 0xcc};
  if (marker < kFirst || marker > kLast) return false;
  return marker != kOthers[0] && marker != kOthers[1] && marker != kOthers[2];
}

// From the first marker behind the file's beginning.
PictureSize sizeOfJpeg(std::ifstream& file) {
  file.seekg(2);
  while (file) {
    if (next(file) != kFill) return {};
    int marker = next(file);
    while (marker == kFill) marker = next(file);
    const int length = nextTwo(file);
    if (length < 2) return {};
    if (isFrameMarker(marker)) {
      next(file);  // bits of a sample
      const int height = nextTwo(file);
      return {nextTwo(file), height};
    }
    file.seekg(length - 2, std::ios::cur);
  }
  return {};
}

PictureSize sizeOfPng(std::ifstream& file) {
  constexpr std::size_t kTypeAt = 12;
  constexpr int kTooLarge = 0x7fff;  // high halves of sides that no picture may have
  file.seekg(kTypeAt);
  std::array<char, 4> type{};
  file.read(type.data(), type.size());
  if (std::string_view(type.data(), type.size()) != "IHDR") return {};
  const auto side = [&] {
    const int high = nextTwo(file);
    const int low = nextTwo(file);
    return high < 0 || low < 0 || high > kTooLarge ? -1 : 65536 * high + low;
  };
  const int width = side();
  return {width, side()};
}

// The low byte first, as GIF and WebP files have it.
int nextLow(std::ifstream& file, int bytes) {
  int value = 0;
  for (int i = 0; i < bytes; ++i) {
    const int byte = next(file);
    if (byte < 0) return -1;
    value += byte << (8 * i);
  }
  return value;
}

PictureSize sizeOfGif(std::ifstream& file) {
  constexpr std::size_t kSizeAt = 6;
  file.seekg(kSizeAt);
  const int width = nextLow(file, 2);
  return {width, nextLow(file, 2)};
}

// By the first chunk, which is of one of three kinds.
PictureSize sizeOfWebP(std::ifstream& file, const std::string& path) {
  constexpr std::size_t kKindAt = 15;
  constexpr std::size_t kContentAt = 20;
  constexpr int kSide = 0x3fff;  // the bits of a side
  constexpr int kAnimated = 0x02;
  file.seekg(kKindAt);
  const int kind = next(file);
  file.seekg(kContentAt);
  if (kind == 'X') {
    const int flags = nextLow(file, 1);
    if (flags >= 0 && (flags & kAnimated) != 0)
      throw InputError(path, "is an animation: give its frames as pictures");
    nextLow(file, 3);
    const int width = nextLow(file, 3) + 1;
    return {width, nextLow(file, 3) + 1};
  }
  if (kind == 'L') {
    nextLow(file, 1);
    const int low = nextLow(file, 2);
    const int high = nextLow(file, 2);
    if (low < 0 || high < 0) return {};
    return {(low & kSide) + 1, ((low >> 14 | high << 2) & kSide) + 1};
  }
  nextLow(file, 3);
  nextLow(file, 3);
  const int width = nextLow(file, 2);
  const int height = nextLow(file, 2);
  return width < 0 || height < 0 ? PictureSize() : PictureSize{width & kSide, height & kSide};
}

std::optional<Beginning> beginningOf(std::ifstream& file) {
  std::string bytes(kLongestBeginning, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  file.clear();
  for (const Beginning& one : kBeginnings) {
    if (bytes.compare(0, one.begins.size(), one.begins) == 0 && bytes.size() >= one.moreAt &&
        bytes.compare(one.moreAt, one.more.size(), one.more) == 0)
      return one;
  }
  return std::nullopt;
}

PictureSize sizeIn(std::ifstream& file, PictureKind kind, const std::string& path) {
  switch (kind) {
    case PictureKind::Jpeg:
      return sizeOfJpeg(file);
    case PictureKind::Png:
      return sizeOfPng(file);
    case PictureKind::WebP:
      return sizeOfWebP(file, path);
    case PictureKind::Gif:
      return sizeOfGif(file);
    case PictureKind::Tiff:
      return sizeOfTiff(path);
  }
  return {};
}

}  // namespace

bool isPicture(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return beginningOf(file).has_value();
}

PictureHead headOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw InputError(path, "cannot be opened");
  const std::optional<Beginning> beginning = beginningOf(file);
  if (!beginning) {
    throw InputError(path, "is no JPEG, PNG, WebP, GIF or TIFF file: convert it to one");
  }
  if (::gdSupportsFileType(beginning->extension, 0) == 0) {
    throw InputError(path, fmt::format("is a {} file, which libgd does not read here: convert it",
                                       beginning->name));
  }
  const PictureHead head = {beginning->kind, sizeIn(file, beginning->kind, path)};
  if (head.size.width < 1 || head.size.height < 1) {
    throw InputError(path, "is not a whole picture: it does not tell its size");
  }
  if (std::int64_t{head.size.width} * head.size.height > kMostPixels) {
    throw InputError(path, fmt::format("has {} x {} pixels, which is too large: make it smaller",
                                       head.size.width, head.size.height));
  }
  return head;
}

}  // namespace cornerpin
