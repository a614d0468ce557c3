// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/export_options.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/refusal.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

struct Line {
  CLI::App app;
  ExportOptions output;
  StyleOptions style;
  PictureOptions picture;
  FromOption from;

  explicit Line(Words words) {
    output.addTo(app);
    style.addTo(app);
    picture.addTo(app);
    from.addTo(app);
    std::reverse(words.begin(), words.end());  // the last one is parsed first
    app.parse(words);
  }
};

std::vector<ExportedFile> exportsOf(const Words& words) {
  const Line line(words);
  return line.output.value(line.style);
}

std::string refusalOfExports(const Words& words) {
  return refusal([&] { exportsOf(words); });
}

std::string refusalOfPicture(const Words& words) {
  return refusal([&] { Line(words).picture.value(); });
}

}  // namespace

TEST(ExportOptions, TakeEachFormatFromTheNameOrTheWordBeforeIt) {
  const std::vector<ExportedFile> all = exportsOf({"-o", "a.json", "--to", "points", "-o", "b.csv",
                                                   "--as", "tracks", "-o", "c.csv", "-o", "d.nk"});
  ASSERT_EQ(all.size(), 4u);
  EXPECT_EQ(all[0].path, "a.json");
  EXPECT_EQ(all[0].how.to, "json");
  EXPECT_EQ(all[1].how.to, "points");
  EXPECT_EQ(all[1].how.as, "");
  EXPECT_EQ(all[2].how.to, "csv");
  EXPECT_EQ(all[2].how.as, "tracks");
  EXPECT_EQ(all[3].how.to, "nk");
  EXPECT_EQ(all[3].how.as, "");
}

TEST(ExportOptions, TakeAWordBehindTheLastNameForThatOne) {
  EXPECT_EQ(exportsOf({"-o", "a", "--format", "csv"})[0].how.to, "csv");
  EXPECT_EQ(exportsOf({"-o", "a.nk", "--as", "stabilise"})[0].how.as, "stabilise");
  const std::vector<ExportedFile> two = exportsOf({"-o", "a.json", "-o", "b", "--to", "nk"});
  EXPECT_EQ(two[0].how.to, "json");
  EXPECT_EQ(two[1].how.to, "nk");
  EXPECT_EQ(exportsOf({"-o", "-"})[0].how.to, "json");
  EXPECT_TRUE(exportsOf({}).empty());
}

TEST(ExportOptions, RefuseWhatCannotBeWritten) {
  EXPECT_EQ(refusalOfExports({"-o", "a.txt"}),
            "the name \"a.txt\" tells no format: put --to NAME before it, one of csv, json, "
            "points, nk, blocks, keyframes, uv, blender, natron or usda");
  EXPECT_EQ(refusalOfExports({"--to", "nk"}), "--to: no file is written: add -o FILE");
  EXPECT_EQ(refusalOfExports({"--as", "pin"}), "--as: no file is written: add -o FILE");
  EXPECT_EQ(refusalOfExports({"-o", "a.usda", "--as", "tracks"}).substr(0, 20),
            "\"a.usda\": usda files");
  EXPECT_EQ(refusalOfExports({"-o", "a", "--to", "keyframes"}),
            "keyframes files need to know how many frames a second has: add --fps");
  EXPECT_THROW(exportsOf({"-o", "a", "--to", "paths"}), CLI::ValidationError);
}

TEST(ExportedFile, IsTheResultOrWhatOthersTake) {
  for (const char* path : {"a.json", "a.csv"}) {
    EXPECT_TRUE(exportsOf({"-o", path})[0].isResult()) << path;
    EXPECT_TRUE(exportsOf({"-o", path, "--as", "matrix"})[0].isResult()) << path;
    EXPECT_FALSE(exportsOf({"-o", path, "--as", "tracks"})[0].isResult()) << path;
  }
  EXPECT_FALSE(exportsOf({"-o", "a.nk"})[0].isResult());
}

TEST(StyleOptions, AreReadForEveryFile) {
  const cornerpin::shot::WriteOptions how =
      exportsOf({"-o", "a", "--to", "keyframes", "--fps", "23.976", "--par", "2", "--nk", "both",
                 "--keyframes", "transform"})[0]
          .how;
  EXPECT_EQ(how.fps, 23.976);
  EXPECT_EQ(how.par, 2.0);
  EXPECT_EQ(how.nk, "both");
  EXPECT_EQ(how.keyframes, "transform");
  EXPECT_EQ(exportsOf({"-o", "a.nk", "--nk", "matrix"})[0].how.nk, "matrix");
  EXPECT_EQ(exportsOf({"-o", "a.nk"})[0].how.par, 1.0);
  EXPECT_EQ(refusalOfExports({"-o", "a.nk", "--fps", "0"}),
            "--fps takes a number above 0, not \"0\"");
  EXPECT_EQ(refusalOfExports({"-o", "a.nk", "--par", "x"}),
            "--par takes a number above 0, not \"x\"");
}

TEST(PictureOptions, SayWhatFilesDoNot) {
  const cornerpin::shot::Picture all =
      Line({"--size", "1920x1080", "--y-down", "--pixel-center", "0", "--first-frame", "-5"})
          .picture.value();
  EXPECT_EQ(all.width, 1920);
  EXPECT_EQ(all.height, 1080);
  EXPECT_EQ(all.y, "down");
  EXPECT_EQ(all.pixelCentre, 0.0);
  EXPECT_EQ(all.firstFrame, -5);
  EXPECT_EQ(Line({"--y-up", "--pixel-center", "0.5"}).picture.value().pixelCentre, 0.5);
  const cornerpin::shot::Picture none = Line({}).picture.value();
  EXPECT_FALSE(none.width || !none.y.empty() || none.pixelCentre || none.firstFrame);
}

TEST(PictureOptions, AreRefusedOneByOne) {
  EXPECT_EQ(refusalOfPicture({"--y-up", "--y-down"}),
            "--y-up and --y-down exclude each other: leave one out");
  for (const char* size : {"1920", "0x3", "3x", "1.5x2", "3x4x5", "-1x2"}) {
    EXPECT_EQ(refusalOfPicture({std::string("--size=") + size}),
              std::string("--size takes the picture's width and height such as 1920x1080, not \"") +
                  size + "\"");
  }
  EXPECT_EQ(refusalOfPicture({"--pixel-center", "1"}), "--pixel-center takes 0 or 0.5, not \"1\"");
  EXPECT_EQ(refusalOfPicture({"--first-frame", "1e3"}),
            "--first-frame takes a frame number, not \"1e3\"");
  EXPECT_EQ(refusalOfPicture({"--first-frame", "2000000000"}),
            "--first-frame takes a frame number, not \"2000000000\"");
}

TEST(FromOption, NamesFormatsThatAreRead) {
  EXPECT_EQ(Line({"--from", "rz2"}).from.text, "rz2");
  EXPECT_EQ(Line({}).from.text, "");
  EXPECT_THROW(Line({"--from", "usda"}), CLI::ValidationError);
}
