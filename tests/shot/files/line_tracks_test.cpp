// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/line_tracks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"

using namespace cornerpin;

namespace {

std::string formatWord(const testing::TestParamInfo<Format>& format) {
  return factsOf(format.param).word;
}

// What all readers of lines have in common, for each format.
class LineFormats : public testing::TestWithParam<Format> {
 protected:
  // Read as this format, and found to be that by itself.
  Tracks read(const std::string& text) const {
    EXPECT_EQ(formatIn(text), GetParam()) << text.substr(0, 200);
    ReadTrace trace;
    trace.format = GetParam();
    return tracksIn(text, &trace);
  }
  std::string refusal(const std::string& text) const {
    ReadTrace trace;
    trace.format = GetParam();
    return refusalOf(text, &trace);
  }
  std::string file(const std::vector<TextRow>& rows) const { return lineFile(GetParam(), rows); }

  const std::vector<TextRow> rows_ = {
      {"b", "1", "0.5", "-0.25"}, {"b", "3", "0.75", "1e-3"}, {"a c", "1", "+2", "3."}};
  const std::vector<ReadRow> read_ = {
      {"a c", 1, 2.0, 3.0}, {"b", 1, 0.5, -0.25}, {"b", 3, 0.75, 0.001}};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(All, LineFormats, testing::ValuesIn(kLineFormats), formatWord);

TEST_P(LineFormats, ReadTheNumbersOfTheFile) {
  EXPECT_EQ(rowsOf(read(file(rows_))), read_);
  ReadTrace trace;
  tracksIn(file(rows_), &trace);
  EXPECT_EQ(trace.format, GetParam());
  EXPECT_EQ(trace.rows, 3);
  EXPECT_EQ(trace.notes, std::vector<std::string>{});
}

TEST_P(LineFormats, TakeAllLineEndsAndBlanksAroundLines) {
  const std::string text = file(rows_);
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ(rowsOf(read(replaced(text, "\n", "\r\n"))), read_);
  EXPECT_EQ(rowsOf(read(replaced(text, "\n", "\r"))), read_);
  EXPECT_EQ(rowsOf(read(mark + text)), read_);
  EXPECT_EQ(rowsOf(read(replaced(text, "\n", " \t\n"))), read_);
  EXPECT_EQ(rowsOf(read(replaced(text, "\n", "\n  "))), read_);
  EXPECT_EQ(rowsOf(read(replaced(text, "\n", "\n\n"))), read_);
  EXPECT_EQ(rowsOf(read("\n \n" + text.substr(0, text.size() - 1))), read_);
  EXPECT_EQ(rowsOf(read("# a comment\n\n" + text)), read_);
  EXPECT_EQ(rowsOf(read(replaced(replaced(text, " 0.75", "  0.75"), " 3.", "\t3."))), read_);
}

TEST_P(LineFormats, TakeAnyNames) {
  for (const char* name : {"01", "7 8 9", "a#b", "\xC3\xA4\xE2\x82\xAC", "x.y/z", "-3.5", "a  b"}) {
    const Tracks tracks = read(file({{"first", "1", "1", "2"}, {name, "1", "3", "4"}}));
    ASSERT_EQ(tracks.names.size(), 2u) << name;
    EXPECT_EQ(rowsOf(tracks, name), (std::vector<ReadRow>{{name, 1, 3.0, 4.0}}));
  }
}

TEST_P(LineFormats, TakeFramesInAnyOrderAndBelowZero) {
  const Tracks tracks =
      read(file({{"a", "2", "1", "1"}, {"a", "-1", "2", "2"}, {"a", "0", "3", "3"}}));
  EXPECT_EQ(rowsOf(tracks),
            (std::vector<ReadRow>{{"a", -1, 2.0, 2.0}, {"a", 0, 3.0, 3.0}, {"a", 2, 1.0, 1.0}}));
}

TEST_P(LineFormats, TakeFramesWithDecimalsThatAreNought) {
  const std::string text = file({{"a", "1.0", "1", "1"}, {"a", "2.000", "3", "3"}});
  EXPECT_EQ(rowsOf(read(text)), (std::vector<ReadRow>{{"a", 1, 1.0, 1.0}, {"a", 2, 3.0, 3.0}}));
}

TEST_P(LineFormats, JoinARepeatedNameUnlessAFrameRepeats) {
  const TextRow other = {"b", "1", "1", "1"};
  const Tracks tracks = read(file({{"a", "1", "1", "1"}, other, {"a", "2", "3", "3"}}));
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tracks.observations.size(), 3u);
  const std::string twice = refusal(file({{"a", "1", "1", "1"}, other, {"a", "1", "3", "1"}}));
  EXPECT_NE(twice.find("track \"a\" is given twice in frame 1, first on line "), std::string::npos)
      << twice;
}

TEST_P(LineFormats, TakeNanForAGapAndRefuseItInOneCoordinate) {
  const Tracks tracks = read(file({{"a", "1", "nan", "NaN"}, {"a", "2", "1", "1"}}));
  EXPECT_EQ(rowsOf(tracks), (std::vector<ReadRow>{{"a", 2, 1.0, 1.0}}));
  const std::vector<TextRow> good = {{"a", "2", "1", "1"}};
  const auto with = [&](const char* x, const char* y) {
    return refusal(file({good[0], {"a", "3", x, y}}));
  };
  EXPECT_NE(with("nan", "5").find("x is NaN and y is a number"), std::string::npos);
  EXPECT_NE(with("5", "nan").find("y is NaN and x is a number"), std::string::npos);
}

TEST_P(LineFormats, RefuseInfinityAndWhatSinglePrecisionCannotHold) {
  const auto with = [&](const char* x, const char* y) {
    return refusal(file({{"a", "2", "1", "1"}, {"a", "3", x, y}}));
  };
  EXPECT_NE(with("inf", "5").find("x must be finite, not \"inf\""), std::string::npos);
  EXPECT_NE(with("5", "-inf").find("y must be finite, not \"-inf\""), std::string::npos);
  EXPECT_NE(with("nan", "inf").find("y must be finite, not \"inf\""), std::string::npos);
  EXPECT_NE(with("4e38", "5").find("x is too large: \"4e38\""), std::string::npos);
  EXPECT_NE(with("1e999", "5").find("x is out of range: \"1e999\""), std::string::npos);
}

TEST_P(LineFormats, NameTheLineTheColumnAndTheValue) {
  const auto with = [&](const char* frame, const char* x) {
    return refusal(file({{"a", "2", "1", "1"}, {"a", frame, x, "5"}}));
  };
  const std::string text = file({{"a", "2", "1", "1"}, {"a", "3", "oops", "5"}});
  const std::size_t at = text.find("oops");
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<int>(at), '\n');
  const std::size_t column = at - text.rfind('\n', at);
  EXPECT_EQ(with("3", "oops"),
            fmt::format("in.txt:{}: column {}: x must be a number, not \"oops\"", line, column));
  EXPECT_NE(with("3", "1,5").find("x must be a number, not \"1,5\": write a decimal point"),
            std::string::npos);
  EXPECT_NE(with("3.5", "1").find("frame must be a whole number, not \"3.5\""), std::string::npos);
  EXPECT_NE(with("3000000000", "1").find("frame is too large: \"3000000000\""), std::string::npos);
}

TEST_P(LineFormats, NameTheFirstTenBadRows) {
  std::vector<TextRow> rows;
  for (int i = 0; i < 12; ++i) rows.push_back({"a", std::to_string(i), "x", "y"});
  const std::string all = refusal(file(rows));
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 10) << all;
  EXPECT_NE(all.find("in.txt: 2 more rows are refused"), std::string::npos) << all;
}

TEST_P(LineFormats, RefuseAFileOfNothing) {
  for (const char* text : {"", "\n", " \r\n\t", "\xEF\xBB\xBF"}) {
    EXPECT_NE(refusal(text), "") << text;
  }
}

// Every beginning of a file is read or refused, and nothing else comes of it.
TEST_P(LineFormats, EndInTracksOrAMessageWhereverTheyAreCutOff) {
  const std::string text = file(rows_);
  int refused = 0;
  for (std::size_t length = 0; length < text.size(); ++length) {
    try {
      ReadTrace trace;
      trace.format = GetParam();
      tracksIn(text.substr(0, length), &trace);
    } catch (const InputError&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

TEST_P(LineFormats, RefuseALineThatIsTooLong) {
  const std::string text = file(rows_);
  const std::string longLine(17u << 20, '7');
  const std::string message = refusal(text + longLine + "\n");
  EXPECT_NE(message.find("the line is longer than 16 MB"), std::string::npos) << message;
  EXPECT_EQ(refusal(text + replaced(lineOf(GetParam(), rows_[0]), "0.5", longLine)), message);
}

TEST_P(LineFormats, TakeAHundredThousandTracksInAFrame) {
  constexpr int kTracks = 100'000;
  std::vector<TextRow> rows;
  rows.reserve(kTracks);
  for (int i = 0; i < kTracks; ++i) rows.push_back({"t" + std::to_string(i), "1", "2", "3"});
  const Tracks tracks = read(file(rows));
  EXPECT_EQ(tracks.names.size(), std::size_t{kTracks});
  EXPECT_EQ(tracks.observations.size(), std::size_t{kTracks});
}

TEST_P(LineFormats, TellHowFarTheyAre) {
  std::vector<TextRow> rows;
  for (int i = 0; i < 70'000; ++i) rows.push_back({"t", std::to_string(i), "2", "3"});
  const TemporaryFolder folder;
  const std::string text = file(rows);
  writeFile(folder / "in.txt", text);
  std::vector<std::size_t> done;
  readTracks(folder / "in.txt", [&](Phase phase, std::size_t at, std::size_t total) {
    if (phase == Phase::Reading && total == text.size()) done.push_back(at);
  });
  ASSERT_EQ(done.size(), 2u);
  EXPECT_LT(done[0], text.size() / 2);
  EXPECT_GT(done[1], text.size() / 2);
}

// A count allocates nothing: the file ends long before it.
TEST(LineTracks, TakesCountsOnlyAtTheirWord) {
  const auto refusal = [](Format format, const std::string& text) {
    ReadTrace trace;
    trace.format = format;
    return refusalOf(text, &trace);
  };
  EXPECT_EQ(refusal(Format::Points, "1\na\n0\n1000000000\n1 2 3\n"),
            "in.txt:5: the file ends here, after 1 of 1000000000 keys of track \"a\"");
  EXPECT_EQ(refusal(Format::Uv, "1\na\n1000000000\n1 2 3\n"),
            "in.txt:4: the file ends here, after 1 of 1000000000 keys of track \"a\"");
  EXPECT_EQ(refusal(Format::Blocks, "\"a\"\n1\n1000000000\n"),
            "in.txt:3: the file ends here, after 0 of 1000000000 keys of track \"a\"");
  EXPECT_EQ(refusal(Format::Uv, "1\na\n10000000000\n"),
            "in.txt:3: column 1: the number of keys is too large: \"10000000000\"");
  EXPECT_EQ(refusal(Format::Uv, "1\na\n-1\n"),
            "in.txt:3: column 1: the number of keys must not be negative: \"-1\"");
  EXPECT_EQ(refusal(Format::Uv, "1\na\n2 3\n"),
            "in.txt:3: column 3: nothing is wanted here, not \"3\"");
}

TEST(LineTracks, SayWhereABlockIsShorterThanItSays) {
  ReadTrace trace;
  trace.format = Format::Points;
  EXPECT_EQ(refusalOf("2\na\n0\n3\n1 2 3\n2 2 x\nb c\n0\n1\n1 2 3\n", &trace),
            "in.txt:6: column 5: y must be a number, not \"x\"\n"
            "in.txt:7: this is no key, and there were only 2 of 3 keys of track \"a\": \"b c\"");
  EXPECT_EQ(refusalOf("2\na\n0\n1\n1 2 3\n2 2 2\nb c\n", &trace),
            "in.txt:7: column 1: the colour number must be a number, not \"b\"");
}
