// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/vector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <vector>

#include "tests/foundation/containers.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

using Vector = MGenVector<float>;
using Floats = std::vector<float>;
using allocations::made;
using containers::counting;
using containers::values;

TEST(VectorCopy, IsDeep) {
  Vector a = counting<float>(3);
  Vector b = a.copy();
  b[0] = 9;
  EXPECT_EQ(a[0], 1);
  EXPECT_NE(b.buffer, a.buffer);
}

TEST(VectorCopy, IsContiguousWhateverTheStride) {
  const Vector a = counting<float>(7);
  for (const int step : {-3, -1, 0, 1, 2, 3}) {
    const Vector view = a.view(step < 0 ? 6 : 0, 3, step);
    const Vector copy = view.copy();
    EXPECT_EQ(copy.stride, 1);
    EXPECT_EQ(copy.data, copy.buffer);
    EXPECT_EQ(bufferWords(copy.buffer).bytes, 3 * sizeof(float));
    EXPECT_EQ(values(copy), values(view)) << "step " << step;
  }
}

TEST(VectorCopy, OfAnEmptyVectorHasNoBuffer) {
  EXPECT_EQ(Vector().copy().buffer, nullptr);
  EXPECT_EQ(counting<float>(3).view(0, 0).copy().buffer, nullptr);
}

TEST(VectorCopy, KeepsEveryBit) {
  Vector a(4);
  a[0] = -0.0f;
  a[1] = std::numeric_limits<float>::denorm_min();
  a[2] = -std::numeric_limits<float>::infinity();
  a[3] = std::numeric_limits<float>::quiet_NaN();
  const Vector b = a.copy();
  EXPECT_TRUE(std::signbit(b[0]));
  EXPECT_EQ(b[1], a[1]);
  EXPECT_EQ(b[2], a[2]);
  EXPECT_TRUE(std::isnan(b[3]));
}

TEST(VectorCopy, LeavesTheSourceWhenMemoryRunsOut) {
  const Vector a = counting<float>(3);
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([&a] { a.copy(); }), 1u);
  EXPECT_EQ(values(a), (Floats{1, 2, 3}));
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

TEST(VectorSet, CopiesInPlaceForEveryHolder) {
  Vector a(3);
  const Vector holder(a);
  float* const buffer = a.buffer;
  Vector& result = a.set(counting<float>(3));
  EXPECT_EQ(&result, &a);
  EXPECT_EQ(a.buffer, buffer);
  EXPECT_EQ(values(holder), (Floats{1, 2, 3}));
}

TEST(VectorSet, AllocatesNothingBetweenTwoBuffers) {
  Vector a(3);
  const Vector b(3);
  const std::size_t before = made();
  a.set(b);
  EXPECT_EQ(made(), before);
}

TEST(VectorSet, HonoursBothStrides) {
  Vector a(6);
  a.view(5, 3, -2).set(counting<float>(6).view(0, 3, 2));
  EXPECT_EQ(values(a), (Floats{0, 5, 0, 3, 0, 1}));
}

TEST(VectorSet, FromItselfReturnsAtOnce) {
  Vector a = counting<float>(3);
  const std::size_t before = made();
  EXPECT_EQ(&a.set(a), &a);
  EXPECT_EQ(made(), before);
  EXPECT_EQ(values(a), (Floats{1, 2, 3}));
}

TEST(VectorSet, BetweenOverlappingViewsTakesASnapshot) {
  const Vector a = counting<float>(5);
  a.view(1, 4).set(a.view(0, 4));
  EXPECT_EQ(values(a), (Floats{1, 1, 2, 3, 4}));
  const Vector b = counting<float>(5);
  b.view(0, 4).set(b.view(1, 4));
  EXPECT_EQ(values(b), (Floats{2, 3, 4, 5, 5}));
}

TEST(VectorSet, ReversesItselfThroughAView) {
  Vector a = counting<float>(5);
  a.set(a.view(4, 5, -1));
  EXPECT_EQ(values(a), (Floats{5, 4, 3, 2, 1}));
}

TEST(VectorSet, OnOneBufferMakesOneTemporaryAndReleasesIt) {
  Vector a = counting<float>(5);
  const Vector view = a.view(4, 5, -1);
  const std::size_t madeBefore = made();
  const std::size_t liveBefore = allocations::live();
  a.set(view);
  EXPECT_EQ(made(), madeBefore + 1);
  EXPECT_EQ(allocations::live(), liveBefore);
}

TEST(VectorSet, LeavesTheElementsWhenTheTemporaryRunsOutOfMemory) {
  Vector a = counting<float>(3);
  const Vector view = a.view(2, 3, -1);
  allocations::FailAt fail(1);
  EXPECT_THROW(a.set(view), std::bad_alloc);
  EXPECT_EQ(values(a), (Floats{1, 2, 3}));
}

TEST(VectorSet, OfNothingFromNothing) {
  Vector a;
  EXPECT_NO_THROW(a.set(Vector(0)));
  EXPECT_EQ(a.buffer, nullptr);
}

TEST(VectorSet, DifferentLengthIsReportedOwnLengthFirst) {
  Vector a = counting<float>(3);
  EXPECT_EQ(thrownMessage([&a] { a.set(Vector(5)); }), "MVector length mismatch 3 != 5");
  EXPECT_EQ(thrownMessage([&a] { a.set(MGenVector<int>(2)); }), "MVector length mismatch 3 != 2");
  EXPECT_EQ(values(a), (Floats{1, 2, 3}));
}

TEST(VectorSet, CarriesOnWithTheCommonElements) {
  RecordedReports reports;
  Vector longer = counting<float>(4);
  Vector shorter(2);
  shorter.set(longer);
  EXPECT_EQ(values(shorter), (Floats{1, 2}));
  Vector zeros(2);
  longer.set(zeros);
  EXPECT_EQ(values(longer), (Floats{0, 0, 3, 4}));
  EXPECT_EQ(reports.all(),
            (Reports{"MVector length mismatch 2 != 4", "MVector length mismatch 4 != 2"}));
}

TEST(VectorSet, RoundsDoubleToFloat) {
  MGenVector<double> source(3);
  source[0] = 0.1;
  source[1] = 1e-46;
  source[2] = std::numeric_limits<double>::infinity();
  Vector a(3);
  a.set(source);
  EXPECT_EQ(values(a), (Floats{0.1f, 0.0f, std::numeric_limits<float>::infinity()}));
}

TEST(VectorSet, CutsFractionsTowardsZeroForInt) {
  MGenVector<double> source(4);
  source[0] = 2.9;
  source[1] = -2.9;
  source[2] = -0.5;
  source[3] = 2147483647.0;
  MGenVector<int> a(4);
  a.set(source);
  EXPECT_EQ(values(a), (std::vector<int>{2, -2, 0, 2147483647}));
}

TEST(VectorSet, RoundsIntToFloat) {
  MGenVector<int> source(2);
  source[0] = 16777217;
  source[1] = -7;
  Vector a(2);
  a.set(source);
  EXPECT_EQ(values(a), (Floats{16777216.0f, -7.0f}));
}

TEST(VectorSet, WidensFloatAndIntToDouble) {
  MGenVector<double> a(2);
  a.set(counting<float>(2));
  EXPECT_EQ(values(a), (std::vector<double>{1, 2}));
  a.set(counting<int>(2));
  EXPECT_EQ(values(a), (std::vector<double>{1, 2}));
}

}  // namespace
