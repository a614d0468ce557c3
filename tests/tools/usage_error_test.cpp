// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/tools/program.h"

namespace {

using Words = std::vector<std::string>;

// What a command line is refused with: one line behind the program's name, and nothing else.
std::string refusalOf(const Words& words) {
  const Outcome run = cornerpin(words);
  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.out, "");
  const std::string start = "cornerpin: ";
  if (run.err.rfind(start, 0) != 0 || run.err.find('\n') != run.err.size() - 1) return run.err;
  return run.err.substr(start.size(), run.err.size() - start.size() - 1);
}

}  // namespace

TEST(UsageError, SuggestsTheCommandThatWasMeant) {
  EXPECT_EQ(refusalOf({"slove", "shot.csv"}), "slove is no command: did you mean solve?");
  EXPECT_EQ(refusalOf({"version"}), "version is no command: did you mean --version?");
  EXPECT_EQ(refusalOf({"dance"}), "dance is no command; see cornerpin --help");
  EXPECT_EQ(refusalOf({"help", "slove"}),
            "command takes solve, report, convert, info, diff, check, explain, rebase, batch or "
            "help, not "
            "\"slove\": did you mean solve?");
}

TEST(UsageError, SuggestsTheOptionThatWasMeant) {
  EXPECT_EQ(refusalOf({"--hlep"}), "there is no option --hlep: did you mean --help?");
  EXPECT_EQ(refusalOf({"--dance"}), "there is no option --dance; see cornerpin --help");
  EXPECT_EQ(refusalOf({"solve", "--hlep"}), "solve has no option --hlep: did you mean --help?");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--refrence=5"}),
            "solve has no option --refrence: did you mean --reference?");
  EXPECT_EQ(refusalOf({"rebase", "--loss", "none", "a.json"}),
            "rebase has no option --loss; see cornerpin rebase --help");
}

TEST(UsageError, KnowsOptionsThatStandAlone) {
  EXPECT_EQ(refusalOf({"solve", "-V"}), "solve has no option -V: type cornerpin -V");
  EXPECT_EQ(refusalOf({"diff", "--version"}),
            "diff has no option --version: type cornerpin --version");
}

TEST(UsageError, SaysWhatToTypeForAFileWithoutACommand) {
  EXPECT_EQ(refusalOf({"shot.csv"}),
            "shot.csv is a file, not a command: type cornerpin solve shot.csv");
  EXPECT_EQ(refusalOf({"my shot.csv"}),
            "'my shot.csv' is a file, not a command: type cornerpin solve 'my shot.csv'");
  EXPECT_EQ(refusalOf({"it's.csv"}),
            "'it'\\''s.csv' is a file, not a command: type cornerpin solve 'it'\\''s.csv'");
  EXPECT_EQ(refusalOf({"shot.json"}),
            "shot.json is a file, not a command: type cornerpin info shot.json");
  const TemporaryFolder folder;
  const std::string plain = folder / "solv";
  writeFile(plain, "");
  EXPECT_EQ(refusalOf({plain}), plain + " is a file, not a command: type cornerpin solve " + plain);
}

TEST(UsageError, PutsTheCommandFirst) {
  EXPECT_EQ(refusalOf({"--loss", "none", "solve", "shot.csv"}),
            "the command goes first: cornerpin solve --loss none shot.csv");
  EXPECT_EQ(refusalOf({"shot.csv", "-o", "my shot.json"}),
            "the command goes first: cornerpin solve shot.csv -o 'my shot.json'");
}

TEST(UsageError, SaysWhatIsMissingWithAnExample) {
  EXPECT_EQ(refusalOf({"solve"}),
            "solve wants tracks, for example: cornerpin solve shot.csv -o shot.json");
  EXPECT_EQ(refusalOf({"rebase", "a.json", "--reference", "3"}),
            "rebase wants --output, for example: cornerpin rebase shot.json --reference 50 -o "
            "from50.json");
}

TEST(UsageError, SaysWhatIsTooMuch) {
  EXPECT_EQ(refusalOf({"solve", "a.csv", "b.csv"}),
            "b.csv is one word too many for solve; see cornerpin solve --help");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--base", "1", "--base", "2"}),
            "--base is given more than once: leave one out");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--json=please"}),
            "--json takes no value: did you mean --json?");
}

TEST(UsageError, SaysWhichValueAnOptionWants) {
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--base"}), "--base wants a value: --base FRAME");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--loss", "tuckey"}),
            "--loss takes tukey, cauchy, huber or none, not \"tuckey\": did you mean tukey?");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--units", "metres"}),
            "--units takes fit or raw, not \"metres\"; see cornerpin solve --help");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "-o", ""}),
            "--output must not be empty; see cornerpin solve --help");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "--drop", ""}),
            "--drop must not be empty; see cornerpin solve --help");
  const TemporaryFolder folder;
  EXPECT_EQ(refusalOf({"solve", "a.csv", "-o", folder.path().string()}),
            "\"" + folder.path().string() + "\" is a folder: name a file in it");
}

TEST(UsageError, WantsTwoDashesBeforeLongNames) {
  EXPECT_EQ(refusalOf({"solve", "a.csv", "-output", "b.json"}),
            "-output wants two dashes: did you mean --output?");
  EXPECT_EQ(refusalOf({"solve", "a.csv", "-json"}), "-json wants two dashes: did you mean --json?");
}
