// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_RETOUCH_H
#define SHOT_TIME_RETOUCH_H

#include <optional>
#include <vector>

#include "shot/solve/progress.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// What to do with a result, all of it off unless asked for.
struct RetouchOptions {
  std::optional<double> smooth;  ///< `smooth` by no more than this
  bool fill = false;             ///< `fill`, from frames that are smooth
  std::vector<double> at;        ///< `addBetween`, from what is there then
};

/// Works on a solved shot whatever its reference frame. Smoothing and filling are done relative to
/// the base frame, and the reference frame is not moved: what lies on the surface stays where it
/// is, and a corner moves no further in the result than it does relative to the base frame. Frames
/// that stay keep every bit.
///
/// Throws what `addBetween` throws.
void retouch(ShotResult& result, const RetouchOptions& options, const Progress& progress = {});

}  // namespace cornerpin

#endif
