// SPDX-License-Identifier: BSD-3-Clause
#include "shot/time/smooth.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "shot/plane/quad_map.h"
#include "shot/time/corner_path.h"
#include "shot/time/smooth_path.h"
#include "shot/time/untouched.h"

namespace cornerpin {

namespace {

bool isKnown(const FrameResult& frame) {
  const Status status = frame.verdict.status;
  if (status != Status::Base && status != Status::Solved) return false;
  const std::array<double, 4> deviations = frame.figures.deviations();
  return std::all_of(deviations.begin(), deviations.end(),
                     [](double d) { return std::isfinite(d); });
}

// What share of a move is made. Moves that are longer than the deviation are cut to that; where
// they are longer than errors get, more and more of the motion stays, and in the end all of it.
constexpr double kError = 2.5;  // deviations: one in 500
constexpr double kMotion = 4.0;

double shareOf(double distance, double deviation) {
  if (!(distance > deviation)) return 1.0;
  const double rest = (kMotion - distance / deviation) / (kMotion - kError);
  return std::clamp(rest, 0.0, 1.0) * deviation / distance;
}

// What moves four corners: all alike, two sides against each other in either direction, and the
// diagonals against each other, which is mostly perspective. Each is its own inverse times 4.
constexpr std::array<std::array<double, 4>, 4> kModes = {
    {{1, 1, 1, 1}, {1, -1, -1, 1}, {1, 1, -1, -1}, {1, -1, 1, -1}}};

// One number for a frame: what it is worth beside others. The corners that are known well count
// most.
double errorOf(const FrameResult& frame) {
  double worth = 0.0;
  for (double d : frame.figures.deviations()) worth += 1.0 / (d * d);
  return std::sqrt(4.0 / worth);
}

std::vector<Quad> smoothed(const std::vector<FrameResult*>& frames, const Quad& surface) {
  std::vector<Quad> result(frames.size());
  for (const auto& mode : kModes) {
    std::vector<PathPoint> path;
    for (const FrameResult* frame : frames) {
      PathPoint p{frame->frame, {}, errorOf(*frame)};
      for (std::size_t i = 0; i < 4; ++i) {
        const Point corner = map(frame->h, surface[i]);
        p.place.x += 0.25 * mode[i] * corner.x;
        p.place.y += 0.25 * mode[i] * corner.y;
      }
      path.push_back(p);
    }
    const std::vector<Point> places = smoothPath(path);
    for (std::size_t f = 0; f < frames.size(); ++f) {
      for (std::size_t i = 0; i < 4; ++i) {
        result[f][i].x += mode[i] * places[f].x;
        result[f][i].y += mode[i] * places[f].y;
      }
    }
  }
  return result;
}

Quad carriedQuad(const Homography& h, Quad quad) {
  for (Point& corner : quad) corner = map(h, corner);
  return quad;
}

Point between(Point a, Point b, double share) {
  return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
}

// How far a new transform moves the corners of all quads.
struct Move {
  double furthest = 0.0;
  double ofLimit = 0.0;  // the largest share of what a corner may move
};

Move moveOf(const ShotResult& result, const FrameResult& frame, const Homography& h, double most) {
  Move move;
  for (std::size_t q = 0; q < result.quads.size(); ++q) {
    const std::array<double, 4> deviations = frame.figures.deviations(q);
    for (std::size_t i = 0; i < 4; ++i) {
      const Point corner = result.quads[q].corners[i];
      const double distance =
          std::sqrt(squaredDistance(carried(result, frame.h, corner), carried(result, h, corner)));
      // What is NaN, of corners that the horizon hides, does not count.
      const double limit = std::min(most, deviations[i]);
      move.furthest = std::max(move.furthest, distance);
      move.ofLimit = std::max(move.ofLimit, distance / limit);
    }
  }
  return move;
}

// The first quad's corners, each moved from where it is towards where `smooth` has it, by what it
// may.
Quad movedCorners(const Quad& from, const Quad& smooth, const std::array<double, 4>& deviations,
                  double most) {
  Quad corners;
  for (std::size_t i = 0; i < 4; ++i) {
    const double distance = std::sqrt(squaredDistance(from[i], smooth[i]));
    const double share = std::min(shareOf(distance, deviations[i]), most / distance);
    corners[i] = between(from[i], smooth[i], share);
  }
  return corners;
}

bool isSame(const Quad& a, const Quad& b) {
  return std::equal(a.begin(), a.end(), b.begin(),
                    [](Point p, Point q) { return p.x == q.x && p.y == q.y; });
}

// All corners move less together where some corner of another quad would move too far. Moves are
// nearly in proportion, so that few steps do.
void moveCorners(const ShotResult& result, FrameResult& frame, const Homography& smooth,
                 double most) {
  constexpr int kSteps = 20;
  constexpr double kRounding = 1e-9;
  const Quad& surface = result.quads.front().corners;
  const Quad from = carriedQuad(frame.h, surface);
  const Quad to =
      movedCorners(from, carriedQuad(smooth, surface), frame.figures.deviations(), most);
  if (isSame(from, to)) return;
  Quad corners = to;
  double share = 1.0;
  for (int step = 0; step < kSteps; ++step) {
    const Homography h = quadToQuad(surface, corners);
    if (!leadsTo(h, surface, corners, result.baseCentre)) return;
    const Move move = moveOf(result, frame, h, most);
    if (move.ofLimit <= 1.0 + kRounding) {
      keepUntouched(frame);
      frame.h = h;
      frame.smoothed = move.furthest;
      return;
    }
    share /= move.ofLimit;
    for (std::size_t i = 0; i < 4; ++i) corners[i] = between(from[i], to[i], share);
  }
}

}  // namespace

void smooth(ShotResult& result, double most, int fixed) {
  result.smooth = most;
  std::vector<FrameResult*> frames;
  std::vector<Homography> transforms;
  for (FrameResult& frame : result.frames) {
    if (!isKnown(frame)) continue;
    frames.push_back(&frame);
    transforms.push_back(frame.h);
  }
  const Quad surface = shownByAll(transforms, result.quads.front().corners, result.baseCentre);
  const std::vector<Quad> corners = smoothed(frames, surface);
  for (std::size_t f = 0; f < frames.size(); ++f) {
    if (frames[f]->frame == fixed) continue;  // the base frame has deviations of 0
    moveCorners(result, *frames[f], quadToQuad(surface, corners[f]), most);
  }
}

}  // namespace cornerpin
