// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/base64.h"

#include <openssl/evp.h>

#include <algorithm>

namespace cornerpin {

std::string base64(std::string_view bytes) {
  // Of whole groups of three bytes, so that each but the last ends without a filler; as many as an
  // int counts.
  constexpr std::size_t kPiece = std::size_t{3} << 24;
  std::string text;
  text.reserve(bytes.size() / 3 * 4 + 4);
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, kPiece);
    const std::size_t begin = text.size();
    text.resize(begin + (piece.size() + 2) / 3 * 4 + 1);  // and a zero
    const int length = ::EVP_EncodeBlock(reinterpret_cast<unsigned char*>(&text[begin]),
                                         reinterpret_cast<const unsigned char*>(piece.data()),
                                         static_cast<int>(piece.size()));
    text.resize(begin + static_cast<std::size_t>(length));
    bytes.remove_prefix(piece.size());
  }
  return text;
}

}  // namespace cornerpin
