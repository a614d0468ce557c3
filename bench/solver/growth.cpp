// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_growth solves ever longer and ever fuller shots and prints processor time per frame and
// per track of a frame, how many blocks a solve allocates, and the bytes of its input, its output
// and its peak beyond both, to show that all of them grow in proportion.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "bench/support/shot.h"
#include "bench/support/statistics.h"

namespace {

std::size_t blocks = 0;
std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

}  // namespace

void* operator new(std::size_t bytes) {
  void* block = std::malloc(bytes == 0 ? 1 : bytes);
  if (block == nullptr) throw std::bad_alloc();
  ++blocks;
  liveBytes += malloc_usable_size(block);
  peakBytes = std::max(peakBytes, liveBytes);
  return block;
}
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void operator delete(void* block) noexcept {
  if (block != nullptr) liveBytes -= malloc_usable_size(block);
  std::free(block);
}
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

namespace {

// Memory is that of a first solve; time is the mean of later ones, about 3000 frames in all.
void report(int tracks, int frames) {
  const std::size_t before = liveBytes;
  MMatchmove scene;
  bench::fill(scene, bench::syntheticShot(tracks, frames));
  const std::size_t input = liveBytes - before;
  const std::size_t blocksBefore = blocks;
  peakBytes = liveBytes;
  scene.solve();
  const std::size_t made = blocks - blocksBefore;
  const std::size_t output = liveBytes - before - input;  // base positions and weights included
  const std::size_t beyond = peakBytes - before - input - output;
  const int solves = std::max(1, 3000 / frames);
  const double begin = bench::processorSeconds();
  for (int i = 0; i < solves; ++i) scene.solve();
  const double perFrame = (bench::processorSeconds() - begin) / solves / (frames - 1);
  std::printf("%7d %7d %10.2f %10.1f %10zu %12zu %12zu %12zu\n", frames, tracks, 1e6 * perFrame,
              1e9 * perFrame / tracks, made, input, output, beyond);
}

}  // namespace

int main() {
  std::printf("%7s %7s %10s %10s %10s %12s %12s %12s\n", "frames", "tracks", "us/frame", "ns/f/t",
              "blocks", "input", "output", "beyond both");
  for (const int frames : {10, 100, 1000, 10000}) report(100, frames);
  for (const int tracks : {10, 100, 1000, 10000}) report(tracks, 100);
  return 0;
}
