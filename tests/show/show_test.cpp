// SPDX-License-Identifier: BSD-3-Clause
#include "show/show.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

std::string refusalOf(const Show& show) {
  try {
    checkNames(show);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

Show showOf(const Words& names) {
  Show show;
  for (const std::string& name : names) show.shots.push_back({name, "/", name + ".csv", {}, ""});
  return show;
}

}  // namespace

TEST(ShotOptions, BecomeArgumentsInTheOrderOfTheirNames) {
  EXPECT_EQ(wordsOf({{"smooth", {"0.5"}}, {"fill", {}}, {"drop", {"b", "a"}}}),
            (Words{"--drop=b", "--drop=a", "--fill", "--smooth=0.5"}));
}

TEST(ShotOptions, GoBeforeOthersOfTheSameName) {
  EXPECT_EQ(wordsOf(withOthers({{"base", {"1"}}}, {{"base", {"2"}}, {"hold", {}}})),
            (Words{"--base=1", "--hold"}));
}

TEST(ShotExport, IsAFormatAndMayHaveAKind) {
  EXPECT_EQ(exportIn("nk").format, "nk");
  EXPECT_EQ(exportIn("nk").kind, "");
  EXPECT_EQ(textOf(exportIn("nk:stabilise")), "nk:stabilise");
  for (const char* text : {"", ":", "nk:", ":pin"}) {
    EXPECT_THROW(exportIn(text), std::invalid_argument) << text;
  }
}

TEST(ShotExport, IsCalledAfterShotKindAndFormat) {
  EXPECT_EQ(fileNameOf("a", {"nk", ""}), "a.nk");
  EXPECT_EQ(fileNameOf("a", {"nk", "pin"}), "a.nk");
  EXPECT_EQ(fileNameOf("a", {"usda", "stabilise"}), "a.stabilise.usda");
  EXPECT_EQ(fileNameOf("a", {"points", "tracks"}), "a.tracks.points.txt");
  EXPECT_EQ(fileNameOf("a", {"blender", ""}), "a.blender.py");
}

TEST(Show, HasAResultExportsAndAPageOfEachShot) {
  Show show = showOf({"a"});
  EXPECT_EQ(filesOf(show, show.shots[0]), Words{"a.json"});
  show.exports = {{"nk", ""}};
  show.pages = true;
  EXPECT_EQ(filesOf(show, show.shots[0]), (Words{"a.json", "a.nk", "a.html"}));
  EXPECT_EQ(recordNameOf("a"), "a.task.json");
}

TEST(ShotName, IsThatOfTheFileWithoutItsEnding) {
  EXPECT_EQ(shotNameOf("plates/sh010.csv"), "sh010");
  EXPECT_EQ(shotNameOf("sh010.v2.csv.gz"), "sh010.v2");
  EXPECT_EQ(shotNameOf("sh010"), "sh010");
}

TEST(ShotName, CanBeAFiles) {
  for (const char* name : {"a", "sh 010", "sh010.v2", "\xc3\xa4", "-x"}) {
    EXPECT_EQ(flawOfShotName(name), "") << name;
  }
  for (const char* name : {"", ".", "..", ".a", "a/b", "a\\b", "a\nb", "\x7f", "a.task"}) {
    EXPECT_NE(flawOfShotName(name), "") << name;
  }
  EXPECT_EQ(flawOfShotName(std::string(200, 'a')), "");
  EXPECT_NE(flawOfShotName(std::string(201, 'a')), "");
}

TEST(CheckNames, RefusesTwoShotsOfOneFile) {
  EXPECT_EQ(refusalOf(showOf({"a", "b"})), "");
  EXPECT_EQ(refusalOf(showOf({})), "there is no shot");
  Show show = showOf({"a", "b", "a"});
  show.shots[2].input = "x/a.csv";
  EXPECT_EQ(refusalOf(show),
            "the shots of \"a.csv\" and \"x/a.csv\" would both write \"a.json\": name one of them "
            "otherwise");
  show = showOf({"a", "a.stabilise"});
  EXPECT_EQ(refusalOf(show), "");
  show.exports = {{"nk", ""}, {"nk", "stabilise"}};
  EXPECT_EQ(refusalOf(show),
            "the shots of \"a.csv\" and \"a.stabilise.csv\" would both write \"a.stabilise.nk\": "
            "name one of them otherwise");
}

TEST(CheckNames, RefusesNamesOfRecordsAndOfTheWholeBatch) {
  EXPECT_EQ(refusalOf(showOf({"a", "a.task"})),
            "a.task.csv: \"a.task\" cannot be a shot's name: its result would be called like a "
            "record");
  EXPECT_EQ(refusalOf(showOf({"batch"})),
            "the shots of \"the whole batch\" and \"batch.csv\" would both write \"batch.json\": "
            "name one of them otherwise");
}

TEST(CheckNames, RefusesAnExportThatIsThereTwice) {
  Show show = showOf({"a"});
  show.exports = {{"nk", ""}, {"nk", "pin"}};
  EXPECT_EQ(refusalOf(show), "\"a.nk\" is to be written twice of shot \"a\": leave one out");
}

TEST(CheckNames, TakesTenThousandShotsInNoTime) {
  Words names;
  for (int i = 0; i < 10000; ++i) names.push_back("sh" + std::to_string(i));
  EXPECT_EQ(refusalOf(showOf(names)), "");
}
