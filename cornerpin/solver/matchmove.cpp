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
//
// Every frame reads the scene as it then is and keeps no pointer into it: a fit may report an
// error, and the handler may change whatever it likes before it returns.
class FrameFit {
 public:
  explicit FrameFit(MMatchmove& scene) : scene_(scene) { system_.resize(kParameters); }

  // Fits the frame, starting from its transform in the outputs, which it replaces. Does nothing
  // where no track is active.
  void solve(int frame);

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

  void makeRoom();
  bool gather();
  void gatherChecked();
  void gatherWeightsAndBase();
  void hold(const Matrix& transform);
  float evaluate(Point& point);

  MMatchmove& scene_;
  const MLMSolver settings_;
  cornerpin::internal::NormalSystem system_;
  const MGenVector<float> noTrust_;
  MGenVector<int> active_;   // as long as the scene's tracks; of these, the active ones
  std::vector<float> room_;  // what the pointers below share
  ActiveTracks tracks_{};
  float *x_ = nullptr, *y_ = nullptr, *weight_ = nullptr;  // what `tracks_` reads
  float *goal_ = nullptr, *residuals_ = nullptr;
  Point held_{}, candidate_{};
  int frame_ = 0;
};

constexpr std::size_t kFloatsPerTrack = 11;

void FrameFit::makeRoom() {
  if (active_.length == scene_.trackCount) return;
  active_ = MGenVector<int>(scene_.trackCount);
  const std::ptrdiff_t n = active_.length;
  room_.resize(kFloatsPerTrack * static_cast<std::size_t>(n));
  float* next = room_.data();
  const auto take = [&next](std::ptrdiff_t count) { return std::exchange(next, next + count); };
  x_ = take(n);
  y_ = take(n);
  weight_ = take(n);
  goal_ = take(2 * n);
  residuals_ = take(2 * n);
  held_.values = take(2 * n);
  candidate_.values = take(2 * n);
  tracks_ = {x_, y_, weight_, 0};
}

// Chooses the active tracks and gathers what the fit reads of them. False, and nothing is reported,
// where something is missing.
bool FrameFit::gather() {
  const Matrix& base = scene_.basePositions;
  const MGenVector<float>& baseWeights = scene_.baseWeights;
  const int trackCount = scene_.trackCount;
  if (std::min({scene_.tracks.size(), baseWeights.length, base.rows}) < trackCount) return false;
  if (base.cols < 2 || frame_ < 0) return false;
  const std::ptrdiff_t frame = frame_;
  const std::ptrdiff_t weightStride = baseWeights.stride;
  const std::ptrdiff_t rowStride = base.rowStride, colStride = base.colStride;
  const float *const baseWeight = baseWeights.data, *const basePositions = base.data;
  const MMatchmoveTrack* const tracks = trackCount > 0 ? &scene_.tracks[0] : nullptr;
  float *const x = x_, *const y = y_, *const weights = weight_, *const goal = goal_;
  int* const active = active_.data;
  std::ptrdiff_t count = 0;
  for (std::ptrdiff_t i = 0; i < trackCount; ++i) {
    if (!(baseWeight[i * weightStride] > 0.0f)) continue;
    const MMatchmoveTrack& track = tracks[i];
    if (frame >= track.weights.length) return false;
    const float weight = track.weights.data[frame * track.weights.stride];
    if (!(weight > 0.0f)) continue;
    const Matrix& positions = track.positions;
    if (frame >= positions.rows || positions.cols < 2) return false;
    const float* const position = positions.data + frame * positions.rowStride;
    const float* const basePosition = basePositions + i * rowStride;
    active[count] = static_cast<int>(i);
    x[count] = basePosition[0];
    y[count] = basePosition[colStride];
    weights[count] = weight;
    goal[2 * count] = weight * position[0];
    goal[2 * count + 1] = weight * position[positions.colStride];
    ++count;
  }
  tracks_.count = static_cast<int>(count);
  return true;
}

// Where something is missing, weights are reported before positions, and base positions last.
void FrameFit::gatherChecked() {
  int count = 0;
  for (int i = 0; i < scene_.trackCount; ++i) {
    if (!(scene_.baseWeights[i] > 0.0f)) continue;
    const float weight = scene_.tracks[i].weights[frame_];
    if (!(weight > 0.0f)) continue;
    active_[count] = i;
    weight_[count] = weight;
    ++count;
  }
  for (int k = 0; k < count; ++k) {
    const Matrix& positions = scene_.tracks[active_[k]].positions;
    goal_[2 * std::ptrdiff_t{k}] = weight_[k] * positions(frame_, 0);
    goal_[2 * std::ptrdiff_t{k} + 1] = weight_[k] * positions(frame_, 1);
  }
  tracks_.count = count;
}

// The active tracks and their goal stay.
void FrameFit::gatherWeightsAndBase() {
  for (int k = 0; k < tracks_.count; ++k) {
    weight_[k] = scene_.tracks[active_[k]].weights[frame_];
    x_[k] = scene_.basePositions(active_[k], 0);
    y_[k] = scene_.basePositions(active_[k], 1);
  }
}

// Holds the first eight elements, in the order in which they are stored.
void FrameFit::hold(const Matrix& transform) {
  const Matrix kept = transform;  // outlives the handling of a report
  const int count = std::min(kParameters, kept.rows * kept.cols);
  if (count != kParameters) {
    MMatrixError::err("MVector length mismatch %d != %d", kParameters, count);
  }
  std::copy(kept.data, kept.data + count, held_.transform);
  std::fill(held_.transform + count, held_.transform + kParameters, 0.0f);
  held_.transform[kParameters] = candidate_.transform[kParameters] = 1.0f;
}

void FrameFit::solve(int frame) {
  frame_ = frame;
  makeRoom();
  const bool isWhole = gather();
  if (!isWhole) gatherChecked();
  if (tracks_.count == 0) return;
  hold(scene_.outputs[frame]);
  if (!isWhole) gatherWeightsAndBase();
  cornerpin::internal::iterate(settings_, *this);
  Matrix& transform = scene_.outputs[frame];
  if (!transform.ownsBuffer()) transform = transform.copy(Matrix::ColumnMajor);
  transform.resize(3, 3, Matrix::ColumnMajor);
  std::copy(held_.transform, held_.transform + 9, transform.data);
}

// The Euclidean distance of the point's values from the goal.
float FrameFit::evaluate(Point& point) {
  frameKernels().residuals(point.transform, tracks_, goal_, point.values, residuals_);
  return std::sqrt(_vector_norm2(residuals_, 2 * tracks_.count));
}

float FrameFit::start() { return evaluate(held_); }

void FrameFit::formSystem(bool moved) {
  if (!moved) return;
  double triangle[kParameters * kParameters];
  frameKernels().frameSums(held_.transform, tracks_, held_.values, goal_, triangle,
                           system_.gradient());
  system_.setTriangle(triangle);
}

float FrameFit::tryStep(float damping) {
  const float* const step = system_.step(damping, noTrust_).data;
  if (system_.wasReported()) gatherWeightsAndBase();  // as the handler has left them
  for (int p = 0; p < kParameters; ++p) candidate_.transform[p] = step[p] + held_.transform[p];
  return evaluate(candidate_);
}

}  // namespace

void MMatchmove::solve() {
  setupOutputs();
  solveBaseFrame();
  FrameFit fit(*this);
  for (int f = baseFrame + 1; f < frameCount; ++f) {
    outputs[f] = outputs[f - 1].copy(Matrix::ColumnMajor);
    fit.solve(f);
  }
  for (int f = baseFrame - 1; f >= 0; --f) {
    outputs[f] = outputs[f + 1].copy(Matrix::ColumnMajor);
    fit.solve(f);
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

void MMatchmove::solveFrame(int frame) { FrameFit(*this).solve(frame); }

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
