// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_USDA_SAMPLES_H
#define TESTS_SHOT_FILES_USDA_SAMPLES_H

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "shot/plane/points.h"

namespace made {

// The text behind a mark, up to the brackets that close what opens there.
inline std::string inBrackets(const std::string& text, const std::string& mark) {
  const std::size_t begin = text.find(mark) + mark.size();
  int depth = 0;
  for (std::size_t i = begin; i < text.size(); ++i) {
    if (text[i] == '{' || text[i] == '(' || text[i] == '[') ++depth;
    if (text[i] == '}' || text[i] == ')' || text[i] == ']') --depth;
    if (depth == 0) return text.substr(begin, i + 1 - begin);
  }
  return "";
}

inline std::vector<double> numbersIn(const std::string& text) {
  std::vector<double> numbers;
  for (const char* at = text.c_str(); *at != '\0';) {
    if (std::isdigit(static_cast<unsigned char>(*at)) == 0 && *at != '-') {
      ++at;
      continue;
    }
    char* end = nullptr;
    numbers.push_back(std::strtod(at, &end));
    at = end;
  }
  return numbers;
}

using Matrix = std::array<std::array<double, 4>, 4>;

inline std::map<int, Matrix> samplesIn(const std::string& text) {
  const std::vector<double> numbers =
      numbersIn(inBrackets(text, "matrix4d xformOp:transform.timeSamples = "));
  std::map<int, Matrix> samples;
  EXPECT_EQ(numbers.size() % 17, 0u);
  for (std::size_t i = 0; i + 17 <= numbers.size(); i += 17) {
    Matrix& matrix = samples[static_cast<int>(numbers[i])];
    for (std::size_t k = 0; k < 16; ++k) matrix[k / 4][k % 4] = numbers[i + 1 + k];
  }
  return samples;
}

// A row (x, y, 0, 1) times the matrix, divided by the last element.
inline cornerpin::Point through(const Matrix& m, cornerpin::Point p) {
  std::array<double, 4> row{};
  for (std::size_t k = 0; k < 4; ++k) row[k] = p.x * m[0][k] + p.y * m[1][k] + m[3][k];
  return {row[0] / row[3], row[1] / row[3]};
}

}  // namespace made

#endif
