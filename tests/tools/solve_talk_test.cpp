// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/terminal.h"
#include "tests/tools/program.h"

using nlohmann::json;

namespace {

// Two frames of one track: the second is held, and doubtful.
std::string heldShot(const TemporaryFolder& folder) {
  writeFile(folder / "held.csv", "track,frame,x,y\na,0,1,1\na,3,1,1\n");
  return folder / "held.csv";
}

// Standard error of a run on a terminal.
std::string onATerminal(const std::vector<std::string>& words,
                        const std::vector<std::string>& environment = {"TERM=xterm", "NO_COLOR="}) {
  return writtenOnATerminal([&](const std::string& terminal) {
    ChildOptions options;
    options.err = terminal;
    options.environment = environment;
    EXPECT_EQ(cornerpin(words, options).code, 4);
  });
}

}  // namespace

TEST(SolveTalk, SaysNothingButErrorsWhenQuiet) {
  const TemporaryFolder folder;
  for (const char* option : {"-q", "--quiet"}) {
    const Outcome run = cornerpin({"solve", option, heldShot(folder), "-o", folder / "out.json"});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
  }
  EXPECT_NE(cornerpin({"solve", "-q", folder / "none.csv"}).err, "");
}

TEST(SolveTalk, PrintsWhatIsAskedForWhenQuiet) {
  const std::string result = cornerpin({"solve", kFacade, "--json"}).out;
  EXPECT_EQ(cornerpin({"solve", kFacade, "--json", "-q"}).out, result);
  EXPECT_EQ(cornerpin({"solve", kFacade, "-o", "-", "-q"}).out, result);
}

TEST(SolveTalk, NeedsNoStandardOutputWhenQuiet) {
  const TemporaryFolder folder;
  ChildOptions closed;
  closed.out = "";
  EXPECT_EQ(cornerpin({"solve", kFacade, "-q", "-o", folder / "out.json"}, closed).code, 0);
  EXPECT_TRUE(json::accept(readFile(folder / "out.json")));
}

TEST(SolveTalk, CannotBeQuietAndVerbose) {
  const Outcome run = cornerpin({"solve", kFacade, "--quiet", "--verbose"});
  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.err, "cornerpin: --quiet and --verbose exclude each other: leave one out\n");
}

TEST(SolveTalk, ColoursTheWarningOnATerminal) {
  const TemporaryFolder folder;
  const std::string in = heldShot(folder);
  const std::string yellow = "cornerpin: \033[33mwarning:\033[0m ";
  const std::string plain = "cornerpin: warning: ";
  EXPECT_TRUE(contains(onATerminal({"solve", in}), yellow));
  EXPECT_TRUE(contains(onATerminal({"solve", in, "--color", "never"}), plain));
  EXPECT_TRUE(contains(onATerminal({"solve", in}, {"TERM=xterm", "NO_COLOR=1"}), plain));
  EXPECT_TRUE(contains(onATerminal({"solve", in}, {"TERM=dumb", "NO_COLOR="}), plain));
  EXPECT_TRUE(contains(cornerpin({"solve", in}).err, plain));
  EXPECT_TRUE(contains(cornerpin({"solve", in, "--color", "always"}).err, yellow));
}

TEST(SolveTalk, WritesItsProgressForPrograms) {
  const TemporaryFolder folder;
  bool known = false;
  for (int frames = 500; !known && frames <= 128000; frames *= 4) {  // until it takes long
    writeFile(folder / "in.csv", stillShot(150, frames));
    const Outcome run =
        cornerpin({"solve", folder / "in.csv", "--progress", "json", "--quiet", "--threads", "1"});
    std::istringstream lines(run.err);
    std::vector<json> objects;
    for (std::string line; std::getline(lines, line);) objects.push_back(json::parse(line));
    ASSERT_GT(objects.size(), 0u) << run.err;
    EXPECT_EQ(objects.back(), (json{{"phase", "finished"}, {"exit_code", run.code}}));
    objects.pop_back();
    for (const json& object : objects) {
      EXPECT_TRUE(object.at("phase").is_string());
      EXPECT_TRUE(object.at("done").is_number_unsigned());
      EXPECT_TRUE(object.at("total").is_null() || object.at("total") >= object.at("done"));
      known = known || object.at("seconds_left").is_number();
    }
  }
  EXPECT_TRUE(known);
}

TEST(SolveTalk, WritesNoLastObjectWhereTheRunFails) {
  const Outcome run = cornerpin({"solve", "/nowhere/in.csv", "--progress", "json"});
  EXPECT_EQ(run.code, 3);
  EXPECT_FALSE(contains(run.err, "finished")) << run.err;
}
