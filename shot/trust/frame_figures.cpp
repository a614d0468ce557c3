// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_figures.h"

#include <cmath>

#include "shot/trust/uncertainty.h"

namespace cornerpin {

namespace {

constexpr Symmetric2 kNoCovariance = {kNoFigure, kNoFigure, kNoFigure};

}  // namespace

std::array<double, 4> FrameFigures::deviations(std::size_t quad) const {
  std::array<double, 4> deviations;
  deviations.fill(kNoFigure);
  for (std::size_t i = 0; i < 4 && quad < quads.size(); ++i) {
    deviations[i] = std::sqrt(quads[quad][i].trace());
  }
  return deviations;
}

FrameFigures baseFrameFigures(std::size_t quads) {
  return {kNoFigure, std::vector<CornerCovariances>(quads)};
}

FrameFigures figuresOf(const Matches& matches, const FittedFrame& fitted,
                       const std::vector<Quad>& quads, Point front) {
  const Uncertainty uncertainty(matches, fitted);
  FrameFigures figures{uncertainty.noise(), std::vector<CornerCovariances>(quads.size())};
  for (std::size_t q = 0; q < quads.size(); ++q) {
    for (std::size_t i = 0; i < 4; ++i) {
      const bool seen = onSameSide(fitted.h, quads[q][i], front);
      figures.quads[q][i] = seen ? uncertainty.covarianceAt(quads[q][i]) : kNoCovariance;
    }
  }
  return figures;
}

}  // namespace cornerpin
