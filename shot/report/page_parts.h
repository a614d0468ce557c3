// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_PAGE_PARTS_H
#define SHOT_REPORT_PAGE_PARTS_H

#include <string_view>

/// What every page is made of, as the folder report/ has it. Made when the program is built.
namespace cornerpin {

/// The document, with places for all else: {{policy}}, {{title}}, {{style}}, {{data}},
/// {{pictures}}, {{libraries}} and {{script}}.
std::string_view pageTemplate();

/// The style sheets, as one.
std::string_view pageStyle();

/// The classic script of other people's libraries, each with its licence.
std::string_view pageLibraries();

/// The page's own modules, as one.
std::string_view pageScript();

}  // namespace cornerpin

#endif
