// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/frame_range.h"

#include <fmt/format.h>

#include <charconv>
#include <stdexcept>
#include <system_error>

namespace cornerpin {

namespace {

constexpr FrameRange kOpen;

[[noreturn]] void refuse(std::string_view text, const std::string& why) {
  throw std::invalid_argument(fmt::format("\"{}\" {}", text, why));
}

// Takes a number off the front of what is left of the text.
int takeFrame(std::string_view text, std::string_view& rest) {
  int frame = 0;
  const auto [stop, error] = std::from_chars(rest.data(), rest.data() + rest.size(), frame);
  if (error == std::errc::result_out_of_range) {
    refuse(text, fmt::format("has a frame that is too large: take one from {} to {}", kOpen.first,
                             kOpen.last));
  }
  if (error != std::errc()) refuse(text, "is no range of frames: write it like 60, 60-81 or 60-");
  rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
  return frame;
}

}  // namespace

bool looksLikeFrames(std::string_view text) {
  return text.find_first_not_of("-0123456789") == std::string_view::npos &&
         text.find_first_of("0123456789") != std::string_view::npos;
}

FrameRange parseFrameRange(std::string_view text) {
  std::string_view rest = text;
  FrameRange range;
  range.first = takeFrame(text, rest);
  if (rest == "-") return range;
  range.last = range.first;
  if (rest.empty()) return range;
  if (rest.front() == '-') {
    rest.remove_prefix(1);
    range.last = takeFrame(text, rest);
  }
  if (!rest.empty()) refuse(text, "is no range of frames: write it like 60, 60-81 or 60-");
  if (range.last < range.first) {
    refuse(text, fmt::format("runs backwards: write {}-{}", range.last, range.first));
  }
  return range;
}

std::string FrameRange::text() const {
  if (last == kOpen.last) return fmt::format("{}-", first);
  if (first == last) return fmt::format("{}", first);
  return fmt::format("{}-{}", first, last);
}

}  // namespace cornerpin
