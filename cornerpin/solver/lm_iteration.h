// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_LM_ITERATION_H
#define CORNERPIN_SOLVER_LM_ITERATION_H

#include <cmath>

#include "cornerpin/solver/lm_solver.h"

namespace cornerpin::internal {

// Private: the iteration of `MLMSolver::solve`, whatever holds the parameters and the values. A fit
// has
//   float start()                  goes to the starting point; the values' distance from the goal
//   void formSystem(bool moved)    forms the system at the point that is held, which is new since
//                                  the last time where `moved`
//   float tryStep(float damping)   goes to a candidate; the distance of its values from the goal
//   void accept()                  holds the candidate from now on
template <class Fit>
void iterate(const MLMSolver& settings, Fit& fit) {
  float epsilon = fit.start();
  float damping = 0.01f;
  int stalls = 0;
  bool moved = true;

  for (int pass = 1; pass < settings.maxIterations; ++pass) {
    fit.formSystem(moved);
    const float candidateEpsilon = fit.tryStep(damping);

    const float difference = epsilon - candidateEpsilon;
    const double improvement =
        static_cast<double>(difference) / (std::fabs(static_cast<double>(epsilon)) + 1.0);
    if (static_cast<double>(settings.tolerance) >= improvement) {
      // The candidate that completes the stalls is dropped, however good it is.
      if (++stalls >= settings.maxStalls) return;
    } else {
      stalls = 0;  // also when the improvement is not a number
    }

    moved = epsilon > candidateEpsilon;
    if (moved) {
      fit.accept();
      damping /= 10.0f;
      epsilon = candidateEpsilon;
    } else {
      // Damping shrinks after a rejected step as well: the retry is bolder, not shorter.
      damping = static_cast<float>(static_cast<double>(damping) * 0.1);
      if (settings.resetStallsOnReject && damping < 0.05f) stalls = 0;
    }
  }
}

}  // namespace cornerpin::internal

#endif
