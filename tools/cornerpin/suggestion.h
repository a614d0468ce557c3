// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_SUGGESTION_H
#define TOOLS_CORNERPIN_SUGGESTION_H

#include <string>
#include <vector>

namespace cornerpin {

/// What was probably meant by a word that is none of these: the word that it begins, or the one
/// that is as few typing errors away as one in three letters. Case and dashes in front do not
/// count. Empty where nothing is near.
std::string suggestionFor(const std::string& word, const std::vector<std::string>& known);

}  // namespace cornerpin

#endif
