// SPDX-License-Identifier: BSD-3-Clause

// Prints how far the corners lie from the truth with the base frame that `chooseBase` takes, beside
// the best of all base frames, each of them solved from: on the board shot and on made ones.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "shot/files/track_reader.h"
#include "shot/solve/base_choice.h"
#include "shot/solve/shot_solver.h"
#include "tests/shot/table_random.h"

using namespace cornerpin;

namespace {

constexpr double kWidth = 1000.0;
constexpr double kHeight = 600.0;

using Random = made::TableRandom;

// A shot with a quad on its surface and, for each frame, the transform that carries the surface
// there.
struct Shot {
  Tracks tracks;
  Quad quad{};
  std::vector<Homography> truth;
  std::vector<bool> known;  // whether the frame has a truth
};

// The worst corner's error in the frames with a truth: median and 95th percentile.
struct Errors {
  double median = 0.0;
  double most = 0.0;
};

Errors errorsFrom(const Shot& shot, int base, const ShotResult& result) {
  std::vector<double> errors;
  const int first = shot.tracks.firstFrame();
  const Homography& there = shot.truth[static_cast<std::size_t>(base - first)];
  for (std::size_t f = 0; f < result.frames.size(); ++f) {
    if (!shot.known[f] || static_cast<int>(f) == base - first) continue;
    double worst = 0.0;
    for (Point q : shot.quad) {
      const Point a = map(result.frames[f].h, map(there, q));
      const Point b = map(shot.truth[f], q);
      worst = std::max(worst, std::hypot(a.x - b.x, a.y - b.y));
    }
    errors.push_back(std::isfinite(worst) ? worst : 1e6);
  }
  std::sort(errors.begin(), errors.end());
  const auto rank = [&](double share) {
    return errors[static_cast<std::size_t>(std::ceil(share * static_cast<double>(errors.size())) -
                                           1)];
  };
  return {rank(0.5), rank(0.95)};
}

ShotResult solved(const Tracks& tracks, int base) {
  SolveOptions options;
  options.base = base;
  return solveShot(tracks, options);
}

// The base that a solve takes by itself, for the quad where that is known in the guessed frame.
int chosenFor(const Shot& shot, int& guess) {
  guess = guessBaseFrame(shot.tracks);
  SolveOptions options;
  const auto at = static_cast<std::size_t>(guess - shot.tracks.firstFrame());
  if (shot.known[at]) {
    options.reference = guess;
    options.quads.resize(1);
    options.quads[0].name = "quad";
    for (std::size_t c = 0; c < 4; ++c) {
      options.quads[0].corners[c] = map(shot.truth[at], shot.quad[c]);
    }
  }
  return solveShot(shot.tracks, options).baseFrame;
}

// Made shots.

constexpr int kFrames = 60;

Homography steady(int f) {
  const double t = f;
  return {{{1 + 0.003 * t, 0.002 * t, 4 * t},
           {-0.003 * t, 1 + 0.001 * t, -2 * t},
           {2e-6 * t, -3e-6 * t, 1}}};
}

Homography still(int) { return kIdentity; }

Homography shrinking(int f) {
  const double s = 1.0 / (1.0 + 0.05 * f);
  return {{{s, 0.001 * f * s, 3.0 * f}, {-0.001 * f * s, s, 1.0 * f}, {0, 0, 1}}};
}

Homography tilting(int f) {
  Homography h = steady(f);
  h[2][1] = -0.6 / kHeight * f / (kFrames - 1.0);
  return h;
}

struct Scenario {
  const char* name;
  Homography (*motion)(int);
  // Changes the true position of track t in frame f; false when it is not seen. `own` is the
  // track's number in -1 .. 1.
  std::function<bool(int t, int f, Point& p, double own, Random&)> fault;
  int tracks = 60;
  double noise = 0.5;
};

Point anywhere(Random& random) {
  const double x = random.uniform(0, kWidth);
  const double y = random.uniform(0, kHeight);
  return {x, y};
}

std::vector<Scenario> scenarios() {
  const auto sound = [](int, int, Point&, double, Random&) { return true; };
  return {
      {"still, clean", still, sound},
      {"clean", steady, sound},
      {"20 % outliers", steady,
       [](int t, int, Point& p, double, Random& r) {
         if (t % 5 == 0) p = anywhere(r);
         return true;
       }},
      {"60 % outliers", steady,
       [](int t, int, Point& p, double, Random& r) {
         if (t % 5 < 3) p = anywhere(r);
         return true;
       }},
      {"8 tracks", steady, sound, 8},
      {"12 tracks, one 20 px off", steady,
       [](int t, int f, Point& p, double, Random&) {
         if (t == 0 && f > 20) p.x += 20.0;
         return true;
       },
       12},
      {"tracks die, 8 are left", steady,
       [](int t, int f, Point&, double, Random&) { return t < 8 || f < t; }},
      {"tracks die on one side", steady,
       [](int t, int f, Point&, double own, Random&) {
         return t < 8 || own < 0.0 || f < 10 + static_cast<int>(40 * (1.0 - own));
       }},
      {"tracks start late", steady,
       [](int t, int f, Point&, double, Random&) { return t < 10 || f > t / 2; }},
      {"half hidden for 20 frames", steady,
       [](int t, int f, Point&, double, Random&) { return f < 20 || f > 40 || t % 2 == 0; }},
      {"half hidden early", steady,
       [](int t, int f, Point&, double, Random&) { return f < 5 || f > 30 || t % 5 == 0; }},
      {"30 % slide 1 px a frame", steady,
       [](int t, int f, Point& p, double, Random&) {
         if (t % 10 < 3) p.x += f, p.y += 0.3 * f;
         return true;
       }},
      {"half creep 0.05 px a frame", steady,
       [](int t, int f, Point& p, double own, Random&) {
         if (t % 2 == 0) p.x += 0.05 * own * f, p.y += (t % 4 ? 0.03 : -0.03) * f;
         return true;
       },
       60, 0.1},
      {"all creep", steady,
       [](int t, int f, Point& p, double own, Random&) {
         p.x += 0.05 * own * f, p.y += (t % 2 ? 0.03 : -0.03) * f;
         return true;
       },
       60, 0.1},
      {"half creep, 20 tracks", steady,
       [](int t, int f, Point& p, double own, Random&) {
         if (t % 2 == 0) p.x += 0.05 * own * f, p.y += (t % 4 ? 0.03 : -0.03) * f;
         return true;
       },
       20, 0.1},
      {"surface shrinks to a quarter", shrinking, sound},
      {"surface tilts away", tilting, sound},
      {"every third frame blurred", steady,
       [](int, int f, Point& p, double, Random& r) {
         if (f % 3 == 2) {
           p.x += 3.0 * r.normal();
           p.y += 1.0 * r.normal();
         }
         return true;
       }},
      {"20 tracks, heavy tails", steady,
       [](int, int, Point& p, double, Random& r) {
         const double length = 0.5 / std::sqrt(r.uniform(1e-4, 1.0));
         const double angle = r.uniform(0.0, 6.283185307179586);
         p.x += length * std::cos(angle), p.y += length * std::sin(angle);
         return true;
       },
       20, 0.1},
      {"few at both ends", steady,
       [](int t, int f, Point&, double, Random&) {
         return t < 9 || std::abs(f - 40) < 20 - t / 10;
       }},
  };
}

Shot madeShot(const Scenario& scenario, unsigned seed) {
  Random random(seed);
  Shot shot;
  shot.quad = {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}};
  std::vector<Point> places;
  std::vector<double> own;
  for (int t = 0; t < scenario.tracks; ++t) {
    shot.tracks.names.push_back("t" + std::to_string(t));
    places.push_back(anywhere(random));
    own.push_back(2.0 * places.back().x / kWidth - 1.0);
    if (t % 3) own.back() = random.uniform(-1, 1);
  }
  for (int f = 0; f < kFrames; ++f) {
    shot.truth.push_back(scenario.motion(f));
    shot.known.push_back(true);
    for (int t = 0; t < scenario.tracks; ++t) {
      const auto i = static_cast<std::size_t>(t);
      Point p = map(shot.truth.back(), places[i]);
      if (!scenario.fault(t, f, p, own[i], random)) continue;
      Observation o;
      o.x = p.x + scenario.noise * random.normal();
      o.y = p.y + scenario.noise * random.normal();
      o.track = t;
      o.frame = f;
      shot.tracks.observations.push_back(o);
    }
  }
  return shot;
}

// The board: its truth is from frame 60.
Shot board() {
  Shot shot;
  shot.tracks = readTracks(CORNERPIN_DATA "/board.csv");
  const auto count = static_cast<std::size_t>(shot.tracks.frameCount());
  shot.truth.assign(count, kIdentity);
  shot.known.assign(count, false);
  shot.quad = {{{267.35, 184.63}, {403.59, 56.38}, {609.57, 236.28}, {399.49, 399.15}}};
  std::ifstream file(CORNERPIN_DATA "/board.truth.csv");
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream row(line);
    int frame = 0;
    row >> frame;
    const auto f = static_cast<std::size_t>(frame - shot.tracks.firstFrame());
    for (auto& r : shot.truth[f]) {
      for (double& e : r) row >> e;
    }
    shot.known[f] = true;
  }
  return shot;
}

bool isUsable(const Shot& shot, int frame) {
  const auto f = static_cast<std::size_t>(frame - shot.tracks.firstFrame());
  const Tracks::Range seen = shot.tracks.inFrame(frame);
  return shot.known[f] && seen.end() - seen.begin() >= 4;
}

// For each base frame the errors, added up over copies of the shot.
struct Row {
  std::vector<double> median, most;
  Errors chosen, guessed;
  std::string frames;
};

void add(Row& row, const Shot& shot) {
  const int first = shot.tracks.firstFrame();
  const auto count = static_cast<std::size_t>(shot.tracks.frameCount());
  std::vector<Errors> all(count, {1e9, 1e9});
  for (std::size_t f = 0; f < count; ++f) {
    const int base = first + static_cast<int>(f);
    if (isUsable(shot, base)) all[f] = errorsFrom(shot, base, solved(shot.tracks, base));
  }
  int guess = 0;
  const int choice = chosenFor(shot, guess);
  const Errors& mine = all[static_cast<std::size_t>(choice - first)];
  const Errors& cheap = all[static_cast<std::size_t>(guess - first)];
  row.median.resize(count);
  row.most.resize(count);
  for (std::size_t f = 0; f < count; ++f) {
    row.median[f] += all[f].median;
    row.most[f] += all[f].most;
  }
  row.chosen = {row.chosen.median + mine.median, row.chosen.most + mine.most};
  row.guessed = {row.guessed.median + cheap.median, row.guessed.most + cheap.most};
  row.frames += " " + std::to_string(choice);
}

// The least of the numbers, and the least mean of five that follow one another: the best of many
// bases that are all alike is the luckiest one.
struct Least {
  explicit Least(const std::vector<double>& numbers)
      : single(*std::min_element(numbers.begin(), numbers.end())) {
    for (std::size_t i = 0; i + 5 <= numbers.size(); ++i) {
      double sum = 0.0;
      for (std::size_t k = 0; k < 5; ++k) sum += numbers[i + k];
      ofFive = std::min(ofFive, sum / 5.0);
    }
  }
  double single;
  double ofFive = std::numeric_limits<double>::infinity();
};

void print(const char* name, const Row& row, double copies) {
  const Least median(row.median);
  const Least most(row.most);
  std::printf("| %s |%s | %.3f / %.3f | %.3f / %.3f | %.3f / %.3f | %.2f / %.2f | %.2f / %.2f |\n",
              name, row.frames.c_str(), row.guessed.median / copies, row.guessed.most / copies,
              row.chosen.median / copies, row.chosen.most / copies, median.single / copies,
              most.single / copies, row.chosen.median / median.single,
              row.chosen.most / most.single, row.chosen.median / median.ofFive,
              row.chosen.most / most.ofFive);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned copies = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 20;
  std::printf(
      "Error of the worst corner in pixels, median / 95th percentile over the frames, mean of %u "
      "copies of the made shots\n\n| shot | chosen | from the guess | from the choice | from the "
      "best | choice : best | choice : best five in a row |\n|---|---|---|---|---|---|---|\n",
      copies);
  Row real;
  add(real, board());
  print("board", real, 1);
  for (const Scenario& scenario : scenarios()) {
    Row row;
    for (unsigned seed = 1; seed <= copies; ++seed) add(row, madeShot(scenario, seed));
    print(scenario.name, row, copies);
  }
}
