// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_TRUST_SUBSET_POSTERIOR_H
#define SHOT_TRUST_SUBSET_POSTERIOR_H

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/trust/shot_noise.h"

namespace cornerpin {

/// How far off a frame's transform may be because nobody knows which of its tracks keep to the
/// surface: the mean square over all opinions about that, each with its probability.
///
/// An opinion is a set of tracks that are off; the others, at least five, are fitted by weighted
/// least squares. Its probability is the product of
/// - the likelihood of the others, integrated over the transform with an even prior and over their
///   noise, of which the shot tells as much as `noise` says;
/// - for each track that is off, at a distance r from where the others put it: a distance of any
///   order of magnitude is as likely as of any other, so its density is one over r^2;
/// - the prior: any number of tracks may be off, as likely as any other number, and all tracks
///   alike but those that are off elsewhere: one that always is, is so 21 times as likely.
///
/// Among at most `kMost` tracks all opinions are tried but those that add a track to an unlikely
/// one. Among more there is something to ask where the frame's fit takes tracks for good ones that
/// most frames do without: then these are tried as well as the frame's own good ones.
class SubsetPosterior {
 public:
  static constexpr std::size_t kMost = 16;
  /// In what share of the other frames a track may be off that keeps to the surface.
  static constexpr double kMostMissed = 0.5;

  /// \param matches  all of the frame that are in front of the horizon
  /// \param frame    how its transform was fitted; 0 is the weight of the tracks it takes to be off
  /// \param noise    of the shot
  /// \param missed   for each match, in what share of the shot's other frames its track is off
  SubsetPosterior(const Matches& matches, const FittedFrame& frame, const NoiseEstimate& noise,
                  const std::vector<double>& missed);

  /// False where there are too few tracks to leave one out, or nothing to ask.
  bool isKnown() const { return total_ > 0.0; }

  /// The mean square of how far the image of a point of the base frame is from where the frame's
  /// transform puts it, in pixels^2.
  Symmetric2 covarianceAt(Point base) const;

 private:
  struct Sight {
    Slopes slopes;
    Point residual;
    double squaredWeight = 1.0;
    double logOdds = 0.0;
  };
  static void add(const Sight& sight, Parameters& gradient, double& squares);
  // The fit to the tracks that are left, of which the normal matrix has this inverse.
  struct Opinion {
    std::vector<std::size_t> off;
    SquareMatrix<8> inverse{};
    Parameters step{};  // from the frame's parameters
    double squares = 0.0;
    double logDeterminant = 0.0;  // of the normal matrix, less what all opinions have
    double log = 0.0;             // of the probability, but for a term that all have
  };

  void addSights(const Matches& matches, const FittedFrame& all, const std::vector<double>& missed);
  void setCounts(std::size_t most);
  Opinion noneOff(const LinearisedFit& all) const;
  double freedomOf(const Opinion& opinion) const;
  Point residualOf(const Sight& sight, const Opinion& opinion) const;
  bool leaveOut(std::size_t track, Opinion& opinion) const;
  void tryAll(const Opinion& none);
  void tryWithout(const std::vector<bool>& off);
  void add(Opinion& opinion);
  double logOf(const Opinion& opinion) const;

  std::optional<FrameSlopes> slopes_;  // none where there is nothing to ask
  NoiseEstimate noise_;                // of a residual's coordinate, in the unit of the slopes
  double reach_ = 0.0;                 // the greatest distance
  std::vector<Sight> sights_;
  std::vector<double> ofCount_ = {0.0};  // by the number of tracks off
  double most_ = 0.0;  // the largest logarithm so far, in units of whose probability the sums are
  double total_ = 0.0;
  SquareMatrix<8> moments_{};  // of the parameters
};

}  // namespace cornerpin

#endif
