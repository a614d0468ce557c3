// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/kernels/frame_kernels.h"

#include "cornerpin/internal/cpu.h"

namespace cornerpin::kernels {

#ifdef CORNERPIN_HAVE_AVX2
extern const FrameKernels avx2FrameKernels;
#endif
#ifdef CORNERPIN_HAVE_AVX512
extern const FrameKernels avx512FrameKernels;
#endif

const FrameKernelsList& frameKernelVariants() {
  static const FrameKernelsList list = [] {
    FrameKernelsList available{};
    available.variants[available.count++] = &scalarFrameKernels;
#ifdef CORNERPIN_HAVE_AVX2
    if (internal::hasAvx2()) available.variants[available.count++] = &avx2FrameKernels;
#endif
#ifdef CORNERPIN_HAVE_AVX512
    if (internal::hasAvx512()) available.variants[available.count++] = &avx512FrameKernels;
#endif
    return available;
  }();
  return list;
}

namespace {

const FrameKernels* best() {
  return frameKernelVariants().variants[frameKernelVariants().count - 1];
}

const FrameKernels*& chosen() {
  static const FrameKernels* variant = best();
  return variant;
}

}  // namespace

const FrameKernels& frameKernels() { return *chosen(); }

void useFrameKernels(const FrameKernels* kernels) {
  chosen() = kernels != nullptr ? kernels : best();
}

}  // namespace cornerpin::kernels
