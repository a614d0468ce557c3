// SPDX-License-Identifier: BSD-3-Clause
#include <algorithm>
#include <cstddef>

#include "cornerpin/solver/kernels/frame_kernels.h"

namespace cornerpin::kernels {
namespace {

void project(const float* h, const ActiveTracks& tracks, float* values) {
  for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
    const float x = tracks.x[i];
    const float y = tracks.y[i];
    const float w = tracks.weight[i];
    const float u = (x * h[0] + y * h[3]) + h[6];
    const float v = (x * h[1] + y * h[4]) + h[7];
    const float s = (x * h[2] + y * h[5]) + h[8];
    values[2 * i] = (w * u) / s;
    values[2 * i + 1] = (w * v) / s;
  }
}

void residuals(const float* h, const ActiveTracks& tracks, const float* goal, float* values,
               float* residuals) {
  project(h, tracks, values);
  const std::ptrdiff_t n = 2 * std::ptrdiff_t{tracks.count};
  for (std::ptrdiff_t k = 0; k < n; ++k) residuals[k] = values[k] - goal[k];
}

void differences(const float* h, const ActiveTracks& tracks, const float* values, float* rows) {
  for (int p = 0; p < kParameters; ++p) {
    float shifted[9];
    std::copy(h, h + 9, shifted);
    shifted[p] += kDifferenceStep;
    for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
      const ActiveTracks track = {tracks.x + i, tracks.y + i, tracks.weight + i, 1};
      float moved[2];
      project(shifted, track, moved);
      rows[(2 * i) * kParameters + p] = (moved[0] - values[2 * i]) / kDifferenceStep;
      rows[(2 * i + 1) * kParameters + p] = (moved[1] - values[2 * i + 1]) / kDifferenceStep;
    }
  }
}

// Adds a row to the sums. Its column j meets all eight columns at once, the upper triangle
// included.
void addRow(const float* row, float difference, double* a, float* g) {
  for (std::ptrdiff_t i = 0; i < kParameters; ++i) {
    for (std::ptrdiff_t j = 0; j < kParameters; ++j) {
      a[i * kParameters + j] += static_cast<double>(row[j] * row[i]);
    }
  }
  for (int j = 0; j < kParameters; ++j) {
    const double term = static_cast<double>(row[j]) * static_cast<double>(difference);
    g[j] = static_cast<float>(static_cast<double>(g[j]) + term);
  }
}

void clear(double* a, float* g) {
  std::fill_n(a, kParameters * kParameters, 0.0);
  std::fill_n(g, kParameters, 0.0f);
}

void normalSums(const float* rows, const float* goal, const float* values, int m, double* a,
                float* g) {
  clear(a, g);
  for (std::ptrdiff_t k = 0; k < m; ++k) {
    addRow(rows + k * kParameters, goal[k] - values[k], a, g);
  }
}

void frameSums(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
               double* a, float* g) {
  clear(a, g);
  for (std::ptrdiff_t i = 0; i < tracks.count; ++i) {
    const ActiveTracks track = {tracks.x + i, tracks.y + i, tracks.weight + i, 1};
    float rows[2 * kParameters];
    differences(h, track, values + 2 * i, rows);
    addRow(rows, goal[2 * i] - values[2 * i], a, g);
    addRow(rows + kParameters, goal[2 * i + 1] - values[2 * i + 1], a, g);
  }
}

}  // namespace

const FrameKernels scalarFrameKernels = {"scalar",    project,    residuals,
                                         differences, normalSums, frameSums};

}  // namespace cornerpin::kernels
