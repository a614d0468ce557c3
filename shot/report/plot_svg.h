// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PLOT_SVG_H
#define SHOT_REPORT_PLOT_SVG_H

#include <string>

#include "shot/solve/result.h"

namespace cornerpin {

/// A quick look at a result as an SVG file: over the frames the expected corner error with its
/// limit, the RMS of the good tracks, and how many tracks are in use. Doubtful frames are marked by
/// their colour and by triangles, frames without a figure by crosses.
///
/// Of very many frames, `kMostPoints` stand for those next to them: by the largest error and RMS
/// and the fewest tracks. Errors beyond eight times the limit are drawn at the upper edge.
std::string plotSvg(const ShotResult& result, const std::string& title);

constexpr std::size_t kMostPoints = 800;

}  // namespace cornerpin

#endif
