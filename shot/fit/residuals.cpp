// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/residuals.h"

#include <cmath>
#include <limits>

#include "shot/fit/residuals.inc"

namespace cornerpin {

#ifdef CORNERPIN_X86_64
void squaresAvx2(const SquaresInput& in, double* squares);
void squaresAvx512(const SquaresInput& in, double* squares);
#endif

double weightedSquares(const Matches& matches, const Homography& h) {
  double sum = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    sum += matches.squaredWeights()[i] * squaredResidual(matches[i], h);
  }
  return sum;
}

double rmsResidual(const Matches& matches, const Homography& h) {
  double squares = 0.0;
  for (std::size_t i = 0; i < matches.size(); ++i) squares += squaredResidual(matches[i], h);
  const double rms = std::sqrt(squares / static_cast<double>(matches.size()));
  return std::isfinite(rms) ? rms : std::numeric_limits<double>::quiet_NaN();
}

const std::vector<SquaresVariant>& squaresVariants() {
  static const std::vector<SquaresVariant> variants = [] {
    std::vector<SquaresVariant> available = {{"base", squaresOf}};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) available.push_back({"avx2", squaresAvx2});
    if (__builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")) {
      available.push_back({"avx512", squaresAvx512});
    }
#endif
    return available;
  }();
  return variants;
}

SquaresInput squaresInput(const Matches& matches, const Homography& h) {
  SquaresInput in = {matches.base().x(),    matches.base().y(),          matches.present().x(),
                     matches.present().y(), matches.base().paddedSize(), {}};
  for (std::size_t i = 0; i < 9; ++i) in.h[i] = h[i / 3][i % 3];
  return in;
}

void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares,
                      const SquaresVariant& variant) {
  const SquaresInput in = squaresInput(matches, h);
  squares.resize(in.count);
  variant.run(in, squares.data());
  squares.resize(matches.size());
}

void squaredResiduals(const Matches& matches, const Homography& h, std::vector<double>& squares) {
  static const SquaresVariant fastest = squaresVariants().back();
  squaredResiduals(matches, h, squares, fastest);
}

}  // namespace cornerpin
