// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove_problem.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "tests/solver/shots.h"
#include "tests/support/allocations.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using scenes::floatsOf;
using scenes::transformOf;
using scenes::vectorOf;
using shots::preparedShot;
using Floats = reference::Floats;
using Matrix = MGenMatrix<float>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float epsilon = std::numeric_limits<float>::epsilon();
const Floats identityParameters = {1, 0, 0, 0, 1, 0, 0, 0};

std::vector<int> activeTracksOf(const MMatchmoveProblem& problem) {
  std::vector<int> tracks;
  for (int i = 0; i < problem.activeTracks.length; ++i) tracks.push_back(problem.activeTracks[i]);
  return tracks;
}

Matrix identityMatrix(Matrix::Layout layout = Matrix::ColumnMajor) {
  Matrix h(3, 3, layout);
  for (int i = 0; i < 3; ++i) h(i, i) = 1;
  return h;
}

// Selection

TEST(MMatchmoveProblem, StartsEmpty) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  EXPECT_EQ(problem.scene, &scene);
  EXPECT_EQ(problem.frame, 2);
  EXPECT_EQ(problem.x.length, 0);
  EXPECT_EQ(problem.y.length, 0);
  EXPECT_EQ(problem.transform.rows, 0);
}

TEST(MMatchmoveProblem, TakesTheTracksPresentInBothFramesInIncreasingOrder) {
  MMatchmove scene = preparedShot();
  scene.baseWeights[0] = 0;
  scene.baseWeights[3] = -1;
  scene.tracks[1].weights[2] = 0;
  scene.tracks[5].weights[2] = -2;
  const MMatchmoveProblem problem(&scene, 2);
  EXPECT_EQ(problem.activeCount, 2);
  EXPECT_EQ(activeTracksOf(problem), (std::vector<int>{2, 4}));
}

TEST(MMatchmoveProblem, AWeightThatIsNoNumberIsAbsent) {
  MMatchmove scene = preparedShot();
  scene.baseWeights[0] = nan;
  scene.tracks[1].weights[2] = nan;
  const MMatchmoveProblem problem(&scene, 2);
  EXPECT_EQ(activeTracksOf(problem), (std::vector<int>{2, 3, 4, 5}));
}

TEST(MMatchmoveProblem, WithoutPresentTracksGoalAndValuesAreEmpty) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = 0;
  MMatchmoveProblem problem(&scene, 2);
  EXPECT_EQ(problem.activeCount, 0);
  EXPECT_EQ(problem.activeTracks.length, 0);
  EXPECT_EQ(problem.getGoal().length, 0);
  problem.setX(vectorOf(identityParameters));
  MGenVector<float> y(4);
  problem.evalY(y);
  EXPECT_EQ(y.length, 0);
}

TEST(MMatchmoveProblem, WithoutPresentTracksATransformOfAnyShapeProjects) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = 0;
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> out(3);
  EXPECT_NO_THROW(problem.project(Matrix(), out));
  EXPECT_EQ(out.length, 0);
}

TEST(MMatchmoveProblem, AFrameOutsideATrackIsReported) {
  MMatchmove scene = preparedShot();
  scene.tracks[4].weights = vectorOf({1, 1});
  const auto build = [&](int frame) { MMatchmoveProblem problem(&scene, frame); };
  EXPECT_EQ(thrownBy<MMatrixError>([&] { build(2); }), "MVector index 2 out of range 1");
  EXPECT_EQ(thrownBy<MMatrixError>([&] { build(-1); }), "MVector index -1 out of range 2");
}

TEST(MMatchmoveProblem, ATrackAbsentAtTheBaseFrameMayEndEarly) {
  MMatchmove scene = preparedShot();
  scene.baseWeights[4] = 0;
  scene.tracks[4].weights = vectorOf({1, 1});
  EXPECT_EQ(MMatchmoveProblem(&scene, 2).activeCount, 5);
}

TEST(MMatchmoveProblem, ReadsNoPositionsWhenItIsBuilt) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].positions = Matrix();
  EXPECT_EQ(MMatchmoveProblem(&scene, 2).activeCount, 6);
}

TEST(MMatchmoveProblem, FewerThanFourTracksAreNotGuardedAgainst) {
  MMatchmove scene = preparedShot();
  for (int t = 1; t < 6; ++t) scene.tracks[t].weights[2] = 0;
  EXPECT_EQ(MMatchmoveProblem(&scene, 2).getGoal().length, 2);
}

TEST(MMatchmoveProblem, ACopySharesParametersValuesAndTransform) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  const MMatchmoveProblem copy(problem);
  EXPECT_EQ(copy.x.data, problem.x.data);
  EXPECT_EQ(copy.y.data, problem.y.data);
  EXPECT_EQ(copy.transform.data, problem.transform.data);
}

// Goal and projection

TEST(MMatchmoveProblemGoal, IsWeightTimesObservedPosition) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = t == 1 || t == 3 ? 2.5f : 0.0f;
  const MMatchmoveProblem problem(&scene, 2);
  EXPECT_EQ(floatsOf(problem.getGoal()),
            (Floats{2.5f * 1.0f, 2.5f * -0.5f, 2.5f * -0.5f, 2.5f * 0.25f}));
}

TEST(MMatchmoveProblemProject, ThroughTheIdentityIsWeightTimesBasePosition) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = 0.5f * static_cast<float>(t);
  const MMatchmoveProblem problem(&scene, 2);
  for (const auto layout : {Matrix::ColumnMajor, Matrix::RowMajor}) {
    MGenVector<float> out(99);
    problem.project(identityMatrix(layout), out);
    ASSERT_EQ(out.length, 10);
    for (int i = 0; i < 5; ++i) {
      const float w = 0.5f * static_cast<float>(i + 1);
      EXPECT_EQ(out[2 * i], w * scene.basePositions(i + 1, 0));
      EXPECT_EQ(out[2 * i + 1], w * scene.basePositions(i + 1, 1));
    }
  }
}

TEST(MMatchmoveProblemProject, MultipliesByTheWeightBeforeItDivides) {
  MMatchmove scene = preparedShot();
  scene.basePositions(0, 0) = 1.1f;
  scene.basePositions(0, 1) = 0.3f;
  scene.tracks[0].weights[2] = 0.7f;
  MMatchmoveProblem problem(&scene, 2);
  Matrix h = identityMatrix();
  h(2, 0) = 0.9f;
  MGenVector<float> out;
  problem.project(h, out);
  const float s = (1.1f * 0.9f + 0.3f * 0.0f) + 1.0f;
  EXPECT_EQ(out[0], (0.7f * 1.1f) / s);
  EXPECT_EQ(out[1], (0.7f * 0.3f) / s);
}

TEST(MMatchmoveProblemProject, OnTheHorizonIsNotGuarded) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> out;
  Matrix h = identityMatrix();
  h(2, 2) = 0;
  problem.project(h, out);
  EXPECT_TRUE(std::isinf(out[0]));
}

TEST(MMatchmoveProblemProject, ASmallTransformIsReported) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> out;
  const auto project = [&](int rows, int cols) {
    return thrownBy<MMatrixError>(
        [&] { problem.project(Matrix(rows, cols, Matrix::ColumnMajor), out); });
  };
  EXPECT_EQ(project(3, 2), "MMatrix col 2 out of range 0..1");
  EXPECT_EQ(project(2, 2), "MMatrix col 2 out of range 0..1");
  EXPECT_EQ(project(2, 3), "MMatrix row 2 out of range 0..1");
  EXPECT_EQ(project(0, 0), "MMatrix col 0 out of range 0..-1");
  EXPECT_EQ(out.length, 12);  // resized before the first element is read
}

TEST(MMatchmoveProblemProject, ResizesBeforeAnythingCanFail) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  const auto project = [&](MGenVector<float>& out) {
    return thrownBy<MMatrixError>([&] { problem.project(identityMatrix(), out); });
  };
  MGenVector<float> out = vectorOf({7, 8, 9});
  scene.basePositions = Matrix(6, 1, Matrix::ColumnMajor);
  EXPECT_EQ(project(out), "MMatrix col 1 out of range 0..0");
  EXPECT_EQ(out.length, 12);
  out = vectorOf({7, 8, 9});
  scene.tracks[0].weights = vectorOf({1, 1});
  EXPECT_EQ(project(out), "MVector index 2 out of range 1");
  EXPECT_EQ(out.length, 12);
}

// Parameters

TEST(MMatchmoveProblemSetX, ResizesTheValuesBeforeAnythingCanFail) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  scene.tracks[0].weights = vectorOf({1, 1});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.setX(vectorOf(identityParameters)); }),
            "MVector index 2 out of range 1");
  EXPECT_EQ(problem.y.length, 12);
}

TEST(MMatchmoveProblemSetX, SharesTheVectorAndUpdatesTransformAndValues) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  const MGenVector<float> x = vectorOf({2, 0, 0, 0, 2, 0, 1, -1});
  problem.setX(x);
  EXPECT_EQ(problem.x.data, x.data);
  EXPECT_EQ(transformOf(problem.transform), (Floats{2, 0, 0, 0, 2, 0, 1, -1, 1}));
  ASSERT_EQ(problem.y.length, 12);
  EXPECT_EQ(problem.y[0], 2 * scene.basePositions(0, 0) + 1);
  EXPECT_EQ(problem.y[1], 2 * scene.basePositions(0, 1) - 1);
}

TEST(MMatchmoveProblemSetX, WritesTransformAndValuesInPlace) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  const float* const values = problem.y.data;
  const float* const elements = problem.transform.data;
  problem.setX(vectorOf({2, 0, 0, 0, 2, 0, 1, -1}));
  EXPECT_EQ(problem.y.data, values);
  EXPECT_EQ(problem.transform.data, elements);
}

TEST(MMatchmoveProblemSetX, ReadsTheSceneAnew) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  scene.basePositions(0, 0) = 0.25f;
  scene.tracks[0].weights[2] = 2;
  problem.setX(vectorOf(identityParameters));
  EXPECT_EQ(problem.y[0], 0.5f);
  EXPECT_EQ(problem.y[1], 2 * scene.basePositions(0, 1));
}

TEST(MMatchmoveProblemSetX, AnyOtherLengthThanEightIsReported) {
  MMatchmove scene = preparedShot();
  for (const int length : {0, 7, 9}) {
    MMatchmoveProblem problem(&scene, 2);
    EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.setX(MGenVector<float>(length)); }),
              "MVector length mismatch 8 != " + std::to_string(length));
    EXPECT_EQ(problem.x.length, length);
    EXPECT_EQ(problem.transform.rows, 3);
    EXPECT_EQ(problem.y.length, 0);
  }
}

TEST(MMatchmoveProblemEvalY, SharesTheValues) {
  MMatchmove scene = preparedShot();
  MMatchmoveProblem problem(&scene, 2);
  problem.setX(vectorOf(identityParameters));
  MGenVector<float> y;
  problem.evalY(y);
  EXPECT_EQ(y.data, problem.y.data);
}

TEST(MMatchmoveProblemPacking, RunsDownTheColumns) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  Matrix h;
  problem.xToMatrix(vectorOf({10, 20, 30, 11, 21, 31, 12, 22}), h);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_EQ(h(i, j), i == 2 && j == 2 ? 1.0f : static_cast<float>(10 * (i + 1) + j));
    }
  }
}

TEST(MMatchmoveProblemPacking, ToMatrixAndBackGivesTheSameNumbers) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  const Floats x = {1.5f, 2, 3, -0.0f, 5, 1e-30f, 7, 8};
  Matrix h;
  MGenVector<float> back;
  problem.xToMatrix(vectorOf(x), h);
  problem.xToVector(h, back);
  EXPECT_TRUE(scenes::sameBits(floatsOf(back), x));
}

TEST(MMatchmoveProblemPacking, DropsTheLastElementAndRestoresItAsOne) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  Matrix h = identityMatrix();
  h(2, 2) = 5;
  MGenVector<float> x(3);
  problem.xToVector(h, x);
  EXPECT_EQ(floatsOf(x), identityParameters);
  problem.xToMatrix(x, h);
  EXPECT_EQ(h(2, 2), 1);
}

TEST(MMatchmoveProblemPacking, ToVectorReadsInStorageOrder) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  Matrix h(3, 3, Matrix::RowMajor);
  for (int i = 0; i < 9; ++i) h.data[i] = static_cast<float>(i);
  MGenVector<float> x;
  problem.xToVector(h, x);
  EXPECT_EQ(floatsOf(x), (Floats{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(MMatchmoveProblemPacking, ToVectorOfFewerThanEightElementsIsReported) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> x;
  EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.xToVector(Matrix(), x); }),
            "MVector length mismatch 8 != 0");
  EXPECT_EQ(
      thrownBy<MMatrixError>([&] { problem.xToVector(Matrix(2, 3, Matrix::ColumnMajor), x); }),
      "MVector length mismatch 8 != 6");
}

TEST(MMatchmoveProblemPacking, ToMatrixWritesIntoAMatchingMatrixThatOthersHold) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  Matrix h = identityMatrix();
  const Matrix holder = h;
  problem.xToMatrix(vectorOf({2, 0, 0, 0, 1, 0, 0, 0}), h);
  EXPECT_EQ(holder(0, 0), 2);
}

TEST(MMatchmoveProblemPacking, ToMatrixReplacesStorageOfAnotherLayout) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  Matrix h = identityMatrix(Matrix::RowMajor);
  const Matrix holder = h;
  problem.xToMatrix(vectorOf({2, 0, 0, 0, 1, 0, 0, 0}), h);
  EXPECT_EQ(h.rowStride, 1);
  EXPECT_EQ(h(0, 0), 2);
  EXPECT_EQ(holder(0, 0), 1);
}

TEST(MMatchmoveProblemPacking, ToMatrixReadsStridedParameters) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> cells(16);
  for (int i = 0; i < 16; ++i) cells[i] = static_cast<float>(i);
  Matrix h;
  problem.xToMatrix(cells.view(0, 8, 2), h);
  EXPECT_EQ(transformOf(h), (Floats{0, 2, 4, 6, 8, 10, 12, 14, 1}));
}

TEST(MMatchmoveProblemPositions, ToVectorMultipliesByTheWeight) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = t < 2 ? 0.0f : static_cast<float>(t);
  const MMatchmoveProblem problem(&scene, 2);
  Matrix m(4, 2, Matrix::ColumnMajor);
  for (int i = 0; i < 4; ++i) {
    m(i, 0) = static_cast<float>(i);
    m(i, 1) = 10;
  }
  MGenVector<float> y;
  problem.yToVector(m, y);
  EXPECT_EQ(floatsOf(y), (Floats{0, 20, 3, 30, 8, 40, 15, 50}));
}

TEST(MMatchmoveProblemPositions, ToVectorAndBackGivesTheSamePositions) {
  MMatchmove scene = preparedShot();
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = 0.3f * static_cast<float>(t);
  const MMatchmoveProblem problem(&scene, 2);
  Matrix m(5, 2, Matrix::RowMajor);
  for (int i = 0; i < 10; ++i) m.data[i] = 0.7f * static_cast<float>(i) - 2;
  MGenVector<float> y;
  Matrix back;
  problem.yToVector(m, y);
  problem.yToMatrix(y, back);
  ASSERT_EQ(back.rows, 5);
  ASSERT_EQ(back.cols, 2);
  for (int i = 0; i < 5; ++i) {
    for (int c = 0; c < 2; ++c) {
      EXPECT_NEAR(back(i, c), m(i, c), 2 * epsilon * std::fabs(m(i, c))) << i << ", " << c;
    }
  }
}

TEST(MMatchmoveProblemPositions, ToMatrixKeepsTheLayout) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  const MGenVector<float> y(12);
  Matrix column(2, 3, Matrix::ColumnMajor);
  problem.yToMatrix(y, column);
  EXPECT_EQ(column.rowStride, 1);
  EXPECT_EQ(column.colStride, 6);
  Matrix row(2, 3, Matrix::RowMajor);
  problem.yToMatrix(y, row);
  EXPECT_EQ(row.rowStride, 2);
  EXPECT_EQ(row.colStride, 1);
}

TEST(MMatchmoveProblemPositions, TooFewAreReported) {
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MGenVector<float> y;
  Matrix m;
  EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.yToVector(Matrix(5, 2, Matrix::RowMajor), y); }),
            "MMatrix row 5 out of range 0..4");
  EXPECT_EQ(thrownBy<MMatrixError>([&] { problem.yToMatrix(MGenVector<float>(11), m); }),
            "MVector index 11 out of range 10");
}

TEST(MMatchmoveProblemFailure, NoAllocationFailureLeaks) {
  const std::size_t failures = allocations::expectNoLeakOnAnyFailure([] {
    MMatchmove scene = preparedShot();
    MMatchmoveProblem problem(&scene, 2);
    problem.setX(vectorOf(identityParameters));
    Matrix dy;
    problem.evalDy(dy);
    Matrix positions;
    problem.yToMatrix(problem.getGoal(), positions);
  });
  EXPECT_GT(failures, 20u);
}

// With an error handler

TEST(MMatchmoveProblemReported, ShortParametersAreCopiedAsFarAsTheyGo) {
  static std::vector<std::string> reports;
  reports.clear();
  MMatchmove scene = preparedShot();
  const MMatchmoveProblem problem(&scene, 2);
  MMatrixError::setErrorHandler([](const char* text) { reports.push_back(text); });
  Matrix h = identityMatrix();
  problem.xToMatrix(vectorOf({7}), h);
  MGenVector<float> x;
  problem.xToVector(Matrix(2, 2, Matrix::RowMajor), x);
  MMatrixError::setErrorHandler(nullptr);
  EXPECT_EQ(reports, (std::vector<std::string>{"MVector length mismatch 8 != 1",
                                               "MVector length mismatch 8 != 4"}));
  EXPECT_EQ(transformOf(h), (Floats{7, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(x.length, 8);
}

}  // namespace
