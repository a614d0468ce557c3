// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_SCENE_H
#define TESTS_SUPPORT_SCENE_H

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>

#include "cornerpin/foundation/matrix.h"
#include "cornerpin/foundation/vector.h"
#include "cornerpin/solver/matchmove.h"
#include "tests/support/reference.h"

namespace scenes {

// Numbers that depend on the seed alone.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  int below(int n) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(n)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  bool oneIn(int n) { return below(n) == 0; }
  // In low .. high.
  float real(float low, float high) {
    return static_cast<float>(low + (high - low) * (static_cast<double>(engine_()) / 4294967295.0));
  }

 private:
  std::mt19937 engine_;
};

// A shot in any units and of any condition, some of them such that the solve must throw: too few,
// collinear or identical tracks, positions that are not finite or at the horizon, tracks of uneven
// length, a base frame outside the shot, no tracks. Base frames are first, inside and last.
reference::Scene randomShot(std::uint32_t seed);

// Moves every position a little, as a second take of the same shot.
void disturb(reference::Scene& shot, std::uint32_t seed);

// The caller's part of `shot`, in row-major, column-major and strided storage as the seed says.
// Cells between the elements hold NaN.
void fill(MMatchmove& scene, const reference::Scene& shot, std::uint32_t seed);
MGenMatrix<float> randomlyStored(const reference::Matrix& m, Random& random);
MGenVector<float> randomlyStored(const reference::Floats& v, Random& random);

MGenVector<float> vectorOf(const reference::Floats& elements);
reference::Floats floatsOf(const MGenVector<float>& v);
reference::Matrix plain(const MGenMatrix<float>& m);
// A column-major 3 x 3 matrix as the reference keeps it; empty for an empty matrix.
reference::Transform transformOf(const MGenMatrix<float>& m);

// The same bits; a NaN equals every NaN.
bool sameBits(const reference::Floats& a, const reference::Floats& b);

// What a solve leaves behind, as one sequence of bit patterns with one pattern for every NaN.
using Bits = std::vector<std::uint32_t>;
Bits resultOf(const MMatchmove& scene, const std::string& thrown);
Bits resultOf(const reference::Scene& scene, const std::string& thrown);

// What solve() throws, "" when it returns.
std::string solve(MMatchmove& scene);
std::string solve(reference::Scene& scene);

}  // namespace scenes

#endif
