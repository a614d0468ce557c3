// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/roots.h"

#include <gtest/gtest.h>
#include <math.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/geometry/polynomials.h"
#include "tests/support/allocations.h"

namespace {

using cornerpin::RealRoots;
using cornerpin::realRoots;
using polynomials::Coefficients;
using polynomials::text;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kUntouched = -12345.5;
constexpr unsigned kSeed = 20240611;

struct Solution {
  int count = -1;
  double roots[4] = {kUntouched, kUntouched, kUntouched, kUntouched};
};

Solution closedForm(const Coefficients& k) {
  Solution s;
  if (k.size() == 3) solveQuadratic(k[0], k[1], k[2], &s.count, s.roots);
  if (k.size() == 4) solveCubic(k[0], k[1], k[2], k[3], &s.count, s.roots);
  if (k.size() == 5) solveQuartic(k[0], k[1], k[2], k[3], k[4], &s.count, s.roots);
  return s;
}

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

// The closed forms once more, one long formula after the other.
namespace second {

Solution quadratic(double a, double b, double c) {
  Solution s;
  const double D = b * b + a * -4 * c;
  s.count = D < 0 ? 0 : 2;
  if (s.count == 0) return s;
  s.roots[0] = (std::sqrt(D) - b) / (a + a);
  s.roots[1] = (-b - std::sqrt(D)) / (a + a);
  return s;
}

Solution cubic(double a, double b, double c, double d) {
  using Wide = long double;
  if (a == 0) return quadratic(b, c, d);
  Solution s;
  const Wide A = Wide(b) / Wide(a), B = Wide(c) / Wide(a), C = Wide(d) / Wide(a);
  const Wide Q = (A * A - 3.0L * B) / 9.0L;
  const Wide R = (((2.0L * A) * A) * A - (9.0L * A) * B + 27.0L * C) / 54.0L;
  const double D = double(R * R - Q * Q * Q);
  const double third = double(A / 3.0L);
  if (D <= 0) {
    const double theta = std::acos(double(R / Wide(std::sqrt(double(Q * Q * Q)))));
    const double m = -2.0 * std::sqrt(double(Q));
    s.count = 3;
    s.roots[0] = double(Wide(m) * Wide(std::cos(double(Wide(theta) / 3.0L))) - Wide(third));
    s.roots[1] =
        double(Wide(m) * Wide(std::cos(double((Wide(theta) + Wide(6.283185307179586)) / 3.0L))) -
               Wide(third));
    s.roots[2] =
        double(Wide(m) * Wide(std::cos(double((Wide(theta) + Wide(12.566370614359172)) / 3.0L))) -
               Wide(third));
    return s;
  }
  const Wide absoluteR = R < 0 ? -R : R;
  const float S = powf(float(Wide(std::sqrt(D)) + absoluteR), 0.33333334f);
  const Wide sum = Wide(S) + Q / Wide(S);
  s.count = 1;
  s.roots[0] = double((R < 0 ? 1.0L : -1.0L) * sum - Wide(third));
  return s;
}

Solution quartic(double a, double b, double c, double d, double e) {
  if (a == 0 || std::fabs(a) / std::fabs(b) < 1e-5) return cubic(b, c, d, e);
  Solution s;
  s.count = 0;
  const double p = (8 * a * c - 3 * b * b) / (8 * a * a);
  const double q = (b * b * b - 4 * a * b * c + 8 * a * a * d) / (8 * a * a * a);
  const double r =
      (-3 * b * b * b * b + 16 * a * b * b * c - 64 * a * a * b * d + 256 * a * a * a * e) /
      (256 * a * a * a * a);
  const Solution resolvent = cubic(8, -4 * p, -8 * r, 4 * p * r - q * q);
  double y = -1e99;
  for (int i = 0; i < resolvent.count; ++i) y = resolvent.roots[i] > y ? resolvent.roots[i] : y;
  const double W = 2 * y - p, root = std::sqrt(W), h = q / (2 * root);
  const double e1 = W - 4 * (y + h), e2 = W - 4 * (y - h);
  if (!std::isnan(e1) && !std::isnan(e2)) {
    std::vector<double> real, parts;
    if (e1 >= 0) real = {(root + std::sqrt(e1)) / 2, (root - std::sqrt(e1)) / 2};
    if (e2 >= 0) {
      real.push_back((std::sqrt(e2) - root) / 2);
      real.push_back((-root - std::sqrt(e2)) / 2);
    }
    if (real.empty()) parts = {-root / 2, -root / 2, root / 2, root / 2};
    if (real.size() == 2 && e1 >= 0) parts = {-root / 2, -root / 2};
    if (real.size() == 2 && e1 < 0) parts = {root / 2, root / 2};
    s.count = int(real.size());
    real.insert(real.end(), parts.begin(), parts.end());
    std::copy(real.begin(), real.end(), s.roots);
  }
  for (double& x : s.roots) x += b / (-4 * a);
  return s;
}

Solution closedForm(const Coefficients& k) {
  if (k.size() == 3) return quadratic(k[0], k[1], k[2]);
  if (k.size() == 4) return cubic(k[0], k[1], k[2], k[3]);
  return quartic(k[0], k[1], k[2], k[3], k[4]);
}

}  // namespace second

// Coefficients of every kind: plain, small integers, of wild sizes, and not finite.
Coefficients awkward(std::mt19937_64& generator, std::size_t n) {
  static const double kOdd[] = {0.0, -0.0, 1, kInfinity, kNaN, 5e-324, 1e308, -1e-310};
  std::uniform_real_distribution<double> unit(-1, 1);
  const unsigned kind = unsigned(generator() % 4);
  Coefficients k(n);
  for (double& c : k) {
    c = unit(generator);
    if (kind == 1) c = double(int(generator() % 9)) - 4;
    if (kind == 2) c = std::ldexp(c, int(generator() % 200) - 100);
    if (kind == 3 && generator() % 3 == 0) c = kOdd[generator() % 8];
  }
  return k;
}

}  // namespace

TEST(SolveQuadratic, PutsTheRootWithThePositiveSquareRootFirst) {
  const Solution s = closedForm({1, -3, 2});
  EXPECT_EQ(s.count, 2);
  EXPECT_EQ(s.roots[0], 2);
  EXPECT_EQ(s.roots[1], 1);
  EXPECT_EQ(closedForm({-1, 3, -2}).roots[0], 1);
}

TEST(SolveQuadratic, WritesNothingWithoutRealRoots) {
  const Solution s = closedForm({1, 0, 1});
  EXPECT_EQ(s.count, 0);
  EXPECT_EQ(s.roots[0], kUntouched);
}

TEST(SolveQuadratic, ReportsADoubleRootTwice) {
  const Solution s = closedForm({1, -2, 1});
  EXPECT_EQ(s.count, 2);
  EXPECT_EQ(s.roots[0], 1);
  EXPECT_EQ(s.roots[1], 1);
}

TEST(SolveQuadratic, WritesTwoSlotsOnly) { EXPECT_EQ(closedForm({1, -3, 2}).roots[2], kUntouched); }

TEST(SolveQuadratic, AZeroLeadingCoefficientGivesTwoNonFiniteRoots) {
  const Solution s = closedForm({0, 2, -4});
  EXPECT_EQ(s.count, 2);
  EXPECT_FALSE(std::isfinite(s.roots[0]));
  EXPECT_FALSE(std::isfinite(s.roots[1]));
}

TEST(SolveQuadratic, ANaNDiscriminantGivesTwoNaNRoots) {
  const Solution s = closedForm({1, kNaN, 1});
  EXPECT_EQ(s.count, 2);
  EXPECT_TRUE(std::isnan(s.roots[0]) && std::isnan(s.roots[1]));
}

TEST(SolveCubic, WithoutALeadingCoefficientIsTheQuadratic) {
  const Solution s = closedForm({0, 1, -3, 2});
  EXPECT_EQ(s.count, 2);
  EXPECT_EQ(s.roots[0], 2);
  EXPECT_EQ(s.roots[1], 1);
  EXPECT_EQ(closedForm({0, 1, 0, 1}).count, 0);
  EXPECT_EQ(closedForm({-0.0, 0, 1, 1}).count, 2);
}

TEST(SolveCubic, ThreeRootsComeUnsorted) {
  const Solution s = closedForm({1, -6, 11, -6});
  EXPECT_EQ(s.count, 3);
  EXPECT_NEAR(s.roots[0], 1, 8 * kEps);
  EXPECT_NEAR(s.roots[1], 3, 8 * kEps);
  EXPECT_NEAR(s.roots[2], 2, 8 * kEps);
  EXPECT_EQ(s.roots[3], kUntouched);
}

TEST(SolveCubic, OneRootHasSinglePrecisionOnly) {
  const Solution s = closedForm({1, 0, 0, -8});
  EXPECT_EQ(s.count, 1);
  EXPECT_NEAR(s.roots[0], 2, 2 * std::numeric_limits<float>::epsilon());
  EXPECT_EQ(s.roots[1], kUntouched);
  const double error = std::fabs(closedForm({1, 0, 0, -10}).roots[0] - std::cbrt(10.0));
  EXPECT_LT(error, 3 * std::numeric_limits<float>::epsilon());
  EXPECT_GT(error, 1000 * kEps);
}

// The sum under the cube root lies just above the middle of two floats, closer than a double can
// tell from the middle itself. So it goes up, where a rounding to double first would send it to
// the even neighbour below.
TEST(SolveCubic, RoundsTheSumUnderTheCubeRootToFloatAtOnce) {
  int told = 0;
  for (int n = 0; n < 400; ++n) {
    const float below = 1 + float(2 * n) * 0x1p-23f;  // an even last bit
    const float above = std::nextafter(below, 2.0f);
    const double middle = (double(below) + double(above)) / 2;
    const double a = 3.1 + n * 0.0137;
    const double d = middle * a;
    const long double excess = static_cast<long double>(d) / a - middle;
    const float byExcess = powf(above, 0.33333334f);
    if (!(excess > 0x1p-62L) || powf(below, 0.33333334f) == byExcess) continue;
    const Solution s = closedForm({a, 0, 0, d});
    ASSERT_EQ(s.count, 1);
    ASSERT_EQ(s.roots[0], -double(byExcess)) << n;
    ++told;
  }
  EXPECT_GT(told, 10);
}

TEST(SolveCubic, RKeepsItsSignAtZero) {
  // x^3 + 3x: Q = -1, R = 0, so S = 1, T = -1 and the root is -(S + T).
  EXPECT_EQ(closedForm({1, 0, 3, 0}).count, 1);
  EXPECT_EQ(closedForm({1, 0, 3, 0}).roots[0], 0);
  EXPECT_TRUE(std::signbit(closedForm({1, 0, 3, 0}).roots[0]));
}

TEST(SolveCubic, ADoubleRootWithZeroDiscriminantComesTwice) {
  const Solution s = closedForm({1, 0, -3, 2});  // 1, 1, -2
  EXPECT_EQ(s.count, 3);
  EXPECT_NEAR(s.roots[0], -2, 4 * kEps);
  EXPECT_NEAR(s.roots[1], 1, 4 * kEps);
  EXPECT_NEAR(s.roots[2], 1, 4 * kEps);
}

TEST(SolveCubic, ATripleRootComesOutAsNaN) {
  for (const Coefficients& k : {Coefficients{1, -3, 3, -1}, Coefficients{1, 0, 0, 0}}) {
    const Solution s = closedForm(k);
    EXPECT_EQ(s.count, 3);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(std::isnan(s.roots[i]));
  }
}

TEST(SolveCubic, ANaNDiscriminantReportsOneNaNRoot) {
  const Solution s = closedForm({1, kNaN, 0, 1});
  EXPECT_EQ(s.count, 1);
  EXPECT_TRUE(std::isnan(s.roots[0]));
}

TEST(SolveQuartic, FourRootsComeByPairs) {
  const Solution s = closedForm({1, 0, -5, 0, 4});
  EXPECT_EQ(s.count, 4);
  const double expected[] = {2, 1, -1, -2};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(s.roots[i], expected[i], 8 * kEps);
}

TEST(SolveQuartic, WithoutALeadingCoefficientIsTheCubic) {
  const Solution s = closedForm({0, 1, -6, 11, -6});
  const Solution cubic = closedForm({1, -6, 11, -6});
  EXPECT_EQ(s.count, 3);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(s.roots[i], cubic.roots[i]);
}

TEST(SolveQuartic, ANegligibleLeadingCoefficientIsDropped) {
  EXPECT_EQ(closedForm({1e-6, 1, -6, 11, -6}).count, 3);
  EXPECT_EQ(closedForm({-1e-6, -1, 6, -11, 6}).count, 3);
  EXPECT_EQ(closedForm({1.1e-5, 1, -6, 11, -6}).count, 4);
  EXPECT_EQ(closedForm({1e-5, 1, -6, 11, -6}).count, 4);  // the limit itself is not below it
}

TEST(SolveQuartic, ASmallLeadingCoefficientBesideNoCubicTermIsNot) {
  // 1e-6 (x^4 - 5e6 x^2 + 4e6): a cubic would report fewer than four roots.
  EXPECT_EQ(closedForm({1e-6, 0, -5, 0, 4}).count, 4);
}

TEST(SolveQuartic, LosesTheRealRootsOfXToTheFourthMinusOne) {
  EXPECT_EQ(closedForm({1, 0, 0, 0, -1}).count, 0);
}

TEST(SolveQuartic, SearchesTheResolventRootFromMinus1e99Upwards) {
  // The resolvent's root comes out as minus infinity, so y = -1e99 stands: W = 1e102 - 2e99.
  const Solution s = closedForm({1, 0, -1e102, 0, -1e204});
  EXPECT_EQ(s.count, 4);
  EXPECT_NEAR(s.roots[0], 1e51, 1e48);
}

TEST(SolveQuartic, SlotsPastTheCountHoldTheRealPartsShifted) {
  // (x - 1)(x - 5)(x^2 + 2x + 10): the complex pair is -1 +- 3i.
  const Solution two = closedForm({1, -4, 3, -50, 50});
  ASSERT_EQ(two.count, 2);
  EXPECT_NEAR(two.roots[2], -1, 1e-6);
  EXPECT_EQ(two.roots[3], two.roots[2]);
  // Mirrored, the real roots come from the other factor; the larger one stays first.
  const Solution mirrored = closedForm({1, 4, 3, 50, 50});
  ASSERT_EQ(mirrored.count, 2);
  EXPECT_NEAR(mirrored.roots[0], -1, 1e-6);
  EXPECT_NEAR(mirrored.roots[1], -5, 1e-6);
  EXPECT_NEAR(mirrored.roots[2], 1, 1e-6);
  EXPECT_EQ(mirrored.roots[3], mirrored.roots[2]);
  // (x^2 - 2x + 2)(x^2 + 4x + 20): the pairs are 1 +- i and -2 +- 4i.
  const Solution none = closedForm({1, 2, 14, -32, 40});
  ASSERT_EQ(none.count, 0);
  EXPECT_EQ(none.roots[0], none.roots[1]);
  EXPECT_EQ(none.roots[2], none.roots[3]);
  EXPECT_NEAR(none.roots[0], -2, 1e-6);
  EXPECT_NEAR(none.roots[2], 1, 1e-6);
}

TEST(SolveQuartic, WithNaNAddsTheShiftToWhatTheSlotsHeld) {
  Solution s;
  for (double& x : s.roots) x = 10;
  solveQuartic(1, 8, 0, 0, kNaN, &s.count, s.roots);
  EXPECT_EQ(s.count, 0);
  for (double x : s.roots) EXPECT_EQ(x, 8);
}

TEST(ClosedForms, HaveTheBitsOfTheirFormulas) {
  std::mt19937_64 generator(kSeed);
  for (int n = 0; n < 60000; ++n) {
    const Coefficients k = awkward(generator, 3 + std::size_t(n % 3));
    const Solution expected = second::closedForm(k);
    const Solution found = closedForm(k);
    ASSERT_EQ(found.count, expected.count) << text(k) << "seed " << kSeed;
    for (int i = 0; i < 4; ++i) {
      ASSERT_TRUE(sameBits(found.roots[i], expected.roots[i]))
          << i << ": " << found.roots[i] << " " << expected.roots[i] << " for " << text(k)
          << "seed " << kSeed;
    }
  }
}

TEST(ClosedForms, AllocateNothing) {
  const std::size_t before = allocations::made();
  double roots[4] = {};
  int count = 0;
  solveQuartic(1, -1, -7, 1, 6, &count, roots);
  const RealRoots guardedRoots = realRoots(1, -1, -7, 1, 6);
  EXPECT_EQ(allocations::made(), before);
  EXPECT_EQ(guardedRoots.count, count);
}
