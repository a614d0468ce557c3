// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_TWO_FRAMES_H
#define TESTS_SHOT_FILES_TWO_FRAMES_H

#include <limits>
#include <string>

#include "shot/files/result_file.h"
#include "tests/support/files.h"
#include "tests/support/kept_results.h"

// A result of a base frame and a held one with numbers and texts that are awkward to write; two
// corners of its quad are behind the horizon.
inline cornerpin::ShotResult twoFrames() {
  using namespace cornerpin;
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  ShotResult result;
  result.baseFrame = result.referenceFrame = 5;
  result.baseTracks = 4;
  result.handedOver = 3;
  result.leftOut = 2;
  result.maxError = 0.1;
  result.quads = {{"tracks", {{{1, 2}, {3, 2}, {3, 4.5}, {1, 4.5}}}}};
  result.baseCentre = {2, 3.25};
  result.tracks = {{"a \"b\"", {0.1, -2}, {0.25, 0.125, 0.5}, {{5, 6, TrackUse::Good}}}, {}};
  result.tracks[1].name = "other";
  result.tracks[1].runs = {{5, 5, TrackUse::Absent}, {6, 6, TrackUse::Ignored}};
  result.advice = {{{5, 6}, "do \"this\""}};
  result.worst = {{"a \"b\"", {0, 60, 81, 70, 9.3, 0.5, true}}};
  FrameResult base;
  base.frame = 5;
  base.verdict.status = Status::Base;
  base.tracks = 4;
  base.rms = 0.0;
  base.h = kIdentity;
  base.figures = baseFrameFigures(1);
  base.expectedError = 0.0;
  FrameResult held;
  held.frame = 6;
  held.handedOver = 2;
  held.verdict.status = Status::Held;
  held.verdict.shortfall = Shortfall::FitFailed;
  held.verdict.error = "a \"quoted\"\nreason";
  held.rms = kNaN;
  held.verdict.model = Model::Held;
  held.h = {{{2, 0, 10}, {0, 0.5, 0}, {0, -0.25, 1}}};  // the horizon is at y = 4
  held.figures = {
      0.25,
      {{{{0.125, 0.0, 0.125}, {kNaN, kNaN, kNaN}, {0.0, 0.0, 0.015625}, {0.0, 0.0, 0x1p-1000}}}}};
  held.doubts = {{DoubtCode::NoFigures, "corner 1 of \"tracks\""}, {DoubtCode::Held, "b\n"}};
  result.frames = {base, held};
  return result;
}

inline std::string written(const cornerpin::ShotResult& result, cornerpin::Format format) {
  const TemporaryFolder folder;
  cornerpin::OutputFile out(folder / "r");
  cornerpin::writeResult(result, format, out);
  out.commit();
  const std::string text = readFile(folder / "r");
  keepResult(text);
  return text;
}

#endif
