// SPDX-License-Identifier: BSD-3-Clause
#include <string>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/track_input.h"

namespace cornerpin {

namespace {

// The count of points, and for each a line with its name, one with a colour number, one with the
// number of keys, and the keys: frame, x, y.
class PointsReader {
 public:
  explicit PointsReader(const TrackInput& input) : file_(input) {}

  Tracks read() {
    file_.readAll([&] { file_.takeCounted("points", [&] { readPoint(); }); });
    return file_.finish(factsOf(Format::Points).picture);
  }

 private:
  void readPoint() {
    const std::string name(trimmed(file_.lines.text()));
    file_.require("a colour number");
    Words colour(file_.lines);
    colour.takeNumber("the colour number");
    colour.requireEnd();
    file_.require("a number of keys");
    const std::int32_t keys = file_.takeCount(Words(file_.lines), "the number of keys");
    std::int32_t track = -1;
    file_.takeRows(name, keys, [&](Words& words, Observation& row) {
      row.frame = words.takeFrame();
      if (!takePlace(file_.lines, words, row)) return false;
      words.requireEnd();
      if (track < 0) track = file_.tracks.track(name);
      row.track = track;
      return true;
    });
  }

  LineTracks file_;
};

}  // namespace

Tracks readPoints(const TrackInput& input) { return PointsReader(input).read(); }

}  // namespace cornerpin
