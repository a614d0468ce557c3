// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_BUFFER_HEADER_H
#define TESTS_SUPPORT_BUFFER_HEADER_H

#include <cstdint>
#include <cstring>

// The two 32-bit words directly in front of the first element of a shared buffer.
struct BufferWords {
  std::uint32_t bytes;
  std::uint32_t references;
};

template <class T>
BufferWords bufferWords(const T* buffer) {
  BufferWords words;
  std::memcpy(&words, reinterpret_cast<const char*>(buffer) - sizeof words, sizeof words);
  return words;
}

#endif
