// SPDX-License-Identifier: BSD-3-Clause

// shot_bits FILE writes the result bits of a fixed set of made shots, so that two builds on one
// LAPACK can be compared with cmp.
#include <cstdio>

#include "tests/shot/made_shots.h"

int main(int argc, char** argv) {
  std::FILE* out = argc == 2 ? std::fopen(argv[1], "wb") : nullptr;
  if (out == nullptr) {
    std::fputs("usage: shot_bits FILE\n", stderr);
    return 2;
  }
  made::Bits bits = made::solved(1, 1001);
  const made::Bits handedOver = made::handedOver(1, 61);
  bits.insert(bits.end(), handedOver.begin(), handedOver.end());
  bool written = std::fwrite(bits.data(), sizeof bits[0], bits.size(), out) == bits.size();
  written = std::fclose(out) == 0 && written;
  return written ? 0 : 1;
}
