// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/sha256.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <stdexcept>

#include "shot/files/base64.h"

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

std::string Sha256::bytes() const {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  const std::unique_ptr<EVP_MD_CTX, Free> ending(::EVP_MD_CTX_new());
  require(ending && ::EVP_MD_CTX_copy_ex(ending.get(), context_.get()) == 1 &&
          ::EVP_DigestFinal_ex(ending.get(), digest.data(), &length) == 1);
  return {digest.begin(), digest.begin() + length};
}

std::string Sha256::hex() const {
  std::string text;
  for (const char byte : bytes()) text += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return text;
}

std::string Sha256::base64() const { return cornerpin::base64(bytes()); }

}  // namespace cornerpin
