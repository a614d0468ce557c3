// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_TIME_MADE_RESULT_H
#define TESTS_SHOT_TIME_MADE_RESULT_H

#include <algorithm>
#include <cmath>
#include <functional>

#include "shot/solve/result.h"

// Results put together by hand: their frames have the transforms of a motion.
namespace made {

inline const cornerpin::Quad kQuad = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};

// A motion with perspective that bends and never jumps; the identity in frame 0.
inline cornerpin::Homography swaying(double t) {
  const double s = std::sin(t / 12.0);
  const double c = 1.0 - std::cos(t / 17.0);
  return {{{1 + 0.1 * s, 0.05 * c, 6 * t + 40 * s},
           {-0.04 * s, 1 - 0.06 * c, 30 * c - 2 * t},
           {5e-5 * s, -4e-5 * c, 1}}};
}

inline cornerpin::FrameResult frame(int number, const cornerpin::Homography& h,
                                    cornerpin::Status status, double deviation) {
  using namespace cornerpin;
  FrameResult result;
  result.frame = number;
  result.h = h;
  result.verdict.status = status;
  result.verdict.model = status == Status::Held ? Model::Held : Model::Projective;
  const double half = 0.5 * deviation * deviation;
  const Symmetric2 c = {half, 0.0, half};
  result.figures.quads = {{c, c, c, c}};
  return result;
}

// Frames first .. last of a motion, all solved but the base frame, which has the identity.
inline cornerpin::ShotResult result(const std::function<cornerpin::Homography(double)>& motion,
                                    int first, int last, int base, double deviation = 0.5) {
  using namespace cornerpin;
  ShotResult result;
  result.baseFrame = result.referenceFrame = base;
  result.baseCentre = {500, 300};
  result.quads = {{"q", kQuad}};
  for (int f = first; f <= last; ++f) {
    const bool isBase = f == base;
    result.frames.push_back(isBase ? frame(f, kIdentity, Status::Base, 0.0)
                                   : frame(f, motion(f), Status::Solved, deviation));
  }
  return result;
}

// How far the worst corner of the first quad is from where another transform has it.
inline double worstCorner(const cornerpin::Homography& a, const cornerpin::Homography& b,
                          const cornerpin::Quad& quad = kQuad) {
  double worst = 0.0;
  for (cornerpin::Point p : quad) {
    worst = std::max(worst, std::sqrt(squaredDistance(map(a, p), map(b, p))));
  }
  return worst;
}

}  // namespace made

#endif
