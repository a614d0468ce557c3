// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/geometry/roots.h"
#include "tests/geometry/polynomials.h"

namespace {

using boost::multiprecision::cpp_rational;
using cornerpin::RealRoots;
using cornerpin::realRoots;
using polynomials::Coefficients;
using polynomials::text;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr unsigned kSeed = 20240611;

RealRoots guarded(const Coefficients& k) {
  if (k.size() == 3) return realRoots(k[0], k[1], k[2]);
  if (k.size() == 4) return realRoots(k[0], k[1], k[2], k[3]);
  return realRoots(k[0], k[1], k[2], k[3], k[4]);
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

// d x^2 + x - d: by the quadratic formula d and -1 / d, both to within d^2 of their size. The one
// lies below the normal numbers; to be sure of the other, the search starts at the largest number.
TEST(RealRoots, MayLieAtBothEndsOfTheRange) {
  const double d = 1e-308;
  for (const Coefficients& k : {Coefficients{d, 1, -d}, Coefficients{-d, -1, d}}) {
    const RealRoots found = guarded(k);
    expectRoots(found, {{-1 / d, 1}, {d, 1}});
    EXPECT_EQ(distinctRoots(k), 2);
    for (const cornerpin::RealRoot& root : found) EXPECT_TRUE(rootIsNextTo(k, root.value));
  }
  expectRoots(realRoots(d, -1, -d), {{-d, 1}, {1 / d, 1}});
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
