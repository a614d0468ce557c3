// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_AS_TYPED_H
#define TOOLS_CORNERPIN_AS_TYPED_H

#include <stdexcept>
#include <string>

namespace cornerpin {

/// A text of the host layer that refuses an option by the name that it has in C++, with the one
/// that is typed: "at: 300 is ..." becomes "--at: 300 is ...". Quads are told by their own names.
std::string textAsTyped(const std::string& text);

/// Does what may refuse options of the host layer in this way.
template <class Work>
auto asTyped(const Work& work) {
  try {
    return work();
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(textAsTyped(error.what()));
  }
}

}  // namespace cornerpin

#endif
