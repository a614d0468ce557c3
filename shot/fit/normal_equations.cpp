// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/normal_equations.h"

#include "shot/fit/normal_equations.inc"

namespace cornerpin {

#ifdef CORNERPIN_X86_64
void normalEquationsAvx2(const NormalEquationsInput& in, NormalEquations& out);
void normalEquationsAvx512(const NormalEquationsInput& in, NormalEquations& out);
#endif

const std::vector<NormalEquationsVariant>& normalEquationsVariants() {
  static const std::vector<NormalEquationsVariant> variants = [] {
    std::vector<NormalEquationsVariant> available = {{"base", sumNormalEquations}};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) available.push_back({"avx2", normalEquationsAvx2});
    if (__builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")) {
      available.push_back({"avx512", normalEquationsAvx512});
    }
#endif
    return available;
  }();
  return variants;
}

const NormalEquationsVariant& NormalEquationsPass::fastest() {
  static const NormalEquationsVariant variant = normalEquationsVariants().back();
  return variant;
}

}  // namespace cornerpin
