// SPDX-License-Identifier: BSD-3-Clause
// What node scripts have that other files do not, what is wrong with some, and what is meant to
// break the reader.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "shot/files/track_reader.h"
#include "tests/shot/files/node_scripts.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

using Names = std::vector<std::string>;

// Frame, x and y.
struct Place {
  int frame;
  double x;
  double y;
};

void expectPlaces(const Tracks& tracks, const std::vector<Place>& places) {
  ASSERT_EQ(tracks.observations.size(), places.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    EXPECT_EQ(tracks.observations[i].frame, places[i].frame);
    EXPECT_EQ(tracks.observations[i].x, places[i].x);
    EXPECT_EQ(tracks.observations[i].y, places[i].y);
  }
}

// The notes without the names of the folder and the file.
Names notesOf(const ReadTrace& trace) {
  Names notes;
  notes.reserve(trace.notes.size());
  for (const std::string& note : trace.notes) notes.push_back(note.substr(note.find("in.txt") + 6));
  return notes;
}

// A script of a track, with its notes.
std::pair<Tracks, Names> read(const std::string& script) {
  ReadTrace trace;
  trace.format = Format::Nk;
  Tracks tracks = tracksIn(script, &trace);
  return {std::move(tracks), notesOf(trace)};
}

std::string refusal(const std::string& script) {
  ReadTrace trace;
  trace.format = Format::Nk;
  return refusalOf(script, &trace);
}

// The only knob of a tracker of the old kind.
std::string oldTracker(const std::string& value) {
  return "Tracker3 {\n track1 " + value + "\n}\n";
}
std::string pin(const std::string& knobs) { return "CornerPin2D {\n" + knobs + "}\n"; }

}  // namespace

TEST(NkReaderTraps, ALetterStaysInForce) {
  const auto [tracks, notes] =
      read(oldTracker("{{curve L x1 1 x2 2 K x3 3} {curve i R x1 4 5 S 6}}"));
  expectPlaces(tracks, {{1, 1, 4}, {2, 2, 5}, {3, 3, 6}});
  EXPECT_EQ(notes, Names{});
}

TEST(NkReaderTraps, TheStepOfTheLastTwoKeysGoesOn) {
  const auto [tracks, notes] =
      read(oldTracker("{{curve x5 1 2 x18 249 x19 242.1 235.2} {curve x5 1 2 x18 3 4 x20 5}}"));
  // x is in 5, 6, 18, 19, 20; y in 5, 6, 18, 30, 20.
  expectPlaces(tracks, {{5, 1, 1}, {6, 2, 2}, {18, 249, 3}, {20, 235.2, 5}});
  EXPECT_EQ(notes, Names{":2: \"track1\": 1 key of x and 1 key of y without the other coordinate, "
                         "first in frame 19: dropped"});
}

TEST(NkReaderTraps, CurvesLookStrange) {
  const auto [tracks, notes] = read(trackerNode(
      "T", row("a", "{\"curve \" x374 5}", "{\"curve \" x374 6}", "{curve}") +
               row("b", "{curve}", "{}", "{}") + row("c", "{curve K x5 1}", "{curve i x5 2 s95}") +
               row("d", "{curve 1 2}", "{curve x0 3 4}", "{curve K}")));
  EXPECT_EQ(tracks.names, (Names{"a", "c", "d"}));
  expectPlaces(tracks, {{0, 1, 3}, {1, 2, 4}, {5, 1, 2}, {374, 5, 6}});
  EXPECT_EQ(notes, Names{":10: \"b\" has no positions: skipped"});
}

TEST(NkReaderTraps, AConstantIsNoTrack) {
  const auto [tracks, notes] =
      read("Tracker3 {\n track1 {{curve x1 5} {curve x1 6}}\n track2 {1126 1454}\n}\n" +
           trackerNode("T", row("a", "3", "{4}") + row("b", "3", "{curve x9 4}")));
  expectPlaces(tracks, {{1, 5, 6}, {9, 3, 4}});
  EXPECT_EQ(notes, (Names{":3: \"track2\" has no keys: a constant is no track, it is skipped",
                          ":13: \"a\" has no keys: a constant is no track, it is skipped"}));
}

TEST(NkReaderTraps, AKeyOnOneAxisIsDropped) {
  const auto [tracks, notes] =
      read(oldTracker("{{curve x1 1 x2 2 x3 3 x4 nan} {curve x2 20 x3 nan x4 40}}"));
  expectPlaces(tracks, {{2, 2, 20}});
  EXPECT_EQ(notes, Names{":2: \"track1\": 2 keys of x and 1 key of y without the other coordinate, "
                         "first in frame 1: dropped"});
}

TEST(NkReaderTraps, EnableIsAStepAndTheErrorNoWeight) {
  const std::string script =
      "Tracker4 {\n tracks { { 1 5 1 }\n{ { 5 1 20 enable e 1 } { 3 1 75 name name 1 }\n"
      "{ 2 1 58 track_x track_x 1 } { 2 1 58 track_y track_y 1 } { 2 0 45 error error 1 } }\n"
      "{ { {curve K x2 1 x4 0 x6 1} \"a\" {curve x1 1 2 3 4 5 6} {curve x1 1 2 3 4 5 6}"
      " {curve x1 0 0.5 x3 0 1 1} } }\n }\n}\n";
  const auto [tracks, notes] = read(script);
  std::vector<float> weights;
  for (const Observation& row : tracks.observations) weights.push_back(row.weight);
  EXPECT_EQ(weights, (std::vector<float>{1, 1, 1, 0, 0, 1}));
  EXPECT_EQ(notes, Names{});
}

TEST(NkReaderTraps, ExpressionsAreNamed) {
  const std::string good = oldTracker("{{curve x1 1} {curve x1 1}}");
  const auto [tracks, notes] = read(
      good + oldTracker("{{parent.X.x i} {curve+5 x1 5}}") +
      oldTracker("{Node1.outputBottomLeft.x}") + oldTracker("width") + pin(" to1 {{width} 0}\n") +
      trackerNode("T", row("a", "{curve x2 2}", "{curve x2 2}", "{frame > 5}")));
  expectPlaces(tracks, {{1, 1, 1}, {2, 2, 2}});
  EXPECT_EQ(notes, (Names{":5: track1: the expression \"{parent.X.x i}\" is skipped",
                          ":5: track1: the expression \"{curve+5 x1 5}\" is skipped",
                          ":5: \"track1\" has no positions: skipped",
                          ":4: the Tracker3 \"Tracker3\" has no tracks",
                          ":8: track1: the expression \"Node1.outputBottomLeft.x\" is skipped",
                          ":8: \"track1\" has no positions: skipped",
                          ":7: the Tracker3 \"Tracker3\" has no tracks",
                          ":11: track1: the expression \"width\" is skipped",
                          ":11: \"track1\" has no positions: skipped",
                          ":10: the Tracker3 \"Tracker3\" has no tracks",
                          ":14: to1: the expression \"{width}\" is skipped",
                          ":13: the pin \"CornerPin2D\" is skipped: it has no corners",
                          ":24: enable: the expression \"{frame > 5}\" is skipped"}));
}

TEST(NkReaderTraps, OnlyTheFirstGroupCounts) {
  const auto [tracks, notes] =
      read(pin(" to1 {{curve x1 1} {curve x1 2}} {{curve x1 3} {curve x1 4\n}} to3 {7 8}\n"
               " to2 {{curve x1 5} {curve x1 6}}\n"));
  expectPlaces(tracks, {{1, 1, 2}, {1, 5, 6}});
  EXPECT_EQ(notes, (Names{":1: \"top_right\" has no positions: skipped",
                          ":1: \"top_left\" has no positions: skipped"}));
  const auto [other, said] =
      read(pin(" to1 {curve L x1 1} {curve L x1 2}\n to2 {{curve x1 5} "
               "{curve x1 6}}\n"));
  expectPlaces(other, {{1, 5, 6}});
  ASSERT_EQ(said.size(), 4u);
  EXPECT_EQ(said[0],
            ":2: to1 is one curve: x and y are wanted, each in braces, in one pair of braces");
  EXPECT_EQ(said[1], ":1: \"bottom_left\" has no positions: skipped");
}

TEST(NkReaderTraps, OfOneLineForEachFrameTheLastCounts) {
  const auto [tracks, notes] = read(pin(" to1 {1 2}\n to1 {3 4}\n to1 {5 6}\n to2 {7 8}\n"));
  expectPlaces(tracks, {{0, 5, 6}, {0, 7, 8}});
  const auto [curves, said] =
      read(oldTracker("{{curve x1 1} {curve x1 1}}\n track1 {{curve x2 3} {curve x2 4}}"));
  expectPlaces(curves, {{2, 3, 4}});
  const auto [rows, none] = read(
      "Tracker4 {\n tracks {{1 3 1} {{1 1 1 track_x} {1 1 1 track_y}} {{{curve 1} {curve 1}}}}\n"
      " tracks {{1 3 1} {{1 1 1 track_x} {1 1 1 track_y}} {{{curve 2} {curve 2}}}}\n}\n");
  EXPECT_EQ(none, Names{});
  EXPECT_EQ(rows.names, Names{"track 1"});
  expectPlaces(rows, {{0, 2, 2}});
}

TEST(NkReaderTraps, ATrackerMayHaveNoTracks) {
  const std::string good = oldTracker("{{curve x1 1} {curve x1 1}}");
  const auto [tracks, notes] =
      read("Tracker4 {\n name E\n}\nTracker4 {\n tracks {}\n}\n" + good + "Tracker4 {\n}\n");
  expectPlaces(tracks, {{1, 1, 1}});
  EXPECT_EQ(notes, (Names{":1: the Tracker4 \"E\" has no tracks",
                          ":4: the Tracker4 \"Tracker4\" has no tracks",
                          ":10: the Tracker4 \"Tracker4\" has no tracks"}));
}

TEST(NkReaderTraps, OtherNodesAreSkipped) {
  const std::string good = oldTracker("{{curve x1 1} {curve x1 1}}");
  const auto [tracks, notes] = read(
      "Reconcile3D {\n point {1 2 3}\n output {{curve x1 5} {curve x1 6}}\n name R1\n}\n"
      "Transform {\n translate {{curve x1 5} {curve x1 6}}\n}\nBlur {\n track1 {{curve x1 5} "
      "{curve x1 5}}\n}\nset N1 [stack 0]\npush $N1\npush 0\nclone $C1 {\n xpos 5\n}\n"
      "Group {\n name G\n}\n Input {\n }\n" +
      good + "end_group\n");
  expectPlaces(tracks, {{1, 1, 1}});
  EXPECT_EQ(notes,
            (Names{":1: the Reconcile3D \"R1\" is skipped: it has no tracks that could be read",
                   ":6: the Transform \"Transform\" is skipped: it has no tracks that could be "
                   "read"}));
}

// Braces count in a layout, quotes do not.
TEST(NkReaderTraps, WindowLayoutsAndTextsAreNoScript) {
  const auto [tracks, notes] = read(
      "#! /opt/it { \" \nversion 5.2300\ndefine_window_layout_xml {<?xml version=\"1.0\"?>\n"
      "<layout a=\"Tracker3 \\{\" b=' \" '>\nit's \" {\nTracker3 {\n}\n }\n}\n"
      "Tracker3 {\n label \"a } b {\\\" \n track1 {1 2}\n\"\n note {it's \" \\} }\n tile_color "
      "0x1\n"
      " track1 {{curve x1 1} {curve x1 1}}\n name \"a b\"\n}\n");
  expectPlaces(tracks, {{1, 1, 1}});
  EXPECT_EQ(notes, Names{});
}

TEST(NkReaderTraps, TheRootsFormatIsNotUsed) {
  ReadTrace trace;
  const Tracks tracks = tracksIn("Root {\n format \"2048 1556 0 0 2048 1556 1 2K\"\n name x\n}\n" +
                                     oldTracker("{{curve x1 1} {curve x1 1}}"),
                                 &trace);
  EXPECT_EQ(tracks.picture.width, std::nullopt);
  EXPECT_EQ(tracks.picture.height, std::nullopt);
  EXPECT_EQ(notesOf(trace), Names{":2: the root's format 2048x1556 is not used: give --size "
                                  "2048x1556 if it is the clip's"});
}

TEST(NkReaderTraps, TheHeadMayCountWrong) {
  const auto [tracks, notes] = read(
      "Tracker4 {\n tracks { { 1 31 1000000000 } { {track_x} {track_y} }\n"
      "{ { {curve x1 1} {curve x1 1} } } }\n}\n");
  expectPlaces(tracks, {{1, 1, 1}});
  EXPECT_EQ(notes, Names{":2: the head counts 1000000000 tracks, 1 are there"});
}

TEST(NkReaderTraps, LinesEndAnyhow) {
  const std::string script = trackerNode("T", row("a", "{curve x1 1 2}", "{curve x1 3 4}"));
  for (const char* end : {"\r\n", "\r", "  \t\r\n"}) {
    std::string text = "\xEF\xBB\xBF";
    for (const char c : script) {
      if (c == '\n') {
        text += end;
      } else {
        text += c;
      }
    }
    const auto [tracks, notes] = read(text);
    expectPlaces(tracks, {{1, 1, 3}, {2, 2, 4}});
    EXPECT_EQ(notes, Names{});
  }
}

TEST(NkReaderTraps, FramesMayBeInAnyOrderAndNegative) {
  const auto [tracks, notes] =
      read(oldTracker("{{curve x3 3 x-1 1 x2 2} {curve x2 2 x3 3 x-1 1}}"));
  expectPlaces(tracks, {{-1, 1, 1}, {2, 2, 2}, {3, 3, 3}});
  const auto [whole, said] = read(oldTracker("{{curve x1 1 x1.5 2 x2 3} {curve x1 1 x2 2}}"));
  expectPlaces(whole, {{1, 1, 1}, {2, 3, 2}});
  EXPECT_EQ(said, Names{":2: track1: 1 key between two frames left out"});
}

TEST(NkReaderTraps, NotesOfAKindEnd) {
  std::string script;
  for (int i = 0; i < 13; ++i) script += "Transform {\n}\n";
  const auto [tracks, notes] = read(script + oldTracker("{{curve x1 1} {curve x1 1}}"));
  ASSERT_EQ(notes.size(), 11u);
  EXPECT_EQ(notes[10], ": and 3 more nodes");
}

TEST(NkReaderRefusals, NameLineColumnAndValue) {
  EXPECT_EQ(refusal(oldTracker("{{curve x1 inf} {curve x1 1}}")),
            "in.txt:2: column 20: the value must be finite, not \"inf\"");
  EXPECT_EQ(refusal(oldTracker("{{curve x1 1 x1 2} {curve x1 1}}")),
            "in.txt:2: track1 has two keys in frame 1");
  EXPECT_EQ(refusal(trackerNode("T", row("a", "{curve x1 1 x1 1}", "{curve x1 1 x1 1}"))),
            "in.txt:9: track_x has two keys in frame 1\nin.txt:9: track_y has two keys in frame 1");
  EXPECT_EQ(refusal("Tracker4 {\n tracks { { 1 31 1 } { {track_x} {y} }\n{ { 1 2 } } }\n}\n"),
            "in.txt:3: the tracker's columns are not understood: no track_x or no track_y is among "
            "them");
  EXPECT_EQ(refusal(oldTracker("{{curve x1 1 x2 2} {curve x1 1 x2 2}")),
            "in.txt:1: the brace that opens here is not closed: the file is cut off");
  EXPECT_EQ(refusal(trackerNode("T", row("a", "{curve x1 1}", "{curve x1 1}", "{curve x1 0}"))),
            "in.txt: no track has a weight above 0");
}

TEST(NkReaderRefusals, AnEmptyScriptSaysWhatWasSkipped) {
  const std::string wanted =
      "in.txt: no track is in it: wanted are trackers, planar trackers or a CornerPin2D";
  EXPECT_EQ(refusal(""), wanted);
  EXPECT_EQ(refusal("Blur {\n}\n"), wanted);
  EXPECT_EQ(refusal("Reconcile3D {\n name R\n}\n"),
            wanted +
                "\nin.txt:1: the Reconcile3D \"R\" is skipped: it has no tracks that could be "
                "read");
  EXPECT_EQ(
      refusal(pin(" transform_matrix {{{curve x1 1 x2 2} 0 0 0} {0 1 0 0} {0 0 1 0} {0 0 0 1}}\n"
                  " from1 {0 0}\n from2 {{width} 0}\n name P\n")),
      wanted +
          "\nin.txt:4: from2: the expression \"{width}\" is skipped\n"
          "in.txt:1: \"P\": it moves by its transform_matrix, and the corners that this "
          "moves are not known: write numbers for from1 to from4\n"
          "in.txt:1: the pin \"P\" is skipped: it has no corners");
}

// Every beginning of a script is read or refused.
TEST(NkReaderHostile, MayBeCutOffAnywhere) {
  const std::string script = "set cut_paste_input [stack 0]\nRoot {\n format \"20 10 0\"\n}\n" +
                             trackerNode("\"a\\\" b\"", row("a", "{curve x1 1 L 2}",
                                                            "{curve i x1 3 4}", "{curve K x1 1}")) +
                             pin(" to1 {{curve x1 1} {a.b + 2}}\n to2 {1 2}\n transform_matrix {{1 "
                                 "0 0 {curve x1 2 3}} {0 1 "
                                 "0 0} {0 0 1 0} {0 0 0 1}}\n from1 {0 0}\n");
  std::size_t read = 0;
  for (std::size_t length = 0; length <= script.size(); ++length)
    read += refusal(script.substr(0, length)).empty() ? 1 : 0;
  EXPECT_GT(read, 5u);  // behind the tracker and outside of the pin
  EXPECT_LT(read, script.size() / 2);
}

TEST(NkReaderHostile, BracesInBracesAreRefused) {
  const std::string deep(200'000, '{');
  for (const char* before : {"Tracker4 ", "Tracker4 {\n tracks ", "Tracker4 {\n track1 ",
                             "CornerPin2D {\n transform_matrix ", "Blur "}) {
    EXPECT_NE(refusal(before + deep).find("more than 100 deep"), std::string::npos) << before;
  }
}

TEST(NkReaderHostile, ALineOfMoreThanSixteenMegabytesIsRefused) {
  EXPECT_EQ(refusal("Tracker3 {\n track1 {{curve " + std::string(std::size_t{18} << 20, '1')),
            "in.txt:2: the line is longer than 16 MB: this is no file of this kind");
}

TEST(NkReaderHostile, FarFramesAndManyKeysAreRefused) {
  EXPECT_NE(refusal(oldTracker("{{curve x1 1 2 3 x1900000000 5} {curve x1 1 2 3 x1900000000 5}}")),
            "");
  std::string keys;
  constexpr std::size_t kKeys = 2'000'001;
  keys.reserve(kKeys * 3);
  for (std::size_t i = 0; i < kKeys; ++i) keys += i % 1000 == 999 ? "1\n" : "1 ";
  EXPECT_NE(refusal(oldTracker("{{curve " + keys + "} {curve 1}}"))
                .find("the curve has more than 2000000 keys"),
            std::string::npos);
}

TEST(NkReaderHostile, AMillionTracksInAFrameAreRead) {
  std::string rows;
  constexpr int kTracks = 1'000'000;
  rows.reserve(std::size_t{kTracks} * 48);
  for (int i = 0; i < kTracks; ++i)
    rows += row("t" + std::to_string(i), "{curve x1 5}", "{curve x1 " + std::to_string(i) + "}");
  const auto [tracks, notes] = read(trackerNode("T", rows));
  EXPECT_EQ(tracks.names.size(), std::size_t{kTracks});
  EXPECT_EQ(tracks.observations.size(), std::size_t{kTracks});
  EXPECT_EQ(notes, Names{});
}

// A name that a hundred thousand rows have.
TEST(NkReaderHostile, ManyRowsMayHaveOneName) {
  std::string rows;
  constexpr std::size_t kRows = 100'000;
  rows.reserve(kRows * 40);
  for (std::size_t i = 0; i < kRows; ++i) rows += row("a", "{curve x1 5}", "{curve x1 6}");
  EXPECT_EQ(read(trackerNode("T", rows)).first.names.size(), kRows);
}
