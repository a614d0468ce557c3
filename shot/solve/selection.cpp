// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/selection.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "shot/solve/glob.h"
#include "shot/solve/nearest_names.h"

namespace cornerpin {

namespace {

constexpr std::int32_t kNoTrack = -1;
constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kShown = 3;  // names in a message
constexpr const char* kBlanks = " \t";

[[noreturn]] void refuse(std::string_view item, const std::string& why) {
  throw std::invalid_argument(fmt::format("\"{}\" {}", item, why));
}

std::int32_t trackNamed(std::string_view name, const Tracks& tracks) {
  const auto found = std::find(tracks.names.begin(), tracks.names.end(), name);
  return found == tracks.names.end() ? kNoTrack
                                     : static_cast<std::int32_t>(found - tracks.names.begin());
}

std::string quoted(std::string_view name) {
  std::string text = "\"";
  for (char c : name) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  return text + '"';
}

// A name as lists have it, for messages and what else reads well without needless quotes.
std::string listed(const std::string& name) {
  return name.find_first_of(",\"") == std::string::npos ? name : quoted(name);
}

std::string joined(const std::vector<std::string>& names, const char* last) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 < names.size() ? ", " : last;
    text += listed(names[i]);
  }
  return text;
}

// Refuses an item whose name or pattern no track has.
[[noreturn]] void refuseUnknown(std::string_view item, std::string_view name,
                                const Tracks& tracks) {
  std::string letters(name);
  letters.erase(std::remove(letters.begin(), letters.end(), '*'), letters.end());
  const std::vector<std::string> nearest = nearestNames(letters, tracks.names, kShown);
  if (!nearest.empty()) {
    refuse(item,
           fmt::format("names no track of this shot: did you mean {}?", joined(nearest, " or ")));
  }
  const std::size_t shown = std::min(tracks.names.size(), kShown);
  const std::vector<std::string> first(tracks.names.begin(),
                                       tracks.names.begin() + static_cast<std::ptrdiff_t>(shown));
  refuse(item, fmt::format("names no track of this shot: take one of {}{}", joined(first, ", "),
                           tracks.names.size() > shown ? " ..." : ""));
}

FrameRange framesOf(std::string_view item, std::string_view text, const Tracks& tracks) {
  FrameRange frames;
  try {
    frames = parseFrameRange(text);
  } catch (const std::invalid_argument& error) {
    refuse(item, fmt::format("names no frames: {}", error.what()));
  }
  if (frames.first > tracks.lastFrame() || frames.last < tracks.firstFrame()) {
    refuse(item, fmt::format("names no frame of this shot: take some from {} to {}",
                             tracks.firstFrame(), tracks.lastFrame()));
  }
  return frames;
}

// The track that has the name, or else all that match it.
std::vector<std::int32_t> tracksOf(std::string_view name, const Tracks& tracks) {
  if (const std::int32_t track = trackNamed(name, tracks); track != kNoTrack) return {track};
  std::vector<std::int32_t> found;
  if (!Glob::isPattern(name)) return found;
  const Glob glob(name);
  for (std::size_t t = 0; t < tracks.names.size(); ++t) {
    if (glob.matches(tracks.names[t])) found.push_back(static_cast<std::int32_t>(t));
  }
  return found;
}

std::vector<Selected> inFrames(const std::vector<std::int32_t>& tracks, const FrameRange& frames) {
  std::vector<Selected> selected;
  selected.reserve(tracks.size());
  for (std::int32_t track : tracks) selected.push_back({track, frames});
  return selected;
}

// Where the quoted name that the text begins with ends, behind its quote; none where it never does.
std::size_t endOfQuoted(std::string_view text) {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] != '"') continue;
    if (i + 1 == text.size() || text[i + 1] != '"') return i + 1;
    ++i;
  }
  return kNone;
}

std::string unquoted(std::string_view text) {
  std::string name;
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {
    name += text[i];
    if (text[i] == '"') ++i;
  }
  return name;
}

bool isQuoted(std::string_view item) { return !item.empty() && item.front() == '"'; }

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == kNone) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// "NAME" in quotes, with or without frames.
Selected parseQuoted(std::string_view item, const Tracks& tracks) {
  const std::size_t end = endOfQuoted(item);
  if (end == kNone) refuse(item, "has a quote that is never closed: close it");
  const std::string name = unquoted(item.substr(0, end));
  Selected selected;
  selected.track = trackNamed(name, tracks);
  if (selected.track == kNoTrack) refuseUnknown(item, name, tracks);
  if (end == item.size()) return selected;
  if (item[end] != ':') refuse(item, "goes on behind its quotes: put a colon and frames there");
  selected.frames = framesOf(item, item.substr(end + 1), tracks);
  return selected;
}

// NAME or NAME:FRAMES.
std::vector<Selected> parsePlain(std::string_view item, const Tracks& tracks) {
  const std::size_t colon = item.rfind(':');
  const bool hasColon = colon != kNone;
  const std::string_view name = item.substr(0, colon);
  const std::string_view frames = hasColon ? item.substr(colon + 1) : std::string_view();
  if (looksLikeFrames(frames)) {
    const std::vector<std::int32_t> found = tracksOf(name, tracks);
    if (!found.empty()) return inFrames(found, framesOf(item, frames, tracks));
  }
  const std::vector<std::int32_t> found = tracksOf(item, tracks);
  if (!found.empty()) return inFrames(found, {});
  if (hasColon && trackNamed(name, tracks) != kNoTrack) framesOf(item, frames, tracks);  // refuses
  refuseUnknown(item, name, tracks);
}

std::vector<Selected> parseItem(std::string_view item, const Tracks& tracks) {
  if (const std::int32_t track = trackNamed(item, tracks); track != kNoTrack && !isQuoted(item)) {
    return {{track, {}}};
  }
  item = withoutBlanks(item);
  if (item.empty()) refuse(item, "is no track's name: take the comma beside it away");
  if (isQuoted(item)) return {parseQuoted(item, tracks)};
  return parsePlain(item, tracks);
}

// Where the list's first item ends.
std::size_t endOfItem(std::string_view list) {
  const std::size_t blanks = std::min(list.find_first_not_of(kBlanks), list.size());
  const std::string_view item = list.substr(blanks);
  const std::size_t quotes = isQuoted(item) ? endOfQuoted(item) : 0;
  return quotes == kNone ? list.size() : std::min(list.find(',', blanks + quotes), list.size());
}

// Per track, what is selected of it.
class Lookup {
 public:
  Lookup(const std::vector<Selected>& selected, std::size_t tracks) : byTrack_(tracks) {
    for (const Selected& s : selected) {
      byTrack_[static_cast<std::size_t>(s.track)].push_back(s.frames);
    }
  }
  bool has(const Observation& o) const {
    const auto& all = byTrack_[static_cast<std::size_t>(o.track)];
    return std::any_of(all.begin(), all.end(),
                       [&](const FrameRange& frames) { return frames.has(o.frame); });
  }

 private:
  std::vector<std::vector<FrameRange>> byTrack_;
};

// By track, whether anything of it counts.
std::vector<bool> countingIn(const Tracks& tracks) {
  std::vector<bool> counts(tracks.names.size());
  for (const Observation& o : tracks.observations) {
    if (o.weight > 0.0f) counts[static_cast<std::size_t>(o.track)] = true;
  }
  return counts;
}

// Does something to the tracks, and notes those that count before and not behind it. Returns
// whether any is left.
template <class Change>
bool noteEmptied(Tracks& tracks, Unused why, const Change& change) {
  const std::vector<bool> before = countingIn(tracks);
  change();
  const std::vector<bool> behind = countingIn(tracks);
  tracks.emptied.resize(tracks.names.size());
  for (std::size_t t = 0; t < before.size(); ++t) {
    if (before[t] && !behind[t]) tracks.emptied[t] = why;
  }
  return std::find(behind.begin(), behind.end(), true) != behind.end();
}

std::vector<Selected> parseLists(const char* option, const std::vector<std::string>& lists,
                                 const Tracks& tracks) {
  std::vector<Selected> selection;
  for (const std::string& list : lists) {
    try {
      const std::vector<Selected> items = parseSelection(list, tracks);
      selection.insert(selection.end(), items.begin(), items.end());
    } catch (const std::invalid_argument& error) {
      throw std::invalid_argument(std::string(option) + ": " + error.what());
    }
  }
  return selection;
}

// Leaves those observations without weight of which that is asked.
template <class Condition>
bool takeWeight(Tracks& tracks, Unused why, const Condition& condition) {
  return noteEmptied(tracks, why, [&] {
    for (Observation& o : tracks.observations) {
      if (condition(o)) o.weight = 0.0f;
    }
  });
}

}  // namespace

std::vector<Selected> parseSelection(const std::string& text, const Tracks& tracks) {
  if (const std::int32_t track = trackNamed(text, tracks); track != kNoTrack && !isQuoted(text)) {
    return {{track, {}}};
  }
  std::vector<Selected> selection;
  std::string_view rest = text;
  for (;;) {
    const std::size_t end = endOfItem(rest);
    const std::vector<Selected> item = parseItem(rest.substr(0, end), tracks);
    selection.insert(selection.end(), item.begin(), item.end());
    if (end == rest.size()) return selection;
    rest.remove_prefix(end + 1);
  }
}

std::string textOf(const Selected& selected, const Tracks& tracks) {
  const std::string& name = tracks.names[static_cast<std::size_t>(selected.track)];
  const bool inAll = selected.frames.isAll();
  const std::string frames = inAll ? "" : ":" + selected.frames.text();
  const bool plain = name.find_first_of(",\"*?[") == kNone && withoutBlanks(name) == name;
  const bool meansAnother = !inAll && trackNamed(name + frames, tracks) != kNoTrack;
  return (plain && !meansAnother ? name : quoted(name)) + frames;
}

void takeFrames(Tracks& tracks, const FrameRange& frames) {
  if (frames.isAll()) return;
  const int first = tracks.firstFrame();
  const int last = tracks.lastFrame();
  const bool any = noteEmptied(tracks, Unused::OutsideFrames, [&] {
    auto& rows = tracks.observations;
    const auto isOutside = [&](const Observation& o) { return !frames.has(o.frame); };
    rows.erase(std::remove_if(rows.begin(), rows.end(), isOutside), rows.end());
    tracks.arrange();
  });
  if (any) return;
  throw std::invalid_argument(fmt::format(
      "\"{}\" has no frame with a track: take some from {} to {}", frames.text(), first, last));
}

void select(Tracks& tracks, const std::vector<Selected>& kept,
            const std::vector<Selected>& dropped) {
  const Lookup keep(kept, tracks.names.size());
  const Lookup drop(dropped, tracks.names.size());
  const auto isOutside = [&](const Observation& o) { return !kept.empty() && !keep.has(o); };
  takeWeight(tracks, Unused::NotKept, isOutside);
  const auto isDropped = [&](const Observation& o) { return drop.has(o); };
  if (!takeWeight(tracks, Unused::Dropped, isDropped)) {
    throw std::invalid_argument("the selection leaves no track");
  }
}

void applySelection(Tracks& tracks, const FrameRange& frames, const std::vector<std::string>& keep,
                    const std::vector<std::string>& drop) {
  const std::vector<Selected> kept = parseLists("--keep", keep, tracks);
  const std::vector<Selected> dropped = parseLists("--drop", drop, tracks);
  try {
    takeFrames(tracks, frames);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(std::string("--frames: ") + error.what());
  }
  try {
    select(tracks, kept, dropped);
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument(frames.isAll()
                                    ? "--keep and --drop leave no track: keep or drop others"
                                    : "--keep and --drop leave no track in the frames of --frames: "
                                      "keep or drop others");
  }
}

}  // namespace cornerpin
