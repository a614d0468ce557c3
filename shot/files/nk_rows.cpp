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

std::int32_t NkRows::newTrack(std::string& name, const std::string& node) {
  std::size_t known = tracks_.names();
  std::int32_t track = tracks_.track(name);
  if (tracks_.names() > known) return track;
  const std::string joined = fmt::format("{} {}", name, node);
  std::size_t& number = repeats_.try_emplace(joined, 0).first->second;
  do {
    ++number;
    name = number == 1 ? joined : fmt::format("{} {}", joined, number);
    known = tracks_.names();
    track = tracks_.track(name);
  } while (tracks_.names() == known);
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
