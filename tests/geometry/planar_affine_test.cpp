// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/planar_affine.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/allocations.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

std::vector<double> elements(const mat2& m) { return {m(), m() + 4}; }
std::vector<double> elements(const mat3& m) { return {m(), m() + 9}; }
std::vector<double> elements(const vec3& v) { return {v(), v() + 3}; }
std::vector<double> elements(const vec2& v) { return {v(), v() + 2}; }

using Elements = std::vector<double>;

const mat2 k1to4({1, 2}, {3, 4});
const mat3 k1to9({1, 2, 3}, {4, 5, 6}, {7, 8, 9});

// m times the column (x, y, 1).
vec2 mapped(const mat3& m, double x, double y) {
  return vec2(m[0].x * x + m[1].x * y + m[2].x, m[0].y * x + m[1].y * y + m[2].y);
}

template <class T>
std::string text(const T& value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

template <class T>
T read(const std::string& from, T value = T()) {
  std::istringstream is(from);
  is >> value;
  return value;
}

template <class Action>
std::string standardErrorOf(Action action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

// Whether `action`, run in a process of its own, is still running after a quarter of a second.
template <class Action>
bool doesNotReturn(Action action) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    action();
    _exit(0);
  }
  usleep(250000);
  int status = 0;
  const bool running = waitpid(child, &status, WNOHANG) == 0;
  if (running) {
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
  }
  return running;
}

template <class T>
bool readingDoesNotReturn(const std::string& from) {
  return doesNotReturn([&] {
    std::istringstream is(from);
    T value;
    is >> value;
  });
}

}  // namespace

TEST(PlanarAffine, DefaultConstructionGivesZeros) {
  EXPECT_EQ(elements(mat2()), Elements(4, 0));
  EXPECT_EQ(elements(mat3()), Elements(9, 0));
  EXPECT_EQ(elements(vec2()), Elements(2, 0));
  EXPECT_EQ(elements(vec3()), Elements(3, 0));
}

TEST(PlanarAffine, ConstructionFromOneNumberFillsEveryElement) {
  EXPECT_EQ(elements(mat2(2.0)), Elements(4, 2));
  EXPECT_EQ(elements(mat3(0.5)), Elements(9, 0.5));
}

TEST(PlanarAffine, ElementsAreStoredByColumns) {
  EXPECT_EQ(elements(k1to4), (Elements{1, 2, 3, 4}));
  EXPECT_EQ(elements(k1to9), (Elements{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(k1to4[1].x, 3);
  EXPECT_EQ(k1to9[2].y, 8);
}

TEST(PlanarAffine, ColumnsAndElementsCanBeWritten) {
  mat3 m = k1to9;
  m[1].z = 60;
  m()[8] = 90;
  EXPECT_EQ(elements(m), (Elements{1, 2, 3, 4, 5, 60, 7, 8, 90}));
}

TEST(PlanarAffine, ArithmeticIsElementWise) {
  EXPECT_EQ(elements(k1to4 + mat2(10.0)), (Elements{11, 12, 13, 14}));
  EXPECT_EQ(elements(k1to4 - mat2(1.0)), (Elements{0, 1, 2, 3}));
  EXPECT_EQ(elements(k1to4 * 2.0), (Elements{2, 4, 6, 8}));
  EXPECT_EQ(elements(2.0 * k1to9), elements(k1to9 * 2.0));
  EXPECT_EQ(elements(k1to9 + k1to9), elements(k1to9 * 2.0));
  EXPECT_EQ(elements(k1to9 - k1to9), Elements(9, 0));
  EXPECT_EQ(elements(-k1to4), (Elements{-1, -2, -3, -4}));
  EXPECT_TRUE(std::signbit((-mat3())()[4]));
}

TEST(PlanarAffine, AssigningOperatorsReturnTheMatrixAndTakeItselfAsArgument) {
  mat3 m = k1to9;
  EXPECT_EQ(&(m += m), &m);
  EXPECT_EQ(elements(m), elements(k1to9 * 2.0));
  EXPECT_EQ(&(m -= m), &m);
  EXPECT_EQ(elements(m), Elements(9, 0));
  mat2 n = k1to4;
  EXPECT_EQ(&(n *= 3.0), &n);
  EXPECT_EQ(elements(n), (Elements{3, 6, 9, 12}));
}

TEST(PlanarAffine, DivisionMultipliesByTheReciprocal) {
  // 5 / 49 and 5 * (1 / 49) differ in the last bit.
  const volatile double five = 5, divisor = 49;
  const double byReciprocal = five * (1 / divisor);
  ASSERT_NE(byReciprocal, five / divisor);
  EXPECT_EQ(elements(mat2(5.0) / 49.0), Elements(4, byReciprocal));
  EXPECT_EQ(elements(mat3(5.0) / 49.0), Elements(9, byReciprocal));
  mat2 m(5.0);
  m /= 49.0;
  EXPECT_EQ(elements(m), Elements(4, byReciprocal));
}

TEST(PlanarAffine, DivisionByZeroGivesInfinitiesAndNaNs) {
  EXPECT_EQ((k1to4 / 0.0)()[0], kInfinity);
  EXPECT_TRUE(std::isnan((mat3() / 0.0)()[0]));
}

TEST(PlanarAffine, ApplyRunsInStorageOrder) {
  static Elements seen;
  seen.clear();
  mat3 m = k1to9;
  EXPECT_EQ(&m.apply([](double e) {
    seen.push_back(e);
    return e * e;
  }),
            &m);
  EXPECT_EQ(seen, elements(k1to9));
  EXPECT_EQ(elements(m), (Elements{1, 4, 9, 16, 25, 36, 49, 64, 81}));
  mat2 n = k1to4;
  EXPECT_EQ(elements(n.apply(std::sqrt)), (Elements{1, std::sqrt(2.0), std::sqrt(3.0), 2}));
}

TEST(PlanarAffine, Transposes) {
  EXPECT_EQ(elements(k1to4.transpose()), (Elements{1, 3, 2, 4}));
  EXPECT_EQ(elements(k1to9.transpose()), (Elements{1, 4, 7, 2, 5, 8, 3, 6, 9}));
}

TEST(PlanarAffine, Determinants) {
  EXPECT_EQ(k1to4.determinant(), 1 * 4 - 3 * 2);
  EXPECT_EQ(k1to9.determinant(), 0);
  EXPECT_EQ(identity2D().determinant(), 1);
  EXPECT_EQ(mat3({2, 0, 0}, {1, 3, 0}, {4, 5, 7}).determinant(), 42);
  EXPECT_EQ(mat3({0, 1, 0}, {1, 0, 0}, {0, 0, 1}).determinant(), -1);
}

TEST(PlanarAffine, InverseOfMat2TimesItIsTheIdentity) {
  EXPECT_EQ(elements(k1to4.inverse()), (Elements{-2, 1, 1.5, -0.5}));
  EXPECT_EQ(elements(k1to4 * k1to4.inverse()), (Elements{1, 0, 0, 1}));
}

TEST(PlanarAffine, InverseOfASingularMat2IsNotFinite) {
  for (double e : elements(mat2(1.0).inverse())) EXPECT_FALSE(std::isfinite(e));
}

TEST(PlanarAffine, InverseOfMat3IsAllZeros) {
  EXPECT_EQ(elements(identity2D().inverse()), Elements(9, 0));
  EXPECT_EQ(elements(k1to9.inverse()), Elements(9, 0));
}

TEST(PlanarAffine, ProductOfMat2IsTheOrdinaryOne) {
  EXPECT_EQ(elements(k1to4 * mat2({5, 6}, {7, 8})), (Elements{23, 34, 31, 46}));
}

TEST(PlanarAffine, ProductOfMat3AppliesTheRightOneFirst) {
  const mat3 m = translation2D({10, 20}) * scaling2D({2, 3});
  EXPECT_EQ(elements(mapped(m, 1, 1)), (Elements{12, 23}));
  EXPECT_EQ(elements(k1to9 * k1to9), (Elements{30, 36, 42, 66, 81, 96, 102, 126, 150}));
}

TEST(PlanarAffine, NaNIsUnequalToItself) {
  EXPECT_TRUE(k1to9 == k1to9);
  EXPECT_FALSE(k1to9 != k1to9);
  EXPECT_TRUE(mat2(0.0) == mat2(-0.0));
  mat2 m = k1to4;
  m[1].y = 5;
  EXPECT_FALSE(m == k1to4);
  EXPECT_TRUE(m != k1to4);
  m[1].y = kNaN;
  EXPECT_FALSE(m == m);
  EXPECT_TRUE(m != m);
}

TEST(PlanarAffine, SwapsReturnACopy) {
  EXPECT_EQ(elements(k1to9.swapCols(0, 2)), (Elements{7, 8, 9, 4, 5, 6, 1, 2, 3}));
  EXPECT_EQ(elements(k1to9.swapRows(0, 1)), (Elements{2, 1, 3, 5, 4, 6, 8, 7, 9}));
  EXPECT_EQ(elements(k1to9.swapColsRows(1, 2)), (Elements{1, 3, 2, 7, 9, 8, 4, 6, 5}));
  EXPECT_EQ(elements(k1to9.swapColsRows(1, 1)), elements(k1to9));
}

TEST(PlanarAffine, SwapsOutsideTheMatrixReportAndChangeNothing) {
  mat3 copy;
  EXPECT_EQ(standardErrorOf([&] { copy = k1to9.swapCols(0, 3); }),
            "mat3 [] operator: illegal access; index = 3\n");
  EXPECT_EQ(elements(copy), elements(k1to9));
  EXPECT_EQ(standardErrorOf([&] { copy = k1to9.swapRows(-1, 0); }),
            "mat3 [] operator: illegal access; index = -1\n");
  EXPECT_EQ(standardErrorOf([&] { copy = k1to9.swapColsRows(0, 9); }),
            "mat3 [] operator: illegal access; index = 9\n");
  EXPECT_EQ(elements(copy), elements(k1to9));
}

TEST(PlanarAffineIndex, Mat3ReportsWhatIsOutside) {
  const mat3 a;
  for (int i : {-1, 3, INT_MIN, INT_MAX}) {
    EXPECT_EQ(standardErrorOf([&] { (void)a[i]; }),
              "mat3 [] operator: illegal access; index = " + std::to_string(i) + "\n");
  }
  EXPECT_EQ(standardErrorOf([&] { (void)a[0], (void)a[1], (void)a[2]; }), "");
}

TEST(PlanarAffineIndex, Mat2ReportsBelowZeroAndAboveTwo) {
  mat2 a;
  for (int i : {-1, 3, INT_MIN, INT_MAX}) {
    EXPECT_EQ(standardErrorOf([&] { (void)a[i]; }),
              "mat2 [] operator: illegal access; index = " + std::to_string(i) + "\n");
  }
}

TEST(PlanarAffineIndex, TheReportDoesNotFollowTheFormattingOfTheStream) {
  // Writes every group of two digits apart.
  struct Pairs : std::numpunct<char> {
    char do_thousands_sep() const override { return '_'; }
    std::string do_grouping() const override { return "\2"; }
  };
  const mat3 a;
  const std::locale plain = std::cerr.getloc();
  std::ostream& stream = std::cerr;
  const std::ios::fmtflags flags = stream.flags();
  stream.imbue(std::locale(plain, new Pairs));
  stream << std::hex << std::showbase << std::uppercase << std::showpos << std::setfill('*');
  const std::string hexadecimal = standardErrorOf([&] { (void)a[1031]; });
  stream.flags(flags);
  stream.width(60);
  const std::string wide = standardErrorOf([&] { (void)a[1031]; });
  const std::streamsize width = stream.width(0);
  stream.fill(' ');
  stream.imbue(plain);
  EXPECT_EQ(hexadecimal, "mat3 [] operator: illegal access; index = 1031\n");
  EXPECT_EQ(wide, "mat3 [] operator: illegal access; index = 1031\n");
  EXPECT_EQ(width, 60) << "what the caller set up is left to the caller";
}

TEST(PlanarAffineIndex, TwoOfMat2IsOneColumnPastTheEndWithoutAMessage) {
  const mat2 a;
  const vec2* column = nullptr;
  EXPECT_EQ(standardErrorOf([&] { column = &a[2]; }), "");
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(column),
            reinterpret_cast<std::uintptr_t>(&a) + sizeof(mat2));
}

TEST(PlanarAffineBuilders, GiveTheirColumns) {
  EXPECT_EQ(elements(identity2D()), (Elements{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_EQ(elements(translation2D({5, 6})), (Elements{1, 0, 0, 0, 1, 0, 5, 6, 1}));
  EXPECT_EQ(elements(scaling2D({2, 3})), (Elements{2, 0, 0, 0, 3, 0, 0, 0, 1}));
}

TEST(PlanarAffineBuilders, RotationIsCounterClockwiseAboutItsCentre) {
  const mat3 m = rotation2D({3, 4}, 90);
  const vec2 side = mapped(m, 4, 4);
  EXPECT_NEAR(side.x, 3, 8 * kEps);
  EXPECT_NEAR(side.y, 5, 8 * kEps);
  const vec2 centre = mapped(m, 3, 4);
  EXPECT_NEAR(centre.x, 3, 8 * kEps);
  EXPECT_NEAR(centre.y, 4, 8 * kEps);
}

TEST(PlanarAffineBuilders, RotationHasTheBitsOfItsFormula) {
  for (double degrees = -400; degrees < 400; degrees += 7.3) {
    const double angle = 3.141592653589793 * degrees / 180;
    const double c = std::cos(angle), s = std::sin(angle);
    EXPECT_EQ(elements(rotation2D({0.1, 0.7}, degrees)),
              (Elements{c, s, 0, -s, c, 0, (1 - c) * 0.1 + s * 0.7, (1 - c) * 0.7 - s * 0.1, 1}))
        << degrees;
  }
}

TEST(PlanarAffineEq, ComparesToAThousandth) {
  EXPECT_TRUE(eq(1.0, 1.0005));
  EXPECT_FALSE(eq(1.0, 1.003));
  EXPECT_FALSE(eq(0.0, 0.002));
  EXPECT_TRUE(eq(0.0, 0.0005));
  EXPECT_TRUE(eq(1e6, 1.0019e6));
  EXPECT_FALSE(eq(1e6, -1e6));
}

TEST(PlanarAffineEq, OfSmallNumbersAllowsLessThanAThousandth) {
  // (float)0.001 is above the double 0.001, so a difference of that size is too large.
  EXPECT_FALSE(eq(0.001, 0));
  EXPECT_TRUE(eq(std::nextafter(0.001f, 0.0f), 0));
}

TEST(PlanarAffineEq, KeepsTheToleranceInDouble) {
  int told = 0;
  for (float s = 1.5f; s < 1.51f; s = std::nextafter(s, 2.0f)) {
    float difference = float(s * 0.001);
    if (difference < s * 0.001) difference = std::nextafter(difference, 1.0f);
    const double a = (double(s) + difference) / 2, b = (double(s) - difference) / 2;
    // A tolerance in float would let this difference pass.
    if (!(s * 0.001f > difference) || float(a) + float(b) != s) continue;
    EXPECT_FALSE(eq(a, b)) << s;
    ++told;
  }
  EXPECT_GT(told, 10);
}

TEST(PlanarAffineEq, AddsTheSizesInSinglePrecision) {
  // 3e38 + 1e38 is beyond the range of float, so the tolerance is infinite.
  EXPECT_TRUE(eq(3e38, 1e38));
  EXPECT_FALSE(eq(3e38, -3e38));  // here the difference is infinite as well
}

TEST(PlanarAffineEq, SubtractsInDouble) {
  // The floats next to a and b differ by more than 0.001, a and b by less.
  const double a = (13421772 - 0.4) * 0x1p-25, b = (13421772 - 33555 + 0.4) * 0x1p-25;
  ASSERT_GT(static_cast<float>(a) - static_cast<float>(b), 0.001);
  ASSERT_LT(a - b, 0.001);
  EXPECT_TRUE(eq(a, b));
}

TEST(PlanarAffineEq, NonFiniteEqualsEverything) {
  EXPECT_TRUE(eq(kInfinity, 3));
  EXPECT_TRUE(eq(3, -kInfinity));
  EXPECT_TRUE(eq(kNaN, 0));
  EXPECT_TRUE(eq(0, kNaN));
}

TEST(PlanarAffineEq, BeyondTheRangeOfFloatTheToleranceIsInfinite) {
  EXPECT_TRUE(eq(1e300, 1e300));
  EXPECT_FALSE(eq(1e300, 2e300));  // the difference rounds to infinity too
}

TEST(PlanarAffineText, WritesRows) {
  EXPECT_EQ(text(vec2(1, 2.5)), "| 1 2.5 |");
  EXPECT_EQ(text(vec3(1, -2, 3)), "| 1 -2 3 |");
  EXPECT_EQ(text(k1to4), "| 1 3 |\n| 2 4 |");
  EXPECT_EQ(text(k1to9), "| 1 4 7 |\n| 2 5 8 |\n| 3 6 9 |");
}

TEST(PlanarAffineText, FollowsTheFormattingOfTheStream) {
  std::ostringstream os;
  os.precision(3);
  os << std::fixed << vec2(1, 2.0 / 3);
  EXPECT_EQ(os.str(), "| 1.000 0.667 |");
}

TEST(PlanarAffineText, ReadsWithAndWithoutBars) {
  EXPECT_EQ(elements(read<vec3>("| 1 2 3 |")), (Elements{1, 2, 3}));
  EXPECT_EQ(elements(read<vec3>(" \t\n1 2\n3")), (Elements{1, 2, 3}));
  EXPECT_EQ(elements(read<vec2>("|1 2|")), (Elements{1, 2}));
  EXPECT_EQ(elements(read<vec2>("-1e3 2")), (Elements{-1000, 2}));
}

TEST(PlanarAffineText, ConsumesAnyCharacterForTheClosingBar) {
  std::istringstream is("| 1 2 \n x7");
  vec2 v;
  is >> v;
  EXPECT_EQ(elements(v), (Elements{1, 2}));
  EXPECT_EQ(is.get(), '7');
}

TEST(PlanarAffineText, WithoutBarsStopsBehindTheNumbers) {
  std::istringstream is("1 2|");
  vec2 v;
  is >> v;
  EXPECT_EQ(elements(v), (Elements{1, 2}));
  EXPECT_EQ(is.get(), '|');
}

TEST(PlanarAffineText, AFailedReadLeavesTheTargetAlone) {
  for (const char* bad : {"| 1 x |", "| 1", "x", "1 y", "| 1 2 ", "| 1 2   "}) {
    std::istringstream is(bad);
    vec2 v(8, 9);
    is >> v;
    EXPECT_TRUE(is.fail()) << bad;
    EXPECT_EQ(elements(v), (Elements{8, 9})) << bad;
  }
}

TEST(PlanarAffineText, NumbersBehindABarMayEndTheStream) {
  std::istringstream is("| 1 2");
  vec2 v(8, 9);
  is >> v;
  EXPECT_FALSE(is.fail());
  EXPECT_TRUE(is.eof());
  EXPECT_EQ(elements(v), (Elements{1, 2}));
  EXPECT_EQ(elements(read<vec3>("|1 2 3", vec3(7, 8, 9))), (Elements{1, 2, 3}));
}

TEST(PlanarAffineText, AMatrixReadBackIsTransposed) {
  EXPECT_EQ(elements(read<mat3>(text(k1to9))), elements(k1to9.transpose()));
  EXPECT_EQ(elements(read<mat2>(text(k1to4))), elements(k1to4.transpose()));
}

TEST(PlanarAffineText, AMatrixStaysWhenItsLastNumberEndsTheStream) {
  EXPECT_EQ(elements(read<mat2>("1 2 3 4", k1to4.transpose())), elements(k1to4.transpose()));
  EXPECT_EQ(elements(read<mat2>("| 1 2 | | 3 4", mat2(7.0))), Elements(4, 7));
  EXPECT_EQ(elements(read<mat2>("1 2 3 4 ")), elements(k1to4));
}

TEST(PlanarAffineText, AMatrixStaysWhenAColumnCannotBeRead) {
  EXPECT_EQ(elements(read<mat2>("| 1 2 |\n| 3 x |", mat2(7.0))), Elements(4, 7));
}

TEST(PlanarAffineText, ReadingNothingButWhiteSpaceDoesNotReturn) {
  EXPECT_TRUE(readingDoesNotReturn<vec2>("  \n\t "));
  EXPECT_TRUE(readingDoesNotReturn<vec3>(""));
  EXPECT_TRUE(readingDoesNotReturn<mat2>("  "));
  EXPECT_TRUE(readingDoesNotReturn<mat3>("| 1 2 3 | "));
}

TEST(PlanarAffineText, ReadingFromAFailedStreamDoesNotReturn) {
  EXPECT_TRUE(doesNotReturn([] {
    std::istringstream is("1 2");
    is.setstate(std::ios::failbit);
    vec2 v;
    is >> v;
  }));
}

TEST(PlanarAffineText, ReadingAMatrixWithABadColumnBeforeTheLastDoesNotReturn) {
  EXPECT_TRUE(readingDoesNotReturn<mat2>("| 1 x | | 3 4 |"));
}

TEST(PlanarAffineText, ABarAsTheLastCharacterLeavesTheStreamGood) {
  std::istringstream is("| 1 2 |");
  vec2 v;
  is >> v;
  EXPECT_TRUE(is.good());
  EXPECT_EQ(elements(v), (Elements{1, 2}));
}

TEST(PlanarAffineText, ABadStreamLeavesTheTargetAlone) {
  // Hands out its text, then fails as a broken device does.
  struct Broken : std::stringbuf {
    using std::stringbuf::stringbuf;
    int_type underflow() override {
      const int_type next = std::stringbuf::underflow();
      if (next == traits_type::eof()) throw 1;
      return next;
    }
  };
  Broken buffer("| 1 2", std::ios::in);
  std::istream is(&buffer);
  vec2 v(8, 9);
  is >> v;
  EXPECT_TRUE(is.bad());
  EXPECT_EQ(elements(v), (Elements{8, 9}));
}

TEST(PlanarAffineText, AStreamThatThrowsEndsTheSearchForTheFirstCharacter) {
  std::istringstream is("   ");
  is.exceptions(std::ios::failbit);
  vec2 v(8, 9);
  EXPECT_THROW(is >> v, std::ios::failure);
  EXPECT_EQ(elements(v), (Elements{8, 9}));
}

TEST(PlanarAffine, AllocatesNothing) {
  const std::size_t before = allocations::made();
  mat3 m = rotation2D({1, 2}, 30) * translation2D({3, 4});
  m = (m + k1to9).transpose().swapCols(0, 1) / 3.0;
  EXPECT_EQ(allocations::made(), before);
  EXPECT_TRUE(m == m);
}
