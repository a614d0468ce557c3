// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_BLOCKS_H
#define SHOT_FILES_TRACK_BLOCKS_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "shot/files/output_file.h"
#include "shot/files/pin.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// What a format that writes one track after another can carry.
struct BlockRules {
  const char* format;           ///< for people
  std::string_view notInNames;  ///< characters
  bool hasWeights = false;      ///< without, rows of weight 0 are left out
};

/// Tracks as blocks: by the order of their names, each with its rows by rising frame. Tracks
/// without rows are left out. Names lose what the format cannot carry, blanks at their ends and
/// control characters, and stay apart.
class TrackBlocks {
 public:
  using Rows = std::vector<const Observation*>;

  /// The tracks must outlive this.
  TrackBlocks(const Tracks& tracks, const BlockRules& rules);

  std::size_t size() const { return blocks_.size(); }
  /// What the format cannot carry.
  const WriteNotes& notes() const { return notes_; }

  /// Writes for each block what `begin` appends for its name and number of rows, and what `append`
  /// does for each row.
  void write(OutputFile& out,
             const std::function<void(std::string&, const std::string&, std::size_t)>& begin,
             const std::function<void(std::string&, const Observation&)>& append) const;

 private:
  struct Block {
    std::string name;
    Rows rows;
  };
  void noteWeights(const Tracks& tracks, const BlockRules& rules);
  void nameBlocks(const BlockRules& rules);

  std::vector<Block> blocks_;
  WriteNotes notes_;
};

}  // namespace cornerpin

#endif
