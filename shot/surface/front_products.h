// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SURFACE_FRONT_PRODUCTS_H
#define SHOT_SURFACE_FRONT_PRODUCTS_H

#include <cstddef>
#include <vector>

namespace cornerpin {

/// Rows of the front and of what meets it are filled up to a whole number of fours.
constexpr std::size_t paddedWidth(std::size_t width) { return (width + 3) / 4 * 4; }

/// Where row i of a lower triangle begins, each row up to the diagonal and filled up: a triangle of
/// n rows ends where row n begins.
constexpr std::size_t triangleRow(std::size_t i) {
  const std::size_t fours = i / 4;
  return 4 * (fours + 1) * (2 * fours + i % 4);
}

/// The products that the joint fit's time goes into. Matrices are by rows, of `stride` numbers
/// each, a multiple of 4; what fills the rows up is computed with.
struct FrontProducts {
  const char* name;
  /// triangle -= A'B, of two or eight rows each; up to the diagonal alone.
  void (*subtractTwo)(const double* a, const double* b, std::size_t stride, std::size_t width,
                      double* triangle);
  void (*subtractEight)(const double* a, const double* b, std::size_t stride, std::size_t width,
                        double* triangle);
  /// product = A M with `rows` rows in A, `width` in M, and `columns` numbers in those of the
  /// product, a multiple of 4.
  void (*multiply)(const double* a, std::size_t stride, std::size_t rows, const double* m,
                   std::size_t mStride, std::size_t width, std::size_t columns, double* product);
};

/// Those that this build has and this processor runs, the definition first and the fastest, which
/// is the one in use, last. All give the same bits. A variant calls no inline function of another
/// file: the linker may take its copy, in its own instructions, for all callers.
const std::vector<FrontProducts>& frontProducts();
const FrontProducts& fastestFrontProducts();

}  // namespace cornerpin

#endif
