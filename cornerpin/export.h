// SPDX-License-Identifier: BSD-3-Clause
#ifndef CORNERPIN_EXPORT_H
#define CORNERPIN_EXPORT_H

/// \file
/// Marks the names that the library exports. Define `CORNERPIN_STATIC` when linking the static
/// library by hand; the CMake target and the pkg-config file define it by themselves.

/// Marks a declaration as exported.
#if defined(CORNERPIN_STATIC)
#define CORNERPIN_API
#elif defined(_WIN32) && defined(CORNERPIN_BUILDING)
#define CORNERPIN_API __declspec(dllexport)
#elif defined(_WIN32)
#define CORNERPIN_API __declspec(dllimport)
#elif defined(__GNUC__)
#define CORNERPIN_API __attribute__((visibility("default")))
#else
#define CORNERPIN_API
#endif

/// Lets compilers that can check printf-style arguments do so. A member function counts its
/// object as argument 1.
#if defined(__GNUC__)
#define CORNERPIN_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define CORNERPIN_PRINTF(text, first)
#endif

#endif
