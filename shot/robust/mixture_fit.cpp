// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_fit.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "shot/fit/homography_fit.h"

namespace cornerpin {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kParameters = 8.0;
constexpr int kMostRounds = 60;
constexpr double kSame = 3e-3;  // relative change of sigma, and change of h in sigmas
constexpr double kMostStrays = 0.95;
constexpr double kLeastArea = 1e-6;
constexpr std::size_t kFewestFullVotes = 8;

// (1 + q)^(-(freedom + 2) / 2)
double tail(double q, int freedom) {
  const double base = 1.0 / (1.0 + q);
  if (freedom == 1) return base * std::sqrt(base);
  double product = base;
  for (int power = 1; power < (freedom + 2) / 2; ++power) product *= base;
  return product;
}

class Fitter {
 public:
  Fitter(const Matches& matches, const Homography& start, const ErrorModel& errors,
         const Prior& prior)
      : matches_(matches),
        weighted_(matches),
        votes_(votesOf(matches)),
        odds_(prior.odds),
        expected_(std::min(prior.scale, kLikelyScale)),
        strayDensity_(1.0 / errors.area) {
    fit_.h = start;
    fit_.errors = errors;
    factors_.resize(matches.size());
    odds_.resize(matches.size(), 1.0);
  }

  CoreFit run() {
    for (int round = 0; round < kMostRounds; ++round) {
      squaredResiduals(matches_, fit_.h, squares_);
      const double sigma = fit_.errors.sigma;
      weigh();
      const bool settled = std::fabs(fit_.errors.sigma - sigma) <= kSame * sigma;
      weighted_.reweight(factors_);
      Homography next;
      if (!gaussNewtonStep(weighted_, fit_.h, next)) return fit_;
      const double moved = distance(fit_.h, next);
      fit_.h = next;
      if (settled && moved <= kSame * fit_.errors.sigma) break;
    }
    squaredResiduals(matches_, fit_.h, squares_);
    judge();
    return fit_;
  }

 private:
  static double distance(const Homography& a, const Homography& b) {
    double most = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) most = std::max(most, std::fabs(a[i][j] - b[i][j]));
    }
    return most;
  }

  // Sets the factors of the squared weights, then sigma and the strays.
  void weigh() {
    ErrorModel& errors = fit_.errors;
    const double variance = errors.sigma * errors.sigma;
    const double freedom = errors.freedom;
    const double perSquare = 1.0 / (freedom * variance);
    const double density = (1.0 - errors.strays) / (kTwoPi * variance);
    const double strays = errors.strays * strayDensity_;
    double good = 0.0;
    double sum = 0.0;
    double spread = 0.0;
    for (std::size_t i = 0; i < squares_.size(); ++i) {
      factors_[i] = 0.0;
      if (!(squares_[i] < kInfinity)) continue;
      const double q = squares_[i] * perSquare;
      const double near = odds_[i] * density * tail(q, errors.freedom);
      const double share = near / (near + strays);
      factors_[i] = share * (freedom + 2.0) / (freedom * (1.0 + q));
      good += votes_[i] * share;
      sum += votes_[i] * factors_[i];
      spread += votes_[i] * factors_[i] * squares_[i];
    }
    const double count = static_cast<double>(squares_.size());
    const double left = std::max(2.0 * good - kParameters, 0.5 * good);
    const double expected = expected_ * errors.sigma / errors.scale();
    const double known = expected > 0.0 ? kParameters : 0.0;
    // The sum of the factors where sigma stays, over their sum here: gets there sooner. `rest` is
    // spread over variance there.
    const double rest = std::max(left + known * (1.0 - expected * expected / variance), 0.0);
    const double haste = (good + (2.0 * good - rest) / freedom) / sum;
    const double square = (spread * haste + known * expected * expected) / (left + known);
    errors.sigma = std::max(std::sqrt(square), kScaleFloor);
    errors.strays = std::clamp((count - good + 0.5) / (count + 1.0), 0.0, kMostStrays);
  }

  void judge() {
    const ErrorModel& errors = fit_.errors;
    const double variance = errors.sigma * errors.sigma;
    const double perSquare = 1.0 / (errors.freedom * variance);
    const double density = (1.0 - errors.strays) / (kTwoPi * variance);
    double score = ofParameters();
    for (std::size_t i = 0; i < squares_.size(); ++i) {
      const double near = odds_[i] * density * tail(squares_[i] * perSquare, errors.freedom);
      score -= votes_[i] * std::log(near + errors.strays * strayDensity_);
    }
    fit_.found = std::isfinite(score) && isFinite(fit_.h);
    if (fit_.found) fit_.score = score;
  }

  // The score of the errors that the parameters explain by themselves.
  double ofParameters() const {
    const ErrorModel& errors = fit_.errors;
    if (!(expected_ > 0.0)) return -kParameters * std::log(std::min(errors.sigma, kLikelyScale));
    const double part = expected_ / errors.scale();
    return kParameters * (0.5 * part * part + std::log(errors.scale() / errors.sigma));
  }

  const Matches& matches_;
  Matches weighted_;
  std::vector<double> votes_;
  std::vector<double> odds_;
  double expected_;
  double strayDensity_;
  CoreFit fit_;
  std::vector<double> squares_;
  std::vector<double> factors_;
};

}  // namespace

double ErrorModel::scale() const {
  const double median = freedom * (std::exp2(2.0 / freedom) - 1.0);
  return sigma * std::sqrt(median / 1.3862943611198906);
}

CoreFit fitCore(const Matches& matches, const Homography& start, const ErrorModel& errors,
                const Prior& prior) {
  return Fitter(matches, start, errors, prior).run();
}

double strayArea(const Matches& matches) {
  std::vector<Point> places;
  places.reserve(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) places.push_back(matches.to(i));
  places = withoutFarOff(places);
  Point low = places.front();
  Point high = low;
  for (const Point& p : places) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
  }
  return std::max((high.x - low.x) * (high.y - low.y), kLeastArea);
}

std::vector<double> votesOf(const Matches& matches) {
  std::vector<double> votes(matches.w2(), matches.w2() + matches.size());
  const std::size_t full = std::min(std::max(votes.size() / 4, kFewestFullVotes), votes.size());
  std::vector<double> sorted = votes;
  const auto place = sorted.begin() + static_cast<std::ptrdiff_t>(full - 1);
  std::nth_element(sorted.begin(), place, sorted.end(), std::greater<>());
  double sum = 0.0;
  for (double& vote : votes) sum += vote = std::min(vote, *place);
  const double perVote = static_cast<double>(votes.size()) / sum;
  for (double& vote : votes) vote *= perVote;
  return votes;
}

void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares) {
  squares.resize(matches.size());
  const double* x = matches.x();
  const double* y = matches.y();
  const double* u = matches.u();
  const double* v = matches.v();
  for (std::size_t i = 0; i < squares.size(); ++i) {
    const double s = h[2][0] * x[i] + h[2][1] * y[i] + h[2][2];
    const double t = 1.0 / s;
    const double dx = (h[0][0] * x[i] + h[0][1] * y[i] + h[0][2]) * t - u[i];
    const double dy = (h[1][0] * x[i] + h[1][1] * y[i] + h[1][2]) * t - v[i];
    const double square = dx * dx + dy * dy;
    squares[i] = kInfinity;
    if (s > kHorizon) squares[i] = square;
  }
}

}  // namespace cornerpin
