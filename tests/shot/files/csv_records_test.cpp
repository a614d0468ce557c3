// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/csv_records.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/sha256.h"
#include "tests/shot/files/gzipped.h"
#include "tests/shot/random.h"
#include "tests/support/allocations.h"
#include "tests/support/files.h"

using namespace cornerpin;

namespace {

using Record = std::pair<unsigned, std::vector<std::string>>;  // its line and its fields

Record recordOf(const CsvRecords& reader) {
  Record record = {reader.line(), {}};
  for (std::size_t i = 0; i < reader.fieldCount(); ++i) record.second.emplace_back(reader.field(i));
  return record;
}

std::vector<Record> recordsFrom(CsvRecords& reader) {
  std::vector<Record> records;
  while (reader.next()) records.push_back(recordOf(reader));
  return records;
}

std::vector<Record> recordsOf(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  ByteSource source(folder / "in.csv");
  CsvRecords reader(source);
  return recordsFrom(reader);
}

// What is said about the text, behind the file's name.
std::string refusal(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  try {
    ByteSource source(folder / "in.csv");
    CsvRecords reader(source);
    recordsFrom(reader);
  } catch (const InputError& error) {
    return std::string(error.what()).substr((folder / "in.csv").size());
  }
  return "accepted";
}

}  // namespace

TEST(CsvRecords, SplitsRecordsIntoFields) {
  EXPECT_EQ(recordsOf("a,b\nc,,d\n"), (std::vector<Record>{{1, {"a", "b"}}, {2, {"c", "", "d"}}}));
}

TEST(CsvRecords, FindsTheSeparatorInTheFirstLineThatIsNotBlank) {
  EXPECT_EQ(recordsOf("a;b\nc;,d;\n"),
            (std::vector<Record>{{1, {"a", "b"}}, {2, {"c", ",d", ""}}}));
  EXPECT_EQ(recordsOf("a\tb\n c \t\t\td;\n"),
            (std::vector<Record>{{1, {"a", "b"}}, {2, {"c", "", "", "d;"}}}));
  EXPECT_EQ(recordsOf("\xEF\xBB\xBF\t\t\n\na,b;c;d\n"),
            (std::vector<Record>{{3, {"a,b", "c", "d"}}}));
  EXPECT_EQ(recordsOf("a;b,c\nd\n"), (std::vector<Record>{{1, {"a;b", "c"}}, {2, {"d"}}}));
  EXPECT_EQ(recordsOf("a b\nc,d\n"), (std::vector<Record>{{1, {"a b"}}, {2, {"c", "d"}}}));
}

TEST(CsvRecords, LooksForTheSeparatorOutsideOfQuotes) {
  EXPECT_EQ(recordsOf("\";;;\n;;\",b\nc,d\n"),
            (std::vector<Record>{{1, {";;;\n;;", "b"}}, {3, {"c", "d"}}}));
  EXPECT_EQ(recordsOf("\",,\"\tb\n\"\tc\"\t \"d\" \n"),
            (std::vector<Record>{{1, {",,", "b"}}, {2, {"\tc", "d"}}}));
}

TEST(CsvRecords, RefusesWhatIsLongerThanFourMegabytes) {
  const std::string many(5'000'000, ',');
  EXPECT_EQ(refusal("a\n" + many), ":2: the line has more than 1000000 fields");
  EXPECT_EQ(refusal("a\n" + std::string(5'000'000, 'x')),
            ":2: the line is longer than 4194304 bytes");
  EXPECT_EQ(refusal("a\n\"" + many), ":2: the line is longer than 4194304 bytes");
  std::string lines = "\"";
  while (lines.size() < 5'000'000) lines += "b,c\n";
  EXPECT_EQ(refusal("a\n" + lines), ":2: a quote is not closed in 4194304 bytes");
  const std::string most(CsvRecords::kLongest, 'x');
  for (const char* more : {"", "\n", "\nb\nc\n"}) {
    EXPECT_EQ(refusal("a\n" + most + more), "accepted");
    EXPECT_EQ(refusal("a\nx" + most + more), ":2: the line is longer than 4194304 bytes");
  }
}

// The worst of them: nothing but separators.
TEST(CsvRecords, RefusesAnEndlessLineInLittleMemory) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv.gz", gzippedOf(40'000'000, ','));
  const std::size_t peak = allocations::peakBytesOf([&] {
    ByteSource source(folder / "in.csv.gz");
    CsvRecords reader(source);
    EXPECT_THROW(reader.next(), InputError);
  });
  EXPECT_LT(peak, 64u * 1024 * 1024);
}

TEST(CsvRecords, CountsLinesByAnyOfTheThreeEnds) {
  EXPECT_EQ(recordsOf("a\nb\r\nc\rd"),
            (std::vector<Record>{{1, {"a"}}, {2, {"b"}}, {3, {"c"}}, {4, {"d"}}}));
  EXPECT_EQ(recordsOf("a\r\n\r\n\r\nb\r\rc\n\nd\n"),
            (std::vector<Record>{{1, {"a"}}, {4, {"b"}}, {6, {"c"}}, {8, {"d"}}}));
}

TEST(CsvRecords, CountsTheLinesInsideQuotes) {
  EXPECT_EQ(recordsOf("\"a\nb\r\nc\",d\ne\n"),
            (std::vector<Record>{{1, {"a\nb\r\nc", "d"}}, {4, {"e"}}}));
}

TEST(CsvRecords, DropsBlanksAroundWhatIsNotQuoted) {
  EXPECT_EQ(recordsOf("x,y\n a b\t,\t\" c \" \n"),
            (std::vector<Record>{{1, {"x", "y"}}, {2, {"a b", " c "}}}));
}

TEST(CsvRecords, TakesOneByteOrderMarkAtTheBeginningAlone) {
  EXPECT_EQ(recordsOf("\xEF\xBB\xBF"
                      "a\n\xEF\xBB\xBF"
                      "b\n"),
            (std::vector<Record>{{1, {"a"}},
                                 {2,
                                  {"\xEF\xBB\xBF"
                                   "b"}}}));
  EXPECT_EQ(recordsOf("\xEF\xBB"), (std::vector<Record>{{1, {"\xEF\xBB"}}}));
}

TEST(CsvRecords, HasNoRecordInAnEmptyFile) {
  EXPECT_TRUE(recordsOf("").empty());
  EXPECT_TRUE(recordsOf("\n \t\r\n").empty());
}

// A block ends anywhere, also between the two characters of a line end.
TEST(CsvRecords, JoinsWhatTheEndsOfItsBlocksPart) {
  for (std::size_t length = 262139; length < 262149; ++length) {
    const std::string first(length, 'x');
    EXPECT_EQ(recordsOf(first + ",\"q\"\"\"\r\nb\r\n"),
              (std::vector<Record>{{1, {first, "q\""}}, {2, {"b"}}}))
        << length;
  }
}

TEST(CsvRecords, TakesLinesLongerThanItsBlocks) {
  std::string line = "a";
  for (int i = 1; i < 500000; ++i) line += i % 2 == 0 ? ", b" : ",c";
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "x\n" + line + "\ny," + std::string(700000, 'z'));
  ByteSource source(folder / "in.csv");
  CsvRecords reader(source);
  ASSERT_TRUE(reader.next() && reader.next());
  ASSERT_EQ(reader.fieldCount(), 500000u);
  for (std::size_t i = 1; i < 500000; ++i) ASSERT_EQ(reader.field(i), i % 2 == 0 ? "b" : "c");
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.field(1), std::string(700000, 'z'));
  EXPECT_EQ(reader.line(), 3u);
  EXPECT_FALSE(reader.next());
}

namespace {

// The CSV library fed with one byte after the other: the records, and what is refused.
class ByteByByte {
 public:
  ByteByByte(const std::string& text, char separator) {
    csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI);
    csv_set_delim(&parser_, static_cast<unsigned char>(separator));
    const std::size_t mark = text.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    for (std::size_t i = mark; i < text.size() && refusal.empty(); ++i) take(text[i]);
    if (refusal.empty() && csv_fini(&parser_, onField, onRecord, this) != 0) {
      refusal = at() + "a quote is never closed";
    }
    csv_free(&parser_);
    if (refusal.empty()) refusal = "accepted";
  }
  ByteByByte(const ByteByByte&) = delete;
  ByteByByte& operator=(const ByteByByte&) = delete;

  std::vector<Record> records;
  std::string refusal;

 private:
  void take(char c) {
    const bool separates = c == '\t' && csv_get_delim(&parser_) == '\t';
    if (!begun_ && (separates || std::string(" \t\r\n").find(c) == std::string::npos)) {
      begun_ = true;
      begin_ = line_;
    }
    if (csv_parse(&parser_, &c, 1, onField, onRecord, this) != 1) {
      refusal = at() + "a quote stands where none belongs";
    }
    line_ += c == '\r' || (c == '\n' && last_ != '\r');
    last_ = c;
  }
  std::string at() const { return ":" + std::to_string(begin_) + ": "; }

  static void onField(void* text, std::size_t length, void* self) {
    static_cast<ByteByByte*>(self)->fields_.emplace_back(static_cast<const char*>(text), length);
  }
  static void onRecord(int, void* self) {
    auto& me = *static_cast<ByteByByte*>(self);
    me.records.push_back({me.begin_, me.fields_});
    me.fields_.clear();
    me.begun_ = false;
  }

  csv_parser parser_;
  std::vector<std::string> fields_;
  unsigned line_ = 1;
  unsigned begin_ = 1;
  bool begun_ = false;
  char last_ = '\0';
};

std::string oneOf(made::Random& random, const std::vector<std::string>& pieces) {
  return pieces[static_cast<std::size_t>(random.real(0.0, static_cast<double>(pieces.size())))];
}

// Mostly well-formed text: fields with and without quotes, and now and then a quote anywhere.
std::string randomText(made::Random& random) {
  const std::vector<std::string> plain = {"a",
                                          "-",
                                          "+",
                                          ".",
                                          "7",
                                          "\xFF",
                                          "!",
                                          "/",
                                          " ",
                                          "\t",
                                          ";",
                                          std::string(1, '\0'),
                                          "\xEF\xBB\xBF",
                                          "longer text"};
  const std::vector<std::string> inside = {"a",    " ",    ",",  "\n",         "\r",
                                           "\r\n", "\"\"", "\t", "longer text"};
  const std::vector<std::string> behind = {",",  ",",    ",",    ",",   "\n",
                                           "\r", "\r\n", "\n\n", " \n", "\n \t\r\n"};
  std::string text;
  const double count = random.real(0.0, 40.0);
  for (double n = 0.0; n < count; ++n) {
    const bool quoted = random.chance(0.2);
    if (quoted) text += random.chance(0.3) ? " \"" : "\"";
    while (random.chance(0.6)) text += oneOf(random, quoted ? inside : plain);
    if (quoted) text += random.chance(0.3) ? "\"\t" : "\"";
    if (random.chance(0.01)) text += '"';
    text += oneOf(random, behind);
  }
  if (random.chance(0.5) && !text.empty()) text.pop_back();
  return text;
}

// Whether the text is refused; what comes before that is compared as well. A first line tells the
// separator.
bool readsLikeByteByByte(const std::string& path, std::string text, char separator = ',') {
  std::replace(text.begin(), text.end(), ',', separator);
  text = "x" + std::string(70, separator) + "\n" + text;
  writeFile(path, text);
  const ByteByByte expected(text, separator);
  std::vector<Record> records;
  std::string refusal = "accepted";
  try {
    ByteSource source(path);
    CsvRecords reader(source);
    while (reader.next()) records.push_back(recordOf(reader));
  } catch (const InputError& error) {
    refusal = std::string(error.what()).substr(path.size());
  }
  EXPECT_EQ(refusal, expected.refusal) << text;
  EXPECT_EQ(records, expected.records) << text;
  return refusal != "accepted";
}

}  // namespace

TEST(CsvRecords, ReadsRandomTextLikeTheCsvLibrary) {
  const TemporaryFolder folder;
  made::Random random(14);
  int refused = 0;
  for (int i = 0; i < 600 && !HasFailure(); ++i) {
    refused += readsLikeByteByByte(folder / "in.csv", randomText(random), ",;\t"[i % 3]);
  }
  EXPECT_GT(refused, 100);
  EXPECT_LT(refused, 300);
}

// The block ends at every byte of the text in turn.
TEST(CsvRecords, ReadsRandomTextAtTheEndOfABlockLikeTheCsvLibrary) {
  constexpr std::size_t kBlock = std::size_t{256} * 1024;
  const TemporaryFolder folder;
  made::Random random(15);
  for (std::size_t i = 0; i < 100 && !HasFailure(); ++i) {
    const std::string text = randomText(random);
    const std::size_t before = kBlock - 72 - std::min(text.size(), i);
    readsLikeByteByByte(folder / "in.csv", std::string(before - 1, 'x') + "\n" + text);
  }
}

TEST(CsvRecords, NamesTheLineOfARecordThatItRefuses) {
  EXPECT_EQ(refusal("a\n\nb,\"c\nd\n"), ":3: a quote is never closed");
  EXPECT_EQ(refusal("a\nb\"c\n"), ":2: a quote stands where none belongs");
  EXPECT_EQ(refusal("a\n\"b\nc\"d\n"), ":2: a quote stands where none belongs");
}

TEST(CsvRecords, SaysThatAFileIsNotThere) {
  const TemporaryFolder folder;
  try {
    ByteSource source(folder / "none.csv");
    CsvRecords reader(source);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(),
              folder / "none.csv" + ": there is no such file: check its name and folder");
  }
}

TEST(CsvRecords, ClosesItsFile) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "a\n");
  const int before = ::dup(STDIN_FILENO);  // the lowest that is free
  ::close(before);
  {
    ByteSource source(folder / "in.csv");
    CsvRecords reader(source);
  }
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

TEST(CsvRecords, ReadsStandardInput) {
  const StandardInput input("a,b\n");
  ByteSource source("-");
  CsvRecords reader(source);
  EXPECT_EQ(reader.name(), "<stdin>");
  EXPECT_EQ(recordsFrom(reader), (std::vector<Record>{{1, {"a", "b"}}}));
}

TEST(CsvRecords, LeavesStandardInputOpen) {
  const StandardInput input("a,b\n");
  {
    ByteSource source("-");
    CsvRecords reader(source);
  }
  EXPECT_GE(::dup2(STDIN_FILENO, STDIN_FILENO), 0);
}

TEST(CsvRecords, SaysThatStandardInputIsClosed) {
  const StandardInput input("");
  ::close(STDIN_FILENO);
  try {
    ByteSource source("-");
    CsvRecords reader(source);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(), "<stdin>: standard input is closed: open it, or name a file");
  }
}

TEST(CsvRecords, EstimatesTheRecordsOfASmallFileByItsLines) {
  const TemporaryFolder folder;
  const auto estimated = [&](const std::string& text) {
    writeFile(folder / "in.csv", text);
    ByteSource source(folder / "in.csv");
    return CsvRecords(source).estimatedRecords();
  };
  for (const std::string end : {"\n", "\r", "\r\n", "\n\n"}) {
    std::string text;
    for (int i = 0; i < 100; ++i) text += "a,b" + end;
    EXPECT_NEAR(static_cast<double>(estimated(text)), 100.0, 1.0);
  }
  EXPECT_EQ(estimated(""), 0u);
}

// Its lines get longer and then shorter.
TEST(CsvRecords, EstimatesTheRecordsOfALargeFileFromASample) {
  constexpr int kRows = 200000;
  std::string text;
  for (int i = 0; i < kRows; ++i)
    text += std::to_string(std::min(i, 3 * (kRows - i)) % 100000) + ",b,c\n";
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  ByteSource source(folder / "in.csv");
  CsvRecords reader(source);
  EXPECT_NEAR(static_cast<double>(reader.estimatedRecords()), kRows, 0.02 * kRows);
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.field(0), "0");  // what was looked at is still to be read
}

TEST(CsvRecords, EstimatesNothingForAPipe) {
  const StandardInput input("a,b\nc,d\n");
  ByteSource source("-");
  EXPECT_EQ(CsvRecords(source).estimatedRecords(), 0u);
}

// The digest is that of what was read, even where the file changes on the way.
TEST(CsvRecords, DigestsTheBytesThatItReads) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.csv";
  std::string before;
  std::string behind;
  for (int i = 0; i < 100000; ++i) {
    before += "aaaa,bbbb\n";
    behind += "cccc,dddd\n";
  }
  writeFile(path, before);
  Sha256 digest;
  ByteSource source(path, &digest);
  CsvRecords csv(source);
  std::string read;
  for (int i = 0; csv.next(); ++i) {
    if (i == 0) std::ofstream(path, std::ios::in | std::ios::binary) << behind;
    read += std::string(csv.field(0)) + "," + std::string(csv.field(1)) + "\n";
  }
  ASSERT_EQ(read.size(), before.size());
  EXPECT_NE(read, before);
  EXPECT_NE(read, behind);
  Sha256 expected;
  expected.add(read.data(), read.size());
  EXPECT_EQ(digest.hex(), expected.hex());
}
