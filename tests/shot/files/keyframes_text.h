// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_KEYFRAMES_TEXT_H
#define TESTS_SHOT_FILES_KEYFRAMES_TEXT_H

#include <string>

namespace made {

// Eight lines.
inline std::string keyframesHeader(const std::string& version = "6.0") {
  return "Adobe After Effects " + version +
         " Keyframe Data\n\n\tUnits Per Second\t24\n\tSource Width\t1920\n\tSource Height\t1080\n"
         "\tSource Pixel Aspect Ratio\t1\n\tComp Pixel Aspect Ratio\t1\n\n";
}

// A section of positions; rows as "0\t1\t2".
inline std::string section(const std::string& heading, const std::string& rows) {
  return heading + "\n\tFrame\tX pixels\tY pixels\n" + rows + "\n";
}

inline std::string cornerSection(int number, const std::string& rows) {
  return section("Effects\tADBE Corner Pin #1\tADBE Corner Pin-000" + std::to_string(number), rows);
}

inline std::string keyframes(const std::string& sections) {
  return keyframesHeader() + sections + "End of Keyframe Data\n";
}

// Corner k (upper left, upper right, lower left, lower right) is at (100 k + frame, 10 k) in the
// frames 0 and 1.
inline std::string fourCorners() {
  std::string text;
  for (int k = 1; k <= 4; ++k) {
    std::string rows;
    for (int frame = 0; frame <= 1; ++frame) {
      rows += "\t" + std::to_string(frame);
      rows += "\t" + std::to_string(100 * k + frame);
      rows += "\t" + std::to_string(10 * k) + "\n";
    }
    text += cornerSection(k, rows);
  }
  return text;
}

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace made

#endif
