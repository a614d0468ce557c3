// SPDX-License-Identifier: BSD-3-Clause
#include "shot/trust/frame_figures.h"

#include <algorithm>
#include <cmath>

#include "shot/trust/jackknife.h"
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

FrameErrors errorsOf(const FrameFits& fits, const std::vector<Quad>& quads, Point front) {
  const Uncertainty uncertainty(fits);
  const CornerCovariances none = {kNoCovariance, kNoCovariance, kNoCovariance, kNoCovariance};
  FrameErrors errors{uncertainty.noise(), uncertainty.freedom(), {quads.size(), {none, none}}};
  if (fits.good().model == Model::Held || !uncertainty.isDetermined()) return errors;
  const Jackknife ofLast = Jackknife::ofLast(fits);
  const Jackknife jackknife = ofLast.isDetermined() ? ofLast : Jackknife::ofGood(fits);
  for (std::size_t q = 0; q < quads.size(); ++q) {
    for (std::size_t i = 0; i < 4; ++i) {
      const Point corner = quads[q][i];
      if (!onSameSide(fits.good().h, corner, front)) continue;
      errors.quads[q].ofOne[i] = uncertainty.unitCovarianceAt(corner);
      errors.quads[q].jackknife[i] = jackknife.covarianceAt(corner);
    }
  }
  return errors;
}

FrameFigures figuresOf(const FrameErrors& errors, const NoiseEstimate& shot) {
  FrameFigures figures{errors.noise, {}};
  figures.quads.reserve(errors.quads.size());
  const NoiseEstimate noise = pooled({errors.noise * errors.noise, errors.freedom}, shot);
  const double variance =
      noise.freedom > 0.0 ? noise.variance * estimatedNoiseFactor(noise.freedom) : kNoFigure;
  for (const FrameErrors::OfQuad& quad : errors.quads) {
    CornerCovariances covariances;
    for (std::size_t i = 0; i < 4; ++i) {
      const Symmetric2 ofNoise = times(variance, quad.ofOne[i]);
      const Symmetric2& other = quad.jackknife[i];
      covariances[i] = other.trace() > ofNoise.trace() ? other : ofNoise;
    }
    figures.quads.push_back(covariances);
  }
  return figures;
}

void takeJoint(const std::vector<Symmetric2>& joint, double lasting, const FrameErrors& errors,
               FrameFigures& figures) {
  const double variance = errors.noise * errors.noise;
  for (std::size_t q = 0; q < figures.quads.size(); ++q) {
    for (std::size_t i = 0; i < 4; ++i) {
      Symmetric2& covariance = figures.quads[q][i];
      const Symmetric2& all = joint[4 * q + i];
      const double own = variance * errors.quads[q].ofOne[i].trace();
      const double ownShare = own > 0.0 ? std::min(own / all.trace(), 1.0) : 0.0;
      const double beyond = own > 0.0 ? std::max(1.0 - own / covariance.trace(), 0.0) : 1.0;
      covariance =
          sum(times(ownShare + lasting * (1.0 - ownShare), all), times(beyond, covariance));
    }
  }
}

}  // namespace cornerpin
