// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include "shot/files/csv_text.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

WriteNotes writeCsvTracks(const Tracks& tracks, OutputFile& out) {
  out.write("track,frame,x,y,weight\n");
  std::vector<std::string> names;
  names.reserve(tracks.names.size());
  for (const std::string& name : tracks.names) names.push_back(csvText(name));
  for (const Observation& row : tracks.observations) {
    out.write(fmt::format("{},{},{},{},{}\n", names[static_cast<std::size_t>(row.track)], row.frame,
                          row.x, row.y, row.weight));
  }
  return {};
}

}  // namespace cornerpin
