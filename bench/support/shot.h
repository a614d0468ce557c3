// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_SUPPORT_SHOT_H
#define BENCH_SUPPORT_SHOT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "cornerpin/solver/matchmove.h"
#include "tests/support/reference.h"

namespace bench {

struct Shot {
  std::string name;
  reference::Scene scene;
};

// The tracks of NAME.csv with the base frame of NAME.json, moved and scaled so that the base
// frame's tracks just fit into -1 .. 1. Throws std::runtime_error naming the file.
Shot readShot(const std::string& folder, const std::string& name);

// Points of a plane in -1 .. 1 under a smooth camera move, with uniform noise of +-0.001 and all
// weights 1. The same numbers for the same counts.
Shot syntheticShot(int tracks, int frames);

// The caller's part of the shot for the library: row-major positions.
void fill(MMatchmove& scene, const Shot& shot);

// The first eight elements of a transform, column-major; the ninth is 1.
using Parameters = std::array<double, 8>;

// What the fit of one frame needs, gathered: base positions, positions in the frame and weights of
// the active tracks, in the forms that fitters ask for.
struct Frame {
  int index = 0;
  std::vector<double> x, y, u, v, w;
  std::vector<float> base, moved;  // x and y alternating, u and v alternating
  Parameters start{};
  int count() const { return static_cast<int>(x.size()); }
};

// Every frame but the base frame, in frame order. `start` is the library's transform of the
// neighbour on the base frame's side. Throws std::runtime_error for a frame with fewer than four
// active tracks: not every fitter takes one.
std::vector<Frame> framesOf(const Shot& shot);

// Weighted residual of active track i: w (projected - observed), for any scalar type.
template <class T>
void residual(const Frame& frame, int i, const T* p, T* r) {
  const auto k = static_cast<std::size_t>(i);
  const double x = frame.x[k];
  const double y = frame.y[k];
  const T s = p[2] * x + p[5] * y + 1.0;
  r[0] = ((p[0] * x + p[3] * y + p[6]) / s - frame.u[k]) * frame.w[k];
  r[1] = ((p[1] * x + p[4] * y + p[7]) / s - frame.v[k]) * frame.w[k];
}

// All residuals and, unless `jacobian` is null, their derivatives: that of residual k with respect
// to parameter e goes to jacobian[k * rowStride + e * colStride].
void evaluate(const Frame& frame, const double* p, double* r, double* jacobian,
              std::ptrdiff_t rowStride, std::ptrdiff_t colStride);

// The sum of the squared weighted residuals, in double precision.
double cost(const Frame& frame, const Parameters& p);

// Root mean square of all weighted residuals of a shot; 0 without any.
double rms(const std::vector<Frame>& frames, const std::vector<Parameters>& fitted);

}  // namespace bench

#endif
