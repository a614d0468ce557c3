// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_DIGEST_H
#define SHOW_DIGEST_H

#include <istream>
#include <string>

namespace cornerpin {

/// The SHA-256 of all bytes that are left, in lower-case hexadecimal. Throws `std::runtime_error`
/// where the system's cryptography has none.
std::string sha256Of(std::istream& bytes);

}  // namespace cornerpin

#endif
