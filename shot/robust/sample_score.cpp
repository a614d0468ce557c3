// SPDX-License-Identifier: BSD-3-Clause
#include "shot/robust/sample_score.h"

#include "shot/robust/sample_score.inc"

namespace cornerpin {

namespace {

std::vector<float> padded(const double* values, std::size_t count) {
  constexpr std::size_t kBlock = SampleScore::kBlock;
  std::vector<float> result((count + kBlock - 1) / kBlock * kBlock);
  for (std::size_t i = 0; i < count; ++i) result[i] = static_cast<float>(values[i]);
  return result;
}

}  // namespace

#ifdef CORNERPIN_X86_64
double sampleScoreAvx2(const SampleScoreInput& in, double bound);
#endif

const std::vector<SampleScoreVariant>& sampleScoreVariants() {
  static const std::vector<SampleScoreVariant> variants = [] {
    std::vector<SampleScoreVariant> available = {{"base", sampleScore}};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) available.push_back({"avx2", sampleScoreAvx2});
#endif
    return available;
  }();
  return variants;
}

SampleScore::SampleScore(const Matches& matches, const std::vector<double>& votes, double least)
    : SampleScore(matches, votes, least, sampleScoreVariants().back()) {}

SampleScore::SampleScore(const Matches& matches, const std::vector<double>& votes, double least,
                         const SampleScoreVariant& variant)
    : run_(variant.run),
      least_(static_cast<float>(least * least)),
      x_(padded(matches.base().x(), matches.size())),
      y_(padded(matches.base().y(), matches.size())),
      u_(padded(matches.present().x(), matches.size())),
      v_(padded(matches.present().y(), matches.size())),
      votes_(padded(votes.data(), matches.size())) {}

double SampleScore::of(const Homography& h, double bound) const {
  SampleScoreInput in = {x_.data(), y_.data(),     u_.data(), v_.data(),
                         x_.size(), votes_.data(), {},        least_};
  for (std::size_t e = 0; e < 9; ++e) in.h[e] = static_cast<float>(h[e / 3][e % 3]);
  return run_(in, bound);
}

}  // namespace cornerpin
