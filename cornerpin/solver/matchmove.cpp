// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include <algorithm>
#include <cmath>
#include <limits>
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

  // Chooses a frame and gathers the tracks that are active in it. False when none is.
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

  // What the frames read of a track that is present in the base frame.
  struct Source {
    const float* weights;
    const float* positions;
    int weightStride, rowStride, colStride;
    float x, y;  // in the base frame
  };

  void findSources();
  void gather();
  void gatherChecked();
  void gatherBaseChecked();
  float evaluate(Point& point);

  const MMatchmove& scene_;
  const MLMSolver settings_;
  cornerpin::internal::NormalSystem system_;
  const MGenVector<float> noTrust_;
  std::vector<Source> sources_;
  int framesInRange_ = 0;    // the frames that all sources have
  MGenVector<int> active_;   // the active tracks, in a frame out of range
  std::vector<float> room_;  // what the pointers below share
  ActiveTracks tracks_;
  float *x_, *y_, *weight_;  // what `tracks_` reads
  float *goal_, *residuals_;
  Point held_, candidate_;
  int frame_ = 0;
  bool isInRange_ = false;
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
  residuals_ = take(2 * n);
  held_.values = take(2 * n);
  candidate_.values = take(2 * n);
  tracks_ = {x_, y_, weight_, 0};
  system_.resize(kParameters);
  findSources();
}

// Leaves no frame in range when anything that frames share is missing.
void FrameFit::findSources() {
  const Matrix& base = scene_.basePositions;
  const int count = scene_.trackCount;
  if (std::min({scene_.tracks.size(), scene_.baseWeights.length, base.rows}) < count) return;
  if (base.cols < 2) return;
  sources_.reserve(static_cast<std::size_t>(count));
  int frames = std::numeric_limits<int>::max();
  for (int i = 0; i < count; ++i) {
    if (!(scene_.baseWeights[i] > 0.0f)) continue;
    const MGenVector<float>& weights = scene_.tracks[i].weights;
    const Matrix& positions = scene_.tracks[i].positions;
    frames = std::min({frames, weights.length, positions.cols < 2 ? 0 : positions.rows});
    sources_.push_back({weights.data, positions.data, weights.stride, positions.rowStride,
                        positions.colStride, base(i, 0), base(i, 1)});
  }
  framesInRange_ = frames;
}

bool FrameFit::select(int frame) {
  frame_ = frame;
  isInRange_ = frame >= 0 && frame < framesInRange_;
  if (isInRange_) {
    gather();
  } else {
    gatherChecked();
  }
  return tracks_.count > 0;
}

void FrameFit::gather() {
  const std::ptrdiff_t frame = frame_;
  float *const x = x_, *const y = y_, *const weights = weight_, *const goal = goal_;
  std::ptrdiff_t count = 0;
  for (const Source& source : sources_) {
    const float weight = source.weights[frame * source.weightStride];
    if (!(weight > 0.0f)) continue;
    const float* const position = source.positions + frame * source.rowStride;
    x[count] = source.x;
    y[count] = source.y;
    weights[count] = weight;
    goal[2 * count] = weight * position[0];
    goal[2 * count + 1] = weight * position[source.colStride];
    ++count;
  }
  tracks_.count = static_cast<int>(count);
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

void FrameFit::gatherBaseChecked() {
  for (int k = 0; k < tracks_.count; ++k) {
    x_[k] = scene_.basePositions(active_[k], 0);
    y_[k] = scene_.basePositions(active_[k], 1);
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
  if (!isInRange_) gatherBaseChecked();
  cornerpin::internal::iterate(settings_, *this);
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
