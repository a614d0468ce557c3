// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SOLVER_SHOTS_H
#define TESTS_SOLVER_SHOTS_H

#include "cornerpin/solver/matchmove.h"

namespace shots {

// Six tracks, all present with weight 1, that move right by `pan` in every frame.
inline MMatchmove panningShot(int frames, int baseFrame, float pan = 0.125f) {
  constexpr float points[6][2] = {{-0.5f, -0.75f}, {0.75f, -0.5f},   {0.5f, 0.5f},
                                  {-0.75f, 0.25f}, {0.25f, -0.125f}, {-0.125f, 0.375f}};
  MMatchmove scene;
  scene.baseFrame = baseFrame;
  scene.tracks.resize(6);
  for (int t = 0; t < 6; ++t) {
    MMatchmoveTrack& track = scene.tracks[t];
    track.positions = MGenMatrix<float>(frames, 2, MGenMatrix<float>::RowMajor);
    track.weights = MGenVector<float>(frames);
    for (int f = 0; f < frames; ++f) {
      track.positions(f, 0) = points[t][0] + pan * static_cast<float>(f);
      track.positions(f, 1) = points[t][1];
      track.weights[f] = 1;
    }
  }
  return scene;
}

}  // namespace shots

#endif
