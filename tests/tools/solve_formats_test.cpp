// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/format_files.h"
#include "tests/tools/program.h"

using other::Clip;
using other::Place;
using other::Places;

namespace {

struct Shot {
  const char* file;
  Clip clip;
};

// Sizes that hold all positions.
constexpr Shot kScreen = {"screen4.csv", {1920, 1080, 0}};
constexpr Shot kWall = {"facade.csv", {640, 360, 1}};

// Solvers stop when steps are this small, and not in the same place where y grows the other way.
constexpr double kMost = 1e-10;

// In the file y grows downwards.
Places placesOf(const Shot& shot) {
  std::istringstream lines(readFile(std::string(CORNERPIN_DATA "/") + shot.file));
  std::string line;
  Places places;
  for (std::getline(lines, line); std::getline(lines, line);) {
    const std::vector<std::string> words = other::split(line, ",");
    places[{words.at(0), std::stoi(words.at(1))}] = {std::stod(words.at(2)),
                                                     shot.clip.height - std::stod(words.at(3))};
  }
  return places;
}

// A frame's status, and where its transform puts the picture's corners.
struct Solved {
  std::string status;
  std::vector<Place> corners;
};

// The format with the same y axis and pixel centre that counts in pixels.
std::string pixelsOf(const std::string& format) {
  if (format == "uv") return "points";
  return format == "paths" ? "rz2" : format;
}

// To the numbers of a file in pixels, and back: formats that flip or move nothing but that.
Place fromNumbers(const std::string& format, const Clip& clip, Place p) {
  if (format == "blocks") return {p.x + 0.5, p.y + 0.5};
  return other::numbersIn(format, clip, p);
}

Place carried(const nlohmann::json& h, Place p) {
  const auto row = [&](std::size_t i) {
    const auto& r = h.at(i);
    return r.at(0).get<double>() * p.x + r.at(1).get<double>() * p.y + r.at(2).get<double>();
  };
  return {row(0) / row(2), row(1) / row(2)};
}

std::map<int, Solved> framesOf(const nlohmann::json& result, const std::string& format,
                               const Clip& clip) {
  const double w = clip.width;
  const double h = clip.height;
  std::map<int, Solved> frames;
  for (const auto& frame : result.at("frames")) {
    Solved& solved = frames[frame.at("frame")];
    solved.status = frame.at("status");
    if (!frame.contains("h")) continue;
    for (const Place p : {Place{0, 0}, Place{w, 0}, Place{w, h}, Place{0, h}}) {
      const Place to = carried(frame.at("h"), other::numbersIn(format, clip, p));
      solved.corners.push_back(fromNumbers(format, clip, to));
    }
  }
  return frames;
}

nlohmann::json solved(const Shot& shot, const std::string& format) {
  const TemporaryFolder folder;
  const Places numbers = other::numbersIn(format, shot.clip, placesOf(shot));
  writeFile(folder / "in", other::fileOf(format, shot.clip, numbers));
  const std::string size = fmt::format("{}x{}", shot.clip.width, shot.clip.height);
  std::vector<std::string> arguments = {"solve",
                                        folder / "in",
                                        "-o",
                                        folder / "r.json",
                                        "-q",
                                        "--size",
                                        size,
                                        "--first-frame",
                                        std::to_string(shot.clip.first)};
  if (format == "csv") arguments.insert(arguments.end(), {"--y-up", "--pixel-center", "0.5"});
  const Outcome run = cornerpin(arguments);
  EXPECT_TRUE(run.code == 0 || run.code == 4) << run.err;
  return nlohmann::json::parse(readFile(folder / "r.json"));
}

void expectSame(const std::map<int, Solved>& expected, const std::map<int, Solved>& found) {
  ASSERT_EQ(found.size(), expected.size());
  for (auto at = expected.begin(), is = found.begin(); at != expected.end(); ++at, ++is) {
    ASSERT_EQ(is->first, at->first);
    EXPECT_EQ(is->second.status, at->second.status) << at->first;
    ASSERT_EQ(is->second.corners.size(), at->second.corners.size()) << at->first;
    for (std::size_t i = 0; i < at->second.corners.size(); ++i) {
      EXPECT_NEAR(is->second.corners[i].x, at->second.corners[i].x, kMost) << at->first;
      EXPECT_NEAR(is->second.corners[i].y, at->second.corners[i].y, kMost) << at->first;
    }
  }
}

void expectSameFromAllFormats(const Shot& shot) {
  const nlohmann::json first = solved(shot, "csv");
  const std::map<int, Solved> expected = framesOf(first, "csv", shot.clip);
  const bool anyMoves = std::any_of(expected.begin(), expected.end(), [](const auto& frame) {
    return !frame.second.corners.empty() && std::fabs(frame.second.corners[0].x) > 1.0;
  });
  EXPECT_TRUE(anyMoves);
  for (const std::string& format : other::kRead) {
    SCOPED_TRACE(format);
    const nlohmann::json result = solved(shot, format);
    EXPECT_EQ(result.at("base_frame"), first.at("base_frame"));
    expectSame(expected, framesOf(result, pixelsOf(format), shot.clip));
  }
}

}  // namespace

TEST(SolveFormats, GiveTheSameTransformsOfFourCorners) { expectSameFromAllFormats(kScreen); }

TEST(SolveFormats, GiveTheSameTransformsOfManyTracks) { expectSameFromAllFormats(kWall); }
