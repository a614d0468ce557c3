// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_FRONT_H
#define SHOT_SURFACE_FRONT_H

#include <cstddef>
#include <vector>

#include "shot/surface/frame_equations.h"
#include "shot/surface/front_products.h"

namespace cornerpin {

/// What is left of the equations of a track once it is eliminated: its step is
/// inverse * gradient - (x, y) times the steps of the tracks that were alive with it.
struct EliminatedTrack {
  std::size_t track = 0;
  std::size_t slot = 0;
  Symmetric2 inverse;  ///< of the pivot; 0 where nothing says where the track is
  Point gradient;
  std::vector<double> rows;  ///< x and y: two numbers for each slot, 0 for its own, filled up

  std::size_t stride() const { return rows.size() / 2; }
  const double* x() const { return rows.data(); }
  const double* y() const { return rows.data() + stride(); }

  Point step(const FrontVector& placeSteps) const;
};

/// The normal equations of the places of the tracks that are alive, everything before eliminated:
/// a symmetric matrix with two rows for each slot, and the gradient. A copy is a state to go on
/// from later.
class Front {
 public:
  explicit Front(std::size_t slots);

  /// Adds C - Y'Y and c - Y'l.
  void add(const FrameEquations& equations);
  /// Takes the track's rows out; `extent` slots are in use.
  EliminatedTrack eliminate(std::size_t track, std::size_t slot, std::size_t extent);

 private:
  double* row(std::size_t i) { return lower_.data() + triangleRow(i); }
  void take(std::size_t i, std::size_t width, double* into);

  std::vector<double> lower_;  // row by row, up to the diagonal, and filled up
  std::vector<double> taken_;  // the two rows of a track, while it is eliminated
  FrontVector gradient_;
};

}  // namespace cornerpin

#endif
