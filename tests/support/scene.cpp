// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/scene.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "cornerpin/foundation/exception.h"

namespace scenes {

namespace {

using reference::Floats;
using reference::Scene;
using reference::size;
using reference::Track;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

enum class Trouble {
  None,
  FewTracks,
  Collinear,
  Identical,
  NotFinite,
  Horizon,
  UnevenLengths,
  BaseFrameOutside,
  NoTracks
};

Trouble randomTrouble(Random& random) {
  if (!random.oneIn(3)) return Trouble::None;
  return static_cast<Trouble>(random.between(1, static_cast<int>(Trouble::NoTracks)));
}

int randomTrackCount(Random& random) {
  if (random.oneIn(12)) return random.between(100, 300);
  return random.oneIn(3) ? random.between(4, 8) : random.between(4, 60);
}

int randomBaseFrame(Random& random, int frames) {
  switch (random.below(3)) {
    case 0:
      return 0;
    case 1:
      return frames - 1;
    default:
      return random.below(frames);
  }
}

float randomWeight(Random& random, int palette) {
  constexpr float mixed[] = {1, 0, -1, 0.25f, 3.5f, 1e-3f, 1e-20f, 1e-38f, 100, 1e15f};
  switch (palette) {
    case 0:
      return 1.0f;
    case 1:
      return random.oneIn(6) ? 0.0f : 1.0f;
    case 2:
      return random.real(0.05f, 2.0f);
    default:
      return mixed[random.below(10)];
  }
}

// A transform near the identity that grows with the distance in frames.
struct Motion {
  double h[8];
  void apply(double x, double y, double& u, double& v) const {
    const double s = h[6] * x + h[7] * y + 1.0;
    u = (h[0] * x + h[1] * y + h[2]) / s;
    v = (h[3] * x + h[4] * y + h[5]) / s;
  }
};

Motion randomMotion(Random& random, float amount) {
  const auto r = [&] { return static_cast<double>(random.real(-amount, amount)); };
  return {{1 + r(), r(), r(), r(), 1 + r(), r(), r() / 2, r() / 2}};
}

// Where the tracks are in the base frame, in -1 .. 1 both ways.
struct Point {
  float x, y;
};

std::vector<Point> randomPoints(Random& random, int count, Trouble trouble) {
  std::vector<Point> points;
  for (int i = 0; i < count; ++i) {
    const float x = random.real(-1, 1);
    const float y = trouble == Trouble::Collinear ? 0.5f * x : random.real(-1, 1);
    points.push_back({x, y});
  }
  if (trouble == Trouble::Identical) points.assign(size(count), {0.5f, 0.25f});
  return points;
}

struct Units {
  double scale, x, y;
};

Units randomUnits(Random& random) {
  return random.oneIn(4) ? Units{2048, 2048, 1080} : Units{1, 0, 0};
}

void place(Track& track, int frame, double u, double v, const Units& units) {
  track.positions(frame, 0) = static_cast<float>(u * units.scale + units.x);
  track.positions(frame, 1) = static_cast<float>(v * units.scale + units.y);
}

void addTracks(Scene& shot, Random& random, Trouble trouble, int frames) {
  const int count = trouble == Trouble::FewTracks ? random.between(1, 3) : randomTrackCount(random);
  const Units units = randomUnits(random);
  const int palette = random.below(4);
  const float amount = random.oneIn(4) ? 0.3f : 0.05f;
  const double noise = random.oneIn(3) ? 0.0 : 2e-3;
  const std::vector<Point> points = randomPoints(random, count, trouble);
  std::vector<Motion> motions;
  for (int f = 0; f < frames; ++f) motions.push_back(randomMotion(random, amount));
  motions[size(shot.baseFrame)] = {{1, 0, 0, 0, 1, 0, 0, 0}};
  for (const Point& point : points) {
    Track track{reference::Matrix(frames, 2), Floats(size(frames))};
    for (int f = 0; f < frames; ++f) {
      double u = 0;
      double v = 0;
      motions[size(f)].apply(point.x, point.y, u, v);
      const double off = f == shot.baseFrame ? 0.0 : noise;
      u += off * random.real(-1, 1);
      v += off * random.real(-1, 1);
      place(track, f, u, v, units);
      track.weights[size(f)] = randomWeight(random, palette);
    }
    shot.tracks.push_back(track);
  }
}

// A frame in which nothing is seen.
void blank(Scene& shot, int frame) {
  for (Track& track : shot.tracks) track.weights[size(frame)] = 0.0f;
}

void addTrouble(Scene& shot, Random& random, Trouble trouble) {
  const int tracks = static_cast<int>(shot.tracks.size());
  const int frames = static_cast<int>(shot.tracks[0].weights.size());
  const int frame = random.below(frames);
  Track& track = shot.tracks[size(random.below(tracks))];
  switch (trouble) {
    case Trouble::NotFinite: {
      const float values[] = {nan, infinity, -infinity, 3e38f, 1e25f, -1e19f};
      const int where = random.oneIn(2) ? shot.baseFrame : frame;
      track.weights[size(where)] = random.oneIn(3) ? values[random.below(6)] : 1.0f;
      track.positions(where, random.below(2)) = values[random.below(6)];
      break;
    }
    case Trouble::Horizon:  // both coordinates far out, as a point near the horizon lands
      for (Track& far : shot.tracks) {
        const float s = random.real(-1e-6f, 1e-6f);
        far.positions(frame, 0) /= s;
        far.positions(frame, 1) /= s;
      }
      break;
    case Trouble::UnevenLengths: {
      const int kept = random.below(frames);
      if (random.oneIn(2))
        track.weights.resize(size(kept));
      else
        track.positions.resize(kept, 2);
      break;
    }
    case Trouble::BaseFrameOutside:
      shot.baseFrame = random.oneIn(2) ? -1 : frames;
      break;
    case Trouble::NoTracks:
      shot.tracks.clear();
      break;
    default:
      break;
  }
}

}  // namespace

Scene randomShot(std::uint32_t seed) {
  Random random(seed);
  const Trouble trouble = randomTrouble(random);
  const int frames = random.between(1, 12);
  Scene shot;
  shot.baseFrame = randomBaseFrame(random, frames);
  addTracks(shot, random, trouble, frames);
  if (random.oneIn(5)) blank(shot, random.below(frames));
  addTrouble(shot, random, trouble);
  return shot;
}

void disturb(Scene& shot, std::uint32_t seed) {
  Random random(seed);
  for (Track& track : shot.tracks) {
    for (float& v : track.positions.elements) v *= random.real(0.99f, 1.01f);
  }
}

MGenMatrix<float> randomlyStored(const reference::Matrix& m, Random& random) {
  using Matrix = MGenMatrix<float>;
  const auto layout = random.oneIn(2) ? Matrix::RowMajor : Matrix::ColumnMajor;
  Matrix stored(m.rows, m.cols, layout);
  if (random.oneIn(3)) {
    Matrix larger(m.rows + 3, m.cols + 2, layout);
    for (int i = 0; i < larger.rows; ++i) {
      for (int j = 0; j < larger.cols; ++j) larger(i, j) = nan;
    }
    stored = larger.view(1, 1, m.rows, m.cols);
  }
  for (int i = 0; i < m.rows; ++i) {
    for (int j = 0; j < m.cols; ++j) stored(i, j) = m(i, j);
  }
  return stored;
}

MGenVector<float> randomlyStored(const Floats& v, Random& random) {
  const int n = reference::length(v);
  MGenVector<float> stored(n);
  if (n > 0 && random.oneIn(2)) {
    const int step = random.between(2, 3);
    MGenVector<float> larger(n * step);
    for (int i = 0; i < larger.length; ++i) larger[i] = nan;
    stored = random.oneIn(2) ? larger.view(0, n, step) : larger.view(n * step - 1, n, -step);
  }
  for (int i = 0; i < n; ++i) stored[i] = v[size(i)];
  return stored;
}

void fill(MMatchmove& scene, const Scene& shot, std::uint32_t seed) {
  Random random(seed);
  scene.baseFrame = shot.baseFrame;
  scene.tracks.resize(static_cast<int>(shot.tracks.size()));
  for (int i = 0; i < scene.tracks.size(); ++i) {
    scene.tracks[i].positions = randomlyStored(shot.tracks[size(i)].positions, random);
    scene.tracks[i].weights = randomlyStored(shot.tracks[size(i)].weights, random);
  }
}

MGenVector<float> vectorOf(const Floats& elements) {
  MGenVector<float> v(reference::length(elements));
  for (int i = 0; i < v.length; ++i) v[i] = elements[size(i)];
  return v;
}

Floats floatsOf(const MGenVector<float>& v) {
  Floats elements;
  for (int i = 0; i < v.length; ++i) elements.push_back(v[i]);
  return elements;
}

reference::Matrix plain(const MGenMatrix<float>& m) {
  reference::Matrix result(m.rows, m.cols);
  for (int i = 0; i < m.rows; ++i) {
    for (int j = 0; j < m.cols; ++j) result(i, j) = m(i, j);
  }
  return result;
}

reference::Transform transformOf(const MGenMatrix<float>& m) {
  reference::Transform h;
  for (int j = 0; j < m.cols; ++j) {
    for (int i = 0; i < m.rows; ++i) h.push_back(m(i, j));
  }
  return h;
}

namespace {

std::uint32_t bitsOf(float v) {
  if (std::isnan(v)) return 0x7fc00000u;
  std::uint32_t bits = 0;
  std::memcpy(&bits, &v, sizeof bits);
  return bits;
}

void append(Bits& bits, const Floats& values) {
  bits.push_back(static_cast<std::uint32_t>(values.size()));
  for (const float v : values) bits.push_back(bitsOf(v));
}

void append(Bits& bits, const std::string& text) {
  bits.push_back(static_cast<std::uint32_t>(text.size()));
  for (const char c : text) bits.push_back(static_cast<unsigned char>(c));
}

void append(Bits& bits, int a, int b) {
  bits.push_back(static_cast<std::uint32_t>(a));
  bits.push_back(static_cast<std::uint32_t>(b));
}

}  // namespace

bool sameBits(const Floats& a, const Floats& b) {
  Bits left;
  Bits right;
  append(left, a);
  append(right, b);
  return left == right;
}

Bits resultOf(const MMatchmove& scene, const std::string& thrown) {
  Bits bits;
  append(bits, thrown);
  append(bits, scene.trackCount, scene.frameCount);
  append(bits, plain(scene.basePositions).elements);
  append(bits, floatsOf(scene.baseWeights));
  append(bits, scene.outputs.size(), 0);
  for (int f = 0; f < scene.outputs.size(); ++f) append(bits, transformOf(scene.outputs[f]));
  return bits;
}

Bits resultOf(const Scene& scene, const std::string& thrown) {
  Bits bits;
  append(bits, thrown);
  append(bits, scene.trackCount, scene.frameCount);
  append(bits, scene.basePositions.elements);
  append(bits, scene.baseWeights);
  append(bits, static_cast<int>(scene.outputs.size()), 0);
  for (const reference::Transform& h : scene.outputs) append(bits, h);
  return bits;
}

std::string solve(MMatchmove& scene) {
  try {
    scene.solve();
  } catch (const LvException& e) {
    return e.message.c_str();
  }
  return "";
}

std::string solve(Scene& scene) {
  try {
    scene.solve();
  } catch (const reference::Failure& e) {
    return e.what();
  }
  return "";
}

}  // namespace scenes
