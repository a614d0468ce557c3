// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/picture_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "shot/files/byte_source.h"
#include "shot/files/input_error.h"
#include "shot/files/line_reader.h"
#include "shot/report/picture_head.h"

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

constexpr int kMostDigits = 10;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The last number in a file's name without its extension.
std::optional<int> numberIn(const fs::path& path) {
  const std::string stem = path.stem().string();
  std::size_t end = stem.size();
  while (end > 0 && !isDigit(stem[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && isDigit(stem[begin - 1])) --begin;
  int number = 0;
  const auto [stop, error] = std::from_chars(stem.data() + begin, stem.data() + end, number);
  return begin < end && error == std::errc() ? std::optional<int>(number) : std::nullopt;
}

bool isNamedLikePicture(const fs::path& path) {
  std::string extension = path.extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  constexpr std::array<std::string_view, 7> kExtensions = {".jpg", ".jpeg", ".png", ".webp",
                                                           ".gif", ".tif",  ".tiff"};
  return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

[[noreturn]] void refuse(const std::string& text, const std::string& why) {
  throw std::invalid_argument(
      fmt::format("\"{}\" {}: give a pattern such as img_%04d.jpg or img_####.jpg, a folder with "
                  "pictures, or a text file with the name of one on each line",
                  text, why));
}

}  // namespace

PictureFiles::PictureFiles(const std::string& text) {
  std::error_code ignored;
  if (fs::is_directory(text, ignored)) {
    addFolder(text);
  } else if (fs::is_regular_file(text, ignored)) {
    addList(text);
  } else {
    setPattern(text);
  }
}

std::string PictureFiles::of(int frame) const {
  if (digits_ == 0) {
    const auto found = paths_.find(frame);
    return found == paths_.end() ? std::string() : found->second;
  }
  const std::string path = nameOf(frame);
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) ? path : std::string();
}

std::string PictureFiles::nameOf(int frame) const {
  return digits_ == 0 ? "" : before_ + fmt::format("{:0{}}", frame, digits_) + behind_;
}

void PictureFiles::addFolder(const std::string& folder) {
  std::error_code failure;
  for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
       at.increment(failure)) {
    std::error_code ignored;
    const std::optional<int> frame = numberIn(at->path());
    if (frame && isNamedLikePicture(at->path()) && at->is_regular_file(ignored))
      add(*frame, at->path().string());
  }
  if (failure) refuse(folder, "cannot be read (" + failure.message() + ")");
  if (paths_.empty()) refuse(folder, "holds no picture with a number in its name");
}

void PictureFiles::addList(const std::string& path) {
  if (isPicture(path)) refuse(path, "is one picture");
  ByteSource source(path);
  LineReader lines(source);
  while (lines.nextFilled()) {
    const fs::path name(std::string(lines.text()));
    const std::optional<int> frame = numberIn(name);
    if (!frame) throw lines.error("this picture's name has no number, which tells its frame");
    add(*frame, (fs::path(path).parent_path() / name).string());
  }
  if (paths_.empty()) refuse(path, "is empty");
}

void PictureFiles::setPattern(const std::string& pattern) {
  int numbers = 0;
  for (std::size_t i = 0; i < pattern.size();) {
    std::string& text = numbers == 0 ? before_ : behind_;
    std::size_t end = i;
    if (pattern.compare(i, 2, "%%") == 0) {
      text += '%';
      i += 2;
    } else if (pattern[i] == '#') {
      while (end < pattern.size() && pattern[end] == '#') ++end;
      digits_ = static_cast<int>(std::min<std::size_t>(end - i, kMostDigits + 1));
      ++numbers;
      i = end;
    } else if (pattern[i] == '%') {
      end = std::min(pattern.find('d', i), pattern.size());
      const std::string width = pattern.substr(i + 1, end - i - 1);
      digits_ = 1;
      const auto [stop, error] =
          std::from_chars(width.data(), width.data() + width.size(), digits_);
      const bool isWidth = width.empty() || (width[0] == '0' && error == std::errc() &&
                                             stop == width.data() + width.size() && digits_ > 0);
      if (end == pattern.size() || !isWidth) refuse(pattern, "has a % that is not %d or %04d");
      ++numbers;
      i = end + 1;
    } else {
      text += pattern[i++];
    }
  }
  if (numbers == 0) refuse(pattern, "is no file or folder, and has no place for a frame's number");
  if (numbers > 1) refuse(pattern, "has more than one place for a frame's number");
  if (digits_ > kMostDigits) refuse(pattern, "has room for more digits than a frame has");
}

void PictureFiles::add(int frame, const std::string& path) {
  const auto [at, isNew] = paths_.emplace(frame, path);
  if (isNew) return;
  throw std::invalid_argument(fmt::format("\"{}\" and \"{}\" are both of frame {}: take one away",
                                          std::min(at->second, path), std::max(at->second, path),
                                          frame));
}

}  // namespace cornerpin
