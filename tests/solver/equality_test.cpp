// SPDX-License-Identifier: BSD-3-Clause

// The library against the plain reference, bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/foundation/norm.h"
#include "cornerpin/solver/lm_solver.h"
#include "tests/support/reference.h"
#include "tests/support/scene.h"

namespace {

using reference::Floats;
using reference::size;
using scenes::Random;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// What happened between a solver and its problem, and what is left afterwards.
struct Trace {
  scenes::Bits result() const { return bits; }
  void add(const std::string& text) { bits.insert(bits.end(), text.begin(), text.end()); }
  void add(const Floats& values) {
    bits.push_back(static_cast<std::uint32_t>(values.size()));
    for (const float v : values) {
      std::uint32_t word = 0x7fc00000u;
      if (!std::isnan(v)) std::memcpy(&word, &v, sizeof word);
      bits.push_back(word);
    }
  }
  scenes::Bits bits;
};

enum class Model { Linear, Valley, Exponential };
enum class Fault {
  None,
  NanValue,
  InfiniteValue,
  NanSlope,
  InfiniteSlope,
  HugeSlope,
  FewValues,
  FewRows,
  FewColumns,
  Throws
};

// A problem of a client: a model, and a fault from some call on.
struct Client : reference::Problem {
  Client(std::uint32_t seed, Trace& log) : trace(log), random(seed) {
    model = static_cast<Model>(random.below(3));
    const int linear = random.oneIn(3) ? 8 : random.between(1, 12);  // 8 have kernels of their own
    n = model == Model::Linear ? linear : 2;
    m = model == Model::Valley ? 2 : random.between(random.oneIn(5) ? 1 : n, 40);
    for (int i = 0; i < m * n; ++i) table.push_back(random.real(-2, 2));
    for (int k = 0; k < m; ++k) goal.push_back(model == Model::Valley ? 0 : random.real(-5, 5));
    for (int i = 0; i < n; ++i) start.push_back(random.real(-2, 2));
    if (random.oneIn(3)) fault = static_cast<Fault>(random.between(1, 9));
    faultyCall = random.below(8);
  }

  bool faulty(Fault kind) const { return fault == kind && calls > faultyCall; }
  void called(const char* name) {
    ++calls;
    trace.add(name);
    if (faulty(Fault::Throws)) throw reference::Failure(std::string(name) + " failed");
  }

  void setX(const Floats& parameters) override {
    called("setX");
    trace.add(parameters);
    x = parameters;
  }

  float value(int k) const {
    const float* row = &table[size(k) * size(n)];
    if (model == Model::Valley) return k == 0 ? 10 * (x[1] - x[0] * x[0]) : 1 - x[0];
    if (model == Model::Exponential) return x[0] * std::exp(0.2f * x[1] * row[0]);
    float sum = 0;
    for (int i = 0; i < n; ++i) sum += row[i] * x[size(i)];
    return sum;
  }

  float slope(int k, int i) const {
    const float* row = &table[size(k) * size(n)];
    if (model == Model::Valley) {
      if (k == 1) return i == 0 ? -1.0f : 0.0f;
      return i == 0 ? -20 * x[0] : 10.0f;
    }
    if (model == Model::Linear) return row[i];
    const float e = std::exp(0.2f * x[1] * row[0]);
    return i == 0 ? e : x[0] * e * 0.2f * row[0];
  }

  void evalY(Floats& y) override {
    called("evalY");
    y.resize(size(faulty(Fault::FewValues) ? m - 1 : m));
    for (std::size_t k = 0; k < y.size(); ++k) y[k] = value(static_cast<int>(k));
    if (y.empty()) return;
    if (faulty(Fault::NanValue)) y.back() = nan;
    if (faulty(Fault::InfiniteValue)) y.front() = infinity;
  }

  void evalDy(reference::Matrix& dy) override {
    called("evalDy");
    dy = reference::Matrix(faulty(Fault::FewRows) ? m - 1 : m,
                           faulty(Fault::FewColumns) ? n - 1 : n);
    for (int k = 0; k < dy.rows; ++k) {
      for (int i = 0; i < dy.cols; ++i) dy(k, i) = slope(k, i);
    }
    if (dy.elements.empty()) return;
    if (faulty(Fault::NanSlope)) dy.elements.back() = nan;
    if (faulty(Fault::InfiniteSlope)) dy.elements.back() = infinity;
    if (faulty(Fault::HugeSlope)) dy.elements.front() = 1.5e19f;  // its square is near the limit
  }

  Trace& trace;
  Random random;
  Model model;
  Fault fault = Fault::None;
  int faultyCall;
  int calls = 0;
  int n, m;
  Floats table, goal, start, x;
};

// The same client to the library. It hands its values out fresh, from shared storage that it
// overwrites later, or with a stride; its Jacobian in any layout.
class LibraryClient : public MLMProblem {
 public:
  LibraryClient(Client& client, std::uint32_t seed) : client_(client), random_(seed) {
    style_ = random_.below(3);
  }
  void setX(const MGenVector<float>& x) override {
    client_.setX(scenes::floatsOf(x));
    if (style_ == 0) {  // what was handed out before is overwritten
      for (int i = 0; i < shared_.length; ++i) shared_[i] = nan;
    }
  }
  void evalY(MGenVector<float>& y) override {
    Floats values;
    client_.evalY(values);
    switch (style_) {
      case 0:
        shared_.resize(reference::length(values));
        for (int i = 0; i < shared_.length; ++i) shared_[i] = values[size(i)];
        y = shared_;
        break;
      case 1:
        y = scenes::randomlyStored(values, random_);
        break;
      default:
        y.resize(reference::length(values));
        for (int i = 0; i < y.length; ++i) y[i] = values[size(i)];
    }
  }
  void evalDy(MGenMatrix<float>& dy) override {
    reference::Matrix plain;
    client_.evalDy(plain);
    dy = scenes::randomlyStored(plain, random_);
  }

 private:
  Client& client_;
  Random random_;
  int style_;
  MGenVector<float> shared_;
};

struct Settings {
  explicit Settings(std::uint32_t seed, int n) {
    Random random(seed);
    constexpr int iterations[] = {75, 75, 75, 0, 1, 2, 3, 10, -1};
    constexpr int stalls[] = {6, 6, 6, 0, 1, 2, 20};
    constexpr float tolerances[] = {0.01f, 0.01f, 0.0f, 1e-6f, 0.5f, 2.0f, -1.0f, nan, infinity};
    maxIterations = iterations[random.below(9)];
    maxStalls = stalls[random.below(7)];
    tolerance = tolerances[random.below(9)];
    resetStallsOnReject = random.oneIn(4);
    if (random.oneIn(2)) return;
    const int count = random.oneIn(12) ? random.between(1, n) : n + random.below(2);
    for (int i = 0; i < count; ++i) trust.push_back(random.real(0.01f, 3));
    constexpr float odd[] = {0.0f, -1.0f, infinity, nan, 1e-30f, 1e30f};
    if (random.oneIn(8)) trust[size(random.below(count))] = odd[random.below(6)];
  }
  template <class Solver>
  void tune(Solver& solver) const {
    solver.maxIterations = maxIterations;
    solver.maxStalls = maxStalls;
    solver.tolerance = tolerance;
    solver.resetStallsOnReject = resetStallsOnReject;
  }
  int maxIterations, maxStalls;
  float tolerance;
  bool resetStallsOnReject;
  Floats trust;
};

template <class Solver>
void solveInto(Trace& trace, Solver& solver) {
  try {
    solver.solve();
  } catch (const LvException& e) {
    trace.add(e.message.c_str());
  } catch (const reference::Failure& e) {
    trace.add(e.what());
  }
}

Trace traceOfReference(std::uint32_t seed, int solves) {
  Trace trace;
  Client client(seed, trace);
  const Settings settings(seed, client.n);
  reference::Solver solver;
  settings.tune(solver);
  solver.trust = settings.trust;
  solver.problem = &client;
  solver.setGoal(client.goal);
  solver.setState(client.start);
  for (int i = 0; i < solves; ++i) solveInto(trace, solver);
  trace.add(solver.state);
  trace.add(solver.values);
  trace.add(solver.jacobian.elements);
  return trace;
}

Trace traceOfLibrary(std::uint32_t seed, int solves) {
  Trace trace;
  Client client(seed, trace);
  LibraryClient problem(client, seed);
  const Settings settings(seed, client.n);
  Random random(seed);
  MLMSolver solver;
  settings.tune(solver);
  solver.setTrust(scenes::randomlyStored(settings.trust, random));
  solver.setProblem(&problem);
  solver.setGoal(scenes::randomlyStored(client.goal, random));
  solver.setState(scenes::randomlyStored(client.start, random));
  for (int i = 0; i < solves; ++i) solveInto(trace, solver);
  trace.add(scenes::floatsOf(solver.getState()));
  trace.add(scenes::floatsOf(solver.values));
  trace.add(scenes::plain(solver.jacobian).elements);
  return trace;
}

TEST(MLMSolverEquality, EveryCallAndResultOfRandomClientsIsTheReferences) {
  for (std::uint32_t seed = 1; seed <= 4000; ++seed) {
    ASSERT_EQ(traceOfLibrary(seed, 1).result(), traceOfReference(seed, 1).result())
        << "seed " << seed;
  }
}

TEST(MLMSolverEquality, ASecondSolveIsTheReferences) {
  for (std::uint32_t seed = 5001; seed <= 5500; ++seed) {
    ASSERT_EQ(traceOfLibrary(seed, 2).result(), traceOfReference(seed, 2).result())
        << "seed " << seed;
  }
}

TEST(NormEquality, EveryLengthAndStrideGivesTheReferencesBits) {
  Random random(7);
  Floats cells;
  for (int i = 0; i < 4 * 1100; ++i) cells.push_back(random.real(-1000, 1000));
  for (int n = 0; n <= 1100; ++n) {
    EXPECT_EQ(_vector_norm2(cells.data(), n), reference::sumOfSquares(cells.data(), n)) << n;
    for (int stride = 1; stride <= 4; ++stride) {
      EXPECT_EQ(_vector_norm2(cells.data(), n, stride),
                reference::sumOfSquares(cells.data(), n, stride))
          << n << " by " << stride;
    }
  }
  for (int n = 4; n <= 1024; n *= 2) {
    EXPECT_EQ(_vector_norm2_2(cells.data(), n),
              reference::sumOfSquaresOfPowerOfTwo(cells.data(), n))
        << n;
  }
}

// One number for a sequence of words (FNV-1a).
std::uint64_t hashOf(const scenes::Bits& bits, std::uint64_t hash) {
  for (const std::uint32_t word : bits) hash = (hash ^ word) * 1099511628211u;
  return hash;
}

TEST(MMatchmoveEquality, EveryResultOfRandomShotsIsTheReferences) {
  int thrown = 0;
  for (std::uint32_t seed = 1; seed <= 600; ++seed) {
    reference::Scene shot = scenes::randomShot(seed);
    MMatchmove scene;
    scenes::fill(scene, shot, seed);
    const std::string expected = scenes::solve(shot);
    const std::string found = scenes::solve(scene);
    ASSERT_EQ(found, expected) << "seed " << seed;
    ASSERT_EQ(scenes::resultOf(scene, found), scenes::resultOf(shot, expected)) << "seed " << seed;
    if (!found.empty()) ++thrown;
  }
  // The shots are of use only when some of them throw and most do not.
  EXPECT_GT(thrown, 60);
  EXPECT_LT(thrown, 300);
}

TEST(MMatchmoveEquality, ASecondSolveOfTheSceneIsTheReferences) {
  for (std::uint32_t seed = 1001; seed <= 1100; ++seed) {
    reference::Scene shot = scenes::randomShot(seed);
    MMatchmove scene;
    scenes::fill(scene, shot, seed);
    scenes::solve(shot);
    scenes::solve(scene);
    scenes::disturb(shot, seed);
    if (!shot.tracks.empty()) shot.baseFrame = 0;
    scenes::fill(scene, shot, seed + 1);
    const std::string expected = scenes::solve(shot);
    const std::string found = scenes::solve(scene);
    ASSERT_EQ(scenes::resultOf(scene, found), scenes::resultOf(shot, expected)) << "seed " << seed;
  }
}

TEST(MMatchmoveEquality, AShotReplacedByAnotherIsTheReferences) {
  MMatchmove scene;
  reference::Scene kept;
  for (std::uint32_t seed = 2001; seed <= 2100; ++seed) {
    const reference::Scene shot = scenes::randomShot(seed);
    kept.tracks = shot.tracks;
    kept.baseFrame = shot.baseFrame;
    scenes::fill(scene, shot, seed);
    const std::string expected = scenes::solve(kept);
    const std::string found = scenes::solve(scene);
    ASSERT_EQ(scenes::resultOf(scene, found), scenes::resultOf(kept, expected)) << "seed " << seed;
  }
}

TEST(MMatchmoveEquality, ProjectedPointsAreTheReferences) {
  for (std::uint32_t seed = 4001; seed <= 4100; ++seed) {
    reference::Scene shot = scenes::randomShot(seed);
    MMatchmove scene;
    scenes::fill(scene, shot, seed);
    scenes::solve(shot);
    scenes::solve(scene);
    Random random(seed);
    for (int f = 0; f < scene.outputs.size(); ++f) {
      if (scene.outputs[f].rows == 0) continue;
      const Floats p = {random.real(-3, 3), random.real(-3, 3)};
      Floats expected;
      MGenVector<float> found;
      shot.project(f, p, expected);
      scene.project(f, scenes::randomlyStored(p, random), found);
      ASSERT_TRUE(scenes::sameBits(scenes::floatsOf(found), expected)) << "seed " << seed;
    }
  }
}

TEST(MMatchmoveEquality, TheHashOfAllResultsIsTheReferences) {
  std::uint64_t expected = 14695981039346656037u;
  std::uint64_t found = expected;
  for (std::uint32_t seed = 3001; seed <= 3050; ++seed) {
    reference::Scene shot = scenes::randomShot(seed);
    MMatchmove scene;
    scenes::fill(scene, shot, seed);
    const std::string plainThrown = scenes::solve(shot);
    const std::string thrown = scenes::solve(scene);
    expected = hashOf(scenes::resultOf(shot, plainThrown), expected);
    found = hashOf(scenes::resultOf(scene, thrown), found);
  }
  EXPECT_EQ(found, expected);
}

}  // namespace
