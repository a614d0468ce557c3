// SPDX-License-Identifier: BSD-3-Clause
#include "show/manifest.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Words = std::vector<std::string>;

Show read(const std::string& text, const ShotOptions& typed = {}) {
  const TemporaryFolder folder;
  writeFile(folder / "m.json", text);
  return readManifest(folder / "m.json", typed);
}

// Of the members behind the version.
std::string refusalOf(const std::string& members) {
  const TemporaryFolder folder;
  writeFile(folder / "m.json", "{\"cornerpin_batch\": 1,\n" + members + "}");
  try {
    readManifest(folder / "m.json");
  } catch (const shot::InputError& error) {
    return std::string(error.what()).substr((folder / "").size());
  }
  return "";
}

std::string refusalOfShot(const std::string& shot) {
  return refusalOf("\"shots\": [{\"input\": \"a\"},\n" + shot + "]");
}

}  // namespace

TEST(Manifest, NamesShotsAfterTheirFilesUnlessItGivesNames) {
  const Show show = read(R"({"cornerpin_batch": 1, "shots": [
      {"input": "plates/sh010.csv"}, {"input": "x.2dt.gz", "name": "sh 020"}]})");
  ASSERT_EQ(show.shots.size(), 2u);
  EXPECT_EQ(show.shots[0].name, "sh010");
  EXPECT_EQ(show.shots[0].input, "plates/sh010.csv");
  EXPECT_EQ(show.shots[1].name, "sh 020");
  EXPECT_EQ(show.shots[0].where.substr(show.shots[0].where.rfind('/')), "/m.json:2");
  EXPECT_FALSE(show.pages);
  EXPECT_TRUE(show.exports.empty());
}

TEST(Manifest, TakesOptionsAsTheyAreTyped) {
  const Show show = read(R"({"cornerpin_batch": 1, "options": {
      "smooth": 0.25, "base": -5, "fill": true, "drop": ["t1", "\"p,1\""], "at": [1.5, 2]},
      "shots": [{"input": "a"}]})");
  EXPECT_EQ(wordsOf(show.shots[0].options), (Words{"--at=1.5", "--at=2", "--base=-5", "--drop=t1",
                                                   "--drop=\"p,1\"", "--fill", "--smooth=0.25"}));
}

TEST(Manifest, LetsAShotsOptionsReplaceThoseTypedAndTheseThoseOfAll) {
  const std::string text = R"({"cornerpin_batch": 1,
      "options": {"smooth": 1, "fill": true, "drop": ["a"], "seed": 1},
      "shots": [{"input": "a", "options": {"fill": false, "drop": "b", "hold": true}},
                {"input": "b"}]})";
  const Show show = read(text, {{"smooth", {"2"}}, {"drop", {"c"}}});
  EXPECT_EQ(wordsOf(show.shots[0].options),
            (Words{"--drop=b", "--hold", "--seed=1", "--smooth=2"}));
  EXPECT_EQ(wordsOf(show.shots[1].options),
            (Words{"--drop=c", "--fill", "--seed=1", "--smooth=2"}));
}

TEST(Manifest, SaysWhatIsWritten) {
  const Show show = read(R"({"cornerpin_batch": 1, "report": true,
      "exports": ["nk", "nk:stabilise"], "shots": [{"input": "a"}]})");
  EXPECT_TRUE(show.pages);
  ASSERT_EQ(show.exports.size(), 2u);
  EXPECT_EQ(textOf(show.exports[0]), "nk");
  EXPECT_EQ(show.exports[1].format, "nk");
  EXPECT_EQ(show.exports[1].kind, "stabilise");
}

TEST(Manifest, IsRefusedWithFileLineAndValue) {
  EXPECT_EQ(refusalOf("\"shots\": []"), "m.json:1: there is no shot in \"shots\"");
  EXPECT_EQ(refusalOf("\"options\": {}"), "m.json:1: there is no shot in \"shots\"");
  EXPECT_EQ(refusalOf("\"shot\": []"),
            "m.json:2: shot: there is no such member: did you mean shots?");
  EXPECT_EQ(refusalOf("\"report\": \"yes\""),
            "m.json:2: report: true or false is needed, not \"yes\"");
  EXPECT_EQ(refusalOf("\"exports\": [\"nk:\"]"),
            "m.json:2: exports[0]: an export is a format such as nk, or nk:stabilise, not "
            "\"nk:\"");
  EXPECT_EQ(refusalOf("\"options\": {\"drop\": []}"),
            "m.json:2: options.drop: the list is empty: leave the option out");
  EXPECT_EQ(refusalOf("\"options\": {\"drop\": [true]}"),
            "m.json:2: options.drop[0]: a text or a number is needed, not true");
  EXPECT_EQ(refusalOf("\"options\": {\"smooth\": \"\"}"),
            "m.json:2: options.smooth: must not be empty");
  EXPECT_EQ(refusalOf("\"options\": {\"smooth\": null}"),
            "m.json:2: options.smooth: a text or a number is needed, not null");
}

TEST(Manifest, RefusesShotsWithFileLineAndValue) {
  EXPECT_EQ(refusalOfShot("{}"),
            "m.json:3: shots[1]: the shot has no input: name the file with its tracks");
  EXPECT_EQ(refusalOfShot("{\"input\": \"-\"}"),
            "m.json:3: shots[1].input: a file's name is needed, not \"-\"");
  EXPECT_EQ(refusalOfShot("5"), "m.json:2: shots[1]: an object is needed, not 5");
  EXPECT_EQ(refusalOfShot("{\"input\": \"a\",\n \"name\": \"../b\"}"),
            "m.json:4: shots[1].name: \"../b\" cannot be a shot's name, after which files are "
            "called: no slashes, no control characters, no dot in front");
  EXPECT_EQ(refusalOfShot("{\"input\": \"a/..\"}").substr(0, 26), "m.json:3: shots[1].input: ");
}

TEST(Manifest, HasAVersion) {
  const TemporaryFolder folder;
  writeFile(folder / "m.json", "{\"cornerpin_batch\": 2}");
  EXPECT_THROW(readManifest(folder / "m.json"), shot::InputError);
  writeFile(folder / "m.json", "{\"shots\": []}");
  EXPECT_THROW(readManifest(folder / "m.json"), shot::InputError);
}
