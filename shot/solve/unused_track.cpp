// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/unused_track.h"

#include <fmt/format.h>

#include <algorithm>

namespace cornerpin {

namespace {

const char* describe(Unused why) {
  switch (why) {
    case Unused::NoWeight:
      return "of weight 0";
    case Unused::OutsideFrames:
      return "outside the chosen frames";
    case Unused::NotKept:
      return "not kept";
    case Unused::Dropped:
      return "dropped";
    case Unused::AbsentInBase:
      return "absent in the base frame";
    case Unused::NoPlace:
      return "of unknown place";
    case Unused::NotNeeded:
      return "not needed";
  }
  return "";
}

}  // namespace

const char* nameOf(Unused why) {
  switch (why) {
    case Unused::NoWeight:
      return "no-weight";
    case Unused::OutsideFrames:
      return "outside-frames";
    case Unused::NotKept:
      return "not-kept";
    case Unused::Dropped:
      return "dropped";
    case Unused::AbsentInBase:
      return "absent-in-base";
    case Unused::NoPlace:
      return "no-place";
    case Unused::NotNeeded:
      return "not-needed";
  }
  return "";
}

std::string describe(const std::vector<UnusedTrack>& tracks) {
  std::string text;
  for (Unused why : kReasonsUnused) {
    const auto count = std::count_if(tracks.begin(), tracks.end(),
                                     [why](const UnusedTrack& track) { return track.why == why; });
    if (count == 0) continue;
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, describe(why));
  }
  return text;
}

}  // namespace cornerpin
