// SPDX-License-Identifier: BSD-3-Clause
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "cornerpin/linalg/svd.h"
#include "tests/support/element_types.h"

// This program has LAPACK routines of its own, which record the call and answer what the test
// wants: that shows what the library passes, and what it does when the iteration fails.
namespace {

struct Call {
  int info = 0;  // the answer

  int count = 0;
  std::string jobs;
  int m = 0, n = 0, lda = 0, ldu = 0, ldvt = 0, lwork = 0;
  double a[6] = {};
  double u = -1, vt = -1, s = -1, work = -1;  // first cells at the time of the call
};
Call call;

template <class T>
void record(const char* jobu, const char* jobvt, const int* m, const int* n, const T* a,
            const int* lda, T* s, T* u, const int* ldu, T* vt, const int* ldvt, const T* work,
            const int* lwork, int* info) {
  ++call.count;
  call.jobs = {*jobu, *jobvt};
  call.m = *m;
  call.n = *n;
  call.lda = *lda;
  call.ldu = *ldu;
  call.ldvt = *ldvt;
  call.lwork = *lwork;
  for (int i = 0; i < *m * *n && i < 6; ++i) call.a[i] = static_cast<double>(a[i]);
  call.s = static_cast<double>(*s);
  call.u = static_cast<double>(*u);
  call.vt = static_cast<double>(*vt);
  call.work = static_cast<double>(*work);
  s[0] = 5;
  if (*m > 1) u[1] = 6;
  if (*n > 1) vt[1] = 7;
  *info = call.info;
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) void sgesvd_(const char* jobu, const char* jobvt,
                                                    const int* m, const int* n, float* a,
                                                    const int* lda, float* s, float* u,
                                                    const int* ldu, float* vt, const int* ldvt,
                                                    float* work, const int* lwork, int* info,
                                                    std::size_t, std::size_t) {
  record(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, lwork, info);
}
__attribute__((visibility("default"))) void dgesvd_(const char* jobu, const char* jobvt,
                                                    const int* m, const int* n, double* a,
                                                    const int* lda, double* s, double* u,
                                                    const int* ldu, double* vt, const int* ldvt,
                                                    double* work, const int* lwork, int* info,
                                                    std::size_t, std::size_t) {
  record(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, lwork, info);
}
}

namespace {

template <class T>
class SvdCall : public ::testing::Test {
 protected:
  SvdCall() {
    call = Call();
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 2; ++j) a(i, j) = static_cast<T>(10 * i + j);
    }
  }
  static std::string routine() { return sizeof(T) == sizeof(float) ? "sgesvd" : "dgesvd"; }

  MSvd<T> svd;
  MGenMatrix<T> a{3, 2, MGenMatrix<T>::RowMajor};
};
using Elements = ::testing::Types<float, double>;
TYPED_TEST_SUITE(SvdCall, Elements, ElementTypeName);

TYPED_TEST(SvdCall, PassesTheShapeAndTheJobs) {
  EXPECT_TRUE(_svdCall(this->svd, this->a));
  EXPECT_EQ(call.count, 1);
  EXPECT_EQ(call.jobs, "SA");
  EXPECT_EQ(call.m, 3);
  EXPECT_EQ(call.n, 2);
  EXPECT_EQ(call.lda, 3);
  EXPECT_EQ(call.ldu, 3);
  EXPECT_EQ(call.ldvt, 2);
}

TYPED_TEST(SvdCall, PassesTheMatrixColumnByColumn) {
  EXPECT_TRUE(_svdCall(this->svd, this->a));
  const double expected[] = {0, 10, 20, 1, 11, 21};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(call.a[i], expected[i]);
}

TYPED_TEST(SvdCall, PassesZeroedOutputsAndWork) {
  EXPECT_TRUE(_svdCall(this->svd, this->a));
  EXPECT_TRUE(_svdCall(this->svd, this->a));  // the outputs of the first call are reset
  EXPECT_EQ(call.s, 0);
  EXPECT_EQ(call.u, 0);
  EXPECT_EQ(call.vt, 0);
  EXPECT_EQ(call.work, 0);
}

TYPED_TEST(SvdCall, SizesTheWorkByTheLargerOfItsTwoTerms) {
  using T = TypeParam;
  const auto lwork = [this](int m, int n) {
    _svdCall(this->svd, MGenMatrix<T>(m, n, MGenMatrix<T>::ColumnMajor));
    return call.lwork;
  };
  EXPECT_EQ(lwork(3, 2), 30);
  EXPECT_EQ(lwork(2, 3), 30);
  EXPECT_EQ(lwork(20, 30), 1200);
  EXPECT_EQ(lwork(1, 1), 10);
}

TYPED_TEST(SvdCall, ReadsTheTransposedVectorsByRows) {
  EXPECT_TRUE(_svdCall(this->svd, this->a));
  EXPECT_EQ(this->svd.U(1, 0), 6);
  EXPECT_EQ(this->svd.V(0, 1), 7);
}

TYPED_TEST(SvdCall, WithoutConvergenceReturnsFalseAndKeepsWhatThereIs) {
  call.info = 1;
  EXPECT_FALSE(_svdCall(this->svd, this->a));
  EXPECT_FALSE(this->svd.ok);
  EXPECT_EQ(this->svd.S[0], 5);
}

TYPED_TEST(SvdCall, WithoutConvergenceDoesNotSolve) {
  using T = TypeParam;
  call.info = 2;
  MGenVector<T> b(3);
  b[0] = b[1] = b[2] = 1;
  EXPECT_FALSE(_svdCall(this->svd, this->a, b));
  EXPECT_FALSE(this->svd.ok);
  EXPECT_EQ(this->svd.x[0], 0);
  EXPECT_EQ(this->svd.x[1], 0);
  EXPECT_EQ(this->svd.b[2], 1);
}

TYPED_TEST(SvdCall, ThatIsRefusedThrowsThePosition) {
  call.info = -13;
  this->svd.ok = true;
  try {
    _svdCall(this->svd, this->a);
    FAIL() << "nothing thrown";
  } catch (const LvException& e) {
    EXPECT_EQ(std::string(e.message.c_str()), this->routine() + ": bad parameter 13");
    EXPECT_EQ(e.className(), LvString("LvException"));
  }
  EXPECT_FALSE(this->svd.ok);
}

TYPED_TEST(SvdCall, IsNotMadeWhenItWouldBeRefused) {
  using T = TypeParam;
  EXPECT_THROW(_svdCall(this->svd, MGenMatrix<T>(0, 2, MGenMatrix<T>::ColumnMajor)), LvException);
  EXPECT_THROW(_svdCall(this->svd, MGenMatrix<T>(2, 0, MGenMatrix<T>::ColumnMajor)), LvException);
  EXPECT_EQ(call.count, 0);
}

}  // namespace
