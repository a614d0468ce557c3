// SPDX-License-Identifier: BSD-3-Clause
#include "shot/advice/closing_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "shot/advice/doubtful_stretch.h"

namespace cornerpin {

namespace {

constexpr std::size_t kMostListed = 5;  // stretches in the first line
constexpr const char* kNextLine = ";\n              ";

std::string marked(const char* word, const char* code, bool colour) {
  return colour ? fmt::format("\033[{}m{}\033[0m", code, word) : word;
}

// The doubts of the frame, and how far it may be off.
std::string reasonsOf(const FrameResult& frame, const char* next) {
  std::string text;
  for (const Doubt& doubt : frame.doubts) text += (text.empty() ? "" : next) + doubt.text;
  const bool told =
      frame.doubts.front().code == DoubtCode::ExpectedError || !std::isfinite(frame.expectedError);
  return text + (told ? fmt::format(" (frame {})", frame.frame)
                      : fmt::format(" (frame {}: may be {} off)", frame.frame,
                                    pixels(frame.expectedError)));
}

// Why the stretch is doubtful and what was found to help.
std::string wordsOn(const ShotResult& result, const DoubtfulStretch& stretch, const char* next) {
  std::string text = reasonsOf(result.frames[stretch.worst], next);
  for (const Advice& advice : result.advice) {
    if (advice.frames.first == stretch.frames.first) text += next + advice.text;
  }
  return text;
}

std::string stretchLines(const ShotResult& result, const DoubtfulStretch& stretch) {
  return fmt::format("  {:<10}  {}\n", textOf(stretch.frames), wordsOn(result, stretch, kNextLine));
}

std::string allGood(const ShotResult& result) {
  const std::size_t frames = result.frames.size();
  if (frames == 1) return "the only frame.";
  double largest = 0.0;
  for (const FrameResult& frame : result.frames)
    largest = std::max(largest, comparableError(frame));
  std::string text = frames == 2 ? "both frames." : fmt::format("all {} frames.", frames);
  if (!std::isfinite(largest)) return text;
  return text + fmt::format(" No corner is expected to be more than {} off.", pixels(largest));
}

bool isAdvised(const ShotResult& result, const DoubtfulStretch& stretch) {
  return std::any_of(result.advice.begin(), result.advice.end(), [&](const Advice& advice) {
    return advice.frames.first == stretch.frames.first;
  });
}

// The reference frame's transform is given: that it is good says nothing.
std::string someGood(const ShotResult& result, std::size_t doubtful) {
  const std::size_t frames = result.frames.size();
  const bool isGiven = std::any_of(
      result.frames.begin(), result.frames.end(),
      [&](const FrameResult& f) { return f.doubts.empty() && f.frame == result.referenceFrame; });
  if (doubtful + 1 == frames && isGiven) {
    return fmt::format("only frame {}, which the others start from.", result.referenceFrame);
  }
  return fmt::format("{} of {}.", frames - doubtful, counted(frames, "frame"));
}

std::string sentence(const ShotResult& result, bool colour) {
  const std::vector<int> doubtful = doubtfulFrames(result);
  const std::string good = marked("Good", "32", colour);
  if (doubtful.empty()) return fmt::format("{}: {}", good, allGood(result));
  return fmt::format("{}: {} {}: {}.", good, someGood(result, doubtful.size()),
                     marked("Doubtful", "33", colour), textOf(stretchesOf(doubtful), kMostListed));
}

}  // namespace

std::string closingWords(const ShotResult& result, bool colour) {
  std::string text = sentence(result, colour) + "\n";
  for (const DoubtfulStretch& stretch : worstStretches(result)) {
    text += stretchLines(result, stretch);
  }
  return text;
}

std::string closingSentence(const ShotResult& result) { return sentence(result, false); }

std::vector<StretchWords> closingStretches(const ShotResult& result) {
  std::vector<StretchWords> words;
  for (const DoubtfulStretch& stretch : worstStretches(result)) {
    words.push_back({stretch.frames, wordsOn(result, stretch, "; ")});
  }
  return words;
}

std::string advisedStretches(const ShotResult& result) {
  std::string text;
  for (const DoubtfulStretch& stretch : worstStretches(result)) {
    if (isAdvised(result, stretch)) text += stretchLines(result, stretch);
  }
  return text;
}

}  // namespace cornerpin
