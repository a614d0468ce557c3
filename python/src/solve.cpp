// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <pybind11/stl.h>

#include "bindings.h"
#include "watched.h"

namespace py = pybind11;

namespace cornerpin::python {

void bindSolve(py::module_& module) {
  using shot::Options;
  using shot::Quad;
  py::class_<Quad>(module, "Quad")
      .def(py::init([](std::string name, const std::array<double, 8>& corners) {
        return Quad{std::move(name), corners};
      }));
  py::class_<Options>(module, "Options")
      .def(py::init<>())
      .def_readwrite("base", &Options::base)
      .def_readwrite("reference", &Options::reference)
      .def_readwrite("frames", &Options::frames)
      .def_readwrite("keep", &Options::keep)
      .def_readwrite("drop", &Options::drop)
      .def_readwrite("base_only", &Options::baseOnly)
      .def_readwrite("hold", &Options::hold)
      .def_readwrite("units", &Options::units)
      .def_readwrite("loss", &Options::loss)
      .def_readwrite("seed", &Options::seed)
      .def_readwrite("max_error", &Options::maxError)
      .def_readwrite("smooth", &Options::smooth)
      .def_readwrite("fill", &Options::fill)
      .def_readwrite("at", &Options::at)
      .def_readwrite("quads", &Options::quads)
      .def_readwrite("threads", &Options::threads)
      .def_readwrite("advice", &Options::advice)
      .def_readwrite("influences", &Options::influences);
  module.def("solve",
             [](const shot::Tracks& tracks, const Options& options, const py::object& progress) {
               return watched(progress, [&](const shot::Progress& report) {
                 return shot::solve(tracks, options, report);
               });
             });
}

}  // namespace cornerpin::python
