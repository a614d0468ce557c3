// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PLOT_PNG_H
#define SHOT_REPORT_PLOT_PNG_H

#include <string>

namespace cornerpin {

/// Refuses a PNG file where the program that draws it is not there: throws `std::runtime_error`
/// that names the package and what to do without it.
void requirePngRenderer();

/// An SVG file as a PNG file, drawn by librsvg's `rsvg-convert`. Throws `std::runtime_error`.
std::string pngOf(const std::string& svg);

}  // namespace cornerpin

#endif
