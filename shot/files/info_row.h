// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_INFO_ROW_H
#define SHOT_FILES_INFO_ROW_H

#include <string>

#include "shot/files/file_look.h"
#include "shot/solve/provenance.h"

namespace cornerpin {

/// A line of a table for people: what it is about, and the text in a column of its own.
std::string infoRow(const std::string& label, const std::string& text);

/// The first lines about a file: its name, what it is, and how large.
std::string fileRows(const FileLook& look, const std::string& kind);

/// "cornerpin 0.2.0, commit 1234abcd"
std::string describe(const ProgramVersion& program);

/// "shot.csv, 240 rows, SHA-256 56f0..."
std::string describe(const InputFile& input);

}  // namespace cornerpin

#endif
