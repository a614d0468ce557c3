// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_OPTION_WORDS_H
#define SHOT_SOLVE_OPTION_WORDS_H

#include <string>
#include <vector>

#include "shot/solve/result.h"

namespace cornerpin {

/// An option that a result was solved with, as it is typed.
struct OptionWords {
  std::string name;   ///< "--loss"
  std::string value;  ///< "none"; empty for a flag
  bool operator==(const OptionWords& other) const {
    return name == other.name && value == other.value;
  }
};

/// The options that are not what they are without being given, as far as they are known, one for
/// each time that it was given. Those that change no bit of a result are not among them.
std::vector<OptionWords> optionWords(const ShotResult& result);

/// "--loss none --drop 'n*'", for a shell; empty without any.
std::string textOf(const std::vector<OptionWords>& options);

}  // namespace cornerpin

#endif
