// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_NODE_SCRIPTS_H
#define TESTS_SHOT_FILES_NODE_SCRIPTS_H

#include <algorithm>
#include <string>

namespace cornerpin {

/// A line with the row of a tracker with four columns.
inline std::string row(const std::string& name, const std::string& x, const std::string& y,
                       const std::string& enable = "1") {
  return " { " + enable + " \"" + name + "\" " + x + " " + y + " }\n";
}

/// A tracker of lines like that; the first is line 9.
inline std::string trackerNode(const std::string& name, const std::string& rows) {
  const auto count = std::count(rows.begin(), rows.end(), '\n');
  return "Tracker4 {\n tracks { { 1 4 " + std::to_string(count) +
         " }\n{ { 5 1 20 enable e 1 }\n{ 3 1 75 name name 1 }\n{ 2 1 58 track_x track_x 1 }\n"
         "{ 2 1 58 track_y track_y 1 }\n}\n{\n" +
         rows + "} }\n name " + name + "\n}\n";
}

}  // namespace cornerpin

#endif
