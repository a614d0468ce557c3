// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_ELEMENT_TYPES_H
#define TESTS_SUPPORT_ELEMENT_TYPES_H

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

// The element types that vectors and matrices are built for.
using ElementTypes = testing::Types<float, double, int, char*>;

// Names typed tests by their element type: TYPED_TEST_SUITE(Suite, Types, ElementTypeName).
struct ElementTypeName {
  template <class T>
  static std::string GetName(int) {
    if (std::is_same_v<T, float>) return "float";
    if (std::is_same_v<T, double>) return "double";
    return std::is_same_v<T, int> ? "int" : "text";
  }
};

#endif
