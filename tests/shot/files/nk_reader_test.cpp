// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "shot/files/pin.h"
#include "shot/files/track_reader.h"
#include "tests/shot/files/node_scripts.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

const std::string kSamples = CORNERPIN_DATA "/../tests/shot/files/samples/";

std::vector<Observation> rowsOf(const Tracks& tracks, const std::string& name) {
  const auto found = std::find(tracks.names.begin(), tracks.names.end(), name);
  std::vector<Observation> rows;
  for (const Observation& row : tracks.observations) {
    if (tracks.names[static_cast<std::size_t>(row.track)] == *found) rows.push_back(row);
  }
  return rows;
}

void expectAt(const Observation& row, int frame, double x, double y) {
  EXPECT_EQ(row.frame, frame);
  EXPECT_EQ(row.x, x);
  EXPECT_EQ(row.y, y);
  EXPECT_EQ(row.weight, 1.0f);
}

std::vector<std::pair<int, int>> gapsOf(const std::vector<Observation>& rows) {
  std::vector<std::pair<int, int>> gaps;
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].frame != rows[i - 1].frame + 1) gaps.emplace_back(rows[i - 1].frame, rows[i].frame);
  }
  return gaps;
}

using Gaps = std::vector<std::pair<int, int>>;
using Names = std::vector<std::string>;

}  // namespace

// The corner pin of the format's description.
TEST(NkReader, ReadsACornerPin) {
  const std::string script =
      "set cut_paste_input [stack 0]\nversion 13.0 v1\npush $cut_paste_input\nCornerPin2D {\n"
      " to1 {{curve L x1001 412.5 x1002 413.1 x1003 413.9} {curve L x1001 210 x1002 209.4 x1003 "
      "208.7}}\n"
      " to2 {{curve L x1001 1500 x1002 1501.2 x1003 1502.6} {curve L x1001 198 x1002 197.3 x1003 "
      "196.9}}\n"
      " to3 {{curve L x1001 1488 x1002 1489.5 x1003 1491} {curve L x1001 870 x1002 869.2 x1003 "
      "868.1}}\n"
      " to4 {{curve L x1001 430 x1002 430.8 x1003 431.4} {curve L x1001 884 x1002 883.1 x1003 "
      "882.5}}\n"
      " invert false\n from1 {0 0}\n from2 {1920 0}\n from3 {1920 1080}\n from4 {0 1080}\n"
      " name CornerPin_sign\n selected true\n}\n";
  ReadTrace trace;
  const Tracks tracks = tracksIn(script, &trace);
  EXPECT_TRUE(trace.isPin);
  EXPECT_EQ(trace.format, Format::Nk);
  EXPECT_EQ(trace.rows, 12);
  EXPECT_EQ(trace.notes, Names{});
  EXPECT_EQ(tracks.names.size(), 4u);
  EXPECT_EQ(tracks.picture.y, YAxis::Up);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.5);
  EXPECT_EQ(tracks.picture.width, std::nullopt);
  EXPECT_EQ(tracks.picture.firstFrame, std::nullopt);
  expectAt(rowsOf(tracks, "bottom_left")[0], 1001, 412.5, 210);
  expectAt(rowsOf(tracks, "bottom_right")[1], 1002, 1501.2, 197.3);
  expectAt(rowsOf(tracks, "top_right")[2], 1003, 1491, 868.1);
  expectAt(rowsOf(tracks, "top_left")[2], 1003, 431.4, 882.5);
  EXPECT_EQ(tracks.observations[0].line, 4u);
}

// By hand: `sed -n 39p` to `42p` of the file, whose third and fourth columns are the curves. The
// last marks of track 3 are x42, x44 and a value without a mark in each gap, so every other frame
// from 42 to 54; of track 4 x37, x40, x44, x46, x47, x49, and then a value without a mark: 51.
TEST(NkReader, ReadsTheSampleWithFourCorners) {
  ReadTrace trace;
  const Tracks tracks = readTracks(kSamples + "four_corner_screen.nk", {}, {}, &trace);
  EXPECT_FALSE(trace.isPin);
  EXPECT_EQ(tracks.names, (Names{"track 1", "track 2", "track 3", "track 4"}));
  const auto first = rowsOf(tracks, "track 1");
  EXPECT_EQ(first.size(), 100u);
  expectAt(first.front(), -49, 602.2633667, 970.9196167);
  expectAt(first.back(), 51, -238.5, 780.5);
  EXPECT_EQ(gapsOf(first), (Gaps{{49, 51}}));
  const auto second = rowsOf(tracks, "track 2");
  EXPECT_EQ(second.size(), 103u);
  expectAt(second.front(), -49, 981.6083374, 972.1343384);
  expectAt(second.back(), 53, -88, 673);
  EXPECT_EQ(gapsOf(second), Gaps{});
  const auto third = rowsOf(tracks, "track 3");
  EXPECT_EQ(third.size(), 98u);
  expectAt(third.front(), -49, 979.6213379, 1247.808105);
  expectAt(third.back(), 54, -52, 972);
  EXPECT_EQ(gapsOf(third), (Gaps{{42, 44}, {44, 46}, {46, 48}, {48, 50}, {50, 52}, {52, 54}}));
  const auto fourth = rowsOf(tracks, "track 4");
  EXPECT_EQ(fourth.size(), 96u);
  expectAt(fourth.back(), 51, -201.5, 1095.5);
  EXPECT_EQ(gapsOf(fourth), (Gaps{{37, 40}, {44, 46}, {47, 49}, {49, 51}}));
  EXPECT_EQ(first.front().line, 39u);
  EXPECT_EQ(fourth.front().line, 42u);
}

// The table has frames from 0, y down in a picture of 1080 rows, and three digits.
TEST(NkReader, ReadsTheSamplePositionsThatATableHas) {
  const Tracks tracks = readTracks(kSamples + "four_corner_screen.nk");
  const Tracks table = readTracks(CORNERPIN_DATA "/screen4.csv");
  ASSERT_EQ(tracks.observations.size(), 397u);
  ASSERT_EQ(table.observations.size(), 397u);
  for (std::size_t i = 0; i < 397; ++i) {
    const Observation& a = tracks.observations[i];
    const Observation& b = table.observations[i];
    EXPECT_EQ(a.frame, b.frame - 49);
    EXPECT_EQ(a.track, b.track);
    EXPECT_NEAR(a.x, b.x, 0.0005000001) << "row " << i;
    EXPECT_NEAR(1080.0 - a.y, b.y, 0.0005000001) << "row " << i;
  }
}

// By hand: track1 is line 55 of the file; the other three are constants.
TEST(NkReader, ReadsTheSampleWithGaps) {
  ReadTrace trace;
  const Tracks tracks = readTracks(kSamples + "tracker_with_gaps.nk", {}, {}, &trace);
  EXPECT_FALSE(trace.isPin);
  EXPECT_EQ(tracks.names, Names{"track1"});
  const auto rows = rowsOf(tracks, "track1");
  EXPECT_EQ(rows.size(), 45u);
  expectAt(rows.front(), 22, 682, 1156);
  expectAt(rows.back(), 110, 263.2000122, 975.7999878);
  EXPECT_EQ(gapsOf(rows), (Gaps{{46, 61}, {73, 100}, {100, 103}, {103, 105}, {107, 109}}));
  ASSERT_EQ(trace.notes.size(), 4u);
  const std::string file = kSamples + "tracker_with_gaps.nk";
  EXPECT_EQ(trace.notes[0], file +
                                ":41: the root's format 2048x1556 is not used: give --size "
                                "2048x1556 if it is the clip's");
  EXPECT_EQ(trace.notes[1],
            file + ":59: \"track2\" has no keys: a constant is no track, it is skipped");
}

// By hand: x1 to x101 on each of the lines 2 to 5, and widths and heights in from2 to from4.
TEST(NkReader, ReadsTheSampleOfAPin) {
  ReadTrace trace;
  const Tracks tracks = readTracks(kSamples + "corner_pin.nk", {}, {}, &trace);
  EXPECT_TRUE(trace.isPin);
  for (const char* name : kCornerNames) {
    EXPECT_EQ(rowsOf(tracks, name).size(), 101u);
    EXPECT_EQ(gapsOf(rowsOf(tracks, name)), Gaps{});
  }
  EXPECT_EQ(tracks.firstFrame(), 1);
  EXPECT_EQ(tracks.lastFrame(), 101);
  EXPECT_EQ(rowsOf(tracks, "bottom_left").front().x, 1762);
  EXPECT_EQ(rowsOf(tracks, "bottom_right").front().x, 1994);
  EXPECT_EQ(rowsOf(tracks, "top_right").front().x, 1994);
  EXPECT_EQ(rowsOf(tracks, "top_left").front().x, 1762);
  EXPECT_EQ(rowsOf(tracks, "bottom_left").back().y, 325.975);
  EXPECT_EQ(rowsOf(tracks, "top_left").back().y, 569.166);
  const std::string file = kSamples + "corner_pin.nk";
  EXPECT_EQ(trace.notes, (Names{file + ":7: from2: the expression \"{width}\" is skipped",
                                file + ":8: from3: the expression \"{width}\" is skipped",
                                file + ":8: from3: the expression \"{height}\" is skipped",
                                file + ":9: from4: the expression \"{height}\" is skipped"}));
}

TEST(NkReader, FindsColumnsByTheirNames) {
  const std::string script =
      "Tracker4 {\n tracks { { 1 5 2 }\n{ { 2 1 58 track_y track_y 1 }\n{ 2 error }\n{ 3 1 75 name "
      "}"
      "\n{ 5 1 20 enable e 1 2 3 }\n{ 2 1 58 track_x track_x 1 } }\n"
      "{ { {curve x3 30 x4 40} {curve x3 0} \"a\" {curve x3 1 x4 0} {curve x3 3 x4 4} }\n"
      " { {curve x3 31} {} b 1 {curve x3 13} extra } } }\n}\n";
  ReadTrace trace;
  const Tracks tracks = tracksIn(script, &trace);
  EXPECT_EQ(tracks.names, (Names{"a", "b"}));
  ASSERT_EQ(tracks.observations.size(), 3u);
  expectAt(tracks.observations[0], 3, 3, 30);
  expectAt(tracks.observations[1], 3, 13, 31);
  EXPECT_EQ(tracks.observations[2].x, 4);
  EXPECT_EQ(tracks.observations[2].weight, 0.0f);
  EXPECT_EQ(trace.rows, 3);
  EXPECT_EQ(trace.notes, Names{});
}

TEST(NkReader, ReadsTheFourTracksOfAnOldNode) {
  std::string script = "Tracker3 {\n";
  for (const std::string n : {"1", "2", "3", "4"}) {
    script.append(" track").append(n).append(" {{curve x").append(n).append(" 1").append(n);
    script.append("} {curve x").append(n).append(" 2").append(n).append("}}\n");
  }
  const Tracks tracks = tracksIn(script + " translate {{curve x1 0} {curve x1 0}}\n}\n");
  EXPECT_EQ(tracks.names, (Names{"track1", "track2", "track3", "track4"}));
  expectAt(rowsOf(tracks, "track3")[0], 3, 13, 23);
}

TEST(NkReader, ReadsTheOutputsOfPlanarTrackers) {
  for (const char* type : {"PlanarTracker1_0", "PlanarTracker"}) {
    ReadTrace trace;
    const Tracks tracks = tracksIn(std::string(type) +
                                       " {\n outputBottomLeft {{curve x5 1 2} {curve x5 3 4}}\n"
                                       " outputBottomRight {{curve x5 5} {curve x5 6}}\n"
                                       " outputTopRight {{curve x5 7} {curve x5 8}}\n"
                                       " outputTopLeft {{curve x5 9} {curve x5 10}}\n}\n",
                                   &trace);
    EXPECT_EQ(tracks.names,
              (Names{"outputBottomLeft", "outputBottomRight", "outputTopLeft", "outputTopRight"}));
    EXPECT_FALSE(trace.isPin);
    expectAt(rowsOf(tracks, "outputBottomLeft")[1], 6, 2, 4);
    expectAt(rowsOf(tracks, "outputTopLeft")[0], 5, 9, 10);
  }
}

TEST(NkReader, JoinsTheNodeToNamesThatRepeat) {
  const std::string script = trackerNode("One", row("a", "{curve x1 1}", "{curve x1 1}") +
                                                    row("a", "{curve x1 2}", "{curve x1 2}") +
                                                    row("a", "{curve x1 3}", "{curve x1 3}")) +
                             trackerNode("Two", row("a", "{curve x1 4}", "{curve x1 4}") +
                                                    row("b", "{curve x1 5}", "{curve x1 5}")) +
                             "Tracker3 {\n track1 {{curve x1 6} {curve x1 6}}\n}\n" +
                             "Tracker3 {\n track1 {{curve x1 7} {curve x1 7}}\n}\n";
  const Tracks tracks = tracksIn(script);
  EXPECT_EQ(tracks.names, (Names{"a@One", "a@One 2", "a@One 3", "a@Two", "b", "track1@Tracker3",
                                 "track1@Tracker3 2"}));
  EXPECT_EQ(rowsOf(tracks, "a@One 3")[0].x, 3);
  EXPECT_EQ(rowsOf(tracks, "a@Two")[0].x, 4);
  EXPECT_EQ(rowsOf(tracks, "track1@Tracker3 2")[0].x, 7);
}

TEST(NkReader, TakesNamesAsPeopleMeanThem) {
  const Tracks tracks =
      tracksIn(trackerNode("T", row("a b", "{curve x1 1}", "{curve x1 1}") +
                                    row("\xC3\xA4\xE2\x82\xAC", "{curve x1 2}", "{curve x1 2}") +
                                    row("12", "{curve x1 3}", "{curve x1 3}") +
                                    row("{ \\\"q\\\" \\{", "{curve x1 4}", "{curve x1 4}") +
                                    row("", "{curve x1 5}", "{curve x1 5}") +
                                    " { 1 {in braces} {curve x1 6} {curve x1 6} }\n"));
  EXPECT_EQ(tracks.names,
            (Names{"12", "a b", "in braces", "track 5", "{ \"q\" {", "\xC3\xA4\xE2\x82\xAC"}));
}

TEST(NkReader, TakesTracksRatherThanPins) {
  const std::string pin = "CornerPin2D {\n to1 {{curve x1 1} {curve x1 2}}\n name P\n}\n";
  const std::string tracker = "Tracker3 {\n track1 {{curve x1 6} {curve x1 6}}\n}\n";
  const std::vector<std::string> scripts = {pin + tracker + pin, tracker + pin + pin};
  for (const std::string& script : scripts) {
    ReadTrace trace;
    const Tracks tracks = tracksIn(script, &trace);
    EXPECT_EQ(tracks.names, Names{"track1"});
    EXPECT_FALSE(trace.isPin);
    ASSERT_EQ(trace.notes.size(), 2u);
    EXPECT_NE(trace.notes[0].find("the pin \"P\" is skipped: the script has tracks"),
              std::string::npos);
  }
}

TEST(NkReader, SaysWhichOfSeveralPinsIsTaken) {
  const std::string still = "CornerPin2D {\n to1 {1 2}\n name S\n}\n";
  const std::string moving = "CornerPin2D {\n to1 {{curve x1 3 4} {curve x1 5 6}}\n name M\n}\n";
  const std::string other = "CornerPin2D {\n to1 {{curve x1 7 8} {curve x1 9 9}}\n name O\n}\n";
  ReadTrace trace;
  const Tracks tracks = tracksIn(still + moving + other, &trace);
  EXPECT_TRUE(trace.isPin);
  EXPECT_EQ(tracks.observations[0].x, 3);
  ASSERT_EQ(trace.notes.size(), 5u);  // three corners of the pin are missing, too
  EXPECT_NE(trace.notes[0].find(":1: the pin \"S\" is skipped: M (line 5) is taken"),
            std::string::npos);
  EXPECT_NE(trace.notes[1].find(":9: the pin \"O\" is skipped: M (line 5) is taken"),
            std::string::npos);
}

// The transform shears by half and moves by the frame; then all is divided by 1 + y / 4.
TEST(NkReader, CarriesCornersThroughAMatrix) {
  for (const char* knob :
       {"transform_matrix", "\"extra matrix\" 1\n transform_matrix", "\"extra matrix\""}) {
    const std::string script = std::string(
                                   "CornerPin2D {\n from1 {0 0}\n from2 {8 0}\n"
                                   " from3 {8 4}\n from4 {0 4}\n ") +
                               knob +
                               " {{1 0.5 7 {curve x3 3 x4 4}} {0 1 7 {curve K x1 0}} {7 7 1 7} "
                               "{0 {0.25} 7 1}}\n}\n";
    ReadTrace trace;
    const Tracks tracks = tracksIn(script, &trace);
    EXPECT_TRUE(trace.isPin);
    EXPECT_EQ(trace.rows, 8);
    expectAt(rowsOf(tracks, "bottom_left")[0], 3, 3, 0);
    expectAt(rowsOf(tracks, "bottom_right")[1], 4, 12, 0);
    expectAt(rowsOf(tracks, "top_right")[0], 3, 6.5, 2);
    expectAt(rowsOf(tracks, "top_left")[1], 4, 3, 2);
  }
}
