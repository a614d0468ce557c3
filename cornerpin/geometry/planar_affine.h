// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_GEOMETRY_PLANAR_AFFINE_H
#define CORNERPIN_GEOMETRY_PLANAR_AFFINE_H

#include <iosfwd>

#include "cornerpin/export.h"

/// \file
/// Small value types for affine work in the plane, in double precision: points `vec2`,
/// homogeneous points `vec3`, linear maps `mat2` and homogeneous maps `mat3`. Matrices are stored
/// by columns and act on column vectors, so the translation of a `mat3` is its column 2. Nothing
/// allocates and nothing throws; a division by zero, a singular matrix and non-finite input give
/// infinities or NaNs.
///
/// Text. Numbers are written with the stream's current formatting.
///
///     vec2   | x y |             mat2   | m0 m2 |       no line end after the last row
///     vec3   | x y z |                  | m1 m3 |
///
/// A vector is read with or without its bars; a failed read leaves the target as it was.
/// What surprises:
/// - Matrices are written by rows and read by columns: one that is written and read back is
///   transposed.
/// - Reading from a stream that has nothing but white space left never returns, nor does reading
///   from a stream that has failed already: the search for the first character does not look at
///   the state of the stream. A matrix with a malformed column before its last one ends up there
///   too. A stream that throws on failure (`exceptions(std::ios::failbit)`) ends it. Check
///   `(in >> std::ws).eof()` beforehand.
/// - Behind numbers with an opening bar, the next character other than white space is consumed,
///   whatever it is. Where the last number ends the stream, as in "| 1 2", there is none and the
///   vector is read all the same; where white space ends it, the read fails.
/// - A matrix stays unassigned when its last number is also the end of the stream.

/// A point or direction.
struct CORNERPIN_API vec2 {
  /// Zeros.
  vec2() = default;
  /// By components.
  vec2(double x, double y) : x(x), y(y) {}

  /// \{
  /// The components as an array, x first.
  double* operator()() { return &x; }
  const double* operator()() const { return &x; }
  /// \}

  double x = 0;  ///< in any unit
  double y = 0;  ///< in the unit of x
};

/// A homogeneous point.
struct CORNERPIN_API vec3 {
  /// Zeros.
  vec3() = default;
  /// By components.
  vec3(double x, double y, double z) : x(x), y(y), z(z) {}

  /// \{
  /// The components as an array, x first.
  double* operator()() { return &x; }
  const double* operator()() const { return &x; }
  /// \}

  double x = 0;  ///< coordinate times weight
  double y = 0;  ///< coordinate times weight
  double z = 0;  ///< weight: (x / z, y / z) is the point
};

/// A linear map. m0 .. m3 below are the stored elements; element (row r, column c) is m(2c + r).
class CORNERPIN_API mat2 {
 public:
  /// Zeros.
  mat2() = default;
  /// Columns: the images of the unit vectors.
  mat2(const vec2& column0, const vec2& column1);
  /// Every one of the four elements is `d`: not a diagonal matrix.
  explicit mat2(double d);

  /// \{
  /// The elements as an array, by columns.
  double* operator()() { return column_[0](); }
  const double* operator()() const { return column_[0](); }
  /// \}

  /// \{
  /// Column i. An index below 0 or above 2 writes "mat2 [] operator: illegal access; index = ",
  /// the index and a line end to standard error, and the reference that comes back lies outside
  /// the matrix: it must not be used. Index 2 gives such a reference without any message. The text
  /// does not follow the formatting of `std::cerr`.
  vec2& operator[](int i);
  const vec2& operator[](int i) const;
  /// \}

  /// m0 m3 - m2 m1.
  double determinant() const;
  /// Rows and columns exchanged.
  mat2 transpose() const;
  /// The adjugate, each element divided by the determinant m3 m0 - m2 m1, which is not checked.
  mat2 inverse() const;

  /// Element by element.
  mat2& operator*=(double d);
  /// Multiplies by the reciprocal 1 / d: two roundings, so the last bit may differ from a division.
  mat2& operator/=(double d);
  /// \{
  /// Element by element.
  mat2& operator+=(const mat2& m);
  mat2& operator-=(const mat2& m);
  /// \}
  /// Replaces every element e by f(e), in storage order.
  mat2& apply(double (*f)(double));

 private:
  vec2 column_[2];
};

/// A homogeneous map. m0 .. m8 are the stored elements; element (row r, column c) is m(3c + r).
class CORNERPIN_API mat3 {
 public:
  /// Zeros.
  mat3() = default;
  /// Columns: the images of the unit vectors, the last one that of the origin.
  mat3(const vec3& column0, const vec3& column1, const vec3& column2);
  /// Every one of the nine elements is `d`: not a diagonal matrix.
  explicit mat3(double d);

  /// \{
  /// The elements as an array, by columns.
  double* operator()() { return column_[0](); }
  const double* operator()() const { return column_[0](); }
  /// \}

  /// \{
  /// Column i. An index outside 0 .. 2 writes "mat3 [] operator: illegal access; index = ", the
  /// index and a line end to standard error, and the reference that comes back lies outside the
  /// matrix: it must not be used.
  vec3& operator[](int i);
  const vec3& operator[](int i) const;
  /// \}

  /// By cofactors of the first row.
  double determinant() const;
  /// Rows and columns exchanged.
  mat3 transpose() const;
  /// All zeros, for every matrix: there is no 3 x 3 inverse here.
  mat3 inverse() const;

  /// Element by element.
  mat3& operator*=(double d);
  /// Multiplies by the reciprocal 1 / d: two roundings, so the last bit may differ from a division.
  mat3& operator/=(double d);
  /// \{
  /// Element by element.
  mat3& operator+=(const mat3& m);
  mat3& operator-=(const mat3& m);
  /// \}
  /// Replaces every element e by f(e), in storage order.
  mat3& apply(double (*f)(double));

  /// A copy with columns i and j exchanged. An index outside 0 .. 2 is reported as `operator[]`
  /// reports it and the copy is unchanged; so in the two below.
  mat3 swapCols(int i, int j) const;
  /// A copy with rows i and j exchanged.
  mat3 swapRows(int i, int j) const;
  /// A copy with rows i and j and columns i and j exchanged.
  mat3 swapColsRows(int i, int j) const;

 private:
  vec3 column_[3];
};

/// \{
/// Element by element.
CORNERPIN_API mat2 operator-(const mat2& m);
CORNERPIN_API mat2 operator+(const mat2& a, const mat2& b);
CORNERPIN_API mat2 operator-(const mat2& a, const mat2& b);
CORNERPIN_API mat2 operator*(const mat2& m, double d);
CORNERPIN_API mat2 operator*(double d, const mat2& m);
/// \}
/// Multiplies by the reciprocal 1 / d.
CORNERPIN_API mat2 operator/(const mat2& m, double d);
/// The matrix product: b acts first.
CORNERPIN_API mat2 operator*(const mat2& a, const mat2& b);
/// False with a NaN anywhere.
CORNERPIN_API bool operator==(const mat2& a, const mat2& b);
/// True with a NaN anywhere.
CORNERPIN_API bool operator!=(const mat2& a, const mat2& b);

/// \{
/// Element by element.
CORNERPIN_API mat3 operator-(const mat3& m);
CORNERPIN_API mat3 operator+(const mat3& a, const mat3& b);
CORNERPIN_API mat3 operator-(const mat3& a, const mat3& b);
CORNERPIN_API mat3 operator*(const mat3& m, double d);
CORNERPIN_API mat3 operator*(double d, const mat3& m);
/// \}
/// Multiplies by the reciprocal 1 / d.
CORNERPIN_API mat3 operator/(const mat3& m, double d);
/// The matrix product: b acts first.
CORNERPIN_API mat3 operator*(const mat3& a, const mat3& b);
/// False with a NaN anywhere.
CORNERPIN_API bool operator==(const mat3& a, const mat3& b);
/// True with a NaN anywhere.
CORNERPIN_API bool operator!=(const mat3& a, const mat3& b);

/// Ones on the diagonal: every point stays.
CORNERPIN_API mat3 identity2D();
/// Moves every point by t, in its unit.
CORNERPIN_API mat3 translation2D(const vec2& t);
/// About `centre`, from the x axis towards the y axis: counter-clockwise where y points up,
/// clockwise where it points down.
CORNERPIN_API mat3 rotation2D(const vec2& centre, double degrees);
/// About the origin, by s.x and s.y.
CORNERPIN_API mat3 scaling2D(const vec2& s);

/// Compares to one part in a thousand: true when |a - b| < 0.001 max(1, |a| + |b|), with the sum
/// and the difference rounded to float. A NaN or an infinity equals everything.
CORNERPIN_API bool eq(double a, double b);

/// \{
/// As described at the top of this page.
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const vec2& v);
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const vec3& v);
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const mat2& m);
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const mat3& m);
/// \}

/// \{
/// As described at the top of this page, with what surprises.
CORNERPIN_API std::istream& operator>>(std::istream& is, vec2& v);
CORNERPIN_API std::istream& operator>>(std::istream& is, vec3& v);
CORNERPIN_API std::istream& operator>>(std::istream& is, mat2& m);
CORNERPIN_API std::istream& operator>>(std::istream& is, mat3& m);
/// \}

#endif
