// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_FRAME_RANGE_H
#define SHOT_SOLVE_FRAME_RANGE_H

#include <limits>
#include <string>
#include <string_view>

namespace cornerpin {

/// Frames from the first to the last, both included; open where the number is the type's limit.
struct FrameRange {
  int first = std::numeric_limits<int>::min();
  int last = std::numeric_limits<int>::max();

  bool has(int frame) const { return first <= frame && frame <= last; }
  /// What `parseFrameRange` reads back, where there is a beginning.
  std::string text() const;
  bool isAll() const { return *this == FrameRange(); }
  bool operator==(const FrameRange& other) const {
    return first == other.first && last == other.last;
  }
};

/// Whether the text holds nothing but digits and minus signs, one digit at least.
bool looksLikeFrames(std::string_view text);

/// Reads "60", "60-81" or "60-", which has no end. Numbers may be negative, as in "-10--3"; so
/// there is no form without a beginning: "-5" is one frame. Throws `std::invalid_argument` that
/// quotes the text and says what to write.
FrameRange parseFrameRange(std::string_view text);

}  // namespace cornerpin

#endif
