// SPDX-License-Identifier: BSD-3-Clause

// Measures how often and by how much the closed forms of roots.h and MGeometry.h fail on random
// input, against the guarded functions beside them. Prints the figures that the headers quote.
// Usage: closed_form_survey [seed]

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "cornerpin/cornerpin.h"

namespace {

constexpr int kSamples = 20000;

std::mt19937_64 generator;

double uniform(double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(generator);
}

double integer(int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(generator);
}

struct Tally {
  int total = 0;
  int wrongCount = 0;
  int notANumber = 0;
  std::vector<double> errors;  // of the samples with the right count

  void print(const char* what) {
    std::sort(errors.begin(), errors.end());
    const auto at = [&](double part) {
      return errors.empty() ? 0.0 : errors[std::size_t(part * double(errors.size() - 1))];
    };
    std::printf(
        "%-46s count wrong %6.2f %%  NaN %5.2f %%  error median %.1e  99 %% %.1e  "
        "max %.1e\n",
        what, 100.0 * wrongCount / total, 100.0 * notANumber / total, at(0.5), at(0.99), at(1));
  }
};

// The largest distance from a closed-form root to the nearest true one, over the largest root.
double rootError(const double* found, int count, const cornerpin::RealRoots& truth) {
  double worst = 0;
  double size = 0;
  for (const auto& root : truth) size = std::max(size, std::fabs(root.value));
  for (int i = 0; i < count; ++i) {
    double nearest = HUGE_VAL;
    for (const auto& root : truth) nearest = std::min(nearest, std::fabs(root.value - found[i]));
    worst = std::max(worst, nearest);
  }
  return worst / size;
}

void compare(Tally& tally, const double* found, int count, const cornerpin::RealRoots& truth) {
  int expected = 0;
  for (const auto& root : truth) expected += root.multiplicity;
  ++tally.total;
  if (count != expected) {
    ++tally.wrongCount;
  } else if (std::any_of(found, found + count, [](double x) { return !std::isfinite(x); })) {
    ++tally.notANumber;
  } else if (count > 0) {
    tally.errors.push_back(rootError(found, count, truth));
  }
}

using Coefficients = std::vector<double>;

// Multiplies out leading * (x - r0)(x - r1)...
Coefficients fromRoots(double leading, const std::vector<double>& roots) {
  Coefficients k{leading};
  for (double r : roots) {
    k.push_back(0);
    for (std::size_t i = k.size() - 1; i > 0; --i) k[i] -= r * k[i - 1];
  }
  return k;
}

void survey(const char* what, const std::function<Coefficients()>& sample) {
  Tally tally;
  for (int n = 0; n < kSamples; ++n) {
    const Coefficients k = sample();
    double found[4] = {};
    int count = 0;
    if (k.size() == 3) {
      solveQuadratic(k[0], k[1], k[2], &count, found);
      compare(tally, found, count, cornerpin::realRoots(k[0], k[1], k[2]));
    } else if (k.size() == 4) {
      solveCubic(k[0], k[1], k[2], k[3], &count, found);
      compare(tally, found, count, cornerpin::realRoots(k[0], k[1], k[2], k[3]));
    } else {
      solveQuartic(k[0], k[1], k[2], k[3], k[4], &count, found);
      compare(tally, found, count, cornerpin::realRoots(k[0], k[1], k[2], k[3], k[4]));
    }
  }
  tally.print(what);
}

Coefficients randomCoefficients(std::size_t n) {
  Coefficients k(n);
  for (double& c : k) c = uniform(-1, 1);
  return k;
}

void surveyCloseRoots(int degree) {
  for (double gap : {1e-2, 1e-4, 1e-6}) {
    char what[80];
    std::snprintf(what, sizeof what, "degree %d, two roots of 1 and less %g apart", degree, gap);
    survey(what, [=] {
      std::vector<double> roots{uniform(-1, 1)};
      roots.push_back(roots[0] + gap);
      while (int(roots.size()) < degree) roots.push_back(uniform(-1, 1));
      return fromRoots(1, roots);
    });
  }
}

void surveyRoots() {
  survey("quadratic, random coefficients", [] { return randomCoefficients(3); });
  survey("cubic, random coefficients", [] { return randomCoefficients(4); });
  survey("cubic, three random roots", [] {
    return fromRoots(1, {uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)});
  });
  survey("cubic, double and simple integer root", [] {
    const double r = integer(-10, 10);
    const double s = integer(-10, 10);
    return fromRoots(1, {r, r, r == s ? s + 1 : s});
  });
  survey("cubic, triple integer root", [] {
    const double r = integer(1, 10);
    return fromRoots(1, {r, r, r});
  });
  surveyCloseRoots(3);
  survey("quartic, random coefficients", [] { return randomCoefficients(5); });
  survey("quartic, four random roots", [] {
    return fromRoots(1, {uniform(-1, 1), uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)});
  });
  survey("quartic, four integer roots up to 10", [] {
    std::vector<double> roots;
    while (roots.size() < 4) {
      const double r = integer(-10, 10);
      if (std::find(roots.begin(), roots.end(), r) == roots.end()) roots.push_back(r);
    }
    return fromRoots(1, roots);
  });
  survey("quartic, x^4 + p x^2 + r, two real roots", [] {
    return Coefficients{1, 0, uniform(-1, 1), 0, uniform(-1, 0)};
  });
  survey("quartic, x^4 + p x^2 + r, four real roots", [] {
    const double r = uniform(0.05, 1);
    const double s = uniform(0.05, 1);
    return fromRoots(1, {r, -r, s, -s});
  });
  survey("quartic, double and two simple integer roots", [] {
    const double r = integer(-10, 10);
    return fromRoots(1, {r, r, r + integer(1, 10), r - integer(1, 10)});
  });
  surveyCloseRoots(4);
}

using PointF = LvVector2<float>;
using PointD = LvVector2<double>;

PointD wide(const PointF& p) { return {double(p._x), double(p._y)}; }

struct EllipseTally {
  int total = 0;
  int thrown = 0;
  int notANumber = 0;
  int wrong = 0;      // farther than the nearest point by more than a thousandth of |A|
  double excess = 0;  // the most that was, over |A|
};

void compare(EllipseTally& tally, const PointF& c, const PointF& A, const PointF& B,
             const PointF& p) {
  ++tally.total;
  const double a = std::max(std::hypot(A._x, A._y), std::hypot(B._x, B._y));
  const PointD best = cornerpin::closestPointOnEllipse(wide(c), wide(A), wide(B), wide(p));
  try {
    const PointF q = closestPointOnEllipse(c, A, B, p);
    if (std::isnan(q._x) || std::isnan(q._y)) {
      ++tally.notANumber;
      return;
    }
    // A point off the ellipse counts as far as it is off.
    const PointD onIt = cornerpin::closestPointOnEllipse(wide(c), wide(A), wide(B), wide(q));
    const double off = std::hypot(onIt._x - q._x, onIt._y - q._y);
    const double excess = std::hypot(double(q._x) - p._x, double(q._y) - p._y) -
                          std::hypot(best._x - p._x, best._y - p._y);
    const double error = std::max(off, excess) / a;
    if (error > 1e-3) ++tally.wrong;
    tally.excess = std::max(tally.excess, error);
  } catch (const LvException&) {
    ++tally.thrown;
  }
}

void survey(const char* what, double ratio, const std::function<PointF()>& sample, bool turned) {
  EllipseTally tally;
  for (int n = 0; n < kSamples; ++n) {
    const double angle = turned ? uniform(-3, 3) : 0;
    const PointF A(float(std::cos(angle)), float(std::sin(angle)));
    const PointF B(float(-ratio * std::sin(angle)), float(ratio * std::cos(angle)));
    compare(tally, PointF(0, 0), A, B, sample());
  }
  std::printf(
      "%-34s axis ratio %-8g throws %6.2f %%  NaN %5.2f %%  wrong %6.2f %%  "
      "by up to %.1e\n",
      what, ratio, 100.0 * tally.thrown / tally.total, 100.0 * tally.notANumber / tally.total,
      100.0 * tally.wrong / tally.total, tally.excess);
}

void surveyCentres() {
  EllipseTally tally;
  for (int n = 0; n < kSamples; ++n) {
    const double a = uniform(1, 10);
    const double b = a * uniform(0, 1);
    compare(tally, PointF(0, 0), PointF(float(a), 0), PointF(0, float(b)), PointF(0, 0));
  }
  std::printf("%-34s axis ratio %-8s throws %6.2f %%  NaN %5.2f %%  wrong %6.2f %%\n",
              "the centre, |A| random", "random", 100.0 * tally.thrown / tally.total,
              100.0 * tally.notANumber / tally.total, 100.0 * tally.wrong / tally.total);
}

void surveyEllipses() {
  const auto anywhere = [] { return PointF(float(uniform(-2, 2)), float(uniform(-2, 2))); };
  const auto above = [] { return PointF(0, float(uniform(-2, 2))); };
  const auto beside = [] { return PointF(float(uniform(-2, 2)), 0); };
  for (double ratio : {1.0, 0.99999, 0.999, 0.99, 0.9, 0.5, 0.1, 0.01, 0.001}) {
    survey("turned ellipse, point anywhere", ratio, anywhere, true);
    survey("upright ellipse, point anywhere", ratio, anywhere, false);
    survey("upright ellipse, above or below", ratio, above, false);
    survey("upright ellipse, left or right", ratio, beside, false);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned long seed = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1;
  std::printf("seed %lu, %d samples a line\n", seed, kSamples);
  generator.seed(seed);
  surveyRoots();
  surveyEllipses();
  surveyCentres();
}
