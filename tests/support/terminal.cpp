// SPDX-License-Identifier: BSD-3-Clause
#include "tests/support/terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/child.h"

std::string writtenOnATerminal(const std::function<void(const std::string& name)>& use) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) {
    throw std::runtime_error("no terminal");
  }
  const std::string name = ::ptsname(terminal);
  const int held = ::open(name.c_str(), O_RDWR | O_NOCTTY);  // until the child has it open
  const pid_t child = startChild([&] { use(name); });
  ::close(held);
  std::string text;
  char block[4096];
  for (;;) {
    const ssize_t count = ::read(terminal, block, sizeof block);
    if (count <= 0) break;  // an error once the last writer is gone
    text.append(block, static_cast<std::size_t>(count));
  }
  ::close(terminal);
  if (!endsWell(child)) throw std::runtime_error("the child on the terminal failed");
  return text;
}
