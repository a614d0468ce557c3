// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/sha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace cornerpin {

namespace {

void require(bool worked) {
  if (!worked) throw std::runtime_error("SHA-256 is not to be had from libcrypto: reinstall it");
}

}  // namespace

void Sha256::Free::operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }

Sha256::Sha256() : context_(::EVP_MD_CTX_new()) {
  require(context_ && ::EVP_DigestInit_ex(context_.get(), ::EVP_sha256(), nullptr) == 1);
}

void Sha256::add(const void* bytes, std::size_t count) {
  require(::EVP_DigestUpdate(context_.get(), bytes, count) == 1);
}

std::string Sha256::hex() const {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  const std::unique_ptr<EVP_MD_CTX, Free> ending(::EVP_MD_CTX_new());
  require(ending && ::EVP_MD_CTX_copy_ex(ending.get(), context_.get()) == 1 &&
          ::EVP_DigestFinal_ex(ending.get(), digest.data(), &length) == 1);
  std::string text;
  for (unsigned i = 0; i < length; ++i) text += fmt::format("{:02x}", digest[i]);
  return text;
}

}  // namespace cornerpin
