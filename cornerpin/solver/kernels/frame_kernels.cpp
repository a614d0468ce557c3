// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include "cornerpin/internal/cpu.h"

namespace cornerpin::kernels {

extern const FrameKernels avx2FrameKernels;
extern const FrameKernels avx512FrameKernels;

internal::KernelVariants<FrameKernels>& frameKernelVariants() {
  static internal::KernelVariants<FrameKernels> variants = {
      {scalarFrameKernels, true},
#ifdef CORNERPIN_HAVE_AVX2
      {avx2FrameKernels, internal::hasAvx2()},
#endif
#ifdef CORNERPIN_HAVE_AVX512
      {avx512FrameKernels, internal::hasAvx512()},
#endif
  };
  return variants;
}

const FrameKernels& frameKernels() { return frameKernelVariants().inUse(); }

}  // namespace cornerpin::kernels
