// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_INTERNAL_KERNEL_VARIANTS_H
#define CORNERPIN_INTERNAL_KERNEL_VARIANTS_H

#include <initializer_list>

// Private: how the variant of a kernel is chosen.
//
// A kernel is a loop that is worth writing once per instruction set. Its definition runs on every
// processor and fixes the bits; every other variant returns the same ones. A variant is a file of
// its own, compiled for its instruction set by itself. Such a file calls no inline function of
// another file: of the copies of an inline function the linker keeps one for all callers, and it
// may keep one that this processor does not run.
namespace cornerpin::internal {

// The variants that this build has and this processor runs, the definition first and the best one
// last, and the one in use: the best, unless a test uses another. A `Kernel` has a name and what
// to call.
template <class Kernel>
class KernelVariants {
 public:
  struct Candidate {
    const Kernel& kernel;
    bool runsHere;
  };
  KernelVariants(std::initializer_list<Candidate> candidates) {
    for (const Candidate& candidate : candidates) {
      if (candidate.runsHere) all_[count_++] = &candidate.kernel;
    }
    useBest();
  }

  const Kernel& inUse() const { return *inUse_; }

  // For tests and benchmarks, which link the library's objects. The shared library exports nothing
  // of this.
  const Kernel* const* begin() const { return all_; }
  const Kernel* const* end() const { return all_ + count_; }
  const Kernel& definition() const { return *all_[0]; }
  const Kernel& best() const { return *all_[count_ - 1]; }
  void use(const Kernel& kernel) { inUse_ = &kernel; }
  void useBest() { use(best()); }

 private:
  static constexpr int kMost = 3;
  const Kernel* all_[kMost] = {};
  int count_ = 0;
  const Kernel* inUse_ = nullptr;
};

}  // namespace cornerpin::internal

#endif
