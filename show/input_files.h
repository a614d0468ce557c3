// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_INPUT_FILES_H
#define SHOW_INPUT_FILES_H

#include <string>
#include <vector>

#include "show/show.h"

namespace cornerpin {

/// The shots that words on a command line stand for: a manifest, which is alone, or as many
/// folders, patterns and files with tracks as there are. Of a folder the shots are the files in it
/// that hold tracks by what they begin with, in the order of their names; of a pattern (`*`, `?`,
/// `[ab]`) the files that are there, in that order, and all of them. Their inputs' names have no
/// folder: nothing depends on where they are.
///
/// Throws `shot::InputError` for what is not there or cannot be read, and for a folder or a pattern
/// without any file.
///
/// \param typed  options of all shots that have none of their own
Show showOf(const std::vector<std::string>& words, const ShotOptions& typed = {});

/// Whether a file begins as one with tracks does.
bool holdsTracks(const std::string& path);

}  // namespace cornerpin

#endif
