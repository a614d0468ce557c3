// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

#include "cornerpin/foundation/exception.h"
#include "tests/solver/shots.h"
#include "tests/support/allocations.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using scenes::transformOf;
using scenes::vectorOf;
using shots::columnMajor3x3;
using shots::expectFitted;
using shots::makeSingular;
using shots::panningShot;
using Floats = reference::Floats;
using Matrix = MGenMatrix<float>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
const Floats identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

TEST(MMatchmoveFailure, ASingularFrameEndsTheForwardSweepAndThereIsNoBackwardOne) {
  MMatchmove scene = panningShot(7, 2);
  makeSingular(scene, 4);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "inverse: singular matrix");
  EXPECT_EQ(transformOf(scene.outputs[2]), identity);
  EXPECT_NE(transformOf(scene.outputs[3]), identity);
  EXPECT_EQ(transformOf(scene.outputs[4]), transformOf(scene.outputs[3]));
  EXPECT_NE(scene.outputs[4].buffer, scene.outputs[3].buffer);
  for (const int f : {0, 1, 5, 6}) EXPECT_EQ(scene.outputs[f].rows, 0) << f;
}

TEST(MMatchmoveFailure, ASingularFrameOfTheBackwardSweepLeavesTheForwardOneSolved) {
  MMatchmove scene = panningShot(7, 4);
  makeSingular(scene, 2);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "inverse: singular matrix");
  for (const int f : {3, 5, 6}) {
    EXPECT_EQ(scene.outputs[f].rows, 3) << f;
    EXPECT_NE(transformOf(scene.outputs[f]), identity) << f;
  }
  EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(scene.outputs[3]));
  for (const int f : {0, 1}) EXPECT_EQ(scene.outputs[f].rows, 0) << f;
}

TEST(MMatchmoveFailure, FramesNotReachedKeepAnEarlierSolve) {
  MMatchmove scene = panningShot(5, 0);
  scene.solve();
  const reference::Transform earlier = transformOf(scene.outputs[4]);
  makeSingular(scene, 3);
  EXPECT_THROW(scene.solve(), MMatrixError);
  EXPECT_EQ(transformOf(scene.outputs[3]), transformOf(scene.outputs[2]));
  EXPECT_EQ(transformOf(scene.outputs[4]), earlier);
}

TEST(MMatchmoveFailure, AnInfiniteWeightIsNan) {
  MMatchmove scene = panningShot(3, 0);
  scene.tracks[1].weights[2] = infinity;
  EXPECT_EQ(thrownBy<LvException>([&] { scene.solve(); }), "nan");
  expectFitted(scene, 1);
  EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(scene.outputs[1]));
}

TEST(MMatchmoveFailure, ABasePositionThatIsNotFiniteIsNan) {
  for (const float position : {nan, infinity, -infinity}) {
    MMatchmove scene = panningShot(3, 1);
    scene.tracks[1].positions(1, 0) = position;
    EXPECT_EQ(thrownBy<LvException>([&] { scene.solve(); }), "nan") << position;
    EXPECT_EQ(transformOf(scene.outputs[2]), identity);
    EXPECT_EQ(scene.outputs[0].rows, 0);
  }
}

TEST(MMatchmoveFailure, AnObservedPositionThatIsNotFiniteKeepsTheNeighboursTransform) {
  for (const float position : {nan, infinity, -infinity}) {
    MMatchmove scene = panningShot(3, 0);
    scene.tracks[1].positions(2, 1) = position;
    EXPECT_NO_THROW(scene.solve()) << position;
    EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(scene.outputs[1])) << position;
  }
}

TEST(MMatchmoveFailure, ATrackThatEndsEarlyFailsInTheFrameWhereItIsMissed) {
  MMatchmove scene = panningShot(4, 0);
  scene.tracks[3].weights = vectorOf({1, 1});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "MVector index 2 out of range 1");
  expectFitted(scene, 1);
  EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(scene.outputs[1]));
  EXPECT_EQ(scene.outputs[3].rows, 0);
}

TEST(MMatchmoveFailure, PositionsThatEndEarlyFailInTheFrameWhereTheyAreMissed) {
  MMatchmove scene = panningShot(4, 0);
  scene.tracks[3].positions.resize(2, 2, Matrix::RowMajor);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "MMatrix row 2 out of range 0..1");
  EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(scene.outputs[1]));
}

TEST(MMatchmoveFailure, AMissingWeightIsReportedBeforeAMissingPositionOfAnEarlierTrack) {
  MMatchmove scene = panningShot(4, 0);
  scene.tracks[1].positions.resize(2, 2, Matrix::RowMajor);
  scene.tracks[3].weights.resize(2);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "MVector index 2 out of range 1");
}

TEST(MMatchmoveFailure, AMissingBasePositionIsReported) {
  MMatchmove scene = panningShot(4, 0);
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.outputs[1] = scene.outputs[0].copy(Matrix::ColumnMajor);
  scene.basePositions = Matrix(2, 2, Matrix::ColumnMajor);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solveFrame(1); }),
            "MMatrix row 2 out of range 0..1");
}

TEST(MMatchmoveFailure, AMissingPositionIsReportedBeforeAMissingBasePosition) {
  MMatchmove scene = panningShot(4, 0);
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.basePositions = Matrix(2, 2, Matrix::ColumnMajor);
  scene.tracks[3].positions.resize(1, 2, Matrix::RowMajor);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solveFrame(1); }),
            "MMatrix row 1 out of range 0..0");
}

TEST(MMatchmoveFailure, AShotCanBeSolvedAfterItFailed) {
  MMatchmove scene = panningShot(5, 0);
  const MArray<MMatchmoveTrack> whole = panningShot(5, 0).tracks;
  makeSingular(scene, 2);
  EXPECT_THROW(scene.solve(), MMatrixError);
  scene.tracks = whole;
  scene.solve();
  for (int f = 0; f < 5; ++f) expectFitted(scene, f);
}

TEST(MMatchmoveFailure, NoAllocationFailureLeaks) {
  const std::size_t failures = allocations::expectNoLeakOnAnyFailure([] {
    MMatchmove scene = panningShot(3, 1);
    for (int t = 0; t < 6; ++t) scene.tracks[t].weights[0] = 0;
    scene.solve();
  });
  EXPECT_GT(failures, 20u);
}

TEST(MMatchmoveFailure, NoThrownFailureLeaks) {
  const std::size_t before = allocations::live();
  for (int kind = 0; kind < 4; ++kind) {
    MMatchmove scene = panningShot(5, 2);
    if (kind == 0) makeSingular(scene, 4);
    if (kind == 1) scene.tracks[1].weights[0] = infinity;
    if (kind == 2) scene.tracks[3].weights = vectorOf({1, 1, 1});
    if (kind == 3) scene.baseFrame = 5;
    EXPECT_THROW(scene.solve(), LvException) << kind;
  }
  EXPECT_EQ(allocations::live(), before);
}

TEST(MMatchmoveReported, ASingularFrameDoesNotEndTheSolve) {
  static std::string first;
  first.clear();
  MMatchmove scene = panningShot(5, 0);
  makeSingular(scene, 2);
  MMatrixError::setErrorHandler([](const char* text) {
    if (first.empty()) first = text;
  });
  EXPECT_NO_THROW(scene.solve());
  MMatrixError::setErrorHandler(nullptr);
  EXPECT_EQ(first, "inverse: singular matrix");
  for (int f = 0; f < 5; ++f) EXPECT_TRUE(columnMajor3x3(scene.outputs[f])) << f;
}

}  // namespace
