// SPDX-License-Identifier: BSD-3-Clause
// A least-squares problem of one's own: the circle nearest to some points.
#include <cornerpin/cornerpin.h>

#include <cmath>
#include <cstdio>

const float points[5][2] = {{8, -2}, {3, 3}, {6, 2}, {0, -6}, {-1, 1}};

// Parameters: the centre and the radius. Values: how far outside the circle each point lies.
class CircleProblem : public MLMProblem {
 public:
  void setX(const MGenVector<float>& x) override { x_ = x; }  // shares the solver's storage

  void evalY(MGenVector<float>& y) override {
    y.resize(5);
    for (int k = 0; k < 5; ++k) y[k] = distance(k) - x_[2];
  }

  // One row per value, one column per parameter.
  void evalDy(MGenMatrix<float>& dy) override {
    dy.resize(5, 3, MGenMatrix<float>::RowMajor);
    for (int k = 0; k < 5; ++k) {
      dy(k, 0) = (x_[0] - points[k][0]) / distance(k);
      dy(k, 1) = (x_[1] - points[k][1]) / distance(k);
      dy(k, 2) = -1;
    }
  }

 private:
  float distance(int k) const { return std::hypot(points[k][0] - x_[0], points[k][1] - x_[1]); }

  MGenVector<float> x_;
};

int main() {
  CircleProblem problem;
  MGenVector<float> start(3);
  start[2] = 1;  // the unit circle

  MLMSolver solver;
  solver.setProblem(&problem);
  solver.setState(start);
  solver.setGoal(MGenVector<float>(5));  // zeros: every point on the circle
  try {
    solver.solve();
  } catch (const LvException& e) {
    e.report();
    return 1;
  }
  const MGenVector<float>& best = solver.getState();
  std::printf("centre %.3f %.3f, radius %.3f\n", static_cast<double>(best[0]),
              static_cast<double>(best[1]), static_cast<double>(best[2]));
  std::printf("distance from the goal below 0.001: %s\n",
              solver.computeEpsilon(solver.values) < 0.001f ? "yes" : "no");
}
