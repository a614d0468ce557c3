// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_FAR_FRAME_H
#define SHOT_FILES_FAR_FRAME_H

#include <cstdint>
#include <optional>
#include <vector>

#include "shot/solve/tracks.h"

namespace cornerpin {

/// A frame that is likely to be a slip of the pen.
struct FarFrame {
  int frame = 0;
  std::int64_t away = 0;   ///< from the nearest frame that is seen
  std::size_t frames = 0;  ///< that are seen
  std::uint32_t line = 0;  ///< the first with a frame on its side of the gap
};

/// The first gap between frames that is longer than `kFar` and longer than 100 times the frames
/// that are seen, and what is on the side of it where fewer rows are; of as many, the later side.
/// \param rows  in any order, from the first frame to the last
std::optional<FarFrame> findFarFrame(const std::vector<Observation>& rows, std::int32_t first,
                                     std::int32_t last);

constexpr std::int64_t kFar = 10'000;
constexpr std::int64_t kFarOfFrames = 100;

}  // namespace cornerpin

#endif
