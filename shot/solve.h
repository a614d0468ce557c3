// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_H
#define SHOT_SOLVE_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "shot/conditioning.h"
#include "shot/model.h"
#include "shot/tracks.h"

namespace cornerpin {

enum class Units {
  Fit,  ///< one similarity carries the base frame's tracks into -1 .. 1 for the solver
  Raw,  ///< the solver gets the numbers as they are; single precision suits those near 1
};

/// The option's and the files' words: "fit", "raw".
const char* nameOf(Units units);

enum class Status {
  Base,     ///< the identity
  Solved,   ///< fitted to its tracks with all eight parameters
  Reduced,  ///< fitted to its tracks with fewer: they do not support more
  Held,     ///< its neighbour's transform, the one nearer to the base frame
};

/// "base", "solved", "reduced", "held".
const char* nameOf(Status status);

struct SolveOptions {
  std::optional<int> base;  ///< none: `chooseBaseFrame`
  Units units = Units::Fit;
  /// Reduce frames whose tracks carry too much of their noise to the surface (`noiseGain` above
  /// `kLargestGain`); else every frame that the solver can fit is fitted in full.
  bool checkSpread = true;
};

struct FrameResult {
  int frame = 0;
  Status status = Status::Held;
  int tracks = 0;  ///< active ones: weight above 0 here and in the base frame
  /// Root of the mean squared distance between the active tracks and where `h` carries their base
  /// positions, unweighted, in the file's units; NaN without active tracks, and where a held
  /// transform carries one nowhere.
  double rms = 0.0;
  Homography h{};  ///< base frame to this frame, in the file's units; the last element is 1
  Model model = Model::Held;  ///< projective where solved; means nothing in the base frame
  bool onTop = false;  ///< reduced, and the model moves the neighbour's transform, which it keeps
  std::string reason;  ///< why the frame is held or reduced
};

struct ShotResult {
  int baseFrame = 0;
  int baseTracks = 0;  ///< tracks that take part
  int leftOut = 0;     ///< tracks absent from the base frame, which take part nowhere
  Units units = Units::Fit;
  Point baseCentre;  ///< of the box around the base frame's tracks; in front in every frame
  std::vector<FrameResult> frames;  ///< from the first frame of the shot to its last, gaps included
};

/// Called after each frame with the number of frames done.
using Progress = std::function<void(std::size_t done, std::size_t total)>;

/// The frame whose tracks have the most observations in the whole shot (weight above 0); the
/// smallest of several.
int chooseBaseFrame(const Tracks& tracks);

/// Finds for every frame the transform that carries the tracks' base positions to their positions
/// there, by `MMatchmove`: forward from the base frame, then backward, each frame starting from
/// its neighbour. Where every frame is fitted in full the transforms are those of
/// `MMatchmove::solve` on the conditioned shot, to the bit.
///
/// A frame with fewer than four active tracks, or whose tracks fix no transform here or in the base
/// frame (`inGeneralPosition`), or lie too close together or too near one line in the base frame
/// (`SolveOptions::checkSpread`), is reduced: fitted with the highest model below the projective
/// one that its tracks support in both frames (`supportedModel`), best on top of its neighbour's
/// transform (`fitLadder`). It is held without active tracks; with positions beyond single
/// precision; and when its fit throws, is not finite, or puts an active track on the horizon or
/// two of them on its two sides. Both break the chain of neighbours: from there to the end of the
/// sweep each frame is fitted from the linear solution (`linearFit`) too, and the fit with the
/// lower weighted cost counts.
///
/// Throws `std::invalid_argument` for a base frame outside the shot or without tracks.
///
/// Cost: memory for the results and the base frame's tracks, no array of tracks times frames.
ShotResult solveShot(const Tracks& tracks, const SolveOptions& options = {},
                     const Progress& progress = {});

}  // namespace cornerpin

#endif
