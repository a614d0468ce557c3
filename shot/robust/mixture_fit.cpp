// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_fit.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "shot/fit/homography_fit.h"
#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
// A fit ends where a round changes the spread by less than `same` of it and h by less than `same`
// spreads. The bound on the rounds ends those that creep, where strays and heavy tails are hard to
// tell from each other.
struct End {
  double same;
  int mostRounds;
};
constexpr End kEnd = {3e-3, 60};  // far below what tells two fits apart
constexpr End kSettled = {1e-9, 1000};
constexpr double kMostStrays = 0.95;

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
         const Prior& prior, End end)
      : matches_(matches),
        end_(end),
        votes_(votesOf(matches)),
        odds_(prior.odds),
        lowSigma_(std::min(prior.lowSigma, kLikelySigma)),
        strayDensity_(1.0 / errors.area) {
    fit_.h = start;
    fit_.errors = errors;
    factors_.resize(matches.size());
    squaredWeights_.resize(matches.squaredWeights().size());
    odds_.resize(matches.size(), 1.0);
  }

  MixtureFit run() {
    for (int round = 0; round < end_.mostRounds; ++round) {
      squaredResiduals(matches_, fit_.h, squares_);
      const double spread = fit_.errors.spread;
      weigh();
      const bool settled = std::fabs(fit_.errors.spread - spread) <= end_.same * spread;
      for (std::size_t i = 0; i < factors_.size(); ++i) {
        squaredWeights_[i] = matches_.squaredWeights()[i] * factors_[i];
      }
      Homography next;
      if (!gaussNewtonStep(matches_, squaredWeights_, fit_.h, next)) return fit_;
      const double moved = distance(fit_.h, next);
      fit_.h = next;
      if (settled && moved <= end_.same * fit_.errors.spread) break;
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

  // Sets the factors of the squared weights, then the spread and the strays.
  //
  // With f the freedom, s the spread and q = r^2 / (f s^2), the expectation step gives each match
  // its share p, the odds that it is no stray, and the factor u = p (f + 2) / (f (1 + q)).
  void weigh() {
    ErrorModel& errors = fit_.errors;
    const double variance = errors.spread * errors.spread;
    const double freedom = errors.freedom;
    const double perSquare = 1.0 / (freedom * variance);
    const double density = (1.0 - errors.strays) / (kTwoPi * variance);
    const double strays = errors.strays * strayDensity_;
    double good = 0.0;           // sum of p
    double factorSum = 0.0;      // sum of u
    double factorSquares = 0.0;  // sum of u r^2
    for (std::size_t i = 0; i < squares_.size(); ++i) {
      factors_[i] = 0.0;
      if (!(squares_[i] < kInfinity)) continue;
      const double q = squares_[i] * perSquare;
      const double near = odds_[i] * density * tail(q, errors.freedom);
      const double share = near / (near + strays);
      factors_[i] = share * (freedom + 2.0) / (freedom * (1.0 + q));
      good += votes_[i] * share;
      factorSum += votes_[i] * factors_[i];
      factorSquares += votes_[i] * factors_[i] * squares_[i];
    }
    errors.spread = nextSpread(good, factorSum, factorSquares);
    // As if half a stray and half a good match had been seen before: the share is never 0.
    const double count = static_cast<double>(squares_.size());
    errors.strays = std::clamp((count - good + 0.5) / (count + 1.0), 0.0, kMostStrays);
  }

  // The maximisation step of the spread, in fewer rounds.
  //
  // Two coordinates for each good match, less the eight parameters, are the errors that remain to
  // tell the spread: D = 2 sum p - 8 (`remainingErrors`). With a prior the eight count as known
  // errors of size e. The plain step is
  //     s'^2 = (sum u r^2 + 8 e^2) / (D + 8).
  // It creeps where tails are heavy. Since u (1 + q) = p (f + 2) / f for each match,
  //     sum u + sum u r^2 / (f s^2) = (f + 2) / f sum p,
  // and where s stays as it is, the step says sum u r^2 / s^2 = D + 8 (1 - e^2 / s^2). There, then,
  //     sum u = sum p + (2 sum p - D - 8 (1 - e^2 / s^2)) / f.
  // That over the sum of u as it is here is a factor that is 1 where the step ends; multiplied into
  // sum u r^2 it gets there sooner. Without the eight parameters it makes the step
  // sum u r^2 / (2 sum u): C. Liu, D. B. Rubin, Y. N. Wu, "Parameter expansion to accelerate EM",
  // Biometrika 85 (1998).
  double nextSpread(double good, double factorSum, double factorSquares) const {
    const ErrorModel& errors = fit_.errors;
    const double variance = errors.spread * errors.spread;
    const double remaining = remainingErrors(good);
    // The low sigma, as a spread.
    const double low = lowSigma_ * errors.spread / errors.sigma();
    const double known = low > 0.0 ? kParameters : 0.0;
    const double squaresAtRest = std::max(remaining + known * (1.0 - low * low / variance), 0.0);
    const double factorsAtRest = good + (2.0 * good - squaresAtRest) / errors.freedom;
    const double square =
        (factorSquares * (factorsAtRest / factorSum) + known * low * low) / (remaining + known);
    return std::max(std::sqrt(square), kSigmaFloor);
  }

  // The score: with the density of a t distribution in the plane, (1 + q)^(-(f + 2) / 2) over
  // 2 pi s^2, a match's likelihood is (1 - strays) times that plus strays over the area.
  void judge() {
    const ErrorModel& errors = fit_.errors;
    const double variance = errors.spread * errors.spread;
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
    if (!(lowSigma_ > 0.0)) return -kParameters * std::log(std::min(errors.spread, kLikelySigma));
    const double part = lowSigma_ / errors.sigma();
    return kParameters * (0.5 * part * part + std::log(errors.sigma() / errors.spread));
  }

  const Matches& matches_;
  End end_;
  std::vector<double> votes_;
  std::vector<double> odds_;
  double lowSigma_;
  double strayDensity_;
  MixtureFit fit_;
  std::vector<double> squares_;
  std::vector<double> factors_;         // of the squared weights
  std::vector<double> squaredWeights_;  // times them, for the step
};

}  // namespace

MixtureFit fitMixture(const Matches& matches, const Homography& start, const ErrorModel& errors,
                      const Prior& prior) {
  return Fitter(matches, start, errors, prior, kEnd).run();
}

MixtureFit settled(const Matches& matches, const MixtureFit& fit, const Prior& prior) {
  return Fitter(matches, fit.h, fit.errors, prior, kSettled).run();
}

}  // namespace cornerpin
