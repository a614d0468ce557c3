// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_COMMAND_MAGSAC_H
#define BENCH_COMMAND_MAGSAC_H

#include <string>
#include <vector>

namespace bench {

// The robust fit of a frame as the command does it, library's fit and figures of trust included,
// beside one call of OpenCV's findHomography(USAC_MAGSAC, 3) on the same frame. Both say which
// tracks are good.
struct Beside {
  std::string shot;
  double tracks = 0.0;          // median of the frames
  std::size_t frames = 0;       // of at least four tracks
  std::size_t mostlyWrong = 0;  // of these, those with more than 60 % of their tracks wrong
  // Medians of the rounds, microseconds a frame: of the frames that are not mostly wrong, and of
  // those that are; 0 without any.
  double ours = 0.0, theirs = 0.0, oursWrong = 0.0, theirsWrong = 0.0;
  double ratio = 0.0, ratioWrong = 0.0;  // medians of the rounds' ratios
  double handOver = 0.0;  // microseconds a frame more where tracks may be handed over to
};

// Whether OpenCV was there when this was built.
bool hasMagsac();

// Of the shots of a folder, in rounds of one solve and one call for each frame; ours from the base
// frame that the shot's description names, on one thread.
std::vector<Beside> besideMagsac(const std::string& folder, int rounds);

}  // namespace bench

#endif
