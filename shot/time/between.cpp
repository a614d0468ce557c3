// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/between.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

#include "shot/time/left_out.h"

namespace cornerpin {

namespace {

// Of the four frames nearest to a time that is none, those that count.
std::vector<TimedTransform> nearest(const ShotResult& result, double frame) {
  const auto& all = result.frames;
  const auto last = static_cast<std::ptrdiff_t>(all.size()) - 1;
  const auto inner = static_cast<std::ptrdiff_t>(std::floor(frame - all.front().frame));
  const std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, std::min(inner - 1, last - 3));
  std::vector<TimedTransform> known;
  for (std::ptrdiff_t i = first; i <= std::min(first + 3, last); ++i) {
    const FrameResult& near = all[static_cast<std::size_t>(i)];
    if (i == inner || i == inner + 1 || isAnchor(near)) {
      known.push_back({static_cast<double>(near.frame), near.h});
    }
  }
  return known;
}

BetweenFrame betweenAt(const ShotResult& result, double frame) {
  const auto& all = result.frames;
  const double whole = std::floor(frame);
  if (whole == frame) return {frame, all[static_cast<std::size_t>(whole - all.front().frame)].h};
  const std::optional<Homography> h = transformBetween(
      nearest(result, frame), frame, result.quads.front().corners, result.baseCentre);
  if (!h) {
    throw std::invalid_argument(fmt::format("nothing leads from frame {} to frame {} by way of {}",
                                            whole, whole + 1.0, frame));
  }
  return {frame, *h};
}

}  // namespace

void requireBetween(const std::vector<double>& frames, int first, int last) {
  for (double frame : frames) {
    if (frame >= first && frame <= last) continue;
    throw std::invalid_argument(
        fmt::format("{} is not in the shot: take times from {} to {}", frame, first, last));
  }
}

void addBetween(ShotResult& result, std::vector<double> frames) {
  requireBetween(frames, result.frames.front().frame, result.frames.back().frame);
  std::sort(frames.begin(), frames.end());
  frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
  std::vector<BetweenFrame> between;
  between.reserve(frames.size());
  for (double frame : frames) between.push_back(betweenAt(result, frame));
  result.between = std::move(between);
}

}  // namespace cornerpin
