// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <unsupported/Eigen/NonLinearOptimization>
#include <utility>
#include <vector>

#include "shot/files/track_reader.h"
#include "shot/solve/shot_solver.h"

using namespace cornerpin;

namespace {

struct Pair {
  Eigen::Vector2d base;
  Eigen::Vector2d here;
  double weight;
};

// frame -> track -> (x, y, weight), read plainly.
using Shot = std::map<int, std::map<std::string, Eigen::Vector3d>>;

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, ',');) fields.push_back(field);
  return fields;
}

std::string dataFile(const std::string& name) { return std::string(CORNERPIN_DATA "/") + name; }

Shot readShot(const std::string& name) {
  Shot shot;
  std::ifstream file(dataFile(name + ".csv"));
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    const auto f = split(line);
    // The solver's weights are single precision: so are those of the optimum.
    shot[std::stoi(f[1])][f[0]] = {std::stod(f[2]), std::stod(f[3]),
                                   static_cast<double>(std::stof(f[4]))};
  }
  return shot;
}

std::vector<Pair> pairsOf(const Shot& shot, int base, int frame) {
  std::vector<Pair> pairs;
  const auto found = shot.find(frame);
  if (found == shot.end()) return pairs;
  for (const auto& [track, here] : found->second) {
    const auto at = shot.at(base).find(track);
    if (at == shot.at(base).end() || !(at->second.z() > 0) || !(here.z() > 0)) continue;
    pairs.push_back({at->second.head<2>(), here.head<2>(), here.z()});
  }
  return pairs;
}

Eigen::Matrix3d toEigen(const Homography& h) {
  Eigen::Matrix3d m;
  for (int i = 0; i < 9; ++i) {
    m(i / 3, i % 3) = h[static_cast<std::size_t>(i / 3)][static_cast<std::size_t>(i % 3)];
  }
  return m;
}

double rms(const Eigen::Matrix3d& h, const std::vector<Pair>& pairs, bool weighted) {
  double sum = 0;
  for (const Pair& p : pairs) {
    sum += ((h * p.base.homogeneous()).hnormalized() - p.here).squaredNorm() *
           (weighted ? p.weight * p.weight : 1.0);
  }
  return std::sqrt(sum / static_cast<double>(pairs.size()));
}

// Centroid to 0, mean distance to sqrt(2).
Eigen::Matrix3d normaliser(const std::vector<Pair>& pairs, Eigen::Vector2d Pair::*side) {
  Eigen::Vector2d mean(0, 0);
  for (const Pair& p : pairs) mean += p.*side / static_cast<double>(pairs.size());
  double distance = 0;
  for (const Pair& p : pairs)
    distance += (p.*side - mean).norm() / static_cast<double>(pairs.size());
  const double s = std::sqrt(2.0) / distance;
  Eigen::Matrix3d n;
  n << s, 0, -s * mean.x(), 0, s, -s * mean.y(), 0, 0, 1;
  return n;
}

struct Residuals {
  using Scalar = double;
  using InputType = Eigen::VectorXd;
  using ValueType = Eigen::VectorXd;
  using JacobianType = Eigen::MatrixXd;
  const std::vector<Pair>& pairs;

  int inputs() const { return 8; }
  int values() const { return static_cast<int>(2 * pairs.size()); }

  static Eigen::Matrix3d matrix(const Eigen::VectorXd& x) {
    Eigen::Matrix3d h;
    h << x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], 1;
    return h;
  }
  int operator()(const Eigen::VectorXd& x, Eigen::VectorXd& f) const {
    const Eigen::Matrix3d h = matrix(x);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      f.segment<2>(static_cast<Eigen::Index>(2 * i)) =
          pairs[i].weight * ((h * pairs[i].base.homogeneous()).hnormalized() - pairs[i].here);
    }
    return 0;
  }
  int df(const Eigen::VectorXd& x, Eigen::MatrixXd& j) const {
    const Eigen::Matrix3d h = matrix(x);
    j.setZero();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const Eigen::Vector3d b = pairs[i].base.homogeneous();
      const Eigen::Vector3d q = h * b;
      const Eigen::Vector3d g = pairs[i].weight / q.z() * b;
      const auto r = static_cast<Eigen::Index>(2 * i);
      j.block<1, 3>(r, 0) = g.transpose();
      j.block<1, 3>(r + 1, 3) = g.transpose();
      j.block<1, 2>(r, 6) = -q.x() / q.z() * g.head<2>().transpose();
      j.block<1, 2>(r + 1, 6) = -q.y() / q.z() * g.head<2>().transpose();
    }
    return 0;
  }
};

Eigen::Matrix3d linearSolution(const std::vector<Pair>& pairs) {
  Eigen::MatrixXd a(2 * pairs.size(), 9);
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const Eigen::RowVector3d b = pairs[i].base.homogeneous().transpose() * pairs[i].weight;
    const Eigen::RowVector3d zero(0, 0, 0);
    const auto r = static_cast<Eigen::Index>(2 * i);
    a.row(r) << b, zero, -pairs[i].here.x() * b;
    a.row(r + 1) << zero, b, -pairs[i].here.y() * b;
  }
  const Eigen::VectorXd v =
      Eigen::JacobiSVD<Eigen::MatrixXd>(a, Eigen::ComputeFullV).matrixV().col(8);
  return Residuals::matrix(v / v[8]);
}

// Double precision Levenberg-Marquardt to tight tolerances from one start.
Eigen::Matrix3d refined(const std::vector<Pair>& pairs, const Eigen::Matrix3d& start) {
  Residuals residuals{pairs};
  Eigen::LevenbergMarquardt<Residuals> lm(residuals);
  lm.parameters.ftol = lm.parameters.xtol = lm.parameters.gtol = 1e-14;
  lm.parameters.maxfev = 2000;
  const Eigen::Matrix3d h = start / start(2, 2);
  Eigen::VectorXd x(8);
  x << h(0, 0), h(0, 1), h(0, 2), h(1, 0), h(1, 1), h(1, 2), h(2, 0), h(2, 1);
  lm.minimize(x);
  return Residuals::matrix(x);
}

// The weighted least-squares optimum: the best of several starts, one of them the result on trial,
// so that the optimum is never above it.
Eigen::Matrix3d optimum(const std::vector<Pair>& pairs, const Eigen::Matrix3d& onTrial) {
  const Eigen::Matrix3d nb = normaliser(pairs, &Pair::base);
  const Eigen::Matrix3d nh = normaliser(pairs, &Pair::here);
  std::vector<Pair> scaled = pairs;
  for (Pair& p : scaled) {
    p.base = (nb * p.base.homogeneous()).hnormalized();
    p.here = (nh * p.here.homogeneous()).hnormalized();
  }
  Eigen::Matrix3d best = onTrial;
  const Eigen::Matrix3d identity = Eigen::Matrix3d::Identity();
  for (const Eigen::Matrix3d& start :
       {linearSolution(scaled), Eigen::Matrix3d(nh * onTrial * nb.inverse()), identity}) {
    const Eigen::Matrix3d h = nh.inverse() * refined(scaled, start) * nb;
    if (rms(h, pairs, true) < rms(best, pairs, true)) best = h;
  }
  return best;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double largest(const std::vector<double>& values) {
  return *std::max_element(values.begin(), values.end());
}

// Pixels allowed above the optimum for single precision.
constexpr double kSlack = 1e-4;

struct Case {
  const char* shot;
  int base;      // that of the shot's description
  int unsolved;  // held or reduced
};

class RealShot : public testing::TestWithParam<Case> {};

void expectTheOptimum(const std::string& name, std::optional<int> base, int unsolved) {
  SolveOptions options;
  options.base = base;
  options.loss = Loss::None;
  const ShotResult result = solveShot(readTracks(dataFile(name + ".csv")), options);
  const Shot shot = readShot(name);
  std::vector<double> ours, best, plain;
  double worstRatio = 1;
  int unsolvedFrames = 0;
  for (const FrameResult& frame : result.frames) {
    if (frame.verdict.status == Status::Held || frame.verdict.status == Status::Reduced)
      ++unsolvedFrames;
    if (frame.verdict.status != Status::Solved) continue;
    const std::vector<Pair> pairs = pairsOf(shot, result.baseFrame, frame.frame);
    ASSERT_EQ(static_cast<int>(pairs.size()), frame.tracks);
    const Eigen::Matrix3d h = toEigen(frame.h);
    EXPECT_NEAR(frame.rms, rms(h, pairs, false), 1e-9 * (1 + frame.rms));
    ours.push_back(rms(h, pairs, true));
    best.push_back(rms(optimum(pairs, h), pairs, true));
    plain.push_back(frame.rms);
    if (best.back() > 0.01) worstRatio = std::max(worstRatio, ours.back() / best.back());
    EXPECT_LE(ours.back(), 1.001 * best.back() + kSlack) << name << " frame " << frame.frame;
  }
  EXPECT_EQ(unsolvedFrames, unsolved);
  std::printf(
      "%-8s base %3d | weighted RMS median %.5f worst %.5f | optimum %.5f %.5f | worst excess "
      "%.5f %% | unweighted %.4f %.4f | unsolved %d\n",
      name.c_str(), result.baseFrame, median(ours), largest(ours), median(best), largest(best),
      100 * (worstRatio - 1), median(plain), largest(plain), unsolvedFrames);
}

}  // namespace

TEST_P(RealShot, IsSolvedToTheLeastSquaresOptimumFromTheBaseThatIsChosen) {
  expectTheOptimum(GetParam().shot, std::nullopt, GetParam().unsolved);
}

TEST_P(RealShot, IsSolvedToTheLeastSquaresOptimumFromItsOwnBase) {
  expectTheOptimum(GetParam().shot, GetParam().base, GetParam().unsolved);
}

// On the screen, twelve frames have fewer than four tracks.
INSTANTIATE_TEST_SUITE_P(Data, RealShot,
                         testing::Values(Case{"planks", 50, 0}, Case{"board", 60, 0},
                                         Case{"facade", 0, 0}, Case{"box", 0, 0},
                                         Case{"highway", 0, 0}, Case{"screen4", 8, 12}),
                         [](const auto& info) { return std::string(info.param.shot); });

namespace {

struct Place {
  int frame;
  int corners;  // seen
  double x, y;
};

// Where the point (700, 0) of frame 8 is. With four corners the transform is the one through them;
// with fewer, the affine map, similarity or translation through them moves what they stand on:
// between two frames with four, the transform half way (87: a third, 88: two thirds) along straight
// lines from corner to corner of the box around the corners in frame 8; behind the last one with
// four, the transform of the frame before. Solved from these conditions in fractions.
const Place kPlacesOnTheScreen[] = {
    {0, 4, 701.47370619404, 1.549396335045},      {43, 4, 706.78994733628, 4.7283169711405},
    {86, 4, 706.12781472399, 1.3141773848906},    {87, 3, 695.706840449873, -1.73231151751033},
    {88, 3, 676.143026294211, -7.0278585205847},  {89, 4, 646.88396462059, -14.172033861493},
    {92, 3, 466.765626396785, -37.7925305817826}, {93, 4, 387.75942463687, -39.053772996312},
    {94, 2, 300.644143134748, -27.1553336076518}, {95, 4, 215.36027820065, -4.2727625813124},
    {96, 3, 129.30666651309, 27.203259517967},    {97, 3, 56.304936389083, 62.313595328208},
    {98, 3, -3.965247651338, 87.66163270845},     {99, 2, -99.9072899433, 67.35947390073},
    {100, 3, -137.76393219545, 172.32966629809},  {101, 2, -206.28793563722, 242.67994426741},
    {102, 1, -295.78793563722, 303.67994426741},  {103, 1, -289.78793563722, 286.67994426741}};

}  // namespace

// Their tracks are spread well; that some frames' noise is large is no reason to give them less
// than a full transform.
TEST(LongShots, AreSolvedInFullWhateverTheBase) {
  for (const char* name : {"box", "board", "planks", "highway", "facade"}) {
    const Tracks tracks = readTracks(dataFile(std::string(name) + ".csv"));
    for (std::optional<int> base : {std::optional<int>(), std::optional<int>(30)}) {
      SolveOptions options;
      options.base = base;
      for (const FrameResult& frame : solveShot(tracks, options).frames) {
        EXPECT_NE(frame.verdict.status, Status::Reduced) << name << ' ' << frame.frame;
        EXPECT_NE(frame.verdict.status, Status::Held) << name << ' ' << frame.frame;
      }
    }
  }
}

TEST(Screen, CarriesAPointWhereTheCornersThatAreSeenPutIt) {
  SolveOptions options;
  options.base = 8;
  const ShotResult result = solveShot(readTracks(dataFile("screen4.csv")), options);
  ASSERT_EQ(result.frames.size(), 104u);
  for (const Place& place : kPlacesOnTheScreen) {
    const FrameResult& frame = result.frames[static_cast<std::size_t>(place.frame)];
    EXPECT_EQ(frame.tracks, place.corners);
    EXPECT_EQ(frame.verdict.status, place.corners == 4 ? Status::Solved : Status::Reduced);
    const Eigen::Vector2d at = (toEigen(frame.h) * Eigen::Vector3d(700, 0, 1)).hnormalized();
    const double off = (at - Eigen::Vector2d(place.x, place.y)).norm();
    EXPECT_LT(off, 1e-9) << "frame " << place.frame;
  }
}

namespace {

std::map<int, Eigen::Matrix3d> readTruth(const std::string& name) {
  std::ifstream file(dataFile(name + ".truth.csv"));
  std::string line;
  std::getline(file, line);
  std::map<int, Eigen::Matrix3d> all;
  while (std::getline(file, line)) {
    const auto fields = split(line);
    Eigen::Matrix3d& truth = all[std::stoi(fields[0])];
    for (int i = 0; i < 9; ++i)
      truth(i / 3, i % 3) = std::stod(fields[static_cast<std::size_t>(i + 1)]);
  }
  return all;
}

// RMS distances from the truth of a frame, at the tracks that lie within 10 px of it.
struct Distances {
  std::vector<double> ofFits, ofTracks;
};

Distances fromTruth(const std::string& name, int base, Loss loss) {
  SolveOptions options;
  options.base = base;
  options.loss = loss;
  const ShotResult result = solveShot(readTracks(dataFile(name + ".csv")), options);
  const Shot shot = readShot(name);
  Distances distances;
  for (const auto& [frame, truth] : readTruth(name)) {
    if (frame == base) continue;
    const Eigen::Matrix3d h =
        toEigen(result.frames[static_cast<std::size_t>(frame - result.frames[0].frame)].h);
    double fit = 0, track = 0;
    int count = 0;
    for (const Pair& p : pairsOf(shot, base, frame)) {
      const Eigen::Vector2d there = (truth * p.base.homogeneous()).hnormalized();
      if ((there - p.here).norm() > 10) continue;
      fit += ((h * p.base.homogeneous()).hnormalized() - there).squaredNorm();
      track += (p.here - there).squaredNorm();
      ++count;
    }
    distances.ofFits.push_back(std::sqrt(fit / count));
    distances.ofTracks.push_back(std::sqrt(track / count));
  }
  std::printf("%s against truth: fit median %.3f worst %.3f px, tracks median %.3f worst %.3f px\n",
              name.c_str(), median(distances.ofFits), largest(distances.ofFits),
              median(distances.ofTracks), largest(distances.ofTracks));
  return distances;
}

}  // namespace

TEST(Board, LiesWithinTheTracksOwnErrorOfTheTruth) {
  const Distances distances = fromTruth("board", 60, Loss::None);
  EXPECT_EQ(distances.ofFits.size(), 120u);
  EXPECT_LT(median(distances.ofFits), median(distances.ofTracks));
  EXPECT_LT(largest(distances.ofFits), largest(distances.ofTracks));
}

// Half its tracks creep off by some pixels; the others agree within a tenth of one.
TEST(Board, FollowsTheTracksThatKeepToTheirPlace) {
  const Distances distances = fromTruth("board", 60, Loss::Tukey);
  EXPECT_LE(median(distances.ofFits), 0.25);
  EXPECT_LE(largest(distances.ofFits), 1.5);
}

TEST(Graf, LiesNearItsTruthThoughAQuarterOfTheMatchesAreWrong) {
  EXPECT_LE(median(fromTruth("graf13", 0, Loss::Tukey).ofFits), 2.5);
}

namespace {

std::vector<double> lengths(const Homography& h, const std::vector<Pair>& pairs) {
  const Eigen::Matrix3d m = toEigen(h);
  std::vector<double> all;
  for (const Pair& p : pairs)
    all.push_back(((m * p.base.homogeneous()).hnormalized() - p.here).norm());
  return all;
}

double rootMeanSquare(const std::vector<double>& values) {
  double sum = 0;
  for (double v : values) sum += v * v;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

// A shot solved with the default loss: figures over the tracks within 3 px of the fit.
struct Near {
  std::vector<double> rms, share;
};

Near nearTracks(const std::string& name, int base) {
  SolveOptions options;
  options.loss = Loss::Tukey;
  options.base = base;
  const ShotResult result = solveShot(readTracks(dataFile(name + ".csv")), options);
  const Shot shot = readShot(name);
  Near near;
  for (const FrameResult& frame : result.frames) {
    if (frame.verdict.status != Status::Solved) continue;
    std::vector<double> all = lengths(frame.h, pairsOf(shot, base, frame.frame));
    const auto count = static_cast<double>(all.size());
    all.erase(std::remove_if(all.begin(), all.end(), [](double r) { return r > 3; }), all.end());
    near.rms.push_back(rootMeanSquare(all));
    near.share.push_back(static_cast<double>(all.size()) / count);
  }
  std::printf("%s: RMS within 3 px median %.3f worst %.3f px, share of the tracks median %.3f\n",
              name.c_str(), median(near.rms), largest(near.rms), median(near.share));
  return near;
}

class CleanShot : public testing::TestWithParam<const char*> {};

}  // namespace

TEST(Highway, KeepsToTheRoadThoughAThirdOfTheTracksDriveOff) {
  const Near near = nearTracks("highway", 0);
  EXPECT_EQ(near.rms.size(), 149u);
  EXPECT_LE(median(near.rms), 0.50);
  // Thirteen cars have moved by 1 to 3 px in frame 2, which the figure counts.
  EXPECT_LE(largest(near.rms), 0.75);
  EXPECT_GE(median(near.share), 0.645);
}

TEST(Box, KeepsToTheFaceThoughTracksSlideOffIt) {
  const Near near = nearTracks("box", 0);
  EXPECT_EQ(near.rms.size(), 199u);
  EXPECT_LE(median(near.rms), 0.785);
  EXPECT_LE(largest(near.rms), 1.65);
  EXPECT_GE(median(near.share), 0.95);
}

TEST_P(CleanShot, StaysWithinOnePercentOfPlainSquares) {
  const std::string name = GetParam();
  const Tracks tracks = readTracks(dataFile(name + ".csv"));
  SolveOptions plain;
  plain.base = 0;
  plain.loss = Loss::None;
  SolveOptions robust = plain;
  robust.loss = Loss::Tukey;
  const ShotResult a = solveShot(tracks, plain);
  const ShotResult b = solveShot(tracks, robust);
  std::vector<double> ratios;
  for (std::size_t i = 0; i < a.frames.size(); ++i) {
    if (a.frames[i].verdict.status == Status::Solved)
      ratios.push_back(b.frames[i].rms / a.frames[i].rms);
  }
  std::printf("%s: robust over plain RMS median %.4f worst %.4f\n", name.c_str(), median(ratios),
              largest(ratios));
  EXPECT_LE(median(ratios), 1.01);
}
INSTANTIATE_TEST_SUITE_P(Data, CleanShot, testing::Values("facade", "boardphotos"),
                         [](const auto& info) { return std::string(info.param); });
