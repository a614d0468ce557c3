// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/line_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Line = std::pair<unsigned, std::string>;

std::vector<Line> linesOf(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.txt", text);
  ByteSource source(folder / "in.txt");
  LineReader lines(source);
  std::vector<Line> all;
  while (lines.next()) all.emplace_back(lines.line(), lines.text());
  return all;
}

// Calls f(words, reader) on the second line of a file, behind a line with a blank.
template <class F>
std::string messageFor(const std::string& line, F f) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.txt";
  writeFile(path, " \n" + line + "\n");
  ByteSource source(path);
  LineReader lines(source);
  lines.nextFilled();
  Words words(lines);
  try {
    f(words);
  } catch (const InputError& error) {
    EXPECT_EQ(error.line, 2u);
    return std::string(error.what()).substr(path.size());
  }
  return "";
}

}  // namespace

TEST(LineReader, TakesAllLineEnds) {
  const std::vector<Line> wanted = {{1, "a"}, {2, ""}, {3, "b c"}};
  EXPECT_EQ(linesOf("a\n\nb c\n"), wanted);
  EXPECT_EQ(linesOf("a\n\nb c"), wanted);
  EXPECT_EQ(linesOf("a\r\n\r\nb c\r\n"), wanted);
  EXPECT_EQ(linesOf("a\r\rb c\r"), wanted);
  EXPECT_EQ(linesOf("\xEF\xBB\xBF"
                    "a\n\r\nb c"),
            wanted);
  EXPECT_EQ(linesOf(""), std::vector<Line>{});
}

// The buffer's end falls between any two of the bytes, of CRLF too.
TEST(LineReader, ReadsOnWhereItsBufferEnds) {
  constexpr std::size_t kBuffer = std::size_t{256} * 1024;
  for (std::size_t before = kBuffer - 4; before <= kBuffer + 1; ++before) {
    const std::vector<Line> lines = linesOf(std::string(before, 'x') + "\r\nab\r\ncd");
    ASSERT_EQ(lines.size(), 3u) << before;
    EXPECT_EQ(lines[0].second.size(), before);
    EXPECT_EQ(lines[1].second, "ab");
    EXPECT_EQ(lines[2].second, "cd");
  }
}

TEST(LineReader, StaysOnALineWhenAsked) {
  const TemporaryFolder folder;
  writeFile(folder / "in.txt", "a\nb\n");
  ByteSource source(folder / "in.txt");
  LineReader lines(source);
  ASSERT_TRUE(lines.next());
  lines.stay();
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), "a");
  EXPECT_EQ(lines.line(), 1u);
  ASSERT_TRUE(lines.next());
  EXPECT_EQ(lines.text(), "b");
}

TEST(LineReader, TakesSixteenMegabytesInALineAndNoMore) {
  constexpr std::size_t kLongest = std::size_t{16} * 1024 * 1024;
  EXPECT_EQ(linesOf(std::string(kLongest, 'x') + "\nb").size(), 2u);
  EXPECT_THROW(linesOf(std::string(kLongest + 1, 'x') + "\nb"), InputError);
  EXPECT_THROW(linesOf(std::string(kLongest + 1, 'x')), InputError);
  const TemporaryFolder folder;
  const std::string path = folder / "in.txt";
  writeFile(path, "a\n" + std::string(3 * kLongest, 'x'));
  ByteSource source(path);
  LineReader lines(source);
  ASSERT_TRUE(lines.next());
  try {
    lines.next();
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(),
              path + ":2: the line is longer than 16 MB: this is no file of this kind");
  }
}

TEST(Words, AreTakenOffALine) {
  EXPECT_EQ(messageFor("  one\t 2  -3.5 nan 1e300 ",
                       [](Words& words) {
                         EXPECT_EQ(words.take(), "one");
                         EXPECT_EQ(words.takeWhole("frame"), 2);
                         EXPECT_EQ(words.takePosition("x"), -3.5);
                         EXPECT_TRUE(std::isnan(words.takePosition("y")));
                         EXPECT_FALSE(words.atEnd());
                         EXPECT_EQ(words.takeNumber("z"), 1e300);
                         EXPECT_TRUE(words.atEnd());
                         EXPECT_EQ(words.take(), "");
                         words.requireEnd();
                       }),
            "");
}

TEST(Words, TakeNamesInQuotes) {
  EXPECT_EQ(messageFor("\"a b\" c",
                       [](Words& words) {
                         EXPECT_EQ(words.takeQuoted("the name"), "a b");
                         EXPECT_EQ(words.rest(), "c");
                       }),
            "");
  const auto take = [](Words& words) { words.takeQuoted("the name"); };
  EXPECT_EQ(messageFor("a b", take),
            ":2: column 1: the name must stand in double quotes, not \"a b\"");
  EXPECT_EQ(messageFor("\"ab", take),
            ":2: column 1: the name must stand in double quotes, not \"\"ab\"");
}

TEST(Words, RefuseWithTheColumnAndTheValue) {
  const auto frame = [](Words& words) {
    words.take();
    words.takeWhole("frame");
  };
  EXPECT_EQ(messageFor("a  1.5", frame), ":2: column 4: frame must be a whole number, not \"1.5\"");
  EXPECT_EQ(messageFor("a 99999999999", frame),
            ":2: column 3: frame is too large: \"99999999999\"");
  const auto far = [](Words& words) { EXPECT_EQ(words.takeFrame(), 1000000000); };
  EXPECT_EQ(messageFor("1000000000", far), "");
  EXPECT_EQ(messageFor("1000000001", far), ":2: column 1: frame is too large: \"1000000001\"");
  EXPECT_EQ(messageFor("1000000000.0", far), "");
  EXPECT_EQ(messageFor("1.5", far), ":2: column 1: frame must be a whole number, not \"1.5\"");
  EXPECT_EQ(messageFor("a", frame), ":2: column 2: the line ends where frame is wanted");
  const auto x = [](Words& words) { words.takePosition("x"); };
  EXPECT_EQ(messageFor("1,5", x),
            ":2: column 1: x must be a number, not \"1,5\": write a decimal point");
  EXPECT_EQ(messageFor("-inf", x), ":2: column 1: x must be finite, not \"-inf\"");
  EXPECT_EQ(messageFor("4e38", x), ":2: column 1: x is too large: \"4e38\"");
  const auto end = [](Words& words) {
    words.take();
    words.requireEnd();
  };
  EXPECT_EQ(messageFor("a b", end), ":2: column 3: nothing is wanted here, not \"b\"");
}
