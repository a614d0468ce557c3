// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_TRACKS_IN_H
#define TESTS_SHOT_FILES_TRACKS_IN_H

#include <string>

#include "shot/files/input_error.h"
#include "shot/files/track_reader.h"
#include "tests/support/files.h"

namespace cornerpin {

/// The path of a file that another program wrote.
inline std::string sampleFile(const std::string& name) {
  return std::string(CORNERPIN_TEST_SAMPLES) + "/" + name;
}

/// What `readTracks` makes of a text; of a format, or of the one that it is found to be.
inline Tracks tracksIn(const std::string& text, ReadTrace* trace = nullptr,
                       const FrameRange& frames = {}) {
  const TemporaryFolder folder;
  writeFile(folder / "in.txt", text);
  return readTracks(folder / "in.txt", {}, frames, trace);
}

/// What is said of a text that is refused, with "in.txt" for the file; empty where it is read.
inline std::string refusalOf(const std::string& text, ReadTrace* trace = nullptr) {
  const TemporaryFolder folder;
  const std::string path = folder / "in.txt";
  writeFile(path, text);
  try {
    readTracks(path, {}, {}, trace);
  } catch (const InputError& error) {
    std::string message = error.what();
    for (std::size_t at = message.find(path); at != std::string::npos; at = message.find(path))
      message.replace(at, path.size(), "in.txt");
    return message;
  }
  return "";
}

}  // namespace cornerpin

#endif
