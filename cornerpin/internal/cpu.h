// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_INTERNAL_CPU_H
#define CORNERPIN_INTERNAL_CPU_H

// Private: what the processor can run.
namespace cornerpin::internal {

inline bool hasAvx2() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  return __builtin_cpu_supports("avx2");
#else
  return false;
#endif
}

// The foundation with vector lengths of 256 bits and double-word operations, and fused arithmetic.
inline bool hasAvx512() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("fma") && hasAvx2();
#else
  return false;
#endif
}

}  // namespace cornerpin::internal

#endif
