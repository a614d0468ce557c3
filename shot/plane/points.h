// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_PLANE_POINTS_H
#define SHOT_PLANE_POINTS_H

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

namespace cornerpin {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

inline bool operator==(Point a, Point b) { return a.x == b.x && a.y == b.y; }

inline double squaredDistance(Point a, Point b) {
  const double x = a.x - b.x;
  const double y = a.y - b.y;
  return x * x + y * y;
}

/// Four corners, in order around.
using Quad = std::array<Point, 4>;

/// Points as one array for each coordinate: loops over many of them read straight ahead.
class Points {
 public:
  class Iterator {
   public:
    Iterator(const Points& points, std::size_t i) : points_(points), i_(i) {}
    Point operator*() const { return points_[i_]; }
    Iterator& operator++() {
      ++i_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return i_ != other.i_; }

   private:
    const Points& points_;
    std::size_t i_;
  };

  Points() = default;
  Points(std::initializer_list<Point> points);
  /// So many points at the origin.
  explicit Points(std::size_t size);

  void add(Point p) {
    if (size_ == x_.size()) makeRoom();
    x_[size_] = p.x;
    y_[size_] = p.y;
    ++size_;
  }

  void set(std::size_t i, Point p) {
    x_[i] = p.x;
    y_[i] = p.y;
  }

  /// Makes room for so many points at once.
  void reserve(std::size_t size);

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  Point operator[](std::size_t i) const { return {x_[i], y_[i]}; }
  Iterator begin() const { return {*this, 0}; }
  Iterator end() const { return {*this, size_}; }

  /// The coordinates: a whole number of fours, filled up with zeros behind the last point.
  const double* x() const { return x_.data(); }
  const double* y() const { return y_.data(); }
  std::size_t paddedSize() const { return x_.size(); }

  bool operator==(const Points& other) const {
    return size_ == other.size_ && x_ == other.x_ && y_ == other.y_;
  }

 private:
  void makeRoom();

  std::size_t size_ = 0;
  std::vector<double> x_;
  std::vector<double> y_;
};

}  // namespace cornerpin

#endif
