// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_relay [SHOTS] solves relay shots, whose tracks live for 40 of 200 frames, and prints
// how far the corners are from the truth: for the solve, for the joint optimum where Ceres is in
// the build, and for chains of plain fits. Then processor time per frame.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "bench/peers/joint_fit.h"
#include "bench/support/statistics.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/key_frames.h"
#include "tests/shot/known_shots.h"

using namespace cornerpin;

namespace {

using Solved = std::vector<Homography>;
using Solver = std::function<Solved(const Tracks& tracks, int base)>;

struct Entry {
  std::string name;
  Solver solve;
  std::vector<double> errors;        // of each shot
  std::vector<double> microseconds;  // per frame
};

Solved ours(const Tracks& tracks, int base) {
  SolveOptions options;
  options.base = base;
  Solved all;
  for (const FrameResult& frame : solveShot(tracks, options).frames) all.push_back(frame.h);
  return all;
}

Solver plainChain(const made::KeyFrames& rule) {
  return [rule](const Tracks& tracks, int base) {
    return chained(tracks, base, made::plainPairFit, rule);
  };
}

Solved joint(const Tracks& tracks, int base) {
  return bench::jointFit(tracks, base, plainChain(made::kFrameToFrame)(tracks, base));
}

std::vector<Entry> entries() {
  std::vector<Entry> all = {{"cornerpin", ours, {}, {}}};
  if (bench::hasJointFit()) all.push_back({"joint optimum (Ceres)", joint, {}, {}});
  all.push_back({"key frames, left at a half", plainChain({0.5, 12}), {}, {}});
  all.push_back({"key frames, left at a third", plainChain({1.0 / 3.0, 12}), {}, {}});
  all.push_back({"frame to frame", plainChain(made::kFrameToFrame), {}, {}});
  return all;
}

// Over the corners of the surface in all frames.
double rms(const made::KnownShot& shot, const Solved& all, int base) {
  double squares = 0.0;
  for (std::size_t f = 0; f < all.size(); ++f) {
    for (double error : cornerErrors(shot, all[f], base, static_cast<int>(f)))
      squares += error * error;
  }
  return std::sqrt(squares / (4.0 * static_cast<double>(all.size())));
}

void run(Entry& entry, const made::KnownShot& shot, int base) {
  const double begin = bench::processorSeconds();
  const Solved all = entry.solve(shot.tracks, base);
  const double seconds = bench::processorSeconds() - begin;
  entry.microseconds.push_back(1e6 * seconds / static_cast<double>(all.size()));
  entry.errors.push_back(rms(shot, all, base));
}

// The median over the shots of how many times the first entry's sample the other's is.
double ratio(const std::vector<double>& own, const std::vector<double>& other) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < own.size(); ++i) ratios.push_back(own[i] / other[i]);
  return bench::quartiles(ratios).median;
}

void report(int atATime, int shots) {
  std::vector<Entry> all = entries();
  made::Relay what;
  what.atATime = atATime;
  for (int seed = 1; seed <= shots; ++seed) {
    const made::KnownShot shot = relay(what, static_cast<std::uint32_t>(seed));
    for (Entry& entry : all) run(entry, shot, what.frames / 2);
  }
  for (const Entry& entry : all) {
    const bench::Quartiles error = bench::quartiles(entry.errors);
    std::printf("| %d | %s | %.3f | %.3f to %.3f | %.3f | %.1f | %.4f |\n", atATime,
                entry.name.c_str(), error.median, error.lower, error.upper,
                ratio(all[0].errors, entry.errors), bench::quartiles(entry.microseconds).median,
                ratio(all[0].microseconds, entry.microseconds));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int shots = argc > 1 ? std::atoi(argv[1]) : 20;
  if (shots < 1) {
    std::fputs("usage: cornerpin_relay [SHOTS]\n", stderr);
    return 2;
  }
  std::printf(
      "%d relay shots of 200 frames, RMS over the corners in pixels, base in the middle\n\n",
      shots);
  std::printf(
      "| tracks | solver | median | quartiles | cornerpin / it | us/frame | time ratio |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
  for (const int atATime : {30, 100}) report(atATime, shots);
  if (!bench::hasJointFit()) std::printf("\nbuilt without Ceres: no joint optimum\n");
  return 0;
}
