// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/time_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <vector>

#include "shot/solve/shot_solver.h"
#include "shot/time/retouch.h"

using namespace cornerpin;

namespace made {

namespace {

constexpr double kNoBudget = 1e9;

// How far each corner is from where it belongs, as vectors.
Quad errorsOf(const KnownShot& shot, const ShotResult& result, const FrameResult& frame) {
  const Homography truth = shot.truth(result.baseFrame, frame.frame);
  Quad errors = result.quads.front().corners;
  for (Point& p : errors) {
    const Point there = map(frame.h, p);
    const Point belongs = map(truth, p);
    p = {there.x - belongs.x, there.y - belongs.y};
  }
  return errors;
}

double largest(const Quad& errors) {
  double most = 0.0;
  for (Point p : errors) most = std::max(most, squaredDistance(p, {}));
  return std::sqrt(most);
}

bool isSolved(const FrameResult& frame) {
  return frame.verdict.status == Status::Base || frame.verdict.status == Status::Solved;
}

struct Sum {
  std::vector<double> errors;  // the worst corner's, by frame
  double squares = 0.0;        // of second differences
  double count = 0.0;

  // Of the solved frames, and of those with solved ones on both sides.
  void add(const KnownShot& shot, const ShotResult& result) {
    std::vector<std::optional<Quad>> all;
    for (const FrameResult& frame : result.frames) {
      all.push_back(isSolved(frame) ? std::optional<Quad>(errorsOf(shot, result, frame))
                                    : std::nullopt);
      if (frame.verdict.status == Status::Solved) errors.push_back(largest(*all.back()));
    }
    for (std::size_t f = 1; f + 1 < all.size(); ++f) {
      if (all[f - 1] && all[f] && all[f + 1]) addBend(*all[f - 1], *all[f], *all[f + 1]);
    }
  }

  void addBend(const Quad& a, const Quad& b, const Quad& c) {
    for (std::size_t i = 0; i < 4; ++i) {
      const double x = a[i].x - 2 * b[i].x + c[i].x;
      const double y = a[i].y - 2 * b[i].y + c[i].y;
      squares += x * x + y * y;
      count += 1.0;
    }
  }

  double at(double share) {
    if (errors.empty()) return std::numeric_limits<double>::quiet_NaN();
    std::sort(errors.begin(), errors.end());
    const auto i = static_cast<std::size_t>(share * static_cast<double>(errors.size()));
    return errors[std::min(i, errors.size() - 1)];
  }

  double jitter() const { return std::sqrt(squares / count); }
};

// Frames that were filled in.
struct Filled {
  Sum before, after;
  std::size_t held = 0;  // two deviations hold all corners

  void add(const KnownShot& shot, const ShotResult& plain, const ShotResult& filled) {
    for (std::size_t f = 0; f < plain.frames.size(); ++f) {
      const FrameResult& frame = filled.frames[f];
      if (!frame.filled) continue;
      const Quad errors = errorsOf(shot, filled, frame);
      before.errors.push_back(largest(errorsOf(shot, plain, plain.frames[f])));
      after.errors.push_back(largest(errors));
      const auto deviations = frame.figures.deviations();
      bool within = true;
      for (std::size_t i = 0; i < 4; ++i) {
        within = within && std::sqrt(squaredDistance(errors[i], {})) <= 2.0 * deviations[i];
      }
      held += within;
    }
  }
};

ShotResult retouched(ShotResult result, const RetouchOptions& options) {
  retouch(result, options);
  return result;
}

}  // namespace

void printTimeHeader() {
  std::printf(
      "| shot | jitter, solved | smoothed | error, solved | smoothed | filled in | before | after "
      "| "
      "within two deviations |\n|---|---|---|---|---|---|---|---|---|\n");
}

void printTimeRow(const std::string& name, const std::function<KnownShot(unsigned seed)>& make,
                  unsigned shots) {
  Sum solved, smoothed;
  Filled filled;
  SolveOptions options;
  options.base = 0;
  for (unsigned seed = 1; seed <= shots; ++seed) {
    const KnownShot shot = make(seed);
    const ShotResult plain = solveShot(shot.tracks, options);
    solved.add(shot, plain);
    smoothed.add(shot, retouched(plain, {kNoBudget, false, {}}));
    filled.add(shot, plain, retouched(plain, {std::nullopt, true, {}}));
  }
  std::printf("| %s | %.2f | %.2f | %.2f / %.2f | %.2f / %.2f |", name.c_str(), solved.jitter(),
              smoothed.jitter(), solved.at(0.5), solved.at(1.0), smoothed.at(0.5),
              smoothed.at(1.0));
  const std::size_t count = filled.after.errors.size();
  if (count > 0) {
    std::printf(" %zu | %.2f / %.2f | %.2f / %.2f | %.0f %% |\n", count, filled.before.at(0.5),
                filled.before.at(1.0), filled.after.at(0.5), filled.after.at(1.0),
                100.0 * static_cast<double>(filled.held) / static_cast<double>(count));
  } else {
    std::printf(" 0 | | | |\n");
  }
  std::fflush(stdout);
}

}  // namespace made
