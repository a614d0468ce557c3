// SPDX-License-Identifier: BSD-3-Clause
#ifndef PYTHON_SRC_TEXT_H
#define PYTHON_SRC_TEXT_H

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace cornerpin::python {

/// Bytes that are not UTF-8 come out as Python has such bytes in the names of files.
inline pybind11::str textOf(const std::string& text) {
  PyObject* const made =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
  if (made == nullptr) throw pybind11::error_already_set();
  return pybind11::reinterpret_steal<pybind11::str>(made);
}

/// One after another.
inline pybind11::list textsOf(const std::vector<std::string>& texts) {
  pybind11::list made;
  for (const std::string& text : texts) made.append(textOf(text));
  return made;
}

}  // namespace cornerpin::python

#endif
