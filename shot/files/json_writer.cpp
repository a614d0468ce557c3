// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>
#include <unordered_set>
#include <vector>

#include "shot/files/json_reader.h"
#include "shot/files/provenance_json.h"
#include "shot/files/track_writers.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

std::string inQuotes(const std::string& name) {
  return Json(name).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The names as JSON can have them, which is in UTF-8, and each another.
std::vector<std::string> namesIn(const Tracks& tracks, WriteNotes& notes) {
  std::vector<std::string> names;
  names.reserve(tracks.names.size());
  std::unordered_set<std::string> taken(tracks.names.begin(), tracks.names.end());
  std::size_t changed = 0;
  for (const std::string& name : tracks.names) {
    std::string text = Json::parse(inQuotes(name)).get<std::string>();
    if (text != name) {
      ++changed;
      while (!taken.insert(text).second) text += '_';
    }
    names.push_back(inQuotes(text));
  }
  if (changed > 0) {
    notes.push_back(fmt::format("{} {} not in UTF-8 and written otherwise",
                                counted(changed, "name"), changed == 1 ? "is" : "are"));
  }
  return names;
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
  WriteNotes notes;
  const std::vector<std::string> names = namesIn(tracks, notes);
  for (std::size_t track = 0; track < rows.size(); ++track) {
    out.write(fmt::format("{}{{\"name\": {}, \"positions\": [", next, names[track]));
    next = ",\n";
    const char* comma = "\n";
    for (const Observation* row : rows[track]) {
      out.write(fmt::format("{}[{},{},{},{}]", comma, row->frame, row->x, row->y, row->weight));
      comma = ",\n";
    }
    out.write("]}");
  }
  out.write("]\n}\n");
  return notes;
}

}  // namespace cornerpin
