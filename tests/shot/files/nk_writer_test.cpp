// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "shot/files/track_reader.h"
#include "shot/files/track_writers.h"
#include "tests/shot/files/node_lists.h"
#include "tests/support/files.h"

using namespace cornerpin;
using namespace made;

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

template <class F>
std::string written(F write, WriteNotes* notes = nullptr) {
  const TemporaryFolder folder;
  OutputFile out(folder / "out.nk");
  const WriteNotes said = write(out);
  if (notes != nullptr) *notes = said;
  out.commit();
  return readFile(folder / "out.nk");
}

Tracks readBack(const std::string& text, ReadTrace* trace = nullptr) {
  const TemporaryFolder folder;
  writeFile(folder / "in", text);
  return readTracks(folder / "in", {}, {}, trace);
}

Observation at(std::int32_t track, int frame, double x, double y, float weight = 1.0f) {
  Observation row;
  row.track = track;
  row.frame = frame;
  row.x = x;
  row.y = y;
  row.weight = weight;
  return row;
}

constexpr double kWidth = 1920;
constexpr double kHeight = 1080;

// The picture's corners, pixel centres and the middle over three frames, of which the second one
// is a gap of the last point; shifted by thirds from frame to frame.
Tracks fivePoints() {
  Tracks tracks;
  tracks.names = {"a", "b", "c", "d", "e"};
  const std::vector<Point> points = {{0, 0},
                                     {kWidth, kHeight},
                                     {0.5, 0.5},
                                     {kWidth / 2, kHeight / 2},
                                     {kWidth - 0.5, kHeight - 0.5}};
  for (int frame = 0; frame < 3; ++frame) {
    for (std::int32_t t = 0; t < 5; ++t) {
      if (frame == 1 && t == 4) continue;
      const Point p = points[static_cast<std::size_t>(t)];
      tracks.observations.push_back(at(t, 1001 + frame, p.x + frame / 3.0, p.y - frame / 7.0));
    }
  }
  return tracks;
}

void expectSame(const Tracks& a, const Tracks& b) {
  ASSERT_EQ(a.names, b.names);
  ASSERT_EQ(a.observations.size(), b.observations.size());
  for (std::size_t i = 0; i < a.observations.size(); ++i) {
    const Observation& p = a.observations[i];
    const Observation& q = b.observations[i];
    EXPECT_EQ(p.frame, q.frame);
    EXPECT_EQ(p.track, q.track);
    EXPECT_EQ(p.x, q.x);
    EXPECT_EQ(p.y, q.y);
    EXPECT_EQ(p.weight, q.weight);
  }
}

// A pin over frames 7, 8 and 9; in frame 8 the top left corner goes nowhere.
Pin somePin() {
  Pin pin;
  pin.name = "front door";
  pin.picture.width = 1920;
  pin.picture.height = 1080;
  pin.from = {{{0, 0}, {1920, 0}, {1920, 1080}, {0, 1080}}};
  for (int i = 0; i < 3; ++i) {
    PinFrame frame;
    frame.frame = 7 + i;
    frame.h = {
        {{1.0 + i / 3.0, 1e-7 * i, 10.0 * i}, {0.25 * i, 1.0, -1.0 / 3}, {0.0, 1e-5 * i, 1}}};
    for (std::size_t c = 0; c < 4; ++c) frame.to[c] = map(frame.h, pin.from[c]);
    pin.frames.push_back(frame);
  }
  pin.frames[1].to[kTopLeft] = {kNone, kNone};
  return pin;
}

std::string writtenPin(PinStyle::Nk style, WriteNotes* notes = nullptr) {
  PinStyle all;
  all.nk = style;
  return written([&](OutputFile& out) { return writeNkPin(somePin(), all, out); }, notes);
}

constexpr std::array<const char*, 4> kTo = {"to1", "to2", "to3", "to4"};
constexpr std::array<const char*, 4> kFrom = {"from1", "from2", "from3", "from4"};

void expectConstants(const List& node, const std::array<const char*, 4>& knobs, const Quad& quad) {
  for (std::size_t c = 0; c < 4; ++c) {
    const List& place = node.of(knobs[c]);
    ASSERT_EQ(place.items.size(), 2u);
    EXPECT_EQ(std::stod(place.at(0).word), quad[c].x);
    EXPECT_EQ(std::stod(place.at(1).word), quad[c].y);
  }
}

void expectPoints(const List& node, const Pin& pin) {
  for (std::size_t c = 0; c < 4; ++c) {
    Keys x;
    Keys y;
    for (const PinFrame& frame : pin.frames) {
      if (std::isnan(frame.to[c].x)) continue;
      x[frame.frame] = frame.to[c].x;
      y[frame.frame] = frame.to[c].y;
    }
    EXPECT_EQ(keysOf(node.of(kTo[c]).at(0)), x);
    EXPECT_EQ(keysOf(node.of(kTo[c]).at(1)), y);
    EXPECT_EQ(node.of(kTo[c]).items.size(), 2u);
  }
  expectConstants(node, kFrom, pin.from);
}

// Of the four rows and columns the third ones are those of the identity, and the last element 1.
void expectMatrix(const List& node, const Pin& pin) {
  const List& matrix = node.of("transform_matrix");
  ASSERT_EQ(matrix.items.size(), 4u);
  for (std::size_t r = 0; r < 4; ++r) {
    ASSERT_EQ(matrix.at(r).items.size(), 4u);
    for (std::size_t c = 0; c < 4; ++c) {
      const List& element = matrix.at(r).at(c);
      if (r == 2 || c == 2 || (r == 3 && c == 3)) {
        EXPECT_EQ(element.word, r == c ? "1" : "0");
        continue;
      }
      Keys keys;
      for (const PinFrame& frame : pin.frames) keys[frame.frame] = frame.h[r - r / 3][c - c / 3];
      EXPECT_EQ(keysOf(element), keys) << r << " " << c;
    }
  }
  expectConstants(node, kFrom, pin.from);
  expectConstants(node, kTo, pin.from);
}

}  // namespace

TEST(NkWriter, WritesTracksThatAreReadBack) {
  const Tracks tracks = fivePoints();
  WriteNotes notes;
  const std::string text =
      written([&](OutputFile& out) { return writeNkTracks(tracks, out); }, &notes);
  EXPECT_EQ(notes, WriteNotes{});
  ReadTrace trace;
  expectSame(readBack(text, &trace), tracks);
  EXPECT_EQ(trace.format, Format::Nk);
  EXPECT_EQ(trace.notes, WriteNotes{});
  const Tracks again = readBack(text);
  EXPECT_EQ(written([&](OutputFile& out) { return writeNkTracks(again, out); }), text);
}

TEST(NkWriter, WritesWhatAnotherParserUnderstands) {
  const Tracks tracks = fivePoints();
  const auto nodes =
      nodesIn(written([&](OutputFile& out) { return writeNkTracks(tracks, out); }), "Tracker4");
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].of("name").word, "Tracker1");
  const List& all = nodes[0].of("tracks");
  ASSERT_EQ(all.items.size(), 3u);
  EXPECT_EQ(all.at(0).at(0).word + " " + all.at(0).at(1).word + " " + all.at(0).at(2).word,
            "1 31 5");
  ASSERT_EQ(all.at(1).items.size(), 31u);
  ASSERT_EQ(all.at(2).items.size(), 5u);
  for (std::size_t t = 0; t < 5; ++t) {
    const List& cells = all.at(2).at(t);
    // The pattern and the search area are columns 13 to 20.
    ASSERT_EQ(cells.items.size(), 31u);
    EXPECT_EQ(cells.at(1).word, tracks.names[t]);
    EXPECT_EQ(all.at(1).at(2).at(3).word, "track_x");
    EXPECT_EQ(all.at(1).at(9).at(3).word, "error");
    Keys x;
    Keys y;
    for (const Observation& row : tracks.observations) {
      if (static_cast<std::size_t>(row.track) != t) continue;
      x[row.frame] = row.x;
      y[row.frame] = row.y;
    }
    EXPECT_EQ(keysOf(cells.at(2)), x);
    EXPECT_EQ(keysOf(cells.at(3)), y);
    EXPECT_EQ(keysOf(cells.at(9)), (Keys{{1001, 0.0}}));
    EXPECT_EQ(keysOf(cells.at(0)),
              t == 4 ? (Keys{{1001, 1.0}, {1002, 0.0}, {1003, 1.0}}) : (Keys{{1001, 1.0}}));
  }
}

// The columns are those of a script that a tracker wrote.
TEST(NkWriter, HasTheColumnsOfTheSample) {
  const std::string sample =
      readFile(CORNERPIN_DATA "/../tests/shot/files/samples/four_corner_screen.nk");
  const auto columnsOf = [](const std::string& text) {
    std::vector<std::vector<std::string>> columns;
    const auto nodes = nodesIn(text, "Tracker4");
    for (const List& column : nodes.at(0).of("tracks").at(1).items) {
      columns.emplace_back();
      for (const List& word : column.items) columns.back().push_back(word.word);
    }
    return columns;
  };
  const Tracks tracks = fivePoints();
  EXPECT_EQ(columnsOf(written([&](OutputFile& out) { return writeNkTracks(tracks, out); })),
            columnsOf(sample));
}

TEST(NkWriter, KeepsNamesAndWeightsOfNone) {
  Tracks tracks;
  tracks.names = {"12", "a \"b\" {c} \\ $d [e]\tf", "\xC3\xA4", "empty"};
  tracks.observations = {at(0, -5, 1e-9, -2.5e21), at(1, -5, 0.1, 1e300 * 0.0),
                         at(2, -5, 3, 4),          at(0, -4, 1, 2, 0.0f),
                         at(1, -4, 5, 6, 0.25f),   at(2, -4, 5, 6),
                         at(0, -3, 1, 2),          at(0, 7, 1, 2)};
  WriteNotes notes;
  const std::string text =
      written([&](OutputFile& out) { return writeNkTracks(tracks, out); }, &notes);
  EXPECT_EQ(notes, (WriteNotes{"1 track without positions left out",
                               "weights other than 0 and 1 are left out: 1 position"}));
  tracks.names.pop_back();
  tracks.observations[4].weight = 1.0f;
  expectSame(readBack(text), tracks);
  // Numbers have no exponents, and frames in between are not enabled.
  EXPECT_NE(text.find(" x-5 0.000000001 "), std::string::npos);
  EXPECT_NE(text.find(" x-5 -2500000000000000000000 "), std::string::npos);
  EXPECT_NE(text.find("{curve K x-5 1 x-4 0 x-3 1 x-2 0 x7 1}"), std::string::npos);
}

TEST(NkWriter, WritesAPinAsPoints) {
  WriteNotes notes;
  const std::string text = writtenPin(PinStyle::Nk::Points, &notes);
  EXPECT_EQ(notes, WriteNotes{"corners on or behind the horizon have no key: frames 8; "
                              "transform_matrix has them"});
  const auto nodes = nodesIn(text, "CornerPin2D");
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].of("name").word, "CornerPin_front_door");
  EXPECT_EQ(nodes[0].of("invert").word, "false");
  expectPoints(nodes[0], somePin());
  EXPECT_THROW(nodes[0].of("transform_matrix"), std::runtime_error);
  EXPECT_EQ(text.substr(0, 2), "# ");
  EXPECT_NE(text.find("# of a picture of 1920 x 1080\n"), std::string::npos);
  EXPECT_NE(text.find("# corners: 1 bottom left, 2 bottom right, 3 top right, 4 top left\n"),
            std::string::npos);
}

TEST(NkWriter, WritesAPinAsAMatrix) {
  WriteNotes notes;
  const auto nodes = nodesIn(writtenPin(PinStyle::Nk::Matrix, &notes), "CornerPin2D");
  EXPECT_EQ(notes, WriteNotes{});
  ASSERT_EQ(nodes.size(), 1u);
  expectMatrix(nodes[0], somePin());
}

// In a node of its own each, both on the same picture: one after the other would move it twice.
TEST(NkWriter, WritesAPinAsBoth) {
  WriteNotes notes;
  const std::string text = writtenPin(PinStyle::Nk::Both, &notes);
  EXPECT_EQ(notes.size(), 1u);
  const auto nodes = nodesIn(text, "CornerPin2D");
  ASSERT_EQ(nodes.size(), 2u);
  expectPoints(nodes[0], somePin());
  EXPECT_THROW(nodes[0].of("transform_matrix"), std::runtime_error);
  expectMatrix(nodes[1], somePin());
  EXPECT_EQ(nodes[1].of("name").word, "CornerPin_front_door_matrix");
  const std::string push = "push $cut_paste_input\nCornerPin2D {";
  EXPECT_NE(text.find(push), text.rfind(push));
}

TEST(NkWriter, WritesPinsThatAreReadBackAsCorners) {
  const Pin pin = somePin();
  for (const PinStyle::Nk style : {PinStyle::Nk::Points, PinStyle::Nk::Both}) {
    ReadTrace trace;
    const Tracks tracks = readBack(writtenPin(style), &trace);
    EXPECT_TRUE(trace.isPin);
    EXPECT_EQ(tracks.names.size(), 4u);
    EXPECT_EQ(tracks.observations.size(), 11u);
    for (const Observation& row : tracks.observations) {
      const auto frame = static_cast<std::size_t>(row.frame - 7);
      for (std::size_t c = 0; c < 4; ++c) {
        if (tracks.names[static_cast<std::size_t>(row.track)] != kCornerNames[c]) continue;
        EXPECT_EQ(row.x, pin.frames[frame].to[c].x);
        EXPECT_EQ(row.y, pin.frames[frame].to[c].y);
      }
    }
  }
}

TEST(NkWriter, WritesMatricesThatAreReadBackAsCorners) {
  const Pin pin = somePin();
  const Tracks tracks = readBack(writtenPin(PinStyle::Nk::Matrix));
  EXPECT_EQ(tracks.observations.size(), 12u);
  for (const Observation& row : tracks.observations) {
    const auto frame = static_cast<std::size_t>(row.frame - 7);
    for (std::size_t c = 0; c < 4; ++c) {
      if (tracks.names[static_cast<std::size_t>(row.track)] != kCornerNames[c]) continue;
      const Point p = map(pin.frames[frame].h, pin.from[c]);
      EXPECT_EQ(row.x, p.x);
      EXPECT_EQ(row.y, p.y);
    }
  }
}
