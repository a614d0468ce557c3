// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SHOT_SOLVER_H
#define SHOT_SOLVE_SHOT_SOLVER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "shot/fit/model.h"
#include "shot/plane/similarity.h"
#include "shot/robust/robust_fit.h"
#include "shot/solve/tracks.h"

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
  /// Loss::None: the library's solve alone, to the bit, of every frame that it can fit; the spread
  /// of the tracks (`noiseGain`) is not looked at.
  Loss loss = Loss::Tukey;
  /// Fits frames whose tracks do not support the full transform with a lower model instead of
  /// holding them.
  bool reduce = true;
  std::uint64_t seed = 1;  ///< of the samples drawn where a frame has many bad tracks
};

/// "none", "huber", "cauchy", "tukey".
const char* nameOf(Loss loss);

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

  // Of solved frames.
  Stage stage = Stage::Library;  ///< where the fit started; Loss::None ends with the library's
  Loss loss = Loss::None;        ///< None too where a frame shows no sign of a bad track
  double width = 0.0;            ///< residual at which that loss bends, in the file's units
  std::string why;               ///< why there; empty with Loss::None
  int inliers = 0;  ///< tracks within `kInlierScales` scales; with Loss::None all of them
  double inlierRms = std::numeric_limits<double>::quiet_NaN();  ///< `rms` over these alone
  /// Standard deviation of one coordinate of a good track, in the file's units; NaN with
  /// Loss::None.
  double scale = std::numeric_limits<double>::quiet_NaN();
};

struct ShotResult {
  int baseFrame = 0;
  int baseTracks = 0;  ///< tracks that take part
  int leftOut = 0;     ///< tracks absent from the base frame, which take part nowhere
  Units units = Units::Fit;
  Loss loss = Loss::None;
  std::uint64_t seed = 1;
  Point baseCentre;  ///< of the box around the base frame's tracks; in front in every frame
  std::vector<FrameResult> frames;  ///< from the first frame of the shot to its last, gaps included
};

/// Called after each frame with the number of frames done.
using Progress = std::function<void(std::size_t done, std::size_t total)>;

/// The places in the base frame that tell how far the surface reaches: all of them, or with a
/// robust loss and enough tracks to tell a bad one those that are not far off (`withoutFarOff`).
std::vector<Point> surfacePoints(const std::vector<Point>& places, Loss loss);

/// The frame whose tracks have the most observations in the whole shot (weight above 0); the
/// smallest of several.
int chooseBaseFrame(const Tracks& tracks);

/// Finds for every frame the transform that carries the tracks' base positions to their positions
/// there, by `MMatchmove`: forward from the base frame, then backward, each frame starting from
/// its neighbour. With Loss::None, and where every frame can be fitted, the transforms are those of
/// `MMatchmove::solve` on the conditioned shot, to the bit. With another loss `fitRobustly` goes on
/// from the library's fit and the neighbour's transform, in double precision, and its transform is
/// the frame's and the next frame's start. Expected of a frame is the median scale of the last five
/// frames of the sweep that were searched; tracks that kept to the surface in its earlier frames
/// are sampled first. With at least `kFewestForRobust` tracks the library's fit may fail then.
///
/// A frame with fewer than four active tracks, or whose tracks fix no transform here or in the base
/// frame (`inGeneralPosition`), or lie too close together or too near one line in the base frame
/// (not with Loss::None; with a loss the good tracks count), or of whose six or more tracks only
/// four agree, as any four do, is reduced where the options say so: fitted with the highest model
/// below the projective one that its tracks support in both frames (`supportedModel`), best on top
/// of its neighbour's transform (`fitLadder`). It is held without active tracks; with positions
/// beyond single precision; where no more than three of six or more tracks agree; and when its fit
/// throws, is not finite, or puts an active track on the horizon or two of them on its two sides.
/// Both break the chain of neighbours: from there to the end of the sweep each frame is fitted from
/// the linear solution (`linearFit`) too, and the fit with the lower weighted cost counts.
///
/// Throws `std::invalid_argument` for a base frame outside the shot or without tracks.
///
/// Cost: memory for the results and the base frame's tracks, no array of tracks times frames.
ShotResult solveShot(const Tracks& tracks, const SolveOptions& options = {},
                     const Progress& progress = {});

}  // namespace cornerpin

#endif
