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
using scenes::vectorOf;
using shots::panningShot;
using Floats = reference::Floats;
using Matrix = MGenMatrix<float>;

constexpr float infinity = std::numeric_limits<float>::infinity();
const Floats identity = {1, 0, 0, 0, 1, 0, 0, 0, 1};

MMatchmove withTransform(const Floats& columnMajor, int rows, int cols) {
  MMatchmove scene;
  scene.outputs.resize(1);
  scene.outputs[0] = Matrix(rows, cols, Matrix::ColumnMajor);
  for (int i = 0; i < rows * cols; ++i) {
    scene.outputs[0].data[i] = columnMajor[reference::size(i)];
  }
  return scene;
}

Floats projected(const MMatchmove& scene, float x, float y) {
  MGenVector<float> out;
  scene.project(0, vectorOf({x, y}), out);
  return floatsOf(out);
}

TEST(MMatchmoveProject, ThroughTheBaseFrameIsThePointItself) {
  MMatchmove scene = panningShot(3, 1);
  scene.solve();
  MGenVector<float> out;
  scene.project(1, vectorOf({0.3f, -7.1f}), out);
  EXPECT_EQ(floatsOf(out), (Floats{0.3f, -7.1f}));
}

TEST(MMatchmoveProject, WithoutPerspectiveIsAffine) {
  EXPECT_EQ(projected(withTransform({1, 2, 0, 3, 4, 0, 5, 6, 1}, 3, 3), 10, 100),
            (Floats{315, 426}));
}

TEST(MMatchmoveProject, DividesByThePerspectiveDenominator) {
  EXPECT_EQ(projected(withTransform({1, 0, 1, 0, 1, 2, 0, 0, 1}, 3, 3), 1, 3),
            (Floats{1 / 8.0f, 3 / 8.0f}));
}

TEST(MMatchmoveProject, OnTheHorizonIsInfiniteOrNan) {
  const Floats out = projected(withTransform({1, 0, 1, 0, 1, 0, 0, 0, -1}, 3, 3), 1, 0);
  EXPECT_EQ(out[0], infinity);
  EXPECT_TRUE(std::isnan(out[1]));
}

TEST(MMatchmoveProject, ResizesTheOutput) {
  MMatchmove scene = withTransform(identity, 3, 3);
  MGenVector<float> out(7);
  scene.project(0, vectorOf({1, 2}), out);
  EXPECT_EQ(floatsOf(out), (Floats{1, 2}));
}

TEST(MMatchmoveProject, OntoThePointItselfReadsItFirst) {
  MMatchmove scene = withTransform({0, 1, 0, 1, 0, 0, 0, 0, 1}, 3, 3);
  MGenVector<float> p = vectorOf({1, 2});
  scene.project(0, p, p);
  EXPECT_EQ(floatsOf(p), (Floats{2, 1}));
}

TEST(MMatchmoveProject, OutsideTheShotThrows) {
  MMatchmove scene = withTransform(identity, 3, 3);
  MGenVector<float> out;
  for (const int frame : {-1, 1}) {
    const auto project = [&] { scene.project(frame, vectorOf({1, 2}), out); };
    EXPECT_EQ(thrownBy<LvBadIndexException>(project), "MArray::operator[]");
  }
}

TEST(MMatchmoveProject, AFailureLeavesTheOutputAlone) {
  const struct {
    int rows, cols;
    Floats point;
    const char* message;
  } cases[] = {{0, 0, {1, 2}, "MMatrix col 0 out of range 0..-1"},
               {2, 2, {1, 2}, "MMatrix col 2 out of range 0..1"},
               {2, 3, {1, 2}, "MMatrix row 2 out of range 0..1"},
               {3, 3, {1}, "MVector index 1 out of range 0"},
               {0, 0, {}, "MVector index 0 out of range -1"}};
  for (const auto& c : cases) {
    MMatchmove scene = withTransform(identity, c.rows, c.cols);
    MGenVector<float> out = vectorOf({7, 8, 9});
    const auto project = [&] { scene.project(0, vectorOf(c.point), out); };
    EXPECT_EQ(thrownBy<MMatrixError>(project), c.message);
    EXPECT_EQ(floatsOf(out), (Floats{7, 8, 9}));
  }
}

}  // namespace
