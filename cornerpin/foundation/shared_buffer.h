// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_SHARED_BUFFER_H
#define CORNERPIN_FOUNDATION_SHARED_BUFFER_H

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

// Private: the reference-counted element buffer behind vectors and matrices. One heap block
// holds the header and, directly behind it, the elements; holders point at the first element.
namespace cornerpin::internal {

struct BufferHeader {
  std::uint32_t bytes;      // size of the element area
  std::int32_t references;  // plain, so a buffer belongs to one thread at a time
};

inline BufferHeader* headerOf(void* elements) noexcept {
  return static_cast<BufferHeader*>(elements) - 1;
}

// A buffer of `count` elements of all-zero bytes with one reference; null for no elements. A
// size that the header cannot hold is refused before anything is allocated.
template <class T>
T* newBuffer(std::int64_t count) {
  static_assert(alignof(T) <= sizeof(BufferHeader), "elements follow the header directly");
  if (count <= 0) return nullptr;
  constexpr std::int64_t limit = std::numeric_limits<std::uint32_t>::max() / sizeof(T);
  if (count > limit) throw std::bad_array_new_length();
  const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(T);
  auto* header = static_cast<BufferHeader*>(::operator new(sizeof(BufferHeader) + bytes));
  header->bytes = static_cast<std::uint32_t>(bytes);
  header->references = 1;
  std::memset(header + 1, 0, bytes);
  return reinterpret_cast<T*>(header + 1);
}

inline void acquire(void* elements) noexcept {
  if (elements != nullptr) ++headerOf(elements)->references;
}

template <class T>
void release(T*& elements) noexcept {
  if (elements != nullptr && --headerOf(elements)->references == 0) {
    ::operator delete(headerOf(elements));
  }
  elements = nullptr;
}

// Number of vectors, matrices and views on the buffer; 0 for none.
inline int holderCount(void* elements) noexcept {
  return elements == nullptr ? 0 : headerOf(elements)->references;
}

}  // namespace cornerpin::internal

#endif
