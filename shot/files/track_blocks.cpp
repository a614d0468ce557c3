// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_blocks.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

#include "shot/files/number_text.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kNoted = 10;  // names

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

std::string written(std::string_view name, std::string_view refused) {
  std::string text(trimmed(name));
  for (char& c : text) {
    if (isControl(c) || refused.find(c) != std::string_view::npos) c = '_';
  }
  return text.empty() ? "_" : text;
}

}  // namespace

TrackBlocks::TrackBlocks(const Tracks& tracks, const BlockRules& rules)
    : blocks_(tracks.names.size()) {
  for (std::size_t i = 0; i < blocks_.size(); ++i) blocks_[i].name = tracks.names[i];
  for (const Observation& row : tracks.observations) {
    if (row.weight == 0.0f && !rules.hasWeights) continue;
    blocks_[static_cast<std::size_t>(row.track)].rows.push_back(&row);
  }
  blocks_.erase(std::remove_if(blocks_.begin(), blocks_.end(),
                               [](const Block& block) { return block.rows.empty(); }),
                blocks_.end());
  nameBlocks(rules);
  if (!rules.hasWeights) noteWeights(tracks, rules);
}

void TrackBlocks::nameBlocks(const BlockRules& rules) {
  std::unordered_set<std::string> taken;
  for (const Block& block : blocks_) taken.insert(block.name);
  std::size_t renamed = 0;
  for (Block& block : blocks_) {
    std::string name = written(block.name, rules.notInNames);
    if (name == block.name) continue;
    while (!taken.insert(name).second) name += '_';
    if (renamed++ < kNoted) {
      notes_.push_back(fmt::format("the name {} is written as {}: {} cannot carry it",
                                   shown(block.name), shown(name), rules.format));
    }
    block.name = std::move(name);
  }
  if (renamed > kNoted) {
    notes_.push_back(
        fmt::format("{} are written otherwise, too", counted(renamed - kNoted, "more name")));
  }
}

void TrackBlocks::noteWeights(const Tracks& tracks, const BlockRules& rules) {
  std::size_t absent = 0;
  std::size_t weighted = 0;
  for (const Observation& row : tracks.observations) {
    if (row.weight == 0.0f) {
      ++absent;
    } else if (row.weight != 1.0f) {
      ++weighted;
    }
  }
  if (absent > 0) {
    notes_.push_back(fmt::format("{} of weight 0, where the track is absent, {} left out",
                                 counted(absent, "position"), absent == 1 ? "is" : "are"));
  }
  if (weighted > 0) {
    notes_.push_back(fmt::format("{} carries no weights: those of {} are lost", rules.format,
                                 counted(weighted, "position")));
  }
}

void TrackBlocks::write(
    OutputFile& out,
    const std::function<void(std::string&, const std::string&, std::size_t)>& begin,
    const std::function<void(std::string&, const Observation&)>& append) const {
  constexpr std::size_t kPiece = 65536;
  std::string text;
  for (const Block& block : blocks_) {
    begin(text, block.name, block.rows.size());
    for (const Observation* row : block.rows) {
      append(text, *row);
      if (text.size() < kPiece) continue;
      out.write(text);
      text.clear();
    }
  }
  out.write(text);
}

}  // namespace cornerpin
