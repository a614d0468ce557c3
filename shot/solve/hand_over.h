// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_HAND_OVER_H
#define SHOT_SOLVE_HAND_OVER_H

#include <vector>

#include "shot/fit/matches.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/frame_fit.h"
#include "shot/solve/tracks.h"
#include "shot/surface/joint_frames.h"

namespace cornerpin {

/// For the fits that find places: all tracks that are seen in a frame (weight above 0), in the
/// file's unit. Frames count from the shot's first; the tracks must outlive the function.
ObservationsOf observationsOf(const Tracks& tracks);

/// How many of the matches are of tracks that the base frame lacks.
int othersIn(const BaseFrame& base, const Matches& matches);

/// Whether the base frame sees the track of each match.
std::vector<bool> seenIn(const BaseFrame& base, const Matches& matches);

/// Whether the base frame's tracks decide a frame alone: where they would be at most the square
/// root of 2 less certain at the worst corner of the surface than with the help of all others.
///
/// With g the noise gain, their own fit has the variance g(seen)^2 from each of the two frames;
/// with all others' help it would be g(base)^2 from the base frame, where all its tracks tell where
/// the surface is, and g(all)^2 from the frame. What tracks do wrong, they do more the longer they
/// are followed, and a place that was learnt on the way holds all that was wrong with the frames
/// that it was learnt from.
///
/// \param all         places of all tracks of the frame that are known
/// \param seenInBase  those of them that the base frame sees
bool baseSuffices(const BaseFrame& base, const Points& all, const Points& seenInBase,
                  const Quad& surface);

/// Whether the help of all others makes a frame's transform more than a hundredth more certain at
/// the worst corner. Half of the variance comes from the base frame, and nothing helps against
/// that.
///
/// \param all         places of the good tracks of the frame that are known
/// \param seenInBase  those of them that the base frame sees
bool othersHelp(const Points& all, const Points& seenInBase, const Quad& surface);

/// Fits a frame by all its tracks. Where some of them are not the base frame's, the sweep's surface
/// moves on to the frame's good tracks: what has left the picture need not be carried well.
FrameFit fitByAll(FrameFitter& fitter, const BaseFrame& base, const Matches& matches, Sweep& sweep);

/// Fits a frame by the base frame's tracks alone where they suffice and lead to a full transform,
/// and else by all.
///
/// \param matches  all tracks of the frame that are known; replaced by those that were used
FrameFit fitHandedOver(FrameFitter& fitter, const BaseFrame& base, Matches& matches, Sweep& sweep);

}  // namespace cornerpin

#endif
