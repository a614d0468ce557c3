// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SELECTION_H
#define SHOT_SOLVE_SELECTION_H

#include <string>
#include <vector>

#include "shot/solve/frame_range.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// A track in some frames.
struct Selected {
  std::int32_t track = 0;
  FrameRange frames;
};

/// Reads a comma-separated list of tracks, "NAME" for all frames and "NAME:FRAMES" for some
/// (`parseFrameRange`). NAME is a track's name or a pattern (`Glob`) for all whose names match.
///
/// A name in double quotes stands for itself, commas, colons and stars in it too; a quote in it is
/// doubled. Blanks around items do not count. Without quotes, a text that is a track's whole name
/// means that track before anything else that it may mean: an item with a colon or a star, and the
/// whole list with its commas.
///
/// Throws `std::invalid_argument` that quotes the item and says what to write, for a name or
/// pattern that no track has, for frames that are no range, and for those that all lie outside the
/// shot.
std::vector<Selected> parseSelection(const std::string& text, const Tracks& tracks);

/// A list of just this, in quotes where it needs them.
std::string textOf(const Selected& selected, const Tracks& tracks);

/// Takes the observations in the frames as the whole shot; the others are gone. Throws
/// `std::invalid_argument` when none is left.
void takeFrames(Tracks& tracks, const FrameRange& frames);

/// With anything in `kept`, observations outside it no longer count; nor do those in `dropped`.
/// They stay with weight 0, so the shot keeps its frames. Throws `std::invalid_argument` when none
/// is left.
///
/// Both this and `takeFrames` note the tracks of which they leave nothing (`Tracks::emptied`).
void select(Tracks& tracks, const std::vector<Selected>& kept,
            const std::vector<Selected>& dropped);

/// Does both as the options --frames, --keep and --drop say, with lists that `parseSelection`
/// reads. What is refused throws `std::invalid_argument` that names the option.
void applySelection(Tracks& tracks, const FrameRange& frames, const std::vector<std::string>& keep,
                    const std::vector<std::string>& drop);

}  // namespace cornerpin

#endif
