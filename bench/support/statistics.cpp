// SPDX-License-Identifier: BSD-3-Clause
#include "bench/support/statistics.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <stdexcept>

#ifdef __linux__
#include <sched.h>
#endif

namespace bench {

Quartiles quartiles(std::vector<double> samples) {
  if (samples.empty()) throw std::invalid_argument("quartiles of nothing");
  std::sort(samples.begin(), samples.end());
  const auto at = [&samples](double share) {
    const double position = share * static_cast<double>(samples.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, samples.size() - 1);
    const double rest = position - static_cast<double>(below);
    return samples[below] + rest * (samples[above] - samples[below]);
  };
  return {at(0.25), at(0.5), at(0.75)};
}

double processorSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

bool stayOnOneProcessor() {
#ifdef __linux__
  const int processor = sched_getcpu();
  if (processor < 0) return false;
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(static_cast<unsigned>(processor), &set);
  return sched_setaffinity(0, sizeof set, &set) == 0;
#else
  return false;
#endif
}

}  // namespace bench
