// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_REPORT_UNPACKED_H
#define TESTS_SHOT_REPORT_UNPACKED_H

#include <openssl/evp.h>
#include <zlib.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

// What is in a gzip file.
inline std::string unpacked(const std::string& packed) {
  constexpr int kGzip = 16;
  z_stream stream{};
  if (::inflateInit2(&stream, kGzip + MAX_WBITS) != Z_OK) throw std::runtime_error("inflateInit2");
  std::string input = packed;
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  std::string text;
  std::vector<char> block(1 << 16);
  int state = Z_OK;
  while (state == Z_OK) {
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    state = ::inflate(&stream, Z_NO_FLUSH);
    text.append(block.data(), block.size() - stream.avail_out);
  }
  ::inflateEnd(&stream);
  if (state != Z_STREAM_END) throw std::runtime_error("no whole gzip file");
  return text;
}

inline std::string fromBase64(const std::string& text) {
  std::string bytes(text.size() / 4 * 3 + 3, '\0');
  const int length = ::EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
  if (length < 0) throw std::runtime_error("no base64");
  std::size_t size = static_cast<std::size_t>(length);
  if (!text.empty() && text.back() == '=') --size;
  if (text.size() > 1 && text[text.size() - 2] == '=') --size;
  bytes.resize(size);
  return bytes;
}

// What an element of a page holds.
inline std::string elementOf(const std::string& page, const std::string& begin,
                             const std::string& end) {
  const std::size_t at = page.find(begin);
  if (at == std::string::npos) throw std::runtime_error("no " + begin);
  const std::size_t from = at + begin.size();
  return page.substr(from, page.find(end, from) - from);
}

inline std::string dataTextOf(const std::string& page) {
  return unpacked(fromBase64(elementOf(page, "id=\"page-data\">", "<")));
}

inline nlohmann::json dataOf(const std::string& page) {
  return nlohmann::json::parse(dataTextOf(page));
}

inline nlohmann::json picturesOf(const std::string& page) {
  return nlohmann::json::parse(elementOf(page, "id=\"page-pictures\">", "</script>"));
}

#endif
