// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/json_characters.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

// What comes of a text when every character is taken, with an end noted behind each of these.
std::string taken(const std::string& text, char end = '\0') {
  const TemporaryFolder folder;
  writeFile(folder / "in.json", text);
  ByteSource source(folder / "in.json");
  JsonCharacters characters(source);
  std::string all;
  const JsonCharacterIterator none(nullptr);
  for (JsonCharacterIterator at(&characters); at != none; ++at) {
    all += *at;
    if (*at == end) characters.noteEnd();
  }
  return all;
}

}  // namespace

TEST(JsonCharacters, ComeAsTheyStandInTheFile) {
  std::string text;
  for (std::size_t i = 0; i < 3 * JsonCharacters::kBlock; ++i)
    text += static_cast<char>('a' + i % 23);
  EXPECT_EQ(taken(text), text);
  EXPECT_EQ(taken(""), "");
}

TEST(JsonCharacters, CountLines) {
  const TemporaryFolder folder;
  writeFile(folder / "in.json", "{\n\n}");
  ByteSource source(folder / "in.json");
  JsonCharacters characters(source);
  EXPECT_EQ(characters.line(), 1u);
  while (!characters.atEnd()) characters.advance();
  EXPECT_EQ(characters.line(), 3u);
}

TEST(JsonCharacters, EndWhereATextIsLongerThanAMegabyte) {
  const std::string most(JsonCharacters::kLongest - 1, 'x');
  EXPECT_EQ(taken(most), most);
  EXPECT_THROW(taken("\n" + most + "xxx"), InputError);
  EXPECT_NO_THROW(taken(most + "," + most + "," + most, ','));
}

TEST(JsonFlaw, LeavesOutWhereTheParserStandsAndWhatIsLong) {
  EXPECT_EQ(jsonFlaw(std::runtime_error("[json.1] at 7: unexpected end: x")), "unexpected end: x");
  EXPECT_EQ(jsonFlaw(std::runtime_error("flaw")), "flaw");
  EXPECT_EQ(jsonFlaw(std::runtime_error("a: " + std::string(1000, 'x'))),
            std::string(300, 'x') + "...");
}
