// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "cornerpin/foundation/norm.h"
#include "cornerpin/solver/kernels/frame_kernels.h"
#include "cornerpin/solver/lm_iteration.h"
#include "cornerpin/solver/matchmove_problem.h"
#include "cornerpin/solver/normal_system.h"
#include "cornerpin/solver/same_layout.h"

template class MArray<MMatchmoveTrack>;
template class MArray<MGenMatrix<float>>;

using Matrix = MGenMatrix<float>;

namespace {

using cornerpin::kernels::ActiveTracks;
using cornerpin::kernels::frameKernels;
using cornerpin::kernels::kParameters;

// The fits of one frame after another: what `MLMSolver` with its defaults makes of a
// `MMatchmoveProblem`, with room for all tracks, so that a frame allocates nothing.
class FrameFit {
 public:
  explicit FrameFit(const MMatchmove& scene);

  // Chooses a frame and the tracks that are active in it, and gathers their weighted positions
  // there. False when none is.
  bool select(int frame);
  // Fits the frame, starting from `transform`, which it replaces.
  void solve(Matrix& transform);

  // For the iteration.
  float start();
  void formSystem(bool moved);
  float tryStep(float damping);
  void accept() { std::swap(held_, candidate_); }

 private:
  // A transform and the weighted projection of the active tracks through it.
  struct Point {
    float transform[9];
    float* values;
  };

  void setGoal(std::ptrdiff_t index, const MMatchmoveTrack& track);
  void gatherBase();
  float evaluate(Point& point);

  const MMatchmove& scene_;
  const MLMSolver settings_;
  cornerpin::internal::NormalSystem system_;
  const MGenVector<float> noTrust_;
  MGenVector<int> active_;   // the active tracks
  std::vector<float> room_;  // what the pointers below share
  ActiveTracks tracks_;
  float *x_, *y_, *weight_;  // what `tracks_` reads
  float *goal_, *difference_;
  Point held_, candidate_;
  int frame_ = 0;
};

constexpr std::size_t kFloatsPerTrack = 11;

FrameFit::FrameFit(const MMatchmove& scene)
    : scene_(scene),
      active_(scene.trackCount),
      room_(kFloatsPerTrack * static_cast<std::size_t>(active_.length)) {
  const std::ptrdiff_t n = active_.length;
  float* next = room_.data();
  const auto take = [&next](std::ptrdiff_t count) { return std::exchange(next, next + count); };
  x_ = take(n);
  y_ = take(n);
  weight_ = take(n);
  goal_ = take(2 * n);
  difference_ = take(2 * n);
  held_.values = take(2 * n);
  candidate_.values = take(2 * n);
  tracks_ = {x_, y_, weight_, 0};
  system_.resize(kParameters);
}

bool FrameFit::select(int frame) {
  frame_ = frame;
  int count = 0;
  bool complete = true;
  for (int i = 0; i < scene_.trackCount; ++i) {
    if (!(scene_.baseWeights[i] > 0.0f)) continue;
    const MMatchmoveTrack& track = scene_.tracks[i];
    const float weight = track.weights[frame];
    if (!(weight > 0.0f)) continue;
    active_.data[count] = i;
    weight_[count] = weight;
    complete = complete && frame >= 0 && frame < track.positions.rows && track.positions.cols >= 2;
    if (complete) setGoal(count, track);
    ++count;
  }
  tracks_.count = count;
  // A position that is missing is reported after all weights that are.
  for (int k = 0; k < count && !complete; ++k) setGoal(k, scene_.tracks[active_.data[k]]);
  return count > 0;
}

void FrameFit::setGoal(std::ptrdiff_t index, const MMatchmoveTrack& track) {
  const float weight = weight_[index];
  goal_[2 * index] = weight * track.positions(frame_, 0);
  goal_[2 * index + 1] = weight * track.positions(frame_, 1);
}

void FrameFit::gatherBase() {
  const std::ptrdiff_t count = tracks_.count;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const int t = active_.data[i];
    x_[i] = scene_.basePositions(t, 0);
    y_[i] = scene_.basePositions(t, 1);
  }
}

void FrameFit::solve(Matrix& transform) {
  const int count = std::min(kParameters, transform.rows * transform.cols);
  if (count != kParameters) {
    MMatrixError::err("MVector length mismatch %d != %d", kParameters, count);
  }
  std::copy(transform.data, transform.data + count, held_.transform);
  std::fill(held_.transform + count, held_.transform + kParameters, 0.0f);
  held_.transform[kParameters] = candidate_.transform[kParameters] = 1.0f;
  gatherBase();
  cornerpin::internal::iterate(settings_, *this);
  if (!transform.ownsBuffer()) transform = transform.copy(Matrix::ColumnMajor);
  transform.resize(3, 3, Matrix::ColumnMajor);
  std::copy(held_.transform, held_.transform + 9, transform.data);
}

// The Euclidean distance of the point's values from the goal.
float FrameFit::evaluate(Point& point) {
  frameKernels().project(point.transform, tracks_, point.values);
  const std::ptrdiff_t n = 2 * std::ptrdiff_t{tracks_.count};
  for (std::ptrdiff_t k = 0; k < n; ++k) difference_[k] = point.values[k] - goal_[k];
  return std::sqrt(_vector_norm2(difference_, static_cast<int>(n)));
}

float FrameFit::start() { return evaluate(held_); }

void FrameFit::formSystem(bool moved) {
  if (!moved) return;
  double triangle[kParameters * kParameters];
  frameKernels().frameSystem(held_.transform, tracks_, held_.values, goal_, triangle,
                             system_.gradient());
  system_.setTriangle(triangle);
}

float FrameFit::tryStep(float damping) {
  const float* const step = system_.step(damping, noTrust_).data;
  for (int p = 0; p < kParameters; ++p) candidate_.transform[p] = step[p] + held_.transform[p];
  return evaluate(candidate_);
}

void solveFrame(MMatchmove& scene, int frame, FrameFit& fit) {
  if (fit.select(frame)) fit.solve(scene.outputs[frame]);
}

}  // namespace

void MMatchmove::solve() {
  setupOutputs();
  solveBaseFrame();
  FrameFit fit(*this);
  for (int f = baseFrame + 1; f < frameCount; ++f) {
    outputs[f] = outputs[f - 1].copy(Matrix::ColumnMajor);
    ::solveFrame(*this, f, fit);
  }
  for (int f = baseFrame - 1; f >= 0; --f) {
    outputs[f] = outputs[f + 1].copy(Matrix::ColumnMajor);
    ::solveFrame(*this, f, fit);
  }
}

void MMatchmove::setupOutputs() {
  trackCount = tracks.size();
  frameCount = tracks[0].weights.length;  // fails without tracks, before any output changes
  cornerpin::internal::resizeKeepingLayout(basePositions, trackCount, 2);
  baseWeights.resize(trackCount);
  outputs.resize(frameCount);
}

void MMatchmove::solveBaseFrame() {
  Matrix identity(3, 3, Matrix::ColumnMajor);
  for (int i = 0; i < 3; ++i) identity(i, i) = 1.0f;
  outputs[baseFrame] = identity;
  for (int i = 0; i < baseWeights.length; ++i) baseWeights[i] = 0.0f;
  for (int i = 0; i < trackCount; ++i) {
    baseWeights[i] = tracks[i].weights[baseFrame];
    basePositions(i, 0) = tracks[i].positions(baseFrame, 0);
    basePositions(i, 1) = tracks[i].positions(baseFrame, 1);
  }
}

void MMatchmove::solveFrame(int frame) {
  FrameFit fit(*this);
  ::solveFrame(*this, frame, fit);
}

void MMatchmove::project(int frame, const MGenVector<float>& p, MGenVector<float>& out) const {
  const Matrix& h = outputs[frame];
  const float x = p[0];
  const float y = p[1];
  const auto row = [&](int r) { return (x * h(r, 0) + y * h(r, 1)) + h(r, 2); };
  const float u = row(0);
  const float v = row(1);
  const float w = row(2);
  out.resize(2);
  out[0] = u / w;
  out[1] = v / w;
}
