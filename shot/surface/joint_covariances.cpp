// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/joint_covariances.h"

#include <cmath>

#include "shot/fit/residuals.h"
#include "shot/surface/front_products.h"
#include "shot/surface/joint_elimination.h"
#include "shot/surface/joint_shot.h"
#include "shot/surface/start_places.h"

namespace cornerpin {

namespace {

// G V G'.
Symmetric2 transformed(const Derivative& g, const Symmetric2& v) {
  const double xx = g.Xx * v.xx + g.Xy * v.xy, xy = g.Xx * v.xy + g.Xy * v.yy;
  const double yx = g.Yx * v.xx + g.Yy * v.xy, yy = g.Yx * v.xy + g.Yy * v.yy;
  return {xx * g.Xx + xy * g.Xy, xx * g.Yx + xy * g.Yy, yx * g.Yx + yy * g.Yy};
}

Derivative inverse(const Derivative& d) {
  const double determinant = d.Xx * d.Yy - d.Xy * d.Yx;
  return {d.Yy / determinant, -d.Xy / determinant, -d.Yx / determinant, d.Xx / determinant};
}

// Weights say how much an observation is to count, not how noisy it is. All having the same noise
// s, a fit to weights w has the covariance s^2 inv(A) B inv(A), A = sum of w^2 S'S and B = sum of
// w^4 S'S. Where weights have nothing to do with places B is nearly c^2 A, c^2 = sum of w^4 / sum
// of w^2, and the covariance is s^2 inv(A / c^2): that of weights w / c which do tell the noise.
ObservationsOf withEqualNoise(const ObservationsOf& observations) {
  return [&observations](std::size_t frame) {
    const Matches matches = observations(frame);
    double squares = 0.0;
    double fourths = 0.0;
    for (std::size_t i = 0; i < matches.size(); ++i) {
      if (!isSighting(matches[i])) continue;
      const double w2 = matches[i].weight * matches[i].weight;
      squares += w2;
      fourths += w2 * w2;
    }
    const double c = std::sqrt(fourths / squares);
    Matches result;
    for (std::size_t i = 0; i < matches.size(); ++i) {
      Match match = matches[i];
      match.weight /= c;
      result.add(match);
    }
    return result;
  };
}

class Covariances : public WayBack {
 public:
  Covariances(const JointShot& shot, const Points& points, std::vector<Place>& places,
              const std::function<void()>& report)
      : images(shot.frames.size(), std::vector<Symmetric2>(points.size(), Place{}.covariance)),
        shot_(shot),
        points_(points),
        places_(places),
        report_(report),
        stride_(paddedWidth(2 * slotsOf(shot))),
        covariance_(stride_ * stride_),
        product_(2 * stride_) {
    for (Place& place : places) place.covariance = Place{}.covariance;
    for (std::size_t t = 0; t < places.size() && others_.empty(); ++t) {
      const bool out = shot.lives.slots[t] == TrackLives::kNoSlot;
      if (out && isKnown(places[t])) others_.resize(places.size());
    }
    eliminateAndReturn(shot, *this);
    finish();
  }

  // With G what the track's step takes from the others' and P their covariance, its own is
  // inverse + G P G', and that with them -G P.
  void restore(const EliminatedTrack& track) override {
    fastestFrontProducts().multiply(track.x(), track.stride(), 2, covariance_.data(), stride_,
                                    track.stride(), stride_, product_.data());
    const double *gx = product_.data(), *gy = gx + stride_;
    Symmetric2 own = track.inverse;
    for (std::size_t i = 0; i < track.stride(); ++i) {
      own.xx += track.x()[i] * gx[i];
      own.xy += track.x()[i] * gy[i];
      own.yy += track.y()[i] * gy[i];
    }
    const std::size_t i = 2 * track.slot;
    for (std::size_t j = 0; j < stride_; ++j) {
      at(i, j) = at(j, i) = -gx[j];
      at(i + 1, j) = at(j, i + 1) = -gy[j];
    }
    at(i, i) = own.xx;
    at(i, i + 1) = at(i + 1, i) = own.xy;
    at(i + 1, i + 1) = own.yy;
    if (track.inverse.xx > 0.0) places_[track.track].covariance = own;
  }

  void visit(std::size_t frame, FrameEquations& equations) override {
    equations.setCovariance(covariance_, stride_);
    for (std::size_t i = 0; i < points_.size(); ++i) {
      images[frame][i] = equations.covarianceAt(points_[i]);
    }
    if (!others_.empty()) addOthers(frame, equations);
    report_();
  }

  std::vector<std::vector<Symmetric2>> images;

 private:
  static std::size_t slotsOf(const JointShot& shot) {
    std::size_t slots = 0;
    for (std::size_t extent : shot.lives.extents) slots = extent > slots ? extent : slots;
    return slots;
  }

  double& at(std::size_t i, std::size_t j) { return covariance_[i * stride_ + j]; }

  // A track that is left out.
  struct Other {
    Symmetric2 information;  // sum of w D'D over its sightings
    Symmetric2 transforms;   // of the transforms' covariances on the surface, by the trace of that
  };

  void addOthers(std::size_t frame, const FrameEquations& equations) {
    const Homography& h = shot_.frames[frame].h;
    const Matches matches = shot_.observations(frame);
    for (std::size_t i = 0; i < matches.size(); ++i) {
      Match match = matches[i];
      const auto t = static_cast<std::size_t>(match.track);
      if (shot_.lives.slots[t] != TrackLives::kNoSlot || !isSighting(match)) continue;
      match.base = places_[t].point;
      if (!isKnown(places_[t]) || !(denominator(h, match.base) > kHorizon)) continue;
      const double noise = shot_.noise[frame];
      const double w = match.weight * match.weight * jointLoss(residual(match, h), noise).weight /
                       (noise * noise);
      const Derivative d = derivative(h, match.base);
      const Symmetric2 one = transformed({d.Xx, d.Yx, d.Xy, d.Yy}, {w, 0.0, w});
      add(others_[t].information, one, 1.0);
      add(others_[t].transforms, transformed(inverse(d), equations.covarianceAt(match.base)),
          one.trace());
    }
  }

  void finish() {
    for (std::size_t t = 0; t < others_.size(); ++t) {
      const auto [xx, xy, yy] = others_[t].information;
      const Symmetric2& sum = others_[t].transforms;
      const double determinant = xx * yy - xy * xy, weight = xx + yy;
      if (!(determinant > 0.0)) continue;
      places_[t].covariance = {yy / determinant + sum.xx / weight,
                               -xy / determinant + sum.xy / weight,
                               xx / determinant + sum.yy / weight};
    }
  }

  static void add(Symmetric2& sum, const Symmetric2& one, double weight) {
    sum.xx += weight * one.xx;
    sum.xy += weight * one.xy;
    sum.yy += weight * one.yy;
  }

  const JointShot& shot_;
  const Points& points_;
  std::vector<Place>& places_;
  const std::function<void()>& report_;
  std::size_t stride_;
  FrontVector covariance_;       // of the places alive
  std::vector<double> product_;  // of a track's two rows with that
  std::vector<Other> others_;    // by track; empty if nobody is left out
};

}  // namespace

std::vector<std::vector<Symmetric2>> jointCovariances(const std::vector<JointFrame>& frames,
                                                      std::vector<Place>& places,
                                                      const ObservationsOf& observations,
                                                      const Points& points,
                                                      const std::function<void()>& report) {
  const ObservationsOf equallyNoisy = withEqualNoise(observations);
  const JointShot shot = jointShot(frames, places, equallyNoisy);
  Covariances covariances(shot, points, places, report);
  return std::move(covariances.images);
}

}  // namespace cornerpin
