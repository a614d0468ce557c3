// SPDX-License-Identifier: BSD-3-Clause
#ifndef TOOLS_CORNERPIN_OUTPUT_PATHS_H
#define TOOLS_CORNERPIN_OUTPUT_PATHS_H

#include <string>
#include <system_error>

/// Where a subcommand writes. Checked before anything is read, so that nothing is lost after a long
/// run.
namespace cornerpin {

/// "-" and "/dev/stdout".
bool isStandardOutput(const std::string& path);

/// Refuses an output that would replace the very file that is read ("-": standard input): throws
/// `std::invalid_argument`. Links are followed; an empty output is none.
void refuseInput(const std::string& input, const std::string& output);

/// Refuses the outputs of two options of which the second would replace the first: throws
/// `std::invalid_argument` with the names of both. Two writers may share a device or a pipe.
void refuseSame(const char* firstOption, const std::string& first, const char* secondOption,
                const std::string& second);

/// Refuses an output that cannot be written, as far as that can be told beforehand: throws
/// `std::runtime_error` with the path and what to do. Leaves nothing behind; an empty output is
/// none, "-" standard output.
void requireWritable(const std::string& path);

/// What went wrong with a file, and what to do where that is known.
std::string textOf(const std::system_error& error);

/// Refuses a folder in the place of a file.
void refuseFolder(const std::string& path);

/// Prints on standard output. Throws `std::system_error`.
void print(const std::string& text);

}  // namespace cornerpin

#endif
