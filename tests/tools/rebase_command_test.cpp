// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kScreen = CORNERPIN_DATA "/screen4.csv";

// A folder with a result of the facade, fitted from frame 20.
class Solved {
 public:
  Solved() {
    cornerpin({"solve", kFacade, "--base", "20", "-o", path(), "--quad",
               "door=100,200,400,210,390,500,110,480"});
  }
  std::string path() const { return folder_ / "in.json"; }
  std::string operator/(const std::string& name) const { return folder_ / name; }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
};

Outcome rebased(const std::string& path, const std::string& reference) {
  return cornerpin({"rebase", path, "--reference", reference, "-o", "-", "--format", "json"});
}

// The largest difference between the numbers of two files that are otherwise the same.
double difference(const json& a, const json& b, const std::string& place = "") {
  if (a.is_number() && b.is_number()) return std::abs(a.get<double>() - b.get<double>());
  EXPECT_EQ(a.type(), b.type()) << place;
  EXPECT_EQ(a.size(), b.size()) << place;
  if (!a.is_structured()) {
    EXPECT_EQ(a, b) << place;
    return 0.0;
  }
  double worst = 0.0;
  for (const auto& item : a.items()) {
    const json& other = b.is_object() ? b[item.key()] : b[std::stoul(item.key())];
    worst = std::max(worst, difference(item.value(), other, place + "/" + item.key()));
  }
  return worst;
}

}  // namespace

TEST(RebaseCommand, WritesTheResultRelativeToAFrame) {
  const Solved solved;
  const Outcome run =
      cornerpin({"rebase", solved.path(), "--reference", "50", "-o", solved / "out.json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  const json before = json::parse(readFile(solved.path()));
  const json after = json::parse(readFile(solved / "out.json"));
  EXPECT_EQ(after["base_frame"], 20);
  EXPECT_EQ(after["reference_frame"], 50);
  EXPECT_EQ(after["frames"][50]["h"], json::parse("[[1,0,0],[0,1,0],[0,0,1]]"));
  EXPECT_EQ(after["quads"][0]["corners"], before["frames"][50]["quads"]["door"]["corners"]);
  for (std::size_t f = 0; f < 71; ++f) {
    EXPECT_LT(difference(after["frames"][f]["quads"]["door"]["corners"],
                         before["frames"][f]["quads"]["door"]["corners"]),
              1e-9);
  }
}

// As the solve would have written it, and back again, to far below a pixel.
TEST(RebaseCommand, AgreesWithTheSolveAndLeadsBack) {
  const Solved solved;
  const json there = json::parse(rebased(solved.path(), "50").out);
  const json asked =
      json::parse(cornerpin({"solve", kFacade, "--base", "20", "--reference", "50", "--json"}).out);
  EXPECT_EQ(there["frames"][3]["h"], asked["frames"][3]["h"]);
  writeFile(solved / "there.json", there.dump());
  json back = json::parse(rebased(solved / "there.json", "20").out);
  EXPECT_EQ(back["rebased"].size(), 2u);
  back["rebased"] = json::array();
  const json first = json::parse(readFile(solved.path()));
  EXPECT_FALSE(first["advice"].empty());
  EXPECT_TRUE(back["advice"].empty());
  back["advice"] = first["advice"];
  EXPECT_LT(difference(back, first), 1e-9);
}

TEST(RebaseCommand, WritesCsvAndReadsStandardInput) {
  const Solved solved;
  ChildOptions options;
  options.in = solved.path();
  const Outcome run =
      cornerpin({"rebase", "-", "--reference", "50", "-o", "-", "--format", "csv"}, options);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out.substr(0, 10), "frame,h00,");
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 72);
  EXPECT_NE(run.out.find("\n50,1,0,0,0,1,0,0,0,1,"), std::string::npos);
  EXPECT_EQ(cornerpin({"rebase", solved.path(), "--reference", "50", "-o", solved / "o.csv"}).code,
            0);
  EXPECT_EQ(readFile(solved / "o.csv"), run.out);
}

TEST(RebaseCommand, TakesQuietAsOtherCommandsDo) {
  const Solved solved;
  const Outcome run =
      cornerpin({"rebase", solved.path(), "--reference", "50", "-q", "-o", solved / "out.json"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(readFile(solved / "out.json"), rebased(solved.path(), "50").out);
}

TEST(RebaseCommand, ReadsBackWhatItHasWritten) {
  const Solved solved;
  for (const char* name : {"out.json", "out.csv"}) {
    const Outcome run =
        cornerpin({"rebase", solved.path(), "--reference", "50", "-o", solved / name});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out,
              "written       " + (solved / name) + "  read back: largest difference 0 px\n");
  }
}

TEST(RebaseCommand, WritesToWhatHasNothingToReadBack) {
  const Solved solved;
  const Outcome run = cornerpin(
      {"rebase", solved.path(), "--reference", "50", "-o", "/dev/null", "--format", "json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out + run.err, "");
}

TEST(RebaseCommand, KeepsEveryByteWhereTheReferenceStays) {
  const Solved solved;
  EXPECT_EQ(rebased(solved.path(), "20").out, readFile(solved.path()));
}

TEST(RebaseCommand, TakesVersion1) {
  const TemporaryFolder folder;
  writeFile(folder / "old.json",
            R"({"cornerpin":1,"base_frame":0,"base_tracks":4,"left_out":0,"units":"fit",)"
            R"("corners":[[0,0],[8,0],[8,8],[0,8]],"frames":[)"
            R"({"frame":0,"status":"base","tracks":4,"rms":0,"h":[[1,0,0],[0,1,0],[0,0,1]]},)"
            R"({"frame":1,"status":"solved","tracks":4,"rms":0,"h":[[2,0,4],[0,2,0],[0,0,1]]}]})");
  const Outcome run = rebased(folder / "old.json", "1");
  EXPECT_EQ(run.code, 0) << run.err;
  const json j = json::parse(run.out);
  EXPECT_EQ(j["cornerpin"], 2);
  EXPECT_EQ(j["frames"][0]["h"], json::parse("[[0.5,0,-2],[0,0.5,0],[0,0,1]]"));
  EXPECT_EQ(j["quads"][0]["corners"], json::parse("[[4,0],[20,0],[20,16],[4,16]]"));
}

TEST(RebaseCommand, SaysWhyAFrameIsRefused) {
  const TemporaryFolder folder;
  cornerpin({"solve", kScreen, "--hold", "-o", folder / "in.json"});
  const Outcome held = rebased(folder / "in.json", "87");
  EXPECT_EQ(held.code, 2);
  EXPECT_EQ(held.err,
            "cornerpin: frame 87 cannot be the reference: it was held (3 of the 4 tracks needed): "
            "take another one\n");
  EXPECT_EQ(held.out, "");
  const Outcome outside = rebased(folder / "in.json", "104");
  EXPECT_EQ(outside.code, 2);
  EXPECT_EQ(outside.err,
            "cornerpin: reference frame 104 is not in the shot: take one from 0 to 103\n");
}

TEST(RebaseCommand, EndsInThreeWithFileAndPlaceWhereTheResultIsRefused) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.json";
  const Outcome none = rebased(in, "1");
  EXPECT_EQ(none.code, 3);
  EXPECT_EQ(none.err, "cornerpin: " + in + ": there is no such file: check its name and folder\n");
  writeFile(in, "{\"cornerpin\":2}");
  EXPECT_EQ(rebased(in, "1").err, "cornerpin: " + in + ": base_frame: missing\n");
  EXPECT_EQ(rebased(in, "1").code, 3);
  EXPECT_EQ(
      rebased(kFacade, "1").err,
      "cornerpin: " + kFacade +
          ": these are tracks, not a result: give what cornerpin solve -o shot.json writes\n");
  writeFile(in, "{\"cornerpin\":9}");
  EXPECT_EQ(rebased(in, "1").code, 3);
  ChildOptions closed;
  closed.in = "";
  const Outcome run =
      cornerpin({"rebase", "-", "--reference", "1", "-o", "-", "--format", "json"}, closed);
  EXPECT_EQ(run.code, 3);
  EXPECT_EQ(run.err.rfind("cornerpin: <stdin>: ", 0), 0u) << run.err;
}

TEST(RebaseCommand, EndsInTwoOnWrongUsage) {
  const Solved solved;
  const std::string in = solved.path();
  const std::vector<std::vector<std::string>> wrong = {
      {"rebase"},
      {"rebase", in, "-o", solved / "a.json"},
      {"rebase", in, "--reference", "5"},
      {"rebase", in, "--reference", "auto", "-o", solved / "a.json"},
      {"rebase", in, "--reference", "5", "-o", solved / "a.txt"},
      {"rebase", in, "--reference", "5", "-o", ""},
      {"rebase", in, "more", "--reference", "5", "-o", solved / "a.json"},
      {"rebase", in, "--reference", "5", "-o", in},
  };
  const std::string before = readFile(in);
  for (const auto& arguments : wrong) {
    const Outcome run = cornerpin(arguments);
    EXPECT_EQ(run.code, 2) << arguments.size() << arguments.back();
    EXPECT_NE(run.err, "");
  }
  EXPECT_EQ(readFile(in), before);
  EXPECT_EQ(solved.folder().entryCount(), 1u);
}

TEST(RebaseCommand, EndsInOneWhenItCannotWrite) {
  const Solved solved;
  const Outcome run = cornerpin(
      {"rebase", solved.path(), "--reference", "50", "-o", "/dev/full", "--format", "json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(
      run.err,
      "cornerpin: /dev/full: No space left on device: make room, or write to another place\n");
}
