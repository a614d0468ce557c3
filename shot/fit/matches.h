// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_MATCHES_H
#define SHOT_FIT_MATCHES_H

#include <cstddef>
#include <vector>

#include "shot/plane/similarity.h"

namespace cornerpin {

/// A point's place in the base frame, its place in a frame and its weight, which multiplies the
/// residual: the cost is w^2 r^2.
struct Match {
  Point from;
  Point to;
  double weight = 1.0;
};

/// Matches, one array per number, as the fit reads them: four at a time. Fits work best on
/// coordinates near -1 .. 1 (`Conditioning`).
class Matches {
 public:
  void clear() { *this = {}; }
  void add(const Match& match);

  /// Multiplies the squared weights by one factor per match; earlier factors no longer count.
  void reweight(const std::vector<double>& factors);

  std::size_t size() const { return size_; }
  Match operator[](std::size_t i) const { return {{x_[i], y_[i]}, {u_[i], v_[i]}, w_[i]}; }
  Point from(std::size_t i) const { return {x_[i], y_[i]}; }
  Point to(std::size_t i) const { return {u_[i], v_[i]}; }

  /// The arrays: a whole number of fours, filled up with matches of weight 0 at the origin. `w2`
  /// holds the squared weights.
  std::size_t paddedSize() const { return x_.size(); }
  const double* x() const { return x_.data(); }
  const double* y() const { return y_.data(); }
  const double* u() const { return u_.data(); }
  const double* v() const { return v_.data(); }
  const double* w2() const { return w2_.data(); }

 private:
  std::size_t size_ = 0;
  std::vector<double> x_, y_, u_, v_, w_, w2_;
};

}  // namespace cornerpin

#endif
