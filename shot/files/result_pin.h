// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_RESULT_PIN_H
#define SHOT_FILES_RESULT_PIN_H

#include "shot/files/pin.h"
#include "shot/files/result_transforms.h"
#include "shot/solve/named_quad.h"

namespace cornerpin {

/// What is made of a result for compositing.
enum class PinKind {
  Pin,        ///< the rectangle goes where the surface goes
  Stabilise,  ///< the picture is moved so that the surface stands as in the reference frame
  Matrix,     ///< the transforms alone
};

/// The four corners, which go around, by `Corner`: as they are seen in the picture, with the one
/// nearest to the lower left first. \param y  where y grows to
Quad byCorner(const Quad& corners, YAxis y);

/// The pin that a result's transforms make. Its rectangle is the whole picture, whose size is
/// known; without a size it is the quad, or the first of the result's. \param quad  what the
/// rectangle is put on, in the reference frame; null: on itself, which holds
///              for all but `PinKind::Pin`
Pin pinOf(const ResultTransforms& result, PinKind kind, const NamedQuad* quad);

}  // namespace cornerpin

#endif
