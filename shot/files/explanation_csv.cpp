// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/explanation_csv.h"

#include <fmt/format.h>

#include "shot/files/csv_text.h"

namespace cornerpin {

void writeExplanationCsv(const ShotResult& result, const Tracks& tracks, OutputFile& out,
                         const Progress& progress) {
  PhaseCount count(progress, Phase::Writing, result.frames.size());
  out.write("track,frame,residual,weight,leverage,influence\n");
  for (const FrameResult& frame : result.frames) {
    for (const TrackInfluence& t : frame.influences) {
      out.write(fmt::format("{},{},{},{},{},{}\n",
                            csvText(tracks.names[static_cast<std::size_t>(t.track)]), frame.frame,
                            csvNumber(t.residual), csvNumber(t.weight), csvNumber(t.leverage),
                            csvNumber(t.influence)));
    }
    count.add();
  }
}

}  // namespace cornerpin
