// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/deriv.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <utility>

#include <Eigen/Core>
#include <unsupported/Eigen/AutoDiff>

#include "tests/support/deriv_numbers.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

// ---- the forms of the derivatives, bit for bit

// A plain second implementation: the operators as a table of the three cases.
struct Rule {
  std::function<double(double, double)> value;
  std::function<double(double, double, double, double)> both;  // ax, da, bx, db
  std::function<double(double, double, double)> onlyA;         // ax, da, bx
  std::function<double(double, double, double)> onlyB;         // ax, bx, db
};

std::pair<double, Numbers> byRule(const Rule& rule, const Number& a, const Number& b) {
  Numbers d;
  for (int i = 0; i < a.nd() || i < b.nd(); ++i) {
    if (i >= b.nd()) {
      d.push_back(rule.onlyA(a.x(), a.d(i), b.x()));
    } else if (i >= a.nd()) {
      d.push_back(rule.onlyB(a.x(), b.x(), b.d(i)));
    } else {
      d.push_back(rule.both(a.x(), a.d(i), b.x(), b.d(i)));
    }
  }
  return {rule.value(a.x(), b.x()), d};
}

const Rule kSum = {[](double a, double b) { return a + b; },
                   [](double, double da, double, double db) { return da + db; },
                   [](double, double da, double) { return da; },
                   [](double, double, double db) { return db; }};
const Rule kDifference = {[](double a, double b) { return a - b; },
                          [](double, double da, double, double db) { return da - db; },
                          [](double, double da, double) { return da; },
                          [](double, double, double db) { return -db; }};
const Rule kProduct = {[](double a, double b) { return a * b; },
                       [](double a, double da, double b, double db) {
                         const double left = da * b;
                         const double right = a * db;
                         return left + right;
                       },
                       [](double, double da, double b) { return da * b; },
                       [](double a, double, double db) { return a * db; }};
const Rule kQuotient = {[](double a, double b) { return a / b; },
                        [](double a, double da, double b, double db) {
                          const double left = da * b;
                          const double right = a * db;
                          const double square = b * b;
                          return (left - right) / square;
                        },
                        [](double, double da, double b) { return da / b; },
                        [](double a, double b, double db) {
                          const double upper = -a * db;
                          const double square = b * b;
                          return upper / square;
                        }};

// Numbers with 0 to 3 derivatives; every fourth value is an awkward one.
class Source {
 public:
  explicit Source(unsigned seed) : random_(seed) {}
  double value() {
    static const double awkward[] = {0.0,   -0.0,   1.0,  kTiny, -1e-310,
                                     1e308, -1e308, kInf, -kInf, kNan};
    if (random_() % 4 == 0) return awkward[random_() % std::size(awkward)];
    return std::ldexp(std::uniform_real_distribution<>(-1, 1)(random_),
                      static_cast<int>(random_() % 20) - 10);
  }
  Number next() {
    Numbers d(random_() % 4);
    for (double& di : d) di = value();
    return number(value(), d);
  }

 private:
  std::mt19937 random_;
};

using Operation = Number (*)(const Number&, const Number&);

void expectRule(const Rule& rule, Operation operation, Operation compound) {
  const unsigned seed = 20240517;
  Source source(seed);
  for (int trial = 0; trial < 5000; ++trial) {
    const Number a = source.next();
    const Number b = source.next();
    const auto [x, d] = byRule(rule, a, b);
    ASSERT_TRUE(same(operation(a, b), x, d))
        << printed(a) << " and " << printed(b) << ", seed " << seed;
    ASSERT_TRUE(same(compound(a, b), x, d))
        << "compound, " << printed(a) << " and " << printed(b) << ", seed " << seed;
  }
}

TEST(MDerivForms, SumToTheBit) {
  expectRule(
      kSum, [](const Number& a, const Number& b) { return a + b; },
      [](const Number& a, const Number& b) {
        Number c = a;
        return c += b;
      });
}

TEST(MDerivForms, DifferenceToTheBit) {
  expectRule(
      kDifference, [](const Number& a, const Number& b) { return a - b; },
      [](const Number& a, const Number& b) {
        Number c = a;
        return c -= b;
      });
}

TEST(MDerivForms, ProductToTheBit) {
  expectRule(
      kProduct, [](const Number& a, const Number& b) { return a * b; },
      [](const Number& a, const Number& b) {
        Number c = a;
        return c *= b;
      });
}

TEST(MDerivForms, QuotientToTheBit) {
  expectRule(
      kQuotient, [](const Number& a, const Number& b) { return a / b; },
      [](const Number& a, const Number& b) {
        Number c = a;
        return c /= b;
      });
}

TEST(MDerivForms, QuotientOfAOneSidedDerivativeIsOneDivision) {
  // 1 / 49 differs in the last bit from (1 * 49 - 0) / (49 * 49) for some numerators.
  bool differs = false;
  for (int n = 1; n < 100 && !differs; ++n) {
    const double full = (0.1 * n * 49.0) / (49.0 * 49.0);
    const Number q = number(3, {0.1 * n}) / 49.0;
    EXPECT_EQ(q.d(0), 0.1 * n / 49.0);
    differs = q.d(0) != full;
  }
  EXPECT_TRUE(differs);
}

// ---- functions

struct Function {
  const char* name;
  Number (*apply)(const Number&);
  double (*value)(double);
  double (*derivative)(double x, double dx);
};

const Function kFunctions[] = {
    {"sqrt", [](const Number& a) { return sqrt(a); }, [](double x) { return std::sqrt(x); },
     [](double x, double dx) { return dx / (std::sqrt(x) + std::sqrt(x)); }},
    {"sqr", [](const Number& a) { return sqr(a); }, [](double x) { return x * x; },
     [](double x, double dx) { return (x + x) * dx; }},
    {"exp", [](const Number& a) { return exp(a); }, [](double x) { return std::exp(x); },
     [](double x, double dx) { return std::exp(x) * dx; }},
    {"log", [](const Number& a) { return log(a); }, [](double x) { return std::log(x); },
     [](double x, double dx) { return dx / x; }},
    {"pow 3.5", [](const Number& a) { return pow(a, 3.5); },
     [](double x) { return std::pow(x, 3.5); },
     [](double x, double dx) { return std::pow(x, 2.5) * 3.5 * dx; }},
    {"pow -3.5", [](const Number& a) { return pow(a, -3.5); },
     [](double x) { return std::pow(x, -3.5); },
     [](double x, double dx) { return std::pow(x, -4.5) * -3.5 * dx; }},
    {"sin", [](const Number& a) { return sin(a); }, [](double x) { return std::sin(x); },
     [](double x, double dx) { return std::cos(x) * dx; }},
    {"cos", [](const Number& a) { return cos(a); }, [](double x) { return std::cos(x); },
     [](double x, double dx) { return -std::sin(x) * dx; }},
    {"tan", [](const Number& a) { return tan(a); }, [](double x) { return std::tan(x); },
     [](double x, double dx) {
       const double square = std::tan(x) * std::tan(x);
       return (square + 1.0) * dx;
     }},
    {"asin", [](const Number& a) { return asin(a); }, [](double x) { return std::asin(x); },
     [](double x, double dx) {
       const double square = x * x;
       return 1.0 / std::sqrt(1.0 - square) * dx;
     }},
    {"acos", [](const Number& a) { return acos(a); }, [](double x) { return std::acos(x); },
     [](double x, double dx) {
       const double square = x * x;
       return -1.0 / std::sqrt(1.0 - square) * dx;
     }},
    {"atan", [](const Number& a) { return atan(a); }, [](double x) { return std::atan(x); },
     [](double x, double dx) {
       const double square = x * x;
       return 1.0 / (square + 1.0) * dx;
     }},
};

TEST(MDerivForms, FunctionsToTheBit) {
  const unsigned seed = 4711;
  Source source(seed);
  for (int trial = 0; trial < 2000; ++trial) {
    const Number a = source.next();
    for (const Function& f : kFunctions) {
      Numbers d;
      for (int i = 0; i < a.nd(); ++i) d.push_back(f.derivative(a.x(), a.d(i)));
      ASSERT_TRUE(same(f.apply(a), f.value(a.x()), d))
          << f.name << " of " << printed(a) << ", seed " << seed;
    }
  }
}

TEST(MDerivAllocations, EveryFunctionMakesOneArray) {
  const Number a = number(0.5, {0, 1});
  for (const Function& f : kFunctions) {
    EXPECT_EQ(allocationsOf([&] { const Number c = f.apply(a); }), 1u) << f.name;
  }
}

TEST(MDerivAllocations, FunctionsOfConstantsMakeNone) {
  const Number a = 0.5;
  for (const Function& f : kFunctions) {
    EXPECT_EQ(allocationsOf([&] { const Number c = f.apply(a); }), 0u) << f.name;
  }
}

// ---- against other ways to differentiate

// A formula that touches every operation, for x, y, z in (0.1, 0.9).
template <class T>
T formula(const T& x, const T& y, const T& z) {
  using std::acos;
  using std::asin;
  using std::cos;
  using std::exp;
  using std::log;
  using std::pow;
  using std::sin;
  using std::sqrt;
  using std::tan;
  const T u = sqrt(x * y + 1.0) / (z + 2.0) - log(y + z);
  const T v = asin(x * z) * acos(y * z) + exp(-x) * tan(z);
  const T w = pow(x + y, 3.5) - pow(z + 1.0, -3.5);
  return sin(u) * cos(v) + w / (u * u + 1.0);
}

TEST(MDerivOracle, AgreesWithAnotherLibrary) {
  const unsigned seed = 99;
  std::mt19937 random(seed);
  std::uniform_real_distribution<> uniform(0.1, 0.9);
  using Dual = Eigen::AutoDiffScalar<Eigen::Vector3d>;
  for (int trial = 0; trial < 500; ++trial) {
    const double p[] = {uniform(random), uniform(random), uniform(random)};
    const Number ours = formula(number(p[0], {1}), number(p[1], {0, 1}), number(p[2], {0, 0, 1}));
    const Dual theirs = formula(Dual(p[0], 3, 0), Dual(p[1], 3, 1), Dual(p[2], 3, 2));
    const double scale = 1 + theirs.derivatives().norm();
    ASSERT_EQ(ours.nd(), 3);
    EXPECT_NEAR(ours.x(), theirs.value(), 100 * kEps * scale) << "seed " << seed;
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(ours.d(i), theirs.derivatives()[i], 100 * kEps * scale) << "seed " << seed;
    }
  }
}

TEST(MDerivOracle, AgreesWithCentralDifferences) {
  const unsigned seed = 7;
  std::mt19937 random(seed);
  std::uniform_real_distribution<> uniform(0.2, 0.8);
  const double h = std::cbrt(kEps);
  for (int trial = 0; trial < 500; ++trial) {
    const double p[] = {uniform(random), uniform(random), uniform(random)};
    const Number ours = formula(number(p[0], {1}), number(p[1], {0, 1}), number(p[2], {0, 0, 1}));
    for (int i = 0; i < 3; ++i) {
      double above[] = {p[0], p[1], p[2]};
      double below[] = {p[0], p[1], p[2]};
      above[i] += h;
      below[i] -= h;
      const double slope =
          (formula(above[0], above[1], above[2]) - formula(below[0], below[1], below[2])) /
          (above[i] - below[i]);
      EXPECT_NEAR(ours.d(i), slope, 200 * h * h * (1 + std::abs(slope))) << "seed " << seed;
    }
  }
}

TEST(MDerivOracle, SquareAndArcTangentAgreeWithCentralDifferences) {
  const double h = std::cbrt(kEps);
  for (const double x : {-3.0, -0.5, 0.0, 0.7, 20.0}) {
    EXPECT_NEAR(sqr(number(x, {1})).d(0), ((x + h) * (x + h) - (x - h) * (x - h)) / (2 * h),
                10 * (1 + x * x) * kEps / h);
    EXPECT_NEAR(atan(number(x, {1})).d(0), (std::atan(x + h) - std::atan(x - h)) / (2 * h),
                10 * kEps / h);
  }
}

}  // namespace
