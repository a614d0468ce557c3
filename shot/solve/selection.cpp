// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/selection.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace cornerpin {

namespace {

constexpr std::int32_t kNoTrack = -1;

[[noreturn]] void refuse(std::string_view item, const char* why) {
  throw std::invalid_argument("\"" + std::string(item) + "\" " + why);
}

std::int32_t trackNamed(std::string_view name, const Tracks& tracks) {
  const auto found = std::find(tracks.names.begin(), tracks.names.end(), name);
  return found == tracks.names.end() ? kNoTrack
                                     : static_cast<std::int32_t>(found - tracks.names.begin());
}

// "FRAME" or "FIRST-LAST"; false for anything else.
bool parseFrames(std::string_view text, Selected& selected) {
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, selected.first);
  if (first.ec != std::errc()) return false;
  selected.last = selected.first;
  if (first.ptr == end) return true;
  if (*first.ptr != '-') return false;
  const auto last = std::from_chars(first.ptr + 1, end, selected.last);
  return last.ec == std::errc() && last.ptr == end && selected.first <= selected.last;
}

Selected parseItem(std::string_view item, const Tracks& tracks) {
  Selected selected;
  selected.first = std::numeric_limits<int>::min();
  selected.last = std::numeric_limits<int>::max();
  selected.track = trackNamed(item, tracks);
  if (selected.track != kNoTrack) return selected;
  const std::size_t colon = item.rfind(':');
  selected.track = trackNamed(item.substr(0, colon), tracks);
  if (selected.track == kNoTrack) refuse(item, "names no track of this shot");
  if (!parseFrames(item.substr(colon + 1), selected)) {
    refuse(item, "needs frames like 60 or 60-81 behind the colon");
  }
  if (selected.first > tracks.lastFrame() || selected.last < tracks.firstFrame()) {
    refuse(item, "names no frame of this shot");
  }
  return selected;
}

// Per track, what is selected of it.
class Lookup {
 public:
  Lookup(const std::vector<Selected>& selected, std::size_t tracks) : byTrack_(tracks) {
    for (const Selected& s : selected) byTrack_[static_cast<std::size_t>(s.track)].push_back(s);
  }
  bool has(const Observation& o) const {
    const auto& all = byTrack_[static_cast<std::size_t>(o.track)];
    return std::any_of(all.begin(), all.end(),
                       [&](const Selected& s) { return s.first <= o.frame && o.frame <= s.last; });
  }

 private:
  std::vector<std::vector<Selected>> byTrack_;
};

}  // namespace

std::vector<Selected> parseSelection(const std::string& text, const Tracks& tracks) {
  std::vector<Selected> selection;
  std::string_view rest = text;
  for (;;) {
    const std::size_t comma = rest.find(',');
    selection.push_back(parseItem(rest.substr(0, comma), tracks));
    if (comma == std::string_view::npos) return selection;
    rest.remove_prefix(comma + 1);
  }
}

void select(Tracks& tracks, const std::vector<Selected>& kept,
            const std::vector<Selected>& dropped) {
  const Lookup keep(kept, tracks.names.size());
  const Lookup drop(dropped, tracks.names.size());
  bool any = false;
  for (Observation& o : tracks.observations) {
    if ((!kept.empty() && !keep.has(o)) || drop.has(o)) o.weight = 0.0f;
    any = any || o.weight > 0.0f;
  }
  if (!any) throw std::invalid_argument("the selection leaves no track");
}

}  // namespace cornerpin
