// SPDX-License-Identifier: BSD-3-Clause
#include "show/farm.h"

#include <fmt/format.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "farm_program.h"
#include "show/children.h"
#include "show/digest.h"

namespace cornerpin {

namespace {

constexpr const char* kWork = "farm";  // a folder of work
constexpr int kNotFound = 127;         // how env ends

std::string linesOf(const std::vector<Piece>& pieces) {
  std::string lines;
  for (const Piece& piece : pieces) {
    lines += fmt::format("{} {} {}\n", piece.key, piece.shots, piece.command);
  }
  return lines;
}

std::string textIn(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  std::string all = text.str();
  while (!all.empty() && all.back() == '\n') all.pop_back();
  return all;
}

// Waits for the only child, and reports the number that it keeps in a file.
ChildEnd waitAndReport(Children& children, const std::string& path, std::size_t total,
                       const shot::Progress& progress) {
  constexpr std::chrono::milliseconds kPause(200);
  for (;;) {
    std::size_t done = 0;
    if (std::ifstream(path) >> done) tellShots(progress, done, total);
    if (const std::optional<ChildEnd> end = children.waitFor(kPause)) return *end;
  }
}

}  // namespace

std::vector<Piece> piecesOf(const std::vector<OpenShot>& shots, std::size_t chunk,
                            const std::string& start) {
  std::vector<Piece> pieces;
  for (std::size_t i = 0; i < shots.size();) {
    const std::size_t first = shots[i].index;
    Piece piece;
    std::string keys;
    for (; i < shots.size() && piece.shots < chunk && shots[i].index == first + piece.shots; ++i) {
      keys += shots[i].key;
      ++piece.shots;
    }
    piece.command = fmt::format("{} --only={}-{}", start, first, first + piece.shots - 1);
    keys += piece.command;
    std::istringstream bytes(keys);
    piece.key = sha256Of(bytes);
    pieces.push_back(piece);
  }
  return pieces;
}

std::string runOnFarm(const std::string& scheduler, const std::vector<Piece>& pieces,
                      OutputFolder& folder, const shot::Progress& progress) {
  std::size_t total = 0;
  for (const Piece& piece : pieces) total += piece.shots;
  const std::string work = folder.beginWork(kWork);
  const std::string list = work + "/pieces";
  const std::string done = work + "/done";
  const std::string errors = work + "/errors";
  std::ofstream(list, std::ios::binary) << linesOf(pieces);
  Children children;
  children.start(
      0,
      {"/usr/bin/env", {"env", "python3", "-c", kFarmProgram, scheduler, list, done}, ".", errors});
  const ChildEnd end = waitAndReport(children, done, total, progress);
  std::string said = textIn(errors);
  folder.endWork(kWork);
  if (end.signal != 0) {
    throw std::runtime_error(scheduler + ": python3, which asks the scheduler, was ended by " +
                             signalText(end.signal));
  }
  if (end.code == kNotFound) throw std::runtime_error("--scheduler needs python3: " + said);
  if (end.code != 0) {
    throw std::runtime_error(
        said.empty() ? fmt::format("{}: python3 ended in {}", scheduler, end.code) : said);
  }
  return said;
}

}  // namespace cornerpin
