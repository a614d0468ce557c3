// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_COMPARE_RESULT_DIFFERENCE_H
#define SHOT_COMPARE_RESULT_DIFFERENCE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "shot/solve/option_words.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// How two results differ in a frame that both have.
struct FrameDifference {
  int frame = 0;
  /// How far apart the two put the corner of any quad that differs most; infinite where one of them
  /// puts it on or behind the horizon and the other does not.
  double distance = 0.0;
  std::size_t quad = 0;  ///< of that corner, in the first result's quads
  std::size_t corner = 0;
  bool transform = false;  ///< whether any bit of the transforms differs
  bool status = false;     ///< not that of the base frame against a solved one
  bool verdict = false;    ///< one is good and the other doubtful
};

/// What is in one of two results only.
template <class Item>
struct OnlyIn {
  std::vector<Item> first;
  std::vector<Item> second;
  bool empty() const { return first.empty() && second.empty(); }
};

struct ResultDifference {
  std::vector<FrameDifference> frames;  ///< those that both have, in order; none if not compared
  OnlyIn<int> otherFrames;
  OnlyIn<std::string> otherTracks;  ///< by name; tracks that take part nowhere count as there
  OnlyIn<OptionWords> otherOptions;
  bool program = false;  ///< made by different ones
  bool input = false;    ///< made of different bytes, or nothing tells
  std::optional<ProgramVersion> firstProgram;
  std::optional<ProgramVersion> secondProgram;
  std::optional<InputFile> firstInput;
  std::optional<InputFile> secondInput;
  bool quads = false;  ///< the quads have other names or other corners
  int firstBase = 0;
  int secondBase = 0;
  int firstReference = 0;
  int secondReference = 0;
  /// The reference frame that both were compared in; none where there is no way: `why` says it.
  std::optional<int> comparedIn;
  std::string why;

  /// Of the frames, the one with the largest distance; null without any.
  const FrameDifference* worst() const;
  /// The frames whose corners are further apart than that.
  std::vector<int> framesBeyond(double distance) const;
  /// Whether anything at all differs.
  bool any() const;
};

/// Compares where two results put the corners of the first one's quads. Where they have different
/// reference frames, the second is made relative to the first one's, or else the first to the
/// second's (`rebase`); distances below `kRounding` are none then.
ResultDifference differenceOf(ShotResult first, ShotResult second);

/// What a change of the reference frame leaves of equal places, in pixels.
constexpr double kRounding = 1e-6;

}  // namespace cornerpin

#endif
