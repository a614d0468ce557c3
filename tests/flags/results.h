// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_FLAGS_RESULTS_H
#define TESTS_FLAGS_RESULTS_H

#include <vector>

// The same calls of the library, compiled twice: with the flags of the project and with flags that
// let a compiler fuse, reorder and approximate. `in` has at least 32 values.
using Results = std::vector<double>;

namespace plain {
Results results(const double* in);
double arithmeticOfTheIncluder(const double* in);
}  // namespace plain
namespace reckless {
Results results(const double* in);
double arithmeticOfTheIncluder(const double* in);
}  // namespace reckless

#endif
