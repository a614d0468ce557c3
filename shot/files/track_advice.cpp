// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_advice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "shot/advice/closing_words.h"
#include "shot/solve/selection.h"
#include "shot/solve/tracks.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kMostTracks = 5;
constexpr std::size_t kListed = 5;

// A track and the frames in which it is ignored.
struct Ignored {
  std::size_t track = 0;
  int seen = 0;
  int frames = 0;
  std::vector<Stretch> stretches;
};

Ignored ignoredIn(const TrackResult& track, std::size_t index) {
  Ignored ignored;
  ignored.track = index;
  for (const TrackRun& run : track.runs) {
    const int frames = run.last - run.first + 1;
    if (run.use != TrackUse::Absent) ignored.seen += frames;
    if (run.use != TrackUse::Ignored) continue;
    ignored.frames += frames;
    ignored.stretches.push_back({run.first, run.last});
  }
  return ignored;
}

// Largest share of the frames first, then most frames.
std::vector<Ignored> mostIgnored(const ShotResult& result) {
  std::vector<Ignored> all;
  for (std::size_t i = 0; i < result.tracks.size(); ++i) {
    Ignored ignored = ignoredIn(result.tracks[i], i);
    if (ignored.frames >= kFewestIgnored) all.push_back(std::move(ignored));
  }
  std::stable_sort(all.begin(), all.end(), [](const Ignored& a, const Ignored& b) {
    const double left = double(a.frames) * b.seen;
    const double right = double(b.frames) * a.seen;
    return left != right ? left > right : a.frames > b.frames;
  });
  all.resize(std::min(all.size(), kMostTracks));
  return all;
}

// The names alone, which is all that a list of tracks is written by.
Tracks namesOf(const ShotResult& result) {
  Tracks names;
  for (const TrackResult& track : result.tracks) names.names.push_back(track.name);
  return names;
}

std::string dropOf(const Tracks& names, std::size_t track, FrameRange frames) {
  return "--drop " + shellWord(textOf(Selected{static_cast<std::int32_t>(track), frames}, names));
}

std::string movers(const ShotResult& result, const Tracks& names) {
  std::string text;
  for (const WorstTrack& worst : result.worst) {
    const auto found = std::find(names.names.begin(), names.names.end(), worst.name);
    text += "  " + describe(worst) + (worst.stretch.standsOut ? ", and it is far off" : "");
    if (found != names.names.end()) {
      text += ":\n      " + dropOf(names, static_cast<std::size_t>(found - names.names.begin()),
                                   {worst.stretch.first, worst.stretch.last});
    }
    text += "\n";
  }
  return text;
}

std::string ignoredTracks(const ShotResult& result, const Tracks& names) {
  std::string text;
  for (const Ignored& ignored : mostIgnored(result)) {
    text += fmt::format("  {}, ignored in {} of {}: {}:\n      {}\n",
                        printable(names.names[ignored.track]), ignored.frames,
                        counted(static_cast<std::size_t>(ignored.seen), "frame"),
                        textOf(ignored.stretches, kListed), dropOf(names, ignored.track, {}));
  }
  return text;
}

}  // namespace

std::string trackAdvice(const ShotResult& result) {
  const Tracks names = namesOf(result);
  std::string text;
  const auto add = [&](const char* heading, const std::string& lines) {
    if (!lines.empty()) text += (text.empty() ? "" : "\n") + std::string(heading) + lines;
  };
  add("What the solve tried and found to help:\n", advisedStretches(result));
  add("Tracks that move the corners most:\n", movers(result, names));
  add("Tracks that are ignored most, because they are off:\n", ignoredTracks(result, names));
  if (text.empty()) return "No track is worth a look.\n";
  const bool known = result.provenance.input && !result.provenance.input->name.empty();
  const std::string file = known ? shellWord(result.provenance.input->name) : "TRACKS.csv";
  return text + fmt::format(
                    "\nLook at them in the pictures. To leave one out, add its --drop to: "
                    "cornerpin solve {}\n",
                    file);
}

}  // namespace cornerpin
