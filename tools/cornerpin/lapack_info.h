// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_LAPACK_INFO_H
#define TOOLS_CORNERPIN_LAPACK_INFO_H

#include <string>

namespace cornerpin {

/// The version of the LAPACK in use and the file it comes from, such as
/// "3.11.0 (/usr/lib/liblapack.so.3.11.0)"; the version alone when the file is not known.
std::string lapackInfo();

}  // namespace cornerpin

#endif
