// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_LM_SOLVER_H
#define CORNERPIN_SOLVER_LM_SOLVER_H

/// \file
/// The damped least-squares solver and what it asks of a problem.

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

/// What `MLMSolver` fits: values y(x) of a parameter vector x, and their Jacobian.
class CORNERPIN_API MLMProblem {
 public:
  MLMProblem() = default;
  MLMProblem(const MLMProblem&) = default;
  MLMProblem& operator=(const MLMProblem&) = default;
  virtual ~MLMProblem();

  /// Makes x the current parameters and brings everything that depends on them up to date. The
  /// solver passes its own `state` or a candidate; keeping x shares its storage.
  virtual void setX(const MGenVector<float>& x) = 0;
  /// Stores the values at the current x; their number is the problem's choice. Sharing storage of
  /// the problem's own is fine: the solver copies what it keeps.
  virtual void evalY(MGenVector<float>& y) = 0;
  /// Stores the Jacobian at the current x, sized by the problem: one row per value, one column per
  /// parameter, dy(k, i) the derivative of value k with respect to parameter i.
  virtual void evalDy(MGenMatrix<float>& dy) = 0;
};

/// Finds parameters x that bring the values y(x) of a problem nearest to a goal in the Euclidean
/// norm, by damped Gauss-Newton (Levenberg-Marquardt) steps in single precision.
///
/// Call `setProblem`, `setGoal`, `setState` (and `setTrust` for bounded steps) in any order, then
/// `solve`, then `getState`. The problem itself may be left at a rejected candidate.
///
/// What surprises:
/// - `solve` writes into `state`, which shares its storage with the vector given to `setState`.
/// - Damping starts at 0.01 and shrinks tenfold after every step, rejected ones included.
/// - Damping multiplies the diagonal of the normal matrix, so it cannot cure a zero diagonal.
/// - Passes are counted before they run: at most `maxIterations` - 1 of them evaluate a step.
/// - The step that completes `maxStalls` stalls is dropped, even when it is the best so far.
///
/// `solve` throws `LvException` "nan" when a product of Jacobian entries or the damped diagonal is
/// infinite or NaN, lets "inverse: singular matrix" of `inverse` and whatever the problem throws
/// pass through, and then leaves in `state` and `values` the last accepted point. A trust vector
/// shorter than the state ends in "MVector index %d out of range %d", as does a state that has
/// grown since `setState`, a solve without parameters in "sgetrf", and one without a problem throws
/// `LvIllegalArgumentException` "MLMSolver::solve".
///
/// A copy of a solver shares its vectors, so solving either one moves both states.
///
/// One solver and its problem belong to one thread at a time. Each pass costs one inversion of an
/// n x n matrix and one evaluation; the Jacobian is evaluated after accepted steps only.
///
/// Method: K. Levenberg, "A method for the solution of certain non-linear problems in least
/// squares", 1944; D. Marquardt, "An algorithm for least-squares estimation of nonlinear
/// parameters", 1963 (multiplicative damping).
class CORNERPIN_API MLMSolver {
 public:
  MLMSolver() = default;
  MLMSolver(const MLMSolver&) = default;
  MLMSolver& operator=(const MLMSolver&) = default;
  virtual ~MLMSolver();

  /// The problem is not owned and must outlive the solve.
  void setProblem(MLMProblem* p);
  /// The starting point, sharing storage with x; also fixes the number of parameters.
  void setState(const MGenVector<float>& x);
  /// The target values, sharing storage with g; also fixes the number of values.
  void setGoal(const MGenVector<float>& g);
  /// Step scales, one per parameter (more are ignored), in that parameter's unit, sharing storage
  /// with t; empty for none. A step, each component divided by its scale, is cut to length 1, so no
  /// parameter moves by more than its scale at once.
  void setTrust(const MGenVector<float>& t);

  /// \{
  /// The starting point before `solve`, the best point found after it.
  MGenVector<float>& getState() { return state; }
  const MGenVector<float>& getState() const { return state; }
  /// \}

  /// The Euclidean distance of y from the goal. The goal must be as long as y: not checked.
  float computeEpsilon(const MGenVector<float>& y) const;

  /// Runs the iteration. Can be called again: it starts anew from `state`.
  void solve();

  MLMProblem* problem = nullptr;  ///< not owned
  MGenVector<float> state;        ///< the parameters x
  MGenVector<float> goal;         ///< the target values
  MGenVector<float> values;       ///< y at `state`
  MGenVector<float> trust;        ///< step scales; empty means no scaling and no step limit
  MGenMatrix<float> jacobian;     ///< the last one obtained from the problem
  int stateSize = 0;              ///< number of parameters, from `setState`
  int goalSize = 0;               ///< number of values, from `setGoal`
  int maxStalls = 6;              ///< consecutive passes of too little improvement that end a solve
  /// Counted before each pass, so at most maxIterations - 1 of them evaluate a step.
  int maxIterations = 75;
  float spareTolerance = 0.001f;     ///< read by nothing
  float tolerance = 0.01f;           ///< relative improvement at or below which a pass is a stall
  bool resetStallsOnReject = false;  ///< a rejected step whose new damping is below 0.05 (all
                                     ///< are) resets the count of stalls
};

#endif
