// SPDX-License-Identifier: BSD-3-Clause
#include <cminpack.h>

#include <cmath>
#include <limits>

#include "bench/peers/competitor.h"

namespace bench {

namespace {

int evaluateFrame(void* frame, int m, int, const double* p, double* r, double* jacobian, int,
                  int what) {
  // One call is for the values, the other for the derivatives alone.
  static std::vector<double> unused;
  unused.resize(static_cast<std::size_t>(m));
  evaluate(*static_cast<const Frame*>(frame), p, what == 1 ? r : unused.data(),
           what == 1 ? nullptr : jacobian, 1, m);
  return 0;
}

Parameters fit(const Frame& frame) {
  Parameters p = frame.start;
  const int m = 2 * frame.count();
  const auto values = static_cast<std::size_t>(m);
  static std::vector<double> r, jacobian, work;  // kept from frame to frame
  r.resize(values);
  jacobian.resize(8 * values);
  work.resize(40 + values);  // 5 n + m
  int pivots[8];
  const double tolerance = std::sqrt(std::numeric_limits<double>::epsilon());
  lmder1(evaluateFrame, const_cast<Frame*>(&frame), m, 8, p.data(), r.data(), jacobian.data(), m,
         tolerance, pivots, work.data(), static_cast<int>(work.size()));
  return p;
}

}  // namespace

void addCminpack(std::vector<Competitor>& all) {
  all.push_back(framewise("cminpack lmder",
                          "cminpack: lmder1, tolerance sqrt(eps), derivatives by hand", fit));
}

}  // namespace bench
