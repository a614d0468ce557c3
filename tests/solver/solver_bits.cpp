// SPDX-License-Identifier: BSD-3-Clause

// solver_bits FILE writes the result bits of a fixed set of random shots, so that two builds of
// the library on one LAPACK can be compared with cmp.
#include <cstdint>
#include <cstdio>

#include "tests/support/scene.h"

int main(int argc, char** argv) {
  std::FILE* out = argc == 2 ? std::fopen(argv[1], "wb") : nullptr;
  if (out == nullptr) {
    std::fputs("usage: solver_bits FILE\n", stderr);
    return 2;
  }
  bool written = true;
  for (std::uint32_t seed = 1; seed <= 1000; ++seed) {
    MMatchmove scene;
    scenes::fill(scene, scenes::randomShot(seed), seed);
    const std::string thrown = scenes::solve(scene);
    const scenes::Bits bits = scenes::resultOf(scene, thrown);
    written = written && std::fwrite(bits.data(), sizeof bits[0], bits.size(), out) == bits.size();
  }
  written = std::fclose(out) == 0 && written;
  return written ? 0 : 1;
}
