// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_MATCHMOVE_PROBLEM_H
#define CORNERPIN_SOLVER_MATCHMOVE_PROBLEM_H

/// \file
/// The least-squares problem behind one frame of a match-move.

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"
#include "cornerpin/solver/lm_solver.h"
#include "cornerpin/solver/matchmove.h"

/// The least-squares problem of one frame: the transform that carries the active tracks' base
/// positions onto their positions in the frame.
///
/// The eight parameters are the first eight elements of the 3 x 3 transform in column-major
/// order, H(0,0), H(1,0), H(2,0), H(0,1), H(1,1), H(2,1), H(0,2), H(1,2); H(2,2) is 1. Values 2i
/// and 2i + 1 are the x and y coordinate of active track i, multiplied by its weight in the frame.
///
/// The Jacobian comes from forward differences with a step of 0.0001 in every parameter,
/// translations included, divided by the step itself: it wants coordinates near 1.
///
/// The scene is not owned. Building a problem settles which tracks are active; every call that
/// needs their weights and positions reads them anew.
///
/// Nothing guards against fewer than four active tracks or a perspective denominator of 0; values
/// are infinite or NaN there. A copy shares `x`, `y` and `transform`: `setX` on either one changes
/// both.
class CORNERPIN_API MMatchmoveProblem : public MLMProblem {
 public:
  /// Selects the active tracks: weight above 0 both in the base frame (`baseWeights`) and in the
  /// frame. Reports "MVector index %d out of range %d" for a frame outside a track.
  MMatchmoveProblem(MMatchmove* scene, int frame);
  MMatchmoveProblem(const MMatchmoveProblem&) = default;
  MMatchmoveProblem& operator=(const MMatchmoveProblem&) = default;
  ~MMatchmoveProblem() override;

  /// The weighted positions observed in the frame, 2 * activeCount of them.
  MGenVector<float> getGoal() const;

  /// Shares storage with the given vector and updates `transform` and `y` in place.
  void setX(const MGenVector<float>& parameters) override;
  /// Shares `y`; computes nothing.
  void evalY(MGenVector<float>& out) override;
  /// Eight projections, compared with `y` as it stands; not to be called before the first `setX`.
  /// An empty dy becomes row-major. It gets a row for every element of `y` and a column for every
  /// element of `x`; when these are not as `setX` left them, what does not fit is reported.
  void evalDy(MGenMatrix<float>& dy) override;

  /// The weighted projection of the active tracks' base positions through h (3 x 3); `out` is
  /// resized to 2 * activeCount first, whatever is reported then. A smaller h reports the row or
  /// column index.
  void project(const MGenMatrix<float>& h, MGenVector<float>& out) const;

  /// Packs h, taken to be a contiguous column-major 3 x 3 matrix, into 8 parameters. Reports
  /// "MVector length mismatch %d != %d" when h has fewer than 8 elements.
  void xToVector(const MGenMatrix<float>& h, MGenVector<float>& parameters) const;
  /// Unpacks 8 parameters; other holders of h's storage see the change when h is 3 x 3 and
  /// ColumnMajor already. Reports "MVector length mismatch %d != %d".
  void xToMatrix(const MGenVector<float>& parameters, MGenMatrix<float>& h) const;
  /// Packs activeCount x 2 positions into weighted values. Fewer rows or columns are reported as
  /// indices out of range.
  void yToVector(const MGenMatrix<float>& m, MGenVector<float>& packed) const;
  /// Unpacks weighted values, divided by the weights, into activeCount x 2 positions; m keeps its
  /// layout. Too few values are reported as an index out of range.
  void yToMatrix(const MGenVector<float>& packed, MGenMatrix<float>& m) const;

  MGenVector<float> x;           ///< current parameters; empty before the first `setX`
  MGenVector<float> y;           ///< weighted projected positions at `x`
  MGenMatrix<float> transform;   ///< `x` as a 3 x 3 matrix
  MMatchmove* scene = nullptr;   ///< not owned
  int activeCount = 0;           ///< number of tracks taking part
  MGenVector<int> activeTracks;  ///< their indices in the scene, increasing
  int frame = 0;                 ///< the frame that is fitted, from 0

 private:
  const MMatchmoveTrack& activeTrack(int i) const { return scene->tracks[activeTracks[i]]; }
  float weight(int i) const { return activeTrack(i).weights[frame]; }
  void gather(MGenVector<float>& gathered) const;
  void projectGathered(const MGenMatrix<float>& h, const MGenVector<float>& gathered,
                       MGenVector<float>& out) const;

  MGenVector<float> gathered_;  // room for what a projection reads
};

#endif
