// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/matrix_interpolator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "tests/support/matrices.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kPi = 3.14159265358979323846;

class MatrixInterpolator : public ::testing::Test {
 protected:
  RandomValues random{91};
  const Matrix44 a = random.matrix();
  const Matrix44 b = random.matrix();
  MMatrixInterpolator blend{a, b};
};

TEST_F(MatrixInterpolator, GivesItsMatricesAtTheEnds) {
  EXPECT_TRUE(same(blend(0), a));
  EXPECT_TRUE(same(blend(1), b));
}

TEST_F(MatrixInterpolator, CutsTheParameter) {
  EXPECT_TRUE(same(blend(-2), a));
  EXPECT_TRUE(same(blend(5), b));
  EXPECT_TRUE(same(blend(-kInf), a));
  EXPECT_TRUE(same(blend(kInf), b));
}

TEST_F(MatrixInterpolator, TakesNanForOne) { EXPECT_TRUE(same(blend(kNan), b)); }

TEST_F(MatrixInterpolator, WeightsEveryElementToTheBit) {
  for (const double t : {0.1, 1.0 / 3, 0.5, 0.75, std::nextafter(1.0, 0.0), 1e-310}) {
    const Matrix44 m = blend(t);
    for (int k = 0; k < 16; ++k) {
      const double p = t * b(k / 4, k % 4);
      const double q = (1 - t) * a(k / 4, k % 4);
      EXPECT_TRUE(sameBits(m(k / 4, k % 4), q + p)) << t;
    }
  }
}

TEST_F(MatrixInterpolator, BlendsTheBottomRowToo) {
  Matrix44 c = filledWith(2);
  Matrix44 d = filledWith(4);
  EXPECT_TRUE(same(MMatrixInterpolator(c, d)(0.5), filledWith(3)));
}

TEST_F(MatrixInterpolator, HalfwayBetweenOppositeQuarterTurnsIsFlat) {
  LvQuat<double> q;
  Matrix44 left, right;
  left.setRotationFromQuaternion(q.setAxisAngle(Vector3(0, 0, 1), kPi / 2));
  right.setRotationFromQuaternion(q.setAxisAngle(Vector3(0, 0, 1), -kPi / 2));
  const Matrix44 m = MMatrixInterpolator(left, right)(0.5);
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) EXPECT_NEAR(m(r, c), 0, 2 * kEps);
  }
  EXPECT_EQ(m(2, 2), 1.0);
  EXPECT_EQ(m(3, 3), 1.0);
}

TEST_F(MatrixInterpolator, LetsAnInfiniteMatrixSpoilTheOtherEnd) {
  EXPECT_TRUE(same(MMatrixInterpolator(a, filledWith(kInf))(0), filledWith(kNan)));
}

TEST_F(MatrixInterpolator, UsesANewMatrixAtTheNextBlend) {
  const Matrix44 c = random.matrix();
  blend.setB(c);
  EXPECT_TRUE(same(blend.getB(), c));
  EXPECT_TRUE(same(blend(1), c));
  blend.setA(b);
  EXPECT_TRUE(same(blend.getA(), b));
  EXPECT_TRUE(same(blend(0), b));
}

TEST_F(MatrixInterpolator, KeepsAMatrixThatIsSetToItself) {
  blend.setA(blend.getA());
  blend.setB(blend.getB());
  EXPECT_TRUE(same(blend.A, a));
  EXPECT_TRUE(same(blend.B, b));
}

TEST_F(MatrixInterpolator, TakesItsOwnOtherMatrix) {
  blend.setA(blend.getB());
  EXPECT_TRUE(same(blend.A, b));
  EXPECT_TRUE(same(blend(0), b));
}

TEST_F(MatrixInterpolator, HoldsCopies) {
  Matrix44 c = a;
  const MMatrixInterpolator held(c, b);
  c(0, 0) = kNan;
  EXPECT_TRUE(same(held.getA(), a));
}

TEST_F(MatrixInterpolator, AssignsBothMatrices) {
  MMatrixInterpolator other(Matrix44(), Matrix44{});
  EXPECT_EQ(&(other = blend), &other);
  EXPECT_TRUE(same(other.A, a));
  EXPECT_TRUE(same(other.B, b));
  const MMatrixInterpolator& itself = other;
  other = itself;
  EXPECT_TRUE(same(other.A, a));
}

TEST_F(MatrixInterpolator, HasNoVirtualOperations) {
  EXPECT_FALSE(std::is_polymorphic<MMatrixInterpolator>::value);
  EXPECT_EQ(sizeof blend, 2 * sizeof a);
}

}  // namespace
