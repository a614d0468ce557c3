// SPDX-License-Identifier: BSD-3-Clause
#ifndef BENCH_COMMAND_INPUTS_H
#define BENCH_COMMAND_INPUTS_H

#include <cstddef>
#include <string>

namespace bench {

// A track file.
struct Input {
  std::string path;
  std::size_t frames = 0;
  std::size_t rows = 0;
};

// Writes a track file again so that its frames follow one another to the end and back until there
// are so many.
Input repeated(const std::string& from, std::size_t frames, const std::string& to);

// Writes `syntheticShot` as a track file, 1,000 pixels wide.
Input synthetic(int tracks, int frames, const std::string& to);

}  // namespace bench

#endif
