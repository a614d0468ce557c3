// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/solver/matchmove_problem.h"
#include "tests/solver/shots.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using scenes::floatsOf;
using scenes::transformOf;
using scenes::vectorOf;
using shots::preparedShot;
using Floats = reference::Floats;
using Matrix = MGenMatrix<float>;

constexpr float epsilon = std::numeric_limits<float>::epsilon();
const Floats identityParameters = {1, 0, 0, 0, 1, 0, 0, 0};

TEST(MMatchmoveProblemEvalDy, AFreshMatrixBecomesRowMajor) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  Matrix dy;
  problem.evalDy(dy);
  EXPECT_EQ(dy.rows, 12);
  EXPECT_EQ(dy.cols, 8);
  EXPECT_EQ(dy.rowStride, 8);
  EXPECT_EQ(dy.colStride, 1);
}

TEST(MMatchmoveProblemEvalDy, KeepsTheLayout) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  Matrix fresh;
  Matrix dy(2, 2, Matrix::ColumnMajor);
  problem.evalDy(fresh);
  problem.evalDy(dy);
  EXPECT_EQ(dy.rowStride, 1);
  EXPECT_EQ(dy.colStride, 12);
  EXPECT_EQ(scenes::plain(dy).elements, scenes::plain(fresh).elements);
}

TEST(MMatchmoveProblemEvalDy, ReusesAMatchingMatrix) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  Matrix dy(12, 8, Matrix::ColumnMajor);
  const float* const storage = dy.data;
  problem.evalDy(dy);
  EXPECT_EQ(dy.data, storage);
}

TEST(MMatchmoveProblemEvalDy, DividesForwardDifferencesByTheStepItself) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  const Floats x = {1.1f, 0.1f, 0.02f, -0.2f, 0.9f, 0.05f, 300, -0.4f};
  problem.setX(vectorOf(x));
  Matrix dy;
  problem.evalDy(dy);
  for (std::size_t p = 0; p < 8; ++p) {
    Floats moved = x;
    moved[p] += 0.0001f;  // 300 does not move by the whole step
    moved.push_back(1);
    Matrix h(3, 3, Matrix::ColumnMajor);
    for (int i = 0; i < 9; ++i) h.data[i] = moved[reference::size(i)];
    MGenVector<float> y;
    problem.project(h, y);
    for (int k = 0; k < 12; ++k) {
      EXPECT_EQ(dy(k, static_cast<int>(p)), (y[k] - problem.y[k]) / 0.0001f) << k << ", " << p;
    }
  }
}

// With the identity, element (0, 2) moves every u by the step.
TEST(MMatchmoveProblemEvalDy, TakesTheValuesAsTheyStand) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  problem.y[0] = 0.25f;
  Matrix dy;
  problem.evalDy(dy);
  const float moved = scene.basePositions(0, 0) + 0.0001f;
  EXPECT_EQ(dy(0, 6), (moved - 0.25f) / 0.0001f);
  EXPECT_EQ(dy(0, 7), (scene.basePositions(0, 0) - 0.25f) / 0.0001f);
}

TEST(MMatchmoveProblemEvalDy, ProjectsWeightsAndBasePositionsOfThePresent) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  const float before = scene.basePositions(0, 0);
  scene.basePositions(0, 0) = 0.375f;
  scene.tracks[1].weights[2] = 2;
  Matrix dy;
  problem.evalDy(dy);
  EXPECT_EQ(dy(0, 7), (0.375f - before) / 0.0001f);
  EXPECT_EQ(dy(2, 7), (2 * scene.basePositions(1, 0) - scene.basePositions(1, 0)) / 0.0001f);
}

TEST(MMatchmoveProblemEvalDy, HasAColumnForEveryParameterGiven) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  Matrix expected;
  problem.evalDy(expected);
  problem.x = MGenVector<float>(10);
  Matrix dy(3, 3, Matrix::ColumnMajor);
  problem.evalDy(dy);
  ASSERT_EQ(dy.rows, 12);
  ASSERT_EQ(dy.cols, 10);
  for (int k = 0; k < 12; ++k) {
    for (int p = 0; p < 8; ++p) EXPECT_EQ(dy(k, p), expected(k, p)) << k << ", " << p;
    for (int p = 8; p < 10; ++p) EXPECT_EQ(dy(k, p), 0) << k << ", " << p;
  }
  problem.x = MGenVector<float>(7);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.evalDy(dy); }), "MMatrix col 7 out of range 0..6");
  EXPECT_EQ(dy.cols, 7);
}

TEST(MMatchmoveProblemEvalDy, HasARowForEveryValueGiven) {
  MMatchmove scene = preparedShot();
  for (const int length : {0, 3, 11, 13, 20}) {
    MMatchmoveProblem problem(&scene, 2);
    problem.setX(vectorOf(identityParameters));
    problem.y = MGenVector<float>(length);
    Matrix dy;
    EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.evalDy(dy); }),
              "MVector length mismatch " + std::to_string(length) + " != 12");
    EXPECT_EQ(dy.rows, length);
    EXPECT_EQ(dy.cols, 8);
  }
}

TEST(MMatchmoveProblemEvalDy, ApproximatesTheDerivatives) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  Matrix dy;
  problem.evalDy(dy);
  // Of x' = (x h00 + y h01 + h02) / (x h20 + y h21 + 1) at the identity. Rounding of values below
  // 1 over the step, and half the step times the second derivative.
  const double allowed = static_cast<double>(epsilon) / 1e-4 + 1e-4;
  for (int i = 0; i < 6; ++i) {
    const double x = static_cast<double>(scene.basePositions(i, 0));
    const double y = static_cast<double>(scene.basePositions(i, 1));
    const double expected[2][8] = {{x, 0, -x * x, y, 0, -x * y, 1, 0},
                                   {0, x, -x * y, 0, y, -y * y, 0, 1}};
    for (int c = 0; c < 2; ++c) {
      for (int p = 0; p < 8; ++p) {
        EXPECT_NEAR(static_cast<double>(dy(2 * i + c, p)), expected[c][p], allowed)
            << i << ", " << c << ", " << p;
      }
    }
  }
}

TEST(MMatchmoveProblemEvalDy, LeavesParametersTransformAndValuesAlone) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  const Floats y = floatsOf(problem.y);
  Matrix dy;
  problem.evalDy(dy);
  EXPECT_EQ(floatsOf(problem.x), identityParameters);
  EXPECT_EQ(transformOf(problem.transform), (Floats{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(floatsOf(problem.y), y);
}

}  // namespace
