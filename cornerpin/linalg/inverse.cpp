// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/linalg/inverse.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

#include "cornerpin/linalg/invert_in_place.h"
#include "cornerpin/linalg/lapack.h"

namespace {

template <class T>
struct Lapack;

template <>
struct Lapack<float> {
  static constexpr const char* factoriseName = "sgetrf";
  static constexpr const char* invertName = "sgetri";
  static constexpr auto factorise = sgetrf_;
  static constexpr auto invert = sgetri_;
};

template <>
struct Lapack<double> {
  static constexpr const char* factoriseName = "dgetrf";
  static constexpr const char* invertName = "dgetri";
  static constexpr auto factorise = dgetrf_;
  static constexpr auto invert = dgetri_;
};

// What a routine answers when it refuses an argument. The library sees a refusal coming and does
// not make the call, because LAPACK's own error routine prints and may end the process.
constexpr int kRefused = -1;

// True when there was nothing to report.
bool report(int info, const char* routine) {
  if (info < 0) MMatrixError::err("%s", routine);
  if (info > 0) MMatrixError::err("inverse: singular matrix");
  return info == 0;
}

// Factorises the m x n matrix in `lu` (leading dimension m) in place. False when it was reported.
template <class T>
bool factorise(int m, int n, MGenMatrix<T>& lu, MGenVector<int>& pivots) {
  int info = kRefused;
  if (m >= 1) Lapack<T>::factorise(&m, &n, lu.data, &m, pivots.data, &info);
  return report(info, Lapack<T>::factoriseName);
}

// The block size depends on the routine alone: asked for once.
template <class T>
int workLength(int n) {
  static const int blockSize = [] {
    const int blockSizeQuery = 1;
    // No option and no size bears on the answer, yet some providers read them.
    const int none = -1;
    return ilaenv_(&blockSizeQuery, Lapack<T>::invertName, " ", &none, &none, &none, &none, 6, 1);
  }();
  const std::int64_t length = std::int64_t{blockSize} * n;
  return static_cast<int>(std::min<std::int64_t>(length, std::numeric_limits<int>::max()));
}

// Room for that many elements. Little of it needs no allocation, which would cost a few
// hundredths of the inversion of a 16 x 16 matrix.
template <class T>
class Work {
 public:
  explicit Work(int length) {
    if (length > kFew) many_.reset(new T[static_cast<std::size_t>(length)]);
  }
  T* data() { return many_ != nullptr ? many_.get() : few_; }

 private:
  static constexpr int kFew = 1024;
  T few_[kFew];
  std::unique_ptr<T[]> many_;
};

// Turns the factors in `lu` (leading dimension m) into the inverse of their n x n top block. False
// when it was reported.
template <class T>
bool invertFactors(int m, int n, MGenMatrix<T>& lu, const MGenVector<int>& pivots, T* work,
                   int lwork) {
  int info = kRefused;
  if (m >= std::max(1, n) && lwork >= std::max(1, n)) {
    Lapack<T>::invert(&n, lu.data, &m, pivots.data, work, &lwork, &info);
  }
  return report(info, Lapack<T>::invertName);
}

// Gives the pivot rows beyond n, of which there may be any number, the numbers n + 1 ... 2n.
void renumberRowsBeyond(int n, MGenVector<int>& pivots) {
  int* const p = pivots.data;
  for (int i = n - 1; i >= 0; --i) {
    if (p[i] > n) p[i] = n + 1 + static_cast<int>(std::find(p, p + i, p[i]) - p);
  }
}

template <class T>
MGenMatrix<T> inverseOf(const MGenMatrix<T>& a) {
  const int m = a.rows;
  const int n = a.cols;
  // The inversion interchanges columns by pivot row, which in a tall matrix may lie beyond n. The
  // factors get spare columns of zeros for these: one for every row beyond, but no more than the
  // n pivots can name.
  const int spare = std::clamp(m - n, 0, n);
  MGenMatrix<T> factors(m, n + spare, MGenMatrix<T>::ColumnMajor);
  MGenMatrix<T> result = spare > 0 ? factors.view(0, 0, m, n) : factors;
  result.set(a);
  MGenVector<int> pivots(n);
  factorise(m, n, factors, pivots);
  if (m - n > spare) renumberRowsBeyond(n, pivots);
  const int lwork = workLength<T>(n);
  Work<T> work(lwork);
  invertFactors(m, n, factors, pivots, work.data(), lwork);
  return spare > 0 ? result.copy(MGenMatrix<T>::ColumnMajor) : result;
}

}  // namespace

MGenMatrix<float> inverse(const MGenMatrix<float>& a) { return inverseOf(a); }

MGenMatrix<double> inverse(const MGenMatrix<double>& a) { return inverseOf(a); }

bool cornerpin::internal::invertInPlace(MGenMatrix<float>& a, MGenVector<int>& pivots,
                                        MGenVector<float>& work) {
  const int n = a.rows;
  if (pivots.length < n) pivots = MGenVector<int>(n);
  const bool isFactorised = factorise(n, n, a, pivots);
  const int lwork = workLength<float>(n);
  if (work.length < lwork) work = MGenVector<float>(lwork);
  return invertFactors(n, n, a, pivots, work.data, lwork) && isFactorised;
}

double determinant(const MGenMatrix<double>& a) {
  const int n = a.cols;
  if (n == 0) return 1.0;
  MGenMatrix<double> factors = a.copy(MGenMatrix<double>::ColumnMajor);
  MGenVector<int> pivots(n);
  factorise(a.rows, n, factors, pivots);
  double product = 1.0;
  for (int i = 0; i < n; ++i) {
    // LAPACK counts rows from 1, so no entry equals its position: the sign flips at every step.
    if (pivots[i] != i) product = -product;
    if (i < a.rows) {
      product *= factors(i, i);
    } else {  // reported as the access would, which has no element to go on with
      MMatrixError::err("MMatrix row %d out of range 0..%d", i, a.rows - 1);
    }
  }
  return product;
}
