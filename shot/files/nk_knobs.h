// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_NK_KNOBS_H
#define SHOT_FILES_NK_KNOBS_H

#include <cstddef>
#include <string_view>

/// What nodes, their knobs and the columns of trackers are called.
namespace cornerpin {

enum class NkClass { Tracker, Planar, Pin, Root, Skipped, Other };

/// Of the word in front of a node's brace, maybe with a version in digits and underscores.
/// `Skipped` are those that move something and have no tracks, which people may take for trackers.
NkClass classOf(std::string_view word);

/// A place among the knobs of a node that have one track or corner each.
constexpr std::size_t kMostPlaces = 9;
constexpr std::size_t kNoPlace = kMostPlaces;

/// The digit behind the knob's name less one: where it is less than `most`.
std::size_t numberedPlace(std::string_view name, std::string_view knob, std::size_t most);

/// Of `track1` to `track9` of a tracker, or of the four outputs of a planar tracker.
std::size_t trackPlace(NkClass node, std::string_view knob);

/// The columns of a tracker's rows that are read.
enum class NkColumn : unsigned char { Other, Enable, Name, X, Y };
NkColumn columnOf(std::string_view name);

}  // namespace cornerpin

#endif
