// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_ROBUST_FIT_H
#define SHOT_ROBUST_ROBUST_FIT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "shot/fit/homography_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/similarity.h"
#include "shot/robust/mixture_fit.h"

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
  double expected = 0.0;  ///< the usual scale of the frames searched before; 0 where there is none
  Prior prior;            ///< of the core; unused without a search
};

struct RobustFit {
  bool found = false;
  Homography h{};
  Stage stage = Stage::Library;  ///< of the start that led here
  double scale = 0.0;            ///< standard deviation of one coordinate of a good match
  std::vector<bool> inlier;      ///< per match: within `kInlierScales` scales of its place
  std::size_t inliers = 0;
  Loss loss = Loss::None;  ///< that the fit ended with; None for plain squares
  double width = 0.0;      ///< where that loss bends
  bool searched = false;   ///< whether the core was
  std::string why;         ///< why this start, for people
};

/// A good match with normal errors lies within this many scales in 998 cases of 1,000.
constexpr double kInlierScales = 3.5;
/// Fewer matches do not tell a bad one: they are fitted by plain squares.
constexpr std::size_t kFewestForRobust = 6;

/// What the last step of a fit multiplies the squared weight of a match by: 1 near 0. `width` is
/// where the loss bends, in the units of the residual.
double lossWeight(Loss loss, double residual, double width);

/// The transform that the good matches agree on. Matches are conditioned; `confidence` has one
/// number per match, larger is better, and says in which order samples are drawn.
///
/// 1. Where a scale is expected, plain squares from the first start. They are the answer when
///    nothing speaks of a bad match: a scale no more than two standard errors or so above the one
///    expected, and no error so far out that one frame in 1,000 would have one by chance.
/// 2. Else the core of the errors is searched for (`fitCore`, with the prior): from each start,
///    through all degrees of freedom up and down, and from the best four of the transforms that are
///    exact for four matches (`QuadSamples`). Samples compare by the sum of the logarithms of their
///    errors, which needs no distance beyond which a match is bad, and are drawn until one of good
///    matches alone has been missed with a chance of 1 in 1,000. The best score wins; heavy tails
///    must be better by 2. A core that flattens the surface to hardly more than its errors does not
///    count.
/// 3. `fitHomography` with the loss goes on from the core to convergence. Tukey's loss is flat from
///    7 sigmas of the core on, Cauchy's bends at 3, Huber's at 1.7.
///
/// The generator is std::mt19937_64 with the seed, afresh in each call. Fewer than
/// `kFewestForRobust` matches: plain squares.
RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts,
                      const std::vector<double>& confidence, const RobustOptions& options);

}  // namespace cornerpin

#endif
