// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_difference.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>
#include <string_view>

#include "show/endless_file.h"
#include "show/wording.h"

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

// Of a result that was written as a whole.
constexpr const char* kBeginning = "{\"cornerpin\":";
constexpr std::string_view kEnd = "]}\n";
constexpr double kEndless = std::numeric_limits<double>::infinity();

Names shotsIn(const std::string& folder) {
  Names names = recordedShots(folder);
  if (names.empty()) refuseFile(folder, 0, "there is no record of a batch in this folder");
  return names;
}

std::vector<std::string> without(const Names& names, const Names& others) {
  std::vector<std::string> left;
  std::set_difference(names.begin(), names.end(), others.begin(), others.end(),
                      std::back_inserter(left));
  return left;
}

// Empty where there is no file.
std::string bytesOf(const std::string& path) {
  refuseEndless(path);
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

// Of the frames that both have the one whose corners are farthest apart; null without any.
const shot::FrameDifference* worstOf(const std::vector<shot::FrameDifference>& frames) {
  const auto found =
      std::max_element(frames.begin(), frames.end(),
                       [](const auto& a, const auto& b) { return a.distance < b.distance; });
  return found == frames.end() ? nullptr : &*found;
}

// How far apart, where, and what else; that it is in figures and texts where nothing of it differs.
std::string describe(const shot::ResultDifference& difference, const shot::FrameDifference* worst,
                     double most) {
  std::vector<std::string> parts;
  if (!difference.why.empty()) parts.push_back(difference.why);
  if (worst != nullptr && worst->distance > most) {
    const double distance = worst->distance;
    const auto beyond =
        std::count_if(difference.frames.begin(), difference.frames.end(),
                      [most](const shot::FrameDifference& frame) { return frame.distance > most; });
    parts.push_back(fmt::format("{} in frame {}; {} of {}",
                                std::isinf(distance) ? "beyond the horizon" : lengthText(distance),
                                worst->frame, beyond,
                                countText(difference.frames.size(), "frame")));
  }
  const std::size_t others = difference.onlyFirst.size() + difference.onlySecond.size();
  if (others > 0) parts.push_back(countText(others, "frame") + " in one only");
  if (difference.options) parts.emplace_back("other options");
  if (difference.input) parts.emplace_back("other tracks");
  const auto verdicts = std::count_if(
      difference.frames.begin(), difference.frames.end(),
      [](const shot::FrameDifference& frame) { return frame.status || frame.verdict; });
  if (verdicts > 0) {
    parts.push_back(countText(static_cast<std::size_t>(verdicts), "frame") + " judged otherwise");
  }
  return parts.empty() ? "in figures and texts" : fmt::format("{}", fmt::join(parts, "; "));
}

// None where they count as the same.
std::optional<ShotDifference> differenceOfShot(const std::string& name, const std::string& first,
                                               const std::string& second,
                                               std::optional<double> most) {
  const auto in = [](const std::string& folder, const std::string& file) {
    return (fs::path(folder) / file).string();
  };
  const TaskRecord old = readRecord(in(first, recordNameOf(name)));
  const TaskRecord now = readRecord(in(second, recordNameOf(name)));
  const bool oldFailed = old.state == ShotState::Failed;
  const bool nowFailed = now.state == ShotState::Failed;
  if (oldFailed && nowFailed) return std::nullopt;
  if (oldFailed || nowFailed) {
    return ShotDifference{name, fmt::format("{}, now {}", nameOf(old.state), nameOf(now.state)),
                          kEndless};
  }
  const std::string file = name + ".json";
  const std::string bytes = bytesOf(in(first, file));
  const std::string others = bytesOf(in(second, file));
  const bool mayBeResult = bytes.rfind(kBeginning, 0) == 0 &&
                           bytes.compare(bytes.size() - kEnd.size(), kEnd.size(), kEnd) == 0;
  if (mayBeResult && bytes == others) return std::nullopt;
  const shot::ResultDifference difference =
      shot::compare(shot::readResult(in(first, file)), shot::readResult(in(second, file)), most);
  if (!difference.isDifferent || difference.onlyProgram) return std::nullopt;
  const shot::FrameDifference* worst = worstOf(difference.frames);
  double distance = kEndless;
  if (worst != nullptr) distance = worst->distance;
  return ShotDifference{name, describe(difference, worst, most.value_or(0.0)), distance};
}

}  // namespace

ShowDifference differenceOfShows(const std::string& first, const std::string& second,
                                 std::optional<double> most) {
  const Names old = shotsIn(first);
  const Names now = shotsIn(second);
  ShowDifference difference;
  difference.onlyFirst = without(old, now);
  difference.onlySecond = without(now, old);
  for (const std::string& name : old) {
    if (now.count(name) == 0) continue;
    ++difference.both;
    if (const auto shot = differenceOfShot(name, first, second, most)) {
      difference.different.push_back(*shot);
    }
  }
  std::stable_sort(
      difference.different.begin(), difference.different.end(),
      [](const ShotDifference& a, const ShotDifference& b) { return a.distance > b.distance; });
  return difference;
}

std::string textOf(const ShowDifference& difference, const std::string& first,
                   const std::string& second) {
  std::string text;
  const auto add = [&text](const std::string& name, const std::string& what) {
    text += fmt::format("{}  {}\n", shot::printable(name), shot::printable(what));
  };
  for (const ShotDifference& shot : difference.different) add(shot.name, shot.text);
  for (const std::string& name : difference.onlyFirst) add(name, "only in " + first);
  for (const std::string& name : difference.onlySecond) add(name, "only in " + second);
  if (!difference.any()) return "Same: " + countText(difference.both, "shot") + "\n";
  text += fmt::format("Different: {} of {} in both", difference.different.size(),
                      countText(difference.both, "shot"));
  const std::size_t others = difference.onlyFirst.size() + difference.onlySecond.size();
  return text + (others > 0 ? fmt::format(", {} in one only\n", others) : "\n");
}

}  // namespace cornerpin
