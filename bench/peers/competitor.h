// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_PEERS_COMPETITOR_H
#define BENCH_PEERS_COMPETITOR_H

#include <functional>
#include <string>
#include <vector>

#include "bench/support/shot.h"

namespace bench {

// One competitor on one shot.
struct Run {
  std::function<void()> solve;                       // the timed part: fits all frames
  std::function<std::vector<Parameters>()> results;  // empty where nothing is fitted
};

struct Competitor {
  std::string name;
  std::string settings;
  bool usesWeights;
  std::function<Run(const Shot&, const std::vector<Frame>&)> prepare;
};

// A fitter of single frames: starts from frame.start. It is given the frames gathered, while the
// library and the plain implementation gather the active tracks in their own time.
using Fit = Parameters (*)(const Frame&);
Competitor framewise(const std::string& name, const std::string& settings, Fit fit);

// The plain implementation, the library, the shot layer's homography fit, then the peers of this
// build.
std::vector<Competitor> competitors();

// What the library spends in LAPACK on frames whose solve takes seven passes, and could spend no
// less: seven inversions of an 8 x 8 matrix a frame.
Competitor inversionsAlone();

// The peers that were not there when this was built.
std::vector<std::string> absentPeers();

// Each adds its competitors; defined in the file of that name when the peer is in the build.
void addCeres(std::vector<Competitor>& all);
void addCminpack(std::vector<Competitor>& all);
void addEigen(std::vector<Competitor>& all);
void addGsl(std::vector<Competitor>& all);
void addHomographyFit(std::vector<Competitor>& all);
void addOpencv(std::vector<Competitor>& all);

}  // namespace bench

#endif
