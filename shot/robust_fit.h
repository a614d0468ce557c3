// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_FIT_H
#define SHOT_ROBUST_FIT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "shot/conditioning.h"
#include "shot/homography_fit.h"
#include "shot/match.h"

namespace cornerpin {

/// Where the transform of a frame was found.
enum class Stage {
  Library,    ///< the library's own fit
  Neighbour,  ///< the neighbour's transform
  Sampled,    ///< an exact fit of four tracks
};

/// "library", "neighbour", "sampled".
const char* nameOf(Stage stage);

struct Start {
  Stage stage = Stage::Library;
  Homography h{};
};

struct RobustOptions {
  Loss loss = Loss::Tukey;
  std::uint64_t seed = 1;
  double expected = 0.0;  ///< the scale of a neighbouring frame; 0 where none is known
};

struct RobustFit {
  bool found = false;
  Homography h{};
  Stage stage = Stage::Library;  ///< of the start that led here
  double scale = 0.0;            ///< standard deviation of one coordinate of a good match
  std::vector<bool> inlier;      ///< per match: within `kInlierScales` scales of its place
  std::size_t inliers = 0;
  Loss loss = Loss::None;  ///< that the fit ended with
  double width = 0.0;      ///< where that loss bends
  bool searched = false;   ///< the scale was searched for
  std::string why;         ///< why this start, for people
};

/// A good match with normal errors lies within this many scales in 998 cases of 1,000.
constexpr double kInlierScales = 3.5;
/// Fewer matches do not tell a bad one: they are fitted by plain squares.
constexpr std::size_t kFewestForRobust = 6;
/// What `fitRobustly` multiplies the squared weight of a match by in the last step of its fit: 1
/// near 0. Residual and scale in the same units.
double lossWeight(Loss loss, double residual, double width);

/// The transform that most of the matches agree on. Matches are conditioned; `confidence` has one
/// number per match, larger is better, and says in which order samples are drawn.
///
/// The best start under `judge` is refined: scale, then `fitHomography` with the loss at that
/// scale, until the scale stays. When that leaves more than a quarter of the matches out, or a
/// scale above 1 % of the shot's half width, transforms exact for four matches are drawn too
/// (`MComputeQuadToQuadProjectionMatrix`), and the best under `judge` after refinement counts. The
/// generator is std::mt19937_64 with the seed, afresh in each call.
RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts,
                      const std::vector<double>& confidence, const RobustOptions& options);

}  // namespace cornerpin

#endif
