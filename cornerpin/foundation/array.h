// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_FOUNDATION_ARRAY_H
#define CORNERPIN_FOUNDATION_ARRAY_H

/// \file
/// The owning array of objects.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "cornerpin/export.h"
#include "cornerpin/foundation/exception.h"

/// An owning, bounds-checked array of default-constructible, assignable objects. Copying copies
/// the elements (elements that are vectors or matrices keep sharing their buffers).
template <class T>
class CORNERPIN_API MArray {
 public:
  /// No elements.
  MArray() noexcept = default;
  /// n default-constructed elements. Throws as `resize` does.
  explicit MArray(int n) { resize(n); }
  /// \{
  /// Assigns every element to a default-constructed one. When an allocation or assignment throws,
  /// the array that is assigned to stays as it was.
  MArray(const MArray& other) { *this = other; }
  MArray& operator=(const MArray& other) {
    if (this != &other) assign(other.count_, other.elements_.get(), other.count_);
    return *this;
  }
  /// \}
  virtual ~MArray();

  /// \{
  /// Throws `LvBadIndexException` "MArray::operator[]" for an index outside 0 .. size() - 1.
  T& operator[](int i) { return elements_[checked(i)]; }
  const T& operator[](int i) const { return elements_[checked(i)]; }
  /// \}

  /// Moves to a new array of n elements: the first ones assigned from the old elements, the rest
  /// default-constructed. Throws `LvIllegalArgumentException` "MArray::resize" for a negative n.
  /// When an allocation or assignment throws, the elements stay as they were.
  void resize(int n) {
    if (n < 0) throw LvIllegalArgumentException("MArray::resize");
    assign(n, elements_.get(), std::min(n, count_));
  }

  /// Number of elements.
  int size() const noexcept { return count_; }

 private:
  std::size_t checked(int i) const {
    if (i < 0 || i >= count_) throw LvBadIndexException("MArray::operator[]");
    return static_cast<std::size_t>(i);
  }

  // Adopts n new elements, the first `kept` of them assigned from `source`.
  void assign(int n, const T* source, int kept) {
    requested_ = n;
    std::unique_ptr<T[]> elements;
    if (n != 0) elements.reset(new T[static_cast<std::size_t>(n)]());
    std::copy(source, source + kept, elements.get());
    elements_ = std::move(elements);
    count_ = n;
  }

  int requested_ = 0;  // what the last resize asked for, also when it ran out of memory
  int count_ = 0;
  std::unique_ptr<T[]> elements_;
};

// Defined out of the class, every compiler exports it with the rest.
template <class T>
MArray<T>::~MArray() = default;

#endif
