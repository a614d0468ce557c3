// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOT_FIGURES_H
#define SHOW_SHOT_FIGURES_H

#include <cornerpin/shot.h>

#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "show/lined_json.h"

namespace cornerpin {

/// A solved shot at a glance.
struct ShotFigures {
  int first = 0;  ///< frames
  int last = 0;
  std::size_t frames = 0;
  std::size_t doubtful = 0;
  std::size_t reduced = 0;
  std::size_t held = 0;
  /// The largest expected error of the frames that have one, and the frame; NaN without any.
  double worst = std::numeric_limits<double>::quiet_NaN();
  std::optional<int> worstFrame;
  double rms =
      std::numeric_limits<double>::quiet_NaN();  ///< of the good tracks in the median solved frame
  /// Expected errors over the frames, each the largest of as many frames as come to at most
  /// `kMostValues`; NaN where one is not known.
  std::vector<double> line;
  std::string text;  ///< `Result::closingSentence`
};
constexpr std::size_t kMostValues = 60;

/// All numbers with three digits.
ShotFigures figuresOf(const std::vector<shot::Frame>& frames);
ShotFigures figuresOf(const shot::Result& result);

nlohmann::ordered_json figuresJson(const ShotFigures& figures);
ShotFigures figuresIn(const LinedJson& json);

}  // namespace cornerpin

#endif
