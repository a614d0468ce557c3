// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_SOLVE_SMALL_SHOTS_H
#define TESTS_SHOT_SOLVE_SMALL_SHOTS_H

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "shot/solve/shot_solver.h"

// Shots put together by hand, one observation at a time.
namespace small_shots {

using cornerpin::FrameResult;
using cornerpin::Homography;
using cornerpin::Loss;
using cornerpin::Observation;
using cornerpin::Point;
using cornerpin::SolveOptions;
using cornerpin::Tracks;
using cornerpin::Units;

// A transform that moves with the frame.
inline Homography motion(int frame) {
  const double f = frame;
  return {{{1 + 0.004 * f, 0.01 * f, 3 * f},
           {-0.008 * f, 1 + 0.002 * f, -2 * f},
           {1e-6 * f, -2e-6 * f, 1}}};
}

inline const std::vector<Point> kCorners = {
    {100, 100}, {500, 120}, {480, 420}, {90, 400}, {300, 250}};

// Adds one observation of track t (at its corner) in a frame.
inline void see(Tracks& tracks, int t, int frame, Point p, float weight = 1.0f) {
  while (static_cast<int>(tracks.names.size()) <= t) {
    tracks.names.push_back("t" + std::to_string(tracks.names.size()));
  }
  Observation o;
  o.x = p.x;
  o.y = p.y;
  o.weight = weight;
  o.track = t;
  o.frame = frame;
  tracks.observations.push_back(o);
}

inline void seeAll(Tracks& tracks, int frame, int count = 5) {
  for (int t = 0; t < count; ++t) {
    see(tracks, t, frame, map(motion(frame), kCorners[static_cast<std::size_t>(t)]));
  }
}

inline Tracks movingShot(int frames) {
  Tracks tracks;
  for (int f = 0; f < frames; ++f) seeAll(tracks, f);
  return tracks;
}

inline SolveOptions based(int frame, Units units = Units::Fit) {
  SolveOptions options;
  options.base = frame;
  options.units = units;
  options.loss = Loss::None;
  options.reduce = true;
  return options;
}

inline double errorAtCorners(const FrameResult& frame) {
  double worst = 0.0;
  for (Point p : kCorners) {
    const Point a = map(frame.h, p);
    const Point b = map(motion(frame.frame), p);
    worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
  }
  return worst;
}

}  // namespace small_shots

#endif
