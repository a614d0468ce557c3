// SPDX-License-Identifier: BSD-3-Clause
// Solves a match-move in memory: four corners of a board, tracked in pixels over three frames, and
// where the middle of the board is in each of them.
#include <cornerpin/cornerpin.h>

#include <cstdio>

// Frame by frame, the board's corners as the tracker delivers them.
const double tracked[3][4][2] = {{{560, 340}, {1360, 340}, {1360, 740}, {560, 740}},
                                 {{600, 300}, {1400, 380}, {1400, 700}, {600, 780}},
                                 {{680, 350}, {1480, 470}, {1480, 650}, {680, 770}}};

// The similarity N that puts the base frame's corners into -1 .. 1, one factor for both axes, and
// its inverse.
const vec2 centre(960, 540);
const double scale = 1.0 / 400;
const mat3 toSolver = scaling2D(vec2(scale, scale)) * translation2D(vec2(-centre.x, -centre.y));
const mat3 toPixels = translation2D(centre) * scaling2D(vec2(1 / scale, 1 / scale));

// H = N^-1 H' N, divided by its last element.
mat3 inPixels(const MGenMatrix<float>& solved) {
  mat3 h;
  for (int c = 0; c < 3; ++c) {
    for (int r = 0; r < 3; ++r) h[c]()[r] = static_cast<double>(solved(r, c));
  }
  h = toPixels * h * toSolver;
  return h / h[2].z;
}

vec2 map(const mat3& h, const vec2& p) {
  const double* m = h();  // by columns
  const double w = m[2] * p.x + m[5] * p.y + m[8];
  return vec2((m[0] * p.x + m[3] * p.y + m[6]) / w, (m[1] * p.x + m[4] * p.y + m[7]) / w);
}

int main() {
  MMatchmove scene;
  scene.tracks.resize(4);
  for (int t = 0; t < 4; ++t) {
    MMatchmoveTrack& track = scene.tracks[t];
    track.positions.resize(3, 2, MGenMatrix<float>::RowMajor);
    track.weights.resize(3);
    for (int frame = 0; frame < 3; ++frame) {
      const vec2 p = map(toSolver, vec2(tracked[frame][t][0], tracked[frame][t][1]));
      track.positions(frame, 0) = static_cast<float>(p.x);
      track.positions(frame, 1) = static_cast<float>(p.y);
      track.weights[frame] = 1.0f;
    }
  }
  scene.baseFrame = 0;
  scene.solve();

  for (int frame = 0; frame < 3; ++frame) {
    const vec2 middle = map(inPixels(scene.outputs[frame]), vec2(960, 540));
    std::printf("frame %d: middle at %.1f %.1f\n", frame, middle.x, middle.y);
  }
}
