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
#include "shot/robust/quad_samples.h"
#include "shot/robust/sample_score.h"

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

/// Looks for the transform and error model that explain a frame's matches best (`MixtureFitter`),
/// from one start after the other. The best score wins; heavy tails must be better by 2. A fit that
/// chance explains (`chanceOf`) gives way to one that it does not. A fit that flattens the surface
/// to hardly more than its errors does not count.
class MixtureSearch {
 public:
  /// \param matches  in the fit's unit; outlives the search, as the prior does
  MixtureSearch(const Matches& matches, const Prior& prior);

  /// Through all degrees of freedom up and down.
  void from(const Start& start);

  /// Draws transforms that are exact for four matches (`QuadSamples`) and goes on from the best
  /// eight (`SampleScore`), until four of the best transform's good matches would have been missed
  /// with a chance below one in a million. Where there are no more quadruples than draws to come,
  /// all are tried instead, whatever the seed. What they lead to has to be better by 2 than the
  /// best before. Then finishes. \param least  transforms with fewer good matches than this may be
  /// missed
  void fromSamples(std::uint64_t seed, std::size_t least = 0);

  /// Takes the best to its optimum (`MixtureFitter::settled`). Goes on from fits to halves of its
  /// matches too, where matches lie between the good ones and the strays.
  void finish();

  /// Whether the draws ended before that (`QuadSamples::kMost`).
  bool budgetSpent() const { return budgetSpent_; }

  bool found() const { return best_.fit.found; }
  Stage stage() const { return best_.stage; }  ///< of the start that led to the best
  const MixtureFit& best() const { return best_.fit; }
  std::size_t good() const { return goodOf(best_.fit); }  ///< matches of the best

 private:
  struct Sample {
    double score = 0.0;
    Homography h{};
    std::vector<bool> good;  // once refined
  };

  struct Best {
    MixtureFit fit;
    double score = std::numeric_limits<double>::infinity();  // heavy tails counted in
    bool isNoAccident = false;
    Stage stage = Stage::Library;
  };

  void walk(const Start& start, std::initializer_list<int> freedoms, double spread);
  void consider(const MixtureFit& fit, Stage stage);
  void drawUntilSure(QuadSamples& samples, std::size_t least);
  void tryAll(const QuadSamples& samples);
  void rank(const Homography& h);
  void refine();
  void refineAll();
  void refine(const Sample& sample);
  bool isAmbiguous() const;
  void keepUnlessBetter(const Best& before);
  void settle();
  void fromHalves();
  std::size_t neededOf(const QuadSamples& samples) const;
  double chanceOfAgreement(const Homography& h) const;
  double likelySigma() const;
  std::size_t goodOf(const MixtureFit& fit) const;

  const Matches& matches_;
  const Prior& prior_;
  MixtureFitter fitter_;
  double area_;
  SampleScore score_;
  std::vector<Sample> samples_;            // the best so far, the best first
  std::vector<std::vector<bool>> walked_;  // the good matches of those that were gone on from
  bool budgetSpent_ = false;
  std::vector<MixtureFit> seen_;
  Best best_;
};

}  // namespace cornerpin

#endif
