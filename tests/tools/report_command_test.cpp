// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/shot/report/made_pictures.h"
#include "tests/shot/report/unpacked.h"
#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

// A shot, its result and a folder for pages.
class ReportCommand : public testing::Test {
 protected:
  ReportCommand() {
    writeFile(tracks_, stillShot(40, 6));
    cornerpin({"solve", tracks_, "--base", "0", "--quiet", "-o", result_});
  }

  // What is refused with, behind the program's name; nothing may be written.
  std::string refusalOf(std::vector<std::string> arguments) {
    const std::size_t before = folder_.entryCount();
    arguments.insert(arguments.begin(), "report");
    const Outcome run = cornerpin(arguments);
    EXPECT_NE(run.code, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(folder_.entryCount(), before);
    const std::string begin = "cornerpin: ";
    EXPECT_EQ(run.err.rfind(begin, 0), 0u) << run.err;
    return run.err.substr(begin.size(), run.err.size() - begin.size() - 1);
  }

  TemporaryFolder folder_;
  std::string tracks_ = folder_ / "shot.csv";
  std::string result_ = folder_ / "shot.json";
  std::string page_ = folder_ / "shot.html";
};

}  // namespace

TEST_F(ReportCommand, WritesThePageBesideTheResult) {
  const Outcome run = cornerpin({"report", result_});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out + run.err, "");
  const auto data = dataOf(readFile(page_));
  EXPECT_EQ(data["title"], "shot.csv");
  EXPECT_TRUE(data["observations"].is_null());
  EXPECT_EQ(data["result"]["frames"].size(), 6u);
}

TEST_F(ReportCommand, WritesWhereItIsTold) {
  EXPECT_EQ(cornerpin({"report", result_, "-o", folder_ / "a.page", "--tracks", tracks_}).code, 0);
  EXPECT_FALSE(std::filesystem::exists(page_));
  EXPECT_FALSE(dataOf(readFile(folder_ / "a.page"))["observations"].is_null());
  const Outcome printed = cornerpin({"report", result_, "-o", "-"});
  EXPECT_EQ(printed.code, 0);
  EXPECT_EQ(dataOf(printed.out)["title"], "shot.csv");
}

TEST_F(ReportCommand, ReadsTheResultFromStandardInput) {
  ChildOptions options;
  options.in = result_;
  EXPECT_EQ(dataOf(cornerpin({"report", "-", "-o", "-"}, options).out)["title"], "shot.csv");
  EXPECT_EQ(refusalOf({"-"}), "standard input has no name that the page could have: add -o FILE");
  EXPECT_EQ(refusalOf({"-", "--tracks", "-", "-o", page_}),
            "the result and --tracks both want standard input: name a file");
}

// The same result and tracks, whether they come from a solve or from its file.
TEST_F(ReportCommand, MakesThePageThatSolveMakes) {
  cornerpin({"report", result_, "--tracks", tracks_});
  const Outcome solved =
      cornerpin({"solve", tracks_, "--base", "0", "--report", folder_ / "b.html"});
  EXPECT_EQ(solved.code, 0) << solved.err;
  EXPECT_EQ(readFile(page_), readFile(folder_ / "b.html"));
  const std::string sentence = dataOf(readFile(page_))["verdict"]["sentence"];
  EXPECT_TRUE(contains(solved.out, "\n" + sentence + "\n")) << solved.out << sentence;
}

TEST_F(ReportCommand, ReplacesNothingThatItReads) {
  const std::string before = readFile(result_);
  EXPECT_EQ(refusalOf({result_, "-o", result_}),
            "\"" + result_ + "\" is the file that is read: not replaced; name another");
  EXPECT_EQ(refusalOf({result_, "--tracks", tracks_, "-o", tracks_}),
            "\"" + tracks_ + "\" is the file that is read: not replaced; name another");
  EXPECT_EQ(refusalOf({result_, "-o", folder_ / "p.svg", "--plot", folder_ / "p.svg"}),
            "-o and --plot both want \"" + (folder_ / "p.svg") + "\": name two files");
  EXPECT_EQ(readFile(result_), before);
}

TEST_F(ReportCommand, RefusesTheTracksOfAnotherShot) {
  const std::string refusal = refusalOf({result_, "--tracks", kFacade});
  EXPECT_EQ(
      refusal.rfind(kFacade + ": the result was made from another file, \"shot.csv\" with", 0), 0u)
      << refusal;
}

TEST_F(ReportCommand, WantsAResult) {
  EXPECT_EQ(
      refusalOf({kFacade, "-o", page_}),
      kFacade + ": these are tracks, not a result: give what cornerpin solve -o shot.json writes");
}

TEST_F(ReportCommand, ShowsPictures) {
  for (int frame = 0; frame < 6; frame += 2)
    writeJpeg(folder_ / ("p" + std::to_string(frame) + ".jpg"), 500, 350);
  const std::vector<std::string> given = {"report",           result_,           "--pictures",
                                          folder_ / "p#.jpg", "--picture-scale", "0.5"};
  EXPECT_EQ(cornerpin(given).code, 0);
  EXPECT_EQ(dataOf(readFile(page_))["view"]["width"], 1000.0);
  EXPECT_EQ(picturesOf(readFile(page_)).size(), 6u);
  std::vector<std::string> linked = given;
  linked.emplace_back("--link");
  EXPECT_EQ(cornerpin(linked).code, 0);
  EXPECT_EQ(picturesOf(readFile(page_))[2], "p2.jpg");
}

TEST_F(ReportCommand, SaysWhichPicturesItLeavesOut) {
  writePng(folder_ / "p0.png", 60, 60);
  writePng(folder_ / "p1.png", 60, 60);
  writeFile(folder_ / "p1.png", readFile(folder_ / "p1.png").substr(0, 80));
  const Outcome run = cornerpin({"report", result_, "--pictures", folder_ / "p#.png"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "cornerpin: note: " + (folder_ / "p1.png") + ": is not a whole picture\n");
  writePng(folder_ / "p2.png", 60, 60);
  writeFile(folder_ / "p2.png", readFile(folder_ / "p2.png").substr(0, 20));
  EXPECT_EQ(refusalOf({result_, "-o", folder_ / "b.html", "--pictures", folder_ / "p#.png"}),
            (folder_ / "p2.png") + ": is not a whole picture: it does not tell its size");
}

TEST_F(ReportCommand, PlotsTheFrames) {
  EXPECT_EQ(cornerpin({"report", result_, "--plot", folder_ / "p.svg"}).code, 0);
  EXPECT_EQ(readFile(folder_ / "p.svg").rfind("<?xml version=\"1.0\"", 0), 0u);
  EXPECT_EQ(cornerpin({"report", result_, "--plot", folder_ / "p.png"}).code, 0);
  EXPECT_EQ(readFile(folder_ / "p.png").substr(0, 4), "\x89PNG");
}

TEST_F(ReportCommand, WritesNothingWhereThePlotCannotBe) {
  EXPECT_EQ(refusalOf({result_, "--plot", folder_ / "none/p.svg"}).rfind("cannot write", 0), 0u);
}
