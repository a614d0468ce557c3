// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_REFUSED_ROWS_H
#define SHOT_FILES_REFUSED_ROWS_H

#include <cstddef>
#include <vector>

#include "shot/files/input_error.h"

namespace cornerpin {

/// Gathers what is wrong with the rows of a file, so that people learn of the first ten at once.
class RefusedRows {
 public:
  /// Raises where `kMost` others have come already: a file of nothing but such rows ends there.
  void add(const InputError& error);

  /// Behind which no row can be read: named whatever came before.
  void addLast(const InputError& error) {
    if (!ended_) last_.push_back(error);
  }

  /// Throws the first `kNamed` rows, one a line, with the number of the others and what came last;
  /// does nothing where no row was refused.
  void raise() const;

  static constexpr std::size_t kNamed = 10;
  static constexpr std::size_t kMost = 10000;

 private:
  std::vector<InputError> named_;
  std::size_t others_ = 0;
  bool ended_ = false;            // more than the most have come
  std::vector<InputError> last_;  // one at most
};

}  // namespace cornerpin

#endif
