// SPDX-License-Identifier: BSD-3-Clause
#include "bench/support/shot.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>

namespace bench {

namespace {

using reference::Floats;
using reference::Scene;
using reference::size;

struct Observation {
  int frame;
  double x, y, weight;
};

using Observations = std::map<std::string, std::vector<Observation>>;

std::ifstream open(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  return file;
}

// Lines "track,frame,x,y,weight" after a header.
Observations readTracks(const std::string& path) {
  std::ifstream file = open(path);
  Observations tracks;
  std::string line;
  std::getline(file, line);
  for (int number = 2; std::getline(file, line); ++number) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream fields(line);
    std::string track;
    Observation o{};
    if (!(fields >> track >> o.frame >> o.x >> o.y >> o.weight)) {
      throw std::runtime_error(path + ":" + std::to_string(number) + ": not a track's row");
    }
    tracks[track].push_back(o);
  }
  return tracks;
}

struct Similarity {
  double scale, x, y;
};

// Takes the bounding box of the base frame's tracks to -1 .. 1 along its longer side.
Similarity conditioning(const Observations& tracks, int baseFrame) {
  double low[2] = {1e30, 1e30};
  double high[2] = {-1e30, -1e30};
  for (const auto& track : tracks) {
    for (const Observation& o : track.second) {
      if (o.frame != baseFrame) continue;
      const double at[2] = {o.x, o.y};
      for (int c = 0; c < 2; ++c) {
        low[c] = std::min(low[c], at[c]);
        high[c] = std::max(high[c], at[c]);
      }
    }
  }
  const double extent = std::max(high[0] - low[0], high[1] - low[1]);
  return {2 / extent, (low[0] + high[0]) / 2, (low[1] + high[1]) / 2};
}

Scene sceneOf(const Observations& tracks, int baseFrame, int frameCount) {
  const Similarity to = conditioning(tracks, baseFrame);
  Scene scene;
  scene.baseFrame = baseFrame;
  for (const auto& observed : tracks) {
    reference::Track track{reference::Matrix(frameCount, 2), Floats(size(frameCount))};
    for (const Observation& o : observed.second) {
      track.positions(o.frame, 0) = static_cast<float>((o.x - to.x) * to.scale);
      track.positions(o.frame, 1) = static_cast<float>((o.y - to.y) * to.scale);
      reference::at(track.weights, o.frame) = static_cast<float>(o.weight);
    }
    scene.tracks.push_back(track);
  }
  return scene;
}

Parameters parametersOf(const MGenMatrix<float>& h) {
  Parameters p{};
  for (std::size_t e = 0; e < p.size(); ++e) p[e] = static_cast<double>(h.data[e]);
  return p;
}

// A camera that pans, turns, zooms and tilts slowly.
Parameters cameraAt(double t) {
  const double turn = 0.1 * std::sin(0.11 * t);
  const double zoom = 1 + 0.15 * std::sin(0.05 * t);
  return {zoom * std::cos(turn),    zoom * std::sin(turn),   0.05 * std::sin(0.07 * t),
          -zoom * std::sin(turn),   zoom * std::cos(turn),   0.04 * std::sin(0.09 * t),
          0.3 * std::sin(0.04 * t), 0.2 * std::sin(0.06 * t)};
}

}  // namespace

Shot readShot(const std::string& folder, const std::string& name) {
  const std::string stem = folder + "/" + name;
  std::ifstream description = open(stem + ".json");
  const nlohmann::json shot = nlohmann::json::parse(description);
  const Observations tracks = readTracks(stem + ".csv");
  return {name, sceneOf(tracks, shot.at("base_frame"), shot.at("frame_count"))};
}

Shot syntheticShot(int tracks, int frames) {
  std::mt19937 engine(7);
  const auto real = [&engine] { return static_cast<double>(engine()) / 2147483647.5 - 1.0; };
  Shot shot{"synthetic " + std::to_string(tracks), {}};
  for (int i = 0; i < tracks; ++i) {
    Frame place;
    place.x = {real()};
    place.y = {real()};
    place.u = place.v = {0.0};
    place.w = {1.0};
    reference::Track track{reference::Matrix(frames, 2), Floats(size(frames), 1.0f)};
    for (int f = 0; f < frames; ++f) {
      double at[2];
      residual(place, 0, cameraAt(f).data(), at);
      const double noise = f == 0 ? 0.0 : 1e-3;
      track.positions(f, 0) = static_cast<float>(at[0] + noise * real());
      track.positions(f, 1) = static_cast<float>(at[1] + noise * real());
    }
    shot.scene.tracks.push_back(track);
  }
  return shot;
}

void fill(MMatchmove& scene, const Shot& shot) {
  scene.baseFrame = shot.scene.baseFrame;
  scene.tracks.resize(static_cast<int>(shot.scene.tracks.size()));
  for (int i = 0; i < scene.tracks.size(); ++i) {
    const reference::Track& from = shot.scene.tracks[size(i)];
    MMatchmoveTrack& to = scene.tracks[i];
    const int frames = from.positions.rows;
    to.positions = MGenMatrix<float>(frames, 2, MGenMatrix<float>::RowMajor);
    std::copy(from.positions.elements.begin(), from.positions.elements.end(), to.positions.data);
    to.weights = MGenVector<float>(frames);
    std::copy(from.weights.begin(), from.weights.end(), to.weights.data);
  }
}

std::vector<Frame> framesOf(const Shot& shot) {
  MMatchmove solved;
  fill(solved, shot);
  solved.solve();
  std::vector<Frame> frames;
  for (int f = 0; f < solved.frameCount; ++f) {
    if (f == solved.baseFrame) continue;
    Frame frame;
    frame.index = f;
    frame.start = parametersOf(solved.outputs[f > solved.baseFrame ? f - 1 : f + 1]);
    for (const reference::Track& track : shot.scene.tracks) {
      const float weight = track.weights[size(f)];
      if (!(track.weights[size(solved.baseFrame)] > 0.0f) || !(weight > 0.0f)) continue;
      const float at[4] = {track.positions(solved.baseFrame, 0),
                           track.positions(solved.baseFrame, 1), track.positions(f, 0),
                           track.positions(f, 1)};
      frame.x.push_back(static_cast<double>(at[0]));
      frame.y.push_back(static_cast<double>(at[1]));
      frame.u.push_back(static_cast<double>(at[2]));
      frame.v.push_back(static_cast<double>(at[3]));
      frame.w.push_back(static_cast<double>(weight));
      frame.base.insert(frame.base.end(), at, at + 2);
      frame.moved.insert(frame.moved.end(), at + 2, at + 4);
    }
    if (frame.count() < 4) {
      throw std::runtime_error(shot.name + ": too few tracks in frame " + std::to_string(f));
    }
    frames.push_back(frame);
  }
  return frames;
}

void evaluate(const Frame& frame, const double* p, double* r, double* jacobian,
              std::ptrdiff_t rowStride, std::ptrdiff_t colStride) {
  const std::ptrdiff_t count = frame.count();
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    const double x = frame.x[k];
    const double y = frame.y[k];
    const double w = frame.w[k];
    const double inverse = 1.0 / (p[2] * x + p[5] * y + 1.0);
    const double u = (p[0] * x + p[3] * y + p[6]) * inverse;
    const double v = (p[1] * x + p[4] * y + p[7]) * inverse;
    r[2 * i] = (u - frame.u[k]) * w;
    r[2 * i + 1] = (v - frame.v[k]) * w;
    if (jacobian == nullptr) continue;
    const double c = w * inverse;
    const double a = c * x;
    const double b = c * y;
    const double rowU[8] = {a, 0, -u * a, b, 0, -u * b, c, 0};
    const double rowV[8] = {0, a, -v * a, 0, b, -v * b, 0, c};
    double* const row = jacobian + 2 * i * rowStride;
    for (std::ptrdiff_t e = 0; e < 8; ++e) {
      row[e * colStride] = rowU[e];
      row[e * colStride + rowStride] = rowV[e];
    }
  }
}

double cost(const Frame& frame, const Parameters& p) {
  double sum = 0;
  for (int i = 0; i < frame.count(); ++i) {
    double r[2];
    residual(frame, i, p.data(), r);
    sum += r[0] * r[0] + r[1] * r[1];
  }
  return sum;
}

double rms(const std::vector<Frame>& frames, const std::vector<Parameters>& fitted) {
  double sum = 0;
  double count = 0;
  for (std::size_t f = 0; f < frames.size(); ++f) {
    sum += cost(frames[f], fitted.at(f));
    count += 2.0 * frames[f].count();
  }
  return count > 0 ? std::sqrt(sum / count) : 0;
}

}  // namespace bench
