// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/solver/matchmove.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cornerpin/foundation/exception.h"
#include "tests/solver/shots.h"
#include "tests/support/scene.h"
#include "tests/support/thrown.h"

namespace {

using scenes::floatsOf;
using scenes::transformOf;
using scenes::vectorOf;
using shots::columnMajor3x3;
using shots::expectFitted;
using shots::panningShot;
using Floats = reference::Floats;
using Matrix = MGenMatrix<float>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
const Floats identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// Scene

TEST(MMatchmoveDefaults, EverythingIsEmptyOrZero) {
  const MMatchmove scene;
  EXPECT_EQ(scene.tracks.size(), 0);
  EXPECT_EQ(scene.spare, 0);
  EXPECT_EQ(scene.baseFrame, 0);
  EXPECT_EQ(scene.trackCount, 0);
  EXPECT_EQ(scene.frameCount, 0);
  EXPECT_EQ(scene.basePositions.buffer, nullptr);
  EXPECT_EQ(scene.baseWeights.length, 0);
  EXPECT_EQ(scene.outputs.size(), 0);
}

TEST(MMatchmoveSetup, SetsTheCountsAndSizes) {
  MMatchmove scene = panningShot(3, 0);
  scene.setupOutputs();
  EXPECT_EQ(scene.trackCount, 6);
  EXPECT_EQ(scene.frameCount, 3);
  EXPECT_EQ(scene.basePositions.rows, 6);
  EXPECT_EQ(scene.basePositions.cols, 2);
  EXPECT_EQ(scene.baseWeights.length, 6);
  ASSERT_EQ(scene.outputs.size(), 3);
  EXPECT_EQ(scene.outputs[0].rows, 0);
}

TEST(MMatchmoveSetup, CountsTheFramesOfTheFirstTrack) {
  MMatchmove scene = panningShot(3, 0);
  scene.tracks[0].weights = vectorOf({1, 1});
  scene.setupOutputs();
  EXPECT_EQ(scene.frameCount, 2);
}

TEST(MMatchmoveSetup, EmptyBasePositionsBecomeRowMajor) {
  MMatchmove scene = panningShot(3, 0);
  scene.setupOutputs();
  EXPECT_EQ(scene.basePositions.colStride, 1);
  EXPECT_EQ(scene.basePositions.rowStride, 2);
}

TEST(MMatchmoveSetup, BasePositionsKeepTheirLayoutAndContents) {
  MMatchmove scene = panningShot(3, 0);
  scene.basePositions = Matrix(2, 2, Matrix::ColumnMajor);
  scene.basePositions(1, 0) = 7;
  scene.baseWeights = vectorOf({8});
  scene.setupOutputs();
  EXPECT_EQ(scene.basePositions.rowStride, 1);
  EXPECT_EQ(scene.basePositions.colStride, 6);
  EXPECT_EQ(scene.basePositions(1, 0), 7);
  EXPECT_EQ(floatsOf(scene.baseWeights), (Floats{8, 0, 0, 0, 0, 0}));
}

TEST(MMatchmoveSetup, KeepsTheOutputsThatStayInRange) {
  MMatchmove scene = panningShot(3, 0);
  scene.outputs.resize(5);
  for (int f = 0; f < 5; ++f) scene.outputs[f] = Matrix(1, f + 1, Matrix::RowMajor);
  scene.setupOutputs();
  ASSERT_EQ(scene.outputs.size(), 3);
  for (int f = 0; f < 3; ++f) EXPECT_EQ(scene.outputs[f].cols, f + 1);
}

TEST(MMatchmoveSetup, WithoutTracksThrowsBeforeAnyOutputChanges) {
  MMatchmove scene = panningShot(3, 1);
  scene.solve();
  scene.tracks.resize(0);
  const auto solve = [&] { scene.solve(); };
  EXPECT_EQ(thrownBy<LvBadIndexException>(solve), "MArray::operator[]");
  EXPECT_EQ(scene.trackCount, 0);
  EXPECT_EQ(scene.frameCount, 3);
  EXPECT_EQ(scene.outputs.size(), 3);
  EXPECT_EQ(scene.basePositions.rows, 6);
  EXPECT_EQ(scene.baseWeights.length, 6);
}

TEST(MMatchmoveSetup, TracksWithoutFramesLeaveNoBaseFrame) {
  MMatchmove scene;
  scene.tracks.resize(2);
  EXPECT_EQ(thrownBy<LvBadIndexException>([&] { scene.solve(); }), "MArray::operator[]");
  EXPECT_EQ(scene.trackCount, 2);
  EXPECT_EQ(scene.frameCount, 0);
}

// Base frame

TEST(MMatchmoveBaseFrame, IsAColumnMajorIdentity) {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  EXPECT_TRUE(columnMajor3x3(scene.outputs[1]));
  EXPECT_EQ(transformOf(scene.outputs[1]), identity);
  EXPECT_EQ(scene.outputs[0].rows, 0);
}

TEST(MMatchmoveBaseFrame, CopiesPositionsAndWeightsWhateverTheWeight) {
  MMatchmove scene = panningShot(3, 1);
  const float weights[] = {1, 0, -2, 0.5f, 1e-20f, 100};
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[1] = weights[t];
  scene.setupOutputs();
  scene.solveBaseFrame();
  for (int t = 0; t < 6; ++t) {
    EXPECT_EQ(scene.baseWeights[t], weights[t]) << t;
    EXPECT_EQ(scene.basePositions(t, 0), scene.tracks[t].positions(1, 0)) << t;
    EXPECT_EQ(scene.basePositions(t, 1), scene.tracks[t].positions(1, 1)) << t;
  }
}

TEST(MMatchmoveBaseFrame, OutsideTheShotThrowsAfterTheSetup) {
  constexpr int lowest = std::numeric_limits<int>::min();
  for (const int base : {-1, 3, lowest, std::numeric_limits<int>::max()}) {
    MMatchmove scene = panningShot(3, base);
    scene.baseWeights = vectorOf({9});
    EXPECT_EQ(thrownBy<LvBadIndexException>([&] { scene.solve(); }), "MArray::operator[]") << base;
    EXPECT_EQ(scene.trackCount, 6);
    EXPECT_EQ(scene.frameCount, 3);
    ASSERT_EQ(scene.outputs.size(), 3);
    for (int f = 0; f < 3; ++f) EXPECT_EQ(scene.outputs[f].rows, 0);
    EXPECT_EQ(floatsOf(scene.baseWeights), (Floats{9, 0, 0, 0, 0, 0}));
  }
}

TEST(MMatchmoveBaseFrame, ATrackThatEndsBeforeItLeavesTheRestAtWeightZero) {
  MMatchmove scene = panningShot(3, 2);
  scene.solve();
  scene.tracks[2].weights = vectorOf({1, 1});
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "MVector index 2 out of range 1");
  EXPECT_EQ(floatsOf(scene.baseWeights), (Floats{1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(transformOf(scene.outputs[2]), identity);
}

TEST(MMatchmoveBaseFrame, PositionsThatEndBeforeItAreReportedAfterTheWeight) {
  MMatchmove scene = panningShot(3, 2);
  scene.tracks[2].positions.resize(2, 2, Matrix::RowMajor);
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solve(); }), "MMatrix row 2 out of range 0..1");
  EXPECT_EQ(floatsOf(scene.baseWeights), (Floats{1, 1, 1, 0, 0, 0}));
}

// Whole solve

TEST(MMatchmoveSolve, CarriesEveryTrackToItsPlace) {
  for (const int base : {0, 2, 4}) {
    MMatchmove scene = panningShot(5, base);
    scene.solve();
    for (int f = 0; f < 5; ++f) expectFitted(scene, f);
  }
}

TEST(MMatchmoveSolve, GivesOneOwnedColumnMajorTransformPerFrame) {
  MMatchmove scene = panningShot(5, 2);
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[4] = 0;
  scene.solve();
  for (int f = 0; f < 5; ++f) {
    EXPECT_TRUE(columnMajor3x3(scene.outputs[f])) << f;
    EXPECT_TRUE(scene.outputs[f].ownsBuffer()) << f;
    EXPECT_EQ(scene.outputs[f](2, 2), 1.0f) << f;
  }
}

TEST(MMatchmoveSolve, TracksThatStandStillGiveTheIdentityInEveryFrame) {
  MMatchmove scene = panningShot(4, 1, 0.0f);
  scene.solve();
  for (int f = 0; f < 4; ++f) EXPECT_EQ(transformOf(scene.outputs[f]), identity) << f;
}

TEST(MMatchmoveSolve, AnAbsentFrameTakesTheTransformOfItsNeighbourTowardsTheBase) {
  MMatchmove scene = panningShot(7, 3);
  for (int t = 0; t < 6; ++t) {
    for (const int f : {1, 5}) scene.tracks[t].weights[f] = 0;
  }
  scene.solve();
  EXPECT_EQ(transformOf(scene.outputs[1]), transformOf(scene.outputs[2]));
  EXPECT_EQ(transformOf(scene.outputs[5]), transformOf(scene.outputs[4]));
  expectFitted(scene, 0);
  expectFitted(scene, 6);
}

TEST(MMatchmoveSolve, AnAbsentFrameOwnsItsTransformInBothDirections) {
  MMatchmove scene = panningShot(7, 3);
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[1] = scene.tracks[t].weights[5] = 0;
  scene.solve();
  for (const int f : {1, 5}) {
    EXPECT_TRUE(scene.outputs[f].ownsBuffer()) << f;
    EXPECT_TRUE(columnMajor3x3(scene.outputs[f])) << f;
    const int neighbour = f < 3 ? f + 1 : f - 1;
    EXPECT_EQ(transformOf(scene.outputs[f]), transformOf(scene.outputs[neighbour])) << f;
    EXPECT_NE(scene.outputs[f].data, scene.outputs[neighbour].data) << f;
  }
}

TEST(MMatchmoveSolve, ATrackAbsentAtTheBaseFrameInfluencesNoFrame) {
  MMatchmove with = panningShot(5, 2);
  MMatchmove without = panningShot(5, 2);
  without.tracks.resize(5);
  with.tracks[5].weights[2] = 0;
  for (int f = 0; f < 5; ++f) with.tracks[5].positions(f, 0) = 1000;
  with.solve();
  without.solve();
  for (int f = 0; f < 5; ++f) {
    EXPECT_EQ(transformOf(with.outputs[f]), transformOf(without.outputs[f])) << f;
  }
}

TEST(MMatchmoveSolve, NegativeAndNanWeightsAreAbsent) {
  MMatchmove expected = panningShot(3, 0);
  expected.tracks[1].weights[2] = 0;
  expected.solve();
  for (const float weight : {-1.0f, -0.0f, nan, -infinity}) {
    MMatchmove scene = panningShot(3, 0);
    scene.tracks[1].weights[2] = weight;
    scene.tracks[1].positions(2, 0) = 50;
    scene.solve();
    EXPECT_EQ(transformOf(scene.outputs[2]), transformOf(expected.outputs[2])) << weight;
  }
}

TEST(MMatchmoveSolve, ATrackMayHaveFewerPositionsWhereItIsAbsent) {
  MMatchmove whole = panningShot(6, 2);
  for (const int f : {0, 4, 5}) whole.tracks[3].weights[f] = 0.0f;
  MMatchmove cut = whole;
  cut.tracks[3].positions = whole.tracks[3].positions.copy(Matrix::RowMajor);
  cut.tracks[3].positions.resize(4, 2, Matrix::RowMajor);
  whole.solve();
  cut.solve();
  for (int f = 0; f < 6; ++f) {
    EXPECT_EQ(transformOf(cut.outputs[f]), transformOf(whole.outputs[f])) << "frame " << f;
  }
}

TEST(MMatchmoveSolve, ALargerWeightPullsHarder) {
  float distance[2];
  for (int heavy = 0; heavy < 2; ++heavy) {
    MMatchmove scene = panningShot(2, 0);
    scene.tracks[0].positions(1, 0) += 0.1f;
    scene.tracks[0].weights[1] = heavy == 1 ? 10.0f : 1.0f;
    scene.solve();
    MGenVector<float> carried;
    scene.project(1, scene.tracks[0].positions.row(0), carried);
    distance[heavy] = std::abs(carried[0] - scene.tracks[0].positions(1, 0));
  }
  EXPECT_LT(distance[1], distance[0]);
}

TEST(MMatchmoveSolve, ChangesNeitherTracksNorSpare) {
  MMatchmove scene = panningShot(3, 1);
  scene.spare = 42;
  const MMatchmove untouched = panningShot(3, 1);
  scene.solve();
  EXPECT_EQ(scene.spare, 42);
  EXPECT_EQ(scene.baseFrame, 1);
  for (int t = 0; t < 6; ++t) {
    EXPECT_EQ(scenes::plain(scene.tracks[t].positions).elements,
              scenes::plain(untouched.tracks[t].positions).elements);
    EXPECT_EQ(floatsOf(scene.tracks[t].weights), floatsOf(untouched.tracks[t].weights));
  }
}

// A second solve

TEST(MMatchmoveSecondSolve, OverwritesEveryFrameInTheSameArray) {
  MMatchmove scene = panningShot(4, 1);
  scene.solve();
  MMatchmove fresh = panningShot(4, 2, -0.02f);
  scene.tracks = fresh.tracks;
  scene.baseFrame = 2;
  scene.solve();
  fresh.solve();
  for (int f = 0; f < 4; ++f) {
    EXPECT_EQ(transformOf(scene.outputs[f]), transformOf(fresh.outputs[f])) << f;
  }
}

TEST(MMatchmoveSecondSolve, LeavesTransformsThatTheCallerHoldsAlone) {
  MMatchmove scene = panningShot(4, 1);
  scene.solve();
  const MArray<Matrix> held = scene.outputs;
  reference::Transform before[4];
  for (int f = 0; f < 4; ++f) before[f] = transformOf(held[f]);
  scene.tracks = panningShot(4, 1, -0.02f).tracks;
  scene.solve();
  for (int f = 0; f < 4; ++f) {
    EXPECT_EQ(transformOf(held[f]), before[f]) << f;
    EXPECT_TRUE(scene.outputs[f].ownsBuffer()) << f;
  }
}

TEST(MMatchmoveSecondSolve, FollowsTheNumberOfFrames) {
  MMatchmove scene = panningShot(4, 1);
  scene.solve();
  scene.tracks = panningShot(2, 1).tracks;
  scene.solve();
  EXPECT_EQ(scene.outputs.size(), 2);
  scene.tracks = panningShot(6, 1).tracks;
  scene.solve();
  EXPECT_EQ(scene.outputs.size(), 6);
  expectFitted(scene, 5);
}

// One frame

TEST(MMatchmoveSolveFrame, StartsFromTheTransformThatIsThere) {
  MMatchmove scene = panningShot(3, 1);
  scene.solve();
  const reference::Transform solved = transformOf(scene.outputs[2]);
  for (int t = 0; t < 6; ++t) {  // so that no step is better
    MGenVector<float> carried;
    scene.project(2, scene.basePositions.row(t), carried);
    for (int c = 0; c < 2; ++c) scene.tracks[t].positions(2, c) = carried[c];
  }
  scene.solveFrame(2);
  EXPECT_EQ(transformOf(scene.outputs[2]), solved);
}

TEST(MMatchmoveSolveFrame, GivesASharedOutputStorageOfItsOwn) {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.outputs[2] = scene.outputs[1];
  scene.solveFrame(2);
  EXPECT_TRUE(scene.outputs[2].ownsBuffer());
  EXPECT_EQ(transformOf(scene.outputs[1]), identity);
  expectFitted(scene, 2);
}

TEST(MMatchmoveSolveFrame, WritesIntoAnOutputThatHasOneHolder) {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.outputs[2] = scene.outputs[1].copy(Matrix::ColumnMajor);
  const float* const storage = scene.outputs[2].data;
  scene.solveFrame(2);
  EXPECT_EQ(scene.outputs[2].data, storage);
}

// A place that is not finite lets no candidate win: the frame keeps its start.
TEST(MMatchmoveSolveFrame, TakesARowMajorStartInTheOrderOfItsStorage) {
  MMatchmove scene = panningShot(3, 0);
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.tracks[1].positions(1, 1) = nan;
  scene.outputs[1] = Matrix(3, 3, Matrix::RowMajor);
  const Floats stored = {1.5f, 0.25f, -0.125f, 0.5f, 2, 0.0625f, 3, -4, 7};
  for (int i = 0; i < 9; ++i) scene.outputs[1].data[i] = stored[reference::size(i)];
  ASSERT_TRUE(scene.outputs[1].ownsBuffer());
  scene.solveFrame(1);
  EXPECT_TRUE(columnMajor3x3(scene.outputs[1]));
  EXPECT_EQ(transformOf(scene.outputs[1]),
            (Floats{1.5f, 0.25f, -0.125f, 0.5f, 2, 0.0625f, 3, -4, 1}));
}

TEST(MMatchmoveSolveFrame, WithoutActiveTracksLeavesTheOutputAlone) {
  MMatchmove scene = panningShot(3, 1);
  for (int t = 0; t < 6; ++t) scene.tracks[t].weights[2] = 0;
  scene.setupOutputs();
  scene.solveBaseFrame();
  scene.outputs[2] = Matrix(1, 2, Matrix::RowMajor);
  scene.solveFrame(2);
  EXPECT_EQ(scene.outputs[2].cols, 2);
}

TEST(MMatchmoveSolveFrame, OutsideTheTracksIsReported) {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solveFrame(3); }), "MVector index 3 out of range 2");
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solveFrame(-1); }),
            "MVector index -1 out of range 2");
}

TEST(MMatchmoveSolveFrame, OnAnOutputWithoutTransformIsReported) {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  EXPECT_EQ(thrownBy<MMatrixError>([&] { scene.solveFrame(2); }), "MVector length mismatch 8 != 0");
}

}  // namespace
