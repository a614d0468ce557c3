// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/roots.h"

#include <gtest/gtest.h>
#include <math.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "tests/support/allocations.h"

namespace {

using boost::multiprecision::cpp_rational;
using cornerpin::RealRoots;
using cornerpin::realRoots;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kUntouched = -12345.5;
constexpr unsigned kSeed = 20240611;

using Coefficients = std::vector<double>;  // highest power first

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

RealRoots guarded(const Coefficients& k) {
  if (k.size() == 3) return realRoots(k[0], k[1], k[2]);
  if (k.size() == 4) return realRoots(k[0], k[1], k[2], k[3]);
  return realRoots(k[0], k[1], k[2], k[3], k[4]);
}

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

std::string text(const Coefficients& k) {
  std::string s;
  char number[40];
  for (double c : k) std::snprintf(number, sizeof number, "%a ", c), s += number;
  return s;
}

std::string text(const RealRoots& roots) {
  std::string s;
  char number[60];
  for (const auto& r : roots) {
    std::snprintf(number, sizeof number, "%.17g(%d) ", r.value, r.multiplicity);
    s += number;
  }
  return s;
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

// ---- Exact arithmetic ----

using Exact = std::vector<cpp_rational>;  // highest power first

Exact exact(const Coefficients& k) { return Exact(k.begin(), k.end()); }

cpp_rational value(const Exact& k, const cpp_rational& x) {
  cpp_rational sum = 0;
  for (const cpp_rational& c : k) sum = sum * x + c;
  return sum;
}

Exact derivative(const Exact& k) {
  Exact result;
  for (std::size_t i = 0; i + 1 < k.size(); ++i) result.push_back(k[i] * int(k.size() - 1 - i));
  return result;
}

Exact remainder(Exact a, const Exact& b) {
  while (a.size() >= b.size()) {
    const cpp_rational factor = a[0] / b[0];
    for (std::size_t i = 0; i < b.size(); ++i) a[i] -= factor * b[i];
    a.erase(a.begin());
  }
  while (!a.empty() && a[0] == 0) a.erase(a.begin());
  return a;
}

// The number of distinct real roots by Sturm's theorem. The leading coefficient is not 0.
int distinctRoots(const Coefficients& k) {
  std::vector<Exact> chain{exact(k), derivative(exact(k))};
  while (chain.back().size() > 1) {
    Exact next = remainder(chain[chain.size() - 2], chain.back());
    if (next.empty()) break;
    for (cpp_rational& c : next) c = -c;
    chain.push_back(next);
  }
  const auto changes = [&](bool atMinusInfinity) {
    int count = 0, last = 0;
    for (const Exact& f : chain) {
      int sign = f[0] > 0 ? 1 : -1;
      if (atMinusInfinity && f.size() % 2 == 0) sign = -sign;
      if (last != 0 && sign != last) ++count;
      last = sign;
    }
    return count;
  };
  return changes(true) - changes(false);
}

// Whether the polynomial has a root between the two neighbours of x.
bool rootIsNextTo(const Coefficients& k, double x) {
  const Exact f = exact(k);
  const cpp_rational below = value(f, cpp_rational(std::nextafter(x, -kInfinity)));
  const cpp_rational above = value(f, cpp_rational(std::nextafter(x, kInfinity)));
  return value(f, cpp_rational(x)) == 0 || (below < 0) != (above < 0);
}

Coefficients fromRoots(double leading, const std::vector<double>& roots) {
  Coefficients k{leading};
  for (double r : roots) {
    k.push_back(0);
    for (std::size_t i = k.size() - 1; i > 0; --i) k[i] -= r * k[i - 1];
  }
  return k;
}

void expectRoots(const RealRoots& found, const std::vector<cornerpin::RealRoot>& expected) {
  ASSERT_EQ(found.count, int(expected.size())) << text(found);
  for (int i = 0; i < found.count; ++i) {
    EXPECT_EQ(found[i].value, expected[std::size_t(i)].value) << text(found);
    EXPECT_EQ(found[i].multiplicity, expected[std::size_t(i)].multiplicity) << text(found);
  }
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

TEST(RealRoots, AreSortedWithMultiplicities) {
  expectRoots(realRoots(1, -3, 2), {{1, 1}, {2, 1}});
  expectRoots(realRoots(-1, 6, -11, 6), {{1, 1}, {2, 1}, {3, 1}});
  expectRoots(realRoots(1, 0, -5, 0, 4), {{-2, 1}, {-1, 1}, {1, 1}, {2, 1}});
  expectRoots(realRoots(1, -2, 1), {{1, 2}});
  expectRoots(realRoots(1, 0, 1), {});
}

TEST(RealRoots, FindWhatTheClosedFormsLose) {
  expectRoots(realRoots(1, 0, 0, 0, -1), {{-1, 1}, {1, 1}});
  expectRoots(realRoots(1, -3, 3, -1), {{1, 3}});
  expectRoots(realRoots(1, 0, 0, -8), {{2, 1}});
  expectRoots(realRoots(1, -4, 6, -4, 1), {{1, 4}});
  expectRoots(realRoots(1, 0, -2, 0, 1), {{-1, 2}, {1, 2}});
}

TEST(RealRoots, LeadingZerosLowerTheDegree) {
  expectRoots(realRoots(0, 1, -3, 2), {{1, 1}, {2, 1}});
  expectRoots(realRoots(0, 0, 0, 2, -4), {{2, 1}});
  expectRoots(realRoots(0, 0, 5), {});
}

TEST(RealRoots, TrailingZerosAreRootsAtZero) {
  expectRoots(realRoots(1, 0, 0, 0, 0), {{0, 4}});
  expectRoots(realRoots(1, 0, -4, 0, 0), {{-2, 1}, {0, 2}, {2, 1}});
  expectRoots(realRoots(1, 1e-20, 0), {{-1e-20, 1}, {0, 1}});
  EXPECT_FALSE(std::signbit(realRoots(-1, 0, 0)[0].value));
}

TEST(RealRoots, OfEveryIntegerDoubleRootAreFound) {
  for (int r = -10; r <= 10; ++r) {
    for (int s = -10; s <= 10; ++s) {
      if (s == r) continue;
      const RealRoots found = guarded(fromRoots(3, {double(r), double(r), double(s)}));
      const cornerpin::RealRoot twice{double(r), 2}, once{double(s), 1};
      using Expected = std::vector<cornerpin::RealRoot>;
      expectRoots(found, r < s ? Expected{twice, once} : Expected{once, twice});
    }
  }
}

TEST(RealRoots, ThatRoundToTheSameDoubleAreOneEntry) {
  expectRoots(realRoots(-0x1p900, 0x1p-900, 0), {{0, 2}});  // 0 and 2^-1800
}

TEST(RealRoots, CountAsOneUpToEightEpsOfTheTerms) {
  // At 1 the terms add up to 4, so the limit is 32 eps.
  expectRoots(realRoots(1, -2, 1 - 31 * kEps), {{1, 2}});
  expectRoots(realRoots(1, -2, 1 + 31 * kEps), {{1, 2}});
  EXPECT_EQ(realRoots(1, -2, 1 - 33 * kEps).count, 2);
  EXPECT_EQ(realRoots(1, -2, 1 + 33 * kEps).count, 0);
}

TEST(RealRoots, TellARoundedDoubleRootFromTwoCloseOnes) {
  expectRoots(realRoots(1, -0.2, 0.1 * 0.1), {{0.1, 2}});
  const double gap = std::ldexp(1, -20);
  expectRoots(realRoots(1, -2 - gap, 1 + gap), {{1, 1}, {1 + gap, 1}});
}

TEST(RealRoots, RefuseWhatHasNoAnswer) {
  const auto messageOf = [](const std::function<void()>& action) -> std::string {
    try {
      action();
    } catch (const LvIllegalArgumentException& e) {
      return e.message.c_str();
    }
    return "nothing thrown";
  };
  EXPECT_EQ(messageOf([] { realRoots(1, kNaN, 0); }), "NaN");
  EXPECT_EQ(messageOf([] { realRoots(1, 2, 3, -kInfinity); }), "infinite number");
  EXPECT_EQ(messageOf([] { realRoots(0, 0, -0.0, 0, 0); }), "realRoots: every number is a root");
}

TEST(RealRoots, AreAPlainRange) {
  double sum = 0;
  for (const cornerpin::RealRoot& root : realRoots(1, -6, 11, -6)) sum += root.value;
  EXPECT_EQ(sum, 6);
}

TEST(RealRoots, SurviveCoefficientsOfAnySize) {
  const double big = std::numeric_limits<double>::max();
  const double tiny = std::numeric_limits<double>::denorm_min();
  expectRoots(realRoots(big, 0, -big), {{-1, 1}, {1, 1}});
  expectRoots(realRoots(tiny, 0, -4 * tiny), {{-2, 1}, {2, 1}});
  expectRoots(realRoots(tiny, 0, -big), {});  // beyond the range of double
  const RealRoots far = realRoots(0x1p-900, 1, 0x1p-900);
  ASSERT_EQ(far.count, 2);
  EXPECT_EQ(far[0].value, -0x1p900);
  EXPECT_EQ(far[1].value, -0x1p-900);
}

TEST(RealRoots, ScaleWithTheVariableAndTheCoefficients) {
  for (int e : {-200, -60, 60, 200}) {
    const double z = std::ldexp(1, e);
    const RealRoots found =
        realRoots(0x1p-100, -6 * z * 0x1p-100, 11 * z * z * 0x1p-100, -6 * z * z * z * 0x1p-100);
    expectRoots(found, {{z, 1}, {2 * z, 1}, {3 * z, 1}});
  }
}

// Every root is next to an exact one, and their number is that of Sturm's theorem.
TEST(RealRoots, OfRandomPolynomialsAreNextToExactRootsAndComplete) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int n = 0; n < 1500; ++n) {
    Coefficients k(3 + std::size_t(n % 3));
    for (double& c : k)
      c = n % 2 == 0 ? unit(generator) : std::ldexp(unit(generator), int(generator() % 80) - 40);
    const RealRoots found = guarded(k);
    ASSERT_EQ(found.count, distinctRoots(k)) << text(k) << "seed " << kSeed;
    for (int i = 0; i < found.count; ++i) {
      ASSERT_EQ(found[i].multiplicity, 1) << text(k) << "seed " << kSeed;
      ASSERT_TRUE(rootIsNextTo(k, found[i].value)) << text(k) << "seed " << kSeed;
      ASSERT_TRUE(i == 0 || found[i - 1].value < found[i].value);
    }
  }
}

// The rounding of the coefficients splits a root of multiplicity m by about eps^(1/m).
TEST(RealRoots, OfRoundedMultipleRootsKeepTheirMultiplicity) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int n = 0; n < 3000; ++n) {
    const double r = unit(generator);
    const int m = 2 + n % 3;
    const RealRoots found = guarded(fromRoots(1, std::vector<double>(std::size_t(m), r)));
    ASSERT_EQ(found.count, 1) << m << " times " << r << ": " << text(found) << "seed " << kSeed;
    EXPECT_EQ(found[0].multiplicity, m);
    EXPECT_NEAR(found[0].value, r, 8 * kEps * std::fabs(r));
  }
}

TEST(RealRoots, OfTwoRoundedDoubleRootsAreTwoDoubleRoots) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<double> unit(0.1, 1);
  for (int n = 0; n < 1000; ++n) {
    const double r = -unit(generator), s = unit(generator);
    const RealRoots found = guarded(fromRoots(1, {r, s, r, s}));
    ASSERT_EQ(found.count, 2) << r << " " << s << ": " << text(found) << "seed " << kSeed;
    EXPECT_EQ(found[0].multiplicity, 2);
    EXPECT_EQ(found[1].multiplicity, 2);
    EXPECT_NEAR(found[0].value, r, 50 * kEps);
    EXPECT_NEAR(found[1].value, s, 50 * kEps);
  }
}
