// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_MATCHES_H
#define SHOT_FIT_MATCHES_H

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "shot/plane/points.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// A track's place in the base frame, its place in the present one and its weight there, which
/// multiplies the residual: the cost is w^2 r^2.
struct Match {
  Point base;
  Point present;
  double weight = 1.0;
  int track = 0;  ///< its index
};

/// The matches of a frame, one array for each number: what a frame is fitted to and judged by. All
/// places are in one unit, which the name of the variable says: `file` for the file's, `fit` for
/// the one in which the base frame's tracks reach from -1 to 1.
class Matches {
 public:
  Matches() = default;
  Matches(std::initializer_list<Match> matches);
  /// So many matches at the origin, without weight.
  explicit Matches(std::size_t size);

  void add(const Match& match);
  void set(std::size_t i, const Match& match) {
    base_.set(i, match.base);
    present_.set(i, match.present);
    weights_[i] = match.weight;
    squaredWeights_[i] = match.weight * match.weight;
    tracks_[i] = match.track;
  }

  /// Makes room for so many matches at once.
  void reserve(std::size_t size);

  std::size_t size() const { return tracks_.size(); }
  bool empty() const { return tracks_.empty(); }
  Match operator[](std::size_t i) const { return {base_[i], present_[i], weights_[i], tracks_[i]}; }

  const Points& base() const { return base_; }
  const Points& present() const { return present_; }
  const std::vector<double>& weights() const { return weights_; }
  const std::vector<int>& tracks() const { return tracks_; }

  /// The squared weights: filled up with zeros as `Points` is, so that what stands behind the last
  /// match counts for nothing.
  const std::vector<double>& squaredWeights() const { return squaredWeights_; }

  /// Those of the matches for which `chosen` holds, in their order.
  Matches subset(const std::vector<bool>& chosen) const;

  /// The same matches in another unit.
  Matches in(const Similarity& unit) const;

 private:
  Points base_;
  Points present_;
  std::vector<double> weights_;
  std::vector<double> squaredWeights_;
  std::vector<int> tracks_;
};

}  // namespace cornerpin

#endif
