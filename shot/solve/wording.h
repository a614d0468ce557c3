// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_WORDING_H
#define SHOT_SOLVE_WORDING_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shot/plane/picture.h"
#include "shot/solve/named_quad.h"

/// How results are put for people. Whatever prints them uses these words.
namespace cornerpin {

/// A length with three digits, or all in front of the point: "0.0918 px", "17.9 px", "1234 px".
std::string pixels(double length);

/// "1 frame", "7 frames".
std::string counted(std::size_t count, const std::string& noun);

/// A text from a file, such as a name, as a terminal may be given it: on one line, with ? in the
/// place of each control character.
std::string printable(std::string_view text);

/// A word as a shell reads it back: in quotes where it needs them, control characters as `\x1b`.
std::string shellWord(const std::string& word);

/// "the top left corner" of a quad by where it lies around the middle of the four, with y down
/// where nothing tells; "corner 2" (from 0) where two corners would share a name, as of a quad on
/// its tip.
std::string cornerName(const Quad& corners, std::optional<YAxis> y, std::size_t index);

/// The same with the quad's name where there are several: "the top left corner of \"sign\"".
std::string cornerName(const std::vector<NamedQuad>& quads, std::optional<YAxis> y,
                       std::size_t quad, std::size_t index);

/// Frames next to each other, both ends included.
struct Stretch {
  int first = 0;
  int last = 0;
};

/// The frames, which rise, as stretches of neighbours.
std::vector<Stretch> stretchesOf(const std::vector<int>& frames);

/// "7" or "0-9".
std::string textOf(Stretch stretch);

/// "0-9, 11, 90-126"; after `most` stretches "and 12 more frames".
std::string textOf(const std::vector<Stretch>& stretches, std::size_t most);

}  // namespace cornerpin

#endif
