// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_SURFACE_MAP_H
#define SHOT_SOLVE_SURFACE_MAP_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "shot/fit/linearised_fit.h"
#include "shot/fit/matches.h"
#include "shot/plane/homography.h"
#include "shot/plane/points.h"
#include "shot/solve/base_frame.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// The tracks of a frame that are seen there (weight above 0) and take part, in the file's unit.
/// Counted first, so that the lists of the matches are made once.
/// \param takesPart  whether a track does
/// \param placeOf    its place on the surface
template <class TakesPart, class PlaceOf>
Matches matchesOf(const Tracks::Range& frame, const TakesPart& takesPart, const PlaceOf& placeOf) {
  const auto isTaken = [&](const Observation& o) { return o.weight > 0.0f && takesPart(o.track); };
  Matches matches(static_cast<std::size_t>(std::count_if(frame.begin(), frame.end(), isTaken)));
  std::size_t next = 0;
  for (const Observation& o : frame) {
    if (!isTaken(o)) continue;
    matches.set(next++, {placeOf(o.track), {o.x, o.y}, static_cast<double>(o.weight), o.track});
  }
  return matches;
}

/// Where tracks are on the surface, in the coordinates of the base frame's picture: the bases of
/// all matches.
class SurfaceMap {
 public:
  /// Knows the base frame's tracks, each at the place where that frame sees it.
  /// \param tracks  as many as the shot has names
  SurfaceMap(const BaseFrame& base, std::size_t tracks);

  bool knows(int track) const;
  Point placeOf(int track) const { return places_[static_cast<std::size_t>(track)]; }
  void setPlace(int track, Point place) { places_[static_cast<std::size_t>(track)] = place; }

  /// The tracks of a frame that are seen there (weight above 0) and known, in the file's unit.
  Matches matchesIn(const Tracks& tracks, int frame) const;

 private:
  std::vector<Point> places_;  // by track; NaN where it is not known
};

/// The map of one sweep, which learns the tracks that the base frame lacks from the frames that
/// the sweep has solved.
///
/// A solved frame carries a track's place there back to the surface. The sightings of a track are
/// averaged, each with the weight that the noise of its frame gives it on the surface: the track's
/// own, and what the noise of all tracks makes of the transform there. A track
/// becomes known with the fifth sighting if the five agree as normal errors do but in one of 1,000
/// tracks; otherwise its sightings are counted anew from the last one, so a track that slides is
/// learnt where it comes to rest. From then on, each frame in which it is good adds to its average.
class LearningMap {
 public:
  LearningMap(const BaseFrame& base, std::size_t tracks);

  const SurfaceMap& map() const { return map_; }

  /// \param seen     all tracks of the frame
  /// \param matches  those of them that were known
  /// \param good     of the matches, those that keep to their places
  /// \param h        surface to frame
  /// \param sigma    of a coordinate of a good track, in the file's unit
  void learn(Tracks::Range seen, const Matches& matches, const std::vector<bool>& good,
             const Homography& h, double sigma);

 private:
  // The sum over sightings at p of W, W p and p'W p, where inv(W) is the sighting's covariance.
  struct Sightings {
    void add(Point p, const Symmetric2& w);
    Point mean() const;
    bool agree() const;

    int count = 0;
    Symmetric2 w;
    Point wp;
    double pwp = 0.0;
  };

  // How far off the place of a sighting may be.
  struct SightingNoise {
    Symmetric2 weightAt(Point p) const;

    const Homography& h;
    double sigma;
    LinearisedFit fit;
    Point front;
  };

  void learn(int track, Point present, const SightingNoise& noise);

  SurfaceMap map_;
  std::vector<Sightings> sightings_;  // by track
  std::vector<bool> inBase_;          // by track: its place stays
};

}  // namespace cornerpin

#endif
