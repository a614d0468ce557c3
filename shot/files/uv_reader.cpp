// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

// The count of tracks, and for each a line with its name, one with the number of keys, and the
// keys: frame, u, v, and a weight, which may be missing.
class UvReader {
 public:
  explicit UvReader(const TrackInput& input) : file_(input) {}

  Tracks read() {
    file_.readAll([&] { file_.takeCounted("tracks", [&] { readTrack(); }); });
    return file_.finish(factsOf(Format::Uv).picture);
  }

 private:
  void readTrack() {
    const std::string name(trimmed(file_.lines.text()));
    file_.require("a number of keys");
    const std::int32_t keys = file_.takeCount(Words(file_.lines), "the number of keys");
    std::int32_t track = -1;
    file_.takeRows(name, keys, [&](Words& words, Observation& row) {
      row.frame = words.takeFrame();
      const bool isThere = takePlace(file_.lines, words, row);
      if (!words.atEnd()) row.weight = takeWeight(file_.lines, words, "weight");
      words.requireEnd();
      if (!isThere) return false;
      if (track < 0) track = file_.tracks.track(name);
      row.track = track;
      return true;
    });
  }

  LineTracks file_;
};

}  // namespace

Tracks readUv(const TrackInput& input) { return UvReader(input).read(); }

}  // namespace cornerpin
