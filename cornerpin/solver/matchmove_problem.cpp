// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove_problem.h"

#include <algorithm>

#include "cornerpin/foundation/arithmetic.h"
#include "cornerpin/foundation/exception.h"
#include "cornerpin/solver/same_layout.h"

namespace {

constexpr int kParameterCount = 8;
constexpr float kDifferenceStep = 0.0001f;

}  // namespace

MMatchmoveProblem::MMatchmoveProblem(MMatchmove* scene, int frame) : scene(scene), frame(frame) {
  activeTracks.resize(scene->trackCount);
  for (int i = 0; i < scene->trackCount; ++i) {
    if (scene->baseWeights[i] > 0.0f && scene->tracks[i].weights[frame] > 0.0f) {
      activeTracks[activeCount++] = i;
    }
  }
  activeTracks.resize(activeCount);
}

MMatchmoveProblem::~MMatchmoveProblem() = default;

MGenVector<float> MMatchmoveProblem::getGoal() const {
  MGenVector<float> goal(2 * activeCount);
  for (int i = 0; i < activeCount; ++i) {
    const MMatchmoveTrack& track = activeTrack(i);
    const float w = track.weights[frame];
    goal[2 * i] = w * track.positions(frame, 0);
    goal[2 * i + 1] = w * track.positions(frame, 1);
  }
  return goal;
}

void MMatchmoveProblem::setX(const MGenVector<float>& parameters) {
  x = parameters;
  xToMatrix(x, transform);
  project(transform, y);
}

void MMatchmoveProblem::evalY(MGenVector<float>& out) { out = y; }

void MMatchmoveProblem::evalDy(MGenMatrix<float>& dy) {
  cornerpin::internal::resizeKeepingLayout(dy, y.length, x.length);
  MGenMatrix<float> h = transform.copy(MGenMatrix<float>::ColumnMajor);
  MGenVector<float> moved;
  for (int p = 0; p < kParameterCount; ++p) {
    const float saved = h.data[p];
    h.data[p] += kDifferenceStep;
    project(h, moved);
    dy.column(p).set((moved - y) / kDifferenceStep);
    h.data[p] = saved;
  }
}

void MMatchmoveProblem::project(const MGenMatrix<float>& h, MGenVector<float>& out) const {
  out.resize(2 * activeCount);
  for (int i = 0; i < activeCount; ++i) {
    const int t = activeTracks[i];
    const float w = weight(i);
    const float bx = scene->basePositions(t, 0);
    const float by = scene->basePositions(t, 1);
    const auto row = [&](int r) { return (bx * h(r, 0) + by * h(r, 1)) + h(r, 2); };
    const float u = row(0);
    const float v = row(1);
    const float s = row(2);
    out[2 * i] = (w * u) / s;
    out[2 * i + 1] = (w * v) / s;
  }
}

void MMatchmoveProblem::xToVector(const MGenMatrix<float>& h, MGenVector<float>& parameters) const {
  parameters.resize(kParameterCount);
  const int count = std::min(kParameterCount, h.rows * h.cols);
  if (count != kParameterCount) {
    MMatrixError::err("MVector length mismatch %d != %d", kParameterCount, count);
  }
  for (int i = 0; i < count; ++i) parameters[i] = h.data[i];
}

void MMatchmoveProblem::xToMatrix(const MGenVector<float>& parameters, MGenMatrix<float>& h) const {
  h.resize(3, 3, MGenMatrix<float>::ColumnMajor);
  if (parameters.length != kParameterCount) {
    MMatrixError::err("MVector length mismatch %d != %d", kParameterCount, parameters.length);
  }
  const int count = std::min(kParameterCount, parameters.length);
  for (int i = 0; i < count; ++i) h.data[i] = parameters[i];
  h(2, 2) = 1.0f;
}

void MMatchmoveProblem::yToVector(const MGenMatrix<float>& m, MGenVector<float>& packed) const {
  packed.resize(2 * activeCount);
  for (int i = 0; i < activeCount; ++i) {
    const float w = weight(i);
    packed[2 * i] = w * m(i, 0);
    packed[2 * i + 1] = w * m(i, 1);
  }
}

void MMatchmoveProblem::yToMatrix(const MGenVector<float>& packed, MGenMatrix<float>& m) const {
  cornerpin::internal::resizeKeepingLayout(m, activeCount, 2);
  for (int i = 0; i < activeCount; ++i) {
    const float w = weight(i);
    m(i, 0) = packed[2 * i] / w;
    m(i, 1) = packed[2 * i + 1] / w;
  }
}
