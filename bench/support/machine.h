// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_SUPPORT_MACHINE_H
#define BENCH_SUPPORT_MACHINE_H

#include <string>

namespace bench {

// What a figure depends on besides the code.
struct Machine {
  std::string processor;
  std::string compiler;
  std::string lapack;   // the file whose LAPACK this process uses, whatever else is loaded
  std::string blas;     // likewise
  std::string kernels;  // the best of the library's kernel variants that the processor runs
};

Machine thisMachine();

}  // namespace bench

#endif
