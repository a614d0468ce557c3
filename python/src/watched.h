// SPDX-License-Identifier: BSD-3-Clause
#ifndef PYTHON_SRC_WATCHED_H
#define PYTHON_SRC_WATCHED_H

#include <cornerpin/shot.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <functional>
#include <optional>

namespace cornerpin::python {

/// Does work that reports to a `Progress` in a thread of its own, without the interpreter's lock.
///
/// The calling thread meanwhile waits, and does what only it can do: it runs the handlers of
/// signals, and calls `asked` (None: nobody), so that this is never called from another thread.
/// What either of them throws ends the work and comes out, and so does `Cancelled` where `asked`
/// has returned False.
void watch(const pybind11::object& asked, const std::function<void(const shot::Progress&)>& work);

/// The same for work that returns something.
template <class Work>
auto watched(const pybind11::object& asked, const Work& work) {
  std::optional<decltype(work(shot::Progress()))> made;
  watch(asked, [&](const shot::Progress& progress) { made.emplace(work(progress)); });
  return *std::move(made);
}

}  // namespace cornerpin::python

#endif
