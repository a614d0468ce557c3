// SPDX-License-Identifier: BSD-3-Clause

// Prints how far the solve's corners lie from the truth on made shots with known faults, beside
// plain squares and, where OpenCV is there, its robust estimators on the same frames.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#ifdef CORNERPIN_TABLE_OPENCV
#include <opencv2/calib3d.hpp>
#endif

#include "shot/solve/shot_solver.h"

using namespace cornerpin;

namespace {

constexpr int kFrames = 60;
constexpr unsigned kShots = 20;
constexpr double kWidth = 1000.0;
constexpr double kHeight = 600.0;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  double uniform(double low, double high) {
    return low + (high - low) * static_cast<double>(engine_()) / 4294967296.0;
  }
  double normal() {
    const double length = std::sqrt(-2.0 * std::log(uniform(1e-12, 1.0)));
    return length * std::cos(uniform(0.0, 6.283185307179586));
  }

 private:
  std::mt19937 engine_;
};

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
  return all;
}

// Frame 0 is the base and has no faults.
Tracks madeShot(const Scenario& scenario, unsigned seed) {
  Random random(seed);
  Tracks tracks;
  std::vector<Point> base;
  for (int t = 0; t < scenario.tracks; ++t) {
    tracks.names.push_back("t" + std::to_string(t));
    base.push_back(anywhere(random));
  }
  for (int f = 0; f < kFrames; ++f) {
    for (int t = 0; t < scenario.tracks; ++t) {
      Point p = map(scenario.motion(f), base[static_cast<std::size_t>(t)]);
      if (f > 0 && !scenario.fault(t, f, p, random)) continue;
      Observation o;
      o.x = p.x + (f > 0 ? scenario.noise * random.normal() : 0.0);
      o.y = p.y + (f > 0 ? scenario.noise * random.normal() : 0.0);
      o.track = t;
      o.frame = f;
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

double cornerError(const Homography& h, const Homography& truth) {
  double worst = 0.0;
  for (Point p : {Point{100, 60}, Point{900, 60}, Point{900, 540}, Point{100, 540}}) {
    const Point a = map(h, p);
    const Point b = map(truth, p);
    const double error = std::hypot(a.x - b.x, a.y - b.y);
    worst = error <= worst ? worst : error;
  }
  return std::isfinite(worst) ? worst : 1e9;
}

using Solver = std::function<std::vector<Homography>(const Tracks&)>;

Solver ours(Loss loss) {
  return [loss](const Tracks& tracks) {
    SolveOptions options;
    options.base = 0;
    options.loss = loss;
    std::vector<Homography> all;
    for (const FrameResult& frame : solveShot(tracks, options).frames) all.push_back(frame.h);
    return all;
  };
}

#ifdef CORNERPIN_TABLE_OPENCV
Solver theirs(int method) {
  return [method](const Tracks& tracks) {
    std::vector<Homography> all(kFrames);
    const Tracks::Range base = tracks.inFrame(0);
    for (int f = 0; f < kFrames; ++f) {
      std::vector<cv::Point2d> from, to;
      for (const Observation& o : tracks.inFrame(f)) {
        from.emplace_back(base.first[o.track].x, base.first[o.track].y);
        to.emplace_back(o.x, o.y);
      }
      cv::setRNGSeed(1);
      cv::Mat h;
      if (from.size() >= 4) h = cv::findHomography(from, to, method, 3.0);
      if (h.empty()) {  // holds its neighbour's
        all[static_cast<std::size_t>(f)] =
            f > 0 ? all[static_cast<std::size_t>(f - 1)] : Homography{};
        continue;
      }
      for (int e = 0; e < 9; ++e) {
        all[static_cast<std::size_t>(f)][static_cast<std::size_t>(e / 3)]
           [static_cast<std::size_t>(e % 3)] = h.at<double>(e / 3, e % 3);
      }
    }
    return all;
  };
}
#endif

struct Entry {
  const char* name;
  Solver solve;
};

void printRow(const Scenario& scenario, const std::vector<Entry>& entries) {
  std::printf("| %s |", scenario.name.c_str());
  for (const Entry& entry : entries) {
    std::vector<double> errors;
    for (unsigned seed = 1; seed <= kShots; ++seed) {
      const std::vector<Homography> all = entry.solve(madeShot(scenario, seed));
      for (int f = scenario.first; f <= scenario.last; ++f) {
        errors.push_back(cornerError(all[static_cast<std::size_t>(f)], scenario.motion(f)));
      }
    }
    std::sort(errors.begin(), errors.end());
    std::printf(" %.2f / %.2f |", errors[errors.size() / 2], errors.back());
  }
  std::printf("\n");
}

}  // namespace

int main() {
  std::vector<Entry> entries = {
      {"default", ours(Loss::Tukey)}, {"cauchy", ours(Loss::Cauchy)}, {"none", ours(Loss::None)}};
#ifdef CORNERPIN_TABLE_OPENCV
  entries.push_back({"OpenCV RANSAC", theirs(cv::RANSAC)});
  entries.push_back({"USAC_DEFAULT", theirs(cv::USAC_DEFAULT)});
  entries.push_back({"USAC_MAGSAC", theirs(cv::USAC_MAGSAC)});
  entries.push_back({"USAC_ACCURATE", theirs(cv::USAC_ACCURATE)});
#endif
  std::printf("Error of the worst corner in pixels, median / worst of %u x %d frames\n\n| shot |",
              kShots, kFrames - 1);
  for (const Entry& entry : entries) std::printf(" %s |", entry.name);
  std::printf("\n|---|");
  for (std::size_t i = 0; i < entries.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const Scenario& scenario : scenarios()) printRow(scenario, entries);
}
