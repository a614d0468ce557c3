// SPDX-License-Identifier: BSD-3-Clause
#include "shot/compare/result_difference.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdexcept>

#include "shot/solve/rebase.h"

namespace cornerpin {

namespace {

template <class Item>
std::vector<Item> without(const std::vector<Item>& items, const std::vector<Item>& others) {
  std::vector<Item> left;
  for (const Item& item : items) {
    if (std::find(others.begin(), others.end(), item) == others.end()) left.push_back(item);
  }
  return left;
}

template <class Item>
OnlyIn<Item> onlyIn(const std::vector<Item>& first, const std::vector<Item>& second) {
  return {without(first, second), without(second, first)};
}

std::vector<std::string> namesWithout(const ShotResult& result, const ShotResult& other) {
  std::set<std::string> names;
  for (const TrackResult& track : other.tracks) names.insert(track.name);
  std::vector<std::string> left;
  for (const TrackResult& track : result.tracks) {
    if (names.count(track.name) == 0) left.push_back(track.name);
  }
  return left;
}

int firstOf(const ShotResult& result) { return result.frames.front().frame; }
int lastOf(const ShotResult& result) { return result.frames.back().frame; }

std::vector<int> framesWithout(const ShotResult& result, const ShotResult& other) {
  std::vector<int> left;
  for (const FrameResult& frame : result.frames) {
    if (frame.frame < firstOf(other) || frame.frame > lastOf(other)) left.push_back(frame.frame);
  }
  return left;
}

const FrameResult& frameOf(const ShotResult& result, int frame) {
  return result.frames[static_cast<std::size_t>(frame - firstOf(result))];
}

bool differ(const std::optional<ProgramVersion>& a, const std::optional<ProgramVersion>& b) {
  if (!a || !b) return a.has_value() != b.has_value();
  return a->name != b->name || a->version != b->version || a->commit != b->commit;
}

// Files of one digest are the same under any name; without a digest nothing tells.
bool differ(const std::optional<InputFile>& a, const std::optional<InputFile>& b) {
  if (!a || !b) return a.has_value() != b.has_value();
  return a->sha256 != b->sha256 || a->rows != b->rows;
}

void compareOrigins(const Provenance& first, const Provenance& second,
                    ResultDifference& difference) {
  difference.program = differ(first.program, second.program);
  difference.firstProgram = first.program;
  difference.secondProgram = second.program;
  difference.input = differ(first.input, second.input);
  difference.firstInput = first.input;
  difference.secondInput = second.input;
}

double distanceOf(Point a, Point b) {
  const bool seen = std::isfinite(a.x);
  if (seen != std::isfinite(b.x)) return HUGE_VAL;
  return seen ? std::sqrt(squaredDistance(a, b)) : 0.0;
}

bool differ(const std::vector<NamedQuad>& a, const std::vector<NamedQuad>& b, double allowed) {
  if (a.size() != b.size()) return true;
  for (std::size_t q = 0; q < a.size(); ++q) {
    if (a[q].name != b[q].name) return true;
    for (std::size_t i = 0; i < 4; ++i) {
      if (!(distanceOf(a[q].corners[i], b[q].corners[i]) <= allowed)) return true;
    }
  }
  return false;
}

// Makes a result relative to a frame: empty, or why that cannot be done.
std::string tryRebase(ShotResult& result, int reference) {
  try {
    rebase(result, reference);
    return "";
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

// The base frame is as good as solved: which one it is, the results say once.
Status comparable(const FrameResult& frame) {
  return frame.verdict.status == Status::Base ? Status::Solved : frame.verdict.status;
}

FrameDifference compare(const ShotResult& a, const ShotResult& b, int number, double rounding) {
  const FrameResult& first = frameOf(a, number);
  const FrameResult& second = frameOf(b, number);
  FrameDifference difference;
  difference.frame = number;
  difference.status = comparable(first) != comparable(second);
  difference.verdict = first.doubts.empty() != second.doubts.empty();
  difference.transform = rounding == 0.0 && first.h != second.h;
  for (std::size_t q = 0; q < a.quads.size(); ++q) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point corner = a.quads[q].corners[i];
      const double distance = distanceOf(carried(a, first, corner), carried(b, second, corner));
      if (!(distance > std::max(difference.distance, rounding))) continue;
      difference.distance = distance;
      difference.quad = q;
      difference.corner = i;
    }
  }
  return difference;
}

}  // namespace

const FrameDifference* ResultDifference::worst() const {
  const auto found =
      std::max_element(frames.begin(), frames.end(),
                       [](const auto& a, const auto& b) { return a.distance < b.distance; });
  return found == frames.end() ? nullptr : &*found;
}

std::vector<int> ResultDifference::framesBeyond(double distance) const {
  std::vector<int> beyond;
  for (const FrameDifference& frame : frames) {
    if (frame.distance > distance) beyond.push_back(frame.frame);
  }
  return beyond;
}

bool ResultDifference::any() const {
  const auto differs = [](const FrameDifference& f) {
    return f.distance > 0.0 || f.transform || f.status || f.verdict;
  };
  return program || input || quads || firstBase != secondBase ||
         firstReference != secondReference || !comparedIn || !otherFrames.empty() ||
         !otherTracks.empty() || !otherOptions.empty() ||
         std::any_of(frames.begin(), frames.end(), differs);
}

ResultDifference differenceOf(ShotResult first, ShotResult second) {
  ResultDifference difference;
  difference.firstBase = first.baseFrame;
  difference.secondBase = second.baseFrame;
  difference.firstReference = first.referenceFrame;
  difference.secondReference = second.referenceFrame;
  difference.otherFrames = {framesWithout(first, second), framesWithout(second, first)};
  difference.otherTracks = {namesWithout(first, second), namesWithout(second, first)};
  difference.otherOptions = onlyIn(optionWords(first), optionWords(second));
  compareOrigins(first.provenance, second.provenance, difference);
  const bool same = first.referenceFrame == second.referenceFrame;
  if (!same) {
    difference.why = tryRebase(second, first.referenceFrame);
    if (!difference.why.empty() && tryRebase(first, second.referenceFrame).empty()) {
      difference.why.clear();
    }
  }
  if (!difference.why.empty()) return difference;
  const double rounding = same ? 0.0 : kRounding;
  difference.comparedIn = first.referenceFrame;
  difference.quads = differ(first.quads, second.quads, rounding);
  const int last = std::min(lastOf(first), lastOf(second));
  for (int frame = std::max(firstOf(first), firstOf(second)); frame <= last; ++frame) {
    difference.frames.push_back(compare(first, second, frame, rounding));
  }
  return difference;
}

}  // namespace cornerpin
