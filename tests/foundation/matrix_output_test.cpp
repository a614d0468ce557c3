// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/matrix_output.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "tests/support/allocations.h"

namespace {

template <class T>
MGenMatrix<T> matrix(int rows, int cols, std::initializer_list<T> byRows) {
  MGenMatrix<T> m(rows, cols, MGenMatrix<T>::ColumnMajor);
  const T* element = byRows.begin();
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) m(i, j) = *element++;
  }
  return m;
}

template <class T>
std::string text(const MGenMatrix<T>& m) {
  std::ostringstream os;
  os << m;
  return os.str();
}

std::string text(double value) { return text(matrix<double>(1, 1, {value})); }

// Swallows what is written and counts how often it is flushed.
struct Sink : std::streambuf {
  int flushes = 0;
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
  int sync() override {
    ++flushes;
    return 0;
  }
};

}  // namespace

TEST(MatrixOutput, AlignsColumnsToTheRight) {
  EXPECT_EQ(text(matrix<double>(2, 2, {1, 2.5, 10, -3})), "[[  1. 2.5 ]\n [ 10. -3. ]]\n");
}

TEST(MatrixOutput, WritesIntegersAsTheyAre) {
  EXPECT_EQ(text(matrix<int>(2, 2, {1, 20, 300, 4})), "[[   1 20 ]\n [ 300  4 ]]\n");
  EXPECT_EQ(text(matrix<int>(1, 2, {100, 0})), "[[ 100 0 ]]\n");
}

TEST(MatrixOutput, ClosesASingleRowTwice) { EXPECT_EQ(text(0.25), "[[ 0.25 ]]\n"); }

TEST(MatrixOutput, KeepsThePointWhenAllDecimalsGo) {
  EXPECT_EQ(text(0.0), "[[ 0. ]]\n");
  EXPECT_EQ(text(-0.0), "[[ -0. ]]\n");
  EXPECT_EQ(text(100.0), "[[ 100. ]]\n");
}

TEST(MatrixOutput, WidthsFollowTheTrimmedTexts) {
  // 100.000000 is the longest before the zeros go, 0.123456 afterwards.
  EXPECT_EQ(text(matrix<double>(3, 1, {0.123456, 100, -2})),
            "[[ 0.123456 ]\n [     100. ]\n [      -2. ]]\n");
}

TEST(MatrixOutput, HasSixDecimals) {
  EXPECT_EQ(text(1.0 / 3), "[[ 0.333333 ]]\n");
  EXPECT_EQ(text(1e-7), "[[ 0. ]]\n");
  EXPECT_EQ(text(1.0000004), "[[ 1. ]]\n");
}

TEST(MatrixOutput, WritesNonFiniteNumbers) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(text(infinity), "[[ inf ]]\n");
  EXPECT_EQ(text(-infinity), "[[ -inf ]]\n");
  EXPECT_EQ(text(std::numeric_limits<double>::quiet_NaN()), "[[ nan ]]\n");
}

TEST(MatrixOutput, WritesTheLargestNumbersInFull) {
  const double lowest = -std::numeric_limits<double>::max();
  EXPECT_EQ(text(lowest).size(), 4 + 1 + 309 + 1 + 3u);
  EXPECT_EQ(std::stod(text(lowest).substr(3)), lowest);
  EXPECT_EQ(text(std::numeric_limits<double>::denorm_min()), "[[ 0. ]]\n");
  EXPECT_EQ(text(matrix<int>(1, 1, {std::numeric_limits<int>::min()})), "[[ -2147483648 ]]\n");
}

TEST(MatrixOutput, OfNoRowsIsEmpty) {
  EXPECT_EQ(text(MGenMatrix<double>()), "");
  EXPECT_EQ(text(MGenMatrix<int>(0, std::numeric_limits<int>::max(), MGenMatrix<int>::RowMajor)),
            "");
}

TEST(MatrixOutput, OfNoColumnsIsBracketsOnly) {
  EXPECT_EQ(text(MGenMatrix<int>(2, 0, MGenMatrix<int>::ColumnMajor)), "[[ ]\n [ ]]\n");
}

TEST(MatrixOutput, FollowsTheStridesOfAView) {
  const auto m = matrix<int>(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  EXPECT_EQ(text(m.view(1, 1, 2, 2)), "[[ 5 6 ]\n [ 8 9 ]]\n");
  EXPECT_EQ(text(m.copy(MGenMatrix<int>::RowMajor)), text(m));
}

TEST(MatrixOutput, IgnoresThePrecisionAndFlagsOfTheStream) {
  std::ostringstream os;
  os.precision(2);
  os << std::hex << std::showpos << matrix<int>(1, 1, {255}) << matrix<double>(1, 1, {0.12345});
  EXPECT_EQ(os.str(), "[[ 255 ]]\n[[ 0.12345 ]]\n");
}

TEST(MatrixOutput, FlushesOncePerRowAndReturnsTheStream) {
  Sink sink;
  std::ostream os(&sink);
  EXPECT_EQ(&(os << MGenMatrix<int>(3, 2, MGenMatrix<int>::ColumnMajor)), &os);
  EXPECT_EQ(sink.flushes, 3);
}

TEST(MatrixOutput, ReleasesItsTextsWhenMemoryRunsOut) {
  const auto m = matrix<double>(2, 2, {1e300, 2, 3, 4});
  allocations::expectNoLeakOnAnyFailure([&] {
    Sink sink;
    std::ostream os(&sink);
    os << m;
  });
}
