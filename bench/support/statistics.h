// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_SUPPORT_STATISTICS_H
#define BENCH_SUPPORT_STATISTICS_H

#include <vector>

namespace bench {

struct Quartiles {
  double lower, median, upper;
};

// Of at least one sample; between two samples by linear interpolation. Throws
// std::invalid_argument without samples.
Quartiles quartiles(std::vector<double> samples);

// Processor time that this process has used so far, in seconds, all its threads together.
double processorSeconds();

// Keeps the calling thread on the processor that it runs on. False where the system cannot.
bool stayOnOneProcessor();

}  // namespace bench

#endif
