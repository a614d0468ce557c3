// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_field.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <string>

#include "shot/files/input_error.h"
#include "tests/shot/files/gzipped.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

// What reading a text as a file and then `use` is refused with, without the file's name.
std::string refusal(const std::string& text, const std::function<void(const JsonField&)>& use = {},
                    JsonFile::Names names = JsonFile::Names::Any) {
  const TemporaryFolder folder;
  const std::string path = folder / "a.json";
  writeFile(path, text);
  try {
    const JsonFile file(path, names);
    if (use) use(file.whole());
  } catch (const InputError& error) {
    EXPECT_EQ(error.file, path);
    const std::string what = error.what();
    EXPECT_EQ(what.rfind(path, 0), 0u) << what;
    return what.substr(path.size());
  }
  return "nothing thrown";
}

std::string refusalOf(const std::string& value, const std::function<void(const JsonField&)>& use) {
  return refusal("{\"a\":" + value + "}", [&](const JsonField& whole) { use(whole.at("a")); });
}

}  // namespace

TEST(JsonField, HoldsWhatTheFileHolds) {
  const TemporaryFolder folder;
  writeFile(
      folder / "a",
      R"({"n":-1.5e-300,"i":-2147483648,"u":18446744073709551615,"t":"x",)"
      R"("f":true,"l":2.5,"o":0,"m":2147483647,"w":1001.0,"none":null,"list":[1,{"deep":2}]})");
  const JsonFile file(folder / "a");
  const JsonField whole = file.whole();
  EXPECT_EQ(whole.at("n").number(), -1.5e-300);
  EXPECT_EQ(whole.at("i").integer(), -2147483647 - 1);
  EXPECT_EQ(whole.at("u").count(), 18446744073709551615u);
  EXPECT_EQ(whole.at("t").text(), "x");
  EXPECT_TRUE(whole.at("f").flag());
  EXPECT_TRUE(std::isnan(whole.at("none").lengthOrNull()));
  EXPECT_EQ(whole.at("l").lengthOrNull(), 2.5);
  EXPECT_EQ(whole.at("l").length(), 2.5);
  EXPECT_EQ(whole.at("o").length(), 0.0);
  EXPECT_EQ(whole.at("o").tally(), 0);
  EXPECT_EQ(whole.at("m").tally(), 2147483647);
  EXPECT_EQ(whole.at("list").list(2).at(1).at("deep").integer(), 2);
  EXPECT_EQ(whole.at("w").integer(), 1001);
  EXPECT_TRUE(whole.has("t"));
  EXPECT_FALSE(whole.has("x"));
}

TEST(JsonField, SaysWhatIsNeededAndWhere) {
  EXPECT_EQ(refusalOf("\"x\"", [](const JsonField& f) { f.number(); }), ": a: a number is needed");
  EXPECT_EQ(refusalOf("null", [](const JsonField& f) { f.number(); }), ": a: a number is needed");
  for (const char* value : {"[]", "-1", "-1e-300", "true"}) {
    EXPECT_EQ(refusalOf(value, [](const JsonField& f) { f.lengthOrNull(); }),
              ": a: a number from 0 on or null is needed");
    EXPECT_EQ(refusalOf(value, [](const JsonField& f) { f.length(); }),
              ": a: a number from 0 on is needed");
  }
  EXPECT_EQ(refusalOf("-1", [](const JsonField& f) { f.tally(); }),
            ": a: a whole number from 0 on is needed");
  EXPECT_EQ(refusalOf("2147483648", [](const JsonField& f) { f.tally(); }),
            ": a: a whole number of 32 bits is needed");
  EXPECT_EQ(refusalOf("1", [](const JsonField& f) { f.text(); }), ": a: a text is needed");
  EXPECT_EQ(refusalOf("1", [](const JsonField& f) { f.flag(); }), ": a: true or false is needed");
  EXPECT_EQ(refusalOf("1", [](const JsonField& f) { f.size(); }), ": a: a list is needed");
  EXPECT_EQ(refusalOf("[1]", [](const JsonField& f) { f.list(3); }), ": a: a list of 3 is needed");
  EXPECT_EQ(refusalOf("{}", [](const JsonField& f) { f.list(0); }), ": a: a list of 0 is needed");
  EXPECT_EQ(refusalOf("[]", [](const JsonField& f) { f.at("b"); }), ": a: an object is needed");
  EXPECT_EQ(refusalOf("[0,{}]", [](const JsonField& f) { f.at(1).at("b"); }), ": a[1].b: missing");
  EXPECT_EQ(refusal("[]", [](const JsonField& f) { f.at("b"); }), ": an object is needed");
  for (const char* number : {"1.5", "2147483648", "-2147483649", "1e10", "18446744073709551615"}) {
    EXPECT_EQ(refusalOf(number, [](const JsonField& f) { f.integer(); }),
              ": a: a whole number of 32 bits is needed")
        << number;
  }
  for (const char* number : {"-1", "1.5", "18446744073709551616"}) {
    EXPECT_EQ(refusalOf(number, [](const JsonField& f) { f.count(); }),
              ": a: a whole number from 0 on is needed")
        << number;
  }
}

TEST(JsonFile, NamesTheLineThatIsNoJson) {
  EXPECT_EQ(refusal("{\n\"a\":nan}"), ":2: this is no JSON: mend this line, or give another file");
  EXPECT_EQ(refusal("track,frame\n"),
            ": these are tracks, not a result: give what cornerpin solve -o shot.json writes");
  EXPECT_EQ(refusal("{\"a\":1}\n\n{}"),
            ":3: this is no JSON: mend this line, or give another file");
  EXPECT_EQ(refusal("{\"a\":\n[1,"),
            ":2: this is no JSON, or its end is missing: write the file again");
  EXPECT_EQ(refusal(""), ": the file is empty: write it again");
  EXPECT_EQ(refusal(" \n"), ": the file is empty: write it again");
  EXPECT_EQ(refusal(std::string("{\"a\":\"\xff\"}")),
            ":1: this is no JSON: mend this line, or give another file");
}

TEST(JsonFile, RefusesNumbersBeyondDoublePrecision) {
  EXPECT_EQ(refusal("[1e999]"), ": a number is too large for double precision");
}

TEST(JsonFile, RefusesAMemberThatIsThereTwiceWhereAsked) {
  const auto refused = [](const std::string& text) {
    return refusal(text, {}, JsonFile::Names::Once);
  };
  EXPECT_EQ(refused("{\"a\":1,\"b\":2,\"a\":3}"), ": a: there twice");
  EXPECT_EQ(refused("{\"a\":{\"a\":1},\"b\":{\"a\":1}}"), "nothing thrown");
  EXPECT_EQ(refused("{\"a\":nan}"), ":1: this is no JSON: mend this line, or give another file");
  EXPECT_EQ(refusal("{\"a\":1,\"a\":3}",
                    [](const JsonField& whole) { EXPECT_EQ(whole.at("a").integer(), 3); }),
            "nothing thrown");
}

// A list 25 times as long takes less than 250 times as long to read: it is 25 times where the time
// is proportional to the length, and 625 times where it grows like the square.
TEST(JsonFile, IsReadInTimeProportionalToItsLength) {
  const auto seconds = [](int items) {
    std::string text = "[{}";
    for (int i = 1; i < items; ++i) text += ",{}";
    const TemporaryFolder folder;
    writeFile(folder / "a", text + "]");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(JsonFile(folder / "a").whole().size(), static_cast<std::size_t>(items));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  seconds(10000);
  const double few = seconds(10000);
  EXPECT_LT(seconds(250000), 250.0 * std::max(few, 1e-4));
}

TEST(JsonFile, SurvivesAMillionBrackets) {
  EXPECT_EQ(refusal(std::string(1000000, '[')),
            ":1: this is no JSON, or its end is missing: write the file again");
  EXPECT_EQ(refusal(std::string(1000000, '[') + std::string(1000000, ']')), "nothing thrown");
}

TEST(JsonFile, ReadsGzip) {
  const TemporaryFolder folder;
  writeFile(folder / "in.json.gz", gzipped("{\"a\": 7}"));
  EXPECT_EQ(JsonFile(folder / "in.json.gz").whole().at("a").integer(), 7);
}

TEST(JsonFile, SaysWhyAFileCannotBeRead) {
  const TemporaryFolder folder;
  const auto what = [](const std::string& path) -> std::string {
    try {
      JsonFile file(path);
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(what(folder / "none"),
            folder / "none" + ": there is no such file: check its name and folder");
  EXPECT_EQ(what(folder.path().string()),
            folder.path().string() + ": this is a folder: name a file in it");
}
