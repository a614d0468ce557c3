// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/geometry/planar_affine.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <locale>
#include <utility>

static_assert(sizeof(vec2) == 2 * sizeof(double) && sizeof(mat2) == 4 * sizeof(double),
              "elements are contiguous");
static_assert(sizeof(vec3) == 3 * sizeof(double) && sizeof(mat3) == 9 * sizeof(double),
              "elements are contiguous");

namespace {

template <class Matrix>
constexpr int kElements = sizeof(Matrix) / sizeof(double);

template <class Matrix, class Operation>
Matrix& update(Matrix& m, Operation operation) {
  for (int i = 0; i < kElements<Matrix>; ++i) m()[i] = operation(m()[i]);
  return m;
}

template <class Matrix, class Operation>
Matrix& update(Matrix& m, const Matrix& other, Operation operation) {
  for (int i = 0; i < kElements<Matrix>; ++i) m()[i] = operation(m()[i], other()[i]);
  return m;
}

template <class Matrix>
Matrix& scale(Matrix& m, double factor) {
  return update(m, [=](double e) { return e * factor; });
}

template <class Matrix>
Matrix& add(Matrix& m, const Matrix& other) {
  return update(m, other, [](double a, double b) { return a + b; });
}

template <class Matrix>
Matrix& subtract(Matrix& m, const Matrix& other) {
  return update(m, other, [](double a, double b) { return a - b; });
}

template <class Matrix>
Matrix negated(Matrix m) {
  return update(m, [](double e) { return -e; });
}

template <class Matrix>
bool allEqual(const Matrix& a, const Matrix& b) {
  for (int i = 0; i < kElements<Matrix>; ++i) {
    if (!(a()[i] == b()[i])) return false;
  }
  return true;
}

template <class Matrix>
bool anyUnequal(const Matrix& a, const Matrix& b) {
  for (int i = 0; i < kElements<Matrix>; ++i) {
    if (a()[i] != b()[i]) return true;
  }
  return false;
}

template <int n, class Matrix>
Matrix transposed(const Matrix& m) {
  Matrix result;
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) result()[n * r + c] = m()[n * c + r];
  }
  return result;
}

// Element (r, c) is a(r,0) b(0,c) + a(r,1) b(1,c) + ..., added from left to right.
template <int n, class Matrix>
Matrix product(const Matrix& a, const Matrix& b) {
  Matrix result;
  for (int c = 0; c < n; ++c) {
    for (int r = 0; r < n; ++r) {
      double sum = a()[r] * b()[n * c];
      for (int k = 1; k < n; ++k) sum += a()[n * k + r] * b()[n * c + k];
      result()[n * c + r] = sum;
    }
  }
  return result;
}

// Written as it is: what the caller has set up on the stream does not touch it.
void reportIndex(const char* type, int i) {
  char text[80];
  const int size =
      std::snprintf(text, sizeof text, "%s [] operator: illegal access; index = %d\n", type, i);
  std::cerr.write(text, size);
}

// Counts on from the first column by address, so that an index beyond the columns is formed
// without arithmetic on pointers out of their array.
template <class Column>
Column& columnAt(Column* first, int i) {
  const auto address = reinterpret_cast<std::uintptr_t>(first);
  const auto offset = static_cast<std::uintptr_t>(static_cast<std::intptr_t>(i)) * sizeof(Column);
  return *reinterpret_cast<Column*>(address + offset);  // NOLINT(performance-no-int-to-ptr)
}

bool isColumnOfMat3(int i) {
  if (static_cast<unsigned>(i) <= 2) return true;
  reportIndex("mat3", i);
  return false;
}

bool areColumnsOfMat3(int i, int j) {
  const bool first = isColumnOfMat3(i);
  return isColumnOfMat3(j) && first;
}

bool isSpace(char c) { return std::isspace(c, std::locale::classic()); }

// The first character that is not white space. The loop watches the character alone: where none
// is left to read, the blank that it starts from stays and the loop goes on for ever.
char firstCharacter(std::istream& is) {
  char c = ' ';
  while (isSpace(c)) is.get(c);
  return c;
}

void readNumbers(std::istream& is, double* numbers, int count) {
  for (int i = 0; i < count; ++i) is >> numbers[i];
}

// Up to the first character that is not white space. Nothing is read where the stream has ended
// already.
void consumeClosingBar(std::istream& is) {
  char c = ' ';
  while (is.good() && isSpace(c)) is.get(c);
}

// "| x y ... |" or "x y ...". The closing bar may be any character that is not white space.
bool readVector(std::istream& is, double* numbers, int count) {
  const char c = firstCharacter(is);
  const bool hasBar = c == '|';
  if (!hasBar) is.putback(c);
  readNumbers(is, numbers, count);
  if (hasBar) consumeClosingBar(is);
  return !is.fail();
}

template <class Matrix, class Column, int n>
std::istream& readColumns(std::istream& is, Matrix& m) {
  Column columns[n];
  for (Column& column : columns) is >> column;
  if (is.good()) {
    for (int i = 0; i < n; ++i) m[i] = columns[i];
  }
  return is;
}

}  // namespace

mat2::mat2(const vec2& column0, const vec2& column1) : column_{column0, column1} {}
mat2::mat2(double d) : column_{{d, d}, {d, d}} {}

vec2& mat2::operator[](int i) { return const_cast<vec2&>(std::as_const(*this)[i]); }

const vec2& mat2::operator[](int i) const {
  if (static_cast<unsigned>(i) > 2) reportIndex("mat2", i);  // 2 passes, with two columns only
  return columnAt(column_, i);
}

double mat2::determinant() const {
  const double* m = (*this)();
  return m[0] * m[3] - m[2] * m[1];
}

mat2 mat2::transpose() const { return transposed<2>(*this); }

mat2 mat2::inverse() const {
  const double* m = (*this)();
  const double det = m[3] * m[0] - m[2] * m[1];
  return mat2({m[3] / det, -m[1] / det}, {-m[2] / det, m[0] / det});
}

mat2& mat2::operator*=(double d) { return scale(*this, d); }
mat2& mat2::operator/=(double d) { return scale(*this, 1 / d); }
mat2& mat2::operator+=(const mat2& m) { return add(*this, m); }
mat2& mat2::operator-=(const mat2& m) { return subtract(*this, m); }
mat2& mat2::apply(double (*f)(double)) { return update(*this, f); }

mat3::mat3(const vec3& column0, const vec3& column1, const vec3& column2)
    : column_{column0, column1, column2} {}
mat3::mat3(double d) : column_{{d, d, d}, {d, d, d}, {d, d, d}} {}

vec3& mat3::operator[](int i) { return const_cast<vec3&>(std::as_const(*this)[i]); }

const vec3& mat3::operator[](int i) const {
  isColumnOfMat3(i);
  return columnAt(column_, i);
}

double mat3::determinant() const {
  const double* m = (*this)();
  return m[0] * (m[4] * m[8] - m[7] * m[5]) - m[3] * (m[1] * m[8] - m[7] * m[2]) +
         m[6] * (m[1] * m[5] - m[4] * m[2]);
}

mat3 mat3::transpose() const { return transposed<3>(*this); }
mat3 mat3::inverse() const { return mat3(); }

mat3& mat3::operator*=(double d) { return scale(*this, d); }
mat3& mat3::operator/=(double d) { return scale(*this, 1 / d); }
mat3& mat3::operator+=(const mat3& m) { return add(*this, m); }
mat3& mat3::operator-=(const mat3& m) { return subtract(*this, m); }
mat3& mat3::apply(double (*f)(double)) { return update(*this, f); }

mat3 mat3::swapCols(int i, int j) const {
  mat3 result = *this;
  if (areColumnsOfMat3(i, j)) std::swap(result.column_[i], result.column_[j]);
  return result;
}

mat3 mat3::swapRows(int i, int j) const {
  mat3 result = *this;
  if (!areColumnsOfMat3(i, j)) return result;
  for (vec3& column : result.column_) std::swap(column()[i], column()[j]);
  return result;
}

mat3 mat3::swapColsRows(int i, int j) const {
  if (!areColumnsOfMat3(i, j)) return *this;
  return swapCols(i, j).swapRows(i, j);
}

mat2 operator-(const mat2& m) { return negated(m); }
mat2 operator+(const mat2& a, const mat2& b) { return mat2(a) += b; }
mat2 operator-(const mat2& a, const mat2& b) { return mat2(a) -= b; }
mat2 operator*(const mat2& m, double d) { return mat2(m) *= d; }
mat2 operator*(double d, const mat2& m) { return mat2(m) *= d; }
mat2 operator/(const mat2& m, double d) { return mat2(m) /= d; }
mat2 operator*(const mat2& a, const mat2& b) { return product<2>(a, b); }
bool operator==(const mat2& a, const mat2& b) { return allEqual(a, b); }
bool operator!=(const mat2& a, const mat2& b) { return anyUnequal(a, b); }

mat3 operator-(const mat3& m) { return negated(m); }
mat3 operator+(const mat3& a, const mat3& b) { return mat3(a) += b; }
mat3 operator-(const mat3& a, const mat3& b) { return mat3(a) -= b; }
mat3 operator*(const mat3& m, double d) { return mat3(m) *= d; }
mat3 operator*(double d, const mat3& m) { return mat3(m) *= d; }
mat3 operator/(const mat3& m, double d) { return mat3(m) /= d; }
mat3 operator*(const mat3& a, const mat3& b) { return product<3>(a, b); }
bool operator==(const mat3& a, const mat3& b) { return allEqual(a, b); }
bool operator!=(const mat3& a, const mat3& b) { return anyUnequal(a, b); }

mat3 identity2D() { return mat3({1, 0, 0}, {0, 1, 0}, {0, 0, 1}); }

mat3 translation2D(const vec2& t) { return mat3({1, 0, 0}, {0, 1, 0}, {t.x, t.y, 1}); }

mat3 rotation2D(const vec2& centre, double degrees) {
  const double angle = 3.141592653589793 * degrees / 180;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return mat3({c, s, 0}, {-s, c, 0},
              {(1 - c) * centre.x + s * centre.y, (1 - c) * centre.y - s * centre.x, 1});
}

mat3 scaling2D(const vec2& s) { return mat3({s.x, 0, 0}, {0, s.y, 0}, {0, 0, 1}); }

bool eq(double a, double b) {
  if (!std::isfinite(a) || !std::isfinite(b)) return true;
  const float s = std::fabs(static_cast<float>(a)) + std::fabs(static_cast<float>(b));
  const double tolerance = s < 1 ? 0.001 : s * 0.001;
  return tolerance > std::fabs(static_cast<float>(a - b));
}

std::ostream& operator<<(std::ostream& os, const vec2& v) {
  return os << "| " << v.x << ' ' << v.y << " |";
}

std::ostream& operator<<(std::ostream& os, const vec3& v) {
  return os << "| " << v.x << ' ' << v.y << ' ' << v.z << " |";
}

std::ostream& operator<<(std::ostream& os, const mat2& m) {
  const double* e = m();
  return os << vec2(e[0], e[2]) << '\n' << vec2(e[1], e[3]);
}

std::ostream& operator<<(std::ostream& os, const mat3& m) {
  const double* e = m();
  return os << vec3(e[0], e[3], e[6]) << '\n'
            << vec3(e[1], e[4], e[7]) << '\n'
            << vec3(e[2], e[5], e[8]);
}

std::istream& operator>>(std::istream& is, vec2& v) {
  double n[2];
  if (readVector(is, n, 2)) v = vec2(n[0], n[1]);
  return is;
}

std::istream& operator>>(std::istream& is, vec3& v) {
  double n[3];
  if (readVector(is, n, 3)) v = vec3(n[0], n[1], n[2]);
  return is;
}

std::istream& operator>>(std::istream& is, mat2& m) { return readColumns<mat2, vec2, 2>(is, m); }
std::istream& operator>>(std::istream& is, mat3& m) { return readColumns<mat3, vec3, 3>(is, m); }
