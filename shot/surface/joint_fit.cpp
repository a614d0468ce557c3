// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "shot/fit/residuals.h"
#include "shot/surface/joint_elimination.h"
#include "shot/surface/joint_shot.h"
#include "shot/surface/start_places.h"

namespace cornerpin {

namespace {

// What further steps must gain, as a share of the cost. A frame of 100 tracks costs about 200, and
// its eight parameters cost 1 each where they are off by their standard deviations: left undone are
// steps of a two-hundredth of these.
constexpr double kEnough = 1e-6;

// Where a step leads.
class Step : public WayBack {
 public:
  explicit Step(const JointShot& shot) : shot_(shot), steps_(2 * kMostAlive) {
    for (const JointFrame& frame : shot.frames) ends_.push_back(frame.h);
    for (const Place& place : shot.places) placeEnds_.push_back(place.point);
    eliminateAndReturn(shot, *this);
  }

  void restore(const EliminatedTrack& track) override {
    const Point step = track.step(steps_);
    steps_[2 * track.slot] = step.x;
    steps_[2 * track.slot + 1] = step.y;
    placeEnds_[track.track].x += step.x;
    placeEnds_[track.track].y += step.y;
  }

  void visit(std::size_t frame, FrameEquations& equations) override {
    ends_[frame] = equations.stepped(steps_);
  }

  // After a share of the step. Both transforms end on 1, and so does what lies between them.
  Homography transform(std::size_t frame, double share) const {
    Homography h = shot_.frames[frame].h;
    for (std::size_t i = 0; i < 9; ++i) {
      h[i / 3][i % 3] += share * (ends_[frame][i / 3][i % 3] - h[i / 3][i % 3]);
    }
    return h;
  }
  Point place(std::size_t track, double share) const {
    const Point p = shot_.places[track].point;
    return {p.x + share * (placeEnds_[track].x - p.x), p.y + share * (placeEnds_[track].y - p.y)};
  }

  double cost(double share) const {
    double sum = 0.0;
    std::size_t frame = shot_.frames.size();
    Homography h{};
    forEachSighting(shot_.noise, shot_.observations, [&](std::size_t f, const Match& m) {
      const auto t = static_cast<std::size_t>(m.track);
      if (shot_.lives.slots[t] == TrackLives::kNoSlot) return;
      if (f != frame) h = transform(frame = f, share);
      const Point p = place(t, share);
      const Point image = map(h, p);
      const Point r = {m.present.x - image.x, m.present.y - image.y};
      const double far = std::numeric_limits<double>::infinity();
      const Point counted = denominator(h, p) > kHorizon ? r : Point{far, far};
      sum += m.weight * m.weight * jointLoss(counted, shot_.noise[f]).loss;
    });
    return sum;
  }

 private:
  const JointShot& shot_;
  std::vector<Homography> ends_;
  std::vector<Point> placeEnds_;
  FrontVector steps_;  // of the tracks alive
};

// The largest share of the step that lowers the cost, which becomes that after it; 0 if none does.
double shareOf(const Step& step, double& cost) {
  for (double share : {1.0, 0.5, 0.25, 0.125}) {
    const double there = step.cost(share);
    if (!(there < cost)) continue;
    cost = there;
    return share;
  }
  return 0.0;
}

// What further steps would gain if each gained as many times less than the one before as the last
// did; as much again where there was none before it.
double gainToCome(double last, double before) {
  if (before == 0.0) return last;
  return last < before ? last * last / (before - last) : std::numeric_limits<double>::infinity();
}

}  // namespace

void fitJointly(std::vector<JointFrame>& frames, std::vector<Place>& places,
                const ObservationsOf& observations, const std::function<void()>& report) {
  const JointShot shot = jointShot(frames, places, observations);
  double cost = 0.0;
  double gain = 0.0;
  for (int i = 0; i < kMostJointSteps; ++i) {
    const Step step(shot);
    if (i == 0) cost = step.cost(0.0);
    const double costBefore = cost, gainBefore = gain;
    const double share = shareOf(step, cost);
    if (share == 0.0) break;
    for (std::size_t f = 0; f < frames.size(); ++f) frames[f].h = step.transform(f, share);
    for (std::size_t t = 0; t < places.size(); ++t) places[t].point = step.place(t, share);
    report();
    gain = costBefore - cost;
    if (gainToCome(gain, gainBefore) < kEnough * cost) break;
  }
  std::vector<bool> others(places.size());
  for (std::size_t t = 0; t < places.size(); ++t) {
    others[t] = shot.lives.slots[t] == TrackLives::kNoSlot;
  }
  refinePlaces(frames, shot.noise, observations, others, places);
}

}  // namespace cornerpin
