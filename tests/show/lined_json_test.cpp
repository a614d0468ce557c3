// SPDX-License-Identifier: BSD-3-Clause
#include "show/lined_json.h"

#include <gtest/gtest.h>

#include "shot/files/input_error.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// What a file is refused with, without its folder.
template <class Read>
std::string refusalOf(const std::string& text, const Read& read) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", text);
  try {
    const LinedJsonFile file(folder / "a.json");
    read(file.whole());
  } catch (const InputError& error) {
    return std::string(error.what()).substr((folder / "").size());
  }
  return "";
}

std::string refusalOf(const std::string& text) {
  return refusalOf(text, [](const LinedJson&) {});
}

}  // namespace

TEST(LinedJson, HasValuesInTheOrderOfTheFile) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", R"({"b": [1, "two", {"c": true}], "a": null})");
  const LinedJsonFile file(folder / "a.json");
  const auto& members = file.whole().members();
  ASSERT_EQ(members.size(), 2u);
  EXPECT_EQ(members[0].name, "b");
  const auto& items = members[0].value.items();
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0].scalar(), 1);
  EXPECT_EQ(items[1].text(), "two");
  EXPECT_TRUE(items[2].find("c")->flag());
  EXPECT_EQ(items[2].find("d"), nullptr);
  EXPECT_TRUE(members[1].value.scalar().is_null());
}

TEST(LinedJson, RefusesValuesWithFileLinePlaceAndValue) {
  const std::string text = "{\"a\": 1,\n \"b\": [\n  {\"c\":\n 5}, \"x\",\n {\"d\": []}]}";
  const auto first = [](const LinedJson& whole) -> const LinedJson& {
    return whole.find("b")->items()[0];
  };
  EXPECT_EQ(refusalOf(text, [](const LinedJson& w) { w.find("a")->text(); }),
            "a.json:1: a: a text is needed, not 1");
  EXPECT_EQ(refusalOf(text, [&](const LinedJson& w) { first(w).find("c")->flag(); }),
            "a.json:3: b[0].c: true or false is needed, not 5");
  EXPECT_EQ(refusalOf(text, [](const LinedJson& w) { w.find("b")->items()[1].members(); }),
            "a.json:4: b[1]: an object is needed, not \"x\"");
  EXPECT_EQ(refusalOf(text, [](const LinedJson& w) { w.find("b")->items()[2].find("d")->text(); }),
            "a.json:5: b[2].d: a text is needed, not a list");
  EXPECT_EQ(refusalOf(text, [](const LinedJson& w) { w.items(); }),
            "a.json:1: a list is needed, not an object");
}

TEST(LinedJson, RefusesMembersThatAreNotKnown) {
  const auto allowed = [](const LinedJson& whole) { whole.allow({"input", "name"}); };
  EXPECT_EQ(refusalOf("{\"name\": 1,\n\"inputs\": 2}", allowed),
            "a.json:2: inputs: there is no such member: did you mean input?");
  EXPECT_EQ(refusalOf("{\"quite\": 1}", allowed),
            "a.json:1: quite: there is no such member, but input, name");
}

TEST(LinedJson, RefusesAMemberThatIsThereTwice) {
  EXPECT_EQ(refusalOf("{\"a\": 1,\n\"b\": {\"a\": 1},\n\"a\": 2}"),
            "a.json:3: the member \"a\" is there twice");
}

TEST(LinedJson, RefusesWhatIsNoJson) {
  EXPECT_EQ(refusalOf(""), "a.json: the file is empty: write it again");
  EXPECT_EQ(refusalOf("{\"a\": 1,\n\"b\": }").rfind("a.json:2: this is no JSON: ", 0), 0u);
  EXPECT_EQ(refusalOf("{\"a\": 1,\n").substr(0, 9), "a.json:2:");
  EXPECT_EQ(refusalOf(std::string("{\0}", 3)),
            "a.json: this is a binary file, not text: a manifest in JSON is wanted");
  EXPECT_EQ(refusalOf("[[[[[[[[[1]]]]]]]]]"),
            "a.json:1: [0][0][0][0][0][0][0][0]: brackets are too deep for a file of this kind");
  EXPECT_EQ(refusalOf("[[[[[[[[1]]]]]]]]"), "");
}
