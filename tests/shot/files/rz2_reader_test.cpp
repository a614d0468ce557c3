// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shot/files/track_input.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

const std::string kSequence =
    "imageSequence\t\"S\"\n{\n\t2560\t1080\tf( \"D:/a (1)/b} {.%04d.tif\" )\tb( 11 211 1 )\t\n}\n";

std::string refusal(const std::string& text) {
  ReadTrace trace;
  trace.format = Format::Rz2;
  return refusalOf(text, &trace);
}

std::string track(const std::string& rows) { return "pointTrack \"a\"\n{\n" + rows + "}\n"; }

float weightOf(const std::string& tail) {
  return tracksIn(track("1 2 3 " + tail + "\n2 2 3\n")).observations[0].weight;
}

}  // namespace

TEST(ReadRz2, NumbersTracksWithoutNames) {
  const Tracks tracks = tracksIn(
      "pointTrack \"a\" {\n1 2 3\n}\npointTrack \"\" {\n1 4 5\n}\npointTrack {\n1 6 7\n}\n");
  EXPECT_EQ(rowsOf(tracks),
            (std::vector<ReadRow>{{"2", 1, 4.0, 5.0}, {"3", 1, 6.0, 7.0}, {"a", 1, 2.0, 3.0}}));
}

TEST(ReadRz2, ReadsSizeRangePositionsAndConfidences) {
  ReadTrace trace;
  const Tracks tracks = tracksIn(
      kSequence +
          "pointTrack  \"Track 01\"  rgb( 0 0 0 )\t\n{\n"
          "\t11\t   649.523     423.929    ki( 0.8 )\t    s( 29 29 30 30 )  p( 56 56 55 55 )\n"
          "\t12\t   647.273     431.522     p+( 0.988476 )\t\n}\n",
      &trace);
  EXPECT_EQ(trace.format, Format::Rz2);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"Track 01", 11, 649.523, 423.929},
                                                  {"Track 01", 12, 647.273, 431.522}}));
  EXPECT_EQ(tracks.observations[0].weight, 0.8f);
  EXPECT_EQ(tracks.observations[1].weight, 0.988476f);
  EXPECT_EQ(tracks.picture.scale, Scale::Pixels);
  EXPECT_EQ(tracks.picture.y, YAxis::Down);
  EXPECT_EQ(tracks.picture.pixelCentre, 0.5);
  EXPECT_EQ(tracks.picture.width, 2560);
  EXPECT_EQ(tracks.picture.height, 1080);
  EXPECT_EQ(tracks.picture.firstFrame, 11);
}

// Rows counted by awk between the braces; kinds by `grep -o '[kp][a-z+*-]( '`: 8 ka, 5 ki, 389 p+
// and 102 p-, all positions. Track 04 has rows for 60 frames, its last one `ki( 0.8 )`.
TEST(ReadRz2, ReadsASampleWhole) {
  ReadTrace trace;
  const Tracks tracks = readTracks(sampleFile("points_with_confidence.rz2"), {}, {}, &trace);
  EXPECT_EQ(trace.format, Format::Rz2);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
  EXPECT_EQ(trace.rows, 8 + 5 + 389 + 102);
  ASSERT_EQ(tracks.names,
            (std::vector<std::string>{"Track 01", "Track 02", "Track 03", "Track 04", "Track 05"}));
  EXPECT_EQ(tracks.picture.width, 2560);
  EXPECT_EQ(tracks.picture.height, 1080);
  EXPECT_EQ(tracks.picture.firstFrame, 1);
  const std::vector<ReadRow> rows = rowsOf(tracks);
  EXPECT_EQ(rows.front(), (ReadRow{"Track 01", 1, 649.523, 423.929}));
  EXPECT_EQ(rows[130], (ReadRow{"Track 01", 131, 603.148, 728.460}));
  EXPECT_EQ(rowsOf(tracks, "Track 02").back(), (ReadRow{"Track 02", 128, 153.755, 1049.642}));
  EXPECT_EQ(rowsOf(tracks, "Track 03").size(), 135u);
  EXPECT_EQ(rowsOf(tracks, "Track 04").size(), 60u);
  EXPECT_EQ(rows.back(), (ReadRow{"Track 05", 211, 1020.354, 523.612}));
  EXPECT_EQ(tracks.observations.back().weight, 0.8f);
}

TEST(ReadRz2, TakesAllKindsForPositionsWithAConfidence) {
  for (const char* kind : {"ki", "ka", "kb", "ke", "p+", "p-", "p*"}) {
    EXPECT_EQ(weightOf(std::string(kind) + "( 0.25 )"), 0.25f) << kind;
  }
  EXPECT_EQ(weightOf("ki(0.25)s(1 2 3 4)"), 0.25f);
  EXPECT_EQ(weightOf("ki ( 0.25 )"), 0.25f);
  EXPECT_EQ(weightOf("s( 3 3 3 3 ) p( 5 5 5 5 )"), 1.0f);
  EXPECT_EQ(weightOf("ki"), 1.0f);
  EXPECT_EQ(weightOf("ki( )"), 1.0f);
  EXPECT_EQ(weightOf(""), 1.0f);
  EXPECT_EQ(weightOf("-ncp"), 1.0f);
  EXPECT_EQ(weightOf("p+( 0 )"), 0.0f);
}

TEST(ReadRz2, DoesWithoutWhatMayBeMissing) {
  const Tracks bare = tracksIn("pointTrack{1 2 3\n2 3 4}pointTrack \"b\" -ncp {\n1 5 6 }");
  EXPECT_EQ(rowsOf(bare),
            (std::vector<ReadRow>{{"1", 1, 2.0, 3.0}, {"1", 2, 3.0, 4.0}, {"b", 1, 5.0, 6.0}}));
  EXPECT_EQ(bare.picture.width, std::nullopt);
  EXPECT_EQ(bare.picture.firstFrame, std::nullopt);
  const Tracks sized =
      tracksIn("imageSequence {720 576 -Upper field first}\n" + track("1 2 3 ki( 1 ) -ncp\n"));
  EXPECT_EQ(sized.picture.width, 720);
  EXPECT_EQ(sized.picture.height, 576);
  EXPECT_EQ(sized.picture.firstFrame, 0);
  EXPECT_EQ(tracksIn("imageSequence { 1 2 b( ) }" + track("1 2 3\n")).picture.firstFrame, 0);
}

TEST(ReadRz2, TakesAPathOverSeveralLines) {
  const Tracks tracks = tracksIn(
      "imageSequence \"S\"\n{ 720 576 f( \"D:/a\n/b) 9 }\n{c\" )\n"
      "b( 5\n9 1 ) -ncp }\n" +
      track("7 2 3\n"));
  EXPECT_EQ(tracks.picture.width, 720);
  EXPECT_EQ(tracks.picture.height, 576);
  EXPECT_EQ(tracks.picture.firstFrame, 5);
}

TEST(ReadRz2, NamesTracksOfSeveralSequencesByThem) {
  const std::string second = replaced(kSequence, "\"S\"", "\"T\"");
  const Tracks tracks = tracksIn(kSequence + track("11 2 3\n") + second + track("11 4 5\n"));
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a@S", 11, 2.0, 3.0}, {"a@T", 11, 4.0, 5.0}}));
  for (const char* other : {"2561", "12"}) {
    const std::string changed = replaced(second, std::string(other) == "12" ? "11" : "2560", other);
    std::string text = kSequence;
    text += track("11 2 3\n");
    text += changed;
    EXPECT_EQ(refusal(text),
              "in.txt:9: the sequence has another size or first frame than the one before: split "
              "the file");
  }
}

TEST(ReadRz2, NamesWhatItSkips) {
  ReadTrace trace;
  tracksIn(kSequence + "camera \"c\"\n{ a { b } }\nother(1)\n" + track("1 2 3\n"), &trace);
  ASSERT_EQ(trace.notes.size(), 2u);
  EXPECT_NE(trace.notes[0].find("in.txt:5: \"camera\" is skipped"), std::string::npos);
  EXPECT_NE(trace.notes[1].find("in.txt:7: \"other\" is skipped"), std::string::npos);
  std::string text = track("1 2 3\n");
  for (int i = 0; i < 13; ++i) text += "x\n";
  ReadTrace many;
  tracksIn(text, &many);
  ASSERT_EQ(many.notes.size(), 11u);
  EXPECT_NE(many.notes[10].find("in.txt: and 3 more blocks"), std::string::npos);
}

TEST(ReadRz2, TakesDeepBraces) {
  constexpr std::size_t kDeep = 1'000'000;
  const std::string deep = "x " + std::string(kDeep, '{');
  const std::string text = track("1 2 3\n") + deep;
  EXPECT_EQ(tracksIn(text + std::string(kDeep, '}')).observations.size(), 1u);
  EXPECT_EQ(refusal(text), "in.txt:5: the block has no end");
}

TEST(ReadRz2, RefusesWhatIsCutOffOrWrong) {
  EXPECT_EQ(refusal(""), "in.txt: no track is in it");
  EXPECT_EQ(refusal("imageSequence \"S"), "in.txt:1: the quotes that open here do not close");
  EXPECT_EQ(refusal("imageSequence \"S\" {"), "in.txt:1: the block has no end");
  EXPECT_EQ(refusal("imageSequence {1 2 f( "), "in.txt:1: the bracket has no end");
  EXPECT_EQ(refusal("imageSequence {\n7\n}"), "in.txt:1: the sequence has no size");
  EXPECT_EQ(refusal("imageSequence {\n7 x}"),
            "in.txt:2: column 3: the picture's size must be a whole number, not \"x\"");
  EXPECT_EQ(refusal("imageSequence {\n7 0}"),
            "in.txt:2: column 3: the picture's size must be above 0: \"0\"");
  EXPECT_EQ(refusal("imageSequence {\n7 7 b( a )}"),
            "in.txt:2: column 8: the first frame must be a whole number, not \"a\"");
  EXPECT_EQ(refusal("\npointTrack \"a\"\n{ 1 2 3\n"), "in.txt:2: the track has no end");
  EXPECT_EQ(refusal(track("1 2 3 ki( 1\n")),
            "in.txt:3: column 9: the bracket that opens here does not close");
  EXPECT_EQ(refusal(track("1 2 3 ki( x )\n")),
            "in.txt:3: column 11: the confidence must be a number, not \"x\"");
  EXPECT_EQ(refusal(track("1 2 3 p+( -1 )\n")),
            "in.txt:3: column 11: the confidence must not be negative or NaN: \"-1\"");
}
