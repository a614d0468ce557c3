// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_SUMMARY_H
#define SHOT_FILES_SUMMARY_H

#include <cstddef>
#include <string>
#include <vector>

#include "shot/solve/result.h"

namespace cornerpin {

/// The figures of a solve at a glance. The RMS figures are over the good tracks of the solved
/// frames (`FrameResult::goodRms`): NaN without any.
struct Summary {
  std::size_t solved = 0;
  std::size_t reduced = 0;
  std::size_t held = 0;
  std::size_t doubtful = 0;
  double medianRms = 0.0;                 ///< the upper of the two middle ones
  std::vector<const FrameResult*> worst;  ///< solved frames, largest RMS (or none) first, at most 5
  std::vector<const FrameResult*> firstUnsolved;  ///< reduced and held, in order, at most 5
};

/// The result must outlive the summary.
Summary summarise(const ShotResult& result);

/// "11 of 192 frames are doubtful: 0-9, 55"; empty where all are good. Of the stretches of frames
/// at most the first five.
std::string doubtfulFramesLine(const ShotResult& result);

struct SummaryOptions {
  bool verbose = false;  ///< also how the base was chosen, what fits began with, lists of frames
  bool colour = false;
  std::string files;  ///< rows about the files that were written
};

/// The summary as a short table for people, several lines, and `closingWords` at its end. Of the
/// worst tracks it names those that stand out (`TrackStretch::standsOut`).
std::string summaryTable(const ShotResult& result, const SummaryOptions& options = {});

}  // namespace cornerpin

#endif
