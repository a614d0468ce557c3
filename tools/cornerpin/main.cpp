// SPDX-License-Identifier: BSD-3-Clause
#include <cornerpin/shot.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "tools/cornerpin/command.h"
#include "tools/cornerpin/output_paths.h"
#include "tools/cornerpin/program.h"

namespace {

using namespace cornerpin;

// A closed standard stream becomes one that fails: no file opened later takes its place.
void guardStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) != -1) continue;
    const int opened = ::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (opened >= 0 && opened != fd) ::close(opened);
  }
}

extern "C" void removeAndEnd(int signal) {
  shot::removeTemporaryFiles();
  ::raise(signal);  // the handler is gone by now: it ends the process
}

// What ends the run takes the unfinished files along, unless the caller has it ignored.
void guardUnfinishedFiles() {
  for (int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action.sa_handler = removeAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

// Each line of the text begins with who says it.
int fail(const std::string& text, ExitCode code) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::cerr << "cornerpin: " << shot::printable(line) << '\n';
  }
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  guardStandardStreams();
  guardUnfinishedFiles();
  // A reader that goes away and a file too large end no process: the write fails.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    return Program().run(argc, argv);
  } catch (const shot::InputError& error) {
    return fail(error.what(), kUnreadable);
  } catch (const std::invalid_argument& error) {
    return fail(error.what(), kUsage);
  } catch (const std::bad_alloc&) {
    return fail("out of memory: close other programs, or solve fewer frames at once", kFailure);
  } catch (const std::system_error& error) {
    return fail(textOf(error), kFailure);
  } catch (const std::exception& error) {
    return fail(error.what(), kFailure);
  }
}
