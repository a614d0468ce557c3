// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <string>

#include "shot/files/format.h"
#include "shot/files/line_tracks.h"
#include "shot/files/number_text.h"
#include "shot/files/track_input.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

// The count of points, and for each a line with its name, one with a colour number, one with the
// number of keys, and the keys: frame, x, y.
class PointsReader {
 public:
  explicit PointsReader(const TrackInput& input) : file_(input) {}

  Tracks read() {
    file_.readAll([&] { readPointsByCount(); });
    return file_.finish(factsOf(Format::Points).picture);
  }

 private:
  void readPointsByCount() {
    if (!file_.nextUncommented()) throw InputError(file_.lines.file(), "the file is empty");
    const std::uint32_t line = file_.lines.line();
    const std::int32_t count = file_.takeCount(Words(file_.lines), "the count of points");
    std::int32_t points = 0;
    for (; file_.lines.nextFilled(); ++points) readPoint();
    if (points == count) return;
    file_.note(line, fmt::format("the count of points is {}, and {} in the file", count,
                                 points == 1 ? "1 is" : fmt::format("{} are", points)));
  }

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
      row.frame = words.takeWhole("frame");
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
