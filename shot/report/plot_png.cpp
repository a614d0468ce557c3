// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/plot_png.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace cornerpin {

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// A file without a name.
File nameless() {
  File file(std::tmpfile(), std::fclose);
  if (!file) throw std::system_error(errno, std::generic_category(), "a temporary file");
  return file;
}

// Runs the renderer with these files as its standard input and output; whether it was there and all
// went well.
bool render(const std::vector<const char*>& arguments, std::FILE* in, std::FILE* out) {
  std::vector<char*> words;
  words.reserve(arguments.size() + 2);
  words.push_back(const_cast<char*>("rsvg-convert"));
  for (const char* argument : arguments) words.push_back(const_cast<char*>(argument));
  words.push_back(nullptr);
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawn_file_actions_adddup2(&files, ::fileno(in), STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&files, ::fileno(out), STDOUT_FILENO);
  ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = -1;
  const int error = ::posix_spawnp(&child, words[0], &files, nullptr, words.data(), environ);
  ::posix_spawn_file_actions_destroy(&files);
  if (error != 0) return false;
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string contentOf(std::FILE* file) {
  std::string content;
  std::array<char, 4096> block{};
  std::rewind(file);
  for (std::size_t got = 0; (got = std::fread(block.data(), 1, block.size(), file)) > 0;)
    content.append(block.data(), got);
  return content;
}

}  // namespace

void requirePngRenderer() {
  const File in = nameless();
  const File out = nameless();
  if (render({"--version"}, in.get(), out.get())) return;
  throw std::runtime_error(
      "a plot in PNG is drawn by rsvg-convert, which is not there: install the package "
      "librsvg2-bin, or name a file that ends in .svg");
}

std::string pngOf(const std::string& svg) {
  const File in = nameless();
  const File out = nameless();
  const bool isWritten =
      std::fwrite(svg.data(), 1, svg.size(), in.get()) == svg.size() && std::fflush(in.get()) == 0;
  std::rewind(in.get());
  if (!isWritten) throw std::system_error(errno, std::generic_category(), "a temporary file");
  if (!render({"--format", "png"}, in.get(), out.get())) {
    throw std::runtime_error(
        "rsvg-convert does not draw the plot: name a file that ends in .svg, and draw that");
  }
  return contentOf(out.get());
}

}  // namespace cornerpin
