// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/far_frame.h"

#include <algorithm>
#include <cstddef>

namespace cornerpin {

namespace {

using Rows = std::vector<Observation>;

// Each once, in order. In memory of a bit for each frame between, and where these are too many, of
// 4 bytes for each row.
std::vector<std::int32_t> framesSeen(const Rows& rows, std::int32_t first, std::int32_t last) {
  std::vector<std::int32_t> frames;
  const std::int64_t span = std::int64_t{last} - first + 1;
  if (span <= kMaxFrames) {
    std::vector<bool> seen(static_cast<std::size_t>(span));
    for (const Observation& o : rows) seen[static_cast<std::size_t>(o.frame - first)] = true;
    for (std::int64_t f = 0; f < span; ++f) {
      if (seen[static_cast<std::size_t>(f)]) frames.push_back(static_cast<std::int32_t>(first + f));
    }
    return frames;
  }
  for (const Observation& o : rows) frames.push_back(o.frame);
  std::sort(frames.begin(), frames.end());
  frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
  return frames;
}

// On one side of the gap between two frames.
FarFrame besideGap(const Rows& rows, std::int32_t before, std::int32_t behind) {
  const auto isBehind = [&](const Observation& o) { return o.frame >= behind; };
  const auto later = std::count_if(rows.begin(), rows.end(), isBehind);
  const bool isLater = 2 * later <= static_cast<std::ptrdiff_t>(rows.size());
  const Observation* found = nullptr;
  for (const Observation& o : rows) {
    if (isBehind(o) == isLater && (!found || o.line < found->line)) found = &o;
  }
  const std::int64_t away =
      isLater ? std::int64_t{found->frame} - before : std::int64_t{behind} - found->frame;
  return {found->frame, away, 0, found->line};
}

}  // namespace

std::optional<FarFrame> findFarFrame(const Rows& rows, std::int32_t first, std::int32_t last) {
  if (std::int64_t{last} - first <= kFar) return std::nullopt;
  const std::vector<std::int32_t> frames = framesSeen(rows, first, last);
  const auto count = static_cast<std::int64_t>(frames.size());
  for (std::size_t i = 1; i < frames.size(); ++i) {
    const std::int64_t gap = std::int64_t{frames[i]} - frames[i - 1];
    if (gap <= std::max(kFar, kFarOfFrames * count)) continue;
    FarFrame far = besideGap(rows, frames[i - 1], frames[i]);
    far.frames = frames.size();
    return far;
  }
  return std::nullopt;
}

}  // namespace cornerpin
