// SPDX-License-Identifier: BSD-3-Clause
#include "tests/shot/known_shots.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace made {

namespace {

constexpr double kWidth = 1000.0;
constexpr double kHeight = 600.0;
constexpr double kFocal = 1000.0;

// The transform back: the adjugate, which is the inverse but for a factor.
Homography back(const Homography& h) {
  Homography result{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t a = (j + 1) % 3, b = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
      result[i][j] = h[a][c] * h[b][d] - h[a][d] * h[b][c];
    }
  }
  return result;
}

// From 0 up to 1, down to -1 and back to 0 while t goes from 0 to 1, and so on: two parabolas.
double wave(double t) {
  const double s = t - std::floor(t);
  return s < 0.5 ? 16.0 * s * (0.5 - s) : -16.0 * (s - 0.5) * (1.0 - s);
}

// Where the camera is, in distances from the surface, and how far it is turned, as tangents of half
// the angles. All of it 0: it shows the surface as it is.
struct Camera {
  double right = 0.0, down = 0.0, forward = 0.0;
  double pitch = 0.0, yaw = 0.0, roll = 0.0;
};

// Surface to picture. The rotation is that of the quaternion (1, pitch, yaw, roll).
Homography view(const Camera& camera) {
  const double x = camera.pitch, y = camera.yaw, z = camera.roll;
  const Homography rotation = {{{1 + x * x - y * y - z * z, 2 * (x * y - z), 2 * (x * z + y)},
                                {2 * (x * y + z), 1 - x * x + y * y - z * z, 2 * (y * z - x)},
                                {2 * (x * z - y), 2 * (y * z + x), 1 - x * x - y * y + z * z}}};
  const Homography towards = {{{1 / kFocal, 0, -0.5 * kWidth / kFocal - camera.right},
                               {0, 1 / kFocal, -0.5 * kHeight / kFocal - camera.down},
                               {0, 0, 1 - camera.forward}}};
  const Homography lens = {{{kFocal, 0, 0.5 * kWidth}, {0, kFocal, 0.5 * kHeight}, {0, 0, 1}}};
  return withLastOne(product(lens, product(rotation, towards)));
}

// A camera in the hand, standing.
Homography held(int frame) {
  const double f = frame;
  Camera camera;
  camera.right = 0.12 * wave(f / 170);
  camera.down = 0.08 * wave(f / 110);
  camera.forward = 0.06 * wave(f / 140);
  camera.pitch = 0.02 * wave(f / 90);
  camera.yaw = 0.03 * wave(f / 130);
  camera.roll = 0.015 * wave(f / 75);
  return view(camera);
}

// What befalls a track: the fault's stretch, the way of a slide in each frame, where a jump ends.
struct Mishap {
  Fault fault = Fault::None;
  int first = 0;
  int last = 0;
  Point step;
  Point landing;
};

struct Actor {
  Point place;  // on the surface
  int first = 0;
  int last = 0;
  Mishap mishap;
};

Point anywhere(Random& random, double width = kWidth) {
  const double x = random.real(0.0, width);
  const double y = random.real(0.0, kHeight);
  return {x, y};
}

Point direction(Random& random) {
  Point d;
  double length = 0.0;
  do {
    d.x = random.real(-1.0, 1.0);
    d.y = random.real(-1.0, 1.0);
    length = std::sqrt(squaredDistance(d, {}));
  } while (length < 0.1 || length > 1.0);
  return {d.x / length, d.y / length};
}

Mishap drawMishap(const Actor& actor, const Faults& faults, Random& random) {
  Mishap mishap;
  if (!random.chance(faults.share)) return mishap;
  mishap.fault = faults.fault;
  const int third = std::max(1, (actor.last - actor.first + 1) / 3);
  mishap.first = actor.first;
  if (faults.fault != Fault::Outlier && faults.fault != Fault::SlideFromBirth)
    mishap.first += static_cast<int>(random.real(0.0, 2.0 * third));
  if (faults.fault == Fault::Jump) mishap.first = std::max(mishap.first, actor.first + 1);
  mishap.last = mishap.first + third - 1;
  mishap.step = direction(random);
  mishap.landing = anywhere(random);
  return mishap;
}

// Behind the draws of all places, which are the same with all faults.
void befall(std::vector<Actor>& actors, std::size_t from, const Faults& faults, Random& random) {
  for (std::size_t t = from; t < actors.size(); ++t)
    actors[t].mishap = drawMishap(actors[t], faults, random);
}

// Where a track without noise is seen.
Point seen(const Actor& actor, const Homography& motion, int frame, Random& random) {
  const Mishap& mishap = actor.mishap;
  Point p = map(motion, actor.place);
  if (mishap.fault == Fault::None || frame < mishap.first) return p;
  if (mishap.fault == Fault::Outlier) return anywhere(random);
  if (mishap.fault == Fault::Jump) return map(motion, mishap.landing);
  if (frame > mishap.last && mishap.fault != Fault::SlideAndStay) return p;
  const int way = std::min(frame, mishap.last) - mishap.first;
  return {p.x + way * mishap.step.x, p.y + way * mishap.step.y};
}

bool inPicture(const Homography& motion, Point place) {
  if (!onSameSide(motion, place, map(back(motion), {0.5 * kWidth, 0.5 * kHeight}))) return false;
  const Point p = map(motion, place);
  return p.x >= 0.0 && p.x <= kWidth && p.y >= 0.0 && p.y <= kHeight;
}

enum class Seen { Always, InPicture };

void film(KnownShot& shot, const std::vector<Actor>& actors, double noise, Seen when,
          Random& random) {
  for (std::size_t t = 0; t < actors.size(); ++t) {
    shot.tracks.names.push_back("t" + std::to_string(t));
    shot.places.push_back(actors[t].place);
  }
  for (std::size_t f = 0; f < shot.motion.size(); ++f) {
    const Homography& motion = shot.motion[f];
    for (std::size_t t = 0; t < actors.size(); ++t) {
      const Actor& actor = actors[t];
      Observation o;
      o.track = static_cast<std::int32_t>(t);
      o.frame = static_cast<std::int32_t>(f);
      if (o.frame < actor.first || o.frame > actor.last) continue;
      if (when == Seen::InPicture && !inPicture(motion, actor.place)) continue;
      const Point p = seen(actor, motion, o.frame, random);
      o.x = p.x + random.noise(noise);
      o.y = p.y + random.noise(noise);
      shot.tracks.observations.push_back(o);
    }
  }
}

Quad inside(double left, double top) {
  return {
      {{left, top}, {kWidth - left, top}, {kWidth - left, kHeight - top}, {left, kHeight - top}}};
}

// In every frame the same corners of the surface.
void keepCorners(KnownShot& shot, const Quad& surface) {
  for (const Homography& motion : shot.motion) {
    shot.corners.push_back({});
    for (std::size_t i = 0; i < 4; ++i) shot.corners.back()[i] = map(motion, surface[i]);
  }
}

Homography along(const Pan& what, int frame) {
  const double last = what.frames - 1;
  const double way = what.thereAndBack ? std::min<double>(frame, last - frame) * 2.0 : frame;
  Camera camera;
  camera.right = what.widths * kWidth / kFocal * (way / last);
  camera.down = 0.04 * wave(frame / 70.0);
  camera.forward = 0.08 * wave(frame / 160.0);
  camera.pitch = 0.015 * wave(frame / 110.0);
  camera.yaw = 0.03 * wave(frame / 90.0);
  camera.roll = 0.015 * wave(frame / 60.0);
  return view(camera);
}

// The first and the last frame in which the place is in the picture; first > last when in none.
void findLife(Actor& actor, const std::vector<Homography>& motion) {
  actor.first = static_cast<int>(motion.size());
  actor.last = -1;
  for (int f = 0; f < static_cast<int>(motion.size()); ++f) {
    if (!inPicture(motion[static_cast<std::size_t>(f)], actor.place)) continue;
    actor.first = std::min(actor.first, f);
    actor.last = f;
  }
}

// The places of the wall reach beyond the picture on every side.
Actor onTheWall(const Pan& what, Random& random) {
  Actor actor;
  actor.place.x = random.real(-0.5 * kWidth, (what.widths + 1.5) * kWidth);
  actor.place.y = random.real(-0.5 * kHeight, 1.5 * kHeight);
  return actor;
}

}  // namespace

Homography KnownShot::truth(int from, int to) const {
  return withLastOne(
      product(motion[static_cast<std::size_t>(to)], back(motion[static_cast<std::size_t>(from)])));
}

std::array<double, 4> cornerErrors(const KnownShot& shot, const Homography& h, int base,
                                   int frame) {
  const Homography toBase = shot.truth(frame, base);
  std::array<double, 4> errors{};
  for (std::size_t i = 0; i < 4; ++i) {
    const Point corner = shot.corners[static_cast<std::size_t>(frame)][i];
    const double error = std::sqrt(squaredDistance(map(h, map(toBase, corner)), corner));
    errors[i] = std::isfinite(error) ? error : std::numeric_limits<double>::infinity();
  }
  return errors;
}

// Track i is born in frame i * life / atATime - life + 1: the first ones before the shot begins.
KnownShot relay(const Relay& what, std::uint32_t seed) {
  Random random(seed);
  KnownShot shot;
  for (int f = 0; f < what.frames; ++f) shot.motion.push_back(held(f));
  keepCorners(shot, inside(0.0, 0.0));
  std::vector<Actor> actors;
  for (std::int64_t i = 0;; ++i) {
    Actor actor;
    actor.first = static_cast<int>(i * what.life / what.atATime) - what.life + 1;
    if (actor.first >= what.frames) break;
    actor.last = std::min(actor.first + what.life, what.frames) - 1;
    actor.first = std::max(actor.first, 0);
    actor.place = anywhere(random);
    actors.push_back(actor);
  }
  befall(actors, 0, what.faults, random);
  film(shot, actors, what.noise, Seen::Always, random);
  return shot;
}

KnownShot pan(const Pan& what, std::uint32_t seed) {
  Random random(seed);
  KnownShot shot;
  for (int f = 0; f < what.frames; ++f) shot.motion.push_back(along(what, f));
  shot.corners.assign(shot.motion.size(), inside(100.0, 60.0));
  std::vector<Actor> actors;
  const int onAll = static_cast<int>(what.inPicture * (what.widths + 2.0) * 2.0);
  for (int i = 0; i < onAll; ++i) {
    Actor actor = onTheWall(what, random);
    findLife(actor, shot.motion);
    if (actor.first > actor.last) continue;
    actors.push_back(actor);
  }
  befall(actors, 0, what.faults, random);
  film(shot, actors, what.noise, Seen::InPicture, random);
  return shot;
}

KnownShot late(const Late& what, std::uint32_t seed) {
  constexpr int kLife = 60;
  Random random(seed);
  KnownShot shot;
  for (int f = 0; f < what.frames; ++f) shot.motion.push_back(held(f));
  keepCorners(shot, inside(100.0, 60.0));
  std::vector<Actor> actors;
  for (int i = 0; i < what.fromTheStart + what.later; ++i) {
    Actor actor;
    const int number = i - what.fromTheStart;
    if (number >= 0) actor.first = 1 + number * (what.frames - kLife / 2) / what.later;
    actor.last = number >= 0 ? std::min(actor.first + kLife, what.frames) - 1 : what.frames - 1;
    actor.place = anywhere(random);
    actors.push_back(actor);
  }
  befall(actors, static_cast<std::size_t>(what.fromTheStart), what.faults, random);
  film(shot, actors, what.noise, Seen::Always, random);
  return shot;
}

// The n-th name of a track holds in frames n * every .. (n + 1) * every + overlap - 1.
KnownShot renamed(const KnownShot& shot, int every, int overlap) {
  KnownShot result = shot;
  result.tracks = {};
  result.places.clear();
  std::map<std::pair<int, int>, std::int32_t> numbers;  // of a track's names
  for (const Observation& o : shot.tracks.observations) {
    for (int n = std::max(0, (o.frame - overlap) / every); n <= o.frame / every; ++n) {
      const auto number = static_cast<std::int32_t>(numbers.size());
      const auto [name, isNew] = numbers.try_emplace({o.track, n}, number);
      const auto track = static_cast<std::size_t>(o.track);
      if (isNew) {
        result.tracks.names.push_back(shot.tracks.names[track] + "/" + std::to_string(n));
        result.places.push_back(shot.places[track]);
      }
      result.tracks.observations.push_back(o);
      result.tracks.observations.back().track = name->second;
    }
  }
  std::sort(result.tracks.observations.begin(), result.tracks.observations.end(),
            [](const Observation& a, const Observation& b) {
              return std::tie(a.frame, a.track) < std::tie(b.frame, b.track);
            });
  return result;
}

}  // namespace made
