// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_MAN_PAGE_H
#define TOOLS_CORNERPIN_MAN_PAGE_H

#include <string>

namespace cornerpin {

class Program;

/// The manual page cornerpin(1), in the man macros of roff: what --help-all prints of every
/// command.
std::string manPageOf(const Program& program);

}  // namespace cornerpin

#endif
