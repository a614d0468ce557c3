// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/gzip.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace cornerpin {

std::string gzip(std::string_view bytes) {
  constexpr int kGzip = 16;  // added to the window's size
  constexpr int kMemory = 9;
  z_stream stream{};
  if (::deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, kGzip + MAX_WBITS, kMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<z_stream, int (*)(z_stream*)> ending(&stream, ::deflateEnd);
  std::string packed;
  packed.reserve(bytes.size() / 4);
  std::string block(std::size_t{64} * 1024, '\0');
  int state = Z_OK;
  while (state != Z_STREAM_END) {
    if (stream.avail_in == 0 && !bytes.empty()) {
      const std::size_t piece =
          std::min<std::size_t>(bytes.size(), std::numeric_limits<uInt>::max());
      stream.next_in = reinterpret_cast<z_const Bytef*>(const_cast<char*>(bytes.data()));
      stream.avail_in = static_cast<uInt>(piece);
      bytes.remove_prefix(piece);
    }
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    state = ::deflate(&stream, bytes.empty() ? Z_FINISH : Z_NO_FLUSH);
    packed.append(block, 0, block.size() - stream.avail_out);
  }
  return packed;
}

}  // namespace cornerpin
