// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_ALLOCATIONS_H
#define TESTS_SUPPORT_ALLOCATIONS_H

#include <cstddef>
#include <functional>
#include <new>

// Every test program replaces the global operator new, so that a test can count allocations, see
// what leaks, and make the k-th one fail. The library shares the replacement.
namespace allocations {

std::size_t made();  // since the program started
std::size_t live();  // not released yet

// How many bytes more than before were taken at most while the action ran.
std::size_t peakBytesOf(const std::function<void()>& action);

// Makes the k-th allocation from now on (counted from 1) throw std::bad_alloc, once. Disarmed by
// the destructor.
class FailAt {
 public:
  explicit FailAt(std::size_t k);
  ~FailAt();
  FailAt(const FailAt&) = delete;
  FailAt& operator=(const FailAt&) = delete;
  bool failed() const;
};

// Runs `action` with its 1st, 2nd, ... allocation failing until it gets through, and checks that
// every failure surfaces as std::bad_alloc and leaves nothing behind. `action` must release what
// it allocates. Returns how many runs failed.
std::size_t expectNoLeakOnAnyFailure(const std::function<void()>& action);

}  // namespace allocations

#endif
