// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <iterator>

#include "shot/files/number_text.h"
#include "shot/files/track_blocks.h"
#include "shot/files/track_writers.h"
#include "shot/solve/wording.h"

namespace cornerpin {

// Some readers cut lines at "#" and refuse exponents, frames below 0 and more than one blank.
WriteNotes writePointsTracks(const Tracks& tracks, OutputFile& out) {
  const TrackBlocks blocks(tracks, {"point text", "#", false});
  out.write(fmt::format("{}\n", blocks.size()));
  std::size_t negative = 0;
  blocks.write(
      out,
      [](std::string& text, const std::string& name, std::size_t rows) {
        fmt::format_to(std::back_inserter(text), "{}\n0\n{}\n", name, rows);
      },
      [&](std::string& text, const Observation& row) {
        if (row.frame < 0) ++negative;
        fmt::format_to(std::back_inserter(text), "{} ", row.frame);
        appendDecimal(text, row.x);
        text += ' ';
        appendDecimal(text, row.y);
        text += '\n';
      });
  WriteNotes notes = blocks.notes();
  if (negative > 0) {
    notes.push_back(negative == 1
                        ? "1 position is in a frame below 0, which some readers refuse"
                        : fmt::format("{} positions are in frames below 0, which some readers "
                                      "refuse",
                                      negative));
  }
  return notes;
}

}  // namespace cornerpin
