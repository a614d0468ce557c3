// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_SOLVER_MATCHMOVE_H
#define CORNERPIN_SOLVER_MATCHMOVE_H

/// \file
/// The match-move: a scene of tracks, and a transform for every frame.

#include "cornerpin/export.h"
#include "cornerpin/foundation/array.h"
#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"

/// One feature track over all frames of a shot: a point on the surface that is followed.
struct CORNERPIN_API MMatchmoveTrack {
  MGenMatrix<float> positions;  ///< frames x 2; row f is (x, y) in frame f, caller's units
  MGenVector<float> weights;    ///< one per frame; > 0 present, otherwise absent
};

/// A scene of feature tracks and, after `solve`, for every frame the 3 x 3 projective transform
/// that carries each track's place in the base frame to its place in that frame.
///
/// Fill in `tracks` and `baseFrame`, call `solve`, read `outputs` or map points with `project`.
///
/// Units: the caller's, and the solver neither scales nor centres them, while it computes in
/// single precision with a difference step of 0.0001. Map the shot by one similarity so that the
/// base frame's tracks lie in -1 .. 1 and carry the transforms back: raw pixels end visibly short
/// of the optimum. A residual is multiplied by the track's weight w in that frame, so its cost is
/// w^2 r^2. Every track must have as many frames as the first one.
///
/// Positions and weights are not checked. A position that is NaN or infinite in a frame other than
/// the base frame goes unnoticed: every candidate of that frame's fit is rejected, and the frame
/// keeps its neighbour's transform. A base position of an active track that is not finite, and an
/// infinite weight outside the base frame, throw `LvException` "nan". A NaN weight means absent.
///
/// A frame whose active tracks (present in it and in the base frame) are fewer than four, or lie
/// so that they fix no transform, is fitted like any other: it may come out useless, and it ends
/// the whole solve when the normal matrix is exactly singular.
class CORNERPIN_API MMatchmove {
 public:
  /// Solves every frame: the base frame is the identity, then forward from it to the last frame,
  /// then backward from it to frame 0, each frame starting from its neighbour's transform. A frame
  /// without active tracks takes its neighbour's transform.
  ///
  /// Throws `LvBadIndexException` "MArray::operator[]" for a scene without tracks (before anything
  /// but `trackCount` changes) and for a base frame outside the shot (after `setupOutputs`). What a
  /// frame's fit throws ends the solve: frames solved so far keep their results, the failing frame
  /// holds its neighbour's transform, and frames not reached hold what `outputs` held before.
  ///
  /// An error handler that returns lets the solve go on, on the scene as it has left it: it may
  /// change all members, and the storage of the tracks, but not destroy the scene.
  void solve();

  /// Sets the counts and resizes `basePositions`, `baseWeights` and `outputs`, keeping what they
  /// hold. Part of `solve`.
  void setupOutputs();

  /// Makes the base frame's transform the identity and copies every track's base-frame data. Part
  /// of `solve`.
  void solveBaseFrame();

  /// Fits one frame, starting from the transform in `outputs[frame]`, and leaves it alone where no
  /// track is active or the fit throws. The start is taken in the order in which it is stored, so
  /// it should be ColumnMajor; the result is. Part of `solve`, after the two above.
  void solveFrame(int frame);

  /// Maps the base-frame point p (2 elements) into a frame; `out` is resized to 2. A point on the
  /// transform's horizon yields infinities or NaN. Throws `LvBadIndexException`
  /// "MArray::operator[]" for a frame outside the shot; a transform or point that is too small
  /// reports the index.
  void project(int frame, const MGenVector<float>& p, MGenVector<float>& out) const;

  MArray<MMatchmoveTrack> tracks;     ///< the input; `solve` only reads them
  int spare = 0;                      ///< read and written by nothing
  int baseFrame = 0;                  ///< the frame whose transform is the identity, from 0
  int trackCount = 0;                 ///< number of tracks, from `setupOutputs`
  int frameCount = 0;                 ///< length of the first track's weights, from `setupOutputs`
  MGenMatrix<float> basePositions;    ///< trackCount x 2: positions in the base frame
  MGenVector<float> baseWeights;      ///< a track not above 0 here takes part in no frame
  MArray<MGenMatrix<float>> outputs;  ///< per frame 3 x 3, ColumnMajor, element (2, 2) = 1
};

extern template class MArray<MMatchmoveTrack>;
extern template class MArray<MGenMatrix<float>>;

#endif
