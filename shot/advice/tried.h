// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ADVICE_TRIED_H
#define SHOT_ADVICE_TRIED_H

#include <cstddef>
#include <vector>

#include "shot/advice/doubtful_stretch.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// Which of the stretches of a result a try has helped, `after` being what it led to.
///
/// It helps where it halves the largest expected error of the stretch or takes it below the limit;
/// where it is below the limit already, if half of the doubtful frames or more become good. A try
/// that makes a frame doubtful outside the stretches helps none.
std::vector<bool> helped(const ShotResult& before, const ShotResult& after,
                         const std::vector<DoubtfulStretch>& stretches);

/// The largest expected error in a stretch; infinite where nothing tells one.
double largestError(const ShotResult& result, Stretch stretch);

/// How many frames of a stretch are doubtful.
std::size_t doubtfulIn(const ShotResult& result, Stretch stretch);

}  // namespace cornerpin

#endif
