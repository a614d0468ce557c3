// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/robust_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "shot/fit/homography_fit.h"
#include "shot/fit/residuals.h"
#include "shot/plane/extent.h"
#include "shot/robust/chance.h"
#include "tests/shot/robust/random_errors.h"

using namespace cornerpin;

namespace {

constexpr unsigned kSeed = 20240712;

const Homography kView = {{{0.9, 0.2, 0.3}, {-0.25, 0.8, -0.2}, {0.12, -0.1, 1}}};

struct Shot {
  Matches matches;
  Prior prior;
};

// The first `bad` matches lie anywhere.
Shot shotWith(int good, int bad, double noise, unsigned seed) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return 2.0 * static_cast<double>(random()) / 4294967296.0 - 1.0; };
  Shot shot;
  for (int i = 0; i < good + bad; ++i) {
    const Point from = {uniform(), uniform()};
    Point to = map(kView, from);
    to = i < bad ? Point{1.2 * uniform(), 1.2 * uniform()}
                 : Point{to.x + noise * uniform(), to.y + noise * uniform()};
    shot.matches.add({from, to, 1.0});
    shot.prior.confidence.push_back(1.0);
  }
  return shot;
}

// Normal errors; the last `bad` matches lie anywhere.
Shot normalShot(int good, int bad, double noise, unsigned seed = kSeed) {
  std::mt19937 random(seed);
  const auto uniform = [&] { return (static_cast<double>(random()) + 0.5) / 4294967296.0; };
  Shot shot;
  for (int i = 0; i < good + bad; ++i) {
    const Point from = {2.0 * uniform() - 1.0, 2.0 * uniform() - 1.0};
    const double length = noise * std::sqrt(-2.0 * std::log(uniform()));
    const double angle = 6.283185307179586 * uniform();
    Point to = map(kView, from);
    to = {to.x + length * std::cos(angle), to.y + length * std::sin(angle)};
    if (i >= good) to = {2.0 * uniform() - 1.0, 2.0 * uniform() - 1.0};
    shot.matches.add({from, to, 1.0});
    shot.prior.confidence.push_back(1.0);
  }
  return shot;
}

double cornerError(const Homography& h) {
  double worst = 0.0;
  for (Point p : {Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}}) {
    const Point a = map(h, p);
    const Point b = map(kView, p);
    worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
  }
  return worst;
}

RobustFit fitOf(const Shot& shot, std::uint64_t seed = 1) {
  RobustOptions options;
  options.seed = seed;
  return fitRobustly(shot.matches, {{Stage::Neighbour, kIdentity}}, shot.prior, options);
}

}  // namespace

TEST(RobustFit, HoldsWithEightyPercentOfTheMatchesWrong) {
  for (unsigned seed = kSeed; seed < kSeed + 50; ++seed) {
    const RobustFit fit = fitOf(shotWith(20, 80, 2e-3, seed));
    ASSERT_TRUE(fit.found) << "seed " << seed;
    EXPECT_LT(cornerError(fit.h), 0.015) << "seed " << seed;
    EXPECT_NEAR(static_cast<double>(fit.goodCount), 20.0, 2.0);
  }
}

// However far it is, it does not say how widely strays are scattered.
TEST(RobustFit, HoldsBesideAMatchThatIsFlungFarAway) {
  for (double distance : {1e3, 1e7, 1e30}) {
    for (unsigned seed = kSeed; seed < kSeed + 20; ++seed) {
      Shot shot = shotWith(20, 80, 2e-3, seed);
      shot.matches.add({{0.5, 0.5}, {distance, 0.5}, 1.0});
      shot.prior.confidence.push_back(1.0);
      const RobustFit fit = fitOf(shot);
      ASSERT_TRUE(fit.found) << "seed " << seed;
      EXPECT_LT(cornerError(fit.h), 0.015) << distance << ", seed " << seed;
    }
  }
}

TEST(RobustFit, SamplesWhereThereIsNothingToStartFrom) {
  const Shot shot = shotWith(60, 20, 2e-3, kSeed);
  const RobustFit fit = fitRobustly(shot.matches, {}, shot.prior, {});
  EXPECT_EQ(fit.origin.stage, Stage::Sampled);
  EXPECT_LT(cornerError(fit.h), 5e-3);
}

TEST(RobustFit, HasTheSameBitsOnEveryRun) {
  const Shot shot = shotWith(30, 70, 2e-3, kSeed);
  const RobustFit first = fitOf(shot);
  const RobustFit second = fitOf(shot);
  EXPECT_EQ(std::memcmp(&first.h, &second.h, sizeof first.h), 0);
}

TEST(RobustFit, FindsTheSameSurfaceFromAnySeed) {
  const Shot shot = shotWith(40, 60, 2e-3, kSeed);
  const RobustFit first = fitOf(shot, 1);
  const RobustFit second = fitOf(shot, 987654321);
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(first.h[i / 3][i % 3], second.h[i / 3][i % 3], 1e-4);
  }
}

TEST(RobustFit, DrawsNoSamplesWhereTheNeighbourFits) {
  const Shot shot = shotWith(90, 10, 2e-3, kSeed);
  RobustOptions options;
  const RobustFit fit = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, options);
  EXPECT_EQ(fit.origin.stage, Stage::Neighbour);
  EXPECT_EQ(fit.goodCount, 90u);
  EXPECT_LT(cornerError(fit.h), 5e-3);
}

TEST(RobustFit, MeasuresTheSigmaOfTheGoodMatches) {
  const RobustFit fit = fitOf(normalShot(400, 100, 0.004));
  ASSERT_TRUE(fit.found);
  // 400 lengths: a standard error of some 4 %.
  EXPECT_NEAR(fit.sigma, 0.004, 0.0006);
  EXPECT_NEAR(static_cast<double>(fit.goodCount), 400.0, 4.0);
}

// No distance is given beforehand.
TEST(RobustFit, HoldsWhateverTheNoise) {
  for (double noise : {1e-4, 1e-3, 1e-2, 3e-2}) {
    const RobustFit fit = fitOf(normalShot(60, 30, noise));
    ASSERT_TRUE(fit.found) << noise;
    EXPECT_LT(cornerError(fit.h), 3.0 * noise) << noise;
  }
}

TEST(RobustFit, FitsAFrameWithoutASignOfABadTrackByPlainSquares) {
  Shot shot = normalShot(60, 0, 2e-3);
  shot.prior.recentSigma = 2e-3;
  const RobustFit fit = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, {});
  EXPECT_EQ(fit.origin.grounds, Grounds::NoBadTrack);
  EXPECT_EQ(fit.loss, Loss::None);
  EXPECT_EQ(fit.goodCount, 60u);
  const HomographyFit plain = fitHomography(shot.matches, kView);
  EXPECT_EQ(std::memcmp(&fit.h, &plain.h, sizeof fit.h), 0);
}

TEST(RobustFit, SearchesWhereTheSigmaGrowsOrATrackStandsOut) {
  const auto searched = [&](Shot shot) {
    shot.prior.recentSigma = 1e-3;
    const RobustFit fit = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, {});
    return fit.origin.grounds == Grounds::Searched;
  };
  EXPECT_FALSE(searched(normalShot(60, 0, 1e-3)));
  EXPECT_TRUE(searched(normalShot(60, 0, 2e-3)));
  EXPECT_TRUE(searched(normalShot(60, 1, 1e-3)));
}

// Half the tracks crept off by 40 times the noise of the others, some one way, some another.
TEST(RobustFit, FollowsTheHalfThatAgreesMoreClosely) {
  for (unsigned seed = kSeed; seed < kSeed + 20; ++seed) {
    const Shot all = normalShot(48, 0, 5e-4, seed);
    Shot shot;
    for (std::size_t i = 0; i < all.matches.size(); ++i) {
      Match m = all.matches[i];
      const double angle = 0.7 * static_cast<double>(i);
      if (i % 2 == 0)
        m.present = {m.present.x + 20e-3 * std::cos(angle), m.present.y + 20e-3 * std::sin(angle)};
      shot.matches.add(m);
      shot.prior.confidence.push_back(1.0);
    }
    shot.prior.recentSigma = 5e-4;
    const RobustFit fit = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, {});
    ASSERT_TRUE(fit.found) << seed;
    EXPECT_LT(cornerError(fit.h), 3e-3) << seed;
    EXPECT_NEAR(static_cast<double>(fit.goodCount), 24.0, 1.0) << seed;
  }
}

TEST(RobustFit, BendsEveryLossAtTheSigmaOfTheGoodTracks) {
  const Shot shot = normalShot(60, 20, 2e-3);
  for (Loss loss : {Loss::Tukey, Loss::Cauchy, Loss::Huber}) {
    RobustOptions options;
    options.loss = loss;
    const RobustFit fit =
        fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, options);
    ASSERT_TRUE(fit.found);
    EXPECT_EQ(fit.loss, loss);
    EXPECT_GT(fit.width, fit.sigma);
    EXPECT_LT(fit.width, 8.0 * fit.sigma);
    const HomographyFit again = fitHomography(shot.matches, fit.h, loss, fit.width);
    for (std::size_t i = 0; i < 9; ++i)
      EXPECT_NEAR(again.h[i / 3][i % 3], fit.h[i / 3][i % 3], 1e-7);
  }
}

// Three matches that a transform meets whatever they are say nothing of the others' errors.
TEST(RobustFit, TakesTheSigmaFromAllMatchesWhereAFewWeighMost) {
  const Point corners[] = {{-0.9, -0.8}, {0.9, -0.9}, {0.1, 0.9}};
  for (double heavy : {10.0, 1e3, 1e6}) {
    for (unsigned seed = kSeed; seed < kSeed + 10; ++seed) {
      const Shot all = normalShot(48, 12, 1e-3, seed);
      Shot shot;
      for (std::size_t i = 0; i < all.matches.size(); ++i) {
        Match m = all.matches[i];
        if (i < 3) {
          const Point on = map(kView, m.base);
          m.base = corners[i];
          const Point moved = map(kView, m.base);
          m.present = {m.present.x + moved.x - on.x, m.present.y + moved.y - on.y};
          m.weight = heavy;
        }
        shot.matches.add(m);
        shot.prior.confidence.push_back(m.weight);
      }
      const RobustFit fit = fitOf(shot);
      ASSERT_TRUE(fit.found) << heavy << " seed " << seed;
      // What the heavy ones are off by adds to the others.
      EXPECT_GT(fit.sigma, 0.7e-3) << heavy << " seed " << seed;
      EXPECT_LT(fit.sigma, 2e-3) << heavy << " seed " << seed;
      EXPECT_NEAR(static_cast<double>(fit.goodCount), 48.0, 3.0) << heavy << " seed " << seed;
    }
  }
}

// As a tracker leaves those that it lost; any place is met by all of them at once.
TEST(RobustFit, IsNotDrawnToMatchesThatStandAtOnePlace) {
  for (unsigned seed = kSeed; seed < kSeed + 20; ++seed) {
    const Shot all = normalShot(60, 0, 1e-3, seed);
    const Homography toOnePlace = {{{0, 0, 0.9}, {0, 0, 0.8}, {0, 0, 1}}};
    Shot shot;
    for (std::size_t i = 0; i < all.matches.size(); ++i) {
      Match m = all.matches[i];
      const Point on = map(kView, m.base);
      if (i < 36) m.present = {0.9 + m.present.x - on.x, 0.8 + m.present.y - on.y};
      shot.matches.add(m);
      shot.prior.confidence.push_back(1.0);
    }
    const RobustFit fit =
        fitRobustly(shot.matches, {{Stage::Library, toOnePlace}, {Stage::Neighbour, kIdentity}},
                    shot.prior, {});
    ASSERT_TRUE(fit.found) << "seed " << seed;
    EXPECT_LT(cornerError(fit.h), 6e-3) << "seed " << seed;
  }
}

TEST(RobustFit, IsNotDrawnToMatchesThatStandOnOneLine) {
  for (unsigned seed = kSeed; seed < kSeed + 20; ++seed) {
    const Shot all = normalShot(60, 0, 1e-3, seed);
    const Homography toOneLine = {{{0, 0, -1}, {0, 1, 0}, {0, 0, 1}}};
    Shot shot;
    for (std::size_t i = 0; i < all.matches.size(); ++i) {
      Match m = all.matches[i];
      if (i < 36) m.present.x += -1.0 - map(kView, m.base).x;
      shot.matches.add(m);
      shot.prior.confidence.push_back(1.0);
    }
    const RobustFit fit = fitRobustly(
        shot.matches, {{Stage::Library, toOneLine}, {Stage::Neighbour, kIdentity}}, shot.prior, {});
    ASSERT_TRUE(fit.found) << "seed " << seed;
    EXPECT_LT(cornerError(fit.h), 6e-3) << "seed " << seed;
  }
}

TEST(RobustFit, HoldsWithABadMatchBehindTheHorizonWhateverTheLoss) {
  Shot shot = normalShot(60, 10, 1e-3);
  shot.matches.add({{-20.0, 0.0}, {0.1, 0.2}, 1.0});
  shot.prior.confidence.push_back(1.0);
  ASSERT_LT(denominator(kView, {-20.0, 0.0}), 0.0);
  for (Loss loss : {Loss::Tukey, Loss::Cauchy, Loss::Huber}) {
    RobustOptions options;
    options.loss = loss;
    const RobustFit fit =
        fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, options);
    ASSERT_TRUE(fit.found) << static_cast<int>(loss);
    EXPECT_LT(cornerError(fit.h), 4e-3) << static_cast<int>(loss);
    EXPECT_EQ(fit.goodCount, 60u);
    EXPECT_FALSE(fit.good.back());
  }
}

TEST(RobustFit, CountsFewMatchesAllAlike) {
  const Shot shot = shotWith(5, 0, 0.01, kSeed);
  const RobustFit fit = fitOf(shot);
  ASSERT_TRUE(fit.found);
  EXPECT_EQ(fit.goodCount, 5u);
  const HomographyFit plain = fitHomography(shot.matches, kIdentity);
  EXPECT_EQ(std::memcmp(&fit.h, &plain.h, sizeof fit.h), 0);
}

TEST(RobustFit, SearchesFromSixMatchesOn) {
  EXPECT_EQ(fitOf(normalShot(5, 0, 1e-3)).origin.grounds, Grounds::TooFew);
  EXPECT_EQ(fitOf(normalShot(6, 0, 1e-3)).origin.grounds, Grounds::Searched);
}

TEST(RobustFit, FitsFewMatchesByPlainSquaresFromTheBetterStart) {
  const Shot shot = normalShot(5, 0, 1e-3);
  const Homography behind = {{{1, 0, 0}, {0, 1, 0}, {9, 9, 1}}};
  const RobustFit fit = fitRobustly(
      shot.matches, {{Stage::Library, behind}, {Stage::Neighbour, kView}}, shot.prior, {});
  ASSERT_TRUE(fit.found);
  EXPECT_EQ(fit.origin.stage, Stage::Neighbour);
  EXPECT_EQ(fit.loss, Loss::None);
  EXPECT_EQ(fit.width, 0.0);
}

TEST(RobustFit, HasNoSigmaWhereNothingIsFound) {
  const RobustFit fit = fitRobustly(normalShot(5, 0, 1e-3).matches, {}, {}, {});
  EXPECT_FALSE(fit.found);
  EXPECT_EQ(fit.sigma, 0.0);
}

namespace {

// By plain squares, as a frame without a sign of a bad track.
RobustFit plainFitOf(const Matches& matches, double recentSigma = 1.0) {
  Prior prior;
  prior.recentSigma = recentSigma;
  return fitRobustly(matches, {{Stage::Neighbour, kView}}, prior, {});
}

// The farthest error of the plain fit to 60 matches, in its sigmas.
double farthestOf(const Matches& matches) {
  const Homography h = fitHomography(matches, kView).h;
  double most = 0.0;
  for (std::size_t i = 0; i < 60; ++i) most = std::max(most, squaredResidual(matches[i], h));
  return std::sqrt(most / (weightedSquares(matches, h) / 112.0));
}

// Normal errors beside one of `distance`.
Matches withOneAt(double distance) {
  Matches matches = normalShot(59, 0, 1e-3).matches;
  const Point place = map(kView, {0.1, -0.1});
  matches.add({{0.1, -0.1}, {place.x + distance, place.y}});
  return matches;
}

// One of which the farthest error is as many sigmas of the plain fit.
Matches withFarthest(double sigmas) {
  double low = 0.0, high = 1e-2;
  for (int i = 0; i < 50; ++i) {
    const double middle = (low + high) / 2;
    (farthestOf(withOneAt(middle)) < sigmas ? low : high) = middle;
  }
  return withOneAt(high);
}

}  // namespace

TEST(RobustFit, TakesTheSigmaOfPlainSquaresFromWhatEightParametersLeave) {
  for (int count : {6, 7, 30}) {
    const Matches matches = normalShot(count, 0, 1e-2).matches;
    const RobustFit fit = plainFitOf(matches);
    ASSERT_EQ(fit.origin.grounds, Grounds::NoBadTrack) << count;
    const double squares = weightedSquares(matches, fit.h);
    EXPECT_NEAR(fit.sigma, std::sqrt(squares / (2.0 * count - 8.0)), 1e-9 * fit.sigma) << count;
  }
}

TEST(RobustFit, TakesTheSigmaOfFewMatchesFromAQuarterOfTheirCoordinates) {
  const Matches matches = normalShot(5, 0, 1e-1).matches;
  const RobustFit fit = plainFitOf(matches);
  ASSERT_GT(fit.sigma, 1e-3);
  EXPECT_NEAR(fit.sigma, std::sqrt(weightedSquares(matches, fit.h) / 2.5), 1e-9 * fit.sigma);
}

TEST(RobustFit, TakesTheSigmaOfPlainSquaresFromWeightsRelativeToTheirMean) {
  for (double unit : {1e-6, 1.0, 1e6}) {
    Matches matches;
    double weights = 0.0;
    for (const Shot shot = normalShot(20, 0, 1e-2); matches.size() < 20;) {
      Match m = shot.matches[matches.size()];
      m.weight = unit * (1.0 + static_cast<double>(matches.size() % 3));
      weights += m.weight * m.weight;
      matches.add(m);
    }
    const RobustFit fit = plainFitOf(matches);
    const double mean = weightedSquares(matches, fit.h) / weights;
    EXPECT_NEAR(fit.sigma, std::sqrt(mean * 20.0 / 32.0), 1e-9 * fit.sigma) << unit;
  }
}

TEST(RobustFit, HasASigmaOfAnEighthOfAPixelAtLeast) {
  // Over tracks 1,000 px wide, which are 2 wide here.
  EXPECT_EQ(plainFitOf(shotWith(20, 0, 0.0, kSeed).matches).sigma, 0.125 / 500.0);
}

TEST(RobustFit, SearchesWhereTheSigmaIsTwoStandardErrorsAboveTheRecentOne) {
  const Matches matches = normalShot(60, 0, 1e-3).matches;
  const double most = plainFitOf(matches).sigma / (1.0 + 2.0 / std::sqrt(112.0));
  EXPECT_EQ(plainFitOf(matches, 1.003 * most).origin.grounds, Grounds::NoBadTrack);
  EXPECT_EQ(plainFitOf(matches, 0.997 * most).origin.grounds, Grounds::Searched);
}

TEST(RobustFit, LooksForBadTracksByPlainSquaresFromTheFirstStartAlone) {
  Shot shot = normalShot(60, 0, 1e-3);
  shot.prior.recentSigma = 1e-3;
  const Start view = {Stage::Library, kView};
  const Start behind = {Stage::Neighbour, {{{1, 0, 0}, {0, 1, 0}, {9, 9, 1}}}};
  const auto groundsOf = [&](const std::vector<Start>& starts) {
    return fitRobustly(shot.matches, starts, shot.prior, {}).origin.grounds;
  };
  EXPECT_EQ(groundsOf({view, behind}), Grounds::NoBadTrack);
  EXPECT_EQ(groundsOf({behind, view}), Grounds::Searched);
}

// A normal error is longer than r sigmas with a chance of exp(-r^2 / 2), one of 60 with 60 times
// that: 1 in 1,000 at r^2 = 2 log 60,000.
TEST(RobustFit, SearchesWhereOneFrameInAThousandHasAnErrorAsLong) {
  const double farthest = std::sqrt(2.0 * std::log(60000.0));
  EXPECT_EQ(plainFitOf(withFarthest(0.9995 * farthest)).origin.grounds, Grounds::NoBadTrack);
  EXPECT_EQ(plainFitOf(withFarthest(1.0005 * farthest)).origin.grounds, Grounds::Searched);
}

TEST(RobustFit, BendsTheLossesAtSevenThreeAndOnePointSevenSigmasOfTheCore) {
  const Shot shot = normalShot(60, 20, 2e-3);
  MixtureSearch search(shot.matches, shot.prior);
  search.from({Stage::Neighbour, kView});
  search.fromSamples(1);
  const double core = search.best().errors.spread;
  for (const auto& [loss, sigmas] :
       {std::pair(Loss::Tukey, 7.0), std::pair(Loss::Cauchy, 3.0), std::pair(Loss::Huber, 1.7)}) {
    RobustOptions options;
    options.loss = loss;
    const RobustFit fit =
        fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, options);
    EXPECT_NEAR(fit.width, sigmas * core, 1e-12 * core) << nameOf(loss);
    EXPECT_EQ(fit.sigma, search.best().errors.sigma());
  }
}

TEST(RobustFit, SaysHowManyTheBestStartFits) {
  const Shot shot = normalShot(60, 20, 2e-3);
  const RobustFit fit = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, {});
  EXPECT_EQ(fit.origin.firstStage, Stage::Neighbour);
  EXPECT_EQ(fit.origin.firstGood, fit.goodCount);
  const RobustFit none = fitRobustly(shot.matches, {}, shot.prior, {});
  EXPECT_FALSE(none.origin.firstStage.has_value());
  EXPECT_EQ(none.origin.firstGood, 0u);
}

TEST(RobustFit, GoesOnFromAnotherStart) {
  const Shot shot = normalShot(60, 20, 2e-3);
  const AnotherStart none = []() -> std::optional<Start> { return std::nullopt; };
  const AnotherStart one = []() -> std::optional<Start> { return Start{Stage::Library, kView}; };
  EXPECT_FALSE(fitRobustly(shot.matches, {}, shot.prior, {}, none).origin.firstStage);
  EXPECT_EQ(fitRobustly(shot.matches, {}, shot.prior, {}, one).origin.firstStage, Stage::Library);
}

TEST(RobustFit, SaysHowManyTransformsChanceMakesAgreeAsMuch) {
  const Shot shot = normalShot(60, 20, 2e-3);
  const RobustFit searched = fitRobustly(shot.matches, {{Stage::Neighbour, kView}}, shot.prior, {});
  std::vector<double> squares;
  squaredResiduals(shot.matches, searched.h, squares);
  EXPECT_EQ(searched.origin.chance, chanceOf(squares, strayArea(shot.matches.present())));
  EXPECT_LT(searched.origin.chance, kMostByChance);

  const Matches clean = normalShot(60, 0, 1e-3).matches;
  const RobustFit plain = plainFitOf(clean);
  squaredResiduals(clean, plain.h, squares);
  const auto [low, high] = boxAround(clean.present());
  EXPECT_EQ(plain.origin.chance, chanceOf(60, 60, *std::max_element(squares.begin(), squares.end()),
                                          (high.x - low.x) * (high.y - low.y)));
}

// Each match lies anywhere: whatever transform is found, chance has made it.
TEST(RobustFit, SaysThatChanceAgreesWhereAllMatchesAreWrong) {
  errors::Random random(kSeed);
  for (int count : {12, 40}) {
    Matches matches;
    for (int i = 0; i < count; ++i) {
      const Point base = random.place();
      matches.add({base, random.place()});
    }
    const RobustFit fit = fitRobustly(matches, {}, {}, {});
    EXPECT_GT(fit.origin.chance, kMostByChance) << count;
    EXPECT_FALSE(fit.origin.budgetSpent) << "all quadruples are tried";
  }
}

TEST(RobustFit, SaysWhenTheSearchEndedBeforeItWasSure) {
  errors::Random random(kSeed);
  Matches matches;
  for (int i = 0; i < 150; ++i) {
    const Point base = random.place();
    matches.add({base, random.place()});
  }
  EXPECT_TRUE(fitRobustly(matches, {}, {}, {}).origin.budgetSpent);
}

TEST(RobustFit, CountsNoChanceWhereNothingTellsABadMatch) {
  const Matches matches = normalShot(5, 0, 1e-3).matches;
  EXPECT_TRUE(std::isnan(fitRobustly(matches, {{Stage::Library, kView}}, {}, {}).origin.chance));
}
