// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/vector.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>
#include <vector>

#include "tests/foundation/containers.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"

namespace {

using Vector = MGenVector<float>;
using Floats = std::vector<float>;
using allocations::made;
using containers::counting;
using containers::values;

template <class T>
class EveryVector : public testing::Test {};
TYPED_TEST_SUITE(EveryVector, ElementTypes, ElementTypeName);

TYPED_TEST(EveryVector, IsEmptyByDefault) {
  const MGenVector<TypeParam> v;
  EXPECT_EQ(v.buffer, nullptr);
  EXPECT_EQ(v.data, nullptr);
  EXPECT_EQ(v.length, 0);
  EXPECT_EQ(v.stride, 1);
}

TYPED_TEST(EveryVector, FieldsAreBufferLengthStrideData) {
  using V = MGenVector<TypeParam>;
  static_assert(std::is_standard_layout_v<V>);
  EXPECT_EQ(offsetof(V, buffer), 0u);
  EXPECT_EQ(offsetof(V, length), sizeof(void*));
  EXPECT_EQ(offsetof(V, stride), sizeof(void*) + 4);
  EXPECT_EQ(offsetof(V, data), sizeof(void*) + 8);
  EXPECT_EQ(sizeof(V), 2 * sizeof(void*) + 8);
}

TYPED_TEST(EveryVector, IsMadeOfZeros) {
  const MGenVector<TypeParam> v(1000);
  EXPECT_EQ(v.length, 1000);
  EXPECT_EQ(v.stride, 1);
  EXPECT_EQ(v.data, v.buffer);
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(v[i], TypeParam{});
}

TYPED_TEST(EveryVector, HeaderHoldsBytesThenReferences) {
  const MGenVector<TypeParam> v(7);
  EXPECT_EQ(bufferWords(v.buffer).bytes, 7 * sizeof(TypeParam));
  EXPECT_EQ(bufferWords(v.buffer).references, 1u);
  const MGenVector<TypeParam> second(v);
  EXPECT_EQ(bufferWords(v.buffer).references, 2u);
}

TYPED_TEST(EveryVector, OfLengthZeroHasNoBuffer) {
  const std::size_t before = made();
  const MGenVector<TypeParam> v(0);
  EXPECT_EQ(v.buffer, nullptr);
  EXPECT_EQ(v.data, nullptr);
  EXPECT_EQ(v.length, 0);
  EXPECT_EQ(made(), before);
}

TYPED_TEST(EveryVector, TakesOneAllocation) {
  const std::size_t before = made();
  const MGenVector<TypeParam> v(100);
  EXPECT_EQ(made(), before + 1);
}

TYPED_TEST(EveryVector, CopiesAndSetsFromItsOwnType) {
  MGenVector<TypeParam> v(3);
  const MGenVector<TypeParam> copy = v.copy();
  EXPECT_NE(copy.buffer, v.buffer);
  v.set(copy);
  v.resize(4);
  EXPECT_EQ(v.length, 4);
}

TYPED_TEST(EveryVector, RefusesTheFirstLengthThatTheHeaderCannotHold) {
  const std::int64_t elements = (std::int64_t{1} << 32) / static_cast<int>(sizeof(TypeParam));
  const int n = static_cast<int>(elements);
  const std::size_t before = made();
  EXPECT_THROW(MGenVector<TypeParam>{n}, std::bad_alloc);
  EXPECT_THROW(MGenVector<TypeParam>{std::numeric_limits<int>::max()}, std::bad_alloc);
  // The exception object itself does not come from operator new.
  EXPECT_EQ(made(), before);
  allocations::FailAt fail(1);
  EXPECT_THROW(MGenVector<TypeParam>{n}, std::bad_alloc);
  EXPECT_FALSE(fail.failed());
  EXPECT_THROW(MGenVector<TypeParam>{n - 1}, std::bad_alloc);
  EXPECT_TRUE(fail.failed()) << "the largest length is attempted";
}

TEST(Vector, NegativeLengthIsReported) {
  EXPECT_EQ(thrownMessage([] { Vector v(-3); }), "MVector length -3 must be nonnegative");
  EXPECT_EQ(thrownMessage([] { Vector v(std::numeric_limits<int>::min()); }),
            "MVector length -2147483648 must be nonnegative");
}

TEST(Vector, NegativeLengthAllocatesNothing) {
  MMatrixError::setErrorHandler([](const char*) {});
  const std::size_t before = made();
  const Vector v(-1);
  EXPECT_EQ(made(), before);
  MMatrixError::setErrorHandler(nullptr);
}

TEST(Vector, NegativeLengthCarriesOnEmpty) {
  RecordedReports reports;
  const Vector v(-3);
  EXPECT_EQ(reports.all(), Reports{"MVector length -3 must be nonnegative"});
  EXPECT_EQ(v.buffer, nullptr);
  EXPECT_EQ(v.length, 0);
  EXPECT_EQ(v.stride, 1);
}

TEST(VectorCopyConstruction, SharesEverything) {
  const Vector a = counting<float>(4).view(1, 2, 2);
  const Vector b(a);
  EXPECT_EQ(b.buffer, a.buffer);
  EXPECT_EQ(b.length, 2);
  EXPECT_EQ(b.stride, 2);
  EXPECT_EQ(b.data, a.data);
}

TEST(VectorCopyConstruction, WritesAreSeenByBoth) {
  Vector a(3);
  Vector b(a);
  b[1] = 5;
  EXPECT_EQ(a[1], 5);
  a[2] = 6;
  EXPECT_EQ(b[2], 6);
}

TEST(VectorCopyConstruction, AllocatesNothing) {
  const Vector a(3);
  const std::size_t before = made();
  const Vector b(a);
  EXPECT_EQ(made(), before);
}

TEST(VectorCopyConstruction, OfAnEmptyVectorIsEmpty) {
  const Vector a;
  const Vector b(a);
  EXPECT_EQ(b.buffer, nullptr);
}

TEST(VectorAssignment, SharesEverythingAndCountsTheReferences) {
  Vector a = counting<float>(4);
  Vector b(2);
  b = a;
  EXPECT_EQ(b.buffer, a.buffer);
  EXPECT_EQ(b.length, 4);
  EXPECT_EQ(bufferWords(a.buffer).references, 2u);
}

TEST(VectorAssignment, ReleasesTheOldBuffer) {
  const std::size_t before = allocations::live();
  Vector b(2);
  Vector shared(b);
  b = Vector();
  EXPECT_EQ(bufferWords(shared.buffer).references, 1u);
  shared = Vector();
  EXPECT_EQ(allocations::live(), before);
  EXPECT_EQ(shared.buffer, nullptr);
}

TEST(VectorAssignment, ToItselfIsSafe) {
  Vector a = counting<float>(3);
  const Vector& alias = a;
  a = alias;
  EXPECT_EQ(values(a), (Floats{1, 2, 3}));
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

TEST(VectorAssignment, OfAViewOfItselfIsSafe) {
  Vector a = counting<float>(5);
  a = a.view(1, 2, 2);
  EXPECT_EQ(values(a), (Floats{2, 4}));
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

TEST(VectorLifetime, ABufferLivesAsLongAsAView) {
  Vector view;
  {
    const Vector a = counting<float>(5);
    view = a.view(3, 2);
  }
  EXPECT_EQ(values(view), (Floats{4, 5}));
}

TEST(VectorLifetime, TheLastHolderFreesTheBuffer) {
  const std::size_t before = allocations::live();
  {
    Vector a(5);
    const Vector b(a);
    const Vector c = a.view(0, 2);
    EXPECT_EQ(allocations::live(), before + 1);
  }
  EXPECT_EQ(allocations::live(), before);
}

TEST(VectorOwnsBuffer, OnlyWhenAloneAndNotEmpty) {
  EXPECT_FALSE(Vector().ownsBuffer());
  Vector a(2);
  EXPECT_TRUE(a.ownsBuffer());
  const Vector b(a);
  EXPECT_FALSE(a.ownsBuffer());
}

TEST(VectorIndex, ReadsAndWritesWithTheStride) {
  Vector a = counting<float>(6);
  Vector view = a.view(5, 3, -2);
  EXPECT_EQ(&view[1], a.data + 3);
  view[2] = 7;
  EXPECT_EQ(a[1], 7);
}

TEST(VectorIndex, OutsideIsReportedWithTheLastValidIndex) {
  Vector a(4);
  const Vector& constant = a;
  EXPECT_EQ(thrownMessage([&] { a[4]; }), "MVector index 4 out of range 3");
  EXPECT_EQ(thrownMessage([&] { a[-1]; }), "MVector index -1 out of range 3");
  EXPECT_EQ(thrownMessage([&] { constant[4]; }), "MVector index 4 out of range 3");
  EXPECT_EQ(thrownMessage([&] { constant[std::numeric_limits<int>::min()]; }),
            "MVector index -2147483648 out of range 3");
}

TEST(VectorIndex, OfAnEmptyVectorHasNoValidIndex) {
  EXPECT_EQ(thrownMessage([] { Vector()[0]; }), "MVector index 0 out of range -1");
}

TEST(VectorIndex, CarriesOnToTheElementThatWouldBeThere) {
  RecordedReports reports;
  Vector a = counting<float>(4);
  Vector view = a.view(1, 2);
  EXPECT_EQ(&view[2], a.data + 3);
  EXPECT_EQ(&view[-1], a.data);
  EXPECT_EQ(reports.all(),
            (Reports{"MVector index 2 out of range 1", "MVector index -1 out of range 1"}));
}

TEST(VectorResize, KeepsTheFirstElementsAndZeroesTheRest) {
  Vector a = counting<float>(3);
  a.resize(5);
  EXPECT_EQ(values(a), (Floats{1, 2, 3, 0, 0}));
  a.resize(2);
  EXPECT_EQ(values(a), (Floats{1, 2}));
  EXPECT_EQ(bufferWords(a.buffer).bytes, 2 * sizeof(float));
}

TEST(VectorResize, ToTheSameLengthKeepsTheBuffer) {
  Vector a(3);
  const Vector holder(a);
  const std::size_t before = made();
  a.resize(3);
  EXPECT_EQ(made(), before);
  EXPECT_EQ(a.buffer, holder.buffer);
}

TEST(VectorResize, ToTheSameLengthKeepsTheStride) {
  Vector view = counting<float>(6).view(4, 3, -2);
  view.resize(3);
  EXPECT_EQ(view.stride, -2);
}

TEST(VectorResize, OfAViewGathersItAndLeavesTheParent) {
  for (const int step : {-2, -1, 1, 2}) {
    const Vector a = counting<float>(6);
    Vector view = a.view(step < 0 ? 4 : 0, 3, step);
    const Floats before = values(view);
    view.resize(4);
    EXPECT_EQ(view.stride, 1);
    EXPECT_EQ(view.data, view.buffer);
    EXPECT_NE(view.buffer, a.buffer);
    EXPECT_EQ(values(view), (Floats{before[0], before[1], before[2], 0})) << "step " << step;
    EXPECT_EQ(values(a), (Floats{1, 2, 3, 4, 5, 6}));
  }
}

TEST(VectorResize, LeavesOtherHoldersAlone) {
  Vector a = counting<float>(2);
  const Vector holder(a);
  a.resize(3);
  a[0] = 9;
  EXPECT_EQ(values(holder), (Floats{1, 2}));
  EXPECT_EQ(bufferWords(holder.buffer).references, 1u);
}

TEST(VectorResize, ToZeroLeavesNoBuffer) {
  Vector a(3);
  const std::size_t before = allocations::live();
  a.resize(0);
  EXPECT_EQ(a.buffer, nullptr);
  EXPECT_EQ(a.data, nullptr);
  EXPECT_EQ(a.length, 0);
  EXPECT_EQ(allocations::live(), before - 1);
}

TEST(VectorResize, OfAnEmptyVectorGivesZeros) {
  Vector a;
  a.resize(2);
  EXPECT_EQ(values(a), (Floats{0, 0}));
}

TEST(VectorResize, NegativeIsReportedAndChangesNothing) {
  Vector a = counting<float>(2);
  EXPECT_EQ(thrownMessage([&a] { a.resize(-1); }), "MVector length -1 must be nonnegative");
  EXPECT_EQ(values(a), (Floats{1, 2}));
}

TEST(VectorResize, NegativeCarriesOnEmpty) {
  RecordedReports reports;
  Vector a = counting<float>(2);
  a.resize(-1);
  EXPECT_EQ(reports.all(), Reports{"MVector length -1 must be nonnegative"});
  EXPECT_EQ(a.length, 0);
  EXPECT_EQ(a.buffer, nullptr);
}

TEST(VectorResize, LeavesTheVectorWhenMemoryRunsOut) {
  Vector a = counting<float>(2);
  const float* const buffer = a.buffer;
  {
    allocations::FailAt fail(1);
    EXPECT_THROW(a.resize(3), std::bad_alloc);
  }
  EXPECT_THROW(a.resize(1 << 30), std::bad_alloc);
  EXPECT_EQ(a.buffer, buffer);
  EXPECT_EQ(values(a), (Floats{1, 2}));
}

TEST(VectorOverForeignMemory, IsReadCopiedSetAndLeft) {
  float cells[] = {1, 2, 3, 4};
  const std::size_t before = allocations::live();
  {
    Vector v;
    v.length = 2;
    v.stride = 2;
    v.data = cells;
    EXPECT_EQ(values(v.copy()), (Floats{1, 3}));
    v.set(counting<int>(2).copy());
    const Vector shared(v);
    EXPECT_EQ(shared.data, cells);
    v.resize(3);
    EXPECT_EQ(values(v), (Floats{1, 2, 0}));
  }
  EXPECT_EQ(Floats(cells, cells + 4), (Floats{1, 2, 2, 4}));
  EXPECT_EQ(allocations::live(), before);
}

}  // namespace
