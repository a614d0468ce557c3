// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/view.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "shot/plane/extent.h"
#include "shot/plane/points.h"

namespace cornerpin {

namespace {

constexpr double kMargin = 0.05;

void addFinite(Points& points, Point p) {
  if (std::isfinite(p.x) && std::isfinite(p.y)) points.add(p);
}

bool isGood(const TrackResult& track, int frame) {
  return std::any_of(track.runs.begin(), track.runs.end(), [&](const TrackRun& run) {
    return run.use == TrackUse::Good && run.first <= frame && frame <= run.last;
  });
}

// Where good tracks were seen, or have to be.
Points goodPlaces(const PageSubject& subject, const Shown& shown, const PictureMap& map) {
  const std::vector<TrackResult>& tracks = subject.result.tracks;
  std::vector<bool> isShown(tracks.size(), false);
  for (const std::size_t t : shown.tracks) isShown[t] = true;
  Points points;
  for (const std::size_t f : shown.frames) {
    const FrameResult& frame = subject.result.frames[f];
    if (subject.tracks != nullptr) {
      for (const Observation& seen : subject.tracks->inFrame(frame.frame)) {
        const auto t = static_cast<std::size_t>(seen.track);
        if (t < tracks.size() && isShown[t] && isGood(tracks[t], frame.frame))
          addFinite(points, map(Point{seen.x, seen.y}));
      }
      continue;
    }
    for (const std::size_t t : shown.tracks) {
      if (isGood(tracks[t], frame.frame))
        addFinite(points, map(carried(subject.result, frame, tracks[t].place)));
    }
  }
  return points;
}

Points corners(const ShotResult& result, const Shown& shown, const PictureMap& map) {
  Points points;
  for (const std::size_t f : shown.frames) {
    for (const NamedQuad& quad : result.quads) {
      for (const Point corner : quad.corners)
        addFinite(points, map(carried(result, result.frames[f], corner)));
    }
  }
  return points;
}

Box grown(const Box& box, double share) {
  const double x = share * (box.high.x - box.low.x);
  const double y = share * (box.high.y - box.low.y);
  return {{box.low.x - x, box.low.y - y}, {box.high.x + x, box.high.y + y}};
}

Box around(const Points& tracks, const Points& corners) {
  if (tracks.empty() && corners.empty()) return {{0.0, 0.0}, {1.0, 1.0}};
  if (tracks.empty()) return boxAround(withoutFarOff(corners));
  const Box box = boxAround(withoutFarOff(tracks));
  const Box most = grown(box, 1.0);
  Box all = box;
  for (const Point p : corners) {
    if (p.x < most.low.x || p.x > most.high.x || p.y < most.low.y || p.y > most.high.y) continue;
    all.low = {std::min(all.low.x, p.x), std::min(all.low.y, p.y)};
    all.high = {std::max(all.high.x, p.x), std::max(all.high.y, p.y)};
  }
  return all;
}

}  // namespace

View viewOf(const PageSubject& subject, const Shown& shown,
            const std::optional<PictureSize>& size) {
  Picture from = subject.result.provenance.picture;
  if (!(from.width && from.height) && size) {
    from.width = size->width;
    from.height = size->height;
  }
  Picture page = from;
  if (page.y) page.y = YAxis::Down;
  if (page.pixelCentre) page.pixelCentre = 0.5;
  View view;
  if (from.width && from.height) {
    view.width = *from.width;
    view.height = *from.height;
    view.isPicture = true;
    view.fromTracks = PictureMap(from, page);
    return view;
  }
  // A turn of the y axis goes about any place: the view is where the tracks are then.
  from.width = page.width = 1;
  from.height = page.height = 1;
  view.fromTracks = PictureMap(from, page);
  const Box box = grown(around(goodPlaces(subject, shown, view.fromTracks),
                               corners(subject.result, shown, view.fromTracks)),
                        kMargin);
  view.x = box.low.x;
  view.y = box.low.y;
  // Of tracks on a line, or a single one.
  const double larger = std::max(box.high.x - box.low.x, box.high.y - box.low.y);
  const double least = larger > 0.0 ? kMargin * larger : 1.0;
  view.width = std::max(box.high.x - box.low.x, least);
  view.height = std::max(box.high.y - box.low.y, least);
  return view;
}

}  // namespace cornerpin
