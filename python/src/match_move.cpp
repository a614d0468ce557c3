// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/solver/matchmove.h>

#include <algorithm>
#include <cstddef>
#include <optional>

#include <pybind11/stl.h>

#include "arrays.h"
#include "bindings.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

// Tracks whose positions and weights stay where they are.
void fill(MMatchmove& scene, const py::array& positions, const std::optional<py::array>& weights) {
  const float* const places = elementsOf<float>(positions);
  const float* const given = weights ? elementsOf<float>(*weights) : nullptr;
  const auto frames = static_cast<int>(positions.shape(0));
  const auto tracks = static_cast<int>(positions.shape(1));
  MGenVector<float> ones(given == nullptr ? frames : 0);
  std::fill_n(ones.data, ones.length, 1.0f);
  scene.tracks.resize(tracks);
  for (int t = 0; t < tracks; ++t) {
    MMatchmoveTrack& track = scene.tracks[t];
    track.positions.data = const_cast<float*>(places + t * strideOf<float>(positions, 1));
    track.positions.rows = frames;
    track.positions.cols = 2;
    track.positions.rowStride = static_cast<int>(strideOf<float>(positions, 0));
    track.positions.colStride = static_cast<int>(strideOf<float>(positions, 2));
    track.weights = ones;
    if (given == nullptr) continue;
    track.weights.data = const_cast<float*>(given + t * strideOf<float>(*weights, 1));
    track.weights.length = frames;
    track.weights.stride = static_cast<int>(strideOf<float>(*weights, 0));
  }
}

// positions: frames x tracks x 2, weights: frames x tracks.
py::array_t<float> matchMove(const py::array& positions, const std::optional<py::array>& weights,
                             int baseFrame) {
  MMatchmove scene;
  fill(scene, positions, weights);
  scene.baseFrame = baseFrame;
  {
    const py::gil_scoped_release unlocked;
    scene.solve();
  }
  py::array_t<float> transforms({scene.frameCount, 3, 3});
  float* to = transforms.mutable_data();
  for (int f = 0; f < scene.frameCount; ++f) {
    for (int i = 0; i < 9; ++i) *to++ = scene.outputs[f](i / 3, i % 3);
  }
  return transforms;
}

}  // namespace

void bindMatchMove(py::module_& module) { module.def("match_move", matchMove); }

}  // namespace cornerpin::python
