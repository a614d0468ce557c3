// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_H
#define CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_H

#include "cornerpin/internal/kernel_variants.h"

// Private: the loops of a frame's fit. `scalar` is the definition of each; every other variant
// returns the same bits.
namespace cornerpin::kernels {

constexpr int kParameters = 8;
constexpr float kDifferenceStep = 0.0001f;

// The tracks that take part in a frame.
struct ActiveTracks {
  const float* x;  // base positions
  const float* y;
  const float* weight;  // in the frame
  int count;
};

// h is a 3 x 3 transform, column-major. Values 2i and 2i + 1 are the weighted projection of track
// i: (w * u) / s and (w * v) / s, with u, v and s summed from left to right.
using Project = void (*)(const float* h, const ActiveTracks& tracks, float* values);

// The projection, and residuals[k] = values[k] - goal[k].
using Residuals = void (*)(const float* h, const ActiveTracks& tracks, const float* goal,
                           float* values, float* residuals);

// Forward differences: rows[8k + p] = (value k with the step added to element p of h, minus
// values[k]) / the step, where `values` is the projection through h.
using Differences = void (*)(const float* h, const ActiveTracks& tracks, const float* values,
                             float* rows);

// From m contiguous rows of 8: a[8i + j], j <= i, is the sum over k of row k's element j times its
// element i, the products in float and the sums in double; g[j] is the sum over k of element j
// times (goal[k] - values[k]), the difference in float, product and sum in double, every sum
// rounded to float before the next k.
using NormalSums = void (*)(const float* rows, const float* goal, const float* values, int m,
                            double* a, float* g);

// The normal sums of a frame's own differences, without storing them: what `normalSums` makes
// of the rows of `differences`, with two values per track. Zeros in g may differ in sign, and with
// a goal that is not finite more or fewer elements of g may be; a sum in `a` is not finite exactly
// when one of the definition's is, but which ones may differ.
using FrameSums = void (*)(const float* h, const ActiveTracks& tracks, const float* values,
                           const float* goal, double* a, float* g);

struct FrameKernels {
  const char* name;
  Project project;
  Residuals residuals;
  Differences differences;
  NormalSums normalSums;
  FrameSums frameSums;
};

// What the variants call of each other.
extern const FrameKernels scalarFrameKernels;

internal::KernelVariants<FrameKernels>& frameKernelVariants();

// The variant in use.
const FrameKernels& frameKernels();

}  // namespace cornerpin::kernels

#endif
