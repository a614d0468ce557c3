// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_SURFACE_DENSE_JOINT_FIT_H
#define TESTS_SHOT_SURFACE_DENSE_JOINT_FIT_H

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tests/shot/surface/relay_shot.h"

namespace relay {

// The joint fit by one dense system. A frame's parameters are the images of four corners, so that
// everything is a length in pixels; derivatives are differences.
class DenseJointFit {
 public:
  DenseJointFit(const Shot& shot, const std::vector<JointFrame>& frames,
                const std::vector<Place>& places, std::vector<double> noise)
      : shot_(shot), frames_(frames), places_(places), noise_(std::move(noise)) {
    int next = 0;
    for (const Place& place : places) {
      placeAt_.push_back(next);
      if (isKnown(place)) next += 2;
    }
    for (const JointFrame& frame : frames) {
      frameAt_.push_back(next);
      corners_.push_back(relay::corners(frame.h));
      images_.push_back(corners_.back());
      for (Point& p : images_.back()) p = map(frame.h, p);
      if (frame.part == JointFrame::Part::Free) next += 8;
    }
    size_ = next;
  }

  void minimise() {
    for (int i = 0; i < 60; ++i) {
      const Eigen::VectorXd step = normal().second;
      apply(step);
      if (step.cwiseAbs().maxCoeff() < 1e-10) break;
    }
    inverse_ = normal().first.inverse();
  }

  // The normal matrix where the fit stands, and the step from there.
  std::pair<Eigen::MatrixXd, Eigen::VectorXd> normal() const {
    std::vector<Eigen::VectorXd> rows;
    std::vector<double> rights;
    for (std::size_t f = 0; f < frames_.size(); ++f) addRows(f, rows, rights);
    Eigen::MatrixXd jacobian(static_cast<long>(rows.size()), size_);
    Eigen::VectorXd right(static_cast<long>(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
      jacobian.row(static_cast<long>(i)) = rows[i].transpose();
      right[static_cast<long>(i)] = rights[i];
    }
    return {jacobian.transpose() * jacobian, jacobian.colPivHouseholderQr().solve(right)};
  }

  Homography transform(std::size_t f) const { return through(corners_[f], images_[f]); }
  Point place(std::size_t t) const { return places_[t].point; }
  const Quad& corners(std::size_t f) const { return corners_[f]; }

  Symmetric2 placeCovariance(std::size_t t) const { return block(placeAt_[t]); }
  Symmetric2 cornerCovariance(std::size_t f, std::size_t corner) const {
    if (frames_[f].part != JointFrame::Part::Free) return {};
    return block(frameAt_[f] + 2 * static_cast<int>(corner));
  }

 private:
  static constexpr double kStep = 1e-3;

  static Homography through(const Quad& from, const Quad& to) {
    Eigen::Matrix<double, 8, 8> a;
    Eigen::Matrix<double, 8, 1> b;
    for (int i = 0; i < 4; ++i) {
      const auto [x, y] = from[static_cast<std::size_t>(i)];
      const auto [u, v] = to[static_cast<std::size_t>(i)];
      a.row(2 * i) << x, y, 1, 0, 0, 0, -u * x, -u * y;
      a.row(2 * i + 1) << 0, 0, 0, x, y, 1, -v * x, -v * y;
      b[2 * i] = u;
      b[2 * i + 1] = v;
    }
    const Eigen::Matrix<double, 8, 1> h = a.fullPivLu().solve(b);
    return {{{h[0], h[1], h[2]}, {h[3], h[4], h[5]}, {h[6], h[7], 1.0}}};
  }

  // The transform of a frame with one of its eight parameters moved.
  Homography moved(std::size_t f, std::size_t parameter, double by) const {
    Quad images = images_[f];
    (parameter % 2 == 0 ? images[parameter / 2].x : images[parameter / 2].y) += by;
    return through(corners_[f], images);
  }

  void addRows(std::size_t f, std::vector<Eigen::VectorXd>& rows,
               std::vector<double>& rights) const {
    using Part = JointFrame::Part;
    if (frames_[f].part == Part::None) return;
    const bool free = frames_[f].part == Part::Free;
    const Homography h = free ? transform(f) : kIdentity;
    std::vector<Homography> up, down;
    for (std::size_t k = 0; free && k < 8; ++k) {
      up.push_back(moved(f, k, kStep));
      down.push_back(moved(f, k, -kStep));
    }
    for (const Match& m : shot_.seen[f]) {
      const auto t = static_cast<std::size_t>(m.track);
      const Point p = places_[t].point;
      if (!isKnown(places_[t]) || !(m.weight > 0.0)) continue;
      const Point image = map(h, p);
      const double z = std::sqrt(squaredDistance(image, m.present)) / noise_[f];
      const double bend = std::max(0.0, 1.0 - z * z / 49.0);  // the root of the loss's weight
      const double w = m.weight * bend / noise_[f];
      Eigen::MatrixXd j = Eigen::MatrixXd::Zero(size_, 2);
      const auto slope = [&](int at, Point a, Point b) {
        j(at, 0) = w * (a.x - b.x) / (2 * kStep);
        j(at, 1) = w * (a.y - b.y) / (2 * kStep);
      };
      slope(placeAt_[t], map(h, {p.x + kStep, p.y}), map(h, {p.x - kStep, p.y}));
      slope(placeAt_[t] + 1, map(h, {p.x, p.y + kStep}), map(h, {p.x, p.y - kStep}));
      for (std::size_t k = 0; free && k < 8; ++k) {
        slope(frameAt_[f] + static_cast<int>(k), map(up[k], p), map(down[k], p));
      }
      rows.push_back(j.col(0));
      rights.push_back(w * (m.present.x - image.x));
      rows.push_back(j.col(1));
      rights.push_back(w * (m.present.y - image.y));
    }
  }

  void apply(const Eigen::VectorXd& step) {
    for (std::size_t t = 0; t < places_.size(); ++t) {
      if (!isKnown(places_[t])) continue;
      places_[t].point.x += step[placeAt_[t]];
      places_[t].point.y += step[placeAt_[t] + 1];
    }
    for (std::size_t f = 0; f < frames_.size(); ++f) {
      if (frames_[f].part != JointFrame::Part::Free) continue;
      for (int i = 0; i < 4; ++i) {
        images_[f][static_cast<std::size_t>(i)].x += step[frameAt_[f] + 2 * i];
        images_[f][static_cast<std::size_t>(i)].y += step[frameAt_[f] + 2 * i + 1];
      }
    }
  }

  Symmetric2 block(int at) const {
    return {inverse_(at, at), inverse_(at, at + 1), inverse_(at + 1, at + 1)};
  }

  const Shot& shot_;
  std::vector<JointFrame> frames_;
  std::vector<Place> places_;
  std::vector<double> noise_;
  std::vector<int> placeAt_, frameAt_;
  std::vector<Quad> corners_, images_;
  int size_ = 0;
  Eigen::MatrixXd inverse_;
};

}  // namespace relay

#endif
