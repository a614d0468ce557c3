// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/tracks_of_result.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "shot/files/conversion.h"
#include "shot/files/input_error.h"
#include "shot/files/number_text.h"
#include "shot/files/track_reader.h"
#include "shot/solve/selection.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

std::string digestIn(const ShotResult& result) {
  return result.provenance.input ? result.provenance.input->sha256 : std::string();
}

void refuseOtherDigest(const std::string& path, const ShotResult& result, const Sha256& digest) {
  const std::string wanted = digestIn(result);
  if (wanted.empty() || digest.hex() == wanted) return;
  const std::string& name = result.provenance.input->name;
  throw InputError(path, fmt::format("the result was made from another file, {} with the SHA-256 "
                                     "{}, and this one has {}: give that file, or solve again",
                                     name.empty() ? "one" : shown(name), wanted, digest.hex()));
}

bool isSeen(const TrackResult& track) {
  return std::any_of(track.runs.begin(), track.runs.end(),
                     [](const TrackRun& run) { return run.use != TrackUse::Absent; });
}

// Numbers the tracks as the result does; those that it does not have are left out.
void reorder(const std::string& path, const ShotResult& result, Tracks& tracks) {
  std::unordered_map<std::string, std::int32_t> indices;
  for (std::size_t t = 0; t < result.tracks.size(); ++t)
    indices.emplace(result.tracks[t].name, static_cast<std::int32_t>(t));
  std::vector<std::int32_t> numbers;
  numbers.reserve(tracks.names.size());
  std::vector<bool> isThere(result.tracks.size(), false);
  for (const std::string& name : tracks.names) {
    const auto found = indices.find(name);
    numbers.push_back(found == indices.end() ? -1 : found->second);
    if (found != indices.end()) isThere[static_cast<std::size_t>(found->second)] = true;
  }
  for (std::size_t t = 0; t < result.tracks.size(); ++t) {
    if (isThere[t] || !isSeen(result.tracks[t])) continue;
    throw InputError(path, fmt::format("it has no track {}, which the result has: give the file "
                                       "that the result was made from",
                                       shown(result.tracks[t].name)));
  }
  std::vector<Observation> kept;
  kept.reserve(tracks.observations.size());
  for (Observation row : tracks.observations) {
    row.track = numbers[static_cast<std::size_t>(row.track)];
    if (row.track >= 0) kept.push_back(row);
  }
  tracks.observations = std::move(kept);
  tracks.names.clear();
  for (const TrackResult& track : result.tracks) tracks.names.push_back(track.name);
  tracks.arrange();
}

// What is seen in a frame has to be what the result knows of it.
void refuseOtherFrames(const std::string& path, const ShotResult& result, const Tracks& tracks) {
  std::vector<std::size_t> runs(result.tracks.size(), 0);
  for (const Observation& row : tracks.observations) {
    if (!(row.weight > 0.0f)) continue;
    const auto t = static_cast<std::size_t>(row.track);
    const std::vector<TrackRun>& own = result.tracks[t].runs;
    while (runs[t] < own.size() && own[runs[t]].last < row.frame) ++runs[t];
    const bool fits = runs[t] < own.size() && own[runs[t]].first <= row.frame &&
                      own[runs[t]].use != TrackUse::Absent;
    if (fits) continue;
    throw InputError(path, row.line,
                     fmt::format("track {} is seen in frame {} here, and not in the result: give "
                                 "the file that the result was made from",
                                 shown(result.tracks[t].name), row.frame));
  }
}

// As the result's own, where what is known of both tells how.
Tracks inPictureOf(const ShotResult& result, Tracks tracks, const std::string& path) {
  tracks = inPixels(std::move(tracks), path);
  const Picture to = completed(result.provenance.picture, tracks.picture);
  return missingBetween(tracks.picture, to).empty() ? converted(std::move(tracks), to) : tracks;
}

}  // namespace

Tracks tracksOfResult(const std::string& path, const ShotResult& result, const Progress& progress,
                      std::vector<std::string>& notes) {
  if (result.tracks.empty()) {
    throw InputError(path,
                     "the result does not tell of its tracks, as an older program wrote it: "
                     "solve again");
  }
  const GivenOptions options = result.provenance.options.value_or(GivenOptions{});
  ReadTrace trace;
  trace.digest.emplace();
  Tracks tracks = readTracks(path, progress, options.frames, &trace);
  refuseOtherDigest(path, result, *trace.digest);
  notes.insert(notes.end(), trace.notes.begin(), trace.notes.end());
  tell(tracks, *trace.format, result.provenance.picture);
  tracks = inPictureOf(result, std::move(tracks), path);
  try {
    applySelection(tracks, options.frames, options.keep, options.drop);
  } catch (const std::invalid_argument& error) {
    throw InputError(path,
                     std::string("the selection of the result does not fit: ") + error.what());
  }
  const bool isTheFile = !digestIn(result).empty() && tracks.names.size() == result.tracks.size();
  if (isTheFile) return tracks;
  reorder(path, result, tracks);
  refuseOtherFrames(path, result, tracks);
  return tracks;
}

}  // namespace cornerpin
