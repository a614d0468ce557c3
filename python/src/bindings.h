// SPDX-License-Identifier: BSD-3-Clause
#ifndef PYTHON_SRC_BINDINGS_H
#define PYTHON_SRC_BINDINGS_H

#include <pybind11/pybind11.h>

/// The compiled part of the Python module: conversion only. What is given has been checked by the
/// Python part, which also holds the documentation.
namespace cornerpin::python {

/// \{
/// Each adds what its file holds.
void bindErrors();
void bindMatchMove(pybind11::module_& module);
void bindMatrices(pybind11::module_& module);
void bindPlane(pybind11::module_& module);
void bindResult(pybind11::module_& module);
void bindSolve(pybind11::module_& module);
void bindTracks(pybind11::module_& module);
/// \}

}  // namespace cornerpin::python

#endif
