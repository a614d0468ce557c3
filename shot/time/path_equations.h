// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TIME_PATH_EQUATIONS_H
#define SHOT_TIME_PATH_EQUATIONS_H

#include <array>
#include <cstddef>
#include <vector>

#include "shot/plane/points.h"

namespace cornerpin {

/// Four points of a path next to each other, by the first one's index: their differences' part in
/// the path's roughness.
struct PathBend {
  std::array<double, 4> factors{};  ///< their sum with the points is a third derivative
  double weight = 0.0;
};

/// The smoothest path near given points: of all x the one with the least
///
///   sum w_i |x_i - y_i|^2 + strength * sum v_j |c_j0 x_j + .. + c_j3 x_j+3|^2
///
/// (Whittaker 1923 with third differences: parabolas cost nothing). The matrix W + strength D'VD
/// has three diagonals beside the main one, so that a solution takes time like the number of
/// points.
class PathEquations {
 public:
  /// \param weights  w, one for each point, above 0
  /// \param bends    one for each point but the last three
  PathEquations(const std::vector<double>& weights, const std::vector<PathBend>& bends,
                double strength);

  std::vector<Point> solve(const std::vector<Point>& places) const;

  /// The diagonal of the matrix's inverse, from the band of it alone (Hutchinson and de Hoog 1985):
  /// how uncertain each point of the solution is, in squared errors of a point of weight 1. Times
  /// the weights it adds up to the number of points that the solution is as free as.
  std::vector<double> variances() const;

 private:
  using Column = std::array<double, 4>;  // of a lower triangle, from the diagonal on

  std::vector<double> weights_;
  std::vector<Column> factor_;  // L D L': D, and of L what is below the diagonal
};

}  // namespace cornerpin

#endif
