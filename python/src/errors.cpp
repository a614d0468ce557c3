// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/foundation/exception.h>
#include <cornerpin/shot.h>

#include <cctype>
#include <cstddef>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "bindings.h"
#include "text.h"

namespace py = pybind11;

namespace cornerpin::python {

namespace {

bool isOfOption(char c) { return c == '-' || std::islower(static_cast<unsigned char>(c)) != 0; }

// What an option of the command is called here; empty for what is none.
std::string keywordOf(const std::string& option) {
  static const std::map<std::string, std::string> keywords = {
      {"--as", "as_"},
      {"--base", "base"},
      {"--base-only", "base_only"},
      {"--drop", "drop"},
      {"--first-frame", "first_frame"},
      {"--fps", "fps"},
      {"--frames", "frames"},
      {"--from", "format"},
      {"--keep", "keep"},
      {"--max-error", "max_error"},
      {"--picture-scale", "picture_scale"},
      {"--pictures", "pictures"},
      {"--pixel-center", "pixel_centre"},
      {"--quad", "quads"},
      {"--quads", "quads"},
      {"--reference", "reference"},
      {"--size", "width and height"},
      {"--to", "format"},
      {"--y-down", "y='down'"},
      {"--y-up", "y='up'"},
  };
  const auto found = keywords.find(option);
  return found == keywords.end() ? std::string() : found->second;
}

// The text with the command's options called as the arguments are called here.
std::string inKeywords(const std::string& text) {
  std::string told;
  std::size_t i = 0;
  while (i < text.size()) {
    std::size_t end = i;
    const bool begins = text.compare(i, 2, "--") == 0 && (i == 0 || !isOfOption(text[i - 1]));
    while (begins && end < text.size() && isOfOption(text[end])) ++end;
    const std::string keyword = keywordOf(text.substr(i, end - i));
    if (keyword.empty()) {
      told += text[i++];
    } else {
      told += keyword;
      i = end;
    }
  }
  return told;
}

// An argument that the host layer has another name for.
std::string renamed(const std::string& text) {
  if (text.rfind("positions: ", 0) == 0) return "tracks" + text.substr(9);
  if (text.rfind("to: ", 0) == 0) return "format" + text.substr(2);
  if (text.rfind("from: ", 0) == 0) return "format" + text.substr(4);
  if (text.rfind("as: ", 0) == 0) return "as_" + text.substr(2);
  return text;
}

void raise(const py::handle& type, const std::string& text) {
  PyErr_SetObject(type.ptr(), textOf(text).ptr());
}

py::object ownError(const char* name) {
  return py::module_::import("cornerpin._errors").attr(name);
}

void translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(std::move(thrown));
  } catch (const shot::InputError& error) {
    const py::object type = ownError("InputError");
    const py::object made = type(textOf(inKeywords(error.what())), textOf(error.file), error.line);
    PyErr_SetObject(type.ptr(), made.ptr());
  } catch (const shot::Cancelled& error) {
    raise(ownError("Cancelled"), error.what());
  } catch (const std::system_error& error) {
    const py::object type = py::reinterpret_borrow<py::object>(PyExc_OSError);
    const py::object made = type(error.code().value(), textOf(error.what()));
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
  } catch (const LvIllegalArgumentException& error) {
    raise(PyExc_ValueError, error.message.c_str());
  } catch (const LvException& error) {
    raise(py::module_::import("numpy.linalg").attr("LinAlgError"), error.message.c_str());
  } catch (const std::invalid_argument& error) {
    raise(PyExc_ValueError, inKeywords(renamed(error.what())));
  }
}

}  // namespace

void bindErrors() { py::register_local_exception_translator(translate); }

}  // namespace cornerpin::python
