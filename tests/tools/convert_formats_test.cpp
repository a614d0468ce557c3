// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/format_files.h"
#include "tests/tools/program.h"

using other::Clip;
using other::Place;
using other::Places;

namespace {

constexpr Clip kClip = {1920, 1080, 1001};
// Rounding of numbers that are no multiples of a half, in pixels of the picture: the last bits of
// 1920, which is 2^-42.
constexpr double kRounding = 4 * 0x1p-42;

// The corners and the middle of the picture, its first pixel's and its last one's, in three frames;
// one of them is not there in the second.
Places fivePoints() {
  const double w = kClip.width;
  const double h = kClip.height;
  const std::vector<std::pair<std::string, Place>> points = {{"origin", {0.0, 0.0}},
                                                             {"far", {w, h}},
                                                             {"pixel", {0.5, 0.5}},
                                                             {"middle", {w / 2, h / 2}},
                                                             {"last", {w - 0.5, 0.5}}};
  Places places;
  for (int i = 0; i < 3; ++i) {
    for (const auto& [name, p] : points) {
      if (name == "middle" && i == 1) continue;
      places[{name, kClip.first + i}] = {p.x + 0.25 * i, p.y - 1.5 * i};
    }
  }
  return places;
}

bool isScaled(const std::string& format) { return format == "uv" || format == "paths"; }

bool isOpen(const std::string& format) { return format == "csv" || format == "json"; }

// The options that tell what the files do not, and what is to be written where it may be anything.
std::vector<std::string> tellingOptions(const std::string& from, const std::string& to) {
  std::vector<std::string> options = {"--size", "1920x1080", "--first-frame", "1001", "-q"};
  if (isOpen(from) || isOpen(to)) options.emplace_back("--y-up");
  const bool isAsked = isOpen(from) || (isOpen(to) && from != "paths");
  if (isAsked) options.insert(options.end(), {"--pixel-center", "0.5"});
  return options;
}

// The same numbers in the same frames, off by no more than `most`.
void expectNumbers(const Places& expected, const Places& found, double most) {
  ASSERT_EQ(found.size(), expected.size());
  for (auto at = expected.begin(), is = found.begin(); at != expected.end(); ++at, ++is) {
    ASSERT_EQ(is->first, at->first);
    const std::string& name = at->first.first;
    EXPECT_LE(std::fabs(is->second.x - at->second.x), most) << name << " in " << at->first.second;
    EXPECT_LE(std::fabs(is->second.y - at->second.y), most) << name << " in " << at->first.second;
  }
}

Outcome convert(const std::string& from, const std::string& to, const std::string& in,
                const std::string& out) {
  std::vector<std::string> arguments = {"convert", in, out, "--to", to};
  const std::vector<std::string> options = tellingOptions(from, to);
  arguments.insert(arguments.end(), options.begin(), options.end());
  return cornerpin(arguments);
}

class ConvertFormats : public testing::TestWithParam<std::string> {};

}  // namespace

// As the table of formats has it, computed by other code; and from there to the numbers of the
// beginning.
TEST_P(ConvertFormats, PutsFivePointsWhereEveryOtherFormatHasThem) {
  const std::string& from = GetParam();
  const TemporaryFolder folder;
  const Places places = fivePoints();
  writeFile(folder / "in", other::fileOf(from, kClip, other::numbersIn(from, kClip, places)));
  for (const std::string& to : other::kWritten) {
    SCOPED_TRACE(to);
    const Outcome run = convert(from, to, folder / "in", folder / "out");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const Places found = other::numbersIn(to, readFile(folder / "out"));
    const double most = isScaled(from) ? kRounding : 0.0;
    expectNumbers(other::numbersIn(to, kClip, places), found, to == "uv" ? most / 1080 : most);

    const Outcome back = convert(to, "csv", folder / "out", folder / "back");
    ASSERT_EQ(back.code, 0) << back.err;
    const bool isRounded = isScaled(from) || isScaled(to);
    expectNumbers(places, other::numbersIn("csv", readFile(folder / "back")),
                  isRounded ? kRounding : 0.0);
  }
}

INSTANTIATE_TEST_SUITE_P(From, ConvertFormats, testing::ValuesIn(other::kRead),
                         [](const auto& format) { return format.param; });

namespace {

// The frames that a file gets whose own are not told to be the clip's.
std::vector<int> framesFrom(const std::string& from, const std::string& to) {
  const TemporaryFolder folder;
  const Places numbers = other::numbersIn(from, kClip, fivePoints());
  writeFile(folder / "in", other::fileOf(from, kClip, numbers));
  std::vector<std::string> arguments = {"convert", folder / "in", folder / "out", "--to",
                                        to,        "--size",      "1920x1080",    "-q"};
  if (isOpen(from)) arguments.insert(arguments.end(), {"--y-up", "--pixel-center", "0.5"});
  const Outcome run = cornerpin(arguments);
  EXPECT_EQ(run.code, 0) << run.err;
  std::vector<int> frames;
  for (const auto& [key, p] : other::numbersIn(to, readFile(folder / "out"))) {
    if (key.first == "far") frames.push_back(key.second);
  }
  return frames;
}

}  // namespace

TEST(ConvertFormats, CountsFramesFromTheClipsFirstWhereBothFilesDo) {
  const std::vector<int> fromOne = {1, 2, 3};
  for (const char* from : {"points", "blocks", "keyframes", "rz2"}) {
    EXPECT_EQ(framesFrom(from, "points"), fromOne) << from;
    EXPECT_EQ(framesFrom(from, "blocks"), fromOne) << from;
  }
}

TEST(ConvertFormats, LeavesFramesThatAreNotToldToBeTheClips) {
  const std::vector<int> real = {1001, 1002, 1003};
  for (const char* from : {"csv", "json", "nk", "paths", "uv"}) {
    for (const std::string& to : other::kWritten) EXPECT_EQ(framesFrom(from, to), real) << from;
  }
  const std::vector<int> fromZero = {0, 1, 2};
  for (const char* to : {"csv", "json", "nk", "uv"})
    EXPECT_EQ(framesFrom("keyframes", to), fromZero) << to;
}
