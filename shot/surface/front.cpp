// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front.h"

namespace cornerpin {

namespace {

// Before the fixed frame has been, all places could move together, and so can those that nothing
// ties to it. This share of what a sighting says of its place lets them stay where they are; it is
// far above rounding, and far below what weak ties say.
constexpr double kDamping = 1e-11;

}  // namespace

Point EliminatedTrack::step(const FrontVector& placeSteps) const {
  Point step = {inverse.xx * gradient.x + inverse.xy * gradient.y,
                inverse.xy * gradient.x + inverse.yy * gradient.y};
  for (std::size_t i = 0; i < x.size(); ++i) {
    step.x -= x[i] * placeSteps[i];
    step.y -= y[i] * placeSteps[i];
  }
  return step;
}

Front::Front(std::size_t slots) : lower_(slots * (2 * slots + 1)), gradient_(2 * slots) {}

void Front::add(const FrameEquations& equations) {
  for (const FrameEquations::Sighting& s : equations.sightings()) {
    const std::size_t i = 2 * s.slot;
    row(i)[i] += s.c.xx * (1.0 + kDamping);
    row(i + 1)[i] += s.c.xy;
    row(i + 1)[i + 1] += s.c.yy * (1.0 + kDamping);
    gradient_[i] += s.gradient.x;
    gradient_[i + 1] += s.gradient.y;
  }
  if (!equations.isFree()) return;
  const double *y0 = equations.y(0), *y1 = equations.y(1), *y2 = equations.y(2),
               *y3 = equations.y(3), *y4 = equations.y(4), *y5 = equations.y(5),
               *y6 = equations.y(6), *y7 = equations.y(7);
  const Parameters& l = equations.l();
  for (std::size_t i = 0; i < equations.width(); ++i) {
    double* __restrict to = row(i);
    const double a0 = y0[i], a1 = y1[i], a2 = y2[i], a3 = y3[i];
    const double a4 = y4[i], a5 = y5[i], a6 = y6[i], a7 = y7[i];
    for (std::size_t j = 0; j <= i; ++j) {
      to[j] -= a0 * y0[j] + a1 * y1[j] + a2 * y2[j] + a3 * y3[j] + a4 * y4[j] + a5 * y5[j] +
               a6 * y6[j] + a7 * y7[j];
    }
    gradient_[i] -= a0 * l[0] + a1 * l[1] + a2 * l[2] + a3 * l[3] + a4 * l[4] + a5 * l[5] +
                    a6 * l[6] + a7 * l[7];
  }
}

// Row i of the whole matrix, which is left 0, as is the column.
void Front::take(std::size_t i, std::size_t width, std::vector<double>& into) {
  into.resize(width);
  for (std::size_t j = 0; j < width; ++j) {
    double& element = j <= i ? row(i)[j] : row(j)[i];
    into[j] = element;
    element = 0.0;
  }
}

EliminatedTrack Front::eliminate(std::size_t track, std::size_t slot, std::size_t extent) {
  EliminatedTrack result;
  result.track = track;
  result.slot = slot;
  const std::size_t i = 2 * slot, width = 2 * extent;
  result.gradient = {gradient_[i], gradient_[i + 1]};
  gradient_[i] = gradient_[i + 1] = 0.0;
  std::vector<double> u, v;  // the track's two rows
  take(i, width, u);
  take(i + 1, width, v);
  const double xx = u[i], xy = u[i + 1], yy = v[i + 1];
  u[i] = u[i + 1] = v[i] = v[i + 1] = 0.0;
  result.x.assign(width, 0.0);
  result.y.assign(width, 0.0);
  const double determinant = xx * yy - xy * xy;
  if (!(xx > 0.0 && determinant > 0.0)) return result;
  result.inverse = {yy / determinant, -xy / determinant, xx / determinant};
  const auto [ixx, ixy, iyy] = result.inverse;
  for (std::size_t j = 0; j < width; ++j) {
    result.x[j] = ixx * u[j] + ixy * v[j];
    result.y[j] = ixy * u[j] + iyy * v[j];
  }
  for (std::size_t k = 0; k < width; ++k) {
    double* __restrict to = row(k);
    const double a = u[k], b = v[k];
    for (std::size_t j = 0; j <= k; ++j) to[j] -= a * result.x[j] + b * result.y[j];
    gradient_[k] -= result.x[k] * result.gradient.x + result.y[k] * result.gradient.y;
  }
  return result;
}

}  // namespace cornerpin
