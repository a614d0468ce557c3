// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_COMMAND_CHILD_H
#define BENCH_COMMAND_CHILD_H

#include <string>
#include <vector>

namespace bench {

// What a run of a program took.
struct Taken {
  double user = 0.0;  // seconds
  double wall = 0.0;
  double bytes = 0.0;  // the most that was resident at once
};

// Runs a program to its end, what it prints thrown away. Throws std::runtime_error unless it ends
// in 0 or 4, which says that not every frame is solved in full.
Taken runToEnd(const std::vector<std::string>& arguments);

}  // namespace bench

#endif
