// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/nk_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace cornerpin {

namespace {

constexpr std::size_t kReported = 65536;  // rows between two reports

// So many of all tracks in all frames are worth a look for each row.
constexpr std::size_t kSparse = 4;

}  // namespace

void NkRows::add(std::string name, const std::string& node, std::uint32_t line,
                 const NodeKey* first, const NodeKey* last) {
  const std::int32_t track = newTrack(name, node);
  lanes_.push_back({std::move(name), track, line, first, last});
}

std::int32_t NkRows::newTrack(const std::string& name, const std::string& node) {
  const auto isFree = [&](std::int32_t track) {
    const auto index = static_cast<std::size_t>(track);
    if (index >= isTaken_.size()) isTaken_.resize(index + 1);
    return !isTaken_[index];
  };
  std::int32_t track = owned_.track(name, node);
  if (!isFree(track)) {
    std::size_t& number = repeats_.try_emplace(fmt::format("{}@{}", name, node), 1).first->second;
    while (!isFree(track)) track = owned_.track(name, fmt::format("{} {}", node, ++number));
  }
  isTaken_[static_cast<std::size_t>(track)] = true;
  return track;
}

void NkRows::flush() {
  std::size_t rows = 0;
  std::int64_t first = std::numeric_limits<std::int32_t>::max();
  std::int64_t last = std::numeric_limits<std::int32_t>::min();
  for (const Lane& lane : lanes_) {
    rows += static_cast<std::size_t>(lane.last - lane.next);
    first = std::min<std::int64_t>(first, lane.next->frame);
    last = std::max<std::int64_t>(last, lane.last[-1].frame);
  }
  if (lanes_.empty()) return;
  if (rows > tracks_.rows()) tracks_.reserve(tracks_.rows() + rows);
  const bool isSparse = static_cast<std::size_t>(last - first) >= kSparse * rows / lanes_.size();
  if (isSparse) {
    addByTracks();
  } else {
    addByFrames(first, last);
  }
  lanes_.clear();
}

void NkRows::addByTracks() {
  for (Lane& lane : lanes_) {
    while (lane.next != lane.last) addRow(lane);
  }
}

void NkRows::addByFrames(std::int64_t first, std::int64_t last) {
  std::sort(lanes_.begin(), lanes_.end(),
            [](const Lane& a, const Lane& b) { return a.name < b.name; });
  for (std::int64_t frame = first; frame <= last; ++frame) {
    for (Lane& lane : lanes_) {
      if (lane.next != lane.last && lane.next->frame == frame) addRow(lane);
    }
  }
}

void NkRows::addRow(Lane& lane) {
  const NodeKey& key = *lane.next++;
  tracks_.add({key.x, key.y, key.weight, lane.track, key.frame, lane.line});
  if (tracks_.rows() % kReported == 0) input_.report();
}

}  // namespace cornerpin
