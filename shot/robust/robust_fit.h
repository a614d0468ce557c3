// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_ROBUST_FIT_H
#define SHOT_ROBUST_ROBUST_FIT_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/error_model.h"
#include "shot/robust/mixture_search.h"
#include "shot/robust/origin.h"

namespace cornerpin {

struct RobustOptions {
  Loss loss = Loss::Tukey;
  std::uint64_t seed = 1;
};

struct RobustFit {
  bool found = false;
  Homography h{};
  Origin origin;
  double sigma = 0.0;      ///< standard deviation of one coordinate of a good match
  int freedom = 0;         ///< of the errors' tails (`ErrorModel`); 0 where they were not looked at
  std::vector<bool> good;  ///< per match: within `kGoodWithin` sigmas of its place
  std::size_t goodCount = 0;
  Loss loss = Loss::None;  ///< that the fit ended with; None for plain squares
  double width = 0.0;      ///< where that loss bends
};

/// Fewer matches do not tell a bad one: they are fitted by plain squares.
constexpr std::size_t kFewestForRobust = 6;

/// A start that is not at hand yet; none where there is none.
using AnotherStart = std::function<std::optional<Start>()>;

/// The transform that the good matches agree on. Matches are in the fit's unit.
///
/// 1. Where the prior has a recent sigma, plain squares from the first start. They are the answer
///    when nothing speaks of a bad match: a sigma no more than two standard errors or so above the
///    recent one, and no error so far out that one frame in 1,000 would have one by chance.
/// 2. Else a mixture of good matches and strays is fitted on from the matches that were good
///    before, where they agree as they did (`continuedMixture`).
/// 3. Else such a mixture is searched for (`MixtureSearch`), from each start. Unless that keeps the
///    matches that were good before with a sigma up to 1.5 times the recent one (`keepsKnown`), it
///    goes on from `another` start and, unless that does, from samples of four.
/// 4. After either, `fitHomography` with the loss goes on to convergence. Tukey's loss is flat from
///    7 spreads of the mixture on, Cauchy's bends at 3, Huber's at 1.7. Where the prior has no
///    recent sigma and the mixture has heavy tails, Tukey's may be wider (`chooseWidth`).
///
/// The generator is std::mt19937_64 with the seed, afresh in each call. Fewer than
/// `kFewestForRobust` matches: plain squares.
RobustFit fitRobustly(const Matches& matches, const std::vector<Start>& starts, const Prior& prior,
                      const RobustOptions& options, const AnotherStart& another = {});

}  // namespace cornerpin

#endif
