// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "cornerpin/linalg/inverse.h"
#include "tests/support/element_types.h"
#include "tests/support/reports.h"

// This program has LAPACK routines of its own, which record the call and answer what the test
// wants: that shows what the library passes, and what it does when a routine fails on its own.
namespace {

constexpr int kBlockSize = 7;

struct Call {
  std::string routine;
  int m = 0, n = 0, lda = 0, lwork = 0;
  std::vector<double> elements;
  std::vector<int> pivots;
};
std::vector<Call> calls;
int factoriseInfo = 0, invertInfo = 0;  // the answers

// The library asks for each block size once, so these are kept.
struct Query {
  int ispec;
  std::string name;
  std::size_t nameLength;
};
std::vector<Query> queries;

template <class T>
std::vector<double> elementsOf(const T* a, int count) {
  std::vector<double> elements;
  for (int i = 0; i < count; ++i) elements.push_back(static_cast<double>(a[i]));
  return elements;
}

template <class T>
void factorise(const char* routine, const int* m, const int* n, const T* a, const int* lda,
               int* pivots, int* info) {
  calls.push_back(
      {routine, *m, *n, *lda, 0, elementsOf(a, *lda * *n), std::vector<int>(pivots, pivots + *n)});
  for (int i = 0; i < *n; ++i) pivots[i] = i + 1;
  *info = factoriseInfo;
}

template <class T>
void invert(const char* routine, const int* n, T* a, const int* lda, const int* pivots, T* work,
            const int* lwork, int* info) {
  calls.push_back({routine, 0, *n, *lda, *lwork, elementsOf(a, *lda * *n),
                   std::vector<int>(pivots, pivots + *n)});
  for (int i = 0; i < *lwork; ++i) work[i] = 1;  // all of it is there
  a[0] = 99;
  *info = invertInfo;
}

}  // namespace

#define CORNERPIN_TEST_EXPORT __attribute__((visibility("default")))
extern "C" {
CORNERPIN_TEST_EXPORT void sgetrf_(const int* m, const int* n, float* a, const int* lda,
                                   int* pivots, int* info) {
  factorise("sgetrf", m, n, a, lda, pivots, info);
}
CORNERPIN_TEST_EXPORT void dgetrf_(const int* m, const int* n, double* a, const int* lda,
                                   int* pivots, int* info) {
  factorise("dgetrf", m, n, a, lda, pivots, info);
}
CORNERPIN_TEST_EXPORT void sgetri_(const int* n, float* a, const int* lda, const int* pivots,
                                   float* work, const int* lwork, int* info) {
  invert("sgetri", n, a, lda, pivots, work, lwork, info);
}
CORNERPIN_TEST_EXPORT void dgetri_(const int* n, double* a, const int* lda, const int* pivots,
                                   double* work, const int* lwork, int* info) {
  invert("dgetri", n, a, lda, pivots, work, lwork, info);
}
CORNERPIN_TEST_EXPORT int ilaenv_(const int* ispec, const char* name, const char*, const int*,
                                  const int*, const int*, const int*, std::size_t nameLength,
                                  std::size_t) {
  queries.push_back({*ispec, std::string(name, 6), nameLength});
  return kBlockSize;
}
}

namespace {

template <class T>
class InverseCall : public ::testing::Test {
 protected:
  InverseCall() {
    calls.clear();
    factoriseInfo = invertInfo = 0;
  }
  ~InverseCall() override { factoriseInfo = invertInfo = 0; }
  static std::string named(const char* rest) {
    return (sizeof(T) == 4 ? "s" : "d") + std::string(rest);
  }
  // Element (i, j) is 10 * (i + 1) + (j + 1).
  static MGenMatrix<T> numbered(int m, int n) {
    MGenMatrix<T> a(m, n, MGenMatrix<T>::RowMajor);
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < n; ++j) a(i, j) = static_cast<T>(10 * (i + 1) + (j + 1));
    }
    return a;
  }
};
using Elements = ::testing::Types<float, double>;
TYPED_TEST_SUITE(InverseCall, Elements, ElementTypeName);

TYPED_TEST(InverseCall, FactorisesACopyByColumnsWithPivotsOfZero) {
  inverse(this->numbered(3, 3));
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].routine, this->named("getrf"));
  EXPECT_EQ(calls[0].m, 3);
  EXPECT_EQ(calls[0].n, 3);
  EXPECT_EQ(calls[0].lda, 3);
  EXPECT_EQ(calls[0].elements, (std::vector<double>{11, 21, 31, 12, 22, 32, 13, 23, 33}));
  EXPECT_EQ(calls[0].pivots, (std::vector<int>{0, 0, 0}));
}

TYPED_TEST(InverseCall, InvertsTheFactorsInPlaceWithTheirPivots) {
  const auto x = inverse(this->numbered(3, 3));
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[1].routine, this->named("getri"));
  EXPECT_EQ(calls[1].n, 3);
  EXPECT_EQ(calls[1].lda, 3);
  EXPECT_EQ(calls[1].elements, calls[0].elements);
  EXPECT_EQ(calls[1].pivots, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(x(0, 0), 99);
  EXPECT_EQ(x(1, 2), 23);
}

TYPED_TEST(InverseCall, PassesRowsAsTheLeadingDimensionOfATallMatrix) {
  inverse(this->numbered(5, 2));
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].m, 5);
  EXPECT_EQ(calls[0].n, 2);
  EXPECT_EQ(calls[0].lda, 5);
  EXPECT_EQ(calls[1].n, 2);
  EXPECT_EQ(calls[1].lda, 5);
}

TYPED_TEST(InverseCall, WorksInTheBlockSizeOfTheInversionTimesTheColumns) {
  for (const int n : {1, 3, 200}) {
    calls.clear();
    inverse(this->numbered(n, n));
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[1].lwork, kBlockSize * n);
  }
}

TYPED_TEST(InverseCall, AsksForTheBlockSizeOfTheInversion) {
  inverse(this->numbered(2, 2));
  int asked = 0;
  for (const Query& query : queries) {
    EXPECT_EQ(query.ispec, 1);
    EXPECT_EQ(query.nameLength, 6u);
    EXPECT_EQ(query.name.substr(1), "getri");
    if (query.name == this->named("getri")) ++asked;
  }
  EXPECT_EQ(asked, 1);
}

TYPED_TEST(InverseCall, ReportsWhatTheRoutinesAnswer) {
  const auto message = [this](int ofFactorise, int ofInvert) {
    factoriseInfo = ofFactorise;
    invertInfo = ofInvert;
    return thrownMessage([this] { inverse(this->numbered(2, 2)); });
  };
  EXPECT_EQ(message(-4, 0), this->named("getrf"));
  EXPECT_EQ(message(2, 0), "inverse: singular matrix");
  EXPECT_EQ(message(0, -1), this->named("getri"));
  EXPECT_EQ(message(0, 1), "inverse: singular matrix");
}

TYPED_TEST(InverseCall, IsNotMadeWhereItWouldBeRefused) {
  RecordedReports reports;
  inverse(MGenMatrix<TypeParam>(0, 2, MGenMatrix<TypeParam>::ColumnMajor));
  EXPECT_TRUE(calls.empty());
  inverse(this->numbered(2, 3));
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].routine, this->named("getrf"));
  EXPECT_EQ(reports.all(),
            (Reports{this->named("getrf"), this->named("getri"), this->named("getri")}));
}

class DeterminantCall : public InverseCall<double> {};

TEST_F(DeterminantCall, FactorisesAndNothingElse) {
  const std::size_t asked = queries.size();
  EXPECT_EQ(determinant(numbered(3, 2)), 11 * 22);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].routine, "dgetrf");
  EXPECT_EQ(calls[0].m, 3);
  EXPECT_EQ(calls[0].n, 2);
  EXPECT_EQ(calls[0].lda, 3);
  EXPECT_EQ(calls[0].elements, (std::vector<double>{11, 21, 31, 12, 22, 32}));
  EXPECT_EQ(queries.size(), asked);
}

TEST_F(DeterminantCall, ReportsWhatTheRoutineAnswers) {
  factoriseInfo = -4;
  EXPECT_EQ(thrownMessage([] { determinant(numbered(2, 2)); }), "dgetrf");
  factoriseInfo = 1;
  EXPECT_EQ(thrownMessage([] { determinant(numbered(2, 2)); }), "inverse: singular matrix");
}

}  // namespace
