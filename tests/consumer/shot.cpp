// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>

#include <cstdio>
#include <stdexcept>
#include <vector>

using namespace cornerpin::shot;

// Six tracks that go 3 to the right and 2 down from frame 0 to frame 1.
static TrackArrays moved(const std::vector<float>& positions) {
  TrackArrays arrays;
  arrays.positions = {positions.data(), {2, 6, 2}};
  return arrays;
}

int main() {
  const std::vector<float> positions = {0, 0, 100, 0, 100, 100, 0, 100, 50, 30, 20, 70,
                                        3, 2, 103, 2, 103, 102, 3, 102, 53, 32, 23, 72};
  const Tracks tracks = tracksFromArrays(moved(positions));
  Options options;
  options.base = 0;
  const std::vector<double> transforms = solve(tracks, options).transforms();
  std::printf("moved %.3f %.3f\n", transforms[9 + 2], transforms[9 + 5]);

  // Exceptions cross the library's boundary, and their classes are known on this side.
  try {
    readTracks("no/such/file.csv");
  } catch (const InputError& error) {
    std::printf("caught %s\n", error.file.c_str());
  }
  try {
    solve(tracks, options, [](const char*, std::size_t, std::size_t) { return false; });
  } catch (const Cancelled& cancelled) {
    std::printf("caught %s\n", cancelled.what());
  }
}
