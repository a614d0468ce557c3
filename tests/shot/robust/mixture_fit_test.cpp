// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/mixture_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240713;
constexpr double kTwoPi = 6.283185307179586;

const Homography kView = {{{0.9, 0.2, 0.3}, {-0.25, 0.8, -0.2}, {0.12, -0.1, 1}}};

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  double uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }
  // The length of a bivariate t error: its square over freedom and variance has the distribution
  // function 1 - (1 + q)^(-freedom / 2).
  double length(int freedom, double sigma) {
    const double q = std::pow(uniform(), -2.0 / freedom) - 1.0;
    return sigma * std::sqrt(freedom * q);
  }

 private:
  std::mt19937 engine_;
};

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
  const double scale = errors.normalSigma();
  double score = prior.lowSigma > 0.0 ? 4.0 * std::pow(prior.lowSigma / scale, 2) +
                                            8.0 * std::log(scale / errors.sigma)
                                      : -8.0 * std::log(errors.sigma);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const Point p = map(h, matches.base()[i]);
    const double r = std::hypot(p.x - matches.present()[i].x, p.y - matches.present()[i].y);
    const double near = std::pow(1.0 + r * r / (errors.freedom * std::pow(errors.sigma, 2)),
                                 -0.5 * (errors.freedom + 2)) /
                        (kTwoPi * std::pow(errors.sigma, 2));
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
  errors.sigma = 0.01;
  return errors;
}

Prior lowSigma(double sigma) {
  Prior prior;
  prior.lowSigma = sigma;
  return prior;
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
  EXPECT_NEAR(fit.errors.sigma, 4e-3, 3e-4);
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
    errors.sigma *= 1.0 + step;
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
      errors.sigma *= 1.0 + step;
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
  ASSERT_GT(fit.errors.sigma, 2.0 * kLikelySigma);
  EXPECT_NEAR(fit.score,
              scoreOf(matches, fit.h, fit.errors) + 8.0 * std::log(fit.errors.sigma / kLikelySigma),
              1e-6);
}

TEST(MixtureFit, ExpectsNoMoreThanWhatIsLikely) {
  const Matches matches = matchesWith(12, 2, 16, 4e-3);
  const MixtureFit likely = fitMixture(matches, kView, guess(matches, 16), lowSigma(kLikelySigma));
  const MixtureFit large =
      fitMixture(matches, kView, guess(matches, 16), lowSigma(10.0 * kLikelySigma));
  EXPECT_EQ(std::memcmp(&likely.h, &large.h, sizeof likely.h), 0);
  EXPECT_EQ(likely.score, large.score);
  const MixtureFit small =
      fitMixture(matches, kView, guess(matches, 16), lowSigma(0.1 * kLikelySigma));
  EXPECT_LT(small.errors.sigma, likely.errors.sigma);
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
  EXPECT_EQ(a.errors.sigma, b.errors.sigma);
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
  EXPECT_EQ(fit.errors.sigma, kSigmaFloor);
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
  EXPECT_NEAR(fit.errors.sigma, 1e-3, 3e-4);
}

TEST(StrayArea, IsThatOfTheBoxWithoutFarOffPlaces) {
  Matches matches;
  for (double x : {0.0, 1.0, 3.0}) {
    for (double y : {-1.0, 0.0, 0.5}) matches.add({{0.0, 0.0}, {x, y}, 1.0});
  }
  EXPECT_EQ(strayArea(matches.present()), 3.0 * 1.5);
  matches.add({{0.0, 0.0}, {1e30, -1e30}, 1.0});
  EXPECT_EQ(strayArea(matches.present()), 3.0 * 1.5);
}

// For normal errors it is the standard deviation; the t distribution with 16 degrees is nearly so.
TEST(ErrorModel, GivesTheScaleByTheMedianError) {
  for (int freedom : {1, 2, 4, 16}) {
    Random random(kSeed);
    std::vector<double> lengths;
    for (int i = 0; i < 20001; ++i) lengths.push_back(random.length(freedom, 0.01));
    std::nth_element(lengths.begin(), lengths.begin() + 10000, lengths.end());
    ErrorModel errors;
    errors.freedom = freedom;
    errors.sigma = 0.01;
    EXPECT_NEAR(errors.normalSigma(), lengths[10000] / std::sqrt(2.0 * std::log(2.0)),
                0.02 * errors.normalSigma());
  }
}
