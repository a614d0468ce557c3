// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/table_rows.h"
#include "tests/shot/table_random.h"

#include <cmath>
#include <random>

using namespace cornerpin;

namespace made {

namespace {

constexpr int kFrames = 60;
constexpr double kWidth = 1000.0;
constexpr double kHeight = 600.0;

using Random = made::TableRandom;

Homography steady(int f) {
  const double t = f;
  return {{{1 + 0.003 * t, 0.002 * t, 4 * t},
           {-0.003 * t, 1 + 0.001 * t, -2 * t},
           {2e-6 * t, -3e-6 * t, 1}}};
}

Homography jumping(int f) {
  Homography h = steady(f);
  if (f < kFrames / 2) return h;
  const Homography turn = {{{-0.6, 0.7, 500}, {-0.7, -0.6, 900}, {0, 0, 1}}};
  Homography product{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      for (std::size_t k = 0; k < 3; ++k) product[i][j] += turn[i][k] * h[k][j];
    }
  }
  return product;
}

// The far edge comes within a tenth of the horizon.
Homography grazing(int f) {
  Homography h = steady(f);
  h[2][1] = -0.9 / kHeight * f / (kFrames - 1.0);
  return h;
}

// The perspective goes to and fro by some 60 px at the far corners, once in 40 frames.
Homography turning(int f) {
  Homography h = steady(f);
  h[2][0] += 6e-5 * std::sin(f * 6.283185307179586 / 40.0);
  h[2][1] += 6e-5 * std::sin(f * 6.283185307179586 / 30.0);
  return h;
}

// Every frame turns by itself.
Homography shaking(int f) {
  Random random(static_cast<unsigned>(f) + 1);
  Homography h = steady(f);
  for (std::size_t row : {0u, 1u, 2u}) {
    for (std::size_t column : {0u, 1u, 2u}) {
      const double size = row == 2 ? (column == 2 ? 0.0 : 1e-5) : (column == 2 ? 5.0 : 0.003);
      h[row][column] += size * random.uniform(-1.0, 1.0);
    }
  }
  return h;
}

// 90 px around a corner of the surface.
bool nearCorner(const Homography& motion, Point p) {
  const Point corner = map(motion, {100, 100});
  return std::hypot(p.x - corner.x, p.y - corner.y) < 90.0;
}

struct Scenario {
  std::string name;
  Homography (*motion)(int);
  // Changes the true position of track t in frame f; false when it is not seen.
  std::function<bool(int t, int f, Point& p, Random&)> fault;
  int tracks = 60;
  double noise = 0.5;  // standard deviation in pixels
  // The frames whose errors count.
  int first = 1;
  int last = kFrames - 1;
};

bool sound(int, int, Point&, Random&) { return true; }

Point anywhere(Random& random) { return {random.uniform(0, kWidth), random.uniform(0, kHeight)}; }

Scenario outliers(int percent, int tracks = 60, double noise = 0.5) {
  return {std::to_string(percent) + " % outliers", steady,
          [=](int t, int, Point& p, Random& r) {
            if (t * 100 < percent * tracks) p = anywhere(r);
            return true;
          },
          tracks, noise};
}

Scenario renamed(Scenario scenario, const char* name) {
  scenario.name = name;
  return scenario;
}

std::vector<Scenario> scenarios() {
  std::vector<Scenario> all = {{"clean", steady, sound}};
  for (int percent : {10, 20, 40, 60, 80}) all.push_back(outliers(percent));
  all.push_back({"30 % slide 1 px a frame", steady, [](int t, int f, Point& p, Random&) {
                   if (t % 10 < 3) p.x += f, p.y += 0.3 * f;
                   return true;
                 }});
  all.push_back({"40 % drive off together", steady, [](int t, int f, Point& p, Random&) {
                   if (t % 5 < 2) p.x += 6 * f;
                   return true;
                 }});
  all.push_back({"tracks die, 8 are left", steady,
                 [](int t, int f, Point&, Random&) { return t < 8 || f < (t * kFrames) / 60; }});
  all.push_back({"half hidden, 20 % outliers", steady, [](int t, int f, Point& p, Random& r) {
                   if (t < 12) p = anywhere(r);
                   return f < 20 || f > 40 || t % 2 == 0;
                 }});
  all.push_back({"jump, 30 % outliers", jumping, [](int t, int, Point& p, Random& r) {
                   if (t < 18) p = anywhere(r);
                   return true;
                 }});
  all.push_back({"near the horizon, 20 % outliers", grazing, [](int t, int, Point& p, Random& r) {
                   if (t < 12) p = anywhere(r);
                   return true;
                 }});
  all.push_back({"noise of 3 px", steady, sound, 60, 3.0});
  all.push_back(renamed(outliers(20, 60, 3.0), "noise of 3 px, 20 % outliers"));
  all.push_back(renamed(outliers(20, 60, 0.1), "noise of 0.1 px, 20 % outliers"));
  all.push_back({"half creep 0.05 px a frame", steady,
                 [](int t, int f, Point& p, Random&) {
                   if (t % 2 == 0) p.x += (t % 4 ? 0.05 : -0.05) * f, p.y += 0.02 * f;
                   return true;
                 },
                 60, 0.1});
  all.push_back({"heavy tails", steady,
                 [](int, int, Point& p, Random& r) {
                   const double length = 0.5 / std::sqrt(r.uniform(1e-4, 1.0));
                   const double angle = r.uniform(0.0, 6.283185307179586);
                   p.x += length * std::cos(angle), p.y += length * std::sin(angle);
                   return true;
                 },
                 60, 0.1});
  all.push_back({"12 tracks, one 20 px off", steady,
                 [](int t, int, Point& p, Random&) {
                   if (t == 0) p.x += 20.0;
                   return true;
                 },
                 12, 0.5});
  all.push_back({"12 tracks, 4 wander off", steady,
                 [](int t, int f, Point& p, Random&) {
                   if (t < 4) p.x += 0.3 * t * f, p.y += 0.3 * f;
                   return true;
                 },
                 12, 0.5});
  all.push_back({"8 tracks", steady, sound, 8, 0.5});
  all.push_back(renamed(outliers(40, 300, 0.5), "300 tracks, 40 % outliers"));
  all.push_back({"a tenth close on another surface", steady,
                 [](int t, int f, Point& p, Random&) {
                   if (t % 10 == 0) p.x += 3 + 0.1 * f + 0.01 * p.y;
                   return true;
                 },
                 60, 1.0});
  for (int left : {1, 2, 3, 4, 5}) {
    all.push_back({std::to_string(left) + (left > 1 ? " tracks" : " track") + " for 10 frames",
                   steady,
                   [left](int t, int f, Point&, Random&) { return f < 25 || f >= 35 || t < left; },
                   60, 0.5, 25, 34});
  }
  all.push_back({"tracks near one line for 10 frames", steady,
                 [](int t, int f, Point& p, Random&) {
                   if (f < 25 || f >= 35) return true;
                   const Point centre = map(steady(f), {500, 300});
                   return t % 2 == 0 && std::fabs(p.y - centre.y) < 40.0;
                 },
                 120, 0.5, 25, 34});
  all.push_back({"tracks in one corner for 10 frames", steady,
                 [](int, int f, Point& p, Random&) {
                   if (f < 25 || f >= 35) return true;
                   const Point corner = map(steady(f), {100, 100});
                   return std::hypot(p.x - corner.x, p.y - corner.y) < 90.0;
                 },
                 200, 0.5, 25, 34});
  all.push_back(
      {"tracks in one corner for 10 frames, jump before", jumping,
       [](int, int f, Point& p, Random&) { return f < 30 || f >= 40 || nearCorner(jumping(f), p); },
       200, 0.5, 30, 39});
  all.push_back(
      {"tracks in one corner for 10 frames, camera turns quickly", turning,
       [](int, int f, Point& p, Random&) { return f < 25 || f >= 35 || nearCorner(turning(f), p); },
       200, 0.5, 25, 34});
  all.push_back(
      {"tracks in one corner for 10 frames, camera shakes", shaking,
       [](int, int f, Point& p, Random&) { return f < 25 || f >= 35 || nearCorner(shaking(f), p); },
       200, 0.5, 25, 34});
  all.push_back({"tracks in one corner to the end", turning,
                 [](int, int f, Point& p, Random&) { return f < 50 || nearCorner(turning(f), p); },
                 200, 0.5, 50, 59});
  return all;
}

// With these OpenCV's estimators do well on the whole. Left at a third or a half, their corners are
// up to three times as far off on the relay shots and the pans; frame to frame, up to four times on
// the late tracks, and still half as far again where key frames need 20 tracks and those have 12.
constexpr KeyFrames kKeyFrames = {0.8, 12};

KnownShot shotOf(const Scenario& scenario, unsigned seed) {
  Random random(seed);
  KnownShot shot;
  for (int t = 0; t < scenario.tracks; ++t) {
    shot.tracks.names.push_back("t" + std::to_string(t));
    shot.places.push_back(anywhere(random));
  }
  for (int f = 0; f < kFrames; ++f) {
    shot.motion.push_back(scenario.motion(f));
    const Homography& motion = shot.motion.back();
    shot.corners.push_back({map(motion, {100, 60}), map(motion, {900, 60}), map(motion, {900, 540}),
                            map(motion, {100, 540})});
    for (int t = 0; t < scenario.tracks; ++t) {
      Point p = map(motion, shot.places[static_cast<std::size_t>(t)]);
      if (f > 0 && !scenario.fault(t, f, p, random)) continue;
      Observation o;
      o.x = p.x + (f > 0 ? scenario.noise * random.normal() : 0.0);
      o.y = p.y + (f > 0 ? scenario.noise * random.normal() : 0.0);
      o.track = t;
      o.frame = f;
      shot.tracks.observations.push_back(o);
    }
  }
  return shot;
}

// The same with noise in the base frame too.
KnownShot noisy(const Scenario& scenario, unsigned seed) {
  KnownShot shot = shotOf(scenario, seed);
  Random random(seed + 1000);
  for (Observation& o : shot.tracks.observations) {
    if (o.frame > 0) continue;
    o.x += scenario.noise * random.normal();
    o.y += scenario.noise * random.normal();
  }
  return shot;
}

// Six to nine tracks, of which one to three slide, each its own way, by some tenths of a pixel to a
// pixel and a half a frame.
KnownShot fewThatSlide(unsigned seed) {
  Random random(seed + 2000);
  const int tracks = 6 + static_cast<int>(random.uniform(0.0, 4.0));
  const int bad = 1 + static_cast<int>(random.uniform(0.0, 3.0));
  std::vector<Point> ways;
  for (int t = 0; t < bad; ++t) {
    const double x = 0.6 * random.normal();
    const double y = 0.6 * random.normal();
    ways.push_back({x, y});
  }
  const auto slide = [&](int t, int f, Point& p, Random&) {
    if (t >= bad) return true;
    p.x += ways[static_cast<std::size_t>(t)].x * f;
    p.y += ways[static_cast<std::size_t>(t)].y * f;
    return true;
  };
  return noisy({"", steady, slide, tracks, 0.5}, seed);
}

// 40 % of 15 to 80 tracks lie on another surface, which moves along the first by 3 px a frame from
// the base frame on.
KnownShot secondSurface(unsigned seed) {
  const int tracks = seed % 3 == 0 ? 80 : 15 * static_cast<int>(seed % 3);
  const auto drift = [](int t, int f, Point& p, Random&) {
    const Point place = map(inverse(steady(f)), p);
    if (t % 5 < 2) p = map(steady(f), {place.x + 3.0 * f, place.y + f});
    return true;
  };
  return noisy({"", steady, drift, tracks, 0.5}, seed);
}

TableRow rowOf(const Scenario& scenario) {
  return {scenario.name, [scenario](unsigned seed) { return shotOf(scenario, seed); },
          scenario.first, scenario.last, kBaseAlone};
}

TableRow relayRow(const char* name, int atATime, Faults faults = {}) {
  Relay what;
  what.atATime = atATime;
  what.faults = faults;
  return {name, [what](unsigned seed) { return relay(what, seed); }, 1, what.frames - 1,
          kKeyFrames};
}

TableRow panRow(const char* name, bool thereAndBack, Faults faults = {}) {
  Pan what;
  what.thereAndBack = thereAndBack;
  what.faults = faults;
  return {name, [what](unsigned seed) { return pan(what, seed); }, 1, what.frames - 1, kKeyFrames};
}

TableRow lateRow(const char* name, Faults faults = {}) {
  Late what;
  what.faults = faults;
  return {name, [what](unsigned seed) { return late(what, seed); }, 1, what.frames - 1, kKeyFrames};
}

TableRow renamedRow() {
  Late what;
  what.frames = 150;
  what.fromTheStart = 60;
  what.later = 0;
  return {"60 tracks renamed every 40 frames",
          [what](unsigned seed) { return renamed(late(what, seed), 40, 10); }, 1, what.frames - 1,
          kKeyFrames};
}

// Two photographs from far apart: the good tracks lie in a part of the surface, the bad ones are
// anywhere in both. 40 more are seen in the first alone.
KnownShot photographs(double part, int good, int bad, unsigned seed) {
  Random random(seed);
  KnownShot shot;
  shot.motion = {kIdentity, {{{0.75, 0.12, 60}, {-0.15, 0.9, 80}, {-4e-4, 2e-4, 1}}}};
  const Quad inside = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};
  shot.corners = {inside, {}};
  for (std::size_t i = 0; i < 4; ++i) shot.corners[1][i] = map(shot.motion[1], inside[i]);
  const double left = random.uniform(0.0, (1.0 - part) * kWidth);
  const double top = random.uniform(0.0, (1.0 - part) * kHeight);
  for (int f : {0, 1}) {
    for (int t = 0; t < good + bad + (f == 0 ? 40 : 0); ++t) {
      if (f == 0) {
        shot.tracks.names.push_back("t" + std::to_string(t));
        const Point p = anywhere(random);
        const bool isGood = t < good;
        shot.places.push_back(isGood ? Point{left + part * p.x, top + part * p.y} : p);
      }
      Observation o;
      const Point place = shot.places[static_cast<std::size_t>(t)];
      const Point p = t < good ? map(shot.motion[static_cast<std::size_t>(f)], place)
                               : (f == 0 ? place : anywhere(random));
      o.x = p.x + (f > 0 ? 0.7 * random.normal() : 0.0);
      o.y = p.y + (f > 0 ? 0.7 * random.normal() : 0.0);
      o.track = t;
      o.frame = f;
      shot.tracks.observations.push_back(o);
    }
  }
  return shot;
}

TableRow photographsRow(const char* name, double part, int good, int bad) {
  return {name, [=](unsigned seed) { return photographs(part, good, bad, seed); }, 1, 1,
          kBaseAlone};
}

}  // namespace

std::vector<TableRow> tableRows() {
  std::vector<TableRow> all;
  for (const Scenario& scenario : scenarios()) all.push_back(rowOf(scenario));
  all.push_back({"6 to 9 tracks, 1 to 3 slide", fewThatSlide, 1, kFrames - 1, kBaseAlone});
  all.push_back({"40 % on a surface that drifts off", secondSurface, 1, 29, kBaseAlone});
  all.push_back(photographsRow("two photographs, 40 tracks in a fifth", 0.2, 40, 0));
  all.push_back(photographsRow("two photographs, 40 tracks in a tenth", 0.1, 40, 0));
  all.push_back(photographsRow("two photographs, 40 tracks in a thirtieth", 1.0 / 30.0, 40, 0));
  all.push_back(
      photographsRow("two photographs, 66 tracks in a quarter, 234 wrong", 0.25, 66, 234));
  all.push_back(relayRow("relay, 30 at a time", 30));
  all.push_back(relayRow("relay, 100 at a time", 100));
  all.push_back(relayRow("relay, 60 at a time, 20 % outliers", 60, {Fault::Outlier, 0.2}));
  all.push_back(
      relayRow("relay, 60 at a time, 30 % slide and stay", 60, {Fault::SlideAndStay, 0.3}));
  all.push_back(relayRow("relay, 60 at a time, 30 % jump", 60, {Fault::Jump, 0.3}));
  all.push_back(panRow("pan along a wall", false));
  all.push_back(panRow("pan along a wall, 20 % outliers", false, {Fault::Outlier, 0.2}));
  all.push_back(panRow("pan there and back", true));
  all.push_back(lateRow("late tracks"));
  all.push_back(lateRow("late tracks, 30 % slide and come back", {Fault::Slide, 0.3}));
  all.push_back(lateRow("late tracks, 30 % slide and stay", {Fault::SlideAndStay, 0.3}));
  all.push_back(lateRow("late tracks, 30 % slide from birth", {Fault::SlideFromBirth, 0.3}));
  all.push_back(lateRow("late tracks, 30 % jump", {Fault::Jump, 0.3}));
  all.push_back(renamedRow());
  return all;
}

}  // namespace made
