// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/lm_solver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/solver/client_problems.h"
#include "tests/support/scene.h"

namespace {

using clients::Identity;
using clients::prepare;
using clients::Script;
using clients::SharingIdentity;
using scenes::floatsOf;
using scenes::vectorOf;
using Floats = reference::Floats;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float epsilon = std::numeric_limits<float>::epsilon();

// Members

TEST(MLMSolverDefaults, NothingIsGiven) {
  const MLMSolver solver;
  EXPECT_EQ(solver.problem, nullptr);
  for (const MGenVector<float>* v : {&solver.state, &solver.goal, &solver.values, &solver.trust}) {
    EXPECT_EQ(v->length, 0);
    EXPECT_EQ(v->buffer, nullptr);
  }
  EXPECT_EQ(solver.jacobian.rows, 0);
  EXPECT_EQ(solver.jacobian.cols, 0);
  EXPECT_EQ(solver.stateSize, 0);
  EXPECT_EQ(solver.goalSize, 0);
}

TEST(MLMSolverDefaults, Tuning) {
  const MLMSolver solver;
  EXPECT_EQ(solver.maxStalls, 6);
  EXPECT_EQ(solver.maxIterations, 75);
  EXPECT_EQ(solver.spareTolerance, 0.001f);
  EXPECT_EQ(solver.tolerance, 0.01f);
  EXPECT_FALSE(solver.resetStallsOnReject);
}

TEST(MLMSolver, SetStateSharesStorageAndRecordsTheSize) {
  MLMSolver solver;
  MGenVector<float> x(3);
  solver.setState(x);
  EXPECT_EQ(solver.state.data, x.data);
  EXPECT_EQ(solver.stateSize, 3);
  EXPECT_EQ(&solver.getState(), &solver.state);
}

TEST(MLMSolver, SetStateToItselfKeepsTheElements) {
  MLMSolver solver;
  solver.setState(vectorOf({1, 2}));
  solver.setState(solver.state);
  EXPECT_EQ(floatsOf(solver.state), (Floats{1, 2}));
}

TEST(MLMSolver, SetGoalSharesStorageAndRecordsTheSize) {
  MLMSolver solver;
  MGenVector<float> g(5);
  solver.setGoal(g);
  EXPECT_EQ(solver.goal.data, g.data);
  EXPECT_EQ(solver.goalSize, 5);
}

TEST(MLMSolver, SetTrustSharesStorageAndRecordsNoSize) {
  MLMSolver solver;
  MGenVector<float> t(4);
  solver.setTrust(t);
  EXPECT_EQ(solver.trust.data, t.data);
  EXPECT_EQ(solver.stateSize, 0);
  EXPECT_EQ(solver.goalSize, 0);
}

TEST(MLMSolver, ACopySharesTheState) {
  MLMSolver solver;
  solver.setState(vectorOf({1}));
  MLMSolver copy(solver);
  copy.getState()[0] = 5;
  EXPECT_EQ(solver.getState()[0], 5);
}

// Epsilon

TEST(MLMSolverEpsilon, IsTheDistanceFromTheGoal) {
  MLMSolver solver;
  solver.setGoal(vectorOf({1, 2}));
  EXPECT_EQ(solver.computeEpsilon(vectorOf({4, -2})), 5.0f);
}

TEST(MLMSolverEpsilon, RunsOverTheLengthOfTheValues) {
  MLMSolver solver;
  solver.setGoal(vectorOf({1, 2, 1000}));
  EXPECT_EQ(solver.computeEpsilon(vectorOf({4, -2})), 5.0f);
}

TEST(MLMSolverEpsilon, ReadsStridedVectorsElementByElement) {
  MLMSolver solver;
  MGenVector<float> cells(20);
  for (int i = 0; i < 20; ++i) cells[i] = i % 2 == 0 ? 1.0f : 1000.0f;
  solver.setGoal(MGenVector<float>(10));
  EXPECT_EQ(solver.computeEpsilon(cells.view(0, 10, 2)), std::sqrt(10.0f));
}

TEST(MLMSolverEpsilon, OverflowsInSinglePrecision) {
  MLMSolver solver;
  solver.setGoal(vectorOf({0}));
  EXPECT_EQ(solver.computeEpsilon(vectorOf({1e20f})), infinity);
}

TEST(MLMSolverEpsilon, OfNothingIsZero) {
  MLMSolver solver;
  EXPECT_EQ(solver.computeEpsilon(MGenVector<float>()), 0.0f);
}

// The pass counter

TEST(MLMSolverCounter, OneIterationTakesNoStep) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {1}, {3});
  solver.maxIterations = 1;
  solver.solve();
  EXPECT_EQ(problem.calls, "xy");
  EXPECT_EQ(floatsOf(solver.getState()), Floats{1});
  EXPECT_EQ(floatsOf(solver.values), Floats{1});
}

TEST(MLMSolverCounter, NoneAndNegativeTakeNoStep) {
  for (const int limit : {0, -1, std::numeric_limits<int>::min()}) {
    Identity problem;
    MLMSolver solver;
    prepare(solver, problem, {1}, {3});
    solver.maxIterations = limit;
    solver.solve();
    EXPECT_EQ(problem.calls, "xy") << limit;
  }
}

TEST(MLMSolverCounter, TwoIterationsTakeOneStep) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {1}, {3});
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_EQ(problem.calls, "xydxy");
}

TEST(MLMSolverCounter, TheDefaultAdmitsSeventyFourSteps) {
  Script problem({5});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 1000;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 74);
}

// Damping

// With slope 1 the step is residual / (1 + damping).
float dampingOfStep(float residual, float step) { return residual / step - 1.0f; }

TEST(MLMSolverDamping, FallsTenfoldWithEveryRejectedStep) {
  Script problem({0});  // never nearer, so that every step is rejected and starts at the same x
  MLMSolver solver;
  prepare(solver, problem, {0}, {1});
  solver.maxIterations = 6;
  solver.solve();
  ASSERT_EQ(problem.candidates(), 5);
  float damping = 0.01f;
  for (int i = 1; i <= 5; ++i) {
    const float step = problem.xs[reference::size(i)][0];
    EXPECT_NEAR(dampingOfStep(1, step), damping, 8 * epsilon) << i;
    damping /= 10;
  }
}

TEST(MLMSolverDamping, FallsTenfoldWithEveryAcceptedStep) {
  Script problem({0, 0.5f, 0.75f, 0.875f});  // always nearer to 1
  MLMSolver solver;
  prepare(solver, problem, {0}, {1});
  solver.maxIterations = 4;
  solver.solve();
  ASSERT_EQ(problem.candidates(), 3);
  float damping = 0.01f;
  float residual = 1;
  for (int i = 1; i <= 3; ++i) {
    const std::size_t k = reference::size(i);
    const float step = problem.xs[k][0] - problem.xs[k - 1][0];
    EXPECT_NEAR(dampingOfStep(residual, step), damping, 16 * epsilon / residual) << i;
    damping /= 10;
    residual /= 2;
  }
}

TEST(MLMSolverDamping, MultipliesTheDiagonalOnly) {
  Identity problem;  // values 2x + y, x + 2y: normal matrix 5 4 | 4 5
  problem.values = [](const Floats& p) { return Floats{2 * p[0] + p[1], p[0] + 2 * p[1]}; };
  problem.slopes = [](const Floats&) { return Floats{2, 1, 1, 2}; };
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {3, 0});
  solver.maxIterations = 2;
  solver.solve();
  // Gradient (6, 3); the solution of 5.05 4 | 4 5.05 by Cramer's rule.
  const double determinant = 5.05 * 5.05 - 16;
  EXPECT_NEAR(problem.xs[1][0], (6 * 5.05 - 4 * 3) / determinant, 100 * epsilon);
  EXPECT_NEAR(problem.xs[1][1], (3 * 5.05 - 4 * 6) / determinant, 100 * epsilon);
}

TEST(MLMSolverDamping, StartsAnewWithEverySolve) {
  Script problem({0});
  MLMSolver solver;
  prepare(solver, problem, {0}, {1});
  solver.maxIterations = 4;
  solver.solve();
  solver.solve();
  ASSERT_EQ(problem.xs.size(), 8u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(problem.xs[i], problem.xs[i + 4]) << i;
}

// Stalls

TEST(MLMSolverStalls, AtTheGoalSixPassesEndTheSolve) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {3}, {3});
  solver.solve();
  EXPECT_EQ(problem.candidates(), 6);
  EXPECT_EQ(floatsOf(solver.getState()), Floats{3});
}

TEST(MLMSolverStalls, ResettingOnRejectionRunsToThePassLimit) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {3}, {3});
  solver.resetStallsOnReject = true;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 74);
  EXPECT_EQ(floatsOf(solver.getState()), Floats{3});
}

TEST(MLMSolverStalls, AcceptedStallsAreNotReset) {
  Floats slow;  // a little nearer to 0 every time
  for (int i = 0; i < 80; ++i) slow.push_back(1.0f - 0.001f * static_cast<float>(i));
  Script problem(slow);
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.resetStallsOnReject = true;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 6);
}

TEST(MLMSolverStalls, TheCandidateThatCompletesThemIsDropped) {
  Script problem({1.0f, 0.999f});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 1;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 1);
  EXPECT_EQ(floatsOf(solver.getState()), Floats{0});
  EXPECT_EQ(floatsOf(solver.values), Floats{1});
}

TEST(MLMSolverStalls, EarlierCandidatesThatAreBetterAreKept) {
  Script problem({1.0f, 0.999f, 0.998f, 0.997f});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 3;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 3);
  EXPECT_EQ(floatsOf(solver.getState()), problem.xs[2]);
  EXPECT_EQ(floatsOf(solver.values), Floats{0.998f});
}

TEST(MLMSolverStalls, NoneAllowedEndsAtTheFirst) {
  for (const int limit : {0, -5}) {
    Script problem({8, 4, 4});
    MLMSolver solver;
    prepare(solver, problem, {0}, {0});
    solver.maxStalls = limit;
    solver.solve();
    EXPECT_EQ(problem.candidates(), 2) << limit;
  }
}

TEST(MLMSolverStalls, AnImprovementStartsTheCountAnew) {
  Script problem({8, 8, 4, 4, 4});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 2;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 4);
}

TEST(MLMSolverStalls, AnImprovementThatIsNoNumberStartsTheCountAnew) {
  Script problem({8, 8, nan, 8, 8});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 2;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 4);
}

TEST(MLMSolverStalls, AnImprovementOfTheToleranceIsAStall) {
  // (1 - 0.5) / (1 + 1) is 0.25 exactly.
  for (const float tolerance : {0.25f, std::nextafter(0.25f, 0.0f)}) {
    Script problem({1, 0.5f, 0.5f});
    MLMSolver solver;
    prepare(solver, problem, {0}, {0});
    solver.tolerance = tolerance;
    solver.maxStalls = 1;
    solver.solve();
    EXPECT_EQ(problem.candidates(), tolerance == 0.25f ? 1 : 2);
  }
}

TEST(MLMSolverStalls, TheImprovementIsDividedInDouble) {
  Script problem({9, 2, 2});  // (9 - 2) / (9 + 1) is above the float next to 0.7
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.tolerance = 0.7f;
  solver.maxStalls = 1;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 2);
}

TEST(MLMSolverStalls, TheImprovementIsSubtractedInFloat) {
  Script problem({1, 4e-8f, 4e-8f});  // 1 - 4e-8 becomes the float below 1
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.tolerance = std::nextafter(1.0f, 0.0f) / 2;
  solver.maxStalls = 1;
  solver.solve();
  EXPECT_EQ(problem.candidates(), 1);
}

TEST(MLMSolverStalls, AreCountedAnewByEverySolve) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {3}, {3});
  solver.solve();
  problem.xs.clear();
  solver.solve();
  EXPECT_EQ(problem.candidates(), 6);
}

// Acceptance

TEST(MLMSolverAcceptance, EqualDistanceIsARejection) {
  Script problem({1, -1, 1});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_EQ(floatsOf(solver.getState()), Floats{0});
  EXPECT_EQ(floatsOf(solver.values), Floats{1});
}

TEST(MLMSolverAcceptance, ValuesThatAreNoNumberAreARejection) {
  Script problem({1, nan});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.solve();
  EXPECT_EQ(problem.candidates(), 74);
  EXPECT_EQ(floatsOf(solver.values), Floats{1});
}

TEST(MLMSolverAcceptance, AWorseCandidateLeavesTheStateAlone) {
  Script problem({1, 2, 3, 4});
  MLMSolver solver;
  prepare(solver, problem, {7}, {0});
  solver.solve();
  EXPECT_EQ(problem.candidates(), 6);
  EXPECT_EQ(floatsOf(solver.getState()), Floats{7});
}

TEST(MLMSolverAcceptance, JacobianIsTakenAfterAcceptedStepsOnly) {
  // Accepted, rejected, rejected, accepted, rejected.
  Script problem({16, 8, 9, 9, 4, 5});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxIterations = 6;
  solver.solve();
  EXPECT_EQ(problem.calls, "xydxydxyxyxydxy");
}

TEST(MLMSolverAcceptance, StateIsWrittenInPlace) {
  Identity problem;
  MLMSolver solver;
  MGenVector<float> x = vectorOf({1, 2});
  const MGenVector<float> holder = x;
  solver.setProblem(&problem);
  solver.setGoal(vectorOf({3, 4}));
  solver.setState(x);
  solver.solve();
  EXPECT_EQ(solver.getState().data, x.data);
  EXPECT_NEAR(holder[0], 3, 0.01);
  EXPECT_NEAR(holder[1], 4, 0.01);
}

TEST(MLMSolverAcceptance, AStridedStateIsWrittenBetweenItsNeighbours) {
  Identity problem;
  MLMSolver solver;
  MGenVector<float> cells = vectorOf({1, 77, 2, 88});
  solver.setProblem(&problem);
  solver.setGoal(vectorOf({3, 4}));
  solver.setState(cells.view(0, 2, 2));
  solver.solve();
  EXPECT_NEAR(cells[0], 3, 0.01);
  EXPECT_EQ(cells[1], 77);
  EXPECT_NEAR(cells[2], 4, 0.01);
  EXPECT_EQ(cells[3], 88);
}

TEST(MLMSolverValues, AreDetachedFromTheProblemsStorage) {
  SharingIdentity problem;
  MLMSolver solver;
  prepare(solver, problem, {1}, {3});
  solver.maxIterations = 1;
  solver.solve();
  problem.y[0] = 99;
  EXPECT_EQ(floatsOf(solver.values), Floats{1});
  EXPECT_TRUE(solver.values.ownsBuffer());
}

TEST(MLMSolverValues, HoldYAtTheStateThatIsKept) {
  SharingIdentity problem;
  MLMSolver solver;
  prepare(solver, problem, {1, 5}, {3, -2});
  for (int i = 0; i < 2; ++i) {
    solver.solve();
    EXPECT_EQ(floatsOf(solver.values), floatsOf(solver.getState()));
  }
}

TEST(MLMSolverValues, TheProblemMayHoldTheDroppedCandidate) {
  Script problem({1.0f, 0.999f});
  MLMSolver solver;
  prepare(solver, problem, {0}, {0});
  solver.maxStalls = 1;
  solver.solve();
  EXPECT_NE(problem.x, floatsOf(solver.getState()));
}

// Between passes

TEST(MLMSolverPass, ReadsAGoalThatHasMovedSinceTheLast) {
  Script problem({1, 100});
  MGenVector<float> goal(1);
  goal[0] = 2;
  MLMSolver solver;
  prepare(solver, problem, {0}, {});
  solver.setGoal(goal);
  solver.maxIterations = 3;
  problem.beforeCall = [&] { goal[0] = problem.candidates() == 1 ? 4.0f : 2.0f; };
  solver.solve();
  ASSERT_EQ(problem.candidates(), 2);
  EXPECT_NEAR(problem.xs[1][0], 1 / 1.01, 4 * epsilon);
  EXPECT_NEAR(problem.xs[2][0], 3 / 1.001, 12 * epsilon);
}

TEST(MLMSolverPass, ReadsAJacobianThatHasMovedSinceTheLast) {
  Script problem({1, 100});
  MLMSolver solver;
  prepare(solver, problem, {0}, {2});
  solver.maxIterations = 3;
  problem.beforeCall = [&] {
    if (problem.candidates() == 1) solver.jacobian(0, 0) = 0.5f;
  };
  solver.solve();
  ASSERT_EQ(problem.candidates(), 2);
  EXPECT_NEAR(problem.xs[1][0], 1 / 1.01, 4 * epsilon);
  EXPECT_NEAR(problem.xs[2][0], 2 / 1.001, 8 * epsilon);
}

// Trust

TEST(MLMSolverTrust, WithoutItAStepHasAnyLength) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0}, {1e6f});
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_NEAR(solver.getState()[0], 1e6 / 1.01, 1e6 * 4 * epsilon);
}

TEST(MLMSolverTrust, CutsTheScaledStepToUnitLength) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {30, 40});
  solver.setTrust(vectorOf({1, 1}));
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_NEAR(solver.getState()[0], 0.6, 4 * epsilon);
  EXPECT_NEAR(solver.getState()[1], 0.8, 4 * epsilon);
}

TEST(MLMSolverTrust, ScalesTheCutStepByEachParametersTrust) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {30, 40});
  solver.setTrust(vectorOf({4, 2}));
  solver.maxIterations = 2;
  solver.solve();
  // The scaled step is (30 / 4, 40 / 2) / 1.01, in the direction (7.5, 20).
  const double length = std::hypot(7.5, 20.0);
  EXPECT_NEAR(solver.getState()[0], 4 * 7.5 / length, 16 * epsilon);
  EXPECT_NEAR(solver.getState()[1], 2 * 20 / length, 16 * epsilon);
}

TEST(MLMSolverTrust, LeavesAShortStepAlone) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {0.3f, 0.4f});
  solver.setTrust(vectorOf({1, 2}));
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_NEAR(solver.getState()[0], 0.3 / 1.01, 4 * epsilon);
  EXPECT_NEAR(solver.getState()[1], 0.4 / 1.01, 4 * epsilon);
}

TEST(MLMSolverTrust, LongerThanTheStateIsFine) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0}, {30});
  solver.setTrust(vectorOf({2, nan, nan}));
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_EQ(solver.getState()[0], 2);
}

}  // namespace
