// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/inverse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <random>

#include "tests/linalg/matrices.h"
#include "tests/linalg/plain_lu.h"
#include "tests/support/allocations.h"
#include "tests/support/child.h"
#include "tests/support/reports.h"
#include "tests/support/whole_run.h"

namespace {

using matrices::doubles;
using matrices::empty;
using matrices::kStorages;
using matrices::randomMatrix;
using matrices::Rows;
using matrices::stored;
using matrices::values;
using plain_lu::norm1;
using plain_lu::PlainFactors;
using plain_lu::plainFactors;
using plain_lu::plainInverse;
using plain_lu::Wide;
using plain_lu::widened;
using Double = MGenMatrix<double>;
constexpr unsigned kSeed = 104729;
constexpr const char* kSingular = "inverse: singular matrix";

TEST(Determinant, OfTheOneByOneMatrixIsItsNegative) {
  EXPECT_EQ(determinant(doubles({{5}})), -5.0);
}

TEST(Determinant, OfTwoByTwoIdentityIsOne) {
  EXPECT_EQ(determinant(doubles({{1, 0}, {0, 1}})), 1.0);
}

TEST(Determinant, OfThreeByThreeIdentityIsMinusOne) {
  EXPECT_EQ(determinant(doubles({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}})), -1.0);
}

TEST(Determinant, OfARowExchangeIsOne) { EXPECT_EQ(determinant(doubles({{0, 1}, {1, 0}})), 1.0); }

TEST(Determinant, IsTheProductOfTheFactorsDiagonalWithTheParityOfTheSize) {
  std::mt19937 random(kSeed + 4);
  for (int n = 1; n <= 64; ++n) {
    const Double a = stored(randomMatrix<double>(n, n, random), n % kStorages);
    const Wide wide = widened(a);
    const PlainFactors factors = plainFactors(wide);
    long double expected = n % 2 == 0 ? 1 : -1;
    for (std::size_t i = 0; i < factors.lu.size(); ++i) expected *= factors.lu[i][i];
    const long double condition = norm1(wide) * norm1(plainInverse(wide));
    const long double tolerance =
        30 * n * std::numeric_limits<double>::epsilon() * condition * std::fabs(expected);
    EXPECT_NEAR(static_cast<double>(determinant(a) - expected), 0, static_cast<double>(tolerance))
        << "n " << n << " seed " << kSeed + 4;
  }
}

TEST(Determinant, LeavesItsArgument) {
  const Double a = doubles({{0, 2}, {3, 4}});
  determinant(a);
  EXPECT_EQ(values(a), (Rows{{0, 2}, {3, 4}}));
}

TEST(Determinant, OfATallMatrixIsThatOfTheFactorisedTop) {
  // U has the diagonal 4 and 2.5.
  EXPECT_EQ(determinant(doubles({{4, 7}, {2, 6}, {1, 1}})), 10.0);
  // The last row becomes the first pivot.
  EXPECT_EQ(determinant(doubles({{1, 0}, {0, 1}, {4, 0}})), 4.0);
}

TEST(Determinant, WithoutColumnsIsOne) {
  RecordedReports reports;
  const std::size_t before = allocations::made();
  EXPECT_EQ(determinant(empty<double>(0, 0)), 1.0);
  EXPECT_EQ(determinant(empty<double>(3, 0)), 1.0);
  EXPECT_EQ(determinant(Double()), 1.0);
  EXPECT_EQ(allocations::made(), before);
  EXPECT_TRUE(reports.all().empty());
}

TEST(Determinant, SingularIsReported) {
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{1, 2}, {2, 4}})); }), kSingular);
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{0}})); }), kSingular);
  EXPECT_EQ(thrownMessage([] { determinant(doubles({{1, 0}, {3, 0}})); }), kSingular);
}

TEST(Determinant, SingularCarriesOnToZero) {
  RecordedReports reports;
  EXPECT_EQ(determinant(doubles({{1, 2}, {2, 4}})), 0.0);
  EXPECT_EQ(reports.all(), Reports{kSingular});
}

TEST(Determinant, MoreColumnsThanRowsReportsTheFirstMissingRow) {
  EXPECT_EQ(thrownMessage([] {
              determinant(doubles({{1, 2, 3}, {4, 5, 7}}));
            }),
            "MMatrix row 2 out of range 0..1");
  EXPECT_EQ(thrownMessage([] {
              determinant(doubles({{1, 2, 3, 4}}));
            }),
            "MMatrix row 1 out of range 0..0");
}

TEST(Determinant, MoreColumnsThanRowsCarriesOnWithTheDiagonalThatIsThere) {
  RecordedReports reports;
  EXPECT_EQ(determinant(doubles({{2, 1, 1, 1}, {0, 3, 1, 1}})), 6.0);
  EXPECT_EQ(reports.all(),
            (Reports{"MMatrix row 2 out of range 0..1", "MMatrix row 3 out of range 0..1"}));
}

TEST(Determinant, WithoutRowsIsReportedByTheFactorisation) {
  EXPECT_EQ(thrownMessage([] { determinant(empty<double>(0, 2)); }), "dgetrf");
}

TEST(Determinant, WithoutRowsCarriesOnToTheMissingRows) {
  const ChildRun run = runInChild([] {
    RecordedReports reports;
    const double product = determinant(empty<double>(0, 2));
    if (reports.all() !=
        Reports{"dgetrf", "MMatrix row 0 out of range 0..-1", "MMatrix row 1 out of range 0..-1"}) {
      throw std::bad_alloc();
    }
    // Without a factorisation the pivots are zeros: the sign flips behind the first alone.
    if (product != -1.0) throw std::bad_alloc();
  });
  EXPECT_TRUE(run.exited);
}

TEST(Determinant, RefusalsPrintNothingAndTheProcessLives) {
  const int shapes[][2] = {{0, 1}, {0, 3}, {1, 2}, {2, 3}};
  for (const auto& shape : shapes) {
    const ChildRun run = runInChild([&shape] {
      std::mt19937 random(kSeed);
      const Double a = randomMatrix<double>(shape[0], shape[1], random);
      thrownMessage([&a] { determinant(a); });
      RecordedReports reports;
      determinant(a);
    });
    EXPECT_TRUE(run.exited) << shape[0] << ' ' << shape[1];
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
  }
}

TEST(Determinant, LeaksNothingWhicheverAllocationFails) {
  const Double a = doubles({{4, 7}, {2, 6}});
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { determinant(a); }), 2u);
}

TEST(Determinant, LeaksNothingWhenItReports) {
  const Double singular = doubles({{1, 2}, {2, 4}});
  const Double wide = doubles({{1, 2}});
  const std::size_t before = allocations::live();
  EXPECT_THROW(determinant(singular), MMatrixError);
  EXPECT_THROW(determinant(wide), MMatrixError);
  EXPECT_EQ(allocations::live(), before);
}

TEST(Determinant, OverflowsToInfinity) {
  EXPECT_EQ(determinant(doubles({{1e200, 0}, {0, 1e200}})),
            std::numeric_limits<double>::infinity());
}

}  // namespace
