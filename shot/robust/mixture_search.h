// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ROBUST_MIXTURE_SEARCH_H
#define SHOT_ROBUST_MIXTURE_SEARCH_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <vector>

#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/robust/mixture_fit.h"
#include "shot/robust/origin.h"

namespace cornerpin {

/// A transform that a search starts from.
struct Start {
  Stage stage = Stage::Library;
  Homography h{};
};

/// A match within this many sigmas of its place is a good one: with normal errors 998 good matches
/// of 1,000 are.
constexpr double kGoodWithin = 3.5;

/// Whether each match lies within `kGoodWithin` sigmas of its place.
std::vector<bool> goodMatches(const Matches& matches, const Homography& h, double sigma);
std::size_t countOf(const std::vector<bool>& flags);

/// Looks for the transform and error model that explain a frame's matches best (`fitMixture`), from
/// one start after the other. The best score wins; heavy tails must be better by 2. A fit that
/// flattens the surface to hardly more than its errors does not count.
class MixtureSearch {
 public:
  /// \param matches  in the fit's unit; outlives the search, as the prior does
  MixtureSearch(const Matches& matches, const Prior& prior);

  /// Through all degrees of freedom up and down.
  void from(const Start& start);

  /// Draws transforms that are exact for four matches (`QuadSamples`) until one of good matches
  /// alone has been missed with a chance of 1 in 1,000, and goes on from the best four. They
  /// compare by the sum of the logarithms of their errors, which needs no distance beyond which a
  /// match is bad.
  void fromSamples(std::uint64_t seed);

  bool found() const { return best_.found; }
  Stage stage() const { return stage_; }  ///< of the start that led to the best
  const MixtureFit& best() const { return best_; }
  std::size_t good() const { return goodOf(best_); }  ///< matches of the best

 private:
  struct Sample {
    double score = 0.0;
    Homography h{};
  };

  void walk(const Start& start, std::initializer_list<int> freedoms, double spread);
  void consider(const MixtureFit& fit, Stage stage);
  void rank(const Sample& sample, std::vector<Sample>& best, std::size_t& needed) const;
  double scoreOf(const std::vector<double>& squares) const;
  double likelySigma() const;
  std::size_t goodOf(const MixtureFit& fit) const;

  const Matches& matches_;
  const Prior& prior_;
  std::vector<double> votes_;
  double area_;
  std::vector<MixtureFit> seen_;
  MixtureFit best_;
  double bestScore_ = std::numeric_limits<double>::infinity();
  Stage stage_ = Stage::Library;
};

}  // namespace cornerpin

#endif
