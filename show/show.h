// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOW_H
#define SHOW_SHOW_H

#include <map>
#include <string>
#include <vector>

namespace cornerpin {

/// Options of `cornerpin solve` by their long names without dashes, each with its values as they
/// are typed; none for a flag.
using ShotOptions = std::map<std::string, std::vector<std::string>>;

/// The options of one, and where it has none of that name, those of the other.
ShotOptions withOthers(ShotOptions options, const ShotOptions& others);

/// As arguments, in the order of the names: "--drop=t007", "--fill".
std::vector<std::string> wordsOf(const ShotOptions& options);

/// A file that is written of every shot besides its result: a word of --to, and of --as or empty.
struct ShotExport {
  std::string format;
  std::string kind;
};

/// Reads "nk" or "nk:stabilise".
ShotExport exportIn(const std::string& text);
std::string textOf(const ShotExport& made);

/// What it is called for a shot: "sh010.nk", "sh010.stabilise.nk".
std::string fileNameOf(const std::string& shot, const ShotExport& made);

struct ShowShot {
  std::string name;    ///< what its files are called
  std::string folder;  ///< that the names of files are relative to
  std::string input;   ///< name of the file with its tracks
  ShotOptions options;
  std::string where;  ///< for people: where a manifest has it; empty without one
};

/// Shots, and what is made of each.
struct Show {
  std::vector<ShowShot> shots;
  std::vector<ShotExport> exports;
  bool pages = false;
};

/// The files that are made of a shot: the result first, then the exports in their order, then the
/// page.
std::vector<std::string> filesOf(const Show& show, const ShowShot& shot);

/// What a task's record is called.
std::string recordNameOf(const std::string& shot);

/// Names in the output folder that no shot's files take.
constexpr const char* kShowFile = "batch.json";
constexpr const char* kShowPage = "batch.html";

/// A shot's name after its file: "plates/sh010.csv.gz" gives "sh010".
std::string shotNameOf(const std::string& input);

/// Why a shot's name cannot be a file's; empty where it can.
std::string flawOfShotName(const std::string& name);

/// Refuses a show without shots, names that cannot be files', and two shots of which files would
/// have one name: throws `std::invalid_argument` with the names of both.
void checkNames(const Show& show);

}  // namespace cornerpin

#endif
