// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/reference.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* pivots, int* info);
void sgetri_(const int* n, float* a, const int* lda, const int* pivots, float* work,
             const int* lwork, int* info);
}

namespace reference {

void failWith(const char* before, int first, const char* between, int second) {
  throw Failure(before + std::to_string(first) + between + std::to_string(second));
}

void Matrix::resize(int rowCount, int colCount) {
  if (rowCount == rows && colCount == cols) return;
  Matrix resized(rowCount, colCount);
  for (int i = 0; i < std::min(rows, rowCount); ++i) {
    for (int j = 0; j < std::min(cols, colCount); ++j) resized(i, j) = (*this)(i, j);
  }
  *this = resized;
}

// Sums of squares

namespace {

float square(float v) { return v * v; }

// At most 8 elements, `stride` apart.
float sumOfFewSquares(const float* p, int n, std::ptrdiff_t stride) {
  float q[8] = {};
  for (int i = 0; i < n; ++i) q[i] = square(p[i * stride]);
  switch (n) {
    case 0:
      return 0.0f;
    case 1:
      return q[0];
    case 2:
      return q[0] + q[1];
    case 3:
      return (q[0] + q[1]) + q[2];
    case 4:
      return (q[0] + q[1]) + (q[2] + q[3]);
    case 5:
      return ((q[0] + q[1]) + (q[2] + q[3])) + q[4];
    case 6:
      return ((q[0] + q[1]) + (q[2] + q[3])) + (q[4] + q[5]);
    case 7:
      return ((q[0] + q[1]) + (q[2] + q[3])) + ((q[4] + q[5]) + q[6]);
    default:
      return ((q[0] + q[1]) + (q[2] + q[3])) + ((q[4] + q[5]) + (q[6] + q[7]));
  }
}

int largestPowerOfTwoUpTo(int n) {
  int k = 1;
  while (k <= n / 2) k *= 2;
  return k;
}

// The leading k elements, k a power of two from 8 on.
float sumOfLeadingSquares(const float* p, int k) {
  if (k == 8) return sumOfFewSquares(p, 8, 1);
  return sumOfSquaresOfPowerOfTwo(p, k / 2) + sumOfSquaresOfPowerOfTwo(p + k / 2, k / 2);
}

}  // namespace

float sumOfSquaresOfPowerOfTwo(const float* p, int n) {
  if (n <= 8) return sumOfFewSquares(p, n, 1);
  const int quarter = n / 4;
  float sums[4];
  for (int i = 0; i < 4; ++i) sums[i] = sumOfSquaresOfPowerOfTwo(p + i * quarter, quarter);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

float sumOfSquares(const float* p, int n) {
  if (n <= 8) return sumOfFewSquares(p, n, 1);
  const int k = largestPowerOfTwoUpTo(n);
  const float leading = sumOfLeadingSquares(p, k);
  return k < n ? leading + sumOfSquares(p + k, n - k) : leading;
}

float sumOfSquares(const float* p, int n, int stride) {
  if (n <= 8) return sumOfFewSquares(p, n, stride);
  const int k = largestPowerOfTwoUpTo(n);
  const float leading = sumOfLeadingSquares(p, k);
  if (k == n) return leading;
  return leading + sumOfSquares(p + std::ptrdiff_t{k} * stride, n - k, stride);
}

// Inverse

Matrix inverse(const Matrix& a) {
  const int n = a.rows;
  if (n == 0) throw Failure("sgetrf");  // which refuses a leading dimension of 0
  Floats lu(size(n) * size(n));
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) lu[size(j) * size(n) + size(i)] = a(i, j);
  }
  std::vector<int> pivots(size(n));
  int info = 0;
  sgetrf_(&n, &n, lu.data(), &n, pivots.data(), &info);
  if (info > 0) throw Failure("inverse: singular matrix");
  const int workLength = 64 * n;
  Floats work(size(workLength));
  sgetri_(&n, lu.data(), &n, pivots.data(), work.data(), &workLength, &info);
  if (info > 0) throw Failure("inverse: singular matrix");
  Matrix result(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) result(i, j) = lu[size(j) * size(n) + size(i)];
  }
  return result;
}

// Solver

void Solver::setState(const Floats& x) {
  state = x;
  stateSize = length(x);
}

void Solver::setGoal(const Floats& g) {
  goal = g;
  goalSize = length(g);
}

float Solver::computeEpsilon(const Floats& y) const {
  Floats difference(y.size());
  for (std::size_t k = 0; k < y.size(); ++k) difference[k] = y[k] - goal[k];
  return std::sqrt(sumOfSquares(difference.data(), length(difference)));
}

Matrix normalMatrix(const Matrix& jacobian, int m, int n) {
  Matrix a(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (int k = 0; k < m; ++k) {
        const float product = jacobian(k, j) * jacobian(k, i);
        sum += static_cast<double>(product);
        // Not finite in the product means not finite in the sum.
        if (!(std::fabs(sum) <= DBL_MAX)) throw Failure("nan");
      }
      a(i, j) = static_cast<float>(sum);
      a(j, i) = a(i, j);
    }
  }
  return a;
}

Floats gradient(const Matrix& jacobian, const Floats& goal, const Floats& values, int m, int n) {
  Floats g(size(n));
  for (int k = 0; k < m; ++k) {
    for (int j = 0; j < n; ++j) {
      const float residual = at(goal, k) - at(values, k);
      g[size(j)] =
          static_cast<float>(static_cast<double>(g[size(j)]) +
                             static_cast<double>(jacobian(k, j)) * static_cast<double>(residual));
    }
  }
  return g;
}

void scaleByTrust(Matrix& a, Floats& g, const Floats& trust) {
  for (int i = 0; i < a.rows; ++i) {
    g[size(i)] = g[size(i)] * at(trust, i);
    for (int j = 0; j < a.cols; ++j) {
      const float once = a(i, j) * at(trust, i);
      a(i, j) = once * at(trust, j);
    }
  }
}

void damp(Matrix& a, float lambda) {
  const double factor = static_cast<double>(lambda) + 1.0;
  for (int i = 0; i < a.rows; ++i) {
    a(i, i) = static_cast<float>(static_cast<double>(a(i, i)) * factor);
    if (!(std::fabs(a(i, i)) <= FLT_MAX)) throw Failure("nan");
  }
}

Floats multiply(const Matrix& a, const Floats& g) {
  Floats d(g.size());
  for (int i = 0; i < a.rows; ++i) {
    float sum = 0.0f;
    for (int j = 0; j < a.cols; ++j) sum += a(i, j) * g[size(j)];
    d[size(i)] = sum;
  }
  return d;
}

void limitByTrust(Floats& d, const Floats& trust) {
  const float s = sumOfSquares(d.data(), length(d));
  if (s > 1.0f) {
    const float root = std::sqrt(s);
    for (float& v : d) v = v / root;
  }
  for (int i = 0; i < length(d); ++i) d[size(i)] = d[size(i)] * trust[size(i)];
}

void Solver::solve() {
  problem->setX(state);
  problem->evalY(values);
  float epsilon = computeEpsilon(values);
  float lambda = 0.01f;
  int passes = 0;
  int stalls = 0;
  bool jacobianValid = false;
  bool accepted = true;
  for (;;) {
    ++passes;
    if (passes >= maxIterations) return;
    if (!jacobianValid) {
      if (!accepted) problem->setX(state);
      problem->evalDy(jacobian);
      jacobianValid = true;
    }
    Matrix a = normalMatrix(jacobian, goalSize, stateSize);
    Floats g = gradient(jacobian, goal, values, goalSize, stateSize);
    if (!trust.empty()) scaleByTrust(a, g, trust);
    damp(a, lambda);
    Floats d = multiply(inverse(a), g);
    if (!trust.empty()) limitByTrust(d, trust);

    Floats candidate(state.size());
    for (std::size_t i = 0; i < state.size(); ++i) candidate[i] = d[i] + state[i];
    problem->setX(candidate);
    Floats candidateValues;
    problem->evalY(candidateValues);
    const float candidateEpsilon = computeEpsilon(candidateValues);

    const float gain = epsilon - candidateEpsilon;
    const double ratio =
        static_cast<double>(gain) / (std::fabs(static_cast<double>(epsilon)) + 1.0);
    if (static_cast<double>(tolerance) >= ratio) {
      ++stalls;
      if (stalls >= maxStalls) return;
    } else {
      stalls = 0;
    }
    accepted = epsilon > candidateEpsilon;
    if (accepted) {
      state = candidate;
      if (values.size() != candidateValues.size()) {
        failWith("MVector length mismatch ", length(values), " != ", length(candidateValues));
      }
      values = candidateValues;
      lambda = lambda / 10.0f;
      epsilon = candidateEpsilon;
      jacobianValid = false;
    } else {
      lambda = static_cast<float>(static_cast<double>(lambda) * 0.1);
      if (resetStallsOnReject && static_cast<double>(lambda) < 0.05) stalls = 0;
    }
  }
}

// Match-move

namespace {

// An element of a std::vector, const or not.
template <class Array>
auto& elementAt(Array& array, int i) {
  if (i < 0 || size(i) >= array.size()) throw Failure("MArray::operator[]");
  return array[size(i)];
}

}  // namespace

void Scene::setupOutputs() {
  trackCount = static_cast<int>(tracks.size());
  frameCount = length(elementAt(tracks, 0).weights);
  basePositions.resize(trackCount, 2);
  baseWeights.resize(size(trackCount));
  outputs.resize(size(frameCount));
}

void Scene::solveBaseFrame() {
  elementAt(outputs, baseFrame) = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  std::fill(baseWeights.begin(), baseWeights.end(), 0.0f);
  for (int i = 0; i < trackCount; ++i) {
    const Track& track = elementAt(tracks, i);
    at(baseWeights, i) = at(track.weights, baseFrame);
    basePositions(i, 0) = track.positions(baseFrame, 0);
    basePositions(i, 1) = track.positions(baseFrame, 1);
  }
}

void Scene::solveFrame(int frame) {
  MatchmoveProblem problem(*this, frame);
  if (problem.activeTracks.empty()) return;
  Solver solver;
  solver.problem = &problem;
  solver.setGoal(problem.goal());
  solver.setState(xToVector(elementAt(outputs, frame)));
  solver.solve();
  xToMatrix(solver.state, elementAt(outputs, frame));
}

void Scene::solve() {
  setupOutputs();
  solveBaseFrame();
  for (int f = baseFrame + 1; f < frameCount; ++f) {
    outputs[size(f)] = outputs[size(f - 1)];
    solveFrame(f);
  }
  for (int f = baseFrame - 1; f >= 0; --f) {
    outputs[size(f)] = outputs[size(f + 1)];
    solveFrame(f);
  }
}

namespace {

// Coordinate r of h * (x, y, 1).
float carried(const Transform& h, int r, float x, float y) {
  return x * element(h, r, 0) + y * element(h, r, 1) + element(h, r, 2);
}

}  // namespace

void Scene::project(int frame, const Floats& p, Floats& out) const {
  const Transform& h = elementAt(outputs, frame);
  const float x = at(p, 0);
  const float y = at(p, 1);
  const float w = carried(h, 2, x, y);
  out = {carried(h, 0, x, y) / w, carried(h, 1, x, y) / w};
}

MatchmoveProblem::MatchmoveProblem(const Scene& sceneToFit, int frameToFit)
    : scene(sceneToFit), frame(frameToFit) {
  for (int i = 0; i < scene.trackCount; ++i) {
    if (at(scene.baseWeights, i) > 0 && at(scene.tracks[size(i)].weights, frame) > 0) {
      activeTracks.push_back(i);
    }
  }
}

Floats MatchmoveProblem::goal() const {
  Floats packed;
  packed.reserve(2 * activeTracks.size());
  for (const int t : activeTracks) {
    const Track& track = scene.tracks[size(t)];
    const float w = at(track.weights, frame);
    packed.push_back(w * track.positions(frame, 0));
    packed.push_back(w * track.positions(frame, 1));
  }
  return packed;
}

void MatchmoveProblem::setX(const Floats& parameters) {
  x = parameters;
  xToMatrix(x, transform);
  project(transform, y);
}

void MatchmoveProblem::evalY(Floats& out) { out = y; }

void MatchmoveProblem::evalDy(Matrix& dy) {
  constexpr float step = 0.0001f;
  dy.resize(length(y), length(x));
  Transform moved = transform;
  Floats movedY;
  for (int p = 0; p < 8; ++p) {
    const float saved = moved[size(p)];
    moved[size(p)] = saved + step;
    project(moved, movedY);
    for (int k = 0; k < dy.rows; ++k) dy(k, p) = (movedY[size(k)] - y[size(k)]) / step;
    moved[size(p)] = saved;
  }
}

void MatchmoveProblem::project(const Transform& h, Floats& out) const {
  out.resize(2 * activeTracks.size());
  for (std::size_t i = 0; i < activeTracks.size(); ++i) {
    const int t = activeTracks[i];
    const float w = at(scene.tracks[size(t)].weights, frame);
    const float bx = scene.basePositions(t, 0);
    const float by = scene.basePositions(t, 1);
    const float s = carried(h, 2, bx, by);
    out[2 * i] = (w * carried(h, 0, bx, by)) / s;
    out[2 * i + 1] = (w * carried(h, 1, bx, by)) / s;
  }
}

Floats xToVector(const Transform& h) { return Floats(h.begin(), h.begin() + 8); }

void xToMatrix(const Floats& x, Transform& h) {
  h.assign(x.begin(), x.begin() + 8);
  h.push_back(1.0f);
}

}  // namespace reference
