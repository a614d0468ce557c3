// SPDX-License-Identifier: BSD-3-Clause
#include "show/input_files.h"

#include <cornerpin/shot.h>
#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "show/manifest.h"
#include "show/wording.h"

namespace cornerpin {

namespace fs = std::filesystem;

namespace {

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
  if (shots.size() == before) refuseFile(folder, 0, "no file in this folder holds tracks");
}

void addPattern(const std::string& pattern, std::vector<ShowShot>& shots) {
  glob_t found{};
  const int code = ::glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
  std::vector<std::string> files(found.gl_pathv, found.gl_pathv + (code == 0 ? found.gl_pathc : 0));
  ::globfree(&found);
  if (files.empty()) refuseFile(pattern, 0, "no file has such a name");
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) shots.push_back(shotOf(file));
}

bool isPattern(const std::string& word) { return word.find_first_of("*?[") != std::string::npos; }

// Whether a file is to be read as a manifest: as JSON that holds no tracks.
bool isManifest(const std::string& path) {
  const shot::FileKind kind = shot::fileKindOf(path);
  return kind.format == "json" && kind.holds != "tracks";
}

}  // namespace

bool holdsTracks(const std::string& path) {
  try {
    return shot::fileKindOf(path).holds == "tracks";
  } catch (const shot::InputError&) {
    return false;
  }
}

Show showOf(const std::vector<std::string>& words, const ShotOptions& typed) {
  Show show;
  for (const std::string& word : words) {
    std::error_code ignored;
    if (fs::is_directory(word, ignored)) {
      addFolder(word, show.shots);
    } else if (!fs::exists(word, ignored) && isPattern(word)) {
      addPattern(word, show.shots);
    } else if (fs::exists(word, ignored) && !fs::is_regular_file(word, ignored)) {
      refuseFile(word, 0, "this is neither a file nor a folder");
    } else if (!isManifest(word)) {
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
