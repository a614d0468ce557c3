// SPDX-License-Identifier: BSD-3-Clause
#include "bindings.h"

// NOLINTNEXTLINE(bugprone-reserved-identifier): Python looks for a name that begins so
PYBIND11_MODULE(_cornerpin, module) {
  module.doc() = "The compiled part of cornerpin.";
  module.attr("__version__") = CORNERPIN_VERSION;
  cornerpin::python::bindErrors();
  cornerpin::python::bindTracks(module);
  cornerpin::python::bindResult(module);
  cornerpin::python::bindSolve(module);
  cornerpin::python::bindMatchMove(module);
  cornerpin::python::bindMatrices(module);
  cornerpin::python::bindPlane(module);
}
