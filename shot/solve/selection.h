// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SELECTION_H
#define SHOT_SOLVE_SELECTION_H

#include <string>
#include <vector>

#include "shot/solve/tracks.h"

namespace cornerpin {

/// A track in some frames, both ends included.
struct Selected {
  std::int32_t track = 0;
  int first = 0;
  int last = 0;
};

/// Reads a comma-separated list of tracks, "NAME" for all frames, "NAME:FRAME" for one and
/// "NAME:FIRST-LAST" for several; frames may be negative. An item that is a track's whole name
/// means that track, colons or not. Throws `std::invalid_argument` naming the item for a track
/// that is not there, for frames that are not whole numbers or run backwards, and for frames that
/// all lie outside the shot.
std::vector<Selected> parseSelection(const std::string& text, const Tracks& tracks);

/// With anything in `kept`, observations outside it no longer count; nor do those in `dropped`.
/// They stay with weight 0, so the shot keeps its frames. Throws `std::invalid_argument` when none
/// is left.
void select(Tracks& tracks, const std::vector<Selected>& kept,
            const std::vector<Selected>& dropped);

}  // namespace cornerpin

#endif
