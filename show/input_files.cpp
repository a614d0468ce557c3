// SPDX-License-Identifier: BSD-3-Clause
#include "show/input_files.h"

#include <glob.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "shot/files/byte_source.h"
#include "shot/files/csv_records.h"
#include "shot/files/file_kind.h"
#include "shot/files/format.h"
#include "shot/files/input_error.h"
#include "shot/files/unreadable.h"
#include "shot/solve/glob.h"
#include "show/manifest.h"

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

bool hasTrackColumns(ByteSource& source) {
  CsvRecords csv(source);
  if (!csv.next()) return false;
  const auto has = [&csv](std::string_view name) {
    for (std::size_t i = 0; i < csv.fieldCount(); ++i) {
      if (csv.field(i) == name) return true;
    }
    return false;
  };
  return has("track") && has("frame") && has("x") && has("y");
}

ShowShot shotOf(const fs::path& file) {
  ShowShot shot;
  shot.folder = fs::absolute(file).parent_path().string();
  shot.input = file.filename().string();
  shot.name = shotNameOf(shot.input);
  return shot;
}

void addFolder(const std::string& folder, std::vector<ShowShot>& shots) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().front() != '.' && entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  const std::size_t before = shots.size();
  for (const fs::path& file : files) {
    if (holdsTracks(file.string())) shots.push_back(shotOf(file));
  }
  if (shots.size() == before) throw InputError(folder, "no file in this folder holds tracks");
}

void addPattern(const std::string& pattern, std::vector<ShowShot>& shots) {
  glob_t found{};
  const int code = ::glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
  std::vector<std::string> files(found.gl_pathv, found.gl_pathv + (code == 0 ? found.gl_pathc : 0));
  ::globfree(&found);
  if (files.empty()) throw InputError(pattern, "no file has such a name");
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) shots.push_back(shotOf(file));
}

bool beginsAsManifest(const std::string& path) {
  ByteSource source(path);
  return isManifest(source.beginning());
}

}  // namespace

bool holdsTracks(const std::string& path) {
  try {
    ByteSource source(path);
    const std::string_view beginning = source.beginning();
    if (beginning.empty() || !otherThanText(beginning).empty()) return false;
    const Format format = formatIn(beginning);
    if (format == Format::Csv) return hasTrackColumns(source);
    return format != Format::Json || !isManifest(beginning);
  } catch (const InputError&) {
    return false;
  }
}

Show showOf(const std::vector<std::string>& words, const ShotOptions& typed) {
  Show show;
  for (const std::string& word : words) {
    std::error_code ignored;
    if (fs::is_directory(word, ignored)) {
      addFolder(word, show.shots);
    } else if (!fs::exists(word, ignored) && Glob::isPattern(word)) {
      addPattern(word, show.shots);
    } else if (!fs::exists(word, ignored)) {
      throw InputError(word, whyUnreadable(word, ENOENT));
    } else if (!fs::is_regular_file(word, ignored)) {
      throw InputError(word, "this is neither a file nor a folder");
    } else if (!beginsAsManifest(word)) {
      show.shots.push_back(shotOf(word));
    } else if (words.size() > 1) {
      throw std::invalid_argument("\"" + word + "\" is a manifest, which is given alone");
    } else {
      return readManifest(word, typed);
    }
  }
  for (ShowShot& shot : show.shots) shot.options = typed;
  return show;
}

}  // namespace cornerpin
