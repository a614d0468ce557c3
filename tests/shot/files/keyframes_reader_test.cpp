// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "tests/shot/files/keyframes_text.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;
using made::cornerSection;
using made::fourCorners;
using made::keyframes;
using made::keyframesHeader;
using made::replaced;
using made::section;

namespace {

using Places = std::map<std::string, std::map<int, std::pair<double, double>>>;

Places placesIn(const std::string& text, ReadTrace* trace = nullptr) {
  const Tracks tracks = tracksIn(text, trace);
  Places places;
  for (const std::string& name : tracks.names) places[name];
  for (const Observation& row : tracks.observations) {
    places[tracks.names[static_cast<std::size_t>(row.track)]][row.frame] = {row.x, row.y};
    EXPECT_EQ(row.weight, 1.0f);
  }
  return places;
}

// What `made::fourCorners` says.
const Places kFourCorners = {{"top_left", {{0, {100, 10}}, {1, {101, 10}}}},
                             {"top_right", {{0, {200, 20}}, {1, {201, 20}}}},
                             {"bottom_left", {{0, {300, 30}}, {1, {301, 30}}}},
                             {"bottom_right", {{0, {400, 40}}, {1, {401, 40}}}}};

std::string tracker(const std::string& point, const std::string& property, const std::string& rows,
                    const std::string& name = "Tracker #1") {
  return section("Motion Trackers\t" + name + "\t" + point + "\t" + property, rows);
}

// Position, Anchor Point, Scale and Rotation of one frame or, where there is none, of all.
std::string placed(const std::string& frame, const std::string& position, const std::string& anchor,
                   const std::string& scale, const std::string& rotation) {
  return section("Transform\tPosition", "\t" + frame + "\t" + position + "\n") +
         section("Transform\tAnchor Point", "\t" + frame + "\t" + anchor + "\n") +
         section("Transform\tScale", "\t" + frame + "\t" + scale + "\n") +
         "Transform\tRotation\n\tFrame\tDegrees\n\t" + frame + "\t" + rotation + "\n\n";
}

}  // namespace

TEST(KeyframesReader, ReadsTheCornersOfAPin) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(keyframes(fourCorners()), &trace);
  EXPECT_EQ(trace.format, Format::Keyframes);
  EXPECT_TRUE(trace.isPin);
  EXPECT_EQ(trace.rows, 8);
  EXPECT_TRUE(trace.notes.empty());
  EXPECT_EQ(tracks.picture.width, 1920);
  EXPECT_EQ(tracks.picture.height, 1080);
  EXPECT_EQ(tracks.picture.y, YAxis::Down);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.5);
  EXPECT_EQ(tracks.picture.firstFrame, 0);
  EXPECT_EQ(tracks.names,
            (std::vector<std::string>{"bottom_left", "bottom_right", "top_left", "top_right"}));
  EXPECT_EQ(tracks.observations[2].line, 11u);  // behind 8 lines of header, a heading and a head
  EXPECT_EQ(placesIn(keyframes(fourCorners())), kFourCorners);
}

TEST(KeyframesReader, TakesWhatHostsWrite) {
  const std::string text = keyframes(fourCorners());
  EXPECT_EQ(placesIn(replaced(text, "\n", "\r\n")), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "\n", "\r")), kFourCorners);
  EXPECT_EQ(placesIn("\xEF\xBB\xBF" + text), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "\n", "\t\t\n")), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "\n", "\t \r\n")), kFourCorners);
  EXPECT_EQ(placesIn(keyframes(replaced(fourCorners(), "0\n", "0\t0\n"))), kFourCorners)
      << "a third coordinate";
  EXPECT_EQ(placesIn(replaced(text, "\n\t0\t", "\n0\t")), kFourCorners) << "no tab in front";
  EXPECT_EQ(placesIn(replaced(text, "\n\t1\t", "\n\t1.000\t")), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "\n\tFrame\tX pixels\tY pixels", "")), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "Frame\tX pixels", "Bild\tX Pixel")), kFourCorners);
  EXPECT_EQ(placesIn(keyframes("Layer\n\n" + fourCorners() + "Layer\t2\n")), kFourCorners);
}

TEST(KeyframesReader, TakesEverySpellingOfAPin) {
  const std::string text = keyframes(fourCorners());
  std::string display = replaced(text, "ADBE Corner Pin #1", "Corner Pin #1");
  std::string power = replaced(text, "ADBE Corner Pin #1", "CC Power Pin #1");
  const char* const names[] = {"Upper Left #2", "Upper Right #3", "Lower Left #4",
                               "Lower Right #5"};
  for (int k = 4; k >= 1; --k) {
    const std::string match = "ADBE Corner Pin-000" + std::to_string(k);
    display = replaced(display, match, names[k - 1]);
    power = replaced(power, match, "CC Power Pin-000" + std::to_string(k + 1));
  }
  EXPECT_EQ(placesIn(display), kFourCorners);
  EXPECT_EQ(placesIn(power), kFourCorners);
  EXPECT_EQ(placesIn(replaced(text, "Effects\tADBE Corner Pin #1", "Effekte\tEcken #1")),
            kFourCorners);
}

TEST(KeyframesReader, TakesVersionsFiveToNineAndSaysWhereOneIsAnother) {
  for (const char* version : {"5.0", "5.5", "6.0", "7.0", "8.0", "9.0"}) {
    ReadTrace trace;
    tracksIn(keyframesHeader(version) + fourCorners() + "End of Keyframe Data", &trace);
    EXPECT_TRUE(trace.notes.empty()) << version;
  }
  for (const char* version : {"4.1", "10.0", "x"}) {
    ReadTrace trace;
    tracksIn(keyframesHeader(version) + fourCorners() + "End of Keyframe Data", &trace);
    ASSERT_EQ(trace.notes.size(), 1u) << version;
    EXPECT_NE(trace.notes[0].find(":1: \"Adobe After Effects " + std::string(version) +
                                  " Keyframe Data\" is none of the versions 5.0 to 9.0"),
              std::string::npos)
        << trace.notes[0];
  }
}

TEST(KeyframesReader, ReadsFeaturesAndAttachPointsOnlyWhereThereIsNone) {
  const std::string feature =
      tracker("Track Point #1", "Feature Center", "\t3\t10.5\t20\n\t5\t11\t-21.25\n");
  const std::string size = tracker("Track Point #1", "Feature Size", "\t\t32\t32\n");
  const std::string attach = tracker("Track Point #1", "Attach Point", "\t3\t1\t2\n");
  const std::string other = tracker("\xC3\xA4 2", "Attach Point", "\t4\t7\t8\n\t6\t9\t8\n");
  const Places wanted = {{"Track Point #1", {{3, {10.5, 20}}, {5, {11, -21.25}}}},
                         {"\xC3\xA4 2", {{4, {7, 8}}, {6, {9, 8}}}}};
  ReadTrace trace;
  EXPECT_EQ(placesIn(keyframes(feature + size + attach + other), &trace), wanted);
  EXPECT_FALSE(trace.isPin);
  EXPECT_EQ(trace.rows, 4);
  ASSERT_EQ(trace.notes.size(), 2u);
  EXPECT_NE(trace.notes[0].find(":14: \"Motion Trackers Tracker #1 Track Point #1 Feature Size\" "
                                "is skipped"),
            std::string::npos)
      << trace.notes[0];
  EXPECT_EQ(placesIn(keyframes(attach + other + feature)), wanted);
  EXPECT_EQ(placesIn(keyframes(feature + other + attach)), wanted);
  const std::string third = tracker("z", "Feature Center", "\t0\t1\t2\n");
  EXPECT_EQ(placesIn(keyframes(feature + third + attach)).at("Track Point #1"),
            wanted.at("Track Point #1"));
  const std::string gaps = tracker("\xC3\xA4 2", "Feature Center", "\t4\tnan\tnan\n");
  EXPECT_EQ(placesIn(keyframes(other + gaps + feature)).size(), 1u);
}

TEST(KeyframesReader, JoinsTheTrackerWhereAPointsNameRepeats) {
  const std::string text = tracker("1", "Feature Center", "\t0\t1\t2\n") +
                           tracker("2", "Feature Center", "\t0\t3\t4\n") +
                           tracker("1", "Feature Center", "\t0\t5\t6\n", "Tracker #2") +
                           tracker("1", "Attach Point", "\t0\t7\t8\n", "Tracker 3");
  const Places wanted = {{"1@Tracker #1", {{0, {1, 2}}}},
                         {"2", {{0, {3, 4}}}},
                         {"1@Tracker #2", {{0, {5, 6}}}},
                         {"1@Tracker 3", {{0, {7, 8}}}}};
  EXPECT_EQ(placesIn(keyframes(text)), wanted);
}

TEST(KeyframesReader, JoinsTheLayerToTheTracker) {
  const std::string layer = "Layer\n" + tracker("1", "Feature Center", "\t0\t1\t2\n");
  const Places wanted = {{"1@Layer 1 Tracker #1", {{0, {1, 2}}}},
                         {"1@Layer 2 Tracker #1", {{0, {1, 2}}}}};
  EXPECT_EQ(placesIn(keyframes(layer + "\n" + layer)), wanted);
}

TEST(KeyframesReader, TakesNanForAGap) {
  const std::string rows = "\t0\t1\t2\n\t1\tnan\tnan\n\t2\tNaN\t-nan(ind)\t0\n\t3\t4\t5\n";
  const Places wanted = {{"a", {{0, {1, 2}}, {3, {4, 5}}}}};
  EXPECT_EQ(placesIn(keyframes(tracker("a", "Feature Center", rows))), wanted);
  Places corners = kFourCorners;
  corners["top_left"].erase(0);
  EXPECT_EQ(placesIn(replaced(keyframes(fourCorners()), "\t0\t100\t10", "\t0\tnan\tnan")), corners);
}

TEST(KeyframesReader, LeavesOutWhatIsBetweenFrames) {
  ReadTrace trace;
  const Places wanted = {{"a", {{0, {1, 2}}, {-3, {4, 5}}}}};
  const std::string rows = "\t0\t1\t2\n\t1.5\t3\t4\n\t-3\t4\t5\n\t\t9\t9\n";
  EXPECT_EQ(placesIn(keyframes(tracker("a", "Feature Center", rows)), &trace), wanted);
  ASSERT_EQ(trace.notes.size(), 2u);
  EXPECT_NE(trace.notes[0].find(":12: \"1.5\" is between two frames: skipped"), std::string::npos);
  EXPECT_NE(trace.notes[1].find(":14: a position without a frame: skipped"), std::string::npos);
}

TEST(KeyframesReader, CarriesCornersThroughTheLayersMotion) {
  // A quarter turn clockwise about (100, 10), doubled in x and tripled in y, then to (7, 9).
  const Places wanted = {{"top_left", {{0, {7, 9}}, {1, {7, 11}}}},
                         {"top_right", {{0, {-23, 209}}, {1, {-23, 211}}}},
                         {"bottom_left", {{0, {-53, 409}}, {1, {-53, 411}}}},
                         {"bottom_right", {{0, {-83, 609}}, {1, {-83, 611}}}}};
  for (const std::string frame : {"0", ""}) {
    const std::string motion = placed(frame, "7\t9\t0", "100\t10\t0", "200\t300\t100", "90");
    for (const std::string& text : {fourCorners() + motion, motion + fourCorners()}) {
      ReadTrace trace;
      const Places places = placesIn(keyframes(text), &trace);
      EXPECT_TRUE(trace.isPin);
      EXPECT_TRUE(trace.notes.empty());
      ASSERT_EQ(places.size(), 4u);
      for (const auto& [name, rows] : wanted) {
        for (const auto& [row, p] : rows) {
          EXPECT_NEAR(places.at(name).at(row).first, p.first, 1e-12) << name << row;
          EXPECT_NEAR(places.at(name).at(row).second, p.second, 1e-12) << name << row;
        }
      }
    }
  }
}

TEST(KeyframesReader, KeepsTheNumbersWhereTheLayerStays) {
  const std::string motion = placed("0", "960\t540", "960\t540", "100\t100", "0");
  const std::string corners = replaced(fourCorners(), "\t0\t100\t10", "\t0\t430.8\t0.1");
  const Places places = placesIn(keyframes(corners + motion));
  EXPECT_EQ(places.at("top_left").at(0), (std::pair<double, double>{430.8, 0.1}));
}

// Position without keys in frame 1, where it is half way.
TEST(KeyframesReader, MovesTheLayerStraightBetweenKeys) {
  const std::string motion = section("Position", "\t2\t120\t40\n\t0\t100\t10\n") +
                             section("Anchor Point", "\t\t100\t10\t0\n");
  Places wanted = kFourCorners;
  for (auto& [name, rows] : wanted) {
    rows[1].first += 10.0;
    rows[1].second += 15.0;
  }
  EXPECT_EQ(placesIn(keyframes(motion + fourCorners())), wanted);
}

TEST(KeyframesReader, LeavesCornersInALayerThatIsNotPlaced) {
  const std::string position = section("Position", "\t0\t5\t5\n");
  ReadTrace trace;
  EXPECT_EQ(placesIn(keyframes(fourCorners() + position), &trace), kFourCorners);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find("corners stay in the layer"), std::string::npos);
  // Another layer's place is none of the pin's.
  ReadTrace other;
  const std::string motion = placed("0", "7\t9", "1\t2", "50\t50", "3");
  EXPECT_EQ(placesIn(keyframes(motion + "Layer\n" + fourCorners() + "Layer\n" + motion), &other),
            kFourCorners);
  EXPECT_EQ(other.notes.size(), 4u);
}

TEST(KeyframesReader, HasCornersWithoutKeysInEveryFrame) {
  const std::string text = cornerSection(1, "\t\t1\t2\t\n") +
                           cornerSection(2, "\t0\t3\t4\n\t7\t5\t6\n") +
                           cornerSection(3, "\t2\t7\t8\n") + cornerSection(4, "\t \t9\t10\n");
  const Places wanted = {{"top_left", {{0, {1, 2}}, {2, {1, 2}}, {7, {1, 2}}}},
                         {"top_right", {{0, {3, 4}}, {7, {5, 6}}}},
                         {"bottom_left", {{2, {7, 8}}}},
                         {"bottom_right", {{0, {9, 10}}, {2, {9, 10}}, {7, {9, 10}}}}};
  EXPECT_EQ(placesIn(keyframes(text)), wanted);
  std::string still;
  for (int k = 1; k <= 4; ++k) still += cornerSection(k, "\t\t1\t2\n");
  for (const auto& track : placesIn(keyframes(still))) EXPECT_EQ(track.second.count(0), 1u);
}

TEST(KeyframesReader, PinsALayerThatIsOnlyPlaced) {
  ReadTrace trace;
  const Places wanted = {{"top_left", {{3, {-950, -520}}, {5, {-940, -520}}}},
                         {"top_right", {{3, {970, -520}}, {5, {980, -520}}}},
                         {"bottom_left", {{3, {-950, 560}}, {5, {-940, 560}}}},
                         {"bottom_right", {{3, {970, 560}}, {5, {980, 560}}}}};
  const std::string motion = section("Position", "\t3\t10\t20\n\t5\t20\t20\n") +
                             section("Anchor Point", "\t3\t960\t540\n");
  EXPECT_EQ(placesIn(keyframes(motion), &trace), wanted);
  EXPECT_TRUE(trace.isPin);
}

TEST(KeyframesReader, NamesWhatItSkips) {
  const std::string second = replaced(fourCorners(), "#1", "#2");
  std::string others;
  for (int i = 0; i < 12; ++i) others += section("Effects\tGlow #1\tRadius", "\t0\tx\n");
  ReadTrace trace;
  EXPECT_EQ(placesIn(keyframes(fourCorners() + second +
                               tracker("a", "Feature Center", "\t0\t1\t2\n") + others) +
                         "\nmore\n",
                     &trace),
            kFourCorners);
  ASSERT_EQ(trace.notes.size(), 12u);
  EXPECT_NE(trace.notes[0].find("Pin #2 ADBE Corner Pin-0001\" is skipped: one pin is read, the "
                                "first"),
            std::string::npos)
      << trace.notes[0];
  EXPECT_NE(trace.notes[4].find("is skipped: the pin comes first"), std::string::npos);
  EXPECT_NE(trace.notes[10].find("what follows \"End of Keyframe Data\" is skipped"),
            std::string::npos);
  EXPECT_NE(trace.notes[11].find(": and 7 more sections"), std::string::npos);
}

TEST(KeyframesReader, ReadsTheFirstOfTracksAndPins) {
  ReadTrace trace;
  const std::string points = tracker("a", "Feature Center", "\t0\t1\t2\n");
  const Places wanted = {{"a", {{0, {1, 2}}}}};
  EXPECT_EQ(placesIn(keyframes(points + fourCorners()), &trace), wanted);
  EXPECT_FALSE(trace.isPin);
  EXPECT_EQ(trace.notes.size(), 4u);
}

// In the format's own numbers: y from the top, W = 1920, H = 1080.
TEST(KeyframesReader, ReadsFivePointsAsTheyWereWritten) {
  const double w = 1920.0;
  const double h = 1080.0;
  const std::vector<std::pair<double, double>> points = {
      {0.0, h}, {w, 0.0}, {0.5, h - 0.5}, {w / 2.0, h / 2.0}, {w - 0.5, 0.5}};
  std::string text;
  Places wanted;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::string name = "p" + std::to_string(i);
    std::string rows;
    for (const int frame : {0, 2}) {
      const double x = points[i].first + frame / 3.0;
      char row[100];
      std::snprintf(row, sizeof(row), "\t%d\t%.17g\t%.17g\n", frame, x, points[i].second);
      rows += row;
      wanted[name][frame] = {x, points[i].second};
    }
    text += tracker(name, "Feature Center", rows);
  }
  EXPECT_EQ(placesIn(keyframes(text)), wanted);
}
