// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/linalg/inverse.h>
#include <cornerpin/linalg/svd.h>

#include <algorithm>

#include "arrays.h"
#include "bindings.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

template <class T>
py::array inverseOf(const py::array& a) {
  const MGenMatrix<T> given = matrixOn<T>(a);
  MGenMatrix<T> inverted;
  {
    const py::gil_scoped_release unlocked;
    inverted = inverse(given);
  }
  return arrayOf(inverted);
}

// U, S, V and whether it converged.
template <class T>
py::tuple svdOf(const py::array& a) {
  const MGenMatrix<T> given = matrixOn<T>(a);
  MSvd<T> svd;
  {
    const py::gil_scoped_release unlocked;
    _svdCall(svd, given);
  }
  py::array_t<T> values(svd.S.length);
  for (int i = 0; i < svd.S.length; ++i) values.mutable_at(i) = svd.S[i];
  return py::make_tuple(arrayOf(svd.U), values, arrayOf(svd.V), svd.ok);
}

}  // namespace

void bindMatrices(py::module_& module) {
  module.def("inverse", [](const py::array& a) {
    return py::isinstance<py::array_t<float>>(a) ? inverseOf<float>(a) : inverseOf<double>(a);
  });
  module.def("svd", [](const py::array& a) {
    return py::isinstance<py::array_t<float>>(a) ? svdOf<float>(a) : svdOf<double>(a);
  });
}

}  // namespace cornerpin::python
