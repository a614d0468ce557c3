// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>

#include "tests/shot/files/keyframes_text.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;
using made::fourCorners;
using made::keyframes;
using made::keyframesHeader;
using made::replaced;
using made::section;

namespace {

std::string refusalAs(const std::string& text) {
  ReadTrace trace;
  trace.format = Format::Keyframes;
  return refusalOf(text, &trace);
}

std::string featureRows(const std::string& rows) {
  return keyframes(section("Motion Trackers\tTracker #1\ta\tFeature Center", rows));
}

}  // namespace

TEST(KeyframesReader, RefusesWhatIsNoKeyframeText) {
  EXPECT_EQ(refusalAs(""), "in.txt: the file is empty");
  EXPECT_EQ(refusalAs("\n x y\n"),
            "in.txt:2: keyframe text begins with \"Adobe After Effects 6.0 Keyframe Data\", not "
            "\"x y\"");
  EXPECT_EQ(refusalAs("Adobe After Effects 8.0 Mask Data\n"),
            "in.txt:1: keyframe text begins with \"Adobe After Effects 6.0 Keyframe Data\", not "
            "\"Adobe After Effects 8.0 Mask Data\"");
}

TEST(KeyframesReader, RefusesAFileWithoutTracks) {
  const std::string neither = "in.txt: neither a corner pin nor point tracks are in it";
  EXPECT_EQ(refusalOf(keyframesHeader()), neither);
  EXPECT_EQ(refusalOf(keyframes("")), neither);
  EXPECT_EQ(refusalOf(keyframes(section("Transform\tOpacity", "\t0\t100\n"))),
            neither + ", but \"Transform Opacity\"");
  EXPECT_EQ(refusalOf(featureRows("\t0\tnan\tnan\n")), "in.txt: no track is in it");
}

TEST(KeyframesReader, RefusesAPinWithoutACorner) {
  const std::string three = replaced(keyframes(fourCorners()), "Pin-0004", "Pin-0005");
  EXPECT_EQ(refusalOf(three),
            "in.txt: the corner pin \"ADBE Corner Pin #1\" has no section for bottom_right");
}

TEST(KeyframesReader, RefusesRowsWithTheirPlaceAndGoesOn) {
  EXPECT_EQ(refusalOf(featureRows("\t0\t1\t2\n\tx\t1\t2\n\t1\t1,5\t2\n\t2\t1\n\t3\t1\tinf\n"
                                  "\t4\tnan\t1\n\t5\t4e38\t0\n\t99999999999\t1\t2\n\tnan\t1\t2\n")),
            "in.txt:12: column 2: frame must be a number, not \"x\"\n"
            "in.txt:13: column 4: x must be a number, not \"1,5\": write a decimal point\n"
            "in.txt:14: column 5: the line ends where y is wanted\n"
            "in.txt:15: column 6: y must be finite, not \"inf\"\n"
            "in.txt:16: column 4: one of x and y is NaN and the other a number: of a gap both are "
            "NaN\n"
            "in.txt:17: column 4: x is too large: \"4e38\"\n"
            "in.txt:18: column 2: frame is too large: \"99999999999\"\n"
            "in.txt:19: column 2: frame must be finite, not \"nan\"");
}

TEST(KeyframesReader, RefusesWhatIsGivenTwice) {
  EXPECT_EQ(refusalOf(featureRows("\t0\t1\t2\n\t1\t1\t2\n\t0\t3\t2\n")),
            "in.txt:13: track \"a\" is given twice in frame 0, first on line 11");
  EXPECT_EQ(refusalOf(keyframes(fourCorners() + fourCorners())).substr(0, 60),
            "in.txt:31: track \"top_left\" is given twice in frame 0, first");
  EXPECT_EQ(refusalOf(keyframes(fourCorners() + section("Position", "\t0\t1\t2\n\t0\t3\t2\n"))),
            "in.txt:32: frame 0 is given twice in a section");
}

TEST(KeyframesReader, RefusesASizeThatIsNone) {
  for (const char* value : {"0", "-1920", "1920.5", "1e12", "wide"}) {
    const std::string text =
        replaced(keyframes(fourCorners()), "Width\t1920", "Width\t" + std::string(value));
    EXPECT_EQ(refusalOf(text),
              "in.txt:4: column 15: Source Width must be a whole number above 0, "
              "not \"" +
                  std::string(value) + "\"");
  }
  EXPECT_EQ(refusalOf(replaced(keyframes(fourCorners()), "Height\t1080", "Height")),
            "in.txt:5: Source Height must be a whole number above 0, not \"\"");
  const Tracks tracks = tracksIn(replaced(keyframes(fourCorners()), "Source", "Other"));
  EXPECT_EQ(tracks.picture.width, std::nullopt);
  const std::string layer =
      section("Position", "\t0\t1\t2\n") + section("Anchor Point", "\t0\t1\t2\n");
  EXPECT_EQ(refusalOf(replaced(keyframes(layer), "Source", "Other")),
            "in.txt: the layer has no size: Source Width and Source Height are missing");
}

TEST(KeyframesReader, RefusesAMotionThatLeadsNowhere) {
  const std::string motion =
      section("Position", "\t0\t3e38\t2\n") + section("Anchor Point", "\t0\t-3e38\t2\n");
  EXPECT_EQ(refusalOf(keyframes(fourCorners() + motion)).substr(7),
            "21: the layer's motion carries it too far");
}

TEST(KeyframesReader, EndsWithAResultOrAMessageWhereverAFileIsCutOff) {
  const std::string text =
      keyframes("Layer\n" + fourCorners() + section("Position", "\t0\t1\t2\n\t1\t1\tnan\n") +
                section("Anchor Point", "\t\t1\t2\n") + section("Rotation", "\t0\t30\n"));
  std::size_t read = 0;
  for (std::size_t length = 0; length <= text.size(); ++length) {
    ReadTrace trace;
    trace.format = Format::Keyframes;
    const bool isRead = refusalOf(text.substr(0, length), &trace).empty();
    read += isRead ? 1 : 0;
    const bool isWhole = length >= text.size() - 1;
    if (isRead) {
      EXPECT_EQ(isWhole, trace.notes.empty()) << length;
    }
  }
  EXPECT_GT(read, 50u);
}

TEST(KeyframesReader, SaysThatAFileMayBeCutOff) {
  ReadTrace trace;
  tracksIn(keyframesHeader() + fourCorners(), &trace);
  ASSERT_EQ(trace.notes.size(), 1u);
  EXPECT_NE(trace.notes[0].find(": there is no \"End of Keyframe Data\": the file may be cut off"),
            std::string::npos);
}

TEST(KeyframesReader, RefusesALineOfSeventeenMegabytes) {
  const std::string line(std::size_t{17} * 1024 * 1024, '1');
  EXPECT_EQ(refusalOf(featureRows("\t0\t1\t2\n") + line).size(), 0u) << "behind the end";
  EXPECT_EQ(refusalOf(keyframesHeader() + line),
            "in.txt:9: the line is longer than 16 MB: this is no file of this kind");
  EXPECT_EQ(refusalOf(keyframesHeader() +
                      section("Motion Trackers\tT\ta\tFeature Center", "\tx\t1\t2\n") + line),
            "in.txt:11: column 2: frame must be a number, not \"x\"\n"
            "in.txt:13: the line is longer than 16 MB: this is no file of this kind");
}

TEST(KeyframesReader, ReadsManyTracksInOneFrame) {
  std::string text;
  for (int i = 0; i < 20000; ++i) {
    text += "Motion Trackers\tTracker #1\tp" + std::to_string(i) + "\tFeature Center\n\t0\t" +
            std::to_string(i) + "\t2\n";
  }
  const Tracks tracks = tracksIn(keyframes(text));
  EXPECT_EQ(tracks.names.size(), 20000u);
  EXPECT_EQ(tracks.observations.size(), 20000u);
}
