// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/shot_noise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "shot/plane/median.h"

namespace cornerpin {

namespace {

constexpr std::size_t kFewestFrames = 5;
constexpr double kDeviationOfMedian = 1.4826022185056018;  // over the median distance, if normal
constexpr double kMostAbove = 2.0;                         // standard errors

constexpr std::size_t kOfQuiet = 10;
constexpr double kQuietDeviations = 1.2815515655446004;  // below the mean lies a tenth of all
constexpr double kQuietFreedom = 16.0;

// The trigamma function is nearly 1 / x + 1 / (2 x^2): a tenth too low at 1, exact for large x.
double trigamma(double x) { return 1.0 / x + 0.5 / (x * x); }
double inverseTrigamma(double y) { return (1.0 + std::sqrt(1.0 + 2.0 * y)) / (2.0 * y); }

}  // namespace

NoiseEstimate shotNoise(const std::vector<NoiseEstimate>& frames) {
  std::vector<double> variances;
  std::vector<double> freedoms;
  variances.reserve(frames.size());
  freedoms.reserve(frames.size());
  double all = 0.0;
  for (const NoiseEstimate& frame : frames) {
    if (!(frame.freedom > 0.0) || !(frame.variance > 0.0)) continue;
    variances.push_back(frame.variance);
    freedoms.push_back(frame.freedom);
    all += frame.freedom;
  }
  if (variances.size() < kFewestFrames) return {};
  const double usual = lowerMedian(variances);
  for (double& variance : variances) variance = std::fabs(std::log(variance / usual));
  const double deviation = kDeviationOfMedian * lowerMedian(variances);
  const double own = deviation * deviation - trigamma(lowerMedian(freedoms) / 2.0);
  return {usual, own > 0.0 ? std::min(2.0 * inverseTrigamma(own), all) : all};
}

NoiseEstimate quietNoise(const std::vector<NoiseEstimate>& frames, const NoiseEstimate& likely) {
  std::vector<double> variances;
  variances.reserve(frames.size());
  for (const NoiseEstimate& frame : frames) {
    if (!(frame.freedom > 0.0) || !(frame.variance > 0.0)) continue;
    const double part = 2.0 / (9.0 * frame.freedom);
    const double root = 1.0 - part - kQuietDeviations * std::sqrt(part);
    variances.push_back(frame.variance / (root * root * root));
  }
  if (variances.size() < kFewestFrames) return likely;
  return {ranked(variances, variances.size() / kOfQuiet), kQuietFreedom};
}

NoiseEstimate pooled(const NoiseEstimate& frame, const NoiseEstimate& shot) {
  if (!(shot.freedom > 0.0)) return frame;
  if (!(frame.freedom > 0.0)) return shot;
  const double most = shot.variance * (1.0 + kMostAbove * std::sqrt(2.0 / frame.freedom));
  if (frame.variance > most) return frame;
  const double freedom = frame.freedom + shot.freedom;
  return {(frame.freedom * frame.variance + shot.freedom * shot.variance) / freedom, freedom};
}

double estimatedNoiseFactor(double freedom) { return freedom / 8.0 * std::expm1(8.0 / freedom); }

}  // namespace cornerpin
