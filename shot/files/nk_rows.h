// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NK_ROWS_H
#define SHOT_FILES_NK_ROWS_H

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "shot/files/node_curve.h"
#include "shot/files/owned_tracks.h"
#include "shot/files/track_builder.h"
#include "shot/files/track_input.h"

namespace cornerpin {

/// Turns the tracks of a node, each with its keys, into rows.
class NkRows {
 public:
  /// Both must outlive it.
  NkRows(TrackBuilder& tracks, const TrackInput& input)
      : tracks_(tracks), owned_(tracks), input_(input) {}

  /// A track with its keys by rising frame, one at least, which must stay until `flush`. Where a
  /// name repeats, the node joins it (`OwnedTracks`), and a number where it repeats in the node.
  void add(std::string name, const std::string& node, std::uint32_t line, const NodeKey* first,
           const NodeKey* last);

  /// Adds the rows of these tracks: frame by frame in the order of the names, so that they need no
  /// sorting; track by track where most tracks are absent in most frames.
  void flush();

 private:
  struct Lane {
    std::string name;
    std::int32_t track;
    std::uint32_t line;
    const NodeKey* next;
    const NodeKey* last;
  };

  std::int32_t newTrack(const std::string& name, const std::string& node);
  void addByFrames(std::int64_t first, std::int64_t last);
  void addByTracks();
  void addRow(Lane& lane);

  TrackBuilder& tracks_;
  OwnedTracks owned_;
  const TrackInput& input_;
  std::vector<Lane> lanes_;
  std::vector<bool> isTaken_;                             // of tracks
  std::unordered_map<std::string, std::size_t> repeats_;  // how often a node had a name again
};

}  // namespace cornerpin

#endif
