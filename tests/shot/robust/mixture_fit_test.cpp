// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_fit.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <cstring>
#include <vector>

#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;
using errors::kTwoPi;
using errors::kView;
using errors::Random;

namespace {

constexpr std::uint32_t kSeed = 20240713;

// Over tracks 1,000 px wide, which are 2 wide here, an eighth of a pixel and half a one.
constexpr double kEighth = 0.125 / 500.0;
constexpr double kHalfPixel = 0.5 / 500.0;
// `strays` of the matches lie anywhere in the square of half width 1.
Matches matchesWith(int count, int strays, int freedom, double sigma, double weight = 1.0) {
  Random random(kSeed);
  Matches matches;
  for (int i = 0; i < count; ++i) {
    const Point from = {2.0 * random.uniform() - 1.0, 2.0 * random.uniform() - 1.0};
    Point to = map(kView, from);
    const double length = random.length(freedom, sigma);
    const double angle = kTwoPi * random.uniform();
    to = {to.x + length * std::cos(angle), to.y + length * std::sin(angle)};
    if (i < strays) to = {2.0 * random.uniform() - 1.0, 2.0 * random.uniform() - 1.0};
    matches.add({from, to, weight});
  }
  return matches;
}

// Minus the restricted logarithmic likelihood, as it is defined.
double scoreOf(const Matches& matches, const Homography& h, const ErrorModel& errors,
               const Prior& prior = {}) {
  Point low = matches.present()[0], high = low;
  double weights = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Point p = matches.present()[i];
    low = {std::fmin(low.x, p.x), std::fmin(low.y, p.y)};
    high = {std::fmax(high.x, p.x), std::fmax(high.y, p.y)};
    weights += std::pow(matches[i].weight, 2);
  }
  const double area = (high.x - low.x) * (high.y - low.y);
  const double scale = errors.sigma();
  double score = prior.lowSigma > 0.0 ? 4.0 * std::pow(prior.lowSigma / scale, 2) +
                                            8.0 * std::log(scale / errors.spread)
                                      : -8.0 * std::log(errors.spread);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Point p = map(h, matches.base()[i]);
    const double r = std::hypot(p.x - matches.present()[i].x, p.y - matches.present()[i].y);
    const double near = std::pow(1.0 + r * r / (errors.freedom * std::pow(errors.spread, 2)),
                                 -0.5 * (errors.freedom + 2)) /
                        (kTwoPi * std::pow(errors.spread, 2));
    score -= std::pow(matches[i].weight, 2) * static_cast<double>(matches.size()) / weights *
             std::log((prior.odds.empty() ? 1.0 : prior.odds[i]) * (1.0 - errors.strays) * near +
                      errors.strays / area);
  }
  return score;
}

ErrorModel guess(const Matches& matches, int freedom) {
  ErrorModel errors;
  errors.area = strayArea(matches.present());
  errors.freedom = freedom;
  errors.spread = 0.01;
  return errors;
}

Prior lowSigma(double sigma) {
  Prior prior;
  prior.lowSigma = sigma;
  return prior;
}

MixtureFit fitMixture(const Matches& matches, const Homography& start, const ErrorModel& errors,
                      const Prior& prior = {}) {
  return MixtureFitter(matches, prior).fit(start, errors);
}

MixtureFit settled(const Matches& matches, const MixtureFit& fit) {
  return MixtureFitter(matches, {}).settled(fit);
}

class MixtureFitOf : public testing::TestWithParam<int> {};

}  // namespace

TEST_P(MixtureFitOf, FindsTheParametersThatTheErrorsWereDrawnFrom) {
  const int freedom = GetParam();
  // Strays and the heaviest tails are hard to tell apart: a share of 0.2 reads as 0.14 then.
  const Matches matches = matchesWith(2000, freedom == 1 ? 0 : 400, freedom, 4e-3);
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, freedom));
  ASSERT_TRUE(fit.found);
  EXPECT_EQ(fit.errors.freedom, freedom);
  EXPECT_NEAR(fit.errors.spread, 4e-3, 3e-4);
  EXPECT_NEAR(fit.errors.strays, freedom == 1 ? 0.0 : 0.2, 0.03);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(fit.h[i / 3][i % 3], kView[i / 3][i % 3], 2e-3);
}

TEST_P(MixtureFitOf, ScoresTheRightDegreesOfFreedomBest) {
  const Matches matches = matchesWith(4000, 0, GetParam(), 4e-3);
  double best = INFINITY;
  int freedom = 0;
  for (int candidate : {1, 2, 4, 16}) {
    const MixtureFit fit = fitMixture(matches, kView, guess(matches, candidate));
    if (fit.score < best) best = fit.score, freedom = candidate;
  }
  EXPECT_EQ(freedom, GetParam());
}

TEST_P(MixtureFitOf, EndsWhereTheLikelihoodIsGreatest) {
  const Matches matches = matchesWith(60, 12, GetParam(), 5e-4);
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, GetParam()));
  ASSERT_TRUE(fit.found);
  EXPECT_NEAR(fit.score, scoreOf(matches, fit.h, fit.errors), 1e-6);
  // The strays are half a match more than the likelihood alone would have, and the rounds end
  // before the last digits: 0.03 is the change of sigma by a fortieth.
  for (double step : {-0.1, 0.1}) {
    ErrorModel errors = fit.errors;
    errors.spread *= 1.0 + step;
    EXPECT_LT(fit.score, scoreOf(matches, fit.h, errors) + 1e-3) << step;
    for (std::size_t i = 0; i < 8; ++i) {
      Homography h = fit.h;
      h[i / 3][i % 3] += step * 5e-4 * 3.0;
      EXPECT_LT(fit.score, scoreOf(matches, h, fit.errors) + 1e-3) << i << " " << step;
    }
  }
}

TEST_P(MixtureFitOf, EndsWhereTheLikelihoodIsGreatestGivenWhatIsKnown) {
  const Matches matches = matchesWith(24, 4, GetParam(), 5e-4);
  for (double scale : {2e-4, 5e-4, 9e-4}) {
    Prior prior;
    prior.lowSigma = scale;
    for (std::size_t i = 0; i < matches.size(); ++i) prior.odds.push_back(i < 4 ? 0.2 : 5.0);
    const MixtureFit fit = fitMixture(matches, kView, guess(matches, GetParam()), prior);
    ASSERT_TRUE(fit.found);
    EXPECT_NEAR(fit.score, scoreOf(matches, fit.h, fit.errors, prior), 1e-6);
    for (double step : {-0.1, 0.1}) {
      ErrorModel errors = fit.errors;
      errors.spread *= 1.0 + step;
      EXPECT_LT(fit.score, scoreOf(matches, fit.h, errors, prior) + 1e-3) << scale << " " << step;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Freedom, MixtureFitOf, testing::Values(1, 2, 4, 16));

// The eight parameters explain no more of errors above what is likely.
TEST(MixtureFit, LetsLargeErrorsEarnTheirSigma) {
  const Matches matches = matchesWith(60, 6, 2, 4e-3);
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, 2));
  ASSERT_TRUE(fit.found);
  ASSERT_GT(fit.errors.spread, 2.0 * kHalfPixel);
  EXPECT_NEAR(fit.score,
              scoreOf(matches, fit.h, fit.errors) + 8.0 * std::log(fit.errors.spread / kHalfPixel),
              1e-6);
}

TEST(MixtureFit, ExpectsNoMoreThanWhatIsLikely) {
  const Matches matches = matchesWith(12, 2, 16, 4e-3);
  const MixtureFit likely = fitMixture(matches, kView, guess(matches, 16), lowSigma(kHalfPixel));
  const MixtureFit large =
      fitMixture(matches, kView, guess(matches, 16), lowSigma(10.0 * kHalfPixel));
  EXPECT_EQ(std::memcmp(&likely.h, &large.h, sizeof likely.h), 0);
  EXPECT_EQ(likely.score, large.score);
  const MixtureFit small =
      fitMixture(matches, kView, guess(matches, 16), lowSigma(0.1 * kHalfPixel));
  EXPECT_LT(small.errors.spread, likely.errors.spread);
}

TEST(MixtureFit, LeansOnTheLikelierOfTwoMatchesThatDisagree) {
  Matches matches = matchesWith(40, 0, 16, 1e-3);
  const Point place = map(kView, {0.5, 0.5});
  matches.add({{0.5, 0.5}, {place.x + 5e-3, place.y}, 1.0});
  matches.add({{0.5, 0.5}, {place.x - 5e-3, place.y}, 1.0});
  const auto at = [&](double first, double second) {
    Prior prior;
    prior.odds.assign(matches.size(), 1.0);
    prior.odds[40] = first;
    prior.odds[41] = second;
    return map(fitMixture(matches, kView, guess(matches, 16), prior).h, {0.5, 0.5}).x;
  };
  EXPECT_GT(at(1.0, 1e-6), at(1.0, 1.0) + 1e-4);
  EXPECT_LT(at(1e-6, 1.0), at(1.0, 1.0) - 1e-4);
}

TEST(MixtureFit, DoesNotDependOnTheUnitOfTheWeights) {
  const Matches ones = matchesWith(80, 10, 2, 4e-3);
  const Matches halves = matchesWith(80, 10, 2, 4e-3, 0.5);
  const MixtureFit a = fitMixture(ones, kView, guess(ones, 2));
  const MixtureFit b = fitMixture(halves, kView, guess(halves, 2));
  EXPECT_EQ(std::memcmp(&a.h, &b.h, sizeof a.h), 0);
  EXPECT_EQ(a.errors.spread, b.errors.spread);
  EXPECT_EQ(a.score, b.score);
}

TEST(MixtureFit, LeansOnTheHeavierOfTwoMatchesThatDisagree) {
  Matches matches = matchesWith(40, 0, 16, 1e-3);
  const Point place = map(kView, {0.5, 0.5});
  matches.add({{0.5, 0.5}, {place.x + 2e-3, place.y}, 3.0});
  matches.add({{0.5, 0.5}, {place.x - 2e-3, place.y}, 0.3});
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, 16));
  EXPECT_GT(map(fit.h, {0.5, 0.5}).x, place.x);
}

TEST(MixtureFit, KeepsTheLeastScaleWhereEveryErrorIsZero) {
  const Matches matches = matchesWith(20, 0, 4, 0.0);
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, 4));
  ASSERT_TRUE(fit.found);
  EXPECT_EQ(fit.errors.spread, kEighth);
}

TEST(MixtureFit, FindsNothingInMatchesOnOneLine) {
  Matches matches;
  for (int i = 0; i < 20; ++i) matches.add({{0.1 * i - 1.0, 0.2}, {0.1 * i - 1.0, 0.2}, 1.0});
  EXPECT_FALSE(fitMixture(matches, kIdentity, guess(matches, 4)).found);
}

TEST(MixtureFit, CountsMatchesBehindTheHorizonAsStrays) {
  Matches matches = matchesWith(40, 0, 16, 1e-3);
  matches.add({{-20.0, 0.0}, {0.0, 0.0}, 1.0});
  ASSERT_LT(denominator(kView, {-20.0, 0.0}), 0.0);
  const MixtureFit fit = fitMixture(matches, kView, guess(matches, 16));
  ASSERT_TRUE(fit.found);
  EXPECT_NEAR(fit.errors.spread, 1e-3, 3e-4);
}

namespace {

// The rounds as they are meant, one after the other, each step by QR; at most `most` of them. All
// matches weigh the same and lie in front.
struct Plain {
  Homography h = kView;
  ErrorModel errors;
  int rounds = 0;
  bool settled = false;
};

// A round. Returns what it changes: eight elements of h in spreads, and the spread and the strays
// as shares of themselves.
Eigen::VectorXd plainRound(const Matches& matches, Plain& fit) {
  const auto n = static_cast<Eigen::Index>(matches.size());
  const double f = fit.errors.freedom;
  const double variance = std::pow(fit.errors.spread, 2);
  Eigen::MatrixXd jacobian(2 * n, 8);
  Eigen::VectorXd residuals(2 * n);
  double p = 0.0, u = 0.0, ur2 = 0.0;
  for (Eigen::Index i = 0; i < n; ++i) {
    const Match m = matches[static_cast<std::size_t>(i)];
    const Point q = map(fit.h, m.base);
    const double r2 = std::pow(q.x - m.present.x, 2) + std::pow(q.y - m.present.y, 2);
    const double good = (1.0 - fit.errors.strays) / (kTwoPi * variance) *
                        std::pow(1.0 + r2 / (f * variance), -0.5 * (f + 2.0));
    const double share = good / (good + fit.errors.strays / fit.errors.area);
    const double factor = share * (f + 2.0) / (f + r2 / variance);
    p += share;
    u += factor;
    ur2 += factor * r2;
    const double x = m.base.x, y = m.base.y;
    jacobian.row(2 * i) << x, y, 1, 0, 0, 0, -q.x * x, -q.x * y;
    jacobian.row(2 * i + 1) << 0, 0, 0, x, y, 1, -q.y * x, -q.y * y;
    jacobian.middleRows(2 * i, 2) *= std::sqrt(factor) / denominator(fit.h, m.base);
    residuals.segment(2 * i, 2) << m.present.x - q.x, m.present.y - q.y;
    residuals.segment(2 * i, 2) *= std::sqrt(factor);
  }
  const double remaining = std::fmax(2.0 * p - 8.0, p / 2.0);
  const double atRest = p + (2.0 * p - remaining) / f;
  const double spread = std::fmax(std::sqrt(ur2 * atRest / u / remaining), kEighth);
  const double count = static_cast<double>(n);
  const double strays = std::fmin((count - p + 0.5) / (count + 1.0), 0.95);
  const Eigen::VectorXd step = jacobian.colPivHouseholderQr().solve(residuals);
  Eigen::VectorXd change(10);
  change << step / spread, 1.0 - fit.errors.spread / spread, 1.0 - fit.errors.strays / strays;
  for (std::size_t i = 0; i < 8; ++i) fit.h[i / 3][i % 3] += step[static_cast<int>(i)];
  fit.errors.spread = spread;
  fit.errors.strays = strays;
  ++fit.rounds;
  return change;
}

bool isSettled(const Eigen::VectorXd& change, double same) {
  const double spread = std::fabs(change[8] / (1.0 - change[8]));  // of what it was before
  return spread <= same && change.head(8).cwiseAbs().maxCoeff() <= same;
}

Plain plainRounds(const Matches& matches, const MixtureFit& start, int most, double same) {
  Plain fit;
  fit.h = start.h;
  fit.errors = start.errors;
  while (fit.rounds < most && !fit.settled) fit.settled = isSettled(plainRound(matches, fit), same);
  return fit;
}

// As `MixtureFitter::fit` takes them: two changes in a row that are nearly parallel, the second
// `rate` times as long, are the first of a geometric series.
Plain leapingRounds(const Matches& matches, const ErrorModel& start, int most) {
  Plain fit;
  fit.errors = start;
  Eigen::VectorXd last = Eigen::VectorXd::Zero(10);
  while (fit.rounds < most) {
    const Eigen::VectorXd change = plainRound(matches, fit);
    fit.settled = isSettled(change, 3e-3);
    if (fit.settled) break;
    const double rate = change.dot(last) / std::fmax(last.squaredNorm(), 1e-300);
    const double cosine = rate * last.norm() / change.norm();
    const bool leaps = rate > 0.0 && rate < 1.0 && cosine > 0.9;
    last = leaps ? Eigen::VectorXd::Zero(10).eval() : change;
    if (!leaps) continue;
    const Eigen::VectorXd leap = change * std::fmin(rate / (1.0 - rate), 10.0);
    for (std::size_t i = 0; i < 8; ++i) {
      fit.h[i / 3][i % 3] += leap[static_cast<int>(i)] * fit.errors.spread;
    }
    fit.errors.spread = std::fmax(fit.errors.spread * std::fmax(1.0 + leap[8], 0.5), kEighth);
    fit.errors.strays = std::fmin(fit.errors.strays * std::fmax(1.0 + leap[9], 0.5), 0.95);
  }
  return fit;
}

// Rounds that do not settle carry the rounding of the first on and enlarge it.
void expectEnd(const MixtureFit& fit, const Plain& plain, double tolerance = 1e-7) {
  ASSERT_TRUE(fit.found);
  EXPECT_NEAR(fit.errors.spread, plain.errors.spread, tolerance * plain.errors.spread);
  EXPECT_NEAR(fit.errors.strays, plain.errors.strays, tolerance);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(fit.h[i / 3][i % 3], plain.h[i / 3][i % 3], tolerance * plain.errors.spread);
  }
}

}  // namespace

TEST_P(MixtureFitOf, TakesTheRoundsOneAfterTheOther) {
  const Matches matches = matchesWith(60, 12, GetParam(), 2e-3);
  const ErrorModel start = guess(matches, GetParam());
  const Plain plain = leapingRounds(matches, start, 60);
  EXPECT_TRUE(plain.settled);
  EXPECT_GT(plain.rounds, 3);
  expectEnd(fitMixture(matches, kView, start), plain);
}

// Errors of 34 matches, 27 of them strays, from a start that takes all for good.
TEST(MixtureFit, EndsAfterSixtyRoundsThatDoNotSettle) {
  const Matches matches = matchesWith(34, 27, 2, 2e-4);
  ErrorModel start = guess(matches, 2);
  start.spread = 0.3;
  const Plain plain = leapingRounds(matches, start, 60);
  EXPECT_FALSE(plain.settled);
  const double further = leapingRounds(matches, start, 61).errors.spread;
  ASSERT_GT(std::fabs(further - plain.errors.spread), 1e-5 * plain.errors.spread);
  expectEnd(fitMixture(matches, kView, start), plain, 1e-6);  // such rounds enlarge rounding
}

TEST(MixtureFit, AreAlikeWithinATwentiethOfTheSpread) {
  MixtureFit fit;
  fit.errors.spread = 2e-3;
  MixtureFit other = fit;
  EXPECT_TRUE(alike(other, fit));
  other.h[1][2] += 0.9e-4;
  other.errors.spread -= 0.9e-4;
  EXPECT_TRUE(alike(other, fit));
  other.h[1][2] += 0.2e-4;
  EXPECT_FALSE(alike(other, fit));
  other.h = fit.h;
  other.errors.spread -= 0.2e-4;
  EXPECT_FALSE(alike(other, fit));
  other = fit;
  other.errors.freedom = 4;
  EXPECT_FALSE(alike(other, fit));
}

TEST(MixtureFit, IsNotFoundWhereItComesByOneThatWasSeen) {
  const Matches matches = matchesWith(60, 12, 4, 2e-3);
  const ErrorModel start = guess(matches, 4);
  MixtureFitter fitter(matches, {});
  const MixtureFit end = fitter.fit(kView, start);
  MixtureFit otherwise = end;
  otherwise.errors.freedom = 16;
  MixtureFit elsewhere = end;
  elsewhere.h[0][2] += 3.0 * end.errors.spread;
  EXPECT_TRUE(fitter.fit(kView, start, {otherwise, elsewhere}).found);
  EXPECT_FALSE(fitter.fit(kView, start, {otherwise, end}).found);
}

TEST(MixtureFit, TakesNoMoreThanNineteenOfTwentyForStrays) {
  const Matches matches = matchesWith(300, 292, 16, 1e-3);
  ErrorModel start = guess(matches, 16);
  start.spread = 1e-3;
  EXPECT_EQ(fitMixture(matches, kView, start).errors.strays, 0.95);
}

// From starts on all sides, to the same end, where the likelihood falls on all sides.
TEST_P(MixtureFitOf, SettlesAtTheSameEndFromEveryStart) {
  const Matches matches = matchesWith(30, 6, GetParam(), 5e-4);
  ErrorModel start = guess(matches, GetParam());
  const MixtureFit first = settled(matches, fitMixture(matches, kView, start));
  for (double spread : {2e-4, 1e-3, 3e-3}) {
    start.spread = spread;
    Homography h = kView;
    h[0][2] += spread;
    const MixtureFit other = settled(matches, fitMixture(matches, h, start));
    ASSERT_TRUE(other.found);
    EXPECT_NEAR(other.errors.spread, first.errors.spread, 1e-6 * first.errors.spread);
    EXPECT_NEAR(other.score, scoreOf(matches, other.h, other.errors), 1e-6);
    for (std::size_t i = 0; i < 9; ++i) {
      EXPECT_NEAR(other.h[i / 3][i % 3], first.h[i / 3][i % 3], 1e-6 * first.errors.spread);
    }
  }
}

// A fit that ended where it creeps is taken on to where plain rounds lead from there.
TEST(MixtureFit, SettlesWhereItsFirstRoundsDidNot) {
  const Matches matches = matchesWith(34, 27, 2, 2e-4);
  ErrorModel start = guess(matches, 2);
  start.spread = 0.3;
  const MixtureFit fit = fitMixture(matches, kView, start);
  const MixtureFit end = settled(matches, fit);
  ASSERT_GT(std::fabs(end.errors.spread - fit.errors.spread), 1e-5 * fit.errors.spread);
  const Plain plain = plainRounds(matches, fit, 10000, 1e-12);
  ASSERT_TRUE(plain.settled);
  expectEnd(end, plain, 1e-6);
}
