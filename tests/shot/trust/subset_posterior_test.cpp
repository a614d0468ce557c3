// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/subset_posterior.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <vector>

#include "shot/fit/homography_fit.h"
#include "shot/trust/uncertainty.h"
#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

constexpr double kPi = 3.141592653589793;
const Point kCorner = {950, 40};
const Homography kTilted = {{{1.1, 0.12, 30}, {-0.15, 0.95, -20}, {2e-4, -1e-4, 1}}};

// A frame and how it was fitted: to all tracks but those that are `off`.
struct Frame {
  Matches matches;
  FittedFrame fitted;
  std::vector<double> missed;
};

Frame fittedTo(const std::vector<Match>& tracks, const std::vector<bool>& off) {
  Frame frame;
  Matches good;
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    frame.matches.add(tracks[i]);
    if (!off[i]) good.add(tracks[i]);
    frame.fitted.weights.push_back(off[i] ? 0.0 : tracks[i].weight);
  }
  frame.fitted.h = fitHomography(good, kTilted).h;
  frame.fitted.placeNoise = 0.0;
  frame.missed.assign(tracks.size(), 0.0);
  return frame;
}

// All over the surface, with noise of half a pixel.
std::vector<Match> spread(int count, std::uint32_t seed, double leastWeight = 1.0) {
  made::Random random(seed);
  std::vector<Match> tracks;
  for (int i = 0; i < count; ++i) {
    Match match;
    match.base.x = random.real(0, 1000);
    match.base.y = random.real(0, 600);
    match.present = map(kTilted, match.base);
    match.present.x += random.noise(0.5);
    match.present.y += random.noise(0.5);
    match.weight = random.real(leastWeight, 1.0);
    match.track = i;
    tracks.push_back(match);
  }
  return tracks;
}

double deviationOf(const Frame& frame, const NoiseEstimate& noise) {
  const SubsetPosterior posterior(frame.matches, frame.fitted, noise, frame.missed);
  EXPECT_TRUE(posterior.isKnown());
  return std::sqrt(posterior.covarianceAt(kCorner).trace());
}

// The derivatives of an image by the first eight elements of the transform, by differences. The
// elements have the sizes that their effects on a picture 1,000 wide have.
Eigen::Matrix<double, 2, 8> slopes(const Homography& h, Point p) {
  Eigen::Matrix<double, 2, 8> result;
  for (std::size_t k = 0; k < 8; ++k) {
    const double step = k >= 6 ? 1e-9 : (k % 3 == 2 ? 1e-3 : 1e-6);
    const double unit = k >= 6 ? 1e-6 : (k % 3 == 2 ? 1.0 : 1e-3);
    Homography more = h;
    Homography less = h;
    more[k / 3][k % 3] += step;
    less[k / 3][k % 3] -= step;
    const Point a = map(more, p);
    const Point b = map(less, p);
    result(0, static_cast<Eigen::Index>(k)) = unit * (a.x - b.x) / (2.0 * step);
    result(1, static_cast<Eigen::Index>(k)) = unit * (a.y - b.y) / (2.0 * step);
  }
  return result;
}

using Parameters8 = Eigen::Matrix<double, 8, 1>;
using Normal8 = Eigen::Matrix<double, 8, 8>;

// What a frame shows, in pixels.
struct Sights {
  explicit Sights(const Frame& frame);

  std::vector<Eigen::Matrix<double, 2, 8>> s;
  std::vector<Eigen::Vector2d> r;
  std::vector<double> w2;
  double reach2 = 0.0;
};

Sights::Sights(const Frame& frame) {
  double goodWeights = 0.0;
  double good = 0.0;
  double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
  for (std::size_t i = 0; i < frame.matches.size(); ++i) {
    const Match m = frame.matches[i];
    const Point q = map(frame.fitted.h, m.base);
    s.push_back(slopes(frame.fitted.h, m.base));
    r.emplace_back(m.present.x - q.x, m.present.y - q.y);
    w2.push_back(m.weight * m.weight);
    if (frame.fitted.weights[i] > 0.0) goodWeights += w2.back(), good += 1.0;
    left = std::min(left, m.present.x), right = std::max(right, m.present.x);
    top = std::min(top, m.present.y), bottom = std::max(bottom, m.present.y);
  }
  for (double& w : w2) w *= good / goodWeights;
  reach2 = (right - left) * (right - left) + (bottom - top) * (bottom - top);
}

// Of one subset: the logarithm of its probability, and the mean square at the corner.
struct Subset {
  double log = 0.0;
  Eigen::Matrix2d square;
};

// The tracks whose bits are set are off.
Subset subsetOf(const Frame& frame, const Sights& all, const NoiseEstimate& noise, unsigned bits) {
  const std::size_t count = all.s.size();
  const auto isOff = [&](std::size_t i) { return (bits >> i & 1u) != 0; };
  Normal8 normal = Normal8::Zero();
  Parameters8 gradient = Parameters8::Zero();
  double on = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (isOff(i)) continue;
    on += 1.0;
    normal += all.w2[i] * all.s[i].transpose() * all.s[i];
    gradient += all.w2[i] * all.s[i].transpose() * all.r[i];
  }
  const Normal8 inverse = normal.ldlt().solve(Normal8::Identity());
  const Parameters8 step = inverse * gradient;
  const auto distance2 = [&](std::size_t i) { return (all.r[i] - all.s[i] * step).squaredNorm(); };
  const double f = noise.freedom;
  const double m = 2.0 * on - 8.0;
  double sum = f * noise.variance;
  for (std::size_t i = 0; i < count; ++i) {
    if (!isOff(i)) sum += all.w2[i] * distance2(i);
  }
  Subset subset;
  subset.log = std::lgamma((f + m) / 2) - (f + m) / 2 * std::log(sum) - m / 2 * std::log(kPi) -
               0.5 * std::log(normal.determinant());
  subset.log += std::lgamma(static_cast<double>(count) - on + 1.0) + std::lgamma(on + 1.0);
  const double variance = sum / (f + m);
  for (std::size_t i = 0; i < count; ++i) {
    if (!isOff(i)) {
      subset.log += std::log(all.w2[i]);
      continue;
    }
    const double least =
        variance * (2.0 / all.w2[i] + (all.s[i] * inverse * all.s[i].transpose()).trace());
    subset.log += std::log(1.0 + 20.0 * frame.missed[i]) -
                  std::log(kPi * std::log(1.0 + all.reach2 / least) * (distance2(i) + least));
  }
  const Eigen::Matrix<double, 2, 8> corner = slopes(frame.fitted.h, kCorner);
  const Eigen::Vector2d move = corner * step;
  subset.square = move * move.transpose() + variance * corner * inverse * corner.transpose();
  return subset;
}

// Of the subsets, each fitted by itself.
Eigen::Matrix2d meanOver(const std::vector<unsigned>& which, const Frame& frame,
                         const NoiseEstimate& noise) {
  const Sights all(frame);
  std::vector<Subset> subsets;
  double most = -1e300;
  for (unsigned bits : which) {
    subsets.push_back(subsetOf(frame, all, noise, bits));
    most = std::max(most, subsets.back().log);
  }
  double total = 0.0;
  Eigen::Matrix2d mean = Eigen::Matrix2d::Zero();
  for (const Subset& subset : subsets) {
    total += std::exp(subset.log - most);
    mean += std::exp(subset.log - most) * subset.square;
  }
  return mean / total;
}

// Of at least five tracks.
std::vector<unsigned> allSubsets(std::size_t tracks) {
  std::vector<unsigned> subsets;
  for (unsigned bits = 0; bits < 1u << tracks; ++bits) {
    std::size_t off = 0;
    for (std::size_t i = 0; i < tracks; ++i) off += bits >> i & 1u;
    if (tracks - off >= 5) subsets.push_back(bits);
  }
  return subsets;
}

}  // namespace

TEST(SubsetPosterior, IsTheMeanOverAllSubsetsButUnlikelyOnes) {
  for (std::uint32_t seed = 1; seed <= 6; ++seed) {
    std::vector<Match> tracks = spread(8, seed, 0.5);
    tracks[2].present.x += 2.0 * seed;
    std::vector<bool> off(8);
    off[5] = seed % 2 == 0;
    Frame frame = fittedTo(tracks, off);
    frame.missed[2] = 0.4;
    const NoiseEstimate noise = {0.3, 12.0};
    const Eigen::Matrix2d plain = meanOver(allSubsets(frame.matches.size()), frame, noise);
    const SubsetPosterior posterior(frame.matches, frame.fitted, noise, frame.missed);
    ASSERT_TRUE(posterior.isKnown());
    const Symmetric2 c = posterior.covarianceAt(kCorner);
    const double allowed = 0.05 * plain.trace();
    EXPECT_NEAR(c.xx, plain(0, 0), allowed) << seed;
    EXPECT_NEAR(c.xy, plain(0, 1), allowed) << seed;
    EXPECT_NEAR(c.yy, plain(1, 1), allowed) << seed;
  }
}

TEST(SubsetPosterior, HoldsWhatAnotherSubsetSaysThatFitsAsWell) {
  // The fit has taken the track in the corner for a good one and one of the others for a bad one.
  std::vector<Match> tracks = spread(7, 3);
  tracks[0].base = {980, 20};
  tracks[0].present = map(kTilted, tracks[0].base);
  tracks[0].present.x += 12.0;
  tracks[0].present.y -= 8.0;
  for (std::size_t victim = 1; victim < 7; ++victim) {
    std::vector<bool> off(7);
    off[victim] = true;
    const Frame frame = fittedTo(tracks, off);
    const Point p = map(frame.fitted.h, kCorner);
    const Point q = map(kTilted, kCorner);
    const double error = std::hypot(p.x - q.x, p.y - q.y);
    EXPECT_GT(2.0 * deviationOf(frame, {0.25, 16}), error) << victim;
    // By the noise of the good tracks alone it would not.
    EXPECT_GT(error, 2.0 * Uncertainty(frame.matches, frame.fitted).deviationAt(kCorner)) << victim;
  }
}

TEST(SubsetPosterior, BelievesInATrackTheLessTheMoreOftenItIsOff) {
  std::vector<Match> tracks = spread(9, 4);
  tracks[6].base = {940, 50};
  tracks[6].present = map(kTilted, tracks[6].base);
  Frame frame = fittedTo(tracks, std::vector<bool>(9));
  const double never = deviationOf(frame, {0.25, 16});
  frame.missed[6] = 0.3;
  const double sometimes = deviationOf(frame, {0.25, 16});
  frame.missed[6] = 1.0;
  const double always = deviationOf(frame, {0.25, 16});
  EXPECT_LT(never, sometimes);
  EXPECT_LT(sometimes, always);
}

TEST(SubsetPosterior, AmongManyTracksAsksWhereTheShotIsOfAnotherOpinion) {
  std::vector<Match> tracks = spread(20, 5);
  for (std::size_t i = 0; i < 6; ++i) {
    const double t = static_cast<double>(i);
    tracks[i].base = {940.0 - 60.0 * t, 30.0 + 15.0 * t * t};
    tracks[i].present = map(kTilted, tracks[i].base);
    tracks[i].present.x += 6.0;
  }
  Frame frame = fittedTo(tracks, std::vector<bool>(20));
  const NoiseEstimate noise = {0.25, 16};
  const auto isKnown = [&] {
    return SubsetPosterior(frame.matches, frame.fitted, noise, frame.missed).isKnown();
  };
  EXPECT_FALSE(isKnown());
  for (std::size_t i = 0; i < 6; ++i) frame.missed[i] = 0.5;
  EXPECT_FALSE(isKnown());  // as often on as off
  for (std::size_t i = 0; i < 6; ++i) frame.missed[i] = 0.6;
  ASSERT_TRUE(isKnown());
  // The others agree much better: the deviation is the distance from where they put the corner.
  std::vector<bool> off(20);
  for (std::size_t i = 0; i < 6; ++i) off[i] = true;
  const Point others = map(fittedTo(tracks, off).fitted.h, kCorner);
  const Point own = map(frame.fitted.h, kCorner);
  const double distance = std::hypot(others.x - own.x, others.y - own.y);
  EXPECT_GT(distance, 3.0);
  EXPECT_NEAR(deviationOf(frame, noise) / distance, 1.0, 0.1);
  // Where the frame does without them too, there is nothing to ask.
  const std::vector<double> missed = frame.missed;
  frame = fittedTo(tracks, off);
  frame.missed = missed;
  EXPECT_FALSE(isKnown());
  // Tracks that are off elsewhere may be good here: to leave them out would cost more.
  frame = fittedTo(spread(20, 5), std::vector<bool>(20));
  for (std::size_t i = 0; i < 6; ++i) frame.missed[i] = 0.6;
  const double alone = Uncertainty(frame.matches, frame.fitted).deviationAt(kCorner);
  ASSERT_TRUE(isKnown());
  EXPECT_NEAR(deviationOf(frame, noise) / alone, 1.0, 0.2);
}

// The frame does without track 0, the shot without 1 and 2.
TEST(SubsetPosterior, AmongManyTracksIsTheMeanOverThreeSubsets) {
  std::vector<Match> tracks = spread(20, 3, 0.5);
  tracks[0].present.x += 5.0;
  tracks[1].present.y += 1.5;
  std::vector<bool> off(20);
  off[0] = true;
  Frame frame = fittedTo(tracks, off);
  frame.missed[1] = frame.missed[2] = 0.6;
  for (double missed : {0.0, 0.3}) {
    frame.missed[0] = missed;
    const NoiseEstimate noise = {0.3, 12.0};
    const Eigen::Matrix2d plain = meanOver({0b110, 0b001, 0b111}, frame, noise);
    const SubsetPosterior posterior(frame.matches, frame.fitted, noise, frame.missed);
    ASSERT_TRUE(posterior.isKnown());
    const Symmetric2 c = posterior.covarianceAt(kCorner);
    const double allowed = 1e-5 * plain.trace();
    EXPECT_NEAR(c.xx, plain(0, 0), allowed);
    EXPECT_NEAR(c.xy, plain(0, 1), allowed);
    EXPECT_NEAR(c.yy, plain(1, 1), allowed);
  }
}

TEST(SubsetPosterior, NeedsATrackToLeaveOutAndAnIdeaOfTheNoise) {
  const Frame five = fittedTo(spread(5, 6), std::vector<bool>(5));
  EXPECT_FALSE(SubsetPosterior(five.matches, five.fitted, {0.25, 16}, five.missed).isKnown());
  const Frame six = fittedTo(spread(6, 6), std::vector<bool>(6));
  EXPECT_TRUE(SubsetPosterior(six.matches, six.fitted, {0.25, 16}, six.missed).isKnown());
  EXPECT_FALSE(SubsetPosterior(six.matches, six.fitted, {}, six.missed).isKnown());
}
