// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_OWNED_TRACKS_H
#define SHOT_FILES_OWNED_TRACKS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "shot/files/track_builder.h"

namespace cornerpin {

/// Tracks of a file in which one name may stand for several, each of a camera, clip or node of its
/// own. Where it does, that owner joins the name: "sign@Primary", "sign@Secondary".
class OwnedTracks {
 public:
  /// \param tracks  what the tracks become a part of; it outlives this, and gets its tracks here
  explicit OwnedTracks(TrackBuilder& tracks) : tracks_(tracks) {}

  /// The number of an owner's track, which is a new one where it has not been met.
  std::int32_t track(const std::string& name, const std::string& owner);

 private:
  std::int32_t joined(const std::string& name, const std::string& owner);
  std::string freeName(const std::string& name, const std::string& owner) const;

  static constexpr char kBetween = '\n';  // is in no name of a camera, clip or node
  TrackBuilder& tracks_;
  std::vector<std::string> owners_;           // of each track, the one that it was met with
  std::unordered_set<std::string> repeated_;  // names that more than one owner has
  std::unordered_map<std::string, std::int32_t> joined_;  // tracks of these by name and owner
};

}  // namespace cornerpin

#endif
