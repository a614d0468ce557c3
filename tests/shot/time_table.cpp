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

// Frames without a full transform of their own.
struct Weak {
  Sum before, after;
  std::size_t filled = 0;
  std::size_t held = 0;  // two deviations hold all corners of so many that are filled in

  void add(const KnownShot& shot, const ShotResult& plain, const ShotResult& filledIn) {
    for (std::size_t f = 0; f < plain.frames.size(); ++f) {
      const FrameResult& frame = filledIn.frames[f];
      if (isSolved(frame)) continue;
      const Quad errors = errorsOf(shot, filledIn, frame);
      before.errors.push_back(largest(errorsOf(shot, plain, plain.frames[f])));
      after.errors.push_back(largest(errors));
      if (!frame.filled) continue;
      const auto deviations = frame.figures.deviations();
      bool within = true;
      for (std::size_t i = 0; i < 4; ++i) {
        within = within && std::sqrt(squaredDistance(errors[i], {})) <= 2.0 * deviations[i];
      }
      ++filled;
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
      "| shot | jitter, solved | smoothed | error, solved | smoothed | not solved | before | after "
      "| filled in | within two deviations |\n|---|---|---|---|---|---|---|---|---|---|\n");
}

void printTimeRow(const std::string& name, const std::function<KnownShot(unsigned seed)>& make,
                  unsigned shots) {
  Sum solved, smoothed;
  Weak weak;
  SolveOptions options;
  options.base = 0;
  for (unsigned seed = 1; seed <= shots; ++seed) {
    const KnownShot shot = make(seed);
    const ShotResult plain = solveShot(shot.tracks, options);
    solved.add(shot, plain);
    smoothed.add(shot, retouched(plain, {kNoBudget, false, {}}));
    weak.add(shot, plain, retouched(plain, {std::nullopt, true, {}}));
  }
  std::printf("| %s | %.2f | %.2f | %.2f / %.2f | %.2f / %.2f |", name.c_str(), solved.jitter(),
              smoothed.jitter(), solved.at(0.5), solved.at(1.0), smoothed.at(0.5),
              smoothed.at(1.0));
  if (weak.after.errors.empty()) {
    std::printf(" 0 | | | | |\n");
  } else {
    std::printf(" %zu | %.2f / %.2f | %.2f / %.2f | %zu |", weak.after.errors.size(),
                weak.before.at(0.5), weak.before.at(1.0), weak.after.at(0.5), weak.after.at(1.0),
                weak.filled);
    const double share = 100.0 * static_cast<double>(weak.held) / static_cast<double>(weak.filled);
    std::printf(weak.filled > 0 ? " %.0f %% |\n" : " |\n", share);
  }
  std::fflush(stdout);
}

}  // namespace made
