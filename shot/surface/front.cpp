// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front.h"

#include <algorithm>

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
  const std::size_t width = std::min(stride(), placeSteps.size());
  for (std::size_t i = 0; i < width; ++i) {
    step.x -= x()[i] * placeSteps[i];
    step.y -= y()[i] * placeSteps[i];
  }
  return step;
}

Front::Front(std::size_t slots) : lower_(triangleRow(2 * slots)), gradient_(2 * slots) {}

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
  const double* y = equations.y(0);
  const std::size_t stride = equations.stride(), width = equations.width();
  fastestFrontProducts().subtractEight(y, y, stride, width, lower_.data());
  const Parameters& l = equations.l();
  for (std::size_t i = 0; i < width; ++i) {
    double sum = y[i] * l[0];
    for (std::size_t k = 1; k < 8; ++k) sum += y[k * stride + i] * l[k];
    gradient_[i] -= sum;
  }
}

// Row i of the whole matrix, which is left 0, as is the column.
void Front::take(std::size_t i, std::size_t width, double* into) {
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
  const std::size_t i = 2 * slot, width = 2 * extent, stride = paddedWidth(width);
  result.gradient = {gradient_[i], gradient_[i + 1]};
  gradient_[i] = gradient_[i + 1] = 0.0;
  result.rows.assign(2 * stride, 0.0);
  taken_.assign(2 * stride, 0.0);
  double *u = taken_.data(), *v = u + stride;  // the track's two rows
  take(i, width, u);
  take(i + 1, width, v);
  const double xx = u[i], xy = u[i + 1], yy = v[i + 1];
  u[i] = u[i + 1] = v[i] = v[i + 1] = 0.0;
  const double determinant = xx * yy - xy * xy;
  if (!(xx > 0.0 && determinant > 0.0)) return result;
  result.inverse = {yy / determinant, -xy / determinant, xx / determinant};
  const auto [ixx, ixy, iyy] = result.inverse;
  double *x = result.rows.data(), *y = x + stride;
  for (std::size_t j = 0; j < width; ++j) {
    x[j] = ixx * u[j] + ixy * v[j];
    y[j] = ixy * u[j] + iyy * v[j];
    gradient_[j] -= x[j] * result.gradient.x + y[j] * result.gradient.y;
  }
  fastestFrontProducts().subtractTwo(u, x, stride, width, lower_.data());
  return result;
}

}  // namespace cornerpin
