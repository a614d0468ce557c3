// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_KEYFRAMES_SECTIONS_H
#define TESTS_SHOT_FILES_KEYFRAMES_SECTIONS_H

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "shot/plane/points.h"
#include "tests/shot/files/made_pin.h"

namespace made {

// The values of each section by frame.
using Rows = std::map<int, std::vector<double>>;
inline std::map<std::string, Rows> sectionsIn(const std::string& text) {
  std::map<std::string, Rows> sections;
  std::string heading;
  for (const std::string& line : parts(text, '\n')) {
    if (line.empty()) continue;
    if (line[0] != '\t') {
      heading = line;
      continue;
    }
    std::vector<std::string> cells = parts(line.substr(1), '\t');
    if (cells[0] == "Frame" || std::isalpha(cells[0][0]) != 0) continue;
    std::vector<double> values;
    for (std::size_t i = 1; i < cells.size(); ++i) values.push_back(std::stod(cells[i]));
    EXPECT_TRUE(sections[heading].emplace(std::stoi(cells[0]), values).second) << line;
  }
  return sections;
}

// The sections' placement of a point, y down: position + R S (p - anchor).
inline cornerpin::Point placed(const std::map<std::string, Rows>& sections, int frame,
                               cornerpin::Point p) {
  const auto row = [&](const char* name) { return sections.at(name).at(frame); };
  const std::vector<double> anchor = row("Anchor Point");
  const std::vector<double> position = row("Position");
  const std::vector<double> scale = row("Scale");
  const double turn = row("Rotation").at(0) * std::acos(-1.0) / 180.0;
  const double x = (p.x - anchor.at(0)) * scale.at(0) / 100.0;
  const double y = (p.y - anchor.at(1)) * scale.at(1) / 100.0;
  return {position.at(0) + x * std::cos(turn) - y * std::sin(turn),
          position.at(1) + x * std::sin(turn) + y * std::cos(turn)};
}

}  // namespace made

#endif
