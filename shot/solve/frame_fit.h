// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_FRAME_FIT_H
#define SHOT_SOLVE_FRAME_FIT_H

#include <memory>

#include "shot/fit/matches.h"
#include "shot/fit/support.h"
#include "shot/plane/homography.h"
#include "shot/robust/robust_fit.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/library_fit.h"
#include "shot/solve/options.h"
#include "shot/solve/place_worth.h"
#include "shot/solve/sweep_memory.h"
#include "shot/solve/units.h"
#include "shot/solve/verdict.h"

namespace cornerpin {

/// What a sweep carries from one frame to the next.
struct Sweep {
  LibraryTransform start;    ///< the last solved frame's transform: where the library starts
  Homography neighbour{};    ///< the frame before's, however it came about; in the file's unit
  bool chainBroken = false;  ///< some frame was not fitted from its neighbour
  SweepMemory memory;
  Quad surface{};  ///< what a transform has to carry well: the square around tracks, on the surface
  std::shared_ptr<const Quad> corners = {};  ///< of the box around the same tracks
};

/// Lets a sweep carry the surface around these places.
void cover(const Points& places, Sweep& sweep);

/// How a frame came out, before its figures. Transforms in the file's unit.
struct FrameFit {
  Verdict verdict;
  Homography h{};    ///< the neighbour's when held
  RobustFit robust;  ///< not found with Loss::None, and where no fit was tried; in the fit's unit
  /// Of the full transform with a loss: `noiseGain` of the good tracks.
  double gain = 0.0;

  /// Whether others may lean on the frame's transform.
  bool isFirm() const { return verdict.status == Status::Solved && gain <= kLargestGain; }
};

/// Fits one frame after the other: decides whether the tracks fix a transform, fits it, and takes a
/// lower model or the neighbour's transform where they do not. A frame whose full transform noise
/// may throw about (`kLargestGain`) hands a lower model's transform on to the next.
class FrameFitter {
 public:
  FrameFitter(const ShotUnits& units, const SolveOptions& options);

  /// Fits a frame and moves the sweep on to it.
  FrameFit fit(const Matches& file, Sweep& sweep);

 private:
  Verdict judgeTracks(const Matches& file, const Quad& surface);
  void judgeGood(const Matches& file, const Quad& surface, FrameFit& fit);
  LibraryResult bestOfLibrary(Sweep& sweep);
  LibraryTransform fitFull(const Matches& file, Sweep& sweep, FrameFit& fit);
  LibraryResult fitByLibrary(Sweep& sweep, FrameFit& fit);
  LibraryTransform takeRobust(const Matches& file, Sweep& sweep, FrameFit& fit);

  ShotUnits units_;
  Loss loss_;
  RobustOptions robustOptions_;
  bool reduces_;
  LibraryFit library_;
  PlaceWorth all_{PlaceWorth::FarOff::LeftOut};
  PlaceWorth good_{PlaceWorth::FarOff::Counted};
};

}  // namespace cornerpin

#endif
