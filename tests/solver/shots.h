// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SOLVER_SHOTS_H
#define TESTS_SOLVER_SHOTS_H

#include <gtest/gtest.h>

#include <limits>

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

// A panning shot of three frames, ready for frame 2, with base frame 1.
inline MMatchmove preparedShot() {
  MMatchmove scene = panningShot(3, 1);
  scene.setupOutputs();
  scene.solveBaseFrame();
  return scene;
}

// Only a track at the origin is seen: the unknowns that multiply its coordinates have no slope.
inline void makeSingular(MMatchmove& scene, int frame) {
  for (int t = 1; t < scene.tracks.size(); ++t) scene.tracks[t].weights[frame] = 0;
  scene.tracks[0].positions(scene.baseFrame, 0) = 0;
  scene.tracks[0].positions(scene.baseFrame, 1) = 0;
}

inline bool columnMajor3x3(const MGenMatrix<float>& h) {
  return h.rows == 3 && h.cols == 3 && h.rowStride == 1 && h.colStride == 3;
}

// Carries every track to its place in the frame, as far as single precision and the differences
// with a step of 0.0001 let the fit see: the coordinates are at most 2.
inline void expectFitted(const MMatchmove& scene, int frame) {
  MGenVector<float> carried;
  for (int t = 0; t < scene.tracks.size(); ++t) {
    scene.project(frame, scene.basePositions.row(t), carried);
    for (int c = 0; c < 2; ++c) {
      EXPECT_NEAR(carried[c], scene.tracks[t].positions(frame, c),
                  64 * std::numeric_limits<float>::epsilon())
          << "frame " << frame << " track " << t;
    }
  }
}

}  // namespace shots

#endif
