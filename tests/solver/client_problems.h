// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SOLVER_CLIENT_PROBLEMS_H
#define TESTS_SOLVER_CLIENT_PROBLEMS_H

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "cornerpin/solver/lm_solver.h"
#include "tests/support/reference.h"
#include "tests/support/scene.h"

// Problems of a client, small enough to be worked by hand.
namespace clients {

using Floats = reference::Floats;

// A problem given by functions of x, which keeps account of its calls. The Jacobian's rows are
// given one after the other.
struct Problem : MLMProblem {
  void setX(const MGenVector<float>& parameters) override {
    calls += 'x';
    beforeCall();
    x = scenes::floatsOf(parameters);
    xs.push_back(x);
  }
  void evalY(MGenVector<float>& y) override {
    calls += 'y';
    beforeCall();
    const Floats v = values(x);
    y.resize(reference::length(v));
    for (int k = 0; k < y.length; ++k) y[k] = v[reference::size(k)];
  }
  void evalDy(MGenMatrix<float>& dy) override {
    calls += 'd';
    beforeCall();
    const Floats s = slopes(x);
    const int n = cols < 0 ? reference::length(x) : cols;
    dy.resize(reference::length(s) / n, n, MGenMatrix<float>::RowMajor);
    for (std::size_t i = 0; i < s.size(); ++i) dy.data[i] = s[i];
  }
  // The candidates: every x after the starting point.
  int candidates() const { return static_cast<int>(xs.size()) - 1; }

  std::function<Floats(const Floats&)> values;
  std::function<Floats(const Floats&)> slopes;
  std::function<void()> beforeCall = [] {};
  int cols = -1;
  Floats x;
  std::vector<Floats> xs;
  std::string calls;
};

// y = x, whatever the number of parameters.
struct Identity : Problem {
  Identity() {
    values = [](const Floats& p) { return p; };
    slopes = [](const Floats& p) {
      Floats s(p.size() * p.size());
      for (std::size_t i = 0; i < p.size(); ++i) s[i * p.size() + i] = 1;
      return s;
    };
  }
};

// One parameter, slope 1, and the values given one after the other, the last one for ever.
struct Script : Problem {
  explicit Script(Floats script) : lines(std::move(script)) {
    values = [this](const Floats&) {
      const float line = lines[std::min(next, lines.size() - 1)];
      ++next;
      return Floats{line};
    };
    slopes = [](const Floats&) { return Floats{1}; };
  }
  Floats lines;
  std::size_t next = 0;
};

// Keeps its values in one vector and hands that out.
struct SharingIdentity : MLMProblem {
  void setX(const MGenVector<float>& parameters) override {
    y.resize(parameters.length);
    for (int i = 0; i < y.length; ++i) y[i] = parameters[i];
  }
  void evalY(MGenVector<float>& out) override { out = y; }
  void evalDy(MGenMatrix<float>& dy) override {
    dy.resize(y.length, y.length, MGenMatrix<float>::RowMajor);
    for (int i = 0; i < y.length; ++i) dy(i, i) = 1;
  }
  MGenVector<float> y;
};

inline void prepare(MLMSolver& solver, MLMProblem& problem, const Floats& start,
                    const Floats& goal) {
  solver.setProblem(&problem);
  solver.setState(scenes::vectorOf(start));
  solver.setGoal(scenes::vectorOf(goal));
}

}  // namespace clients

#endif
