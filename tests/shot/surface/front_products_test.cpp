// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front_products.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cstdint>
#include <string>

#include "tests/shot/robust/random_errors.h"
#include "tests/support/processor.h"

using namespace cornerpin;

namespace {

using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

Matrix randomMatrix(std::size_t rows, std::size_t columns, std::uint32_t seed) {
  errors::Random random(seed);
  Matrix matrix(rows, columns);
  for (Eigen::Index i = 0; i < matrix.size(); ++i) matrix.data()[i] = random.place().x;
  return matrix;
}

// A triangle of that many rows, and what is left of it.
std::vector<double> triangleOf(const Matrix& matrix) {
  const auto width = static_cast<std::size_t>(matrix.rows());
  std::vector<double> triangle(triangleRow(width), 0.0);
  for (std::size_t i = 0; i < width; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      triangle[triangleRow(i) + j] =
          matrix(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(j));
    }
  }
  return triangle;
}

void expectTriangle(const std::vector<double>& triangle, const Matrix& expected) {
  for (Eigen::Index i = 0; i < expected.rows(); ++i) {
    for (Eigen::Index j = 0; j <= i; ++j) {
      const auto at = triangleRow(static_cast<std::size_t>(i)) + static_cast<std::size_t>(j);
      EXPECT_NEAR(triangle[at], expected(i, j), 1e-13) << i << " " << j;
    }
  }
}

// All products of a variant.
struct Results {
  explicit Results(const FrontProducts& products, std::size_t width) {
    const std::size_t stride = paddedWidth(width);
    const Matrix a = randomMatrix(8, stride, 1), b = randomMatrix(8, stride, 2);
    const Matrix m = randomMatrix(width, stride + 4, 4);
    two = eight = triangleOf(randomMatrix(width, width, 5));
    products.subtractTwo(a.data(), b.data(), stride, width, two.data());
    products.subtractEight(a.data(), b.data(), stride, width, eight.data());
    product.assign(3 * (stride + 4), -1.0);
    products.multiply(a.data(), stride, 3, m.data(), stride + 4, width, stride + 4, product.data());
  }

  std::vector<double> two, eight, product;
};

Matrix matrixOf(const std::vector<double>& numbers, std::size_t rows) {
  const auto count = static_cast<Eigen::Index>(rows);
  return Eigen::Map<const Matrix>(numbers.data(), count,
                                  static_cast<Eigen::Index>(numbers.size()) / count);
}

class FrontProductsOf : public testing::TestWithParam<std::size_t> {};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Widths, FrontProductsOf, testing::Values(2, 4, 6, 8, 14, 16, 22, 40));

TEST_P(FrontProductsOf, AreThoseOfMatrices) {
  const std::size_t width = GetParam(), stride = paddedWidth(width);
  const auto columns = static_cast<Eigen::Index>(width);
  const Results results(frontProducts().front(), width);
  const Matrix a = randomMatrix(8, stride, 1), b = randomMatrix(8, stride, 2);
  const Matrix start = randomMatrix(width, width, 5);
  const auto left = [&](Eigen::Index rows) -> Matrix {
    return start - a.topLeftCorner(rows, columns).transpose() * b.topLeftCorner(rows, columns);
  };
  expectTriangle(results.two, left(2));
  expectTriangle(results.eight, left(8));
  const Matrix m = randomMatrix(width, stride + 4, 4);
  EXPECT_LT((matrixOf(results.product, 3) - a.topLeftCorner(3, columns) * m).cwiseAbs().maxCoeff(),
            1e-13);
}

TEST_P(FrontProductsOf, HaveTheSameBitsInEveryVariant) {
  const Results expected(frontProducts().front(), GetParam());
  for (const FrontProducts& variant : frontProducts()) {
    const Results results(variant, GetParam());
    EXPECT_EQ(results.two, expected.two) << variant.name;
    EXPECT_EQ(results.eight, expected.eight) << variant.name;
    EXPECT_EQ(results.product, expected.product) << variant.name;
  }
}

// Rows of 4, 4, 4, 4, 8, 8 ...
TEST(TriangleRow, BeginsWhereTheOneBeforeEnds) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < 30; ++i) {
    EXPECT_EQ(triangleRow(i), begin) << i;
    begin += i / 4 * 4 + 4;
  }
}

TEST(FrontProducts, AreThoseThatTheProcessorRuns) {
  std::vector<std::string> expected = {"base"};
  if (processor::flags().count("avx2") > 0) expected.emplace_back("avx2");
  std::vector<std::string> names;
  for (const FrontProducts& variant : frontProducts()) names.emplace_back(variant.name);
  EXPECT_EQ(names, expected);
  EXPECT_EQ(fastestFrontProducts().name, frontProducts().back().name);
}

TEST(FrontProducts, AreDifferentFunctions) {
  const auto& variants = frontProducts();
  for (std::size_t i = 1; i < variants.size(); ++i) {
    EXPECT_NE(variants[i].subtractEight, variants[i - 1].subtractEight);
    EXPECT_NE(variants[i].multiply, variants[i - 1].multiply);
  }
}
