// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_WRITTEN_TRACKS_H
#define TESTS_SHOT_FILES_WRITTEN_TRACKS_H

#include <algorithm>
#include <string>
#include <vector>

#include "shot/files/track_writers.h"
#include "tests/shot/files/line_files.h"
#include "tests/support/files.h"

namespace cornerpin {

/// Arranged tracks of these rows, with the weight 1.
inline Tracks madeTracks(const std::vector<ReadRow>& rows) {
  Tracks tracks;
  for (const ReadRow& row : rows) {
    auto name = std::find(tracks.names.begin(), tracks.names.end(), row.name);
    if (name == tracks.names.end()) name = tracks.names.insert(name, row.name);
    Observation observation;
    observation.track = static_cast<std::int32_t>(name - tracks.names.begin());
    observation.frame = row.frame;
    observation.x = row.x;
    observation.y = row.y;
    tracks.observations.push_back(observation);
  }
  tracks.sortNames();
  tracks.arrange();
  return tracks;
}

/// What a writer makes of tracks.
template <class Write>
std::string writtenBy(Write write, const Tracks& tracks, WriteNotes* notes = nullptr) {
  const TemporaryFolder folder;
  const std::string path = folder / "out.txt";
  OutputFile out(path);
  const WriteNotes said = write(tracks, out);
  out.commit();
  if (notes != nullptr) *notes = said;
  return readFile(path);
}

}  // namespace cornerpin

#endif
