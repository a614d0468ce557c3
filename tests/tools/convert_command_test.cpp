// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

const std::string kTracks = "track,frame,x,y,weight\na,3,10,20.25,1\nb,4,-1.5,0.1,0.5\n";

class Shot {
 public:
  Shot() { writeFile(csv(), kTracks); }
  std::string csv() const { return folder_ / "a.csv"; }
  std::string operator/(const std::string& name) const { return folder_ / name; }

 private:
  TemporaryFolder folder_;
};

}  // namespace

TEST(ConvertCommand, WritesTracksAsTheyAreWhereNothingElseIsAskedFor) {
  const Shot shot;
  EXPECT_EQ(cornerpin({"convert", shot.csv(), shot / "b.json"}).code, 0);
  const Outcome back = cornerpin({"convert", shot / "b.json", "-", "--to", "csv"});
  EXPECT_EQ(back.code, 0) << back.err;
  EXPECT_EQ(back.out, kTracks);
  EXPECT_EQ(back.err, "");
}

TEST(ConvertCommand, TurnsWhatTheInputSaysWhereTheOutputMayHaveEither) {
  const Shot shot;
  cornerpin({"convert", shot.csv(), shot / "b.json", "--y-up", "--size", "100x50"});
  const Outcome turned = cornerpin({"convert", shot / "b.json", "-", "--to", "csv", "--y-down"});
  EXPECT_EQ(turned.out, "track,frame,x,y,weight\na,3,10,29.75,1\nb,4,-1.5,49.9,0.5\n");
}

TEST(ConvertCommand, SaysWhatItHasToBeTold) {
  const Shot shot;
  const Outcome unknown = cornerpin({"convert", shot.csv(), shot / "b.nk"});
  EXPECT_EQ(unknown.code, 2);
  EXPECT_TRUE(contains(unknown.err, "does not say, where y grows to: add --y-up or --y-down"))
      << unknown.err;
  EXPECT_FALSE(std::filesystem::exists(shot / "b.nk"));
  const Outcome name = cornerpin({"convert", shot.csv(), shot / "b.txt"});
  EXPECT_EQ(name.code, 2);
  EXPECT_TRUE(contains(name.err, "tells no format: put --to NAME before it, one of csv, json"))
      << name.err;
}

TEST(ConvertCommand, RefusesWhatMakesNoSense) {
  const Shot shot;
  EXPECT_TRUE(contains(cornerpin({"convert", shot.csv(), shot.csv()}).err,
                       "is the file that is read: not replaced"));
  EXPECT_EQ(readFile(shot.csv()), kTracks);
  EXPECT_TRUE(contains(cornerpin({"convert", shot.csv(), shot / "b.json", "--as", "pin"}).err,
                       "--as pin: "));
  const Outcome both = cornerpin({"convert", shot.csv(), shot / "b.json", "--y-up", "--y-down"});
  EXPECT_EQ(both.code, 2);
  EXPECT_EQ(both.err, "cornerpin: --y-up and --y-down exclude each other: leave one out\n");
  EXPECT_EQ(cornerpin({"convert", shot.csv()}).code, 2);
  EXPECT_EQ(cornerpin({"convert", shot / "none.csv", shot / "b.json"}).code, 3);
}

TEST(ConvertCommand, WritesAResultThatIsOneAgain) {
  const TemporaryFolder folder;
  cornerpin({"solve", kFacade, "-o", folder / "a.json", "-q"});
  EXPECT_EQ(cornerpin({"convert", folder / "a.json", folder / "b.json"}).code, 0);
  EXPECT_EQ(readFile(folder / "a.json"), readFile(folder / "b.json"));
  const Outcome tracks =
      cornerpin({"convert", folder / "a.json", folder / "c.csv", "--as", "tracks"});
  EXPECT_EQ(tracks.code, 2);
  EXPECT_TRUE(
      contains(tracks.err, "a result holds no tracks: give --as tracks to cornerpin solve"));
}

// In the second frame a corner is not there.
TEST(ConvertCommand, WritesThePinOfAFileWithAGap) {
  const TemporaryFolder folder;
  writeFile(folder / "a.nk",
            "CornerPin2D {\n"
            " to1 {{curve x1 0 x2 1 x3 2} {curve x1 0 x2 1 x3 2}}\n"
            " to2 {{curve x1 100 x2 101 x3 102} {curve x1 0 x2 1 x3 2}}\n"
            " to3 {{curve x1 100 x3 102} {curve x1 50 x3 52}}\n"
            " to4 {{curve x1 0 x2 1 x3 2} {curve x1 50 x2 51 x3 52}}\n"
            "}\n");
  const auto converted = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"convert", folder / "a.nk", "-", "--to", "nk", "--size", "100x50"});
    return cornerpin(more);
  };
  const Outcome matrix = converted({"--nk", "matrix"});
  EXPECT_EQ(matrix.code, 0) << matrix.err;
  EXPECT_FALSE(contains(matrix.out, "nan")) << matrix.out;
  EXPECT_TRUE(contains(matrix.out, "{curve L x1 0 x3 2}")) << matrix.out;
  EXPECT_EQ(matrix.err, "cornerpin: note: -: no key in 2: there is no transform\n");
  EXPECT_EQ(converted({}).err,
            "cornerpin: note: -: corners that are not known have no key: frames 2\n");
  for (const char* kind : {"stabilise", "matrix"}) {
    const Outcome refused = converted({"--as", kind});
    EXPECT_EQ(refused.code, 2) << refused.out;
    EXPECT_TRUE(contains(refused.err, std::string("--as ") + kind + ": ")) << refused.err;
  }
}

TEST(ConvertCommand, SaysWhereFramesStayThatTheFormatCountsOtherwise) {
  const TemporaryFolder folder;
  const auto notesFor = [&](int frame, std::vector<std::string> more) {
    writeFile(folder / "a.csv", "track,frame,x,y\na," + std::to_string(frame) + ",1,1\n");
    more.insert(more.begin(), {"convert", folder / "a.csv", "-", "--to", "points", "--y-up",
                               "--pixel-center", "0.5"});
    return cornerpin(more).err;
  };
  EXPECT_EQ(notesFor(1001, {}),
            "cornerpin: note: -: points files count frames from 1, and nothing tells the clip's "
            "first frame: frames stay as they are, from 1001 on; --first-frame moves them\n");
  EXPECT_EQ(notesFor(1001, {"--first-frame", "1001"}), "");
  EXPECT_EQ(notesFor(1, {}), "");
}

// The same pin from either file of a solve.
TEST(ConvertCommand, TakesAResultInCsv) {
  const TemporaryFolder folder;
  cornerpin({"solve", kFacade, "-o", folder / "r.json", "-o", folder / "r.csv", "-q"});
  const std::vector<std::string> told = {"--to", "nk",     "--y-down", "--pixel-center",
                                         "0.5",  "--size", "640x360"};
  const auto converted = [&](const std::string& file, std::vector<std::string> more) {
    more.insert(more.begin(), {"convert", folder / file, "-"});
    return cornerpin(more);
  };
  const Outcome json = converted("r.json", told);
  const Outcome csv = converted("r.csv", told);
  EXPECT_EQ(csv.code, 0) << csv.err;
  EXPECT_EQ(csv.out, json.out);
  EXPECT_TRUE(contains(csv.err, "the pin is that of the whole picture: a result in CSV does not"))
      << csv.err;
  const Outcome refused = converted("r.csv", {"--to", "json"});
  EXPECT_EQ(refused.code, 2);
  EXPECT_TRUE(contains(refused.err,
                       "a result in CSV becomes a pin of another program, no json "
                       "file: give the JSON file of the solve"))
      << refused.err;
}

TEST(ConvertCommand, SaysTheSizeThatAFileTellsWhereItIsUsed) {
  const TemporaryFolder folder;
  writeFile(folder / "a.rz2",
            "imageSequence \"s\"\n{\n 640 360 f( \"a\" ) b( 1 9 1 )\n}\n"
            "pointTrack \"a\"\n{\n 1 10 20\n}\n");
  const auto said = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"convert", folder / "a.rz2", "-"});
    return cornerpin(more).err;
  };
  EXPECT_EQ(said({"--to", "nk"}),
            "cornerpin: note: " + (folder / "a.rz2") + ": the picture is 640x360, as it says\n");
  EXPECT_EQ(said({"--to", "nk", "--size", "640x360"}), "");
  EXPECT_EQ(said({"--to", "csv"}), "");
}
