// SPDX-License-Identifier: BSD-3-Clause

// The vectors that a solver and its problem share, and how many of their elements count.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/solver/lm_solver.h"
#include "tests/solver/client_problems.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using clients::prepare;
using scenes::floatsOf;
using scenes::vectorOf;
using Floats = reference::Floats;

constexpr float epsilon = std::numeric_limits<float>::epsilon();

// Keeps every vector it is given; what was in it at the time is in `xs`.
struct Keeper : clients::Script {
  using Script::Script;
  void setX(const MGenVector<float>& parameters) override {
    kept.push_back(parameters);
    Script::setX(parameters);
  }
  std::vector<MGenVector<float>> kept;
};

TEST(MLMSolverCandidates, StayAsTheyAreForAProblemThatKeepsThem) {
  // Accepted or not, several times in a row and in turns.
  Keeper problem({64, 32, 48, 48, 16, 24, 8, 4, 6, 2, 3, 3});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxIterations = 12;
  solver.maxStalls = 12;
  solver.solve();
  EXPECT_EQ(problem.calls, "xydxydxyxyxydxyxydxydxyxydxyxy");
  ASSERT_EQ(problem.kept.size(), 12u);
  for (std::size_t i = 1; i < problem.kept.size(); ++i) {
    EXPECT_EQ(floatsOf(problem.kept[i]), problem.xs[i]) << i;
  }
  // The first is the solver's own state, which moves.
  EXPECT_EQ(problem.kept[0].data, solver.getState().data);
}

// The sizes of the system

// Twice as many values as parameters: those of x, and once more.
struct Doubled : clients::Problem {
  explicit Doubled(int n) {
    values = [](const Floats& p) {
      Floats v = p;
      v.insert(v.end(), p.begin(), p.end());
      return v;
    };
    slopes = [n](const Floats&) {
      Floats s(reference::size(2 * n * n));
      for (int k = 0; k < 2 * n; ++k) s[reference::size(k * n + k % n)] = 1;
      return s;
    };
  }
};

// Of a goal that has grown since it was set, the first values alone pull.
TEST(MLMSolverSizes, TheSystemSumsOverTheRecordedGoal) {
  for (const int n : {1, 3, 8}) {
    Doubled problem(n);
    MLMSolver solver;
    Floats goal(reference::size(n), 3);
    prepare(solver, problem, Floats(reference::size(n)), goal);
    goal.resize(reference::size(2 * n), 7);
    solver.goal = vectorOf(goal);
    solver.maxIterations = 2;
    solver.solve();
    EXPECT_EQ(solver.goalSize, n);
    ASSERT_EQ(problem.candidates(), 1);
    for (const float x : problem.xs[1]) EXPECT_NEAR(x, 3 / 1.01, 12 * epsilon) << n;
  }
}

TEST(MLMSolverSizes, TheSystemHasTheRecordedNumberOfParameters) {
  // J = (1 0 1; 0 1 0; 0 0 1) and a residual of ones: with the diagonal of J^T J, damped, of 1.01,
  // 1.01 and 2.02 and the gradient (1, 1, 2), 1.01 a + c = 1 and a + 2.02 c = 2.
  clients::Problem problem;
  problem.values = [](const Floats& p) { return Floats{p[0], p[1], 0}; };
  problem.slopes = [](const Floats&) { return Floats{1, 0, 1, 0, 1, 0, 0, 0, 1}; };
  problem.cols = 3;
  MLMSolver solver;
  prepare(solver, problem, {0, 0, 0}, {1, 1, 1});
  solver.state = vectorOf({0, 0});
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_EQ(solver.stateSize, 3);
  ASSERT_EQ(problem.candidates(), 1);
  const double a = (2.02 - 2) / (1.01 * 2.02 - 1);
  EXPECT_EQ(problem.xs[1].size(), 2u);
  EXPECT_NEAR(problem.xs[1][0], a, 64 * epsilon);
  EXPECT_NEAR(problem.xs[1][1], 1 / 1.01, 4 * epsilon);
}

TEST(MLMSolverSizes, AStateThatHasGrownIsReported) {
  clients::Problem problem;
  problem.cols = 2;
  problem.values = [](const Floats&) { return Floats{0, 0}; };
  problem.slopes = [](const Floats&) { return Floats{1, 0, 0, 1}; };
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {1, 1});
  solver.state = vectorOf({0, 0, 0});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "MVector index 2 out of range 1");
}

}  // namespace
