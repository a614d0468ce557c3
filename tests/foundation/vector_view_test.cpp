// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/vector.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/foundation/containers.h"
#include "tests/support/buffer_header.h"
#include "tests/support/reports.h"

namespace {

using Vector = MGenVector<float>;
using Floats = std::vector<float>;
using containers::counting;
using containers::values;

TEST(VectorView, SharesTheBuffer) {
  Vector a = counting<float>(6);
  const Vector view = a.view(1, 2, 3);
  EXPECT_EQ(view.buffer, a.buffer);
  EXPECT_EQ(view.data, a.data + 1);
  EXPECT_EQ(view.stride, 3);
  EXPECT_EQ(view.length, 2);
  EXPECT_EQ(bufferWords(a.buffer).references, 2u);
}

TEST(VectorView, OfAViewMultipliesTheSteps) {
  const Vector a = counting<float>(10);
  EXPECT_EQ(values(a.view(9, 5, -2).view(4, 3, -2)), (Floats{2, 6, 10}));
}

TEST(VectorView, OfStepZeroRepeatsTheElement) {
  EXPECT_EQ(values(counting<float>(3).view(1, 4, 0)), (Floats{2, 2, 2, 2}));
}

TEST(VectorView, OfOneElementTakesAnyStep) {
  for (const int step : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    EXPECT_EQ(values(counting<float>(3).view(1, 1, step)), Floats{2});
  }
}

TEST(VectorView, OfNoElementsIsEmptyWhereverItStarts) {
  const Vector a = counting<float>(3);
  EXPECT_EQ(a.view(3, 0).length, 0);
  EXPECT_EQ(a.view(-100, 0).length, 0);
  EXPECT_EQ(Vector().view(0, 0).length, 0);
}

TEST(VectorView, OutsideIsReportedWithTheFirstIndexOutside) {
  const Vector a(5);
  const auto message = [&a](int first, int count, int step) {
    return thrownMessage([&] { a.view(first, count, step); });
  };
  EXPECT_EQ(message(-1, 2, 1), "MVector index -1 out of range 4");
  EXPECT_EQ(message(5, 1, 1), "MVector index 5 out of range 4");
  EXPECT_EQ(message(3, 3, 1), "MVector index 5 out of range 4");
  EXPECT_EQ(message(1, 3, 2), "MVector index 5 out of range 4");
  EXPECT_EQ(message(4, 3, -3), "MVector index -2 out of range 4");
  EXPECT_EQ(message(0, 2, std::numeric_limits<int>::min()),
            "MVector index -2147483648 out of range 4");
  EXPECT_EQ(message(4, 2, std::numeric_limits<int>::max()),
            "MVector index 2147483647 out of range 4");
  EXPECT_EQ(message(0, std::numeric_limits<int>::max(), 1), "MVector index 5 out of range 4");
}

TEST(VectorView, NegativeCountIsReported) {
  EXPECT_EQ(thrownMessage([] { Vector(3).view(0, -1); }), "MVector length -1 must be nonnegative");
}

TEST(VectorView, OutsideCarriesOnEmpty) {
  RecordedReports reports;
  const Vector a(3);
  EXPECT_EQ(a.view(2, 2).length, 0);
  EXPECT_EQ(a.view(0, -1).length, 0);
  EXPECT_EQ(reports.all().size(), 2u);
  EXPECT_EQ(bufferWords(a.buffer).references, 1u);
}

// A vector may be laid over memory that is not a buffer of the library's.

}  // namespace
