// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_REFERENCE_H
#define TESTS_SUPPORT_REFERENCE_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

// The solver and the match-move driver a second time, in plain loops over std::vector and without
// the library. Tests compare the library with it bit for bit; benchmarks measure against it.
namespace reference {

using Floats = std::vector<float>;

// Carries the text that the library's exception carries.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "<before> first <between> second", the form of every message with numbers.
[[noreturn]] void failWith(const char* before, int first, const char* between, int second);

inline std::size_t size(int n) { return static_cast<std::size_t>(n); }
inline int length(const Floats& v) { return static_cast<int>(v.size()); }

inline void checkIndex(const Floats& v, int i) {
  if (i < 0 || i >= length(v)) {
    failWith("MVector index ", i, " out of range ", length(v) - 1);
  }
}
inline float& at(Floats& v, int i) {
  checkIndex(v, i);
  return v[size(i)];
}
inline float at(const Floats& v, int i) {
  checkIndex(v, i);
  return v[size(i)];
}

// Row-major.
struct Matrix {
  Matrix() = default;
  Matrix(int rowCount, int colCount)
      : rows(rowCount), cols(colCount), elements(size(rowCount) * size(colCount)) {}

  std::size_t index(int i, int j) const {
    if (j < 0 || j >= cols) failWith("MMatrix col ", j, " out of range 0..", cols - 1);
    if (i < 0 || i >= rows) failWith("MMatrix row ", i, " out of range 0..", rows - 1);
    return size(i) * size(cols) + size(j);
  }
  float& operator()(int i, int j) { return elements[index(i, j)]; }
  float operator()(int i, int j) const { return elements[index(i, j)]; }

  // Keeps the common top-left block; zero elsewhere.
  void resize(int rowCount, int colCount);

  int rows = 0;
  int cols = 0;
  Floats elements;
};

// Sums of squares: balanced trees over the largest leading power of two, then the tail. The
// strided form steps only in the tail when there are more than 8 elements.
float sumOfSquaresOfPowerOfTwo(const float* p, int n);
float sumOfSquares(const float* p, int n);
float sumOfSquares(const float* p, int n, int stride);

// By LAPACK's sgetrf and sgetri.
Matrix inverse(const Matrix& a);

struct Problem {
  virtual ~Problem() = default;
  virtual void setX(const Floats& x) = 0;
  virtual void evalY(Floats& y) = 0;
  virtual void evalDy(Matrix& dy) = 0;
};

struct Solver {
  void setState(const Floats& x);
  void setGoal(const Floats& g);
  float computeEpsilon(const Floats& y) const;
  void solve();

  Problem* problem = nullptr;
  Floats state;
  Floats goal;
  Floats values;
  Floats trust;
  Matrix jacobian;
  int stateSize = 0;
  int goalSize = 0;
  int maxStalls = 6;
  int maxIterations = 75;
  float tolerance = 0.01f;
  bool resetStallsOnReject = false;
};

// The steps of one pass, each on its own.
Matrix normalMatrix(const Matrix& jacobian, int m, int n);
Floats gradient(const Matrix& jacobian, const Floats& goal, const Floats& values, int m, int n);
void scaleByTrust(Matrix& a, Floats& g, const Floats& trust);
void damp(Matrix& a, float lambda);
Floats multiply(const Matrix& a, const Floats& g);
void limitByTrust(Floats& d, const Floats& trust);

// A 3 x 3 transform, column-major; empty before it is set.
using Transform = Floats;

inline float element(const Transform& h, int i, int j) { return h[size(3 * j + i)]; }

struct Track {
  Matrix positions;  // frames x 2
  Floats weights;
};

struct Scene {
  void setupOutputs();
  void solveBaseFrame();
  void solveFrame(int frame);
  void solve();
  void project(int frame, const Floats& p, Floats& out) const;

  std::vector<Track> tracks;
  int baseFrame = 0;
  int trackCount = 0;
  int frameCount = 0;
  Matrix basePositions;
  Floats baseWeights;
  std::vector<Transform> outputs;
};

struct MatchmoveProblem : Problem {
  MatchmoveProblem(const Scene& sceneToFit, int frameToFit);

  Floats goal() const;
  void setX(const Floats& parameters) override;
  void evalY(Floats& out) override;
  void evalDy(Matrix& dy) override;
  void project(const Transform& h, Floats& out) const;

  const Scene& scene;
  int frame;
  std::vector<int> activeTracks;
  Floats x;
  Floats y;
  Transform transform;
};

Floats xToVector(const Transform& h);
void xToMatrix(const Floats& x, Transform& h);

}  // namespace reference

#endif
