// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_AVX512_H
#define CORNERPIN_SOLVER_KERNELS_FRAME_KERNELS_AVX512_H

#include "cornerpin/solver/kernels/frame_kernels.h"

// Private: the AVX-512 variant without what it falls back on.
namespace cornerpin::kernels::avx512 {

// `FrameSums`, except that it may miss the definition's g and says so: false then. That happens
// about once in a million systems of 100 random tracks.
bool formSystem(const float* h, const ActiveTracks& tracks, const float* values, const float* goal,
                double* a, float* g);

}  // namespace cornerpin::kernels::avx512

#endif
