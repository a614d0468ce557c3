// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/norm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/allocations.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr int kLongest = 4096;
constexpr unsigned kSeed = 7919;

// The same bits; NaNs of any payload are alike, since an addition may keep either operand's.
testing::AssertionResult sameBits(float a, float b) {
  if (std::isnan(a) && std::isnan(b)) return testing::AssertionSuccess();
  if (std::memcmp(&a, &b, sizeof a) == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << a << " is not " << b;
}

// A second, plain implementation: tables of squares, sums over explicit ranges.

float plainTable(const std::vector<float>& q) {
  switch (q.size()) {
    case 0:
      return 0.0f;
    case 1:
      return q[0];
    case 2:
      return q[0] + q[1];
    case 3:
      return (q[0] + q[1]) + q[2];
    case 4:
      return (q[0] + q[1]) + (q[2] + q[3]);
    case 5:
      return ((q[0] + q[1]) + (q[2] + q[3])) + q[4];
    case 6:
      return ((q[0] + q[1]) + (q[2] + q[3])) + (q[4] + q[5]);
    case 7:
      return ((q[0] + q[1]) + (q[2] + q[3])) + ((q[4] + q[5]) + q[6]);
    default:
      return ((q[0] + q[1]) + (q[2] + q[3])) + ((q[4] + q[5]) + (q[6] + q[7]));
  }
}

// Repeatedly adds neighbours: for a power of two the same balanced tree as halves of halves.
float plainTree(std::vector<float> sums) {
  while (sums.size() > 1) {
    std::vector<float> halved(sums.size() / 2);
    for (std::size_t i = 0; i < halved.size(); ++i) halved[i] = sums[2 * i] + sums[2 * i + 1];
    sums = halved;
  }
  return sums[0];
}

std::vector<float> plainSquares(const float* p, int n, int stride) {
  std::vector<float> q;
  for (int i = 0; i < n; ++i) q.push_back(p[i * stride] * p[i * stride]);
  return q;
}

float plainNorm2(const float* p, int n, int stride) {
  if (n <= 8) return plainTable(plainSquares(p, n, stride));
  int k = 1;
  while (k <= n / 2) k *= 2;
  const float leading = plainTree(plainSquares(p, k, 1));
  return k == n ? leading : leading + plainNorm2(p + k * stride, n - k, stride);
}

enum class Kind { Plain, Subnormal, Huge, WithInfinity, WithNan, Mixed };

// Cells for `n` elements at any stride of -3 to 3, the elements starting in the middle.
class Cells {
 public:
  Cells(Kind kind, int n, unsigned seed) : cells_(static_cast<std::size_t>(8 * n + 16)) {
    std::mt19937 random(seed);
    for (float& cell : cells_) cell = draw(kind, random);
    middle_ = 4 * n + 8;
    if (n > 0 && kind == Kind::WithInfinity) cells_[position(random, n)] = -kInfinity;
    if (n > 0 && kind == Kind::WithNan) cells_[position(random, n)] = kNan;
  }
  const float* middle() const { return cells_.data() + middle_; }

 private:
  std::size_t position(std::mt19937& random, int n) const {
    return static_cast<std::size_t>(middle_ + std::uniform_int_distribution<int>(0, n - 1)(random));
  }
  static float draw(Kind kind, std::mt19937& random) {
    const float x = std::uniform_real_distribution<float>(-1, 1)(random);
    switch (kind) {
      case Kind::Subnormal:
        return x * 3e-22f;  // squares below the smallest normal number
      case Kind::Huge:
        return x * 1e19f;  // squares near the largest number
      case Kind::Mixed: {
        const int choice = std::uniform_int_distribution<int>(0, 5)(random);
        if (choice == 0) return -0.0f;
        if (choice == 1) return x * 1e-40f;
        return std::ldexp(x, std::uniform_int_distribution<int>(-40, 40)(random));
      }
      default:
        return x;
    }
  }

  std::vector<float> cells_;
  int middle_ = 0;
};

TEST(Norm2, OfNothingIsZero) {
  EXPECT_TRUE(sameBits(_vector_norm2(static_cast<const float*>(nullptr), 0), 0.0f));
  EXPECT_TRUE(sameBits(_vector_norm2(static_cast<const float*>(nullptr), 0, 2), 0.0f));
}

TEST(Norm2, OfThreeFourIsTwentyFive) {
  const float p[] = {3, 4};
  EXPECT_EQ(_vector_norm2(p, 2), 25.0f);
}

TEST(Norm2, TakesAPointerToWritableElements) {
  float p[] = {3, 0, 4, 0};
  EXPECT_EQ(_vector_norm2(p, 2), 9.0f);
  EXPECT_EQ(_vector_norm2(p, 2, 2), 25.0f);
  EXPECT_EQ(_vector_norm2_2(p, 4), 25.0f);
}

// With 1 and three terms of half an ulp, each grouping of additions has a sum of its own.
TEST(Norm2, GroupsNeighboursFirst) {
  const float half = std::sqrt(std::ldexp(1.0f, -24));  // 2^-12: the square is half an ulp of 1
  const float p[] = {1, half, half, half};
  const float ulp = std::ldexp(1.0f, -23);
  EXPECT_EQ(_vector_norm2(p, 2), 1.0f);
  EXPECT_EQ(_vector_norm2(p, 3), 1.0f);
  EXPECT_EQ(_vector_norm2(p, 4), 1.0f + ulp) << "the two last make a whole ulp first";
}

TEST(Norm2, KeepsTheSignlessZero) {
  const float p[] = {-0.0f, -0.0f, -0.0f};
  for (int n = 0; n <= 3; ++n) EXPECT_TRUE(sameBits(_vector_norm2(p, n), 0.0f));
}

TEST(Norm2, EqualsThePlainSumForEveryLength) {
  const Cells cells(Kind::Mixed, kLongest, kSeed);
  for (int n = 0; n <= kLongest; ++n) {
    ASSERT_TRUE(sameBits(_vector_norm2(cells.middle(), n), plainNorm2(cells.middle(), n, 1)))
        << "n " << n << " seed " << kSeed;
  }
}

TEST(StridedNorm2, EqualsThePlainSumForEveryStrideUpTo300) {
  const Cells cells(Kind::Mixed, 300, kSeed + 1);
  for (const int stride : {-3, -2, -1, 0, 1, 2, 3}) {
    for (int n = 0; n <= 300; ++n) {
      ASSERT_TRUE(
          sameBits(_vector_norm2(cells.middle(), n, stride), plainNorm2(cells.middle(), n, stride)))
          << "n " << n << " stride " << stride << " seed " << kSeed + 1;
    }
  }
}

TEST(StridedNorm2, EqualsThePlainSumForEveryLength) {
  const Cells cells(Kind::Mixed, kLongest, kSeed + 2);
  for (const int stride : {2, -3}) {
    for (int n = 0; n <= kLongest; ++n) {
      ASSERT_TRUE(
          sameBits(_vector_norm2(cells.middle(), n, stride), plainNorm2(cells.middle(), n, stride)))
          << "n " << n << " stride " << stride << " seed " << kSeed + 2;
    }
  }
}

TEST(Norm2, EqualsThePlainSumForAwkwardData) {
  for (const Kind kind : {Kind::Subnormal, Kind::Huge, Kind::WithInfinity, Kind::WithNan}) {
    for (int n = 0; n <= 1100; n += n < 70 ? 1 : 37) {
      const unsigned seed = kSeed + static_cast<unsigned>(n);
      const Cells cells(kind, n, seed);
      for (const int stride : {1, 2}) {
        ASSERT_TRUE(sameBits(_vector_norm2(cells.middle(), n, stride),
                             plainNorm2(cells.middle(), n, stride)))
            << "n " << n << " kind " << static_cast<int>(kind) << " seed " << seed;
      }
      ASSERT_TRUE(sameBits(_vector_norm2(cells.middle(), n), plainNorm2(cells.middle(), n, 1)));
    }
  }
}

TEST(Norm2, OfOneNanIsNanWhereverItIs) {
  for (int at = 0; at < 100; ++at) {
    std::vector<float> p(100, 1.0f);
    p[static_cast<std::size_t>(at)] = kNan;
    EXPECT_TRUE(std::isnan(_vector_norm2(p.data(), 100))) << at;
  }
}

TEST(Norm2, ReadsNothingBehindItsElements) {
  for (int n = 0; n <= 200; ++n) {
    const std::vector<float> p(static_cast<std::size_t>(n), 1.0f);  // exact room, for ASan
    EXPECT_EQ(_vector_norm2(p.data(), n), static_cast<float>(n));
  }
}

TEST(Norm2, AllocatesNothing) {
  const std::vector<float> p(5000, 1.0f);
  const std::size_t before = allocations::made();
  EXPECT_EQ(_vector_norm2(p.data(), 4999), 4999.0f);
  EXPECT_EQ(allocations::made(), before);
}

TEST(StridedNorm2, OfUpToEightElementsStepsByTheStride) {
  std::vector<float> p(16, 100.0f);
  for (std::size_t i = 0; i < 16; i += 2) p[i] = 1.0f;
  for (int n = 0; n <= 8; ++n) EXPECT_EQ(_vector_norm2(p.data(), n, 2), static_cast<float>(n));
}

TEST(StridedNorm2, OfNineElementsReadsEightCellsAndTheLastElement) {
  std::vector<float> p(17);
  for (std::size_t i = 0; i < 17; ++i) p[i] = static_cast<float>(i);
  // 0 + 1 + 4 + ... + 49, then 16 squared.
  EXPECT_EQ(_vector_norm2(p.data(), 9, 2), 140.0f + 256.0f);
}

TEST(StridedNorm2, TreatsALongTailTheSameWay) {
  // 16 cells, then the tail of 9 from cell 48: 8 cells, then element 24 of the whole.
  std::vector<float> p(100, 0.0f);
  p[15] = 1;
  p[16] = 50;
  p[48] = 2;
  p[55] = 3;
  p[56] = 50;
  p[72] = 4;
  EXPECT_EQ(_vector_norm2(p.data(), 25, 3), 1.0f + 4.0f + 9.0f + 16.0f);
}

TEST(StridedNorm2, OfStrideOneIsTheContiguousOne) {
  const Cells cells(Kind::Mixed, 100, kSeed + 3);
  for (int n = 0; n <= 100; ++n) {
    EXPECT_TRUE(sameBits(_vector_norm2(cells.middle(), n, 1), _vector_norm2(cells.middle(), n)));
  }
}

TEST(PowerOfTwoNorm2, EqualsThePlainTree) {
  const Cells cells(Kind::Mixed, 1 << 16, kSeed + 4);
  for (int n = 4; n <= 1 << 16; n *= 2) {
    EXPECT_TRUE(
        sameBits(_vector_norm2_2(cells.middle(), n), plainTree(plainSquares(cells.middle(), n, 1))))
        << "n " << n;
    EXPECT_TRUE(sameBits(_vector_norm2_2(cells.middle(), n), _vector_norm2(cells.middle(), n)))
        << "n " << n;
  }
}

template <class Container>
Container filled(Container c, int n) {
  for (int i = 0; i < n; ++i) c.data[i] = 1.5;
  return c;
}
constexpr double kNotFinite[] = {std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()};

TEST(FiniteMatrix, HoldsForFiniteElements) {
  using M = MGenMatrix<double>;
  M m = filled(M(3, 4, M::RowMajor), 12);
  m(0, 0) = std::numeric_limits<double>::max();
  m(2, 3) = std::numeric_limits<double>::denorm_min();
  EXPECT_TRUE(finite(m));
}

TEST(FiniteMatrix, FailsForOneBadElementAnywhere) {
  using M = MGenMatrix<double>;
  for (const auto layout : {M::ColumnMajor, M::RowMajor}) {
    for (const double bad : kNotFinite) {
      for (int at = 0; at < 12; ++at) {
        M m = filled(M(3, 4, layout), 12);
        m.data[at] = bad;
        EXPECT_FALSE(finite(m)) << at;
      }
    }
  }
}

TEST(FiniteMatrix, LooksAtTheViewAlone) {
  using M = MGenMatrix<double>;
  M m = filled(M(3, 3, M::RowMajor), 9);
  m(0, 0) = kNotFinite[2];
  EXPECT_TRUE(finite(m.view(1, 0, 2, 3)));
  EXPECT_FALSE(finite(m.view(0, 0, 1, 1)));
}

TEST(FiniteMatrix, HoldsWithoutElements) {
  using M = MGenMatrix<double>;
  EXPECT_TRUE(finite(M()));
  EXPECT_TRUE(finite(M(0, 3, M::RowMajor)));
  EXPECT_TRUE(finite(M(3, 0, M::ColumnMajor)));
}

TEST(FiniteVector, FailsForOneBadElementAnywhere) {
  for (const double bad : kNotFinite) {
    for (int at = 0; at < 5; ++at) {
      MGenVector<double> v = filled(MGenVector<double>(5), 5);
      EXPECT_TRUE(finite(v));
      v[at] = bad;
      EXPECT_FALSE(finite(v)) << at;
    }
  }
}

TEST(FiniteVector, StepsByTheStride) {
  MGenVector<double> v(4);
  v[1] = kNotFinite[0];
  EXPECT_TRUE(finite(v.view(0, 2, 2)));
  EXPECT_TRUE(finite(v.view(2, 2, -2)));
  EXPECT_FALSE(finite(v.view(3, 2, -2)));
}

TEST(FiniteVector, HoldsWithoutElements) { EXPECT_TRUE(finite(MGenVector<double>())); }

}  // namespace
