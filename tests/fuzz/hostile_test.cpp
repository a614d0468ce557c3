// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "shot/files/input_error.h"
#include "shot/files/result_transforms.h"
#include "tests/fuzz/round_trip.h"
#include "tests/shot/files/gzipped.h"
#include "tests/shot/files/line_files.h"
#include "tests/shot/files/tracks_in.h"
#include "tests/support/allocations.h"

using namespace cornerpin;

namespace {

constexpr std::size_t kMegabyte = std::size_t{1024} * 1024;
constexpr std::size_t kMost = 64 * kMegabyte;

// A small file around a number of positions, and what can be wrong with it.
struct Shape {
  const char* word;
  std::string begin;
  std::string row;  // in frame 1, at (X, 2)
  std::string end;
  std::vector<std::string> counts;  // files with a count of 10^9

  Format format() const {
    for (const FuzzedReader& reader : fuzzedReaders()) {
      if (std::string(reader.word) == word) return reader.format;
    }
    throw std::logic_error(word);
  }
  std::string with(const std::string& x) const {
    std::string text = row;
    text.replace(text.find('X'), 1, x);
    return begin + text + end;
  }
};

std::string keyframesBegin() {
  return "Adobe After Effects 6.0 Keyframe Data\n\n\tUnits Per Second\t24\n\tSource Width\t1920\n"
         "\tSource Height\t1080\n\nMotion Trackers\tTracker #1\ta\tFeature Center\n"
         "\tFrame\tX pixels\tY pixels\n";
}

std::string trackerBegin(const std::string& columns = "3", const std::string& rows = "1") {
  return "Tracker4 {\n tracks { { 1 " + columns + " " + rows +
         " }\n{ { 3 1 75 name name 1 }\n{ 2 1 58 track_x track_x 1 }\n"
         "{ 2 1 58 track_y track_y 1 } }\n{\n";
}

const std::string kTrackerRow = " { a {curve x1 X} {curve x1 2} }\n";
const std::string kTrackerEnd = "} }\n name Tracker1\n}\n";

std::vector<Shape> shapes() {
  const std::string billion = "1000000000";
  return {
      {"csv", "track,frame,x,y\n", "a,1,X,2\n", "", {"track,frame,x,y\na," + billion + "0,1,2\n"}},
      {"json",
       "{\"cornerpin_tracks\": 1, \"tracks\": [{\"name\": \"a\", \"positions\": [",
       "[1, X, 2]",
       "]}]}",
       {"{\"cornerpin_tracks\": " + billion + ", \"tracks\": []}"}},
      {"points",
       "1\na\n0\n1\n",
       "1 X 2\n",
       "",
       {"1\na\n0\n" + billion + "\n1 2 3\n", "1\na\n0\n" + billion + "0\n1 2 3\n"}},
      {"nk", trackerBegin(), kTrackerRow, kTrackerEnd, {}},
      {"blocks", "\"a\"\n2\n1\n", "1 X 2 0\n", "", {"\"a\"\n1\n" + billion + "\n1 1 2 0\n"}},
      {"keyframes", keyframesBegin(), "\t1\tX\t2\n", "\nEnd of Keyframe Data\n", {}},
      {"paths", "", "a 1 X 2 7\n", "", {"a 1 0 0 " + billion + "0\n"}},
      {"rz2", "pointTrack \"a\"\n{\n", " 1 X 2 p+( 1 )\n", "}\n", {}},
      {"uv", "1\na\n1\n", "1 X 2 1\n", "", {"1\na\n" + billion + "\n1 0.5 0.5 1\n"}},
      {"uv_json",
       "{\"version\": 1, \"points\": [{\"name\": \"a\", \"per_frame\": [{\"frame\": 1, \"pos\": [",
       "X, 2",
       "]}]}]}",
       {"{\"points\": [{\"name\": \"a\", \"per_frame\": [{\"frame\": " + billion +
        "0, \"pos\": [1, 2]}]}]}"}},
  };
}

enum class Ends { Read, Refused };

// Reads a file, in memory that is bounded whatever is in it. Refused where nothing comes of it.
template <class Read>
Ends endOf(const std::string& bytes, const Read& read, std::size_t most) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.txt";
  writeFile(path, bytes);
  Ends end = Ends::Read;
  const std::size_t peak = allocations::peakBytesOf([&] {
    try {
      read(path);
    } catch (const InputError& error) {
      end = Ends::Refused;
      EXPECT_LT(std::string(error.what()).size(), 10000u);
    }
  });
  EXPECT_LE(peak, most) << bytes.substr(0, 100);
  return end;
}

Ends endOf(const std::string& bytes, Format format, std::size_t most = kMost) {
  const auto read = [&](const std::string& path) {
    ReadTrace trace;
    trace.format = format;
    readTracks(path, {}, {}, &trace);
  };
  return endOf(bytes, read, most);
}

// Of a result in CSV, beside as much as the file has.
Ends endOfResult(const std::string& bytes) {
  return endOf(
      bytes, [](const std::string& path) { readResultCsv(path); }, kMost + bytes.size());
}

const std::string kResultHeader =
    "frame,quad,h00,h01,h02,h10,h11,h12,h20,h21,h22,status,qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3\n";
const std::string kShownBase = "0,q,1,0,0,0,1,0,0,0,1,base,1,2,3,2,3,4.5,1,4.5\n";

// Tracks t0, t1 ... whose x is their number.
std::string manyTracks(const std::string& word, std::size_t count) {
  const bool isCounted = word == "points" || word == "uv";
  std::string text = isCounted ? std::to_string(count) + "\n" : "";
  if (word == "csv") text = "track,frame,x,y\n";
  if (word == "json") text = "{\"cornerpin_tracks\": 1, \"tracks\": [";
  if (word == "uv_json") text = "{\"points\": [";
  if (word == "nk") text = trackerBegin("3", std::to_string(count));
  if (word == "keyframes") text = "Adobe After Effects 6.0 Keyframe Data\n";
  const std::map<std::string, std::string> tracks = {
      {"csv", "tN,1,N,2\n"},
      {"json", "{\"name\":\"tN\",\"positions\":[[1,N,2]]}"},
      {"points", "tN\n0\n1\n1 N 2\n"},
      {"nk", "{ tN {curve x1 N} {curve x1 2} }\n"},
      {"blocks", "\"tN\"\n1\n1\n1 N 2 0\n"},
      {"keyframes", "Motion Trackers\tT\ttN\tFeature Center\n\tFrame\tX\tY\n\t1\tN\t2\n\n"},
      {"paths", "tN 1 N 2 7\n"},
      {"rz2", "pointTrack \"tN\"\n{\n1 N 2\n}\n"},
      {"uv", "tN\n1\n1 N 2 1\n"},
      {"uv_json", "{\"name\":\"tN\",\"per_frame\":[{\"frame\":1,\"pos\":[N,2]}]}"}};
  const std::string& track = tracks.at(word);
  const bool isJson = word == "json" || word == "uv_json";
  for (std::size_t i = 0; i < count; ++i) {
    if (isJson && i > 0) text += ",\n";
    for (const char c : track) c == 'N' ? text += std::to_string(i) : text += c;
  }
  if (word == "nk") text += kTrackerEnd;
  if (word == "keyframes") text += "End of Keyframe Data\n";
  return text + (isJson ? "]}" : "");
}

class HostileFile : public ::testing::TestWithParam<Shape> {
 protected:
  const Shape& shape() const { return GetParam(); }
  Ends end(const std::string& bytes) const { return endOf(bytes, shape().format()); }
};

std::string repeated(const std::string& part, std::size_t count) {
  std::string text;
  text.reserve(part.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += part;
  return text;
}

}  // namespace

TEST_P(HostileFile, IsReadWhereNothingIsWrongWithIt) {
  EXPECT_EQ(end(shape().with("0.5")), Ends::Read);
}

TEST_P(HostileFile, WithACountOfAThousandMillionTakesNoMemoryForIt) {
  for (const std::string& text : shape().counts) EXPECT_EQ(end(text), Ends::Refused) << text;
  for (const char* count : {"1000000000", "9999999999999999999"}) {
    endOf(std::string(count) + "\n" + shape().with("0.5"), shape().format());
  }
}

TEST_P(HostileFile, WithWhatIsNoPositionIsRefused) {
  const bool isJson = shape().format() == Format::Json;
  for (const char* x : {"inf", "-inf", "Infinity", "1e39", "nan", "1e400", "null"}) {
    if (isJson && std::string(x) == "1e39") continue;
    EXPECT_EQ(end(shape().with(x)), Ends::Refused) << x;
  }
}

// A long line in the place of a number, of a name, of blanks, and behind the end.
TEST_P(HostileFile, WithALineOfSeventeenMegabytesIsRefused) {
  for (const char c : {'1', 'x', '{', '"', ' '}) {
    SCOPED_TRACE(c);
    const std::string line(17 * kMegabyte, c);
    const bool isBlankJson = c == ' ' && shape().format() == Format::Json;
    if (!isBlankJson) {
      EXPECT_EQ(end(shape().with(line)), Ends::Refused);
    }
    end(line);
    end(shape().begin + line);
  }
}

TEST_P(HostileFile, OfDeepBracesIsRefused) {
  for (const char* brace :
       {"{", "[", "(", "{\n", "{\"a\":", "{ {} ", "{{curve ", "[0,", "\"{\" "}) {
    const std::string deep = repeated(brace, 2'000'000);
    EXPECT_EQ(end(shape().begin + deep), Ends::Refused) << brace;
    EXPECT_EQ(end(deep), Ends::Refused) << brace;
    end(shape().with("1") + deep);
  }
}

// A gigabyte that is packed, of several members.
TEST_P(HostileFile, ThatIsAGzipBombIsRefused) {
  constexpr std::size_t kMembers = 256;
  constexpr std::size_t kMember = 4 * kMegabyte;
  for (const char c : {'\0', '\n', '1', ' '}) {
    EXPECT_EQ(end(repeated(gzippedOf(kMember, c), kMembers)), Ends::Refused) << c;
  }
  const std::string row = replaced(shape().row, "X", "0.5");
  const std::string rows = gzipped(repeated(row, kMember / row.size()));
  // A count of keys that there are as many of.
  const std::string begin = replaced(shape().begin, "\n1\n", "\n1000000000\n");
  EXPECT_EQ(end(gzipped(begin) + repeated(rows, kMembers)), Ends::Refused);
}

TEST_P(HostileFile, OfAMillionTracksInOneFrameIsRead) {
  const std::size_t count = 1'000'000;
  const std::string text = manyTracks(shape().word, count);
  const TemporaryFolder folder;
  writeFile(folder / "in.txt", text);
  ReadTrace trace;
  trace.format = shape().format();
  const Tracks tracks = readTracks(folder / "in.txt", {}, {}, &trace);
  ASSERT_EQ(tracks.names.size(), count);
  ASSERT_EQ(tracks.observations.size(), count);
  for (const Observation& row : tracks.observations) {
    const std::string& name = tracks.names[static_cast<std::size_t>(row.track)];
    ASSERT_EQ(row.x, std::stod(name.substr(1)));
  }
}

// Each frame moves the surface, so that rows could not be kept as one.
TEST(HostileResult, OfManyFramesTakesLittleMoreThanTheFile) {
  std::string frames = kResultHeader + kShownBase;
  std::string between = frames;
  for (int i = 1; i < 300'000; ++i) {
    const std::string number = std::to_string(i);
    const std::string h = i % 2 == 0 ? "1,0,0,0,1,0,0,0,1" : "2,0,0,0,1,0,0,0,1";
    frames += number + ",q," + h + ",held,,,,,,,,\n";
    between += "0." + std::to_string(1'000'000 + i) + ",q," + h + ",between,,,,,,,,\n";
  }
  EXPECT_EQ(endOfResult(frames), Ends::Read);
  EXPECT_EQ(endOfResult(between), Ends::Read);
}

TEST(HostileResult, OfManyQuadsIsRefused) {
  std::string text = kResultHeader;
  for (std::size_t i = 0; i <= 2 * kMostQuads; ++i) {
    text += "0," + std::to_string(i) + kShownBase.substr(3);
  }
  EXPECT_EQ(endOfResult(text), Ends::Refused);
}

TEST(HostileResult, OfManyFieldsOrALongLineIsRefused) {
  for (const char c : {'1', 'x', '{', '"', ' ', ','}) {
    const std::string line(17 * kMegabyte, c);
    EXPECT_EQ(endOfResult(line), Ends::Refused) << c;
    EXPECT_EQ(endOfResult(kResultHeader + line), Ends::Refused) << c;
    EXPECT_EQ(endOfResult(kResultHeader + kShownBase + "1,q," + line), Ends::Refused) << c;
  }
  const std::string commas(4'000'000, ',');
  EXPECT_EQ(endOfResult("frame" + commas + "\n"), Ends::Refused);
}

TEST(HostileResult, ThatIsAGzipBombIsRefused) {
  for (const char c : {'\0', '\n', '1', ','}) {
    EXPECT_EQ(endOfResult(repeated(gzippedOf(4 * kMegabyte, c), 256)), Ends::Refused) << c;
  }
  const std::string rows = gzipped(repeated("1,q,1,0,0,0,1,0,0,0,1,held,,,,,,,,\n", 100'000));
  EXPECT_EQ(endOfResult(gzipped(kResultHeader + kShownBase) + repeated(rows, 256)), Ends::Refused);
}

TEST(HostileResult, OfNumbersThatAreNoneIsRefused) {
  for (const char* x : {"inf", "-inf", "nan", "1e400", "", "null"}) {
    const std::string row = std::string("0,q,1,0,") + x + ",0,1,0,0,0,1,base,1,2,3,2,3,4.5,1,4.5\n";
    EXPECT_EQ(endOfResult(kResultHeader + row), Ends::Refused) << x;
  }
  const std::string far = "1000000001" + kShownBase.substr(1);
  EXPECT_EQ(endOfResult(kResultHeader + far), Ends::Refused);
}

// A line of separators alone, which is within the bytes that a line may have.
TEST_P(HostileFile, WithALineOfSeparatorsTakesLittleMemory) {
  for (const char c : {',', ';', '\t', ' '}) {
    end(shape().begin + std::string(4 * kMegabyte, c));
    end(shape().begin + "\"" + std::string(4 * kMegabyte, c));
  }
}

INSTANTIATE_TEST_SUITE_P(Readers, HostileFile, ::testing::ValuesIn(shapes()),
                         [](const auto& info) { return std::string(info.param.word); });
