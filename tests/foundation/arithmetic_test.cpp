// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

using Vector = MGenVector<float>;
using Floats = std::vector<float>;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Vector vectorOf(const Floats& elements) {
  Vector v(static_cast<int>(elements.size()));
  for (int i = 0; i < v.length; ++i) v[i] = elements[static_cast<std::size_t>(i)];
  return v;
}

// The same elements, `stride` apart in a larger buffer; a negative stride counts from its end.
Vector spread(const Floats& elements, int stride) {
  const int n = static_cast<int>(elements.size());
  const int room = n * std::abs(stride);
  Vector v = Vector(room).view(stride < 0 ? room - 1 : 0, n, stride);
  v.set(vectorOf(elements));
  return v;
}

Floats values(const Vector& v) {
  Floats result;
  for (int i = 0; i < v.length; ++i) result.push_back(v[i]);
  return result;
}

constexpr int kStrides[] = {1, 2, 3, -1, -2};

TEST(VectorSum, AddsElementByElement) {
  EXPECT_EQ(values(vectorOf({1, 2, 3}) + vectorOf({10, 20, 30})), (Floats{11, 22, 33}));
}

TEST(VectorDifference, SubtractsTheRightFromTheLeft) {
  EXPECT_EQ(values(vectorOf({1, 2, 3}) - vectorOf({10, 20, 40})), (Floats{-9, -18, -37}));
}

TEST(VectorQuotient, DividesEveryElement) {
  EXPECT_EQ(values(vectorOf({1, 2, 3}) / 2.0f), (Floats{0.5f, 1, 1.5f}));
}

TEST(VectorProduct, MultipliesInPlaceForEveryHolder) {
  Vector v = vectorOf({1, 2, 3});
  const Vector holder(v);
  EXPECT_EQ(&(v *= vectorOf({4, 5, 6})), &v);
  EXPECT_EQ(values(holder), (Floats{4, 10, 18}));
}

TEST(VectorQuotientInPlace, DividesForEveryHolder) {
  Vector v = vectorOf({1, 2, 3});
  const Vector holder(v);
  EXPECT_EQ(&(v /= 2.0f), &v);
  EXPECT_EQ(values(holder), (Floats{0.5f, 1, 1.5f}));
}

TEST(VectorArithmetic, HonoursEveryPairOfStrides) {
  for (const int left : kStrides) {
    for (const int right : kStrides) {
      const Vector a = spread({1, 2, 3, 4}, left);
      const Vector b = spread({8, 7, 6, 5}, right);
      EXPECT_EQ(values(a + b), (Floats{9, 9, 9, 9})) << left << ' ' << right;
      EXPECT_EQ(values(a - b), (Floats{-7, -5, -3, -1})) << left << ' ' << right;
      Vector product = spread({1, 2, 3, 4}, left);
      product *= b;
      EXPECT_EQ(values(product), (Floats{8, 14, 18, 20})) << left << ' ' << right;
    }
  }
}

TEST(VectorArithmetic, DividesWithEveryStride) {
  for (const int stride : kStrides) {
    Vector v = spread({1, 2, 3}, stride);
    EXPECT_EQ(values(v / 4.0f), (Floats{0.25f, 0.5f, 0.75f})) << stride;
    v /= 4.0f;
    EXPECT_EQ(values(v), (Floats{0.25f, 0.5f, 0.75f})) << stride;
    EXPECT_EQ(v.stride, stride);
  }
}

TEST(VectorArithmetic, InPlaceLeavesTheCellsBetweenAlone) {
  const Vector all = vectorOf({1, 2, 3, 4});
  Vector v = all.view(0, 2, 2);
  v *= vectorOf({10, 10});
  v /= 5.0f;
  EXPECT_EQ(values(all), (Floats{2, 2, 6, 4}));
}

TEST(VectorArithmetic, ResultsAreFreshAndContiguous) {
  const Vector a = spread({1, 2}, 2);
  const Vector b = spread({3, 4}, -1);
  for (const Vector& result : {a + b, a - b, a / 2.0f}) {
    EXPECT_EQ(result.stride, 1);
    EXPECT_EQ(result.data, result.buffer);
    EXPECT_NE(result.buffer, a.buffer);
    EXPECT_EQ(bufferWords(result.buffer).bytes, 2 * sizeof(float));
  }
  EXPECT_EQ(values(a), (Floats{1, 2}));
  EXPECT_EQ(values(b), (Floats{3, 4}));
}

TEST(VectorArithmetic, AllocatesOneBufferPerResult) {
  const Vector a = vectorOf({1, 2});
  const std::vector<std::function<void()>> operations = {[&a] { a + a; }, [&a] { a - a; },
                                                         [&a] { a / 2.0f; }};
  for (const auto& operation : operations) {
    const std::size_t before = allocations::made();
    operation();
    EXPECT_EQ(allocations::made(), before + 1);
  }
}

TEST(VectorArithmetic, InPlaceAllocatesNothing) {
  Vector a = vectorOf({1, 2});
  const Vector b = vectorOf({1, 2});
  const std::size_t before = allocations::made();
  a *= b;
  a /= 2.0f;
  EXPECT_EQ(allocations::made(), before);
}

TEST(VectorArithmetic, TakesTheLengthOfTheLeftOperand) {
  RecordedReports reports;
  const Vector a = vectorOf({1, 2});
  const Vector longer = vectorOf({10, 20, 30});
  EXPECT_EQ(values(a + longer), (Floats{11, 22}));
  EXPECT_EQ(values(a - longer), (Floats{-9, -18}));
  Vector product = vectorOf({1, 2});
  product *= longer;
  EXPECT_EQ(values(product), (Floats{10, 40}));
  EXPECT_TRUE(reports.all().empty()) << "lengths are not compared";
}

TEST(VectorArithmetic, OfNoElementsHasNoBuffer) {
  const Vector empty;
  const Vector b = vectorOf({1, 2});
  EXPECT_EQ((empty + b).buffer, nullptr);
  EXPECT_EQ((empty - empty).buffer, nullptr);
  EXPECT_EQ((empty / 2.0f).buffer, nullptr);
  Vector product;
  product *= b;
  product /= 0.0f;
  EXPECT_EQ(product.buffer, nullptr);
}

TEST(VectorArithmetic, WorksOnOneVectorAsBothOperands) {
  Vector v = vectorOf({1, 2, 3});
  EXPECT_EQ(values(v + v), (Floats{2, 4, 6}));
  EXPECT_EQ(values(v - v), (Floats{0, 0, 0}));
  v *= v;
  EXPECT_EQ(values(v), (Floats{1, 4, 9}));
}

TEST(VectorProduct, WithAnOverlappingViewRunsFromFrontToBack) {
  const Vector all = vectorOf({2, 1, 1, 1});
  Vector v = all.view(1, 3);
  v *= all.view(0, 3);
  EXPECT_EQ(values(all), (Floats{2, 2, 2, 2}));
}

// 1 / s is rounded once more than the division, which shows in many of these quotients.
TEST(VectorArithmetic, DividesTruly) {
  int shows = 0;
  for (int divisor = 1; divisor <= 50; ++divisor) {
    Floats elements;
    for (int i = 1; i <= 100; ++i) elements.push_back(static_cast<float>(i));
    const float s = static_cast<float>(divisor);
    Vector inPlace = vectorOf(elements);
    const Vector quotient = inPlace / s;
    inPlace /= s;
    for (int i = 0; i < 100; ++i) {
      const float x = elements[static_cast<std::size_t>(i)];
      // Through double the correctly rounded quotient of two floats is found.
      const float expected = static_cast<float>(static_cast<double>(x) / static_cast<double>(s));
      EXPECT_EQ(quotient[i], expected);
      EXPECT_EQ(inPlace[i], expected);
      if (x * (1.0f / s) != expected) ++shows;
    }
  }
  EXPECT_GT(shows, 100);
}

TEST(VectorArithmetic, CarriesInfinitiesNansAndSignsOfZero) {
  const Vector v = vectorOf({kInfinity, std::nanf(""), -0.0f, 1.0f});
  const Vector difference = v - v;
  EXPECT_TRUE(std::isnan(difference[0]));
  EXPECT_TRUE(std::isnan(difference[1]));
  EXPECT_FALSE(std::signbit(difference[2]));
  EXPECT_TRUE(std::signbit((v + v)[2]));
  EXPECT_TRUE(std::isnan((v / 0.0f)[2]));
  EXPECT_EQ((v / -0.0f)[3], -kInfinity);
}

TEST(VectorArithmetic, RoundsInSinglePrecision) {
  EXPECT_EQ(values(vectorOf({16777216.0f}) + vectorOf({1.0f})), Floats{16777216.0f});
  EXPECT_EQ(values(vectorOf({1e-45f}) / 2.0f), Floats{0.0f});
}

TEST(VectorArithmetic, LeaksNothingWhenMemoryRunsOut) {
  const Vector a = vectorOf({1, 2});
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { (a + a) - (a / 2.0f); }), 3u);
  EXPECT_EQ(values(a), (Floats{1, 2}));
}

}  // namespace
