// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/array.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "cornerpin/foundation/matrix.h"
#include "tests/support/allocations.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

// Counts the objects that live, and fails its n-th construction or assignment.
struct Item {
  static int live;
  static int constructionsUntilFailure;
  static int assignmentsUntilFailure;

  Item() {
    if (--constructionsUntilFailure == 0) throw std::string("construction");
    ++live;
  }
  Item(const Item&) = delete;
  Item& operator=(const Item& other) {
    if (--assignmentsUntilFailure == 0) throw std::string("assignment");
    value = other.value;
    return *this;
  }
  ~Item() { --live; }

  int value = 7;
};
int Item::live = 0;
int Item::constructionsUntilFailure = 0;
int Item::assignmentsUntilFailure = 0;

MArray<int> counting(int n) {
  MArray<int> array(n);
  for (int i = 0; i < n; ++i) array[i] = i + 1;
  return array;
}

std::vector<int> values(const MArray<int>& array) {
  std::vector<int> result;
  for (int i = 0; i < array.size(); ++i) result.push_back(array[i]);
  return result;
}

using Ints = std::vector<int>;

// The count that the last resize asked for, which is the first field behind the virtual table.
int requested(const MArray<int>& array) {
  int count = 0;
  std::memcpy(&count, reinterpret_cast<const char*>(&array) + sizeof(void*), sizeof count);
  return count;
}

TEST(Array, IsEmptyByDefault) {
  const std::size_t before = allocations::made();
  const MArray<int> array;
  EXPECT_EQ(array.size(), 0);
  EXPECT_EQ(allocations::made(), before);
}

TEST(Array, HasAVirtualDestructor) {
  EXPECT_TRUE(std::has_virtual_destructor_v<MArray<int>>);
  EXPECT_EQ(sizeof(MArray<int>), 2 * sizeof(void*) + 8);
}

TEST(Array, FieldsAreRequestedCountCountElements) {
  const MArray<int> array(3);
  std::int32_t counts[2];
  const int* elements = nullptr;
  const char* const fields = reinterpret_cast<const char*>(&array) + sizeof(void*);
  std::memcpy(counts, fields, sizeof counts);
  std::memcpy(&elements, fields + sizeof counts, sizeof elements);
  EXPECT_EQ(counts[0], 3);
  EXPECT_EQ(counts[1], 3);
  EXPECT_EQ(elements, &array[0]);
}

TEST(Array, IsMadeOfDefaultElements) {
  Item::live = 0;
  {
    const MArray<Item> array(3);
    EXPECT_EQ(Item::live, 3);
    EXPECT_EQ(array[2].value, 7);
  }
  EXPECT_EQ(Item::live, 0);
}

TEST(ArrayIndex, OutsideThrows) {
  MArray<int> array(2);
  const MArray<int>& constant = array;
  EXPECT_THROW(array[-1], LvBadIndexException);
  EXPECT_THROW(array[2], LvBadIndexException);
  EXPECT_THROW(constant[2], LvBadIndexException);
  EXPECT_THROW(constant[std::numeric_limits<int>::min()], LvBadIndexException);
  EXPECT_THROW(MArray<int>()[0], LvBadIndexException);
}

TEST(ArrayIndex, MessageNamesTheOperator) {
  try {
    MArray<int>()[0];
    FAIL() << "nothing was thrown";
  } catch (const LvBadIndexException& error) {
    EXPECT_STREQ(error.message.c_str(), "MArray::operator[]");
    EXPECT_EQ(error.file.size(), 0u);
    EXPECT_EQ(error.line, 0);
  }
}

TEST(ArrayIndex, ThrowsPastAnInstalledHandler) {
  RecordedReports reports;
  EXPECT_THROW(MArray<int>()[0], LvBadIndexException);
  EXPECT_TRUE(reports.all().empty());
}

TEST(ArrayResize, KeepsTheFirstElements) {
  MArray<int> array = counting(3);
  array.resize(5);
  EXPECT_EQ(values(array), (Ints{1, 2, 3, 0, 0}));
  array.resize(2);
  EXPECT_EQ(values(array), (Ints{1, 2}));
}

TEST(ArrayResize, ToTheSameCountAllocatesAnew) {
  MArray<int> array = counting(3);
  const int* const elements = &array[0];
  const std::size_t before = allocations::made();
  array.resize(3);
  EXPECT_EQ(allocations::made(), before + 1);
  EXPECT_NE(&array[0], elements);
  EXPECT_EQ(values(array), (Ints{1, 2, 3}));
}

TEST(ArrayResize, ToZeroDestroysAllAndAllocatesNothing) {
  Item::live = 0;
  MArray<Item> array(3);
  const std::size_t live = allocations::live();
  const std::size_t before = allocations::made();
  array.resize(0);
  EXPECT_EQ(Item::live, 0);
  EXPECT_EQ(array.size(), 0);
  EXPECT_EQ(allocations::made(), before);
  EXPECT_EQ(allocations::live(), live - 1);
  EXPECT_THROW(array[0], LvBadIndexException);
}

TEST(ArrayResize, NegativeThrowsAndChangesNothing) {
  MArray<int> array = counting(2);
  try {
    array.resize(-1);
    FAIL() << "nothing was thrown";
  } catch (const LvBadIndexException&) {
    FAIL() << "not an index error";
  } catch (const LvIllegalArgumentException& error) {
    EXPECT_STREQ(error.message.c_str(), "MArray::resize");
  }
  EXPECT_EQ(values(array), (Ints{1, 2}));
  EXPECT_EQ(requested(array), 2);
}

TEST(ArrayResize, NegativeThrowsPastAnInstalledHandler) {
  RecordedReports reports;
  EXPECT_THROW(MArray<int>(-1), LvIllegalArgumentException);
  EXPECT_TRUE(reports.all().empty());
}

TEST(ArrayResize, RecordsTheRequestBeforeItAllocates) {
  MArray<int> array = counting(2);
  {
    allocations::FailAt fail(1);
    EXPECT_THROW(array.resize(9), std::bad_alloc);
  }
  EXPECT_EQ(requested(array), 9);
  EXPECT_EQ(array.size(), 2);
  EXPECT_EQ(values(array), (Ints{1, 2}));
}

TEST(ArrayResize, OfMatricesSharesTheirBuffers) {
  MArray<MGenMatrix<float>> array(1);
  array[0].resize(2, 2, MGenMatrix<float>::RowMajor);
  const float* const buffer = array[0].buffer;
  array.resize(2);
  EXPECT_EQ(array[0].buffer, buffer);
  EXPECT_EQ(bufferWords(buffer).references, 1u);
  EXPECT_EQ(array[1].buffer, nullptr);
}

TEST(ArrayResize, LeavesTheElementsWhenAConstructionThrows) {
  Item::live = 0;
  {
    MArray<Item> array(2);
    array[1].value = 8;
    Item::constructionsUntilFailure = 3;
    EXPECT_THROW(array.resize(4), std::string);
    EXPECT_EQ(array.size(), 2);
    EXPECT_EQ(array[1].value, 8);
    EXPECT_EQ(Item::live, 2);
  }
  EXPECT_EQ(Item::live, 0);
}

TEST(ArrayResize, LeavesTheElementsWhenAnAssignmentThrows) {
  Item::live = 0;
  {
    MArray<Item> array(3);
    array[2].value = 8;
    Item::assignmentsUntilFailure = 2;
    EXPECT_THROW(array.resize(5), std::string);
    EXPECT_EQ(array.size(), 3);
    EXPECT_EQ(array[2].value, 8);
    EXPECT_EQ(Item::live, 3);
  }
  EXPECT_EQ(Item::live, 0);
}

TEST(ArrayResize, HugeCountsFailAsTheStandardAllocation) {
  struct Large {
    char bytes[std::int64_t{1} << 33];
  };
  MArray<Large> array;
  EXPECT_THROW(array.resize(std::numeric_limits<int>::max()), std::bad_alloc);
  EXPECT_EQ(array.size(), 0);
}

TEST(ArrayCopy, CopiesTheElements) {
  MArray<int> first = counting(2);
  MArray<int> second(first);
  second[0] = 9;
  EXPECT_EQ(first[0], 1);
  EXPECT_EQ(values(second), (Ints{9, 2}));
}

TEST(ArrayCopy, OfMatricesSharesTheirBuffers) {
  MArray<MGenMatrix<float>> first(1);
  first[0].resize(1, 1, MGenMatrix<float>::RowMajor);
  const MArray<MGenMatrix<float>> second(first);
  EXPECT_EQ(second[0].buffer, first[0].buffer);
  EXPECT_EQ(bufferWords(first[0].buffer).references, 2u);
}

TEST(ArrayCopy, OfAnEmptyArrayAllocatesNothing) {
  const MArray<int> first;
  const std::size_t before = allocations::made();
  const MArray<int> second(first);
  EXPECT_EQ(second.size(), 0);
  EXPECT_EQ(allocations::made(), before);
}

TEST(ArrayAssignment, ReplacesTheElements) {
  MArray<int> array = counting(5);
  array = counting(2);
  EXPECT_EQ(values(array), (Ints{1, 2}));
}

TEST(ArrayAssignment, ToItselfKeepsTheElementsInPlace) {
  MArray<int> array = counting(2);
  const int* const elements = &array[0];
  const MArray<int>& alias = array;
  array = alias;
  EXPECT_EQ(&array[0], elements);
}

TEST(ArrayAssignment, LeavesTheElementsWhenOneThrows) {
  Item::live = 0;
  {
    MArray<Item> target(1);
    const MArray<Item> source(3);
    target[0].value = 8;
    Item::assignmentsUntilFailure = 2;
    EXPECT_THROW(target = source, std::string);
    EXPECT_EQ(target.size(), 1);
    EXPECT_EQ(target[0].value, 8);
  }
  EXPECT_EQ(Item::live, 0);
}

// Matrices as elements, because a compiler may do without allocations that nothing else sees.
TEST(Array, LeaksNothingWhicheverAllocationFails) {
  EXPECT_EQ(allocations::expectNoLeakOnAnyFailure([] {
              MArray<MGenMatrix<float>> array(3);
              array.resize(4);
              MArray<MGenMatrix<float>> copy(array);
              copy = array;
            }),
            4u);
}

}  // namespace
