// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/start_places.h"

#include <algorithm>
#include <cmath>

#include "shot/fit/residuals.h"
#include "shot/robust/mixture_search.h"

namespace cornerpin {

namespace {

constexpr std::size_t kMostCandidates = 16;
constexpr int kFewestSupporters = 3;  // of a track that the fixed frame does not show

// The mean of places under perspective is not linear, and its supporters change with it.
constexpr int kMeanSteps = 3;

// The point that h carries to q; not a number where it is on or behind the horizon. With q given,
// U - q.x S = 0 and V - q.y S = 0 are linear in the point.
Point carriedBack(const Homography& h, Point q) {
  const double a = h[0][0] - q.x * h[2][0], b = h[0][1] - q.x * h[2][1];
  const double c = h[1][0] - q.y * h[2][0], d = h[1][1] - q.y * h[2][1];
  const double e = q.x * h[2][2] - h[0][2], f = q.y * h[2][2] - h[1][2];
  const double determinant = a * d - b * c;
  const Point p = {(d * e - b * f) / determinant, (a * f - c * e) / determinant};
  const bool there = std::isfinite(p.x) && std::isfinite(p.y) && denominator(h, p) > kHorizon;
  return there ? p : Place{}.point;
}

bool supports(const Match& sighting, const Homography& h, Point place, double noise) {
  if (!(denominator(h, place) > kHorizon)) return false;
  const double bound = kGoodWithin * noise;
  return squaredDistance(map(h, place), sighting.present) <= bound * bound;
}

// The places among which a track's sightings vote, those of a track beside each other.
class Candidates {
 public:
  Candidates(const std::vector<JointFrame>& frames, const std::vector<double>& noise,
             const ObservationsOf& observations, std::size_t trackCount)
      : frames_(frames), noise_(noise), observations_(observations), tracks_(trackCount) {
    count();
    fill();
    vote();
  }

  // The place with the most votes; unknown where these are too few.
  Place winnerOf(std::size_t track) const {
    const Track& t = tracks_[track];
    if (t.sightings == 0) return {};
    std::size_t best = t.first;
    for (std::size_t c = t.first; c < t.first + placesOf(t); ++c) {
      if (votes_[c] > votes_[best]) best = c;
    }
    Place winner;
    if (t.fixed || votes_[best] >= kFewestSupporters) winner.point = points_[best];
    return winner;
  }

 private:
  struct Track {
    std::size_t first = 0;  // of its candidates
    int sightings = 0;
    int seen = 0;        // by the pass that picks candidates, that of the fixed frame aside
    bool fixed = false;  // the fixed frame shows it
  };

  static std::size_t placesOf(const Track& t) {
    return std::min(static_cast<std::size_t>(t.sightings), kMostCandidates);
  }

  bool isFixed(std::size_t f) const { return frames_[f].part == JointFrame::Part::Fixed; }

  void count() {
    forEachSighting(noise_, observations_, [&](std::size_t f, const Match& m) {
      Track& t = tracks_[static_cast<std::size_t>(m.track)];
      ++t.sightings;
      t.fixed = t.fixed || isFixed(f);
    });
    std::size_t first = 0;
    for (Track& t : tracks_) {
      t.first = first;
      first += placesOf(t);
    }
    points_.assign(first, Place{}.point);
    votes_.assign(first, 0);
  }

  void fill() {
    forEachSighting(noise_, observations_, [&](std::size_t f, const Match& m) {
      Track& t = tracks_[static_cast<std::size_t>(m.track)];
      const Point p = carriedBack(frames_[f].h, m.present);
      if (isFixed(f)) {
        points_[t.first] = p;
        return;
      }
      // Of n sightings, those numbers i with i m mod n < m: m of them, evenly spread.
      const std::size_t ahead = t.fixed ? 1 : 0;
      const std::size_t n = static_cast<std::size_t>(t.sightings) - ahead;
      const std::size_t places = placesOf(t) - ahead;
      const std::size_t i = static_cast<std::size_t>(t.seen++);
      if (i * places % n < places) points_[t.first + ahead + i * places / n] = p;
    });
  }

  void vote() {
    forEachSighting(noise_, observations_, [&](std::size_t f, const Match& m) {
      const Track& t = tracks_[static_cast<std::size_t>(m.track)];
      for (std::size_t c = t.first; c < t.first + placesOf(t); ++c) {
        if (supports(m, frames_[f].h, points_[c], noise_[f])) ++votes_[c];
      }
    });
  }

  const std::vector<JointFrame>& frames_;
  const std::vector<double>& noise_;
  const ObservationsOf& observations_;
  std::vector<Track> tracks_;
  std::vector<Point> points_;
  std::vector<int> votes_;
};

// The normal equations of a place.
struct PlaceSum {
  void add(const Match& m, const Homography& h, Point place, double noise) {
    const auto [Xx, Xy, Yx, Yy] = derivative(h, place);
    const Point image = map(h, place);
    const Point r = {m.present.x - image.x, m.present.y - image.y};
    const double w = m.weight * m.weight / (noise * noise);
    xx += w * (Xx * Xx + Yx * Yx);
    xy += w * (Xx * Xy + Yx * Yy);
    yy += w * (Xy * Xy + Yy * Yy);
    x += w * (Xx * r.x + Yx * r.y);
    y += w * (Xy * r.x + Yy * r.y);
  }

  void move(Place& place) const {
    const double determinant = xx * yy - xy * xy;
    if (!(determinant > 0.0)) return;
    place.covariance = {yy / determinant, -xy / determinant, xx / determinant};
    place.point.x += place.covariance.xx * x + place.covariance.xy * y;
    place.point.y += place.covariance.xy * x + place.covariance.yy * y;
  }

  double xx = 0.0, xy = 0.0, yy = 0.0, x = 0.0, y = 0.0;
};

}  // namespace

std::vector<Place> startPlaces(const std::vector<JointFrame>& frames,
                               const ObservationsOf& observations, std::size_t trackCount) {
  const std::vector<double> noise = noiseOf(frames);
  std::vector<Place> places(trackCount);
  {
    const Candidates candidates(frames, noise, observations, trackCount);
    for (std::size_t t = 0; t < trackCount; ++t) places[t] = candidates.winnerOf(t);
  }
  refinePlaces(frames, noise, observations, std::vector<bool>(trackCount, true), places);
  return places;
}

void refinePlaces(const std::vector<JointFrame>& frames, const std::vector<double>& noise,
                  const ObservationsOf& observations, const std::vector<bool>& chosen,
                  std::vector<Place>& places) {
  std::vector<PlaceSum> sums;
  for (int step = 0; step < kMeanSteps; ++step) {
    sums.assign(places.size(), {});
    forEachSighting(noise, observations, [&](std::size_t f, const Match& m) {
      const auto t = static_cast<std::size_t>(m.track);
      if (!chosen[t] || !supports(m, frames[f].h, places[t].point, noise[f])) return;
      sums[t].add(m, frames[f].h, places[t].point, noise[f]);
    });
    for (std::size_t t = 0; t < places.size(); ++t) sums[t].move(places[t]);
  }
}

}  // namespace cornerpin
