// SPDX-License-Identifier: BSD-3-Clause
#include "show/lined_json.h"

#include <cornerpin/shot.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cmath>
#include <cstdint>

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
  } catch (const shot::InputError& error) {
    return std::string(error.what()).substr((folder / "").size());
  }
  return "";
}

std::string refusalOf(const std::string& text) {
  return refusalOf(text, [](const LinedJson&) {});
}

void writeGzip(const std::string& path, const std::string& text) {
  const gzFile packed = gzopen(path.c_str(), "wb");
  ASSERT_EQ(gzwrite(packed, text.data(), static_cast<unsigned>(text.size())),
            static_cast<int>(text.size()));
  ASSERT_EQ(gzclose(packed), Z_OK);
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

TEST(LinedJson, RefusesTextsThatOthersWouldCutOff) {
  EXPECT_EQ(refusalOf("{\"a\":\n\"b\\u0000c\"}", [](const LinedJson& w) { w.at("a").text(); }),
            "a.json:2: a: a text must not hold the character 0");
}

TEST(LinedJson, TakesNumbersOfTheirKind) {
  const TemporaryFolder folder;
  writeFile(folder / "a.json", "[-2147483648, 2147483647, 7, 0.5, null]");
  const LinedJsonFile file(folder / "a.json");
  const auto& items = file.whole().items();
  EXPECT_EQ(items[0].integer(), std::numeric_limits<int>::min());
  EXPECT_EQ(items[1].integer(), std::numeric_limits<int>::max());
  EXPECT_EQ(items[2].count(), 7u);
  EXPECT_EQ(items[3].lengthOrNull(), 0.5);
  EXPECT_TRUE(std::isnan(items[4].lengthOrNull()));
  EXPECT_TRUE(items[4].isNull());
  EXPECT_FALSE(items[2].isNull());
}

TEST(LinedJson, RefusesNumbersOfAnotherKind) {
  const auto refused = [](const std::string& number, const auto& take) {
    return refusalOf("[" + number + "]", [&](const LinedJson& w) { take(w.items()[0]); });
  };
  const auto integer = [](const LinedJson& json) { json.integer(); };
  for (const char* number : {"-2147483649", "2147483648", "18446744073709551615", "0.5"}) {
    EXPECT_EQ(refused(number, integer),
              std::string("a.json:1: [0]: a whole number of 32 bits is needed, not ") + number);
  }
  EXPECT_EQ(refused("-1", [](const LinedJson& json) { json.count(); }),
            "a.json:1: [0]: a whole number from 0 on is needed, not -1");
  EXPECT_EQ(refused("-1", [](const LinedJson& json) { json.lengthOrNull(); }),
            "a.json:1: [0]: a number from 0 on or null is needed, not -1");
  EXPECT_EQ(refused("\"1\"", [](const LinedJson& json) { json.lengthOrNull(); }),
            "a.json:1: [0]: a number from 0 on or null is needed, not \"1\"");
}

TEST(LinedJson, RefusesAnObjectWithoutAMember) {
  EXPECT_EQ(refusalOf("{\"a\":\n{\"b\": 1}}", [](const LinedJson& w) { w.at("a").at("c"); }),
            "a.json:2: a: the member \"c\" is missing");
}

TEST(LinedJson, ReadsGzipFiles) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json.gz";
  const std::string text = "{\"a\": \"" + std::string(100000, 'x') + "\"}";
  writeGzip(path, text);
  EXPECT_EQ(LinedJsonFile(path).whole().at("a").text().size(), 100000u);
  const std::string bytes = readFile(path);
  const auto refusal = [&](const std::string& broken) {
    writeFile(path, broken);
    try {
      const LinedJsonFile file(path);
    } catch (const shot::InputError& error) {
      return std::string(error.what()).substr(path.size());
    }
    return std::string();
  };
  EXPECT_EQ(refusal(bytes.substr(0, bytes.size() / 2)),
            ": the gzip data is cut off: the file is incomplete");
  EXPECT_EQ(refusal(bytes.substr(0, 12) + "????????" + bytes.substr(20))
                .rfind(": the gzip data is broken (", 0),
            0u);
}

TEST(LinedJson, RefusesGzipFilesThatGrowTooMuch) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json.gz";
  const std::string spaces(std::size_t{8} * 1024 * 1024, ' ');
  writeGzip(path, "[]" + spaces);
  try {
    const LinedJsonFile file(path);
    FAIL() << "taken";
  } catch (const shot::InputError& error) {
    EXPECT_EQ(
        std::string(error.what()).substr(path.size()),
        ": the gzip data inflates to more than 100 times its size: unpack the file if that is "
        "right");
  }
  writeGzip(path, "[]" + spaces.substr(0, spaces.size() / 4));
  EXPECT_TRUE(LinedJsonFile(path).whole().items().empty());
  writeFile(folder / "a.json", "[]" + spaces);
  EXPECT_TRUE(LinedJsonFile(folder / "a.json").whole().items().empty());
  // Ten digits and more of a number do not pack to a hundredth.
  std::string numbers = "[0";
  for (std::uint64_t i = 1; numbers.size() < spaces.size(); ++i) {
    numbers += "," + std::to_string(i * 6364136223846793005U % 1000000007U);
  }
  writeGzip(path, numbers + "]");
  EXPECT_GT(LinedJsonFile(path).whole().items().size(), 100000u);
}

TEST(LinedJson, SaysWhyAFileCannotBeRead) {
  const TemporaryFolder folder;
  writeFile(folder / "shots.json", "{}");
  const auto refusal = [&](const std::string& path) {
    try {
      const LinedJsonFile file(path);
    } catch (const shot::InputError& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(refusal(folder / "shot.json"), (folder / "shot.json") +
                                               ": there is no such file: did you mean " +
                                               (folder / "shots.json") + "?");
  EXPECT_EQ(refusal(folder.path().string()),
            folder.path().string() + ": this is a folder: name a file in it");
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
  EXPECT_EQ(refusalOf(std::string("{\0}", 3)).rfind("a.json:1: this is no JSON: ", 0), 0u);
  const std::string longest(std::size_t{1} << 20U, 'x');
  EXPECT_EQ(refusalOf("[\"" + longest + "\"]"), "");
  EXPECT_EQ(refusalOf("[\n\"" + longest + "x\"]"),
            "a.json:2: a text or a number is longer than 1 MB: this is no file of this kind");
  EXPECT_EQ(refusalOf("[[[[[[[[[1]]]]]]]]]"),
            "a.json:1: [0][0][0][0][0][0][0][0]: brackets are too deep for a file of this kind");
  EXPECT_EQ(refusalOf("[[[[[[[[1]]]]]]]]"), "");
}
