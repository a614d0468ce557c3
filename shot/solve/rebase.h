// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_REBASE_H
#define SHOT_SOLVE_REBASE_H

#include "shot/solve/result.h"

namespace cornerpin {

/// Makes a result relative to another reference frame. Nothing is fitted: transforms are multiplied
/// by one inverse, and what lies on the surface (quads, tracks, covariances) is carried along. The
/// base frame, from which the frames were fitted, stays what it is, as do rms, sigma, noise and all
/// else that is about a frame's own picture. Doubts follow the figures (`judgeFigures`).
///
/// A corner's covariance in a frame is that of the image of a point that is exact in the reference
/// frame. The errors of two frames' fits are taken as independent: relative to the base frame they
/// have the covariances C, and then C of the frame + G C of the reference G', G the derivative of
/// the transform between the two. This can be undone, so that many steps give what one gives, up
/// to rounding; what has no figure takes no part in it.
///
/// What the fit gave frames that were smoothed or filled in is made relative in the same way, to
/// what it gave the reference frame. So where that was smoothed, all others have become different
/// from the fit, and say so.
///
/// Throws `std::invalid_argument` with a text for people, the result unchanged, for a frame outside
/// the shot, for a held one, and for one whose transform has no inverse, which does not show all
/// corners of the quads in front of its horizon, or from which some frame has no finite transform.
/// A track's place on or behind the horizon becomes unknown.
void rebase(ShotResult& result, int reference);

/// Throws the first of these.
void requireFrame(int reference, int first, int last);

/// The quads as the base frame would show them, given as the frame shows them that has the
/// transform `h`. Throws `std::invalid_argument` when that has no inverse, or a corner lies on or
/// behind its horizon, in front of which is `baseCentre` of the base frame.
std::vector<NamedQuad> carriedToBase(const std::vector<NamedQuad>& quads, const FrameResult& frame,
                                     Point baseCentre);

}  // namespace cornerpin

#endif
