// SPDX-License-Identifier: BSD-3-Clause
#include "bench/peers/measure.h"

#include <cmath>

namespace bench {

std::vector<Figure> measure(const Shot& shot, const std::vector<Competitor>& competitors,
                            int rounds) {
  const std::vector<Frame> frames = framesOf(shot);
  std::vector<Run> runs;
  runs.reserve(competitors.size());
  for (const Competitor& c : competitors) runs.push_back(c.prepare(shot, frames));
  for (const Run& run : runs) run.solve();

  const std::size_t count = runs.size();
  std::vector<std::vector<double>> samples(count);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t turn = 0; turn < count; ++turn) {
      const std::size_t c = (static_cast<std::size_t>(round) + turn) % count;
      const double begin = processorSeconds();
      runs[c].solve();
      const double seconds = processorSeconds() - begin;
      samples[c].push_back(1e6 * seconds / static_cast<double>(frames.size()));
    }
  }

  std::vector<Figure> figures;
  for (std::size_t c = 0; c < count; ++c) {
    figures.push_back({competitors[c].name, competitors[c].settings, competitors[c].usesWeights,
                       quartiles(samples[c]),
                       runs[c].results ? rms(frames, runs[c].results()) : std::nan("")});
  }
  return figures;
}

}  // namespace bench
