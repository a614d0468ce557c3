// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/projection_jacobian.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <Eigen/Core>
#include <unsupported/Eigen/AutoDiff>

#include "tests/support/allocations.h"
#include "tests/support/matrices.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

const Matrix44 kPinhole = matrix44({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0});

Matrix44 jacobianAt(const Vector3& p, const Matrix44& m) {
  Matrix44 j = filledWith(kNan);
  projectionJacobian(p, m, j);
  return j;
}

TEST(ProjectionJacobian, OfTheIdentityIsTheIdentity) {
  RandomValues random(51);
  for (int trial = 0; trial < 20; ++trial) {
    EXPECT_TRUE(same(jacobianAt(random.vector3(), Matrix44()), Matrix44())) << random.seed;
  }
}

TEST(ProjectionJacobian, OfAnAffineMatrixIsItsLinearPart) {
  RandomValues random(52);
  for (int trial = 0; trial < 20; ++trial) {
    Matrix44 m = random.matrix();
    for (int c = 0; c < 4; ++c) m(3, c) = c == 3 ? 1 : 0;
    const Matrix44 j = jacobianAt(random.vector3(), m);
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) EXPECT_EQ(j(r, c), m(r, c)) << random.seed;
    }
  }
}

TEST(ProjectionJacobian, OfTheDivisionByZ) {
  const Matrix44 j = jacobianAt(Vector3(2, 3, 4), kPinhole);
  EXPECT_TRUE(same(j, matrix44({0.25, 0, -0.125, 0, 0, 0.25, -0.1875, 0, 0, 0, 0, 0, 0, 0, 0, 1})));
}

TEST(ProjectionJacobian, OverwritesTheWholeOutput) {
  RandomValues random(53);
  const Matrix44 m = random.matrix();
  const Vector3 p = random.vector3();
  Matrix44 a = filledWith(kNan);
  Matrix44 b = filledWith(7);
  projectionJacobian(p, m, a);
  projectionJacobian(p, m, b);
  EXPECT_TRUE(same(a, b));
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(a(3, i), i == 3 ? 1.0 : 0.0);
    EXPECT_EQ(a(i, 3), i == 3 ? 1.0 : 0.0);
  }
}

TEST(ProjectionJacobian, MayOverwriteTheMatrixItself) {
  RandomValues random(54);
  const Vector3 p = random.vector3();
  Matrix44 m = random.matrix();
  const Matrix44 expected = jacobianAt(p, m);
  projectionJacobian(p, m, m);
  EXPECT_TRUE(same(m, expected));
}

TEST(ProjectionJacobian, FollowsTheProductRuleToTheBit) {
  RandomValues random(55);
  for (int trial = 0; trial < 500; ++trial) {
    const Matrix44 m = random.matrix();
    const Vector3 p = random.vector3();
    const auto row = [&](int r) {
      const double px = m(r, 0) * p._x, py = m(r, 1) * p._y, pz = m(r, 2) * p._z;
      return ((px + py) + pz) + m(r, 3);
    };
    const double w = row(3);
    const double square = w * w;
    const double reciprocal = 1 / w;
    const Matrix44 j = jacobianAt(p, m);
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) {
        const double direct = m(r, c) * reciprocal;
        const double byWeight = row(r) * (-m(3, c) / square);
        ASSERT_TRUE(sameBits(j(r, c), direct + byWeight)) << "seed " << random.seed;
      }
    }
  }
}

TEST(ProjectionJacobian, AgreesWithAnotherLibrary) {
  using Dual = Eigen::AutoDiffScalar<Eigen::Vector3d>;
  RandomValues random(56);
  for (int trial = 0; trial < 200; ++trial) {
    const Matrix44 m = random.mildProjection();
    const Vector3 p = random.vector3();
    const Dual x(p._x, 3, 0), y(p._y, 3, 1), z(p._z, 3, 2);
    const auto row = [&](int r) { return Dual(m(r, 0) * x + m(r, 1) * y + m(r, 2) * z + m(r, 3)); };
    const Matrix44 j = jacobianAt(p, m);
    for (int r = 0; r < 3; ++r) {
      const Dual projected = row(r) / row(3);
      for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(j(r, c), projected.derivatives()[c], 200 * kEps) << "seed " << random.seed;
      }
    }
  }
}

TEST(ProjectionJacobian, AgreesWithCentralDifferences) {
  RandomValues random(57);
  const double h = std::cbrt(kEps);
  for (int trial = 0; trial < 200; ++trial) {
    const Matrix44 m = random.mildProjection();
    const Vector3 p = random.vector3();
    const Matrix44 j = jacobianAt(p, m);
    for (int c = 0; c < 3; ++c) {
      Vector3 above = p, below = p;
      (c == 0 ? above._x : c == 1 ? above._y : above._z) += h;
      (c == 0 ? below._x : c == 1 ? below._y : below._z) -= h;
      m.transform(above, above);
      m.transform(below, below);
      const double tolerance = 200 * h * h;
      EXPECT_NEAR(j(0, c), (above._x - below._x) / (2 * h), tolerance) << "seed " << random.seed;
      EXPECT_NEAR(j(1, c), (above._y - below._y) / (2 * h), tolerance) << "seed " << random.seed;
      EXPECT_NEAR(j(2, c), (above._z - below._z) / (2 * h), tolerance) << "seed " << random.seed;
    }
  }
}

TEST(ProjectionJacobian, OnThePlaneAtInfinityIsNotFinite) {
  const Matrix44 j = jacobianAt(Vector3(2, 3, 0), kPinhole);
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) EXPECT_FALSE(std::isfinite(j(r, c))) << r << ", " << c;
    EXPECT_EQ(j(r, 3), 0.0);
    EXPECT_EQ(j(3, r), 0.0);
  }
  EXPECT_EQ(j(3, 3), 1.0);
}

TEST(ProjectionJacobian, ReleasesAllItsDerivatives) {
  const Matrix44 m = kPinhole;
  EXPECT_GT(allocations::expectNoLeakOnAnyFailure([&] {
              Matrix44 j;
              projectionJacobian(Vector3(1, 2, 3), m, j);
            }),
            3u);
}

}  // namespace
