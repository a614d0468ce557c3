// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_PEERS_MEASURE_H
#define BENCH_PEERS_MEASURE_H

#include <string>
#include <vector>

#include "bench/peers/competitor.h"
#include "bench/support/statistics.h"

namespace bench {

struct Figure {
  std::string name;
  std::string settings;
  bool usesWeights;
  Quartiles microseconds;  // processor time per frame
  double rms;              // of the weighted residuals, in the shot's units
};

// Runs every competitor once per round on the shot, each round beginning with another one, after a
// round that is not counted. In the order of `competitors`.
std::vector<Figure> measure(const Shot& shot, const std::vector<Competitor>& competitors,
                            int rounds);

}  // namespace bench

#endif
