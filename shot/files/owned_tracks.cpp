// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/owned_tracks.h"

#include <cstddef>

namespace cornerpin {

std::int32_t OwnedTracks::track(const std::string& name, const std::string& owner) {
  if (repeated_.count(name) > 0) return joined(name, owner);
  const std::int32_t track = tracks_.track(name);
  const auto index = static_cast<std::size_t>(track);
  if (index >= owners_.size()) owners_.resize(index + 1, owner);
  if (owners_[index] == owner) return track;
  repeated_.insert(name);
  tracks_.rename(track, freeName(name, owners_[index]));
  joined_.emplace(name + kBetween + owners_[index], track);
  return joined(name, owner);
}

std::int32_t OwnedTracks::joined(const std::string& name, const std::string& owner) {
  const auto [known, isNew] = joined_.try_emplace(name + kBetween + owner, 0);
  if (isNew) known->second = tracks_.track(freeName(name, owner));
  return known->second;
}

std::string OwnedTracks::freeName(const std::string& name, const std::string& owner) const {
  std::string text = name + "@" + owner;
  while (tracks_.has(text)) text += '_';
  return text;
}

}  // namespace cornerpin
