// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/shot_solver.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/shot/random.h"

using namespace cornerpin;

namespace {

const Quad kCorners = {{{80, 80}, {560, 90}, {540, 430}, {70, 410}}};

Homography motion(int frame) {
  const double f = frame;
  return {{{1 + 0.05 * f, 0.06 * f, 12 * f},
           {-0.04 * f, 1 + 0.02 * f, -9 * f},
           {1e-4 * f, -6e-5 * f, 1}}};
}

// `count` tracks, the first of them on the corners, over three frames with normal noise everywhere,
// the base frame included.
Tracks noisyShot(int count, double noise, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal(0, noise);
  Tracks tracks;
  for (int f = 0; f < 3; ++f) {
    for (int t = 0; t < count; ++t) {
      if (f == 0) tracks.names.push_back("t" + std::to_string(t));
      const double x = 90.0 + 460.0 * (t * 37 % 101) / 100;
      const double y = 90.0 + 320.0 * (t * 61 % 97) / 96;
      const Point p = t < 4 ? kCorners[static_cast<std::size_t>(t)] : Point{x, y};
      const Point q = map(motion(f), p);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = q.x + normal(random);
      o.y = q.y + normal(random);
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

SolveOptions fromTheFirstFrame(const std::optional<Quad>& corners = {}) {
  SolveOptions options;
  options.base = 0;
  if (corners) options.quads = {{"quad", *corners}};
  options.influences = true;
  return options;
}

void forEachInfluence(const ShotResult& result,
                      const std::function<void(int frame, const TrackInfluence&)>& act) {
  for (const FrameResult& frame : result.frames) {
    for (const TrackInfluence& influence : frame.influences) act(frame.frame, influence);
  }
}

}  // namespace

namespace {

// Of many noisy copies of a shot: in each corner of a frame what the figures say, as a mean square,
// and what happens; and in how many copies the worst corner lies within two deviations.
struct Copies {
  explicit Copies(int count) : count(count) {}

  void add(const FrameResult& frame) {
    const std::array<double, 4> deviations = frame.figures.deviations();
    std::array<double, 4> errors{};
    for (std::size_t c = 0; c < 4; ++c) {
      errors[c] = std::sqrt(
          squaredDistance(map(frame.h, kCorners[c]), map(motion(frame.frame), kCorners[c])));
      seen[c] += errors[c] * errors[c] / count;
      figure[c] += deviations[c] * deviations[c] / count;
    }
    const auto worst =
        static_cast<std::size_t>(std::max_element(errors.begin(), errors.end()) - errors.begin());
    if (errors[worst] <= 2.0 * deviations[worst]) ++within;
  }

  // Somewhat careful: the larger of two estimates is more than either.
  void expectThatTwoDeviationsHold() const {
    std::printf("within two deviations %.1f %%\n", 100.0 * within / count);
    EXPECT_GE(within, 0.92 * count);
    EXPECT_LE(within, 0.99 * count);
    for (std::size_t c = 0; c < 4; ++c) {
      std::printf("corner %zu: figure %.4f px, spread %.4f px\n", c, std::sqrt(figure[c]),
                  std::sqrt(seen[c]));
      EXPECT_GT(std::sqrt(figure[c] / seen[c]), 1.0);
      EXPECT_LT(std::sqrt(figure[c] / seen[c]), 1.75);
    }
  }

  int count;
  int within = 0;
  std::array<double, 4> figure{};
  std::array<double, 4> seen{};
};

}  // namespace

TEST(Trust, HoldsTheWorstCornerOfAThousandNoisyCopiesOfAShot) {
  Copies first(1000);
  Copies second(1000);
  for (unsigned copy = 0; copy < 1000; ++copy) {
    const ShotResult result = solveShot(noisyShot(24, 0.5, copy), fromTheFirstFrame(kCorners));
    first.add(result.frames[1]);
    second.add(result.frames[2]);
  }
  first.expectThatTwoDeviationsHold();
  second.expectThatTwoDeviationsHold();
}

// Every sixth track is somewhere else in every frame but the base; the figure is about the rest.
TEST(Trust, HoldsTheWorstCornerWithBadTracksAmongTheGood) {
  Copies copies(500);
  for (unsigned copy = 0; copy < 500; ++copy) {
    Tracks tracks = noisyShot(36, 0.5, copy);
    for (Observation& o : tracks.observations) {
      if (o.track % 6 == 5 && o.frame > 0) o.x += 25 + o.track;
    }
    copies.add(solveShot(tracks, fromTheFirstFrame(kCorners)).frames[2]);
  }
  copies.expectThatTwoDeviationsHold();
}

TEST(Trust, GivesBadTracksNoWeightAndNoInfluence) {
  Tracks tracks = noisyShot(24, 0.5, 1);
  for (Observation& o : tracks.observations) {
    if (o.track == 7 && o.frame > 0) o.x += 40;
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame(kCorners));
  int bad = 0;
  forEachInfluence(result, [&](int, const TrackInfluence& influence) {
    EXPECT_EQ(influence.weight == 0.0, influence.track == 7);
    if (influence.track != 7) return;
    ++bad;
    EXPECT_EQ(influence.influence, 0.0);
    EXPECT_EQ(influence.leverage, 0.0);
    EXPECT_NEAR(influence.residual, 40.0, 5.0);
  });
  EXPECT_EQ(bad, 2);
}

TEST(Trust, IsAboutTheBoxAroundTheBaseFramesTracksUnlessToldOtherwise) {
  const Tracks tracks = noisyShot(3, 0.0, 1);
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  const Quad box = result.quads[0].corners;
  const auto& rows = tracks.observations;
  EXPECT_EQ(box[0].x, std::min({rows[0].x, rows[1].x, rows[2].x}));
  EXPECT_EQ(box[0].y, std::min({rows[0].y, rows[1].y, rows[2].y}));
  EXPECT_EQ(box[2].x, std::max({rows[0].x, rows[1].x, rows[2].x}));
  EXPECT_EQ(box[2].y, std::max({rows[0].y, rows[1].y, rows[2].y}));
  EXPECT_EQ(box[1].x, box[2].x);
  EXPECT_EQ(box[1].y, box[0].y);
  EXPECT_EQ(solveShot(tracks, fromTheFirstFrame(kCorners)).quads[0].corners[3].x, kCorners[3].x);
}

namespace {

// What the tracks of a frame with these weights say of it, in dense matrices: the slopes of a model
// in the parameters it has, in coordinates divided by a length; NaN where there is no figure.
class DenseFigures {
 public:
  // `shift`: the model is a similarity behind this transform, and not a projective one.
  DenseFigures(const Homography& h, const std::optional<Homography>& shift) : h_(h), kept_(shift) {}

  void add(Point base, Point present, double weight) {
    const Eigen::MatrixXd s = slopes(base);
    const Point image = map(h_, base);
    const Eigen::Matrix2d d = derivatives(base);
    const Eigen::Matrix2d v = Eigen::Matrix2d::Identity() + d * d.transpose();
    const double w2 = weight * weight;
    if (a_.size() == 0) a_ = b_ = Eigen::MatrixXd::Zero(s.cols(), s.cols());
    a_ += w2 * s.transpose() * s;
    b_ += w2 * w2 * s.transpose() * v * s;
    const Eigen::Vector2d r(present.x - image.x, present.y - image.y);
    squares_ += w2 * r.squaredNorm();
    total_ += w2 * v.trace();
    good_ += 1.0;
  }
  double noise() const { return std::sqrt(squares_ / (total_ - a_.ldlt().solve(b_).trace())); }
  // A track of the fit's last step: what it pulls is its squared weight times `pull` of its
  // residual.
  void addToLast(Point base, Point present, double weight,
                 const std::function<Eigen::Vector2d(Eigen::Vector2d)>& pull) {
    constexpr double kStep = 1e-6;
    const Eigen::MatrixXd s = slopes(base);
    const Point image = map(h_, base);
    const Eigen::Vector2d r(present.x - image.x, present.y - image.y);
    Eigen::Matrix2d grows;
    for (int i = 0; i < 2; ++i) {
      const Eigen::Vector2d step = kStep * Eigen::Vector2d::Unit(i);
      grows.col(i) = (pull(r + step) - pull(r - step)) / (2.0 * kStep);
    }
    // A track that pulls the less the further it is off counts as not pulling at all.
    const Eigen::Vector2d along = r.normalized();
    const double growth = along.dot(grows * along);
    if (growth < 0.0) grows -= growth * along * along.transpose();
    const double w2 = weight * weight;
    const double u = pull(r).norm() / r.norm();
    if (u == 0.0) return;
    if (plain_.size() == 0) plain_ = stiff_ = Eigen::MatrixXd::Zero(s.cols(), s.cols());
    plain_ += w2 * u * s.transpose() * s;
    stiff_ += w2 * s.transpose() * grows * s;
    tracks_.push_back({s, r, w2 * u});
  }
  // The larger of equal noise's, which two errors a track beyond its parameters have told, and the
  // jackknife's.
  double deviationAt(Point base) const {
    const Eigen::MatrixXd s = slopes(base);
    const Eigen::MatrixXd inverse = a_.inverse();
    const double left = 2.0 * good_ - static_cast<double>(a_.rows());
    const double factor = left / 8.0 * (std::exp(8.0 / left) - 1.0);
    const double equal = (s * inverse * b_ * inverse * s.transpose()).trace();
    return std::sqrt(std::max(factor * std::pow(noise(), 2) * equal, jackknifeAt(s)));
  }

 private:
  static constexpr double kLength = 300.0;

  struct Track {
    Eigen::MatrixXd slopes;
    Eigen::Vector2d residual;
    double squaredWeight;
  };
  // A residual counts at most eight times for what the fit has come towards its track.
  double jackknifeAt(const Eigen::MatrixXd& s) const {
    const Eigen::MatrixXd plain = plain_.inverse();
    const Eigen::MatrixXd inverse = stiff_.inverse();
    double sum = 0.0;
    for (const auto& [t, r, w2] : tracks_) {
      const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> left(Eigen::Matrix2d::Identity() -
                                                                w2 * t * plain * t.transpose());
      const Eigen::Vector2d share = left.eigenvalues().cwiseMax(0.125);
      const Eigen::Vector2d actual = left.eigenvectors() * share.cwiseInverse().asDiagonal() *
                                     left.eigenvectors().transpose() * r;
      sum += (w2 * s * inverse * t.transpose() * actual).squaredNorm();
    }
    const auto count = static_cast<double>(tracks_.size());
    return (count - 1.0) / count * sum;
  }

  // By differences: the model's own formulas are not needed.
  Eigen::Matrix2d derivatives(Point p) const {
    constexpr double kStep = 1e-3;
    Eigen::Matrix2d d;
    for (int i = 0; i < 2; ++i) {
      const Point step = {i == 0 ? kStep : 0.0, i == 1 ? kStep : 0.0};
      const Point high = map(h_, {p.x + step.x, p.y + step.y});
      const Point low = map(h_, {p.x - step.x, p.y - step.y});
      d.col(i) << (high.x - low.x) / (2 * kStep), (high.y - low.y) / (2 * kStep);
    }
    return d;
  }
  Eigen::MatrixXd slopes(Point base) const {
    if (kept_) {
      const Point p = map(*kept_, base);
      Eigen::MatrixXd s(2, 4);
      s << p.x / kLength, -p.y / kLength, 1, 0, p.y / kLength, p.x / kLength, 0, 1;
      return s;
    }
    const Point p = {base.x / kLength, base.y / kLength};
    const Point q = map(h_, base);
    const double g = 1 / denominator(h_, base);
    Eigen::MatrixXd s(2, 8);
    s << g * p.x, g * p.y, g, 0, 0, 0, -g * q.x * p.x, -g * q.x * p.y,  //
        0, 0, 0, g * p.x, g * p.y, g, -g * q.y * p.x, -g * q.y * p.y;
    return s;
  }

  Homography h_;
  std::optional<Homography> kept_;
  Eigen::MatrixXd a_, b_;          // of the good tracks
  Eigen::MatrixXd plain_, stiff_;  // of the last step, with the weights alone and with the loss
  double good_ = 0.0;
  std::vector<Track> tracks_;  // of the last step
  double squares_ = 0.0;
  double total_ = 0.0;
};

// The figures of frame `f` about its tracks within a distance.
DenseFigures denseFigures(const Tracks& tracks, const ShotResult& result, int f, double within,
                          const std::optional<Homography>& kept = {}) {
  const FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
  const Homography& h = frame.h;
  const auto pull = [&](const Eigen::Vector2d& r) {
    return Eigen::Vector2d(lossWeight(frame.loss, r.norm(), frame.width) * r);
  };
  DenseFigures figures(h, kept);
  for (const Observation& o : tracks.inFrame(f)) {
    const Observation& base = tracks.inFrame(0).first[o.track];
    const Point p = map(h, {base.x, base.y});
    if (o.weight == 0.0f) continue;
    const auto weight = static_cast<double>(o.weight);
    figures.addToLast({base.x, base.y}, {o.x, o.y}, weight, pull);
    if (std::hypot(o.x - p.x, o.y - p.y) > within) continue;
    figures.add({base.x, base.y}, {o.x, o.y}, weight);
  }
  return figures;
}

void expectFigures(const FrameFigures& figures, const DenseFigures& dense) {
  EXPECT_GT(figures.noise, 0.01);
  EXPECT_NEAR(figures.noise / dense.noise(), 1.0, 1e-7);
  for (std::size_t c = 0; c < 4; ++c) {
    EXPECT_NEAR(figures.deviations()[c] / dense.deviationAt(kCorners[c]), 1.0, 1e-6) << c;
  }
}

}  // namespace

TEST(Trust, HasTheFiguresOfADenseComputation) {
  for (Loss loss : {Loss::None, Loss::Huber, Loss::Tukey}) {
    Tracks tracks = noisyShot(32, 0.5, 3);
    for (Observation& o : tracks.observations) {
      if (o.frame == 0) continue;
      o.weight = o.track % 3 == 0 ? 0.5f : 1.0f;
      if (o.track == 7) o.x += 40;
    }
    SolveOptions options = fromTheFirstFrame(kCorners);
    options.loss = loss;
    const ShotResult result = solveShot(tracks, options);
    for (int f : {1, 2}) {
      const FrameResult& frame = result.frames[static_cast<std::size_t>(f)];
      const double within = loss == Loss::None ? HUGE_VAL : 3.5 * frame.sigma;
      EXPECT_EQ(frame.good < 32, loss != Loss::None);
      expectFigures(frame.figures, denseFigures(tracks, result, f, within));
    }
  }
}

// Three tracks nearly on a line, which a similarity behind the neighbour's transform does not meet.
TEST(Trust, HasTheFiguresOfADenseComputationForAReducedFrame) {
  Tracks tracks = noisyShot(12, 0.5, 1);
  for (int t : {0, 1, 2}) {
    for (int f : {0, 1, 2}) {
      const Point p = map(motion(f), {120.0 + 180 * t, 100.0 + 130 * t + (t == 1 ? 4 : 0)});
      Observation& o = tracks.observations[static_cast<std::size_t>(12 * f + t)];
      o.x = p.x + 0.25 * (f + t);
      o.y = p.y - 0.5 * f * t;
      o.weight = t == 1 && f == 2 ? 0.5f : 1.0f;
    }
  }
  for (Observation& o : tracks.observations) {
    if (o.frame == 2 && o.track > 2) o.weight = 0.0f;
  }
  SolveOptions options = fromTheFirstFrame(kCorners);
  options.loss = Loss::None;
  const ShotResult result = solveShot(tracks, options);
  const FrameResult& frame = result.frames[2];
  ASSERT_EQ(frame.verdict.model, Model::Similarity);
  ASSERT_TRUE(frame.verdict.onTop);
  expectFigures(frame.figures, denseFigures(tracks, result, 2, HUGE_VAL, result.frames[1].h));
}

// A track that hardly weighs stays far off while the others are met. Of five its residual says how
// noisy they are; of six it is bad.
TEST(Trust, TellsNoBadTrackAmongFive) {
  for (int count : {5, 6}) {
    Tracks tracks = noisyShot(count, 0.01, 1);
    tracks.observations.back().x += 40;  // the last one in frame 2
    tracks.observations.back().weight = 0.0078125f;
    const FrameResult frame = solveShot(tracks, fromTheFirstFrame(kCorners)).frames[2];
    EXPECT_GT(frame.influences.back().residual, 3.5 * frame.sigma);
    EXPECT_EQ(frame.influences.back().weight, count == 5 ? 0.0078125 : 0.0);
    EXPECT_EQ(frame.figures.noise > 0.1, count == 5);
  }
}

TEST(Trust, ListsTheFiveWorstTracks) {
  EXPECT_EQ(solveShot(noisyShot(24, 0.5, 1), fromTheFirstFrame()).worst.size(), 5u);
}

// The wider of the two extents counts. All influences grow with the distance of the far-off track,
// but for the last of the library's single precision, up to a hundredth here.
TEST(Trust, NamesATrackThatMovesACornerByAThousandthOfTheExtent) {
  SolveOptions plain = fromTheFirstFrame();
  plain.loss = Loss::None;
  const auto worstWith = [&](double off) {
    Tracks tracks = noisyShot(24, 0.002, 1);
    for (Observation& o : tracks.observations) {
      if (o.frame == 2 && o.track == 2) o.y += off;
    }
    return solveShot(tracks, plain);
  };
  const Quad box = worstWith(0.0).quads[0].corners;
  const double extent = box[2].x - box[0].x;
  ASSERT_GT(extent, box[2].y - box[0].y);
  for (double share : {0.99e-3, 1.01e-3}) {
    double off = 5.0;
    TrackStretch stretch = worstWith(off).worst[0].stretch;
    for (int i = 0; i < 30 && std::fabs(stretch.moves / (share * extent) - 1.0) > 0.005; ++i) {
      off *= share * extent / stretch.moves;
      stretch = worstWith(off).worst[0].stretch;
    }
    EXPECT_NEAR(stretch.moves, share * extent, 0.005 * share * extent);
    EXPECT_GT(stretch.off, 6.0);
    EXPECT_EQ(stretch.standsOut, share > 1e-3);
  }
}

TEST(Trust, GivesATrackBehindTheHorizonNoWeightWhereverItIsSeen) {
  const Homography h = {
      {{1, 0.02, 3}, {-0.03, 1, 5}, {-0.002, 0, 1}}};  // the horizon is at x = 500
  Tracks tracks;
  for (int f = 0; f < 2; ++f) {
    for (int t = 0; t < 10; ++t) {
      if (f == 0) tracks.names.push_back("t" + std::to_string(t));
      const Point p = {t == 9 ? 600.0 : 60.0 + 30.0 * t, 80.0 + 50.0 * (t * 3 % 7)};
      const Point q = f == 0 ? p : map(h, p);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = q.x;
      o.y = q.y;
      tracks.observations.push_back(o);
    }
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  ASSERT_EQ(result.frames[1].verdict.status, Status::Solved);
  ASSERT_LT(denominator(result.frames[1].h, {600, 80}), 0.0);
  ASSERT_EQ(result.frames[1].good, 9);
  int seen = 0;
  forEachInfluence(result, [&](int, const TrackInfluence& influence) {
    EXPECT_EQ(influence.leverage > 0.0, influence.track != 9);
    ++seen;
  });
  EXPECT_EQ(seen, 10);
}

TEST(Trust, LeavesATrackThatIsFarAwayOutOfTheBox) {
  Tracks tracks = noisyShot(8, 0.0, 1);
  tracks.observations[5].x = 1e5;
  EXPECT_LT(solveShot(tracks, fromTheFirstFrame()).quads[0].corners[2].x, 1e4);
  SolveOptions plain = fromTheFirstFrame();
  plain.loss = Loss::None;
  EXPECT_EQ(solveShot(tracks, plain).quads[0].corners[2].x, 1e5);
}

TEST(Trust, SaysNothingOfWhatItCannotKnow) {
  const Tracks tracks = noisyShot(4, 0.1, 1);
  const ShotResult result = solveShot(tracks, fromTheFirstFrame(kCorners));
  EXPECT_TRUE(std::isnan(result.frames[0].figures.noise));
  EXPECT_EQ(result.frames[0].figures.deviations(), (std::array<double, 4>{}));
  EXPECT_TRUE(std::isnan(result.frames[1].figures.noise));
  EXPECT_TRUE(std::isnan(result.frames[1].figures.deviations()[0]));
  EXPECT_TRUE(result.worst.empty());
}

// Four tracks say nothing of the noise; the frames around them do.
TEST(Trust, TakesTheNoiseOfFourTracksFromTheShot) {
  Tracks tracks;
  std::mt19937_64 random(4);
  std::normal_distribution<double> normal(0, 0.5);
  constexpr int kFrames = 9;
  for (int t = 0; t < 24; ++t) tracks.names.push_back("t" + std::to_string(t));
  for (int f = 0; f < kFrames; ++f) {
    for (int t = 0; t < (f == 4 ? 4 : 24); ++t) {
      const Point p =
          t < 4 ? kCorners[static_cast<std::size_t>(t)]
                : Point{90.0 + 460.0 * (t * 37 % 101) / 100, 90.0 + 320.0 * (t * 61 % 97) / 96};
      const double nx = normal(random), ny = normal(random);
      const Point q = map(motion(f > 4 ? 1 : 0), p);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = q.x + nx;
      o.y = q.y + ny;
      tracks.observations.push_back(o);
    }
  }
  const FrameResult frame = solveShot(tracks, fromTheFirstFrame(kCorners)).frames[4];
  ASSERT_EQ(frame.verdict.status, Status::Solved);
  EXPECT_TRUE(std::isnan(frame.figures.noise));
  // A corner is a track's place: it is as noisy as the track in each of the two frames.
  for (double deviation : frame.figures.deviations()) EXPECT_NEAR(deviation, 1.0, 0.2);
}

TEST(Trust, HasNoFigureForACornerBehindTheHorizon) {
  const Tracks tracks = noisyShot(12, 0.5, 1);
  const Quad far = {{{100, 100}, {500, 100}, {500, 400}, {-2e4, 400}}};
  const ShotResult result = solveShot(tracks, fromTheFirstFrame(far));
  EXPECT_GT(result.frames[2].figures.deviations()[0], 0.0);
  EXPECT_TRUE(std::isnan(result.frames[2].figures.deviations()[3]));
}

TEST(Trust, HandsEveryTrackOfEveryOtherFrameOver) {
  Tracks tracks = noisyShot(6, 0.5, 1);
  tracks.observations[8].weight = 0.0f;  // t2 in frame 1
  std::string seen;
  forEachInfluence(solveShot(tracks, fromTheFirstFrame()),
                   [&](int frame, const TrackInfluence& influence) {
                     seen += std::to_string(influence.track) + "@" + std::to_string(frame) + " ";
                   });
  EXPECT_EQ(seen, "0@1 1@1 3@1 4@1 5@1 0@2 1@2 2@2 3@2 4@2 5@2 ");
}

// Three exact tracks behind the neighbour's transform leave no residual; were the neighbour not
// kept, an affine transform alone would miss them.
TEST(Trust, JudgesAReducedFrameBehindTheNeighbourThatItKeeps) {
  Tracks tracks = noisyShot(12, 0.0, 1);
  for (Observation& o : tracks.observations) {
    if (o.frame == 2 && o.track > 2) o.weight = 0.0f;
  }
  const ShotResult result = solveShot(tracks, fromTheFirstFrame());
  const FrameResult& frame = result.frames[2];
  ASSERT_EQ(frame.verdict.model, Model::Affine);
  ASSERT_TRUE(frame.verdict.onTop);
  ASSERT_EQ(frame.influences.size(), 3u);
  // Three tracks take all of an affine model's six parameters: a leverage of 1 each.
  for (int track : {0, 1, 2}) {
    const TrackInfluence& influence = frame.influences[static_cast<std::size_t>(track)];
    EXPECT_EQ(influence.track, track);
    EXPECT_NEAR(influence.leverage, 1.0, 1e-9);
    EXPECT_LT(influence.residual, 1e-9);
  }
}

TEST(Trust, NamesABadTrackAndNoGoodOne) {
  SolveOptions plain = fromTheFirstFrame(kCorners);
  plain.loss = Loss::None;
  for (unsigned seed = 1; seed < 101; ++seed) {
    Tracks tracks = noisyShot(24, 0.5, seed);
    for (const WorstTrack& track : solveShot(tracks, plain).worst) {
      EXPECT_FALSE(track.stretch.standsOut) << track.name << " seed " << seed;
    }
    for (Observation& o : tracks.observations) {
      if (o.track == 7 && o.frame > 0) o.x += 40;
    }
    const ShotResult result = solveShot(tracks, plain);
    EXPECT_EQ(result.worst[0].name, "t7") << "seed " << seed;
    EXPECT_TRUE(result.worst[0].stretch.standsOut) << "seed " << seed;
  }
}

namespace {

// 40 frames of tracks that lie anywhere, the first `bad` of which slide off by `way` a frame, with
// noise of half a pixel everywhere.
Tracks slidingShot(int count, int bad, const std::vector<Point>& ways, std::uint32_t seed) {
  made::Random random(seed);
  Tracks tracks;
  std::vector<Point> places;
  for (int t = 0; t < count; ++t) {
    tracks.names.push_back("t" + std::to_string(t));
    const double x = random.real(0, 1000);
    const double y = random.real(0, 600);
    places.push_back({x, y});
  }
  for (int f = 0; f < 40; ++f) {
    for (int t = 0; t < count; ++t) {
      const auto i = static_cast<std::size_t>(t);
      Observation o;
      o.track = t;
      o.frame = f;
      o.x = places[i].x + 3.0 * f + (t < bad ? ways[i].x * f : 0.0) + random.noise(0.5);
      o.y = places[i].y - 2.0 * f + (t < bad ? ways[i].y * f : 0.0) + random.noise(0.5);
      tracks.observations.push_back(o);
    }
  }
  return tracks;
}

struct Called {
  int good = 0;
  int wrong = 0;  // of these, off by more than three deviations and the limit
};

void judgeShot(const Tracks& tracks, Called& called) {
  SolveOptions options;
  options.base = 0;
  options.quads = {{"quad", {{{100, 60}, {900, 60}, {900, 540}, {100, 540}}}}};
  for (const FrameResult& frame : solveShot(tracks, options).frames) {
    if (frame.verdict.status == Status::Base || !frame.doubts.empty()) continue;
    ++called.good;
    bool wrong = false;
    for (std::size_t c = 0; c < 4; ++c) {
      const Point p = options.quads[0].corners[c];
      const Point q = map(frame.h, p);
      const double error = std::hypot(q.x - p.x - 3.0 * frame.frame, q.y - p.y + 2.0 * frame.frame);
      wrong = wrong || (error > 3.0 * frame.figures.deviations()[c] && error > 4.0);
    }
    if (wrong) ++called.wrong;
  }
}

}  // namespace

TEST(ShotSolver, CallsFewFramesGoodAndWrongWhereSomeOfFewTracksSlide) {
  Called called;
  for (std::uint32_t seed = 1; seed <= 40; ++seed) {
    made::Random random(1000 + seed);
    std::vector<Point> ways;
    for (int t = 0; t < 2; ++t) {
      const double x = random.noise(0.6);
      const double y = random.noise(0.6);
      ways.push_back({x, y});
    }
    judgeShot(slidingShot(8, 2, ways, seed), called);
  }
  std::printf("8 tracks, 2 slide: %d frames good, %d of them wrong\n", called.good, called.wrong);
  EXPECT_GT(called.good, 200);
  EXPECT_LT(called.wrong, called.good / 20);
}

TEST(ShotSolver, CallsFewFramesGoodAndWrongWhereASecondSurfaceDriftsOff) {
  Called called;
  for (std::uint32_t seed = 1; seed <= 10; ++seed) {
    const std::vector<Point> alike(8, {3.0, 1.0});
    judgeShot(slidingShot(20, 8, alike, seed), called);
  }
  std::printf("8 of 20 drift off: %d frames good, %d of them wrong\n", called.good, called.wrong);
  EXPECT_GT(called.good, 200);
  EXPECT_LT(called.wrong, called.good / 100);
}
