// SPDX-License-Identifier: BSD-3-Clause

// write_manual FOLDER: writes the manual page and the shells' completions, from the options that
// the program is made of.

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <system_error>

#include "tools/cornerpin/completions.h"
#include "tools/cornerpin/man_page.h"
#include "tools/cornerpin/program.h"

namespace {

using namespace cornerpin;

void write(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  if (!(out << text).flush()) throw std::system_error(errno, std::generic_category(), path);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: write_manual FOLDER\n", stderr);
    return 2;
  }
  try {
    const Program program;
    const std::string folder = std::string(argv[1]) + "/";
    write(folder + "cornerpin.1", manPageOf(program));
    write(folder + "cornerpin.bash", bashCompletionsOf(program));
    write(folder + "_cornerpin", zshCompletionsOf(program));
    write(folder + "cornerpin.fish", fishCompletionsOf(program));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "write_manual: %s\n", error.what());
    return 1;
  }
  return 0;
}
