// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/sample_score.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "shot/fit/residuals.h"

namespace cornerpin {

namespace {

constexpr std::size_t kBlock = SampleScore::kBlock;
using Block = SampleScore::Block;

// The square of the distance from which on all errors are equally bad: as wide as the surface.
constexpr float kFarthest = 4.0F;

constexpr auto kFloatHorizon = static_cast<float>(kHorizon);

// The sum in an order that does not depend on how wide the processor adds.
float total(Block lanes) {
  for (std::size_t half = kBlock / 2; half > 0; half /= 2) {
    for (std::size_t i = 0; i < half; ++i) lanes[i] += lanes[i + half];
  }
  return lanes[0];
}

// Of positive numbers, the logarithms to base 2 above that of the least, within 0.09: the exponent,
// and the mantissa as if the logarithm were straight in between.
void roughLogs(Block& values, float least) {
  std::array<std::int32_t, kBlock> bits;
  std::int32_t lowest;
  std::memcpy(bits.data(), values.data(), sizeof bits);
  std::memcpy(&lowest, &least, sizeof lowest);
  for (std::size_t i = 0; i < kBlock; ++i) {
    values[i] = static_cast<float>(bits[i] - lowest) * 0x1p-23F;
  }
}

std::vector<float> padded(const double* values, std::size_t count) {
  std::vector<float> result((count + kBlock - 1) / kBlock * kBlock);
  for (std::size_t i = 0; i < count; ++i) result[i] = static_cast<float>(values[i]);
  return result;
}

}  // namespace

SampleScore::SampleScore(const Matches& matches, const std::vector<double>& votes, double least)
    : least_(static_cast<float>(least * least)),
      x_(padded(matches.base().x(), matches.size())),
      y_(padded(matches.base().y(), matches.size())),
      u_(padded(matches.present().x(), matches.size())),
      v_(padded(matches.present().y(), matches.size())),
      votes_(padded(votes.data(), matches.size())) {}

// One step over the whole block at a time: so compilers make wide instructions of each.
void SampleScore::squares(const std::array<float, 9>& m, std::size_t first, Block& result) const {
  const float* x = x_.data() + first;
  const float* y = y_.data() + first;
  const float* u = u_.data() + first;
  const float* v = v_.data() + first;
  Block s;
  for (std::size_t i = 0; i < kBlock; ++i) s[i] = m[6] * x[i] + m[7] * y[i] + m[8];
  for (std::size_t i = 0; i < kBlock; ++i) {
    const float t = 1.0F / s[i];
    const float dx = (m[0] * x[i] + m[1] * y[i] + m[2]) * t - u[i];
    const float dy = (m[3] * x[i] + m[4] * y[i] + m[5]) * t - v[i];
    result[i] = dx * dx + dy * dy;
  }
  for (std::size_t i = 0; i < kBlock; ++i) result[i] = s[i] > kFloatHorizon ? result[i] : kFarthest;
  for (std::size_t i = 0; i < kBlock; ++i)
    result[i] = result[i] < kFarthest ? result[i] : kFarthest;
}

double SampleScore::of(const Homography& h, double bound) const {
  std::array<float, 9> m;
  for (std::size_t e = 0; e < 9; ++e) m[e] = static_cast<float>(h[e / 3][e % 3]);
  Block lanes{};
  double score = 0.0;
  for (std::size_t first = 0; first < x_.size() && score <= bound; first += kBlock) {
    Block values;
    squares(m, first, values);
    const float* votes = votes_.data() + first;
    for (std::size_t i = 0; i < kBlock; ++i) values[i] += least_;
    roughLogs(values, least_);
    for (std::size_t i = 0; i < kBlock; ++i) lanes[i] += votes[i] * values[i];
    score = static_cast<double>(total(lanes));
  }
  return score;
}

}  // namespace cornerpin
