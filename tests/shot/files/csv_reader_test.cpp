// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/track_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "shot/files/input_error.h"
#include "tests/shot/files/gzipped.h"
#include "tests/shot/random.h"
#include "tests/support/allocations.h"
#include "tests/support/files.h"

using cornerpin::InputError;
using cornerpin::Observation;
using cornerpin::readTracks;
using cornerpin::Tracks;

namespace {

Tracks read(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  return readTracks(folder / "in.csv");
}

// What is said about the text, behind the file's name.
std::string refusal(const std::string& text) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.csv";
  writeFile(path, text);
  try {
    readTracks(path);
  } catch (const InputError& error) {
    const std::string what = error.what();
    EXPECT_EQ(what.substr(0, path.size() + 1), path + ":");
    EXPECT_EQ(error.file, path);
    return what.substr(path.size() + 1);
  }
  return "accepted";
}

const std::string kHeader = "track,frame,x,y,weight\n";

}  // namespace

TEST(ReadTracks, ReadsEveryColumn) {
  const Tracks tracks = read("track,frame,x,y,weight\na,7,1.5,-2.25e1,0.5\n");
  ASSERT_EQ(tracks.observations.size(), 1u);
  const Observation& o = tracks.observations[0];
  EXPECT_EQ(tracks.names[0], "a");
  EXPECT_EQ(o.frame, 7);
  EXPECT_EQ(o.x, 1.5);
  EXPECT_EQ(o.y, -22.5);
  EXPECT_EQ(o.weight, 0.5f);
  EXPECT_EQ(o.line, 2u);
}

TEST(ReadTracks, TakesColumnsInAnyOrderAndSkipsOthers) {
  const Tracks tracks = read("y,note,frame, x ,track\n4,hello,2,3,a\n");
  EXPECT_EQ(tracks.observations[0].x, 3.0);
  EXPECT_EQ(tracks.observations[0].y, 4.0);
  EXPECT_EQ(tracks.observations[0].frame, 2);
}

TEST(ReadTracks, WeighsOneWithoutAWeightColumn) {
  EXPECT_EQ(read("track,frame,x,y\na,0,1,2\n").observations[0].weight, 1.0f);
}

TEST(ReadTracks, TakesByteOrderMarkCrLfAndBlankLines) {
  const Tracks tracks =
      read("\xEF\xBB\xBFtrack,frame,x,y\r\n\r\n  \r\na,0,1,2\r\n\r\nb,0,3,4\r\n\r\n\r\n");
  ASSERT_EQ(tracks.observations.size(), 2u);
  EXPECT_EQ(tracks.observations[0].line, 4u);
  EXPECT_EQ(tracks.observations[1].line, 6u);
}

TEST(ReadTracks, TakesCarriageReturnsAlone) {
  const Tracks tracks = read("track,frame,x,y\ra,0,1,2\rb,0,3,4");
  ASSERT_EQ(tracks.observations.size(), 2u);
  EXPECT_EQ(tracks.observations[1].line, 3u);
}

TEST(ReadTracks, TakesQuotedNamesWithCommasQuotesAndLineEnds) {
  const Tracks tracks = read("\"track\",frame,x,y\n\"a, \"\"b\"\"\n c\",0,1,2\nd,0,3,4\n");
  ASSERT_EQ(tracks.names.size(), 2u);
  EXPECT_EQ(tracks.names[0], "a, \"b\"\n c");
  EXPECT_EQ(tracks.observations[0].line, 2u);
  EXPECT_EQ(tracks.observations[1].line, 4u);
}

TEST(ReadTracks, TakesTheLastLineWithoutItsEnd) {
  EXPECT_EQ(read("track,frame,x,y\na,0,1,2").observations.size(), 1u);
}

TEST(ReadTracks, TakesNegativeFramesBlanksAndPlusSigns) {
  const Tracks tracks = read("track,frame,x,y\na, -3 , +1 ,\t2\n");
  EXPECT_EQ(tracks.observations[0].frame, -3);
  EXPECT_EQ(tracks.observations[0].x, 1.0);
}

TEST(ReadTracks, SortsByFrameThenByTheTracksName) {
  const Tracks tracks = read("track,frame,x,y\nz,5,1,0\na,5,2,0\na,3,3,0\nz,3,4,0\n");
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"a", "z"}));
  std::vector<double> xs;
  for (const Observation& o : tracks.observations) xs.push_back(o.x);
  EXPECT_EQ(xs, (std::vector<double>{3, 4, 2, 1}));
}

TEST(ReadTracks, OrdersNamesByteByByte) {
  const Tracks tracks =
      read("track,frame,x,y\n\u00fc,0,1,0\nt10,0,2,0\nt2,0,3,0\nT3,0,4,0\nt,0,5,0\n\"t,\",0,6,0\n");
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"T3", "t", "t,", "t10", "t2", "\u00fc"}));
  std::vector<double> xs;
  for (const Observation& o : tracks.observations) xs.push_back(o.x);
  EXPECT_EQ(xs, (std::vector<double>{4, 5, 6, 2, 3, 1}));
}

TEST(ReadTracks, IsTheSameInAnyOrderOfTheRows) {
  made::Random random(4);
  std::vector<std::string> rows;
  for (int f = 0; f < 40; ++f) {
    for (int t = 0; t < 15; ++t) {
      rows.push_back("n" + std::to_string(t) + "," + std::to_string(f) + "," +
                     std::to_string(random.real(0, 100)) + "," + std::to_string(f * t) + "\n");
    }
  }
  const auto readRows = [&] {
    std::string text = "track,frame,x,y\n";
    for (const std::string& row : rows) text += row;
    return read(text);
  };
  const Tracks first = readRows();
  for (std::size_t i = rows.size() - 1; i > 0; --i) {
    const double at = random.real(0, static_cast<double>(i + 1));
    std::swap(rows[i], rows[static_cast<std::size_t>(at)]);
  }
  const Tracks second = readRows();
  EXPECT_EQ(first.names, second.names);
  ASSERT_EQ(first.observations.size(), second.observations.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Observation& a = first.observations[i];
    const Observation& b = second.observations[i];
    EXPECT_TRUE(a.track == b.track && a.frame == b.frame && a.x == b.x && a.y == b.y) << i;
  }
}

TEST(ReadTracks, TakesSemicolonsTabsAndGzip) {
  const std::string text = "track,frame,x,y,weight\na b,1,2.5,3,0.5\n\"c,d\",1,4,5,1\n";
  std::string semicolons = text;
  std::replace(semicolons.begin(), semicolons.end(), ',', ';');
  std::string tabs = text;
  std::replace(tabs.begin(), tabs.end(), ',', '\t');
  const std::string names[] = {"c,d", "c;d", "c\td", "c,d"};
  std::size_t n = 0;
  for (const std::string& bytes : {text, semicolons, tabs, gzipped(text)}) {
    const Tracks tracks = read(bytes);
    ASSERT_EQ(tracks.observations.size(), 2u);
    EXPECT_EQ(tracks.names, (std::vector<std::string>{"a b", names[n++]}));
    EXPECT_EQ(tracks.observations[0].x, 2.5);
    EXPECT_EQ(tracks.observations[0].weight, 0.5f);
    EXPECT_EQ(tracks.observations[1].y, 5.0);
  }
}

// Where one frame is far from the others, and the frames that count are named.
TEST(ReadTracks, LeavesOutFramesBesideThoseNamedWhereOneIsFarOff) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.csv";
  writeFile(path, "track,frame,x,y\na,-1,1,0\na,0,2,0\nb,9,3,0\na,5,4,0\na,90000000,5,0\n");
  cornerpin::ReadTrace trace;
  const Tracks tracks = readTracks(path, {}, {0, 8}, &trace);
  EXPECT_EQ(tracks.firstFrame(), 0);
  EXPECT_EQ(tracks.lastFrame(), 5);
  EXPECT_EQ(tracks.observations.size(), 2u);
  EXPECT_EQ(tracks.names, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(tracks.emptied[1], cornerpin::Unused::OutsideFrames);
  EXPECT_EQ(trace.rows, 5);
  try {
    readTracks(path, {}, {6, 8});
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), path + ": no track is seen in the frames 6-8");
  }
}

TEST(ReadTracks, LeavesFramesBesideThoseNamedWhereNoneIsFarOff) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,0,1,0\na,9,2,0\n");
  EXPECT_EQ(readTracks(folder / "in.csv", {}, {0, 5}).lastFrame(), 9);
}

TEST(ReadTracks, TakesFarFramesAmongThoseNamed) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", "track,frame,x,y\na,0,1,0\na,50000,2,0\n");
  EXPECT_EQ(readTracks(folder / "in.csv", {}, {0, 50000}).frameCount(), 50001);
}

TEST(ReadTracks, FindsAFramesObservations) {
  const Tracks tracks = read("track,frame,x,y\na,5,1,0\nb,5,2,0\na,9,3,0\n");
  EXPECT_EQ(tracks.firstFrame(), 5);
  EXPECT_EQ(tracks.lastFrame(), 9);
  EXPECT_EQ(tracks.frameCount(), 5);
  const auto count = [&](int frame) {
    return tracks.inFrame(frame).last - tracks.inFrame(frame).first;
  };
  EXPECT_EQ(count(4), 0);
  EXPECT_EQ(count(5), 2);
  EXPECT_EQ(count(6), 0);
  EXPECT_EQ(count(9), 1);
  EXPECT_EQ(count(10), 0);
}

namespace {

// A number as text: up to 19 digits, a point somewhere or not, a sign or not, now and then an
// exponent.
std::string randomNumber(made::Random& random) {
  std::string text = random.chance(0.3) ? "-" : "";
  const int count = static_cast<int>(random.real(1.0, 20.0));
  const int point = static_cast<int>(random.real(-2.0, count + 2.0));
  for (int i = 0; i < count; ++i) {
    if (i == point) text += '.';
    text += static_cast<char>('0' + static_cast<int>(random.real(0.0, 10.0)));
  }
  if (count == point) text += '.';
  if (random.chance(0.1)) text += random.chance(0.5) ? "e-3" : "E7";
  return text;
}

}  // namespace

TEST(ReadTracks, RoundsEveryNumberToTheNearestDouble) {
  made::Random random(7);
  std::vector<std::string> numbers = {"0",
                                      "-0",
                                      ".5",
                                      "5.",
                                      "-.25",
                                      "000000000000001",
                                      "-0.000",
                                      "9007199254740993",
                                      "999999999999999",
                                      "0.00000000000001"};
  while (numbers.size() < 50000) numbers.push_back(randomNumber(random));
  std::string text = "track,frame,x,y\n";
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    text += "a," + std::to_string(i) + "," + numbers[i] + ",\t+7 \n";
  }
  const Tracks tracks = read(text);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const double expected = std::strtod(numbers[i].c_str(), nullptr);
    ASSERT_EQ(tracks.observations[i].x, expected) << numbers[i];
    ASSERT_EQ(std::signbit(tracks.observations[i].x), std::signbit(expected)) << numbers[i];
    ASSERT_EQ(tracks.observations[i].y, 7.0);
  }
}

// Tracks come, go and change their order from frame to frame.
TEST(ReadTracks, KnowsEachTrackByItsNameWhateverTheOrder) {
  made::Random random(9);
  const std::vector<std::string> names = {"a", "b", "ab", "a b", "\"a,b\"", "B", "1", "01", "1.0"};
  std::string text = "frame,x,y,track\n";
  std::vector<std::string> order;
  for (int f = 0; f < 300; ++f) {
    std::size_t first = static_cast<std::size_t>(random.real(0.0, 9.0));
    for (std::size_t n = 0; n < names.size(); ++n) {
      if (random.chance(0.1)) continue;
      order.push_back(names[(first + n) % names.size()]);
      text +=
          std::to_string(f) + "," + std::to_string(order.size() - 1) + ",0," + order.back() + "\n";
    }
  }
  const Tracks tracks = read(text);
  ASSERT_EQ(tracks.observations.size(), order.size());
  ASSERT_EQ(tracks.names.size(), names.size());
  for (const Observation& o : tracks.observations) {
    std::string name = order[static_cast<std::size_t>(o.x)];
    name.erase(std::remove(name.begin(), name.end(), '"'), name.end());
    EXPECT_EQ(tracks.names[static_cast<std::size_t>(o.track)], name) << o.line;
  }
}

namespace {

constexpr int kManyFrames = 1000;
constexpr int kManyTracks = 200;

std::string row(int track, int frame) {
  return "t" + std::to_string(track) + "," + std::to_string(frame) + "," +
         std::to_string(10 * track) + ".25," + std::to_string(frame) + ".125\n";
}

// What reading takes at most, in bytes for each row.
double bytesPerRow(const std::string& text) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv", text);
  constexpr double kBlock = 256 * 1024;
  const std::size_t peak = allocations::peakBytesOf([&] { readTracks(folder / "in.csv"); });
  return (static_cast<double>(peak) - kBlock) / (kManyFrames * kManyTracks);
}

}  // namespace

TEST(ReadTracks, TakesFortyBytesForEachRow) {
  std::string byFrame = "track,frame,x,y\n";
  std::string byTrack = byFrame;
  for (int f = 0; f < kManyFrames; ++f) {
    for (int t = 0; t < kManyTracks; ++t) byFrame += row(t, f);
  }
  for (int t = 0; t < kManyTracks; ++t) {
    for (int f = kManyFrames - 1; f >= 0; --f) byTrack += row(t, f);
  }
  EXPECT_LT(bytesPerRow(byFrame), 34.0);
  EXPECT_LT(bytesPerRow(byTrack), 38.0);
}

TEST(ReadTracks, LeavesNothingBehindWhereMemoryRunsOut) {
  const TemporaryFolder folder;
  writeFile(folder / "in.csv",
            "track,frame,x,y\n\"a, long name that needs memory\",1,1,2\nb,0,1,2\n");
  EXPECT_GT(allocations::expectNoLeakOnAnyFailure([&] { readTracks(folder / "in.csv"); }), 8u);
}

TEST(ReadTracks, ReadsRowsAcrossBufferEnds) {
  std::string text = "track,frame,x,y\n";
  for (int i = 0; i < 100000; ++i)
    text += "track_" + std::to_string(10 + i % 90) + "," + std::to_string(i / 90) + "," +
            std::to_string(i) + ".25,1\n";
  const Tracks tracks = read(text);
  ASSERT_EQ(tracks.observations.size(), 100000u);
  for (std::size_t i = 0; i < tracks.observations.size(); ++i) {
    ASSERT_EQ(tracks.observations[i].x, static_cast<double>(i) + 0.25);
    ASSERT_EQ(tracks.observations[i].line, i + 2);
  }
}

TEST(ReadTracksRefuses, AMissingColumn) {
  EXPECT_EQ(refusal("track,frame,x,weight\na,0,1,1\n"),
            "1: the header \"track,frame,x,weight\" has no column \"y\": the first line must name "
            "track, frame, x and y");
  EXPECT_EQ(refusal("\n\nTrack,frame,x,y\n"),
            "3: the header \"Track,frame,x,y\" has no column \"track\": the first line must name "
            "track, frame, x and y");
  EXPECT_EQ(refusal("track;frame;x\n"),
            "1: the header \"track;frame;x\" has no column \"y\": the first line must name track, "
            "frame, x and y");
  EXPECT_EQ(refusal("track|frame|x|y\n"),
            "1: the header \"track|frame|x|y\" has no column \"track\": columns are separated by "
            "commas, semicolons or tabs");
  EXPECT_EQ(refusal("frame,h00,h01,rms\n0,1,0,0\n"),
            "1: the header \"frame,h00,h01,rms\" has no column \"track\": this is a result, not "
            "tracks: give the file that it was solved from");
}

TEST(ReadTracksRefuses, ARepeatedColumn) {
  EXPECT_EQ(refusal("track,frame,x,y,x\n"), "1: the header repeats the column \"x\"");
}

TEST(ReadTracksRefuses, ANumberThatDoesNotParse) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1\na,1,12px,2,1\n"), "3: x must be a number, not \"12px\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,,1\n"), "2: y must be a number, not \"\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,\"2,5\",1\n"),
            "2: y must be a number, not \"2,5\": write a decimal point");
  EXPECT_EQ(refusal(kHeader + "a,0,1,\"2,5,6\",1\n"), "2: y must be a number, not \"2,5,6\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,high\n"), "2: weight must be a number, not \"high\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1e999,2,1\n"), "2: x is out of range: \"1e999\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,-1e-999,1\n"), "2: y is out of range: \"-1e-999\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1e999x,2,1\n"), "2: x must be a number, not \"1e999x\"");
  for (const std::string text : {"+-1", ".", "-", "-.", "+", "--1", "1-", "1.2.3", "1..2", "- 1",
                                 "0x1", "1e", "1 2", "++1", "1,"}) {
    std::string rows = kHeader;
    rows.append("a,0,\"").append(text).append("\",2,1\n");
    std::string message = "2: x must be a number, not \"";
    message.append(text).append("\"");
    EXPECT_EQ(refusal(rows), message);
  }
}

TEST(ReadTracksRefuses, APositionThatIsNotFinite) {
  EXPECT_EQ(refusal(kHeader + "a,0,nan,2,1\n"), "2: x must be finite, not \"nan\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,-inf,1\n"), "2: y must be finite, not \"-inf\"");
}

TEST(ReadTracksRefuses, APositionBeyondSinglePrecision) {
  EXPECT_EQ(refusal(kHeader + "a,0,1e39,2,1\n"), "2: x is too large: \"1e39\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1\na,1,1,-1e300,1\n"), "3: y is too large: \"-1e300\"");
  const Tracks tracks = read(kHeader + "a,0,3.4e38,-3.4e38,1\n");
  EXPECT_EQ(tracks.observations.front().x, 3.4e38);
}

TEST(ReadTracksRefuses, AWeightThatIsNegativeOrNotFinite) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,-0.5\n"), "2: weight must not be negative or NaN: \"-0.5\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,nan\n"), "2: weight must not be negative or NaN: \"nan\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,inf\n"), "2: weight must be finite, not \"inf\"");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1e39\n"), "2: weight is too large: \"1e39\"");
}

TEST(ReadTracks, TakesFramesWithDecimalsThatAreNought) {
  const TemporaryFolder folder;
  writeFile(folder / "t.csv", kHeader + "a,12.0,1,2,1\n");
  EXPECT_EQ(readTracks(folder / "t.csv").observations.at(0).frame, 12);
}

TEST(ReadTracksRefuses, AFrameThatIsNotAWholeNumber) {
  EXPECT_EQ(refusal(kHeader + "a,1.5,1,2,1\n"), "2: frame must be a whole number, not \"1.5\"");
  EXPECT_EQ(refusal(kHeader + "a,99999999999,1,2,1\n"), "2: frame is too large: \"99999999999\"");
  EXPECT_EQ(refusal(kHeader + "a, -99999999999 ,1,2,1\n"),
            "2: frame is too large: \"-99999999999\"");
  EXPECT_EQ(refusal(kHeader + "a,1000000001,1,2,1\n"), "2: frame is too large: \"1000000001\"");
  EXPECT_EQ(refusal(kHeader + "a,-1000000001,1,2,1\n"), "2: frame is too large: \"-1000000001\"");
  EXPECT_EQ(refusal(kHeader + "a,99999999999x,1,2,1\n"),
            "2: frame must be a whole number, not \"99999999999x\"");
  EXPECT_EQ(refusal(kHeader + "a,,1,2,1\n"), "2: frame must be a whole number, not \"\"");
}

TEST(ReadTracksRefuses, AFrameFarFromTheOthers) {
  EXPECT_EQ(refusal(kHeader + "a,5,1,2,1\na,1000000,1,2,1\na,6,1,2,1\n"),
            "3: frame 1000000 is 999994 frames from the nearest other, and the shot has 3: if that "
            "is right, name the frames with --frames");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1\na,10000,1,2,1\n"), "accepted");
  EXPECT_EQ(refusal(kHeader + "a,-1000000000,1,2,1\na,1000000000,1,2,1\n").substr(0, 2), "3:");
}

TEST(ReadTracksRefuses, FramesThatSpanTooMuch) {
  std::string rows = kHeader;
  for (int f = 0; f < 250; ++f) rows += "a," + std::to_string(8000 * f) + ",1,2,1\n";
  EXPECT_EQ(refusal(rows + "a,1999999,1,2,1\n"), "accepted");
  EXPECT_EQ(refusal(rows + "a,2000000,1,2,1\n"), " frames 0 to 2000000 span more than 2000000");
}

TEST(ReadTracksRefuses, TheFirstTenOfManyRows) {
  std::string rows = kHeader + "a,0,1,2,1\n";
  std::string text;
  for (int f = 1; f <= 13; ++f) rows += "b,x,1,2,1\n";
  for (int line = 3; line <= 12; ++line) {
    text += (line > 3 ? "PATH:" : "") + std::to_string(line) +
            ": frame must be a whole number, not \"x\"\n";
  }
  const auto withPath = [](std::string what, const std::string& path) {
    for (std::size_t at = what.find(path); at != std::string::npos; at = what.find(path)) {
      what.replace(at, path.size(), "PATH");
    }
    return what;
  };
  const TemporaryFolder folder;
  const std::string path = folder / "in.csv";
  const auto said = [&] {
    try {
      readTracks(path);
    } catch (const InputError& error) {
      return withPath(error.what(), path);
    }
    return std::string();
  };
  writeFile(path, rows);
  EXPECT_EQ(said(), "PATH:" + text + "PATH: 3 more rows are refused");
  writeFile(path, rows + "c,\"1,1,2,1\n");
  EXPECT_EQ(said(),
            "PATH:" + text + "PATH: 3 more rows are refused\nPATH:16: a quote is never closed");
  writeFile(path, kHeader + "a,0,1,2,1\na,0,1,2,1\na,0,1,2,1\n");
  EXPECT_EQ(said(),
            "PATH:3: track \"a\" is given twice in frame 0, first on line 2\n"
            "PATH:4: track \"a\" is given twice in frame 0, first on line 3");
}

TEST(ReadTracksRefuses, FilesOfOtherKinds) {
  EXPECT_EQ(refusal("{\"cornerpin\":2}"),
            " this is a result, not tracks: give the file that it was solved from");
  EXPECT_EQ(refusal("\x1f\x8b"), " the gzip data is cut off: the file is incomplete");
  const std::string packed = gzipped(kHeader + "a,0,1,2,1\n");
  EXPECT_EQ(refusal(packed.substr(0, packed.size() - 1)),
            " the gzip data is cut off: the file is incomplete");
  EXPECT_EQ(refusal(gzipped("{\"cornerpin\":2}")),
            " this is a result, not tracks: give the file that it was solved from");
}

TEST(ReadTracksRefuses, ATrackTwiceInAFrameNamingBothLines) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1\nb,0,1,2,1\n\na,0,1,2,1\n"),
            "5: track \"a\" is given twice in frame 0, first on line 2");
}

TEST(ReadTracksRefuses, TheFirstRepeatInTheFile) {
  EXPECT_EQ(refusal(kHeader + "b,9,1,2,1\nb,9,1,2,1\na,0,1,2,1\na,0,1,2,1\n").substr(0, 55),
            "3: track \"b\" is given twice in frame 9, first on line 2");
}

TEST(ReadTracksRefuses, ARowOfAnotherLength) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2\n"), "2: the row has 4 fields, the header has 5");
  EXPECT_EQ(refusal(kHeader + "a\n"), "2: the row has 1 field, the header has 5");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1,\n"), "2: the row has 6 fields, the header has 5");
}

TEST(ReadTracksRefuses, AnEmptyTrackName) {
  EXPECT_EQ(refusal(kHeader + ",0,1,2,1\n"), "2: a row needs a track name, not \"\"");
  EXPECT_EQ(refusal(kHeader + "\"\",0,1,2,1\n"), "2: a row needs a track name, not \"\"");
}

TEST(ReadTracksRefuses, AQuoteThatIsNeverClosed) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,1\n\"b,0,1,2,1\nc,0,1,2,1\n"), "3: a quote is never closed");
}

TEST(ReadTracksRefuses, AStrayQuote) {
  EXPECT_EQ(refusal(kHeader + "\"a\"b,0,1,2,1\n"), "2: a quote stands where none belongs");
}

TEST(ReadTracksRefuses, AnEmptyFile) {
  EXPECT_EQ(refusal(""), " the file is empty");
  EXPECT_EQ(refusal("\xEF\xBB\xBF\r\n \r\n"), " the file is empty");
}

TEST(ReadTracksRefuses, AHeaderAlone) {
  EXPECT_EQ(refusal(kHeader), " there is a header but no track below it");
}

TEST(ReadTracksRefuses, TracksOfWhichNoneIsPresent) {
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,0\nb,0,1,2,0.0\n"), " no track has a weight above 0");
  EXPECT_EQ(refusal(kHeader + "a,0,1,2,0.5\nb,0,1,2,0\n"), "accepted");
}

TEST(ReadTracksRefuses, AMissingFileAndAFolder) {
  const TemporaryFolder folder;
  EXPECT_THROW(readTracks(folder / "none.csv"), InputError);
  try {
    readTracks(folder.path().string());
    FAIL();
  } catch (const InputError& error) {
    EXPECT_EQ(error.what(), folder.path().string() + ": this is a folder: name a file in it");
  }
}

TEST(ReadTracksRefuses, AndCutsALongValueBetweenCharacters) {
  std::string umlauts;
  for (int i = 0; i < 50; ++i) umlauts += "\u00fc";
  EXPECT_EQ(refusal(kHeader + "a,0," + umlauts + ",2,1\n"),
            "2: x must be a number, not \"" + umlauts.substr(0, 60) + "...\"");
  EXPECT_EQ(refusal(kHeader + "a,0,x" + umlauts + ",2,1\n"),
            "2: x must be a number, not \"x" + umlauts.substr(0, 58) + "...\"");
}

TEST(ReadTracksRefuses, AndShowsAwkwardValuesOnOneShortLine) {
  const std::string text = refusal(kHeader + "a,0,\"1\n2\t" + std::string(1000, 'x') + "\",2,1\n");
  EXPECT_EQ(text, "2: x must be a number, not \"1?2?" + std::string(56, 'x') + "...\"");
}
