// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_MADE_PIN_H
#define TESTS_SHOT_FILES_MADE_PIN_H

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "shot/files/output_file.h"
#include "shot/files/pin.h"
#include "tests/support/files.h"
#include "tests/support/process.h"

namespace made {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

inline cornerpin::Pin pinOf(const cornerpin::Quad& from,
                            const std::vector<cornerpin::Homography>& transforms,
                            int firstFrame = 1) {
  cornerpin::Pin pin;
  pin.name = "sign";
  pin.picture.width = 1920;
  pin.picture.height = 1080;
  pin.from = from;
  for (const cornerpin::Homography& h : transforms) {
    cornerpin::PinFrame frame;
    frame.frame = firstFrame++;
    frame.h = h;
    for (std::size_t i = 0; i < from.size(); ++i) frame.to[i] = map(h, from[i]);
    pin.frames.push_back(frame);
  }
  return pin;
}

// Numbers with many digits, some below 1e-4, in frames 1001 to 1003.
inline std::vector<cornerpin::Homography> someTransforms() {
  return {{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}},
          {{{0.9 + 1.0 / 3.0, 0.1, 12.3}, {-0.07, 1.1, 1.0 / 7.0}, {1.0 / 30000.0, 2e-5, 1.0}}},
          {{{0.8, -0.2, 100.0 / 3.0}, {0.2, 0.8, -5.5}, {-1e-9, 3e-7, 1.0}}}};
}

// What a writer writes, and says.
template <class Write>
std::string textOf(Write write, cornerpin::WriteNotes* notes = nullptr) {
  const TemporaryFolder folder;
  cornerpin::OutputFile out(folder / "out");
  const cornerpin::WriteNotes said = write(out);
  if (notes != nullptr) *notes = said;
  out.commit();
  return readFile(folder / "out");
}

inline std::vector<std::string> parts(const std::string& text, char mark) {
  std::vector<std::string> all;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, mark);) all.push_back(part);
  return all;
}

// What a script calls, line by line, each in words.
inline std::vector<std::vector<std::string>> callsOf(const std::string& script) {
  const TemporaryFolder folder;
  writeFile(folder / "script.py", script);
  const Outcome run =
      runProgram({"/usr/bin/env", "python3", CORNERPIN_DATA "/../tests/shot/files/record_script.py",
                  folder / "script.py"});
  std::vector<std::vector<std::string>> calls;
  if (run.code != 0) return {{"failed", run.err}};
  for (const std::string& line : parts(run.out, '\n')) calls.push_back(parts(line, '|'));
  return calls;
}

}  // namespace made

#endif
