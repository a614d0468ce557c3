// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_UNITS_H
#define SHOT_SOLVE_UNITS_H

#include "shot/plane/homography.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// What the library's solver computes in.
enum class Units {
  Fit,  ///< the fit's unit
  Raw,  ///< the file's numbers as they are; single precision suits those near 1
};

/// The option's and the files' words: "fit", "raw".
const char* nameOf(Units units);

/// The three units of a shot, and all ways between them. Tracks and results are in the file's. The
/// fit's is the one in which the base frame's tracks reach from -1 to 1: everything but the library
/// fits there. The library's is one of the two (`Units`).
struct ShotUnits {
  Similarity fileToFit;
  Similarity fileToLibrary;

  /// A transform of the fit, or of the library, as the file's.
  Homography fromFit(const Homography& h) const { return denormalised(h, fileToFit, fileToFit); }
  Homography fromLibrary(const Homography& h) const {
    return denormalised(h, fileToLibrary, fileToLibrary);
  }

  /// A transform of the file as the fit's, or as the library's.
  Homography toFit(const Homography& h) const { return normalised(h, fileToFit, fileToFit); }
  Homography toLibrary(const Homography& h) const {
    return normalised(h, fileToLibrary, fileToLibrary);
  }

  /// A length of the fit as the file's.
  double lengthFromFit(double length) const { return length / fileToFit.scale; }
};

}  // namespace cornerpin

#endif
