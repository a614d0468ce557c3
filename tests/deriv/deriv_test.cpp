// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/deriv.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>
#include <utility>

#include "tests/support/deriv_numbers.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

// ---- construction and access

TEST(MDeriv, DefaultIsTheConstantZero) { EXPECT_TRUE(same(Number(), 0.0, {})); }

TEST(MDeriv, PlainValueIsAConstant) {
  const Number a = 2.5;
  EXPECT_TRUE(same(a, 2.5, {}));
}

TEST(MDeriv, CopiesTheDerivativesItIsGiven) {
  double d[] = {1, 2};
  const Number a(3, d, 2, true);
  d[0] = 9;
  EXPECT_TRUE(same(a, 3, {1, 2}));
}

TEST(MDeriv, TakesOverAnArrayThatItNeedNotCopy) {
  const std::size_t live = allocations::live();
  {
    double* d = new double[2]{1, 2};
    Number a(3, d, 2, false);
    EXPECT_EQ(&a.d(0), d);
    EXPECT_TRUE(same(a, 3, {1, 2}));
  }
  EXPECT_EQ(allocations::live(), live);
}

TEST(MDeriv, TakesOverAnArrayOfNoneEvenWhenAskedToCopy) {
  const std::size_t live = allocations::live();
  { const Number a(3, new double[0], 0, true); }
  EXPECT_EQ(allocations::live(), live);
}

TEST(MDeriv, CopiesAreDeep) {
  Number a = number(3, {1, 2});
  const Number b = a;
  a.d(0) = 7;
  EXPECT_TRUE(same(b, 3, {1, 2}));
}

TEST(MDeriv, MovingLeavesAConstant) {
  Number a = number(3, {1, 2});
  const double* array = &a.d(0);
  const Number b = std::move(a);
  EXPECT_EQ(&b.d(0), array);
  EXPECT_EQ(a.nd(), 0);
}

TEST(MDeriv, AssignmentReusesTheArrayOfEqualCounts) {
  Number a = number(3, {1, 2});
  const Number b = number(4, {5, 6});
  const double* array = &a.d(0);
  EXPECT_EQ(allocationsOf([&] { a = b; }), 0u);
  EXPECT_EQ(&a.d(0), array);
  EXPECT_TRUE(same(a, 4, {5, 6}));
}

TEST(MDeriv, AssignmentOfATemporaryReusesTheArrayOfEqualCounts) {
  Number a = number(3, {1, 2});
  const Number b = number(4, {5, 6});
  const double* array = &a.d(0);
  EXPECT_EQ(allocationsOf([&] { a = b + b; }), 1u);
  EXPECT_EQ(&a.d(0), array);
}

TEST(MDeriv, AssignmentOfAnotherCountAllocatesOnce) {
  Number a = number(3, {1, 2});
  const Number b = number(4, {5, 6, 7});
  const std::size_t live = allocations::live();
  EXPECT_EQ(allocationsOf([&] { a = b; }), 1u);
  EXPECT_EQ(allocations::live(), live);
  EXPECT_TRUE(same(a, 4, {5, 6, 7}));
}

TEST(MDeriv, AssignmentOfAConstantReleasesTheArray) {
  Number a = number(3, {1, 2});
  const std::size_t live = allocations::live();
  EXPECT_EQ(allocationsOf([&] { a = Number(4); }), 0u);
  EXPECT_EQ(allocations::live(), live - 1);
  EXPECT_TRUE(same(a, 4, {}));
}

TEST(MDeriv, AssignmentToItselfChangesNothing) {
  Number a = number(3, {1, 2});
  const Number& itself = a;
  EXPECT_EQ(&(a = itself), &a);
  EXPECT_TRUE(same(a, 3, {1, 2}));
}

TEST(MDeriv, StaysAsItWasWhenAnAssignmentRunsOutOfMemory) {
  Number a = number(3, {1, 2});
  const Number b = number(4, {5, 6, 7});
  {
    allocations::FailAt first(1);
    EXPECT_THROW(a = b, std::bad_alloc);
  }
  EXPECT_TRUE(same(a, 3, {1, 2}));
}

TEST(MDeriv, LeaksNothingWhenAnyAllocationFails) {
  EXPECT_GT(allocations::expectNoLeakOnAnyFailure([] {
              double d[] = {1, 2};
              Number a(3, d, 2, true);
              const Number b(4, d, 1, true);
              a = sqrt(a * b) / (b + 2);
              a -= b;
              Number c = b;
              c /= a;
            }),
            5u);
}

TEST(MDerivAccess, BeyondTheStoredDerivativesIsZero) {
  const Number a = number(3, {1, 2});
  EXPECT_EQ(a.d(2), 0.0);
  EXPECT_EQ(a.d(5), 0.0);
  EXPECT_EQ(a.d(std::numeric_limits<int>::max()), 0.0);
}

TEST(MDerivAccess, BeyondTheStoredDerivativesIsOneZeroForAllNumbers) {
  Number a = number(3, {1, 2});
  const Number b = 5;
  EXPECT_EQ(&a.d(2), &a.d(17));
  EXPECT_EQ(&std::as_const(a).d(2), &b.d(0));
}

TEST(MDerivAccess, OfANegativeVariableThrowsWithoutAMessage) {
  Number a = number(3, {1, 2});
  try {
    a.d(-1);
    FAIL() << "nothing thrown";
  } catch (const LvBadIndexException& e) {
    EXPECT_EQ(e.message, LvString());
  }
  EXPECT_THROW(std::as_const(a).d(std::numeric_limits<int>::min()), LvBadIndexException);
}

TEST(MDerivAccess, WritesToTheStoredDerivative) {
  Number a = number(3, {1, 2});
  a.d(1) = 4;
  EXPECT_TRUE(same(a, 3, {1, 4}));
}

// ---- text

TEST(MDerivPrint, WritesAConstantAsItsValue) { EXPECT_EQ(printed(2), "2"); }

TEST(MDerivPrint, WritesDerivativesInBraces) {
  EXPECT_EQ(printed(number(2, {0.5, 1})), "2{0.5,1}");
  EXPECT_EQ(printed(number(3, {1, 0})), "3{1,0}");
  EXPECT_EQ(printed(number(-1, {-2})), "-1{-2}");
}

TEST(MDerivPrint, KeepsTheFormattingOfTheStream) {
  std::ostringstream os;
  os << std::fixed << std::setprecision(2) << std::setw(6);
  std::ostream& returned = number(2, {0.125}).print(os);
  EXPECT_EQ(os.str(), "  2.00{0.12}");
  EXPECT_EQ(&returned, &os);
}

TEST(MDerivPrint, WritesNumbersThatAreNotFinite) {
  EXPECT_EQ(printed(number(kInf, {-kInf, kNan})), "inf{-inf,nan}");
}

// ---- worked numbers

const Number three = number(3, {1});
const Number five = number(5, {0, 1});

TEST(MDerivArithmetic, MultipliesSeededNumbers) { EXPECT_TRUE(same(three * five, 15, {5, 3})); }

TEST(MDerivArithmetic, DividesSeededNumbers) {
  const Number q = three / five;
  EXPECT_EQ(q.x(), 0.6);
  EXPECT_EQ(q.nd(), 2);
  EXPECT_NEAR(q.d(0), 0.2, 0.2 * kEps);
  EXPECT_NEAR(q.d(1), -0.12, 0.12 * kEps);
}

TEST(MDerivArithmetic, SubtractsSeededNumbers) { EXPECT_TRUE(same(three - five, -2, {1, -1})); }

TEST(MDerivArithmetic, AddingAConstantKeepsTheDerivatives) {
  EXPECT_TRUE(same(five + 2, 7, {0, 1}));
  EXPECT_TRUE(same(2 + five, 7, {0, 1}));
}

TEST(MDerivArithmetic, TakesPlainNumbersOnEitherSide) {
  EXPECT_TRUE(same(three - 1.0, 2, {1}));
  EXPECT_TRUE(same(1.0 - three, -2, {-1}));
  EXPECT_TRUE(same(2.0 * three, 6, {2}));
  EXPECT_TRUE(same(three * 2.0, 6, {2}));
  EXPECT_TRUE(same(three / 2.0, 1.5, {0.5}));
  EXPECT_TRUE(same(3.0 / number(2, {1}), 1.5, {-0.75}));
  Number a = three;
  a += 1;
  a *= 2.0;
  a -= 2;
  a /= 4;
  EXPECT_TRUE(same(a, 1.5, {0.5}));
}

TEST(MDerivArithmetic, NegatesValueAndDerivatives) {
  EXPECT_TRUE(same(-number(2, {0, -1}), -2, {-0.0, 1}));
}

TEST(MDerivArithmetic, DividingByZeroIsNotReported) {
  const Number q = number(1, {1}) / number(0, {1});
  EXPECT_EQ(q.x(), kInf);
  EXPECT_EQ(q.d(0), -kInf);
}

TEST(MDerivFunctions, RootOfFourIsTwo) { EXPECT_TRUE(same(sqrt(number(4, {1})), 2, {0.25})); }

TEST(MDerivFunctions, RootOfZeroHasInfiniteDerivatives) {
  EXPECT_TRUE(same(sqrt(number(0, {1, -1, 0})), 0, {kInf, -kInf, kNan}));
}

TEST(MDerivFunctions, OutsideTheirDomainsGiveNans) {
  EXPECT_TRUE(same(sqrt(number(-1, {1})), kNan, {kNan}));
  EXPECT_TRUE(same(log(number(-1, {1})), kNan, {-1}));
  EXPECT_TRUE(same(log(number(0, {1})), -kInf, {kInf}));
  EXPECT_TRUE(same(asin(number(2, {1})), kNan, {kNan}));
  EXPECT_TRUE(same(acos(number(2, {1})), kNan, {kNan}));
  EXPECT_TRUE(same(asin(number(1, {1})), std::asin(1.0), {kInf}));
  EXPECT_TRUE(same(acos(number(1, {1})), 0, {-kInf}));
}

TEST(MDerivFunctions, PowerZeroOfZeroHasNoDerivative) {
  EXPECT_TRUE(same(pow(number(0, {1}), 0), 1, {kNan}));
}

// ---- operands that are the result

TEST(MDerivCompound, ReturnsTheNumberItself) {
  Number a = number(3, {1, 2});
  EXPECT_EQ(&(a += five), &a);
  EXPECT_EQ(&(a -= five), &a);
  EXPECT_EQ(&(a *= five), &a);
  EXPECT_EQ(&(a /= five), &a);
}

TEST(MDerivCompound, TakesTheNumberItselfAsOperand) {
  const Number a = number(3, {1, 0.1});
  Number b = a;
  EXPECT_TRUE(same(b += b, a + a));
  b = a;
  EXPECT_TRUE(same(b -= b, a - a));
  b = a;
  EXPECT_TRUE(same(b *= b, a * a));
  b = a;
  EXPECT_TRUE(same(b /= b, a / a));
}

// ---- allocations

TEST(MDerivAllocations, ConstantsAllocateNothing) {
  EXPECT_EQ(allocationsOf([] {
              Number a = 3;
              Number b(5);
              Number c = (a + b) * (a - b) / -b;
              c += a;
              c -= b;
              c *= a;
              c /= b;
              a = c;
            }),
            0u);
}

TEST(MDerivAllocations, EveryOperationMakesOneArray) {
  const Number a = number(3, {1});
  const Number b = number(5, {0, 1});
  EXPECT_EQ(allocationsOf([&] { const Number c = a + b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = a - b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = a * b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = a / b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = -a; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = 2.0 * a; }), 1u);
  EXPECT_EQ(allocationsOf([&] { const Number c = a; }), 1u);
}

TEST(MDerivAllocations, DividingInPlaceAllocatesNothing) {
  Number a = number(3, {1, 2});
  const double* array = &a.d(0);
  const Number shorter = number(5, {1});
  const Number equal = number(5, {0, 1});
  EXPECT_EQ(allocationsOf([&] {
              a /= 2.0;
              a /= shorter;
              a /= equal;
            }),
            0u);
  EXPECT_EQ(&a.d(0), array);
}

TEST(MDerivAllocations, DividingByMoreDerivativesMakesOneArray) {
  Number a = number(3, {1});
  const Number b = number(5, {0, 1});
  const std::size_t live = allocations::live();
  EXPECT_EQ(allocationsOf([&] { a /= b; }), 1u);
  EXPECT_EQ(allocations::live(), live);
}

TEST(MDerivAllocations, OtherCompoundsAllocateTheirResult) {
  Number a = number(3, {1, 2});
  const Number b = number(5, {0, 1});
  EXPECT_EQ(allocationsOf([&] { a += b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { a -= b; }), 1u);
  EXPECT_EQ(allocationsOf([&] { a *= b; }), 1u);
}

}  // namespace
