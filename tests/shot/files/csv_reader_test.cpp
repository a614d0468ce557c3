// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "shot/files/input_error.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Record = std::pair<unsigned, std::vector<std::string>>;  // its line and its fields

std::vector<Record> recordsFrom(CsvReader& reader) {
  std::vector<Record> records;
  while (reader.next()) {
    records.push_back({reader.line(), {}});
    for (std::size_t i = 0; i < reader.fieldCount(); ++i) {
      records.back().second.emplace_back(reader.field(i));
    }
  }
  return records;
}

std::vector<Record> recordsOf(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  CsvReader reader(folder / "in.csv");
  return recordsFrom(reader);
}

// What is said about the text, behind the file's name.
std::string refusal(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  try {
    CsvReader reader(folder / "in.csv");
    recordsFrom(reader);
  } catch (const InputError& error) {
    return std::string(error.what()).substr((folder / "in.csv").size());
  }
  return "accepted";
}

}  // namespace

TEST(CsvReader, SplitsRecordsIntoFields) {
  EXPECT_EQ(recordsOf("a,b\nc,,d\n"), (std::vector<Record>{{1, {"a", "b"}}, {2, {"c", "", "d"}}}));
}

TEST(CsvReader, CountsLinesByAnyOfTheThreeEnds) {
  EXPECT_EQ(recordsOf("a\nb\r\nc\rd"),
            (std::vector<Record>{{1, {"a"}}, {2, {"b"}}, {3, {"c"}}, {4, {"d"}}}));
  EXPECT_EQ(recordsOf("a\r\n\r\n\r\nb\r\rc\n\nd\n"),
            (std::vector<Record>{{1, {"a"}}, {4, {"b"}}, {6, {"c"}}, {8, {"d"}}}));
}

TEST(CsvReader, CountsTheLinesInsideQuotes) {
  EXPECT_EQ(recordsOf("\"a\nb\r\nc\",d\ne\n"),
            (std::vector<Record>{{1, {"a\nb\r\nc", "d"}}, {4, {"e"}}}));
}

TEST(CsvReader, DropsBlanksAroundWhatIsNotQuoted) {
  EXPECT_EQ(recordsOf(" a b\t,\t\" c \" \n"), (std::vector<Record>{{1, {"a b", " c "}}}));
}

TEST(CsvReader, TakesOneByteOrderMarkAtTheBeginningAlone) {
  EXPECT_EQ(recordsOf("\xEF\xBB\xBF"
                      "a\n\xEF\xBB\xBF"
                      "b\n"),
            (std::vector<Record>{{1, {"a"}},
                                 {2,
                                  {"\xEF\xBB\xBF"
                                   "b"}}}));
  EXPECT_EQ(recordsOf("\xEF\xBB"), (std::vector<Record>{{1, {"\xEF\xBB"}}}));
}

TEST(CsvReader, HasNoRecordInAnEmptyFile) {
  EXPECT_TRUE(recordsOf("").empty());
  EXPECT_TRUE(recordsOf("\n \t\r\n").empty());
}

// A block ends anywhere, also between the two characters of a line end.
TEST(CsvReader, JoinsWhatTheEndsOfItsBlocksPart) {
  for (std::size_t length = 262139; length < 262149; ++length) {
    const std::string first(length, 'x');
    EXPECT_EQ(recordsOf(first + ",\"q\"\"\"\r\nb\r\n"),
              (std::vector<Record>{{1, {first, "q\""}}, {2, {"b"}}}))
        << length;
  }
}

TEST(CsvReader, NamesTheLineOfARecordThatItRefuses) {
  EXPECT_EQ(refusal("a\n\nb,\"c\nd\n"), ":3: a quote is never closed");
  EXPECT_EQ(refusal("a\nb\"c\n"), ":2: a quote stands where none belongs");
  EXPECT_EQ(refusal("a\n\"b\nc\"d\n"), ":2: a quote stands where none belongs");
}

TEST(CsvReader, SaysThatAFileIsNotThere) {
  const TemporaryFolder folder;
  try {
    CsvReader reader(folder / "none.csv");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), folder / "none.csv" + ": No such file or directory");
  }
}

TEST(CsvReader, ClosesItsFile) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "a\n");
  const int before = ::dup(STDIN_FILENO);  // the lowest that is free
  ::close(before);
  { CsvReader reader(folder / "in.csv"); }
  const int after = ::dup(STDIN_FILENO);
  ::close(after);
  EXPECT_EQ(after, before);
}

namespace {

// Puts a pipe that holds the text in the place of standard input, as long as it lives.
class StandardInput {
 public:
  explicit StandardInput(const std::string& text) : before_(::dup(STDIN_FILENO)) {
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0) return;
    for (char c : text) {
      if (::write(ends[1], &c, 1) != 1) break;
    }
    ::close(ends[1]);
    ::dup2(ends[0], STDIN_FILENO);
    ::close(ends[0]);
  }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;
  ~StandardInput() {
    if (before_ < 0) {
      ::close(STDIN_FILENO);
      return;
    }
    ::dup2(before_, STDIN_FILENO);
    ::close(before_);
  }

 private:
  int before_;
};

}  // namespace

TEST(CsvReader, ReadsStandardInput) {
  const StandardInput input("a,b\n");
  CsvReader reader("-");
  EXPECT_EQ(reader.name(), "<stdin>");
  EXPECT_EQ(recordsFrom(reader), (std::vector<Record>{{1, {"a", "b"}}}));
}

TEST(CsvReader, LeavesStandardInputOpen) {
  const StandardInput input("a,b\n");
  { CsvReader reader("-"); }
  EXPECT_GE(::dup2(STDIN_FILENO, STDIN_FILENO), 0);
}

TEST(CsvReader, SaysThatStandardInputIsClosed) {
  const StandardInput input("");
  ::close(STDIN_FILENO);
  try {
    CsvReader reader("-");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(), "<stdin>: standard input is closed");
  }
}
