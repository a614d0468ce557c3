// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/model_choice.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/reduced_fit.h"
#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"

namespace cornerpin {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What a model may be expected to miss at most where the shot does not tell, in the surface's
// extent.
constexpr double kMissedByAffine = 0.25;
constexpr double kMissedBySimilarity = 0.5;
constexpr double kMissedByTranslation = 1.0;

Points pointsOf(const Quad& quad) { return {quad[0], quad[1], quad[2], quad[3]}; }

double extentOf(const Homography& h, const Quad& corners) {
  Points seen;
  for (Point corner : corners) seen.add(map(h, corner));
  const Box box = boxAround(seen);
  return std::max(box.high.x - box.low.x, box.high.y - box.low.y);
}

bool inFront(const Homography& h, const Quad& corners, Point front) {
  return std::all_of(corners.begin(), corners.end(),
                     [&](Point corner) { return onSameSide(h, corner, front); });
}

}  // namespace

ModelChoice::ModelChoice(const WeakFrame& frame, const MotionTrials& trials, const Noise& usual)
    : frame_(frame),
      pairs_(frame.tracks.size()),
      noise_(usual),
      trials_(trials, {frame.tracks, frame.corners, frame.seen}) {
  noise_.sigma = std::max(noise_.sigma, frame.sigma);
  if (!frame.full) return;
  full_.emplace(frame.tracks,
                FittedFrame{Model::Projective, kIdentity, *frame.full, frame.tracks.weights()});
  if (!full_->isDetermined()) {
    full_.reset();
    return;
  }
  fullSquares_ = squaresOf(*frame.full);
  const std::size_t own = pairs_ - tracksFor(Model::Projective);
  pairs_ = tracksFor(Model::Projective);
  noise_.pairs += own;
  const double squares =
      fullSquares_ + 2.0 * static_cast<double>(usual.pairs) * usual.sigma * usual.sigma;
  noise_.sigma =
      std::max(frame.sigma, std::sqrt(squares / (2.0 * static_cast<double>(noise_.pairs))));
}

// Of weights whose mean square is 1.
double ModelChoice::squaresOf(const Homography& h) const {
  double weights = 0.0;
  for (double squaredWeight : frame_.tracks.squaredWeights()) weights += squaredWeight;
  return weightedSquares(frame_.tracks, h) * static_cast<double>(frame_.tracks.size()) / weights;
}

double ModelChoice::fullVariance(Point p) const {
  if (!full_ || !onSameSide(*frame_.full, p, frame_.tracks.base()[0])) return kInfinity;
  return noise_.sigma * noise_.sigma * full_->responseAt(p).trace();
}

double ModelChoice::fullError() const {
  double worst = 0.0;
  for (Point corner : frame_.corners) worst = std::max(worst, fullVariance(corner));
  return std::sqrt(worst);
}

std::size_t ModelChoice::pairsLeftBy(const Candidate& candidate) const {
  return pairs_ - tracksFor(candidate.lower.model);
}

bool ModelChoice::isContradicted(const Candidate& candidate) const {
  const double beyond = squaresOf(candidate.h) - fullSquares_;
  return contradicts(std::max(beyond, 0.0), pairsLeftBy(candidate), noise_);
}

double ModelChoice::priorOf(const Candidate& candidate) const {
  const Model model = candidate.lower.model;
  const double share = model == Model::Affine       ? kMissedByAffine
                       : model == Model::Similarity ? kMissedBySimilarity
                                                    : kMissedByTranslation;
  Points moves;
  Point mean;
  for (Point corner : frame_.corners) {
    const Point to = map(candidate.h, corner);
    const Point from = map(candidate.kept.h, corner);
    moves.add({to.x - from.x, to.y - from.y});
    mean = {mean.x + (to.x - from.x) / 4.0, mean.y + (to.y - from.y) / 4.0};
  }
  if (model == Model::Translation) mean = {};
  double moved = 0.0;
  for (Point move : moves) moved = std::max(moved, squaredDistance(move, mean));
  return std::min(share * extentOf(frame_.seen, frame_.corners), std::sqrt(moved));
}

LinearisedFit ModelChoice::linearised(const Candidate& candidate) const {
  return {frame_.tracks,
          {candidate.lower.model, candidate.kept.h, candidate.h, frame_.tracks.weights()}};
}

std::vector<double> ModelChoice::squaredBias(const Candidate& candidate, const LinearisedFit& fit,
                                             const Points& points) {
  std::vector<double> squares = trials_.misses(candidate.lower, points, pairs_, noise_);
  if (squares.empty()) {
    const double prior = priorOf(candidate);
    squares.assign(points.size(), prior * prior);
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    squares[i] += candidate.kept.squaredError;
    const double own = noise_.sigma * noise_.sigma * fit.responseAt(points[i]).trace();
    const double noise = std::max(fullVariance(points[i]) - own, 0.0);
    if (!std::isfinite(noise)) continue;
    const double share = squares[i] > 0.0 ? squares[i] / (squares[i] + noise) : 0.0;
    const double off = squaredDistance(map(*frame_.full, points[i]), map(candidate.h, points[i]));
    squares[i] = share * share * off + share * noise;
  }
  return squares;
}

double ModelChoice::varianceOf(const LinearisedFit& fit) const {
  return fit.isDetermined() ? noise_.sigma * noise_.sigma : kInfinity;
}

std::vector<Symmetric2> ModelChoice::covariances(const Candidate& candidate, const Points& points) {
  return covariances(candidate, linearised(candidate), points);
}

std::vector<Symmetric2> ModelChoice::covariances(const Candidate& candidate,
                                                 const LinearisedFit& fit, const Points& points) {
  const double variance = varianceOf(fit);
  const std::vector<double> bias = squaredBias(candidate, fit, points);
  std::vector<Symmetric2> all;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Symmetric2 unit = fit.responseAt(points[i]);
    all.push_back({variance * unit.xx + bias[i] / 2.0, variance * unit.xy,
                   variance * unit.yy + bias[i] / 2.0});
  }
  return all;
}

double ModelChoice::squaredError(const Candidate& candidate) {
  return squaredError(candidate, kInfinity);
}

// Infinite where it is not below the bound. Most that are not have too much noise alone.
double ModelChoice::squaredError(const Candidate& candidate, double bound) {
  const LinearisedFit fit = linearised(candidate);
  const double variance = varianceOf(fit);
  for (Point corner : frame_.corners) {
    const Symmetric2 unit = fit.responseAt(corner);
    if (!(variance * unit.xx + variance * unit.yy < bound)) return kInfinity;
  }
  double worst = 0.0;
  for (const Symmetric2& covariance : covariances(candidate, fit, pointsOf(frame_.corners))) {
    const double square = covariance.trace();
    if (!(square < bound)) return kInfinity;
    worst = std::max(worst, square);
  }
  return worst;
}

std::vector<Candidate> ModelChoice::candidatesOn(const std::vector<Kept>& kept) const {
  std::vector<Candidate> all;
  const std::vector<double> squaredWeights = relativeSquares(frame_.tracks.weights());
  for (const Kept& ground : kept) {
    const FitsOnTop fits(frame_.tracks, squaredWeights, ground.h);
    for (Model model : {Model::Affine, Model::Similarity, Model::Translation}) {
      if (frame_.tracks.size() < tracksFor(model)) continue;
      const std::optional<Homography> h = fits.of(model);
      if (!h || !inFront(*h, frame_.corners, frame_.tracks.base()[0])) continue;
      all.push_back({{model, ground.from}, ground, *h});
    }
  }
  return all;
}

std::optional<Candidate> ModelChoice::bestOf(const std::vector<Candidate>& candidates,
                                             double bound) {
  std::optional<Candidate> best;
  for (const Candidate& candidate : candidates) {
    if (isContradicted(candidate)) continue;
    const double least = best ? best->squaredError : bound;
    const double square = squaredError(candidate, least);
    if (!(square < least)) continue;
    best = candidate;
    best->squaredError = square;
  }
  return best;
}

std::optional<Candidate> ModelChoice::bestOnTopOf(const std::vector<Kept>& kept, double bound) {
  const std::vector<Candidate> candidates = candidatesOn(kept);
  if (!full_) bound = kInfinity;
  std::optional<Candidate> best = bestOf(candidates, bound);
  if (best || full_ || candidates.empty()) return best;
  double least = kInfinity;
  for (const Candidate& candidate : candidates) {
    const double pairs = static_cast<double>(pairsLeftBy(candidate));
    if (pairs > 0.0) least = std::min(least, squaresOf(candidate.h) / (2.0 * pairs));
  }
  noise_.sigma = std::max(noise_.sigma, std::sqrt(least));
  return bestOf(candidates, kInfinity);
}

}  // namespace cornerpin
