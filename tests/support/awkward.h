// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_AWKWARD_H
#define TESTS_SUPPORT_AWKWARD_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

// Input for kernels: random numbers of many magnitudes, and among them the numbers that tell a
// faithful variant from a nearly faithful one.
namespace awkward {

enum class Kind { Plain, WithSubnormals, WithInfinities, WithNans };
constexpr Kind kKinds[] = {Kind::Plain, Kind::WithSubnormals, Kind::WithInfinities, Kind::WithNans};

class Floats {
 public:
  explicit Floats(std::uint32_t seed) : engine_(seed) {}

  float next(Kind kind) {
    const float special = nextSpecial(kind);
    return special != 0.0f ? special : nextOrdinary();
  }

  // n numbers that start `offset` floats behind an aligned address.
  struct Block {
    std::vector<float> room;
    std::size_t first;
    float* data() { return room.data() + first; }
    const float* data() const { return room.data() + first; }
  };
  Block block(int n, int offset, Kind kind) {
    Block result{std::vector<float>(static_cast<std::size_t>(n + offset) + 32), 0};
    const auto address = reinterpret_cast<std::uintptr_t>(result.room.data());
    result.first = (64 - address % 64) % 64 / sizeof(float) + static_cast<std::size_t>(offset);
    for (int i = 0; i < n; ++i) result.data()[i] = next(kind);
    return result;
  }

 private:
  float nextOrdinary() {
    const auto r = static_cast<std::uint32_t>(engine_());
    if (r % 61 == 0) return r & 64 ? 0.0f : -0.0f;
    const float magnitude = std::ldexp(1.0f, static_cast<int>(r % 21) - 10);
    return (static_cast<float>(static_cast<std::int32_t>(engine_())) / 2147483648.0f) * magnitude;
  }
  // 0 for none this time.
  float nextSpecial(Kind kind) {
    const auto r = static_cast<std::uint32_t>(engine_());
    if (kind == Kind::Plain || r % 29 != 0) return 0.0f;
    const float sign = r & 32 ? 1.0f : -1.0f;
    switch (kind) {
      case Kind::WithSubnormals:
        return sign * std::numeric_limits<float>::denorm_min() * static_cast<float>(1 + r % 1000);
      case Kind::WithInfinities:
        return sign * std::numeric_limits<float>::infinity();
      default:
        return std::numeric_limits<float>::quiet_NaN();
    }
  }

  std::mt19937 engine_;
};

// The same bits; every NaN counts as the same, because the language does not fix which one an
// operation on two of them returns.
template <class T>
bool sameBits(T a, T b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

template <class T>
bool sameBits(const T* a, const T* b, int n) {
  for (int i = 0; i < n; ++i) {
    if (!sameBits(a[i], b[i])) return false;
  }
  return true;
}

}  // namespace awkward

#endif
