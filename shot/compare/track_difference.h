// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_COMPARE_TRACK_DIFFERENCE_H
#define SHOT_COMPARE_TRACK_DIFFERENCE_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "shot/compare/axis_change.h"
#include "shot/compare/result_difference.h"
#include "shot/plane/picture.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// A position that two files have in different places.
struct ApartPosition {
  std::string track;  ///< as the first file calls it
  int frame = 0;      ///< as the first file counts
  double x = 0.0;     ///< the second file's minus the first one's
  double y = 0.0;

  /// The larger of the two, without its sign.
  double distance() const;
};

/// What is the same in two files and what is not.
struct Comparison {
  std::size_t positions = 0;  ///< that both have
  std::size_t apart = 0;      ///< of these, in other places by more than the files' digits allow
  ApartPosition worst;        ///< the one that is farthest apart, however near
  OnlyIn<std::string> tracks;
  /// In which only one has positions at all; the second one's by its own count, but for what both
  /// files tell of their first frames.
  OnlyIn<int> frames;
  /// Positions that only one has in tracks and frames that both have. Of both files those without a
  /// weight, which are as good as absent, are not told.
  std::size_t onlyInFirst = 0;
  std::size_t onlyInSecond = 0;
  std::size_t weights = 0;  ///< positions of both with different weights
  std::string weightTrack;  ///< where the first of them is
  int weightFrame = 0;

  /// Whether each has all that the other has.
  bool isWhole() const;
};

/// What has to be done to the first file to make it the second.
struct Explanation {
  AxisChange x;
  AxisChange y;
  int frames = 0;  ///< are added
  /// Tracks that the second file calls otherwise, as the first and as the second does.
  std::vector<std::pair<std::string, std::string>> renamed;

  /// How many different things it is: moved, flipped, scaled, frames, names.
  int parts() const;
};

struct TrackDifference {
  /// What coordinates and distances are those of: the first file's, in pixels where the picture's
  /// size is known, completed by what only the second one tells.
  Picture picture;
  Comparison plain;
  /// The simplest that makes the files the same, or most of their positions; none where nothing is
  /// to be explained, or nothing explains it.
  std::optional<Explanation> explanation;
  Comparison rest;  ///< with the explanation; without one it is `plain`
  Allowed x;        ///< what is allowed along the axes
  Allowed y;
  bool hasWeights = false;    ///< both have other weights than 1
  bool isFourTracks = false;  ///< in each file
  bool isNear = false;        ///< the explanation only brings them much nearer

  /// Whether anything differs that counts: a position, or one that only one has, and weights where
  /// both have any.
  bool any() const;
};

/// Compares two files' tracks, or the corners of two pins. What both tell of their pictures is
/// taken into account first: the second one's coordinates and frames are made those of the first's
/// convention; what only one tells, the other is taken to have. Where that takes the picture's size
/// and none tells it, the numbers are compared as they are.
///
/// Two coordinates are the same where both can be roundings of one number: half of the last digit
/// that each file carries, but of a hundredth of a pixel at most, is allowed for each, and a
/// millionth of a pixel in any case.
///
/// Where positions differ it is looked for what explains it: numbers that are added to coordinates
/// or frames, an axis turned about, a scale, other names, and several of these together. The
/// explanation has the fewest parts; one with more has to leave at most half as many positions
/// unexplained. It makes three quarters of the positions the same, so that single bad ones do not
/// hide it. Where none does, one is taken that leaves three quarters within a hundredth or a tenth
/// of a pixel, if that is a twentieth of what most were apart.
///
/// Of very many positions some 16 thousand are looked at for the explanation, and all of them are
/// compared then.
TrackDifference differenceOf(Tracks first, Tracks second);

}  // namespace cornerpin

#endif
