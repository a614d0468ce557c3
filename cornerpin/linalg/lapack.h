// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_LINALG_LAPACK_H
#define CORNERPIN_LINALG_LAPACK_H

#include <cstddef>

// Private: the LAPACK routines that the library calls, in the Fortran manner: every scalar by
// address, matrices column-major with a leading dimension, lengths of texts as trailing integers.
extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* pivots, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* pivots, int* info);
void sgetri_(const int* n, float* a, const int* lda, const int* pivots, float* work,
             const int* lwork, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* pivots, double* work,
             const int* lwork, int* info);
void sgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, float* a,
             const int* lda, float* s, float* u, const int* ldu, float* vt, const int* ldvt,
             float* work, const int* lwork, int* info, std::size_t jobuLength,
             std::size_t jobvtLength);
void dgesvd_(const char* jobu, const char* jobvt, const int* m, const int* n, double* a,
             const int* lda, double* s, double* u, const int* ldu, double* vt, const int* ldvt,
             double* work, const int* lwork, int* info, std::size_t jobuLength,
             std::size_t jobvtLength);
int ilaenv_(const int* ispec, const char* name, const char* options, const int* n1, const int* n2,
            const int* n3, const int* n4, std::size_t nameLength, std::size_t optionsLength);
}

#endif
