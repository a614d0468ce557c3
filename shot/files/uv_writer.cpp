// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <iterator>

#include "shot/files/number_text.h"
#include "shot/files/track_blocks.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

WriteNotes writeUvTracks(const Tracks& tracks, OutputFile& out) {
  const TrackBlocks blocks(tracks, {"a uv file", "", true});
  out.write(fmt::format("{}\n", blocks.size()));
  blocks.write(
      out,
      [](std::string& text, const std::string& name, std::size_t rows) {
        fmt::format_to(std::back_inserter(text), "{}\n{}\n", name, rows);
      },
      [](std::string& text, const Observation& row) {
        fmt::format_to(std::back_inserter(text), "{} ", row.frame);
        appendDecimal(text, row.x);
        text += ' ';
        appendDecimal(text, row.y);
        text += ' ';
        appendDecimal(text, row.weight);
        text += '\n';
      });
  return blocks.notes();
}

}  // namespace cornerpin
