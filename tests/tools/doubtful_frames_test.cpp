// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/terminal.h"
#include "tests/tools/program.h"

using nlohmann::json;

// What the command says of doubtful frames, and how it ends.
namespace {

const std::string kScreen = CORNERPIN_DATA "/screen4.csv";

// Twelve tracks in all of 30 frames of a camera that sways; in one frame all are 6 px off.
std::string shotThatJumps(int off) {
  std::string csv = "track,frame,x,y\n";
  for (int f = 0; f < 30; ++f) {
    const double x = 9.0 * std::sin(0.2 * f) + (f == off ? 6.0 : 0.0);
    for (int t = 0; t < 12; ++t) {
      const int column = t % 4;
      const int row = t / 4;
      csv += fmt::format("t{},{},{},{}\n", t, f, 250 * column + x, 250 * row + 2.0 * f);
    }
  }
  return csv;
}

json solved(std::vector<std::string> words) {
  words.insert(words.begin(), "solve");
  words.push_back("--json");
  return json::parse(cornerpin(words).out);
}

}  // namespace

// The facade is expected to be off by 0.11 to 0.18 px.
TEST(DoubtsOfTheSolveCommand, AreThoseBeyondTheLimit) {
  const json plain = solved({kFacade});
  const json& box = plain["quads"][0]["corners"];
  const double width = box[2][0].get<double>() - box[0][0].get<double>();
  const double height = box[2][1].get<double>() - box[0][1].get<double>();
  EXPECT_DOUBLE_EQ(plain["max_error"].get<double>(), 0.005 * std::max(width, height));
  for (const json& frame : plain["frames"]) EXPECT_EQ(frame["verdict"], "good");
  const json strict = solved({kFacade, "--max-error", "0.125"});
  EXPECT_EQ(strict["max_error"], 0.125);
  int doubtful = 0;
  for (std::size_t f = 0; f < strict["frames"].size(); ++f) {
    const json& frame = strict["frames"][f];
    EXPECT_EQ(frame["h"], plain["frames"][f]["h"]);
    double worst = 0.0;
    for (const json& d : frame["quads"]["tracks"]["deviation"]) {
      worst = std::max(worst, d.get<double>());
    }
    EXPECT_EQ(frame["expected_error"], worst);
    EXPECT_EQ(frame["verdict"], worst > 0.125 ? "doubtful" : "good");
    EXPECT_EQ(frame["doubts"].size(), worst > 0.125 ? 1u : 0u);
    doubtful += worst > 0.125 ? 1 : 0;
  }
  EXPECT_GT(doubtful, 10);
  EXPECT_LT(doubtful, 60);
}

TEST(DoubtsOfTheSolveCommand, AreAWarningUnlessALimitOrStrictnessIsAskedFor) {
  const TemporaryFolder folder;
  const std::string in = folder / "in.csv";
  writeFile(in, shotThatJumps(22));
  const std::string warning = "cornerpin: warning: 1 of 30 frames is doubtful: 22\n";
  const std::vector<std::string> words = {"solve", in, "--base", "10"};
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), words.begin(), words.end());
    return cornerpin(more);
  };
  const Outcome plain = run({});
  EXPECT_EQ(plain.code, 0);
  EXPECT_EQ(plain.err, warning);
  EXPECT_TRUE(contains(plain.out,
                       "\nGood: 29 of 30 frames. Doubtful: 22.\n"
                       "  22          a corner is 5.8"))
      << plain.out;
  EXPECT_EQ(run({"--json"}).err, warning);
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{"--strict"}, {"--max-error", "5"}, {"--strict", "--json"}}) {
    const Outcome strict = run(more);
    EXPECT_EQ(strict.code, 4);
    EXPECT_EQ(strict.err, warning);
  }
  writeFile(in, shotThatJumps(-1));
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{}, {"--strict"}, {"--max-error", "5"}}) {
    const Outcome good = run(more);
    EXPECT_EQ(good.code, 0);
    EXPECT_EQ(good.err, "");
  }
}

TEST(DoubtsOfTheSolveCommand, AreAllButTheBaseFrameWhereThereAreFourTracks) {
  for (const char* loss : {"tukey", "none"}) {
    const Outcome run = cornerpin({"solve", kScreen, "--loss", loss, "--base", "51", "--verbose"});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(run.err, "cornerpin: warning: 103 of 104 frames are doubtful: 0-50, 52-103\n");
    EXPECT_TRUE(
        contains(run.out,
                 "\nGood: only frame 51, which the others start from. Doubtful: 0-50, 52-103.\n"
                 "  0-103       "));
    EXPECT_TRUE(contains(run.out, "  nothing-to-check    91  frame 0: 4 tracks: too few"));
    EXPECT_TRUE(contains(run.out, "  reduced             12  frame ")) << run.out;
  }
  // Four tracks say nothing of their noise, and no other frame does; with a loss, what a reduced
  // frame keeps of others says how far it may be off.
  const Outcome none = cornerpin({"solve", kScreen, "--loss", "none", "--base", "51"});
  EXPECT_TRUE(
      contains(none.out, "corners       nothing tells how far those may be off, in 103 frames\n"));
  const Outcome tukey = cornerpin({"solve", kScreen, "--base", "51"});
  EXPECT_TRUE(contains(tukey.out, "; no figure in 91 frames\n")) << tukey.out;
  const Outcome held = cornerpin({"solve", kScreen, "--hold", "--verbose"});
  EXPECT_EQ(held.code, 4);
  EXPECT_TRUE(contains(held.out,
                       "  held                12  frame 87: its neighbour's transform: "
                       "3 of the 4 tracks needed\n"))
      << held.out;
}

// The jump is none of the reference frame's, the expected errors are: seen from a frame with an
// error of its own, the others have more.
TEST(DoubtsOfTheSolveCommand, StayDoubtfulInARebase) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", shotThatJumps(22));
  const std::string first = folder / "a.json";
  cornerpin({"solve", folder / "in.csv", "--base", "10", "--max-error", "5", "-o", first});
  const Outcome run = cornerpin({"rebase", first, "--reference", "3", "-o", folder / "b.json"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  const json a = json::parse(readFile(first));
  const json b = json::parse(readFile(folder / "b.json"));
  EXPECT_EQ(b["max_error"], 5.0);
  EXPECT_EQ(b["frames"][22]["doubts"], a["frames"][22]["doubts"]);
  EXPECT_EQ(b["frames"][22]["doubts"][0]["code"], "jump");
  EXPECT_EQ(b["frames"][3]["expected_error"], 0.0);
  const std::vector<double> deviations = b["frames"][10]["quads"]["tracks"]["deviation"];
  EXPECT_EQ(b["frames"][10]["expected_error"],
            *std::max_element(deviations.begin(), deviations.end()));
}

TEST(DoubtsOfTheSolveCommand, AreSoRelativeToAnyFrame) {
  const TemporaryFolder folder;
  const std::vector<std::string> words = {kFacade, "--base", "20", "--max-error", "0.15"};
  std::vector<std::string> relative = words;
  relative.insert(relative.end(), {"--reference", "50"});
  const json asked = solved(relative);
  writeFile(folder / "a.json", solved(words).dump());
  const json rebased = json::parse(
      cornerpin({"rebase", folder / "a.json", "--reference", "50", "-o", "-", "--format", "json"})
          .out);
  EXPECT_EQ(asked["max_error"], 0.15);
  for (std::size_t f = 0; f < asked["frames"].size(); ++f) {
    EXPECT_EQ(asked["frames"][f]["doubts"], rebased["frames"][f]["doubts"]) << f;
  }
  EXPECT_EQ(asked["frames"][50]["verdict"], "good");
  EXPECT_EQ(asked["frames"][20]["verdict"],
            asked["frames"][20]["expected_error"] > 0.15 ? "doubtful" : "good");
}

TEST(DoubtsOfTheSolveCommand, HaveTheirCodesInTheCsv) {
  const std::string csv =
      cornerpin({"solve", kScreen, "--base", "51", "-o", "-", "--format", "csv"}).out;
  EXPECT_TRUE(
      contains(csv, ",handed_over,kept_from,verdict,expected_error,doubts,smoothed,filled\n"));
  EXPECT_TRUE(contains(csv, ",0,,doubtful,,no-figures nothing-to-check,0,false\n"));
  EXPECT_TRUE(contains(csv, ",0,,good,0,,0,false\n"));
}

TEST(DoubtsOfTheSolveCommand, HaveNoLimitThatIsNoLength) {
  for (const char* text : {"0", "-1", "inf", "nan", "5px", "1e999"}) {
    const Outcome run = cornerpin({"solve", kFacade, "--max-error", text});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, std::string("cornerpin: --max-error takes a number of pixels above 0, not "
                                   "\"") +
                           text + "\"\n");
  }
  EXPECT_EQ(cornerpin({"solve", kFacade, "--max-error", ""}).code, 2);
  EXPECT_EQ(cornerpin({"solve", kFacade, "--max-error"}).code, 2);
}

// Nobody who has read the table is told again.
TEST(DoubtsOfTheSolveCommand, AreNoWarningOnATerminalThatShowsTheTable) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", shotThatJumps(22));
  const std::string err = folder / "err";
  const std::string text = writtenOnATerminal([&](const std::string& terminal) {
    ChildOptions options;
    options.out = terminal;
    options.err = err;
    cornerpin({"solve", folder / "in.csv", "--base", "10"}, options);
  });
  EXPECT_TRUE(contains(text, "\033[32mGood\033[0m: 29 of 30 frames. \033[33mDoubtful\033[0m: 22."))
      << text;
  EXPECT_EQ(readFile(err), "");
}

// The far-off track is the only one on its side, so the others cannot tell.
TEST(DoubtsOfTheSolveCommand, ComeWithWhatHelps) {
  const TemporaryFolder folder;
  unsigned mixed = 1;
  const auto noise = [&mixed] {
    mixed = mixed * 1664525u + 1013904223u;
    return 1e-3 * (mixed >> 22) - 0.5;
  };
  std::string csv = "track,frame,x,y\n";
  const auto see = [&](const std::string& track, int frame, double x, double y) {
    const double dx = noise();
    const double dy = noise();
    csv += fmt::format("{},{},{},{}\n", track, frame, x + 3 * frame + dx, y + dy);
  };
  for (int f = 0; f < 30; ++f) {
    for (int t = 0; t < 20; ++t) {
      const int row = t / 5;
      see(fmt::format("t{}", t), f, 20 * (t % 5), 25 * row);
    }
    const bool wrong = 8 <= f && f <= 13;
    see("far", f, wrong ? 825 : 800, 600);
    if (wrong) continue;
    for (int t = 0; t < 9; ++t) see(fmt::format("m{}", t), f, 100 * t, 70 * (t * 5 % 9));
  }
  writeFile(folder / "in.csv", csv);
  const Outcome run = cornerpin({"solve", folder / "in.csv", "--base", "0"});
  EXPECT_TRUE(contains(run.out, ": --drop far:8-13\n")) << run.out;
}
