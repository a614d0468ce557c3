// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_LIBRARY_FIT_H
#define SHOT_SOLVE_LIBRARY_FIT_H

#include <string>

#include "cornerpin/cornerpin.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/solve/units.h"
#include "shot/solve/verdict.h"

namespace cornerpin {

/// A transform as the library has it: single precision, in the library's unit.
using LibraryTransform = MGenMatrix<float>;
LibraryTransform toLibrary(const Homography& h);

/// What the library made of a frame.
struct LibraryResult {
  Shortfall shortfall = Shortfall::None;  ///< of the fit
  std::string error;                      ///< with Shortfall::FitFailed
  LibraryTransform transform;
  Homography h{};     ///< the same in the file's unit
  double cost = 0.0;  ///< sum of w^2 r^2, in the file's unit
};

/// Fits frames by `MMatchmove`, one at a time, in a scene of two frames and the tracks of the frame
/// at hand: their base places and where they are in that frame. So a shot needs no array of tracks
/// times frames, and the transforms have the bits of `MMatchmove::solve` on the whole shot.
class LibraryFit {
 public:
  explicit LibraryFit(const ShotUnits& units);

  /// Makes the frame with these matches, in the file's unit, the one at hand. False where a
  /// position is not finite in the library's unit and single precision. The matches must outlive
  /// what follows.
  bool load(const Matches& file);

  /// Fits it from a transform.
  LibraryResult from(const LibraryTransform& start);

  /// Fits it from the linear solution (`linearFit`).
  LibraryResult fromLinearFit();

 private:
  void makeRoom(int tracks);
  void fillScene();

  ShotUnits units_;
  MMatchmove scene_;  // its tracks are the matches, and behind them absent ones
  const Matches* file_ = nullptr;
  bool filled_ = false;  // the scene, with these matches
};

}  // namespace cornerpin

#endif
