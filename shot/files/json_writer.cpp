// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "shot/files/json_reader.h"
#include "shot/files/provenance_json.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

std::string quoted(const std::string& name) {
  return Json(name).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The observations of each track, by frame.
std::vector<std::vector<const Observation*>> byTrack(const Tracks& tracks) {
  std::vector<std::vector<const Observation*>> rows(tracks.names.size());
  for (const Observation& row : tracks.observations)
    rows[static_cast<std::size_t>(row.track)].push_back(&row);
  return rows;
}

}  // namespace

WriteNotes writeJsonTracks(const Tracks& tracks, OutputFile& out) {
  out.write(fmt::format("{{\n\"{}\": 1,\n\"picture\": {},\n\"tracks\": [", kTracksField,
                        pictureJson(tracks.picture).dump()));
  const char* next = "\n";
  const auto rows = byTrack(tracks);
  for (std::size_t track = 0; track < rows.size(); ++track) {
    out.write(fmt::format("{}{{\"name\": {}, \"positions\": [", next, quoted(tracks.names[track])));
    next = ",\n";
    const char* comma = "\n";
    for (const Observation* row : rows[track]) {
      out.write(fmt::format("{}[{},{},{},{}]", comma, row->frame, row->x, row->y, row->weight));
      comma = ",\n";
    }
    out.write("]}");
  }
  out.write("]\n}\n");
  return {};
}

}  // namespace cornerpin
