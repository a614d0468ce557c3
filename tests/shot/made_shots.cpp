// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/made_shots.h"

#include <cstring>
#include <limits>
#include <string>

#include "shot/solve/shot_solver.h"
#include "tests/shot/known_shots.h"
#include "tests/shot/random.h"

using namespace cornerpin;

namespace made {

namespace {

constexpr int kFrames = 8;

Homography motion(Random& random, int frame) {
  const double f = frame;
  return {{{1.0 + f * random.real(-0.02, 0.02), f * random.real(-0.02, 0.02),
            f * random.real(-9.0, 9.0)},
           {f * random.real(-0.02, 0.02), 1.0 + f * random.real(-0.02, 0.02),
            f * random.real(-9.0, 9.0)},
           {f * random.real(-3e-5, 3e-5), f * random.real(-3e-5, 3e-5), 1.0}}};
}

void append(Bits& bits, double value) {
  if (value != value) value = std::numeric_limits<double>::quiet_NaN();
  std::uint64_t pattern = 0;
  std::memcpy(&pattern, &value, sizeof pattern);
  bits.push_back(pattern);
}

void append(Bits& bits, const FrameResult& frame) {
  const Verdict& verdict = frame.verdict;
  for (int value : {frame.frame, static_cast<int>(verdict.status), frame.tracks,
                    static_cast<int>(verdict.model), static_cast<int>(verdict.onTop),
                    static_cast<int>(verdict.origin.stage), frame.good}) {
    bits.push_back(static_cast<std::uint64_t>(value));
  }
  for (const auto& row : frame.h) {
    for (double element : row) append(bits, element);
  }
  for (double value : {frame.rms, frame.goodRms, frame.sigma, frame.figures.noise})
    append(bits, value);
  for (double deviation : frame.figures.deviations()) append(bits, deviation);
  append(bits, frame.expectedError);
  for (const Doubt& doubt : frame.doubts) bits.push_back(static_cast<std::uint64_t>(doubt.code));
}

// With what the hand-over adds to it.
void appendHandedOver(Bits& bits, const ShotResult& result) {
  for (int value : {result.baseFrame, result.handedOver, result.leftOut}) {
    bits.push_back(static_cast<std::uint64_t>(value));
  }
  for (const FrameResult& frame : result.frames) {
    bits.push_back(static_cast<std::uint64_t>(frame.handedOver));
    append(bits, frame);
  }
  for (const TrackResult& track : result.tracks) {
    for (double value : {track.place.x, track.place.y, track.covariance.xx, track.covariance.xy,
                         track.covariance.yy}) {
      append(bits, value);
    }
  }
}

}  // namespace

Tracks shot(std::uint32_t seed) {
  Random random(seed);
  Tracks tracks;
  const int count = static_cast<int>(random.real(6.0, 60.0));
  const double bad = random.real(0.0, 0.6);
  const double noise = random.real(0.0, 1.0);
  std::vector<Point> places;
  std::vector<bool> off;
  for (int t = 0; t < count; ++t) {
    tracks.names.push_back("t" + std::to_string(t));
    places.push_back({random.real(0.0, 1000.0), random.real(0.0, 600.0)});
    off.push_back(random.chance(bad));
  }
  for (int f = 0; f < kFrames; ++f) {
    const Homography h = motion(random, f);
    const int seen = f > 0 && random.chance(0.2) ? static_cast<int>(random.real(1.0, 6.0)) : count;
    for (int t = 0; t < seen; ++t) {
      const auto i = static_cast<std::size_t>(t);
      Observation o;
      const Point p = map(h, places[i]);
      const bool away = f > 0 && (off[i] || random.chance(0.05));
      o.x = away ? random.real(0.0, 1000.0) : p.x + random.noise(noise);
      o.y = away ? random.real(0.0, 600.0) : p.y + random.noise(noise);
      o.weight = random.chance(0.3) ? static_cast<float>(random.real(0.1, 2.0)) : 1.0f;
      o.track = t;
      o.frame = f;
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

SolveOptions options(std::uint32_t seed) {
  constexpr Loss kLosses[] = {Loss::Tukey, Loss::Cauchy, Loss::Huber, Loss::None};
  SolveOptions options;
  options.loss = kLosses[seed % 4];
  options.reduce = seed / 4 % 2 == 0;
  options.seed = seed;
  return options;
}

Tracks relayShot(std::uint32_t seed) {
  constexpr Fault kFaults[] = {Fault::None,           Fault::Outlier,      Fault::Slide,
                               Fault::SlideFromBirth, Fault::SlideAndStay, Fault::Jump};
  Relay relay;
  relay.frames = 30;
  relay.life = 14;
  relay.atATime = 16;
  relay.faults = {kFaults[seed % 6], 0.2};
  return made::relay(relay, seed).tracks;
}

SolveOptions relayOptions(std::uint32_t seed) {
  constexpr Loss kLosses[] = {Loss::Tukey, Loss::Cauchy, Loss::Huber};
  SolveOptions options;
  options.loss = kLosses[seed % 3];
  if (seed % 2 == 0) options.base = static_cast<int>(seed % 30);
  if (seed % 5 == 0) options.reference = 7;
  options.seed = seed;
  return options;
}

Bits handedOver(std::uint32_t first, std::uint32_t last) {
  Bits bits;
  for (std::uint32_t seed = first; seed < last; ++seed) {
    appendHandedOver(bits, solveShot(relayShot(seed), relayOptions(seed)));
  }
  return bits;
}

Bits solved(std::uint32_t first, std::uint32_t last) {
  Bits bits;
  for (std::uint32_t seed = first; seed < last; ++seed) {
    const Tracks tracks = shot(seed);
    SolveOptions explained = options(seed);
    explained.influences = true;
    const ShotResult result = solveShot(tracks, explained);
    for (const FrameResult& frame : result.frames) {
      for (const TrackInfluence& influence : frame.influences) {
        bits.push_back(static_cast<std::uint64_t>(influence.track));
        bits.push_back(static_cast<std::uint64_t>(frame.frame));
        append(bits, influence.weight);
        append(bits, influence.leverage);
        append(bits, influence.influence);
      }
    }
    for (const FrameResult& frame : result.frames) append(bits, frame);
  }
  return bits;
}

}  // namespace made
