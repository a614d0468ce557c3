// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_AVX2_H
#define CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_AVX2_H

#include "cornerpin/solver/kernels/frame_kernels.h"

// Private: the AVX2 variant, parts of which others share.
namespace cornerpin::kernels::avx2 {

void project(const float* h, const ActiveTracks& tracks, float* values);
void residuals(const float* h, const ActiveTracks& tracks, const float* goal, float* values,
               float* residuals);
void differences(const float* h, const ActiveTracks& tracks, const float* values, float* rows);
void normalSums(const float* rows, const float* goal, const float* values, int m, double* a,
                float* g);
void frameSums(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
               double* a, float* g);

}  // namespace cornerpin::kernels::avx2

#endif
