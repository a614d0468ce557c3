// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_task.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

const shot::Version kProgram = {"cornerpin", "1.2.3", "abc"};

// A shot of the file a.csv in the folder.
Show showIn(const TemporaryFolder& folder) {
  writeFile(folder / "a.csv", "abc");
  Show show;
  show.shots.push_back({"sh", folder.path().string(), "a.csv", {{"fill", {}}}, "m.json:3"});
  return show;
}

std::string keyOf(const Show& show, const shot::Version& program = kProgram) {
  return taskOf(show, show.shots[0], program).key;
}

}  // namespace

TEST(ShotTask, KnowsTheBytesOfItsInput) {
  const TemporaryFolder folder;
  Show show = showIn(folder);
  const ShotTask task = taskOf(show, show.shots[0], kProgram);
  // Of "abc", an example of the standard.
  EXPECT_EQ(task.sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(task.input, "a.csv");
  EXPECT_EQ(task.options, Words{"--fill"});
  EXPECT_EQ(task.files, Words{"sh.json"});
  EXPECT_EQ(task.key.size(), 64u);
  show.shots[0].input = "b.csv";
  EXPECT_EQ(taskOf(show, show.shots[0], kProgram).sha256, "");
  show.shots[0].input = ".";
  EXPECT_EQ(taskOf(show, show.shots[0], kProgram).sha256, "");
  show.shots[0].input = "/proc/self/mem";  // a plain file whose first byte cannot be read
  EXPECT_EQ(taskOf(show, show.shots[0], kProgram).sha256, "");
}

TEST(ShotTask, HasAKeyOfAllThatDecidesAboutItsBytes) {
  const TemporaryFolder folder;
  const Show show = showIn(folder);
  std::set<std::string> keys = {keyOf(show)};
  const auto differs = [&](const Show& other, const shot::Version& program = kProgram) {
    return keys.insert(keyOf(other, program)).second;
  };
  Show other = show;
  other.shots[0].options["smooth"] = {"0.5"};
  EXPECT_TRUE(differs(other)) << "options";
  other.shots[0].options["smooth"] = {"0.50"};
  EXPECT_TRUE(differs(other)) << "a value";
  other = show;
  other.exports = {{"nk", ""}};
  EXPECT_TRUE(differs(other)) << "exports";
  other.exports = {{"nk", "stabilise"}};
  EXPECT_TRUE(differs(other)) << "the kind of an export";
  other = show;
  other.pages = true;
  EXPECT_TRUE(differs(other)) << "pages";
  other = show;
  other.shots[0].name = "other";
  EXPECT_TRUE(differs(other)) << "the shot's name";
  other = show;
  other.shots[0].input = "./a.csv";
  EXPECT_TRUE(differs(other)) << "the input's name";
  EXPECT_TRUE(differs(show, {"cornerpin", "1.2.4", "abc"})) << "the version";
  EXPECT_TRUE(differs(show, {"cornerpin", "1.2.3", "abd"})) << "the commit";
  writeFile(folder / "a.csv", "abd");
  EXPECT_TRUE(differs(show)) << "the bytes";
}

TEST(ShotTask, HasAKeyOfTheBytesOfQuads) {
  const TemporaryFolder folder;
  Show show = showIn(folder);
  show.shots[0].options["quads"] = {"q.json"};
  writeFile(folder / "q.json", "1");
  const std::string key = keyOf(show);
  writeFile(folder / "q.json", "2");
  EXPECT_NE(keyOf(show), key);
}

TEST(ShotTask, HasTheSameKeyWhereverItIs) {
  const TemporaryFolder one;
  const TemporaryFolder other;
  Show show = showIn(other);
  show.shots[0].where = "elsewhere.json:9";
  EXPECT_EQ(keyOf(showIn(one)), keyOf(show));
}

TEST(SolveWords, WriteEveryFileIntoOneFolder) {
  const TemporaryFolder folder;
  Show show = showIn(folder);
  show.exports = {{"nk", "stabilise"}, {"usda", ""}};
  show.pages = true;
  EXPECT_EQ(solveWords(show, show.shots[0], "/w"),
            (Words{"cornerpin", "solve", "a.csv", "--fill", "--to=json", "--as=pin",
                   "--output=/w/sh.json", "--to=nk", "--as=stabilise",
                   "--output=/w/sh.stabilise.nk", "--to=usda", "--as=pin", "--output=/w/sh.usda",
                   "--report=/w/sh.html", "--quiet", "--progress=none", "--threads=1"}));
}

TEST(InputWord, IsNoOption) {
  EXPECT_EQ(inputWord({"sh", "/", "-x.csv", {}, ""}), "./-x.csv");
  EXPECT_EQ(inputWord({"sh", "/", "x.csv", {}, ""}), "x.csv");
}
