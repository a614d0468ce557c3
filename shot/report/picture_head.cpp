// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_head.h"

#include <fmt/format.h>

#include <array>
#include <fstream>
#include <string_view>

#include "shot/files/input_error.h"

namespace cornerpin {

namespace {

constexpr std::string_view kJpegBegins = "\xff\xd8\xff";
constexpr std::string_view kPngBegins("\x89PNG\r\n\x1a\n");
constexpr int kFill = 0xff;  // before each marker of a JPEG file

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

std::string beginningOf(std::ifstream& file) {
  std::string bytes(kPngBegins.size(), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  file.clear();
  return bytes;
}

bool isJpeg(const std::string& beginning) {
  return beginning.compare(0, kJpegBegins.size(), kJpegBegins) == 0;
}

}  // namespace

bool isPicture(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string beginning = beginningOf(file);
  return isJpeg(beginning) || beginning == kPngBegins;
}

PictureHead headOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw InputError(path, "cannot be opened");
  const std::string beginning = beginningOf(file);
  PictureHead head;
  if (isJpeg(beginning)) {
    head.size = sizeOfJpeg(file);
  } else if (beginning == kPngBegins) {
    head = {PictureKind::Png, sizeOfPng(file)};
  } else {
    throw InputError(path, "is neither a JPEG nor a PNG file: convert it");
  }
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
