// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_REPORT_SMALL_RESULT_H
#define TESTS_SHOT_REPORT_SMALL_RESULT_H

#include <string>

#include "shot/solve/result.h"
#include "shot/solve/tracks.h"

// Results put together by hand, of tracks on a line that move by (2, 1) from frame to frame.
namespace small {

inline const cornerpin::Quad kSquare = {{{10, 20}, {90, 20}, {90, 60}, {10, 60}}};

inline cornerpin::Homography shiftBy(double frames) {
  return {{{1, 0, 2 * frames}, {0, 1, frames}, {0, 0, 1}}};
}

inline std::string nameOf(int track) { return "t" + std::to_string(track); }

inline cornerpin::Point placeOf(int track) { return {10.0 + 0.5 * track, 20.0 + 0.25 * track}; }

// Frames from `first` on, solved from there; all tracks are good in all of them.
inline cornerpin::ShotResult result(int tracks, int frames, int first = 0) {
  using namespace cornerpin;
  ShotResult result;
  result.baseFrame = result.referenceFrame = first;
  result.baseTracks = tracks;
  result.baseCentre = {50, 40};
  result.maxError = 2.0;
  result.quads = {{"sign", kSquare}};
  for (int f = 0; f < frames; ++f) {
    FrameResult frame;
    frame.frame = first + f;
    frame.h = shiftBy(f);
    frame.verdict.status = f == 0 ? Status::Base : Status::Solved;
    frame.verdict.model = Model::Projective;
    frame.tracks = frame.good = tracks;
    frame.rms = frame.goodRms = frame.sigma = f == 0 ? 0.0 : 0.25;
    frame.expectedError = f == 0 ? 0.0 : 0.5;
    const double half = 0.5 * frame.expectedError * frame.expectedError;
    const Symmetric2 c = {half, 0.0, half};
    frame.figures.quads = {{c, c, c, c}};
    result.frames.push_back(frame);
  }
  for (int t = 0; t < tracks; ++t) {
    TrackResult track;
    track.name = nameOf(t);
    track.place = placeOf(t);
    track.covariance = {0.01, 0.0, 0.01};
    track.runs = {{first, first + frames - 1, TrackUse::Good}};
    result.tracks.push_back(track);
  }
  return result;
}

// Where these tracks are seen; the first one further off in x by this much.
inline cornerpin::Tracks tracks(int count, int frames, int first = 0, double off = 0.0) {
  using namespace cornerpin;
  Tracks tracks;
  for (int t = 0; t < count; ++t) tracks.names.push_back(nameOf(t));
  for (int f = 0; f < frames; ++f) {
    for (int t = 0; t < count; ++t) {
      const Point place = placeOf(t);
      Observation row;
      row.x = place.x + 2 * f + (t == 0 && f > 0 ? off : 0.0);
      row.y = place.y + f;
      row.track = t;
      row.frame = first + f;
      tracks.observations.push_back(row);
    }
  }
  tracks.arrange();
  return tracks;
}

inline void doubt(cornerpin::FrameResult& frame, double error) {
  frame.expectedError = error;
  frame.doubts = {{cornerpin::DoubtCode::ExpectedError, "a corner may be off"}};
}

}  // namespace small

#endif
