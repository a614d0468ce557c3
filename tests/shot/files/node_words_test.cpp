// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/node_words.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Kind = NodeWords::Kind;

// Words as they are, texts in quotes, and a bar at the end of a line.
std::string wordsOf(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.nk", text);
  ByteSource source(folder / "in.nk");
  NodeWords words(source);
  std::string all;
  for (Kind kind = words.next(); kind != Kind::End; kind = words.next()) {
    if (kind == Kind::LineEnd) {
      all += "|";
    } else {
      all += kind == Kind::Quoted ? " \"" : " ";
      all += words.text();
      all += kind == Kind::Quoted ? "\"" : "";
    }
  }
  return all;
}

template <class F>
std::string messageFor(const std::string& text, F f) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.nk";
  writeFile(path, text);
  ByteSource source(path);
  NodeWords words(source);
  try {
    f(words);
  } catch (const InputError& error) {
    return std::string(error.what()).substr(path.size());
  }
  return "";
}

void takeAll(NodeWords& words) {
  while (words.next() != Kind::End) {
  }
}

}  // namespace

TEST(NodeWords, AreTakenApart) {
  EXPECT_EQ(wordsOf("A {\n b {{curve x1 5} 2}\n}\n"), " A {| b { { curve x1 5 } 2 }| }|");
  EXPECT_EQ(wordsOf("a\t \"b {c\"{d}\"\"\r\n e"), " a \"b {c\" { d } \"\"| e|");
  EXPECT_EQ(wordsOf("a\\{b \\\"c \"d\\\"e\" f\\"), " a\\{b \\\"c \"d\\\"e\" f\\|");
  EXPECT_EQ(wordsOf("a\"b c\"d"), " a\"b c\"d|");
  EXPECT_EQ(wordsOf("} a"), " } a|");
  EXPECT_EQ(wordsOf("a \"b\nc\" d\n"), " a \"b\nc\" d|");
  EXPECT_EQ(wordsOf(""), "");
}

TEST(NodeWords, SkipGroupsWhateverIsInThem) {
  const std::string text = "{a \" { b \\} \\{ <x y=\"\n {{}} \" }\n} } behind\n";
  EXPECT_EQ(messageFor(text,
                       [](NodeWords& words) {
                         ASSERT_EQ(words.next(), Kind::Open);
                         words.skipGroup();
                         ASSERT_EQ(words.next(), Kind::Close);
                         ASSERT_EQ(words.next(), Kind::Word);
                         EXPECT_EQ(words.text(), "behind");
                         EXPECT_EQ(words.line(), 3u);
                       }),
            "");
}

TEST(NodeWords, SkipLinesAndCommands) {
  EXPECT_EQ(messageFor("# a { \" }\nb {c\n d} \"e\nf\" g\nh }",
                       [](NodeWords& words) {
                         words.next();
                         words.skipLine();
                         EXPECT_EQ(words.next(), Kind::LineEnd);
                         words.next();
                         EXPECT_EQ(words.text(), "b");
                         EXPECT_EQ(words.skipCommand(), Kind::LineEnd);
                         words.next();
                         EXPECT_EQ(words.text(), "h");
                         EXPECT_EQ(words.skipCommand(), Kind::Close);
                         EXPECT_EQ(words.skipCommand(), Kind::LineEnd);
                         EXPECT_EQ(words.skipCommand(), Kind::End);
                       }),
            "");
}

TEST(NodeWords, TellWhatStandsInALine) {
  EXPECT_EQ(messageFor("a {b c} d {e\n} f",
                       [](NodeWords& words) {
                         words.next();
                         words.next();
                         NodeWords::Mark mark = words.mark();
                         words.skipGroup();
                         EXPECT_EQ(words.since(mark, 60), "{b c}");
                         EXPECT_EQ(words.since(mark, 3), "{b ");
                         words.next();
                         words.next();
                         mark = words.mark();
                         words.skipGroup();
                         EXPECT_EQ(words.since(mark, 60), "");
                       }),
            "");
}

TEST(NodeWords, RefuseWhatIsNotClosed) {
  EXPECT_EQ(messageFor("a {\n{\n}\n", takeAll),
            ":1: the brace that opens here is not closed: the file is cut off");
  const auto skip = [](NodeWords& words) {
    words.next();
    words.skipGroup();
  };
  EXPECT_EQ(messageFor("{\n{\n", skip),
            ":2: the brace that opens here is not closed: the file is cut off");
  EXPECT_EQ(messageFor("\na \"b\n\n", takeAll), ":2: the quotes that open here are not closed");
}

TEST(NodeWords, RefuseGroupsInMoreThanAHundredOthers) {
  const std::string deepest(100, '{');
  EXPECT_EQ(messageFor(deepest + std::string(100, '}'), takeAll), "");
  const std::string tooDeep = " \n" + std::string(1'000'000, '{');
  const std::string wanted =
      ":2: column 101: braces in braces, more than 100 deep: this is no node script";
  EXPECT_EQ(messageFor(tooDeep, takeAll), wanted);
  EXPECT_EQ(messageFor(tooDeep,
                       [](NodeWords& words) {
                         words.nextItem();
                         words.skipGroup();
                       }),
            wanted);
}

// A text may have any length; what is kept of it over several lines ends at some place.
TEST(NodeWords, KeepNoMoreOfALongTextThanANameHas) {
  std::string lines;
  for (int i = 0; i < 100'000; ++i) lines += "0123456789\n";
  EXPECT_EQ(messageFor("a \"" + lines + "\" b",
                       [](NodeWords& words) {
                         words.next();
                         ASSERT_EQ(words.next(), Kind::Quoted);
                         EXPECT_EQ(words.text().substr(0, 13), "0123456789\n01");
                         EXPECT_LE(words.text().size(), 65536u);
                         words.next();
                         EXPECT_EQ(words.text(), "b");
                       }),
            "");
}

TEST(Unescaped, LeavesOutBackslashes) {
  EXPECT_EQ(unescaped("a b"), "a b");
  EXPECT_EQ(unescaped("\\\"a\\\\\\{b\\}\\n\\t\\"), "\"a\\{b}\n\t\\");
}
