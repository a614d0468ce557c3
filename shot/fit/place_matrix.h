// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_PLACE_MATRIX_H
#define SHOT_FIT_PLACE_MATRIX_H

#include "shot/fit/lapack.h"
#include "shot/plane/points.h"
#include "shot/plane/similarity.h"

namespace cornerpin {

/// The sum of S'S over places behind `unit`, with S the slopes of the identity there
/// (`TrackSlopes`): how firmly tracks at these places hold a transform, whatever it is.
SquareMatrix<8> placeMatrix(const Points& places, const Similarity& unit);

}  // namespace cornerpin

#endif
