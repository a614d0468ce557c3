// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_WORDING_H
#define SHOW_WORDING_H

#include <cstddef>
#include <cstdint>
#include <string>

/// How things are put for people.
namespace cornerpin {

/// A length in pixels with three digits, or all in front of the point: "0.0918 px", "1234 px".
std::string lengthText(double pixels);

/// "1 frame", "7 frames".
std::string countText(std::size_t count, const std::string& noun);

/// A value as messages show it: in quotes, on one line, its beginning where it is long.
std::string inQuotes(const std::string& value);

/// Throws `shot::InputError`; the line is 0 where none is to blame.
[[noreturn]] void refuseFile(const std::string& file, std::uint32_t line, const std::string& text);

}  // namespace cornerpin

#endif
