// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_GZIPPED_H
#define TESTS_SHOT_FILES_GZIPPED_H

#include <zlib.h>

#include <cstddef>
#include <string>

// The text as one member of a gzip file.
inline std::string gzipped(const std::string& text) {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

// So many of one character, packed.
inline std::string gzippedOf(std::size_t count, char c) {
  std::string text;
  text.resize(count, c);
  return gzipped(text);
}

#endif
