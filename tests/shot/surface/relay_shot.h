// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_SURFACE_RELAY_SHOT_H
#define TESTS_SHOT_SURFACE_RELAY_SHOT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "shot/surface/joint_frames.h"
#include "tests/shot/lists.h"
#include "tests/shot/robust/random_errors.h"

// Made shots in which tracks come and go.
namespace relay {

using namespace cornerpin;

struct Plan {
  std::size_t frames = 12;
  std::size_t alive = 6;  // tracks at a time
  std::size_t life = 5;   // frames that each of them lives
  std::size_t base = 0;
  double pan = 20.0;   // pixels from frame to frame
  double tilt = 2e-5;  // perspective, from frame to frame
  double noise = 0.5;  // of one coordinate
  std::uint32_t seed = 1;
};

// The transform of the picture of `from` to that of `to`, both given relative to the same surface.
inline Homography between(const Homography& from, const Homography& to) {
  const auto& m = from;
  const auto minor = [&](std::size_t i, std::size_t j) {
    const std::size_t a = (i + 1) % 3, b = (i + 2) % 3, c = (j + 1) % 3, d = (j + 2) % 3;
    return m[a][c] * m[b][d] - m[a][d] * m[b][c];
  };
  Homography adjugate{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) adjugate[j][i] = minor(i, j);
  }
  return withLastOne(product(to, adjugate));
}

struct Shot {
  std::vector<JointFrame> frames;  // the truth
  std::vector<Point> places;       // the truth
  std::vector<std::vector<Match>> seen;

  ObservationsOf observations() const {
    return [this](std::size_t f) { return lists::matches(seen[f]); };
  }

  Match* find(std::size_t frame, int track) {
    for (Match& m : seen[frame]) {
      if (m.track == track) return &m;
    }
    return nullptr;
  }
  void remove(std::size_t frame, int track) {
    auto& list = seen[frame];
    list.erase(
        std::remove_if(list.begin(), list.end(), [&](const Match& m) { return m.track == track; }),
        list.end());
  }
};

// A track's place has an error of this size in each coordinate.
inline Point shaken(Point p, double sigma, errors::Random& random) {
  const double length = random.normalLength(sigma);
  const double angle = random.angle();
  return {p.x + length * std::cos(angle), p.y + length * std::sin(angle)};
}

// Scene to frame: a pan with some turning and zooming, and a tilted lens.
inline Homography view(const Plan& plan, std::size_t frame) {
  const double f = static_cast<double>(frame);
  const double turn = 0.1 * std::sin(0.1 * f);
  const double growth = 1.0 + 0.1 * std::sin(0.07 * f);
  const Homography lens = {
      {{1, 0, 0},
       {0, 1, 0},
       {plan.tilt * std::sin(0.3 * f), plan.tilt * (std::cos(0.2 * f) - 1.0), 1.0}}};
  const Homography camera = {
      {{growth * std::cos(turn), -growth * std::sin(turn), -plan.pan * f * growth * std::cos(turn)},
       {growth * std::sin(turn), growth * std::cos(turn), -plan.pan * f * growth * std::sin(turn)},
       {0, 0, 1}}};
  return product(lens, camera);
}

// Adds a track that lives from frame `first` on; its place is in the picture of the middle of its
// life.
inline void addTrack(Shot& shot, long first, const Plan& plan, errors::Random& random) {
  const auto last = static_cast<long>(plan.frames) - 1;
  const auto life = static_cast<long>(plan.life);
  const auto middle = static_cast<std::size_t>(std::clamp(first + life / 2, 0L, last));
  const double x = 1000.0 * random.uniform();
  const double y = 600.0 * random.uniform();
  const Point place = map(between(shot.frames[middle].h, kIdentity), {x, y});
  for (long f = std::max(first, 0L); f <= std::min(first + life - 1, last); ++f) {
    const auto frame = static_cast<std::size_t>(f);
    Match m;
    m.present = shaken(map(shot.frames[frame].h, place), shot.frames[frame].sigma, random);
    m.weight = 0.5 + random.uniform();
    m.track = static_cast<int>(shot.places.size());
    shot.seen[frame].push_back(m);
  }
  shot.places.push_back(place);
}

inline Shot empty(const Plan& plan) {
  Shot result;
  result.frames.resize(plan.frames);
  result.seen.resize(plan.frames);
  const Homography base = view(plan, plan.base);
  for (std::size_t f = 0; f < plan.frames; ++f) {
    const bool fixed = f == plan.base;
    JointFrame& frame = result.frames[f];
    frame.h = fixed ? kIdentity : between(base, view(plan, f));
    frame.part = fixed ? JointFrame::Part::Fixed : JointFrame::Part::Free;
    frame.sigma = plan.noise * (1.0 + 0.1 * static_cast<double>(f % 3));
  }
  return result;
}

// Tracks come and go one by one.
inline Shot shot(const Plan& plan) {
  errors::Random random(plan.seed);
  Shot result = empty(plan);
  const auto frames = static_cast<long>(plan.frames);
  const auto alive = static_cast<long>(plan.alive), life = static_cast<long>(plan.life);
  for (long t = 0, first = 1 - life; first < frames; first = ++t * life / alive + 1 - life) {
    addTrack(result, first, plan, random);
  }
  return result;
}

// All tracks in all frames, with the weight 1.
inline Shot balanced(Plan plan) {
  errors::Random random(plan.seed);
  Shot result = empty(plan);
  plan.life = plan.frames;
  for (std::size_t t = 0; t < plan.alive; ++t) addTrack(result, 0, plan, random);
  for (auto& seen : result.seen) {
    for (Match& m : seen) m.weight = 1.0;
  }
  return result;
}

// A picture's corners on the surface.
inline Quad corners(const Homography& h) {
  const Homography back = between(h, kIdentity);
  return {map(back, {0, 0}), map(back, {1000, 0}), map(back, {1000, 600}), map(back, {0, 600})};
}

// The transforms with errors like those of sweeps.
inline std::vector<JointFrame> started(std::vector<JointFrame> frames, double error,
                                       std::uint32_t seed) {
  errors::Random random(seed);
  const auto wrong = [&] { return error * (2.0 * random.uniform() - 1.0); };
  for (JointFrame& frame : frames) {
    if (frame.part != JointFrame::Part::Free) continue;
    Homography small = kIdentity;
    for (std::size_t i = 0; i < 6; ++i) small[i / 3][i % 3] += wrong() * (i % 3 == 2 ? 1.0 : 1e-3);
    for (std::size_t j = 0; j < 2; ++j) small[2][j] = 1e-6 * wrong();
    frame.h = withLastOne(product(small, frame.h));
  }
  return frames;
}

// The largest distance between what two transforms make of a picture's corners.
inline double cornerDistance(const Homography& a, const Homography& b) {
  double largest = 0.0;
  for (const Point& corner : corners(b)) {
    largest = std::max(largest, squaredDistance(map(a, corner), map(b, corner)));
  }
  return std::sqrt(largest);
}

inline double largestCornerDistance(const std::vector<JointFrame>& a,
                                    const std::vector<JointFrame>& b) {
  double largest = 0.0;
  for (std::size_t f = 0; f < a.size(); ++f) {
    largest = std::max(largest, cornerDistance(a[f].h, b[f].h));
  }
  return largest;
}

}  // namespace relay

#endif
