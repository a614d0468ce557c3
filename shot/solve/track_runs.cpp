// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/track_runs.h"

#include <algorithm>
#include <cstdint>

namespace cornerpin {

namespace {

// Whether the frame is the next one behind; in 64 bits, as frames may be as large as 32 allow.
bool follows(int frame, int last) { return std::int64_t{frame} == std::int64_t{last} + 1; }

void append(const TrackRun& run, std::vector<TrackRun>& runs) {
  if (!runs.empty() && runs.back().use == run.use && follows(run.first, runs.back().last)) {
    runs.back().last = run.last;
  } else {
    runs.push_back(run);
  }
}

}  // namespace

void TrackRuns::add(int track, int frame, TrackUse use) {
  std::vector<TrackRun>& runs = runs_[static_cast<std::size_t>(track)];
  if (!runs.empty() && runs.back().use == use && follows(runs.back().first, frame)) {
    runs.back().first = frame;
  } else {
    append({frame, frame, use}, runs);
  }
}

std::vector<TrackRun> TrackRuns::of(int track, int first, int last) const {
  std::vector<TrackRun> added = runs_[static_cast<std::size_t>(track)];
  std::sort(added.begin(), added.end(),
            [](const TrackRun& a, const TrackRun& b) { return a.first < b.first; });
  std::vector<TrackRun> runs;
  std::int64_t next = first;  // the first frame that no run covers
  for (const TrackRun& run : added) {
    if (next < run.first) append({static_cast<int>(next), run.first - 1, TrackUse::Absent}, runs);
    append(run, runs);
    next = std::int64_t{run.last} + 1;
  }
  if (next <= last) append({static_cast<int>(next), last, TrackUse::Absent}, runs);
  return runs;
}

}  // namespace cornerpin
