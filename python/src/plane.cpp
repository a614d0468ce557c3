// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/geometry/MGeometry.h>
#include <cornerpin/geometry/planar_affine.h>
#include <cornerpin/geometry/roots.h>

#include <array>
#include <limits>

#include "arrays.h"
#include "bindings.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

using Point = LvVector2<double>;
using Numbers = py::array_t<double>;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

Point pointOf(const Numbers& points, py::ssize_t i) { return {points.at(i, 0), points.at(i, 1)}; }
Point pointOf(const Numbers& point) { return {point.at(0), point.at(1)}; }

std::array<Point, 4> quadOf(const Numbers& quad) {
  return {pointOf(quad, 0), pointOf(quad, 1), pointOf(quad, 2), pointOf(quad, 3)};
}

// The rows and columns of a 4 x 4 matrix that carry points of the plane z = 0.
constexpr int kPlane[3] = {0, 1, 3};

Numbers planeOf(const LvMatrix44Tmpl<double>& matrix) {
  Numbers plane({3, 3});
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) plane.mutable_at(i, j) = matrix(kPlane[i], kPlane[j]);
  }
  return plane;
}

LvMatrix44Tmpl<double> matrixOf(const Numbers& plane) {
  LvMatrix44Tmpl<double> matrix;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) matrix(i, j) = 0.0;
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) matrix(kPlane[i], kPlane[j]) = plane.at(i, j);
  }
  matrix(2, 2) = plane.at(2, 2);
  return matrix;
}

Numbers arrayOf(const mat3& matrix) {
  Numbers array({3, 3});
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) array.mutable_at(i, j) = matrix()[3 * j + i];
  }
  return array;
}

Numbers squareToQuad(const Numbers& quad) {
  const std::array<Point, 4> p = quadOf(quad);
  LvMatrix44Tmpl<double> matrix;
  MComputeSquareToQuadProjectionMatrix(p[0], p[1], p[2], p[3], matrix);
  return planeOf(matrix);
}

Numbers quadToSquare(const Numbers& quad) {
  const std::array<Point, 4> p = quadOf(quad);
  LvMatrix44Tmpl<double> matrix;
  MComputeQuadToSquareProjectionMatrix(p[0], p[1], p[2], p[3], matrix);
  return planeOf(matrix);
}

Numbers quadToQuad(const Numbers& from, const Numbers& to) {
  const std::array<Point, 4> s = quadOf(from);
  const std::array<Point, 4> t = quadOf(to);
  LvMatrix44Tmpl<double> matrix;
  MComputeQuadToQuadProjectionMatrix(s[0], s[1], s[2], s[3], t[0], t[1], t[2], t[3], matrix);
  return planeOf(matrix);
}

// Each of the points (n x 2) by itself.
template <class Map>
Numbers mapped(const Numbers& points, const Map& map) {
  Numbers images({points.shape(0), py::ssize_t{2}});
  for (py::ssize_t i = 0; i < points.shape(0); ++i) {
    const Point image = map(pointOf(points, i));
    images.mutable_at(i, 0) = image._x;
    images.mutable_at(i, 1) = image._y;
  }
  return images;
}

Numbers mapSquareToQuad(const Numbers& quad, const Numbers& points) {
  const std::array<Point, 4> p = quadOf(quad);
  return mapped(points, [&](const Point& uv) {
    Point xy;
    MProjectionMapSquareToQuad(p[0], p[1], p[2], p[3], uv, xy);
    return xy;
  });
}

Numbers mapQuadToSquare(const Numbers& quad, const Numbers& points) {
  const std::array<Point, 4> p = quadOf(quad);
  return mapped(points, [&](const Point& xy) {
    Point uv;
    MProjectionMapQuadToSquare(p[0], p[1], p[2], p[3], xy, uv);
    return uv;
  });
}

Numbers affineAt(const Numbers& matrix, const Numbers& point) {
  LvMatrix44Tmpl<double> affine;
  perspectiveToAffine(matrixOf(matrix), {point.at(0), point.at(1), 0.0}, &affine);
  return planeOf(affine);
}

Numbers closestPoints(const Numbers& centre, const Numbers& a, const Numbers& b,
                      const Numbers& points) {
  return mapped(points, [&](const Point& p) {
    return closestPointOnEllipse(pointOf(centre), pointOf(a), pointOf(b), p);
  });
}

// The roots of each row of coefficients (n x 5) and how many they are.
py::tuple solveQuartics(const Numbers& coefficients) {
  const py::ssize_t rows = coefficients.shape(0);
  Numbers roots({rows, py::ssize_t{4}});
  py::array_t<int> counts(rows);
  for (py::ssize_t i = 0; i < rows; ++i) {
    const auto c = [&](py::ssize_t j) { return coefficients.at(i, j); };
    int count = 0;
    double found[4] = {};
    solveQuartic(c(0), c(1), c(2), c(3), c(4), &count, found);
    counts.mutable_at(i) = count;
    for (int k = 0; k < 4; ++k) roots.mutable_at(i, k) = k < count ? found[k] : kNone;
  }
  return py::make_tuple(roots, counts);
}

}  // namespace

void bindPlane(py::module_& module) {
  module.def("square_to_quad", squareToQuad);
  module.def("quad_to_square", quadToSquare);
  module.def("quad_to_quad", quadToQuad);
  module.def("map_square_to_quad", mapSquareToQuad);
  module.def("map_quad_to_square", mapQuadToSquare);
  module.def("affine_at", affineAt);
  module.def("translation", [](double x, double y) { return arrayOf(translation2D(vec2(x, y))); });
  module.def("rotation", [](double x, double y, double degrees) {
    return arrayOf(rotation2D(vec2(x, y), degrees));
  });
  module.def("scaling", [](double x, double y) { return arrayOf(scaling2D(vec2(x, y))); });
  module.def("closest_point_on_ellipse", closestPoints);
  module.def("solve_quartic", solveQuartics);
}

}  // namespace cornerpin::python
