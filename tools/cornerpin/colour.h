// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_COLOUR_H
#define TOOLS_CORNERPIN_COLOUR_H

#include <functional>
#include <string>

namespace cornerpin {

/// When text is coloured.
enum class Colour { Auto, Always, Never };

/// Whether what is written to a file descriptor is coloured. `Colour::Auto` means on a terminal,
/// unless NO_COLOR is set to anything or TERM is "dumb".
bool isColoured(Colour when, int file);

/// Marks what is doubtful: gives the text back in yellow, or as it is.
using Mark = std::function<std::string(const std::string& text)>;
Mark doubtfulMark(Colour when, int file);

/// Whether a terminal that TERM calls "dumb" is in use: it takes no control sequences.
bool isDumbTerminal();

}  // namespace cornerpin

#endif
