// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/lm_solver.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "tests/solver/client_problems.h"
#include "tests/support/allocations.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using clients::Identity;
using clients::prepare;
using clients::SharingIdentity;
using scenes::floatsOf;
using scenes::vectorOf;
using Floats = reference::Floats;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(MLMSolverDamping, CannotCureAZeroDiagonal) {
  Identity problem;
  problem.slopes = [](const Floats&) { return Floats{1, 0, 1, 0}; };
  MLMSolver solver;
  prepare(solver, problem, {1, 1}, {3, 3});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "inverse: singular matrix");
  EXPECT_EQ(floatsOf(solver.getState()), (Floats{1, 1}));
  EXPECT_EQ(floatsOf(solver.values), (Floats{1, 1}));
}

TEST(MLMSolverTrust, ShorterThanTheStateIsReported) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {0, 5}, {30, 40});
  solver.setTrust(vectorOf({2}));
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "MVector index 1 out of range 0");
  EXPECT_EQ(floatsOf(solver.getState()), (Floats{0, 5}));
}

struct SlopeCase {
  const char* name;
  Floats slopes;
};

TEST(MLMSolverNan, SlopesWhoseProductsAreNotFinite) {
  const SlopeCase cases[] = {{"NaN", {1, nan}},
                             {"infinity", {infinity, 1}},
                             {"minus infinity", {1, -infinity}},
                             {"infinity times zero", {infinity, 0}},
                             {"overflow of a product", {1, 2e19f}}};
  for (const SlopeCase& c : cases) {
    Identity problem;
    problem.values = [](const Floats& p) { return Floats{p[0] + p[1]}; };
    problem.slopes = [&](const Floats&) { return c.slopes; };
    MLMSolver solver;
    prepare(solver, problem, {1, 1}, {3});
    EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan") << c.name;
    EXPECT_EQ(floatsOf(solver.getState()), (Floats{1, 1})) << c.name;
    EXPECT_EQ(floatsOf(solver.values), Floats{2}) << c.name;
  }
}

TEST(MLMSolverNan, ADiagonalBeyondTheLargestFloat) {
  Identity problem;  // 1.5e19 squared is 2.25e38; twice that is no float
  problem.values = [](const Floats& p) { return Floats{p[0], p[0]}; };
  problem.slopes = [](const Floats&) { return Floats{1.5e19f, 1.5e19f}; };
  MLMSolver solver;
  prepare(solver, problem, {1}, {3, 3});
  EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan");
}

TEST(MLMSolverNan, ADiagonalThatOnlyDampingTakesBeyondTheLargestFloat) {
  for (const bool over : {true, false}) {
    Identity problem;
    const float slope = over ? 1.84e19f : 1.80e19f;  // squares 3.386e38 and 3.24e38
    problem.slopes = [&](const Floats&) { return Floats{slope}; };
    MLMSolver solver;
    prepare(solver, problem, {1}, {3});
    if (over) {
      EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan");
    } else {
      EXPECT_NO_THROW(solver.solve());
    }
  }
}

TEST(MLMSolverNan, TrustThatIsNotFinite) {
  for (const float t : {nan, infinity, 1e30f}) {
    Identity problem;
    MLMSolver solver;
    prepare(solver, problem, {1}, {3});
    solver.setTrust(vectorOf({t}));
    EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan") << t;
  }
}

TEST(MLMSolverNan, AGoalThatIsNoNumberIsNotOne) {
  Identity problem;
  MLMSolver solver;
  prepare(solver, problem, {1}, {nan});
  EXPECT_NO_THROW(solver.solve());
  EXPECT_EQ(problem.candidates(), 74);
  EXPECT_EQ(floatsOf(solver.getState()), Floats{1});
}

TEST(MLMSolverNan, KeepsTheLastAcceptedPoint) {
  Identity problem;
  int jacobians = 0;
  problem.slopes = [&](const Floats&) { return Floats{++jacobians == 3 ? nan : 1.0f}; };
  MLMSolver solver;
  prepare(solver, problem, {0}, {100});
  EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan");
  ASSERT_EQ(problem.candidates(), 2);
  EXPECT_EQ(floatsOf(solver.getState()), problem.xs[2]);
  EXPECT_EQ(floatsOf(solver.values), problem.xs[2]);
}

TEST(MLMSolverFailure, ExceptionsOfTheProblemPassThrough) {
  struct Custom {};
  for (std::size_t call = 1; call <= 8; ++call) {
    Identity problem;
    problem.beforeCall = [&] {
      if (problem.calls.size() == call) throw Custom();
    };
    MLMSolver solver;
    prepare(solver, problem, {0}, {100});
    EXPECT_THROW(solver.solve(), Custom) << call;
    EXPECT_EQ(problem.calls, std::string("xydxydxy").substr(0, call));
    const bool accepted = call > 5;
    EXPECT_EQ(solver.getState()[0] != 0, accepted) << call;
    if (call > 2) {
      EXPECT_EQ(floatsOf(solver.values), floatsOf(solver.getState())) << call;
    }
  }
}

TEST(MLMSolverFailure, AJacobianOfTooFewColumnsOrRowsIsReported) {
  const struct {
    int cols;
    Floats slopes;
    const char* message;
  } cases[] = {{1, {1, 1}, "MMatrix col 1 out of range 0..0"},
               {2, {1, 2}, "MMatrix row 1 out of range 0..0"},
               {1, {1}, "MMatrix row 1 out of range 0..0"},
               {1, {}, "MMatrix row 0 out of range 0..-1"}};
  for (const auto& c : cases) {
    Identity problem;
    problem.slopes = [&](const Floats&) { return c.slopes; };
    problem.cols = c.cols;
    MLMSolver solver;
    prepare(solver, problem, {0, 0}, {3, 4});
    EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), c.message);
  }
}

TEST(MLMSolverFailure, AJacobianLargerThanNeededIsFine) {
  Identity problem;
  problem.slopes = [&](const Floats&) { return Floats{1, nan, nan, nan}; };
  problem.cols = 2;
  MLMSolver solver;
  prepare(solver, problem, {0}, {3});
  EXPECT_NO_THROW(solver.solve());
}

TEST(MLMSolverFailure, FewerValuesThanGoalsAreReportedByTheGradient) {
  Identity problem;
  problem.values = [](const Floats&) { return Floats{1}; };
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {3, 4});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "MVector index 1 out of range 0");
}

TEST(MLMSolverFailure, ABetterCandidateWithFewerValuesHasMovedTheState) {
  Identity problem;
  problem.values = [&](const Floats& p) { return problem.xs.size() > 1 ? Floats{p[0]} : p; };
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {3, 4});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "MVector length mismatch 2 != 1");
  EXPECT_EQ(floatsOf(solver.getState()), problem.xs[1]);
  EXPECT_EQ(floatsOf(solver.values), (Floats{0, 0}));
}

TEST(MLMSolverFailure, WithoutParametersTheInversionIsRefused) {
  Identity problem;
  problem.values = [](const Floats&) { return Floats{}; };
  problem.cols = 1;
  MLMSolver solver;
  solver.setProblem(&problem);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "sgetrf");
}

TEST(MLMSolverFailure, WithoutGoalsTheNormalMatrixIsSingular) {
  Identity problem;
  problem.values = [](const Floats&) { return Floats{}; };
  problem.slopes = [](const Floats&) { return Floats{}; };
  MLMSolver solver;
  solver.setProblem(&problem);
  solver.setState(vectorOf({1}));
  EXPECT_EQ(thrownBy<MMatrixError>([&] { solver.solve(); }), "inverse: singular matrix");
}

TEST(MLMSolverFailure, WithoutAProblemIsAnArgumentError) {
  MLMSolver solver;
  solver.setState(vectorOf({1}));
  EXPECT_EQ(thrownBy<LvIllegalArgumentException>([&] { solver.solve(); }), "MLMSolver::solve");
  EXPECT_EQ(floatsOf(solver.getState()), Floats{1});
}

TEST(MLMSolverFailure, NoAllocationFailureLeaks) {
  const std::size_t failures = allocations::expectNoLeakOnAnyFailure([] {
    SharingIdentity problem;
    MLMSolver solver;
    prepare(solver, problem, {1, 5}, {3, -2});
    solver.setTrust(vectorOf({1, 1}));
    solver.solve();
  });
  EXPECT_GT(failures, 50u);
}

TEST(MLMSolverFailure, NoThrownFailureLeaks) {
  const std::size_t before = allocations::live();
  {
    Identity problem;
    problem.slopes = [](const Floats& p) { return Floats{p[0] > 0 ? nan : 1.0f}; };
    MLMSolver solver;
    prepare(solver, problem, {0}, {100});
    EXPECT_THROW(solver.solve(), LvException);
  }
  EXPECT_EQ(allocations::live(), before);
}

// With an error handler

std::vector<std::string> reports;

class Reported : public testing::Test {
 protected:
  void SetUp() override {
    reports.clear();
    MMatrixError::setErrorHandler([](const char* text) { reports.push_back(text); });
  }
  void TearDown() override { MMatrixError::setErrorHandler(nullptr); }
};

using MLMSolverReported = Reported;

TEST_F(MLMSolverReported, ASingularNormalMatrixDoesNotEndTheSolve) {
  Identity problem;
  problem.slopes = [](const Floats&) { return Floats{1, 0, 1, 0}; };
  MLMSolver solver;
  prepare(solver, problem, {1, 1}, {3, 3});
  EXPECT_NO_THROW(solver.solve());
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.front(), "inverse: singular matrix");
}

TEST_F(MLMSolverReported, NoParametersDoNotEndTheSolve) {
  Identity problem;
  problem.values = [](const Floats&) { return Floats{}; };
  problem.cols = 1;
  MLMSolver solver;
  solver.setProblem(&problem);
  EXPECT_NO_THROW(solver.solve());
  EXPECT_EQ(problem.candidates(), 6);
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.front(), "sgetrf");
}

TEST_F(MLMSolverReported, FewerValuesOfABetterCandidateAreCopiedAsFarAsTheyGo) {
  Identity problem;
  problem.values = [&](const Floats& p) { return problem.xs.size() == 2 ? Floats{p[0]} : p; };
  MLMSolver solver;
  prepare(solver, problem, {0, 0}, {3, 4});
  solver.maxIterations = 2;
  solver.solve();
  EXPECT_EQ(reports, std::vector<std::string>{"MVector length mismatch 2 != 1"});
  EXPECT_EQ(floatsOf(solver.values), (Floats{problem.xs[1][0], 0}));
}

TEST_F(MLMSolverReported, NanIsThrownAllTheSame) {
  Identity problem;
  problem.slopes = [](const Floats&) { return Floats{nan}; };
  MLMSolver solver;
  prepare(solver, problem, {0}, {3});
  EXPECT_EQ(thrownBy<LvException>([&] { solver.solve(); }), "nan");
}

}  // namespace
