// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_SHA256_H
#define SHOT_FILES_SHA256_H

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace cornerpin {

/// The SHA-256 digest of bytes that come piece by piece.
class Sha256 {
 public:
  /// Throws `std::runtime_error` where the system's cryptography has no SHA-256.
  Sha256();

  void add(const void* bytes, std::size_t count);

  /// Of all that was added, in lower-case hexadecimal.
  std::string hex() const;

  /// The same in base64.
  std::string base64() const;

 private:
  struct Free {
    void operator()(evp_md_ctx_st* context) const;
  };
  std::string bytes() const;

  std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace cornerpin

#endif
