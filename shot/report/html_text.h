// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_HTML_TEXT_H
#define SHOT_REPORT_HTML_TEXT_H

#include <string>
#include <string_view>

namespace cornerpin {

/// What HTML and XML show as this text, in an element or in an attribute with double quotes. Bytes
/// that are not UTF-8 and characters that XML cannot have become the replacement character.
std::string htmlText(std::string_view text);

}  // namespace cornerpin

#endif
