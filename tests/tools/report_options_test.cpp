// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/shot/report/made_pictures.h"
#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

// What a solve is refused with before it reads a track: there is no such file of tracks.
std::string refusalOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"solve", "no-such-tracks.csv"});
  const Outcome run = cornerpin(arguments);
  EXPECT_EQ(run.code, 2);
  const std::string begin = "cornerpin: ";
  EXPECT_EQ(run.err.rfind(begin, 0), 0u) << run.err;
  return run.err.substr(begin.size(), run.err.size() - begin.size() - 1);
}

}  // namespace

TEST(ReportOptions, GoWithAPage) {
  const TemporaryFolder folder;
  EXPECT_EQ(refusalOf({"--pictures", "p%d.jpg"}),
            "--pictures: no page is written: add --report FILE");
  EXPECT_EQ(refusalOf({"--link", "--report", folder / "a.html"}),
            "--link: no pictures are given: add --pictures");
  EXPECT_EQ(refusalOf({"--picture-scale", "0.5", "--report", folder / "a.html"}),
            "--picture-scale: no pictures are given: add --pictures");
}

TEST(ReportOptions, TakeASensibleScale) {
  const TemporaryFolder folder;
  for (const char* scale : {"0", "-1", "nan", "inf", "1e9", "1e-9", "0.5x", "half", "1,5"}) {
    EXPECT_EQ(refusalOf({"--report", folder / "a.html", "--pictures", "p%d.jpg", "--picture-scale",
                         scale}),
              "--picture-scale takes the width of the pictures over that of the tracks' picture, "
              "such as 0.5, not \"" +
                  std::string(scale) + "\"");
  }
}

TEST(ReportOptions, TellWherePicturesAre) {
  const TemporaryFolder folder;
  EXPECT_EQ(
      refusalOf({"--report", folder / "a.html", "--pictures", "picture"}),
      "--pictures: \"picture\" is no file or folder, and has no place for a frame's number: "
      "give a pattern such as img_%04d.jpg or img_####.jpg, a folder with pictures, or a text "
      "file with the name of one on each line");
}

TEST(ReportOptions, WantFilesOfTheirOwn) {
  const TemporaryFolder folder;
  const std::string a = folder / "a.svg";
  EXPECT_EQ(refusalOf({"--report", "-"}), "--report wants a file: name one");
  EXPECT_EQ(refusalOf({"--report", a, "--plot", a}),
            "--report and --plot both want \"" + a + "\": name two files");
  EXPECT_EQ(refusalOf({"--report", a, "--explain", a}),
            "--explain and --report both want \"" + a + "\": name two files");
  EXPECT_EQ(refusalOf({"-o", folder / "b.json", "--report", folder / "b.json"}),
            "-o and --report both want \"" + (folder / "b.json") + "\": name two files");
  EXPECT_EQ(refusalOf({"--plot", "plot.jpg"}),
            "--plot: \"plot.jpg\" ends neither in .svg nor in .png: name one that does");
  EXPECT_EQ(refusalOf({"--plot", "-"}),
            "--plot: \"-\" ends neither in .svg nor in .png: name one that does");
}

TEST(ReportOptions, ReplaceNoTracks) {
  const TemporaryFolder folder;
  const std::string tracks = folder / "in.csv";
  writeFile(tracks, stillShot(40, 6));
  EXPECT_EQ(cornerpin({"solve", tracks, "--report", tracks}).code, 2);
  EXPECT_EQ(readFile(tracks), stillShot(40, 6));
}

TEST(ReportOptions, SayBeforeASolveThatNothingDrawsPng) {
  ChildOptions options;
  options.environment = {"PATH=/nonexistent"};
  const Outcome run = cornerpin({"solve", "no-such-tracks.csv", "--plot", "a.png"}, options);
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err,
            "cornerpin: a plot in PNG is drawn by rsvg-convert, which is not there: install the "
            "package librsvg2-bin, or name a file that ends in .svg\n");
}

// The tracks are read by then; the shot is not solved, and no other file is written.
TEST(ReportOptions, LookAtThePicturesBeforeTheSolve) {
  const TemporaryFolder folder;
  const std::string tracks = folder / "in.csv";
  writeFile(tracks, stillShot(40, 6));
  const std::vector<std::string> given = {
      "solve",           tracks,       "-o",   folder / "a.json", "--report",
      folder / "a.html", "--progress", "json", "--pictures",      folder / "p#.jpg"};
  const Outcome none = cornerpin(given);
  EXPECT_EQ(none.code, 2);
  EXPECT_TRUE(contains(none.err, "has no picture of frames 0 to 5")) << none.err;
  EXPECT_FALSE(contains(none.err, "\"phase\":\"solving\"")) << none.err;
  writeFile(folder / "p3.jpg", "no picture");
  const Outcome broken = cornerpin(given);
  EXPECT_EQ(broken.code, 3);
  EXPECT_TRUE(contains(broken.err, (folder / "p3.jpg") + ": is no JPEG, PNG, WebP, GIF or TIFF"))
      << broken.err;
  EXPECT_FALSE(contains(broken.err, "\"phase\":\"solving\"")) << broken.err;
  EXPECT_EQ(folder.entryCount(), 2u);
}

TEST(ReportOptions, LinkNoPicturesThatBrowsersDoNotShow) {
  const TemporaryFolder folder;
  const std::string tracks = folder / "in.csv";
  writeFile(tracks, stillShot(40, 6));
  writeHalves(folder / "p3.tif", 1000, 700, ::gdImageTiff);
  const Outcome run = cornerpin({"solve", tracks, "--report", folder / "a.html", "--pictures",
                                 folder / "p#.tif", "--link", "-q"});
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err, "cornerpin: " + (folder / "p3.tif") +
                         ": is a TIFF file, which browsers do not show: convert it, or do not "
                         "link it\n");
  EXPECT_EQ(folder.entryCount(), 2u);
}

TEST(ReportOptions, PutPicturesIntoThePageOfASolve) {
  const TemporaryFolder folder;
  const std::string tracks = folder / "in.csv";
  writeFile(tracks, stillShot(40, 6));
  writeJpeg(folder / "p3.jpg", 1000, 700);
  const Outcome run = cornerpin({"solve", tracks, "--report", folder / "a.html", "--plot",
                                 folder / "a.svg", "--pictures", folder / "p#.jpg", "-q"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(contains(readFile(folder / "a.html"), "data:image/jpeg;base64,"));
  EXPECT_TRUE(contains(readFile(folder / "a.svg"), "<svg"));
}
