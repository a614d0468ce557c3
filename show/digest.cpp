// SPDX-License-Identifier: BSD-3-Clause
#include "show/digest.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <memory>
#include <new>
#include <stdexcept>

namespace cornerpin {

std::string sha256Of(std::istream& bytes) {
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(),
                                                                   EVP_MD_CTX_free);
  if (!context) throw std::bad_alloc();
  bool isSound = EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
  std::array<char, 65536> block;
  while (isSound && bytes) {
    bytes.read(block.data(), block.size());
    const auto count = static_cast<std::size_t>(bytes.gcount());
    isSound = EVP_DigestUpdate(context.get(), block.data(), count) == 1;
  }
  std::array<unsigned char, 32> digest{};
  if (!isSound || EVP_DigestFinal_ex(context.get(), digest.data(), nullptr) != 1) {
    throw std::runtime_error("the system's cryptography has no SHA-256");
  }
  return fmt::format("{:02x}", fmt::join(digest, ""));
}

}  // namespace cornerpin
