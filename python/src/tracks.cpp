// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <pybind11/stl.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "text.h"
#include "watched.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

template <class T>
shot::Array lookAt(const py::array& array) {
  std::vector<std::size_t> shape;
  std::vector<std::ptrdiff_t> strides;
  for (py::ssize_t d = 0; d < array.ndim(); ++d) {
    shape.push_back(static_cast<std::size_t>(array.shape(d)));
    strides.push_back(strideOf<T>(array, d));
  }
  return {elementsOf<T>(array), std::move(shape), std::move(strides)};
}

shot::Array lookAt(const py::array& array) {
  return py::isinstance<py::array_t<float>>(array) ? lookAt<float>(array) : lookAt<double>(array);
}

shot::Tracks fromArrays(const py::array& positions, const std::optional<py::array>& weights,
                        const std::vector<std::string>& names, int firstFrame,
                        const shot::Picture& picture) {
  shot::TrackArrays arrays;
  arrays.positions = lookAt(positions);
  if (weights) arrays.weights = lookAt(*weights);
  arrays.names = names;
  arrays.firstFrame = firstFrame;
  arrays.picture = picture;
  const py::gil_scoped_release unlocked;
  return shot::tracksFromArrays(arrays);
}

// Arrays of one dimension, all of the same length.
shot::Tracks fromRows(const py::array_t<int>& frames, const py::array_t<int>& tracks,
                      const py::array_t<double>& x, const py::array_t<double>& y,
                      const py::array_t<double>& weights, const std::vector<std::string>& names,
                      const shot::Picture& picture) {
  std::vector<shot::Observation> rows(static_cast<std::size_t>(frames.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto at = static_cast<py::ssize_t>(i);
    rows[i] = {static_cast<std::size_t>(tracks.at(at)), frames.at(at), x.at(at), y.at(at),
               weights.at(at)};
  }
  const py::gil_scoped_release unlocked;
  return shot::tracksFromRows(rows, names, picture);
}

// Arrays of frames, indices of tracks, x, y and weights.
py::tuple rowsOf(const shot::Tracks& tracks) {
  const std::vector<shot::Observation> rows = tracks.observations();
  const auto count = static_cast<py::ssize_t>(rows.size());
  py::array_t<int> frames(count);
  py::array_t<py::ssize_t> indices(count);
  py::array_t<double> x(count);
  py::array_t<double> y(count);
  py::array_t<double> weights(count);
  for (py::ssize_t i = 0; i < count; ++i) {
    const shot::Observation& row = rows[static_cast<std::size_t>(i)];
    frames.mutable_at(i) = row.frame;
    indices.mutable_at(i) = static_cast<py::ssize_t>(row.track);
    x.mutable_at(i) = row.x;
    y.mutable_at(i) = row.y;
    weights.mutable_at(i) = row.weight;
  }
  return py::make_tuple(frames, indices, x, y, weights);
}

py::ssize_t frameCount(const shot::Tracks& tracks) {
  return py::ssize_t{tracks.lastFrame()} - tracks.firstFrame() + 1;
}

py::ssize_t trackCount(const shot::Tracks& tracks) {
  return static_cast<py::ssize_t>(tracks.names().size());
}

void bindPicture(py::module_& module) {
  using shot::Picture;
  py::class_<Picture>(module, "Picture")
      .def(py::init<>())
      .def_readwrite("width", &Picture::width)
      .def_readwrite("height", &Picture::height)
      .def_readonly("y", &Picture::y)
      .def("set_y", [](Picture& self, const std::string& word) { self.y = word; })
      .def_readwrite("pixel_centre", &Picture::pixelCentre)
      .def_readwrite("first_frame", &Picture::firstFrame);
}

void bindWritten(py::module_& module) {
  using shot::Written;
  py::class_<Written>(module, "Written")
      .def_property_readonly("notes", [](const Written& self) { return textsOf(self.notes); })
      .def_property_readonly("read_back", [](const Written& self) { return textOf(self.readBack); })
      .def_property_readonly("size", [](const Written& self) { return textOf(self.size); });
}

}  // namespace

void bindTracks(py::module_& module) {
  using shot::Tracks;
  bindPicture(module);
  bindWritten(module);
  py::class_<Tracks>(module, "Tracks")
      .def_property_readonly("names", [](const Tracks& self) { return textsOf(self.names()); })
      .def_property_readonly("notes", [](const Tracks& self) { return textsOf(self.notes()); })
      .def_property_readonly("first_frame", &Tracks::firstFrame)
      .def_property_readonly("last_frame", &Tracks::lastFrame)
      .def_property_readonly("picture", &Tracks::picture)
      .def("rows", rowsOf)
      .def("positions",
           [](const Tracks& self) {
             return arrayOf(self.positions(), {frameCount(self), trackCount(self), 2});
           })
      .def("weights",
           [](const Tracks& self) {
             return arrayOf(self.weights(), {frameCount(self), trackCount(self)});
           })
      .def("write", &Tracks::write, py::call_guard<py::gil_scoped_release>());
  module.def("tracks_from_arrays", fromArrays);
  module.def("tracks_from_rows", fromRows);
  module.def("read_tracks",
             [](const std::string& path, const std::string& format, const std::string& frames,
                const shot::Picture& picture, bool digest, const py::object& progress) {
               return watched(progress, [&](const shot::Progress& report) {
                 return shot::readTracks(path, {format, frames, picture, digest}, report);
               });
             });
}

}  // namespace cornerpin::python
