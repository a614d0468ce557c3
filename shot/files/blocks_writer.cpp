// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <iterator>

#include "shot/files/number_text.h"
#include "shot/files/track_blocks.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

WriteNotes writeBlocksTracks(const Tracks& tracks, OutputFile& out) {
  const TrackBlocks blocks(tracks, {"a file of blocks", "\"", false});
  out.write(
      "# Tracks in pixels: x grows to the right, y upwards, and the centre of the lower left "
      "pixel\n"
      "# is (0, 0). The clip's first frame is 1. Residuals are not known: they are 0.\n"
      "#\n"
      "# \"name\"\n"
      "# clip\n"
      "# number of keys\n"
      "# frame x y residual\n");
  blocks.write(
      out,
      [](std::string& text, const std::string& name, std::size_t rows) {
        fmt::format_to(std::back_inserter(text), "\n\"{}\"\n1\n{}\n", name, rows);
      },
      [](std::string& text, const Observation& row) {
        fmt::format_to(std::back_inserter(text), "{} ", row.frame);
        appendDecimal(text, row.x);
        text += ' ';
        appendDecimal(text, row.y);
        text += " 0\n";
      });
  return blocks.notes();
}

}  // namespace cornerpin
