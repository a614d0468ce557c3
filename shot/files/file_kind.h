// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_FILE_KIND_H
#define SHOT_FILES_FILE_KIND_H

#include <string>
#include <string_view>

namespace cornerpin {

/// What a file is that begins like this, and what to do, where it is no text: another kind of
/// archive than gzip, UTF-16 text, binary. Empty for all else.
std::string otherThanText(std::string_view beginning);

/// The same where it is no JSON but an archive, UTF-16 text, binary, or CSV with tracks or a
/// result.
std::string otherThanJson(std::string_view beginning);

}  // namespace cornerpin

#endif
