// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_NORMAL_EQUATIONS_H
#define SHOT_FIT_NORMAL_EQUATIONS_H

#include <cstddef>
#include <vector>

#include "shot/fit/loss.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"

namespace cornerpin {

/// The normal equations of a homography fit and its cost, as one pass over the matches sums them.
///
/// The transform h is varied where its images are. With (X, Y) the image of a match's base place as
/// seen from h's image of the origin, m = (X, Y, 1) and (dx, dy) the image less the present place,
/// eight small numbers a, b (of three) and c (of two) move the image by
///
///     a m + X c (X, Y)  and  b m + Y c (X, Y).
///
/// Then no denominator is left in the derivatives, and the matrix of the eight consists of the
/// moments of the images up to the fourth degree. With q the weight's square times the loss's
/// weight, the sums are over q times the products named.
struct NormalEquations {
  double mm[6] = {};     ///< XX XY YY X Y 1: the block of a, and that of b
  double cubic[4] = {};  ///< XXX XXY XYY YYY: with mm, how c goes with a and b
  double cc[3] = {};     ///< XX + YY times XX XY YY
  double ab[6] = {};     ///< gradient by a and b in turn: dx X, dy X, dx Y, dy Y, dx, dy
  double c[2] = {};      ///< gradient by c: X dx + Y dy times X Y
  double cost = 0.0;     ///< sum of w^2 loss(r)
};

/// What a pass reads: arrays of `count` numbers, a multiple of 4; the transform row by row, the
/// last element left out, which is 1.
struct NormalEquationsInput {
  const double* x;
  const double* y;
  const double* u;
  const double* v;
  const double* w2;
  std::size_t count;
  Loss loss;
  double width;
  double h[8];
};

/// The variants of the pass: four lanes summed in a fixed order, the same bits from each. A variant
/// calls no inline function of another file: the linker may take its copy, in its own instructions,
/// for all callers.
struct NormalEquationsVariant {
  const char* name;
  void (*run)(const NormalEquationsInput& in, NormalEquations& out);
};

/// Those that this build has and this processor runs, the definition first and the fastest, which
/// is the one in use, last.
const std::vector<NormalEquationsVariant>& normalEquationsVariants();

/// Passes over the same matches, whose arrays are read where they are.
class NormalEquationsPass {
 public:
  /// \param squaredWeights  one for each match, zeros behind the last up to a whole number of fours
  /// \param width           where the loss bends; unused without one
  NormalEquationsPass(const Matches& matches, const std::vector<double>& squaredWeights, Loss loss,
                      double width)
      : NormalEquationsPass(matches, squaredWeights, loss, width, fastest()) {}

  NormalEquationsPass(const Matches& matches, const std::vector<double>& squaredWeights, Loss loss,
                      double width, const NormalEquationsVariant& variant)
      : in_{matches.base().x(),
            matches.base().y(),
            matches.present().x(),
            matches.present().y(),
            squaredWeights.data(),
            matches.base().paddedSize(),
            loss,
            width,
            {}},
        run_(variant.run) {}

  /// Sums at `h`, whose last element is 1. A match on or behind the horizon (`kHorizon`) counts as
  /// infinitely far away: not at all in the sums, and in the cost with Tukey's bound, which alone
  /// has one.
  void operator()(const Homography& h, NormalEquations& out) {
    for (std::size_t i = 0; i < 8; ++i) in_.h[i] = h[i / 3][i % 3];
    run_(in_, out);
  }

 private:
  static const NormalEquationsVariant& fastest();

  NormalEquationsInput in_;
  void (*run_)(const NormalEquationsInput& in, NormalEquations& out);
};

}  // namespace cornerpin

#endif
