// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_MATRIX_OUTPUT_H
#define CORNERPIN_FOUNDATION_MATRIX_OUTPUT_H

/// \file
/// Text form of matrices.

#include <iosfwd>

#include "cornerpin/export.h"
#include "cornerpin/foundation/matrix.h"

/// Writes a matrix for people to read: one line per row, columns aligned to the right.
///
///     [[  1. 2.5 ]
///      [ 10. -3. ]]
///
/// Numbers have up to six decimals; zeros at the end go, the decimal point stays. The stream's
/// precision and flags do not enter; the decimal point is that of the C locale in force. Each row
/// ends with `std::endl`, so the stream is flushed once per row. A matrix without rows writes
/// nothing at all.
///
/// Cost: the texts of all elements are held in memory before the first one is written.
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const MGenMatrix<double>& m);

/// The same for integers, which are written as they are.
CORNERPIN_API std::ostream& operator<<(std::ostream& os, const MGenMatrix<int>& m);

#endif
