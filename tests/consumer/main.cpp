// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/cornerpin.h>

#include <cstdio>

// Four corners of a square, moved by (0.25, 0.5) in frame 1.
static MMatchmove movedSquare() {
  MMatchmove scene;
  scene.tracks.resize(4);
  for (int t = 0; t < 4; ++t) {
    MMatchmoveTrack& track = scene.tracks[t];
    track.positions.resize(2, 2, MGenMatrix<float>::RowMajor);
    track.weights.resize(2);
    for (int f = 0; f < 2; ++f) {
      track.weights[f] = 1.0f;
      track.positions(f, 0) = (t % 2 == 0 ? -1.0f : 1.0f) + 0.25f * static_cast<float>(f);
      track.positions(f, 1) = (t < 2 ? -1.0f : 1.0f) + 0.5f * static_cast<float>(f);
    }
  }
  return scene;
}

int main() {
  MMatchmove scene = movedSquare();
  scene.solve();
  MGenVector<float> out;
  scene.project(1, MGenVector<float>(2), out);
  std::printf("centre %.3f %.3f\n", static_cast<double>(out[0]), static_cast<double>(out[1]));

  // An exception crosses the library's boundary, and its class is known on this side.
  try {
    inverse(MGenMatrix<double>(2, 2, MGenMatrix<double>::ColumnMajor));
  } catch (const MMatrixError& error) {
    std::printf("caught %s\n", error.message.c_str());
  }
}
