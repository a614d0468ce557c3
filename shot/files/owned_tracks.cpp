// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/owned_tracks.h"

#include <cstddef>

namespace cornerpin {

namespace {

std::string joined(const std::string& name, const std::string& owner) { return name + "@" + owner; }

}  // namespace

std::int32_t OwnedTracks::track(const std::string& name, const std::string& owner) {
  if (repeated_.count(name) > 0) return tracks_.track(joined(name, owner));
  const std::int32_t track = tracks_.track(name);
  const auto index = static_cast<std::size_t>(track);
  if (index >= owners_.size()) owners_.resize(index + 1, owner);
  if (owners_[index] == owner) return track;
  repeated_.insert(name);
  tracks_.rename(track, joined(name, owners_[index]));
  return tracks_.track(joined(name, owner));
}

}  // namespace cornerpin
