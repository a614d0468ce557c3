// SPDX-License-Identifier: BSD-3-Clause
#include "shot/interface/boundary.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <stdexcept>

namespace cornerpin::shot {

InputError::InputError(const std::string& text, const std::string& file, std::uint32_t line)
    : std::runtime_error(text), file(file), line(line) {}
InputError::~InputError() = default;

Cancelled::~Cancelled() = default;
const char* Cancelled::what() const noexcept { return "cancelled"; }

cornerpin::Progress Watch::progress() {
  if (!asked_) return {};
  return [this](Phase phase, std::size_t done, std::size_t total) { report(phase, done, total); };
}

void Watch::check() const {
  if (ended_) std::rethrow_exception(ended_);
}

void Watch::report(Phase phase, std::size_t done, std::size_t total) {
  check();
  try {
    if (!asked_(nameOf(phase), done, total)) throw Cancelled();
  } catch (...) {
    ended_ = std::current_exception();
    throw;
  }
}

void refuseWord(const char* option, const std::string& word,
                std::initializer_list<const char*> words) {
  throw std::invalid_argument(
      fmt::format("{}: \"{}\" is none of {}", option, word, fmt::join(words, ", ")));
}

void requirePositive(const char* option, const std::optional<double>& number) {
  if (!number || (std::isfinite(*number) && *number > 0.0)) return;
  throw std::invalid_argument(
      fmt::format("{}: a number above 0 is wanted, not {}", option, *number));
}

std::optional<Format> formatOfWord(const char* option, const std::string& word) {
  if (word.empty()) return std::nullopt;
  if (const std::optional<Format> format = formatNamed(word)) return format;
  std::string words;
  for (const FormatFacts& facts : allFormats()) {
    words += (words.empty() ? "" : ", ") + std::string(facts.word);
  }
  throw std::invalid_argument(fmt::format("{}: \"{}\" is none of {}", option, word, words));
}

FrameRange frameRangeOf(const std::string& text) {
  try {
    return text.empty() ? FrameRange() : parseFrameRange(text);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(std::string("frames: ") + error.what());
  }
}

cornerpin::Picture pictureOf(const Picture& picture) {
  const auto requirePixels = [](const char* name, const std::optional<int>& pixels) {
    if (!pixels || *pixels > 0) return;
    throw std::invalid_argument(
        fmt::format("{}: a number of pixels above 0 is wanted, not {}", name, *pixels));
  };
  requirePixels("width", picture.width);
  requirePixels("height", picture.height);
  if (picture.pixelCentre && *picture.pixelCentre != 0.0 && *picture.pixelCentre != 0.5) {
    throw std::invalid_argument(
        fmt::format("pixel_centre: 0 or 0.5 is wanted, not {}", *picture.pixelCentre));
  }
  const std::optional<int>& first = picture.firstFrame;
  if (first && (*first > kFurthestFrame || *first < -kFurthestFrame)) {
    throw std::invalid_argument(
        fmt::format("first_frame: {} is further than {} from 0", *first, kFurthestFrame));
  }
  cornerpin::Picture made;
  made.width = picture.width;
  made.height = picture.height;
  made.pixelCentre = picture.pixelCentre;
  made.firstFrame = picture.firstFrame;
  if (picture.y == "up") {
    made.y = YAxis::Up;
  } else if (picture.y == "down") {
    made.y = YAxis::Down;
  } else if (!picture.y.empty()) {
    refuseWord("y", picture.y, {"up", "down"});
  }
  return made;
}

Picture pictureOf(const cornerpin::Picture& picture) {
  Picture made;
  made.width = picture.width;
  made.height = picture.height;
  made.pixelCentre = picture.pixelCentre;
  made.firstFrame = picture.firstFrame;
  if (picture.y) made.y = *picture.y == YAxis::Up ? "up" : "down";
  return made;
}

}  // namespace cornerpin::shot
