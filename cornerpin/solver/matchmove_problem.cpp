// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove_problem.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/solver/kernels/frame_kernels.h"
#include "cornerpin/solver/same_layout.h"

namespace {

using cornerpin::kernels::ActiveTracks;
using cornerpin::kernels::frameKernels;

constexpr int kParameterCount = cornerpin::kernels::kParameters;

// The three runs that `gather` filled.
ActiveTracks activeTracksIn(const MGenVector<float>& gathered, std::ptrdiff_t count) {
  return {gathered.data, gathered.data + count, gathered.data + 2 * count, static_cast<int>(count)};
}

// The 3 x 3 elements in column-major order, read row by row; nothing is read when no track needs
// them.
std::array<float, 9> elementsOf(const MGenMatrix<float>& h, int activeCount) {
  std::array<float, 9> elements{};
  if (activeCount == 0) return elements;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      elements[static_cast<std::size_t>(i) + 3 * static_cast<std::size_t>(j)] = h(i, j);
    }
  }
  return elements;
}

}  // namespace

MMatchmoveProblem::MMatchmoveProblem(MMatchmove* scene, int frame)
    : scene(scene), activeTracks(scene->trackCount), frame(frame) {
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
  y.resize(2 * activeCount);
  gather(gathered_);
  projectGathered(transform, gathered_, y);
}

void MMatchmoveProblem::evalY(MGenVector<float>& out) { out = y; }

// Copies what a projection reads of the active tracks into contiguous runs.
void MMatchmoveProblem::gather(MGenVector<float>& gathered) const {
  gathered.resize(3 * activeCount);
  for (int i = 0; i < activeCount; ++i) {
    const int t = activeTracks[i];
    gathered.data[2 * activeCount + i] = weight(i);
    gathered.data[i] = scene->basePositions(t, 0);
    gathered.data[activeCount + i] = scene->basePositions(t, 1);
  }
}

void MMatchmoveProblem::evalDy(MGenMatrix<float>& dy) {
  cornerpin::internal::resizeKeepingLayout(dy, y.length, x.length);
  const int valueCount = 2 * activeCount;
  const bool direct = dy.rows == valueCount && dy.cols == kParameterCount && dy.colStride == 1 &&
                      dy.rowStride == kParameterCount;
  const MGenMatrix<float> rows =
      direct ? dy : MGenMatrix<float>(valueCount, kParameterCount, MGenMatrix<float>::RowMajor);
  MGenVector<float> values = y.stride == 1 ? y : y.copy();
  if (values.length < valueCount) values.resize(valueCount);  // no column will take the result
  gather(gathered_);
  frameKernels().differences(elementsOf(transform, activeCount).data(),
                             activeTracksIn(gathered_, activeCount), values.data, rows.data);
  for (int p = 0; !direct && p < kParameterCount; ++p) dy.column(p).set(rows.column(p));
}

void MMatchmoveProblem::project(const MGenMatrix<float>& h, MGenVector<float>& out) const {
  out.resize(2 * activeCount);  // before anything is read that may be missing
  MGenVector<float> gathered;
  gather(gathered);
  projectGathered(h, gathered, out);
}

void MMatchmoveProblem::projectGathered(const MGenMatrix<float>& h,
                                        const MGenVector<float>& gathered,
                                        MGenVector<float>& out) const {
  MGenVector<float> values = out.stride == 1 ? out : MGenVector<float>(out.length);
  frameKernels().project(elementsOf(h, activeCount).data(), activeTracksIn(gathered, activeCount),
                         values.data);
  if (out.stride != 1) out.set(values);
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
