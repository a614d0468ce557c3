// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/allocations.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>

namespace {

std::size_t madeCount = 0;
std::size_t liveCount = 0;
std::size_t liveBytes = 0;
std::size_t peakBytes = 0;
std::size_t untilFailure = 0;  // 0: disarmed
bool hasFailed = false;

void* allocate(std::size_t bytes) {
  if (untilFailure != 0 && --untilFailure == 0) {
    hasFailed = true;
    throw std::bad_alloc();
  }
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block == nullptr) throw std::bad_alloc();
  ++madeCount;
  ++liveCount;
  liveBytes += ::malloc_usable_size(block);
  peakBytes = std::max(peakBytes, liveBytes);
  return block;
}

void* allocateOrNull(std::size_t bytes) noexcept {
  try {
    return allocate(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void deallocate(void* block) noexcept {
  if (block == nullptr) return;
  --liveCount;
  liveBytes -= ::malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
// Without these two a sanitizer would hand out the blocks by its own, and miss their release.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocateOrNull(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocateOrNull(bytes);
}
void operator delete(void* block) noexcept { deallocate(block); }
void operator delete[](void* block) noexcept { deallocate(block); }
void operator delete(void* block, std::size_t) noexcept { deallocate(block); }
void operator delete[](void* block, std::size_t) noexcept { deallocate(block); }

namespace allocations {

std::size_t made() { return madeCount; }
std::size_t live() { return liveCount; }

std::size_t peakBytesOf(const std::function<void()>& action) {
  const std::size_t before = liveBytes;
  peakBytes = liveBytes;
  action();
  return peakBytes - before;
}

FailAt::FailAt(std::size_t k) {
  hasFailed = false;
  untilFailure = k;
}
FailAt::~FailAt() { untilFailure = 0; }
bool FailAt::failed() const { return hasFailed; }

std::size_t expectNoLeakOnAnyFailure(const std::function<void()>& action) {
  action();  // initialises statics
  constexpr std::size_t limit = 100000;
  for (std::size_t k = 1; k < limit; ++k) {
    const std::size_t before = live();
    bool failed = false;
    bool surfaced = false;
    {
      FailAt fail(k);
      try {
        action();
      } catch (const std::bad_alloc&) {
        surfaced = true;
      }
      failed = fail.failed();
    }
    EXPECT_EQ(live(), before) << "allocation " << k << " failed";
    EXPECT_EQ(surfaced, failed) << "allocation " << k;
    if (!failed) return k - 1;
  }
  ADD_FAILURE() << "no run got through";
  return limit;
}

}  // namespace allocations
