// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"
#include "cornerpin/geometry/MGeometry.h"
#include "cornerpin/geometry/roots.h"
#include "tests/support/allocations.h"

namespace {

using Point = LvVector2<float>;
using Wide = LvVector2<double>;
using Points = MArray<Point>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kEps = std::numeric_limits<float>::epsilon();
constexpr unsigned kSeed = 20240611;

std::string text(const Wide& p) {
  char line[100];
  std::snprintf(line, sizeof line, "(%.17g, %.17g)", p._x, p._y);
  return line;
}

void expectPoint(const Point& found, float x, float y) {
  EXPECT_EQ(found._x, x);
  EXPECT_EQ(found._y, y);
}

void expectPoint(const Wide& found, double x, double y) {
  EXPECT_EQ(found._x, x);
  EXPECT_EQ(found._y, y);
}

bool sameBits(float a, float b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

bool contains(const Points& points, const Point& p) {
  for (int i = 0; i < points.size(); ++i) {
    if (points[i]._x == p._x && points[i]._y == p._y) return true;
  }
  return false;
}

std::string messageOf(const Point& c, const Point& A, const Point& B, const Point& p) {
  try {
    closestPointOnEllipse(c, A, B, p);
  } catch (const LvException& e) {
    return e.message.c_str();
  }
  return "nothing thrown";
}

// The normal points once more, with the frame as a full 3 x 3 matrix.
std::vector<Point> secondNormalPoints(const Point& c, const Point& A, const Point& B,
                                      const Point& p) {
  const float a = std::sqrt(A._x * A._x + A._y * A._y);
  const float b = std::sqrt(B._x * B._x + B._y * B._y);
  if (b == 0.0f || double(b / a) < 1e-8) {
    return {
        nearestPointOnSegment(Point(c._x + A._x, c._y + A._y), Point(c._x - A._x, c._y - A._y), p)};
  }
  const float ux = A._x / a, uy = A._y / a, vx = B._x / b, vy = B._y / b;
  float m[2][3] = {{ux, vx, c._x}, {uy, vy, c._y}};
  const float det = ux * vy - vx * uy;
  if (det != 0.0f) {
    const float inverse[2][3] = {{vy / det, -vx / det, (vx * c._y - c._x * vy) / det},
                                 {-uy / det, ux / det, (c._x * uy - ux * c._y) / det}};
    std::memcpy(m, inverse, sizeof m);
  }
  const float x0 = m[0][0] * p._x + m[0][1] * p._y + m[0][2];
  const float y0 = m[1][0] * p._x + m[1][1] * p._y + m[1][2];
  const double al = double(a) * double(a), be = double(b) * double(b), X = x0, Y = y0;
  int n = 0;
  double roots[4] = {};
  solveQuartic(2 * al * be - al * al - be * be, 2 * al * al * X - 2 * al * be * X,
               al * al * al - 2 * al * al * be + al * be * be - X * X * al * al - Y * Y * al * be,
               -2 * al * al * al * X + 2 * al * al * be * X, al * al * al * X * X, &n, roots);
  std::vector<Point> points;
  for (int k = 0; k < n; ++k) {
    const float x = float(roots[k]);
    const float plus = b * std::sqrt(1.0f - (x / a) * (x / a));
    const auto e = [&](double y) {
      return std::fabs((2 * y / be) * (double(x) - X) - (y - Y) * (2 * double(x) / al));
    };
    const double d = e(plus) - e(-plus);
    const bool lower = d > 0 || (d == 0 && k % 2 == 0);
    const float y = lower ? -plus : plus;
    points.emplace_back(x * ux + y * vx + c._x, x * uy + y * vy + c._y);
  }
  return points;
}

// ---- Brute force: every local minimum over the parameter, then Newton in 50 digits ----

using Exact = boost::multiprecision::cpp_bin_float_50;

struct ExactPoint {
  Exact x;
  Exact y;
  Exact squaredDistance;
};

ExactPoint refined(const Wide& A, const Wide& B, const Exact& dx, const Exact& dy, Exact low,
                   Exact high) {
  Exact t = (low + high) / 2;
  for (int step = 0; step < 400; ++step) {
    const Exact cs = cos(t), sn = sin(t);
    const Exact x = A._x * cs + B._x * sn, y = A._y * cs + B._y * sn;
    const Exact tx = B._x * cs - A._x * sn, ty = B._y * cs - A._y * sn;
    const Exact slope = (x - dx) * tx + (y - dy) * ty;
    const Exact bend = tx * tx + ty * ty - (x - dx) * x - (y - dy) * y;
    (slope > 0 ? high : low) = t;
    Exact next = t - slope / bend;
    if (!(low < next && next < high)) next = (low + high) / 2;
    const bool done = abs(next - t) < Exact(1e-42);
    t = next;
    if (done) break;
  }
  const Exact x = A._x * cos(t) + B._x * sin(t), y = A._y * cos(t) + B._y * sin(t);
  return {x, y, (x - dx) * (x - dx) + (y - dy) * (y - dy)};
}

ExactPoint bruteForce(const Wide& c, const Wide& A, const Wide& B, const Wide& p) {
  const Exact dx = Exact(p._x) - c._x, dy = Exact(p._y) - c._y;
  constexpr int kSteps = 2000;
  const long double step = 2 * std::acos(-1.0L) / kSteps;
  std::vector<long double> distance(kSteps);
  for (int i = 0; i < kSteps; ++i) {
    const long double cs = std::cos(i * step), sn = std::sin(i * step);
    const long double x = A._x * cs + B._x * sn - static_cast<long double>(dx);
    const long double y = A._y * cs + B._y * sn - static_cast<long double>(dy);
    distance[std::size_t(i)] = x * x + y * y;
  }
  ExactPoint best{0, 0, -1};
  for (int i = 0; i < kSteps; ++i) {
    const auto at = [&](int k) { return distance[std::size_t((k + kSteps) % kSteps)]; };
    if (at(i) > at(i - 1) || at(i) > at(i + 1)) continue;
    const ExactPoint found = refined(A, B, dx, dy, Exact((i - 1) * step), Exact((i + 1) * step));
    if (best.squaredDistance < 0 || found.squaredDistance < best.squaredDistance) best = found;
  }
  return {best.x + c._x, best.y + c._y, best.squaredDistance};
}

// The distance from `value` to `truth` in units in the last place of the larger of truth and
// `floor`.
double ulps(double value, const Exact& truth, double floor) {
  const double size = std::max(std::fabs(double(truth)), floor);
  const double unit = std::nextafter(size, HUGE_VAL) - size;
  return std::fabs(double(Exact(value) - truth)) / unit;
}

}  // namespace

TEST(NearestPointOnSegment, ProjectsOntoTheInside) {
  expectPoint(nearestPointOnSegment({0, 0}, {2, 0}, {1, 5}), 1, 0);
}

TEST(NearestPointOnSegment, ClampsToTheEnds) {
  expectPoint(nearestPointOnSegment({0, 0}, {2, 0}, {3, 1}), 2, 0);
  expectPoint(nearestPointOnSegment({0, 0}, {2, 0}, {-1, 1}), 0, 0);
  expectPoint(nearestPointOnSegment({1, 1}, {1, 3}, {0, kInfinity}), 1, 3);
}

TEST(NearestPointOnSegment, OfNoLengthIsNaN) {
  const Point q = nearestPointOnSegment({1, 1}, {1, 1}, {1, 1});
  EXPECT_TRUE(std::isnan(q._x) && std::isnan(q._y));
}

TEST(NearestPointOnSegment, IsNaNForANaNPoint) {
  EXPECT_TRUE(std::isnan(nearestPointOnSegment({0, 0}, {2, 0}, {kNaN, 0})._x));
}

TEST(NormalPointsOnEllipse, OfAFlatEllipseIsTheNearestPointOfItsSegment) {
  for (float b : {0.0f, 1e-9f}) {
    Points out(7);
    normalPointsOnEllipse({1, 1}, {2, 0}, {0, 2 * b}, {1.5f, 4}, out);
    ASSERT_EQ(out.size(), 1);
    expectPoint(out[0], 1.5f, 1);
  }
}

// Its segment has no length, so its one point is not a number; it is there all the same.
TEST(NormalPointsOnEllipse, OfAnEllipseWithoutExtentAreOneNaN) {
  for (const Point& p : {Point(3, 4), Point(1, 2), Point(0, 0)}) {
    Points points(3);
    normalPointsOnEllipse({1, 2}, {0, 0}, {0, 0}, p, points);
    ASSERT_EQ(points.size(), 1);
    EXPECT_TRUE(std::isnan(points[0]._x));
    EXPECT_TRUE(std::isnan(points[0]._y));
    const Point closest = closestPointOnEllipse({1, 2}, {0, 0}, {0, 0}, p);
    EXPECT_TRUE(std::isnan(closest._x));
    EXPECT_TRUE(std::isnan(closest._y));
  }
}

TEST(NormalPointsOnEllipse, RunsTheFlatSegmentFromTheEndOfA) {
  // Seen from c + A the parameter is 0.1 / 0.6 and rounds differently than seen from c - A.
  const Point c(0.1f, 0), A(0.3f, 0), p(0.3f, 1);
  Points out;
  normalPointsOnEllipse(c, A, {0, 0}, p, out);
  const Point expected = nearestPointOnSegment({c._x + A._x, 0}, {c._x - A._x, 0}, p);
  expectPoint(out[0], expected._x, expected._y);
}

TEST(NormalPointsOnEllipse, TheFlatLimitIsTheDoubleOfItsText) {
  // 1e-8f is just below the double 1e-8.
  Points out;
  normalPointsOnEllipse({0, 0}, {1, 0}, {0, 1e-8f}, {0.5f, 1}, out);
  ASSERT_EQ(out.size(), 1);
  normalPointsOnEllipse({0, 0}, {1, 0}, {0, std::nextafter(1e-8f, 1.0f)}, {0.5f, 1}, out);
  EXPECT_NE(out.size(), 1);
}

TEST(NormalPointsOnEllipse, AShortFirstAxisIsNotFlat) {
  Points out;
  normalPointsOnEllipse({0, 0}, {0, 0}, {0, 1}, {0.5f, 1}, out);
  EXPECT_EQ(out.size(), 0);  // NaNs all the way
}

TEST(NormalPointsOnEllipse, OfAPointOnTheLongAxisIncludeItsEnd) {
  Points out;
  normalPointsOnEllipse({0, 0}, {2, 0}, {0, 1}, {3, 0}, out);
  EXPECT_TRUE(contains(out, {2, 0}));
}

TEST(NormalPointsOnEllipse, OfTheCentreAreTheEndsOfBothAxes) {
  Points out;
  normalPointsOnEllipse({0, 0}, {3, 0}, {0, 2}, {0, 0}, out);
  ASSERT_EQ(out.size(), 4);
  for (const Point& end : {Point(3, 0), Point(-3, 0), Point(0, 2), Point(0, -2)}) {
    int found = 0;
    for (int k = 0; k < 4; ++k) {
      found += std::fabs(out[k]._x - end._x) < 4 * kEps && std::fabs(out[k]._y - end._y) < 4 * kEps;
    }
    EXPECT_EQ(found, 1) << end._x << " " << end._y;
  }
}

TEST(NormalPointsOnEllipse, OfADoubleRootAreTheLowerPointThenTheUpperOne) {
  // The four roots for the centre are 3, 0, 0, -3: an even place takes the lower point.
  Points out;
  normalPointsOnEllipse({0, 0}, {3, 0}, {0, 2}, {0, 0}, out);
  ASSERT_EQ(out.size(), 4);
  int seen = 0;
  for (int k = 0; k < 4; ++k) {
    if (std::fabs(out[k]._x) > 1) continue;
    EXPECT_EQ(out[k]._y, k % 2 == 0 ? -2 : 2) << k;
    ++seen;
  }
  EXPECT_EQ(seen, 2);
}

TEST(NormalPointsOnEllipse, OfParallelAxesTakeTheFrameForItsInverse) {
  // u = v = (1, 0): the frame sends (1, 1) to (2, 0), whose normal points on the unit circle are
  // x = -1 and x = 1. Taken as local itself, (1, 1) would give x = -0.7 and 0.7.
  Points out;
  normalPointsOnEllipse({0, 0}, {1, 0}, {1, 0}, {1, 1}, out);
  ASSERT_EQ(out.size(), 2);
  expectPoint(out[0], -1, 0);
  expectPoint(out[1], 1, 0);
  expectPoint(closestPointOnEllipse({0, 0}, {1, 0}, {1, 0}, {1, 1}), 1, 0);
}

TEST(NormalPointsOnEllipse, AllocateTheirOutputOnly) {
  Points out;
  const std::size_t before = allocations::made();
  normalPointsOnEllipse({0, 0}, {3, 0}, {0, 2}, {0.25f, 0.5f}, out);
  EXPECT_EQ(allocations::made(), before + 1);
  EXPECT_GT(out.size(), 0);
}

TEST(NormalPointsOnEllipse, HaveTheBitsOfTheirFormulas) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<float> unit(-1, 1);
  for (int n = 0; n < 30000; ++n) {
    Point q[4];
    for (Point& v : q) v = {unit(generator), unit(generator)};
    if (n % 3 != 0) {  // perpendicular axes
      const float ratio = unit(generator);
      q[2] = {-ratio * q[1]._y, ratio * q[1]._x};
    }
    if (n % 100 == 0) q[generator() % 4]._x = kInfinity;
    if (n % 100 == 50) q[generator() % 4]._x = kNaN;
    if (n % 50 == 1) q[2] = q[1];  // a singular frame
    if (n % 50 == 2) q[1] = q[2] = {0.5f, 0};
    if (n % 5 == 3) {  // next to the first axis, where the sides nearly tie
      q[0] = {0, 0};
      const float y = 1e-7f * unit(generator);
      q[3] = {q[1]._x + y * q[2]._x, q[1]._y + y * q[2]._y};
    }
    Points found;
    normalPointsOnEllipse(q[0], q[1], q[2], q[3], found);
    const std::vector<Point> expected = secondNormalPoints(q[0], q[1], q[2], q[3]);
    ASSERT_EQ(found.size(), int(expected.size())) << n << " seed " << kSeed;
    for (int k = 0; k < found.size(); ++k) {
      ASSERT_TRUE(sameBits(found[k]._x, expected[std::size_t(k)]._x) &&
                  sameBits(found[k]._y, expected[std::size_t(k)]._y))
          << n << " seed " << kSeed;
    }
  }
}

TEST(NormalPointsOnEllipse, MayOverwriteTheirArguments) {
  Points expected, points(4);
  normalPointsOnEllipse({0.1f, 0.2f}, {2, 0}, {0, 1}, {3, 0.5f}, expected);
  points[0] = {0.1f, 0.2f};
  points[1] = {2, 0};
  points[2] = {0, 1};
  points[3] = {3, 0.5f};
  normalPointsOnEllipse(points[0], points[1], points[2], points[3], points);
  ASSERT_EQ(points.size(), expected.size());
  for (int k = 0; k < points.size(); ++k) expectPoint(points[k], expected[k]._x, expected[k]._y);
  Points flat(1);
  flat[0] = {1.5f, 4};
  normalPointsOnEllipse({1, 1}, {2, 0}, {0, 0}, flat[0], flat);
  expectPoint(flat[0], 1.5f, 1);
}

TEST(ClosestPointOnEllipse, OfAPointBeyondTheLongAxisIsItsEnd) {
  expectPoint(closestPointOnEllipse({0, 0}, {2, 0}, {0, 1}, {3, 0}), 2, 0);
}

TEST(ClosestPointOnEllipse, ANaNThatComesFirstYieldsToAnyNumber) {
  Points points;
  normalPointsOnEllipse({0, 0}, {2, 0}, {0, 1}, {3, 0}, points);
  ASSERT_TRUE(std::isnan(points[0]._y));
  expectPoint(closestPointOnEllipse({0, 0}, {2, 0}, {0, 1}, {3, 0}), 2, 0);
}

TEST(ClosestPointOnEllipse, OfTheCentreIsTheFirstEndOfTheShorterAxis) {
  Points points;
  normalPointsOnEllipse({0, 0}, {3, 0}, {0, 2}, {0, 0}, points);
  int first = 0;
  while (std::fabs(points[first]._y) < 1) ++first;
  const Point found = closestPointOnEllipse({0, 0}, {3, 0}, {0, 2}, {0, 0});
  expectPoint(found, points[first]._x, points[first]._y);
  EXPECT_NEAR(found._x, 0, 4 * kEps);
  EXPECT_EQ(std::fabs(found._y), 2);
}

TEST(ClosestPointOnEllipse, OfACircleLiesOnTheRay) {
  const Point q = closestPointOnEllipse({1, 2}, {2, 0}, {0, 2}, {4, 6});
  EXPECT_NEAR(q._x, 1 + 2 * 0.6f, 8 * kEps);
  EXPECT_NEAR(q._y, 2 + 2 * 0.8f, 8 * kEps);
}

TEST(ClosestPointOnEllipse, TurnsWithTheEllipse) {
  const float c = std::cos(0.7f), s = std::sin(0.7f);
  const auto turned = [=](float x, float y) { return Point(c * x - s * y, s * x + c * y); };
  const Point upright = closestPointOnEllipse({0, 0}, {2, 0}, {0, 1}, {1.5f, 1.25f});
  const Point found =
      closestPointOnEllipse({0, 0}, turned(2, 0), turned(0, 1), turned(1.5f, 1.25f));
  const Point expected = turned(upright._x, upright._y);
  EXPECT_NEAR(found._x, expected._x, 30 * kEps);
  EXPECT_NEAR(found._y, expected._y, 30 * kEps);
}

TEST(ClosestPointOnEllipse, IsTheFirstNearestNormalPoint) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<float> unit(-2, 2);
  int checked = 0;
  for (int n = 0; n < 5000; ++n) {
    const Point p(unit(generator), unit(generator)), B(0, 0.5f * unit(generator));
    Points points;
    normalPointsOnEllipse({0, 0}, {1, 0}, B, p, points);
    if (points.size() == 0) continue;
    Point best = points[0];
    float bestDistance = kInfinity;
    for (int k = 0; k < points.size(); ++k) {
      const float dx = p._x - points[k]._x, dy = p._y - points[k]._y;
      if (dx * dx + dy * dy < bestDistance) {
        best = points[k];
        bestDistance = dx * dx + dy * dy;
      }
    }
    const Point found = closestPointOnEllipse({0, 0}, {1, 0}, B, p);
    ASSERT_TRUE(sameBits(found._x, best._x) && sameBits(found._y, best._y)) << "seed " << kSeed;
    ++checked;
  }
  EXPECT_GT(checked, 4000);
}

TEST(ClosestPointOnEllipse, WithoutNormalPointsIsMalformed) {
  EXPECT_EQ(messageOf({0, 0}, {2, 0}, {0, 1}, {kNaN, 0}), "malformed ellipse");
  EXPECT_EQ(messageOf({0, 0}, {kNaN, 0}, {0, 1}, {1, 0}), "malformed ellipse");
  EXPECT_EQ(messageOf({0, 0}, {0, 0}, {0, 1}, {1, 0}), "malformed ellipse");
}

TEST(ClosestPointOnEllipse, StraightAboveAnUprightEllipseMayThrow) {
  int thrown = 0;
  for (int k = 1; k <= 100; ++k) {
    thrown += messageOf({0, 0}, {1, 0}, {0, 0.9f}, {0, float(k) / 50}) == "malformed ellipse";
  }
  EXPECT_GT(thrown, 80);
}

TEST(ClosestPointOnEllipse, ReleasesItsPointsOnEveryPath) {
  const std::size_t live = allocations::live();
  EXPECT_EQ(messageOf({0, 0}, {2, 0}, {0, 1}, {kNaN, 0}), "malformed ellipse");
  closestPointOnEllipse({0, 0}, {2, 0}, {0, 1}, {1, 1});
  EXPECT_EQ(allocations::live(), live);
  allocations::expectNoLeakOnAnyFailure([] {
    closestPointOnEllipse({0, 0}, {2, 0}, {0, 1}, {1, 1});
  });
}

using cornerpin::closestPointOnEllipse;

TEST(GuardedClosestPoint, AnswersWhereTheClosedFormFails) {
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(1, 0), Wide(0, 0.9), Wide(0, 3)), 0, 0.9);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(1, 0), Wide(0, 0.1), Wide(0, -3)), 0, -0.1);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), Wide(3, 0)), 2, 0);
}

TEST(GuardedClosestPoint, OnTheLongAxisLeavesItInsideTheEvolute) {
  // The cusp is at (a^2 - b^2) / a = 1.5; at x = 0.75 the foot is at u = 1/2.
  const Wide q = closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), Wide(0.75, 0));
  EXPECT_EQ(q._x, 1);
  EXPECT_EQ(q._y, std::sqrt(0.75));
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), Wide(1.5, 0)), 2, 0);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), Wide(-1.75, 0)), -2, 0);
}

TEST(GuardedClosestPoint, TiesGoToTheSideOfTheAxisVector) {
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), Wide(0, 0)), 0, 1);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, -1), Wide(0, 0)), 0, -1);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(1, 0), Wide(0, 2), Wide(0, 0)), 1, 0);
  expectPoint(closestPointOnEllipse(Wide(5, 6), Wide(1, 0), Wide(0, 1), Wide(5, 6)), 6, 6);
}

TEST(GuardedClosestPoint, OfFlatEllipsesIsThatOfTheSegment) {
  expectPoint(closestPointOnEllipse(Wide(1, 1), Wide(2, 0), Wide(0, 0), Wide(1.5, 7)), 1.5, 1);
  expectPoint(closestPointOnEllipse(Wide(1, 1), Wide(0, 0), Wide(2, 0), Wide(9, 7)), 3, 1);
  // The sum of cos t (2, 0) and sin t (1, 0) reaches as far as sqrt(5).
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(1, 0), Wide(1.5, 7)), 1.5, 0);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(1, 0), Wide(5, 7)), std::sqrt(5.0),
              0);
}

TEST(GuardedClosestPoint, OfAnEllipseWithoutExtentIsItsCentre) {
  for (const Wide& p : {Wide(1.5, 7), Wide(3, 4), Wide(-1e300, 1e-300)}) {
    expectPoint(closestPointOnEllipse(Wide(3, 4), Wide(0, 0), Wide(0, 0), p), 3, 4);
  }
}

TEST(GuardedClosestPoint, SurvivesNumbersOfAnySize) {
  const double big = std::numeric_limits<double>::max();
  const double tiny = std::numeric_limits<double>::denorm_min();
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(tiny, 0), Wide(0, tiny), Wide(big, 0)), tiny,
              0);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(big, 0), Wide(0, big), Wide(0, tiny)), 0, big);
  expectPoint(closestPointOnEllipse(Wide(-big, 0), Wide(big, 0), Wide(0, big / 2), Wide(big, 0)), 0,
              0);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, tiny), Wide(0.5, 1)), 0.5,
              tiny);
  const Wide beyond = closestPointOnEllipse(Wide(big, 0), Wide(big, 0), Wide(0, big), Wide(big, 0));
  EXPECT_EQ(beyond._x, HUGE_VAL);
}

// The coordinates of the offset are 1e330 and more apart here.
TEST(GuardedClosestPoint, KeepsASmallCoordinateBesideAHugeOne) {
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2e-30, 0), Wide(0, 0), Wide(1e-30, 1e300)),
              1e-30, 0);
  expectPoint(closestPointOnEllipse(Wide(0, 0), Wide(2e-30, 0), Wide(0, 0), Wide(-1e-30, -1e300)),
              -1e-30, 0);
  const Wide q = closestPointOnEllipse(Wide(0, 0), Wide(0x1p857, 0), Wide(0, 0x1p925),
                                       Wide(-0x1p-934, 0x1p319));
  EXPECT_LT(q._x, 0);  // inside the evolute, on the side of p
}

TEST(GuardedClosestPoint, ScalesExactly) {
  const Wide q = closestPointOnEllipse(Wide(0.1, 0.2), Wide(2, 0.3), Wide(-0.1, 1), Wide(0.7, 1.9));
  for (int e : {-900, -300, 300, 900}) {
    const double z = std::ldexp(1, e);
    const Wide found = closestPointOnEllipse(Wide(0.1 * z, 0.2 * z), Wide(2 * z, 0.3 * z),
                                             Wide(-0.1 * z, 1 * z), Wide(0.7 * z, 1.9 * z));
    expectPoint(found, q._x * z, q._y * z);
  }
}

TEST(GuardedClosestPoint, RefusesWhatIsNotFinite) {
  const auto message = [](const Wide& p) -> std::string {
    try {
      closestPointOnEllipse(Wide(0, 0), Wide(2, 0), Wide(0, 1), p);
    } catch (const LvIllegalArgumentException& e) {
      return e.message.c_str();
    }
    return "nothing thrown";
  };
  EXPECT_EQ(message(Wide(0, double(kNaN))), "NaN");
  EXPECT_EQ(message(Wide(-double(kInfinity), 0)), "infinite number");
}

TEST(GuardedClosestPoint, AllocatesNothing) {
  const std::size_t before = allocations::made();
  const Wide q = closestPointOnEllipse(Wide(0, 0), Wide(2, 0.1), Wide(0, 1), Wide(1, 1));
  EXPECT_EQ(allocations::made(), before);
  EXPECT_GT(q._x, 0);
}

// Turned, skewed, nearly round and nearly flat ellipses, points near the centre, far away, and
// next to the cusps of the evolute.
TEST(GuardedClosestPoint, IsThatOfBruteForceToOneUnitInTheLastPlace) {
  std::mt19937_64 generator(kSeed);
  std::uniform_real_distribution<double> unit(-1, 1);
  double worst = 0;
  for (int n = 0; n < 400; ++n) {
    double ratio = std::pow(10, -3 * std::fabs(unit(generator)));
    if (n % 7 == 0) ratio = 1 - std::pow(10, -15 * std::fabs(unit(generator)));
    const double angle = n % 4 == 0 ? 0 : 4 * unit(generator);
    const double skew = n % 5 == 0 ? unit(generator) : 0;
    const Wide A(std::cos(angle), std::sin(angle));
    const Wide B(-ratio * std::sin(angle + skew), ratio * std::cos(angle + skew));
    const Wide c = n % 2 == 0 ? Wide(0, 0) : Wide(unit(generator), unit(generator));
    const double reach = std::pow(10, 3 * unit(generator));
    Wide p(c._x + reach * unit(generator), c._y + reach * unit(generator));
    if (n % 11 == 0 && c._x == 0) {
      const double cusp = 1 - ratio * ratio;
      p = {cusp * A._x + 1e-9 * unit(generator), cusp * A._y + 1e-9 * unit(generator)};
    }
    const ExactPoint truth = bruteForce(c, A, B, p);
    const Wide found = closestPointOnEllipse(c, A, B, p);
    const double error = std::max(ulps(found._x, truth.x, 1e-20), ulps(found._y, truth.y, 1e-20));
    ASSERT_LE(error, 1) << text(c) << text(A) << text(B) << text(p) << " gives " << text(found)
                        << " seed " << kSeed;
    worst = std::max(worst, error);
  }
  RecordProperty("worst_ulps", std::to_string(worst));
}
