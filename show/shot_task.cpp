// SPDX-License-Identifier: BSD-3-Clause
#include "show/shot_task.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "show/digest.h"

namespace cornerpin {

namespace {

// Of a plain file; empty for all else, and where it cannot be read.
std::string digestOf(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return "";
  std::ifstream file(path, std::ios::binary);
  const std::string digest = sha256Of(file);
  return file.eof() ? digest : "";
}

}  // namespace

std::string pathOf(const ShowShot& shot, const std::string& name) {
  return (std::filesystem::path(shot.folder) / name).string();
}

ShotTask taskOf(const Show& show, const ShowShot& shot, const shot::Version& program) {
  ShotTask task;
  task.name = shot.name;
  task.input = shot.input;
  task.sha256 = digestOf(pathOf(shot, shot.input));
  task.options = wordsOf(shot.options);
  task.files = filesOf(show, shot);
  auto others = nlohmann::json::array();
  if (const auto quads = shot.options.find("quads"); quads != shot.options.end()) {
    for (const std::string& name : quads->second) others.push_back(digestOf(pathOf(shot, name)));
  }
  auto exports = nlohmann::json::array();
  for (const ShotExport& made : show.exports) exports.push_back(textOf(made));
  const nlohmann::json all = {task.name,      task.input,      task.sha256, task.options,
                              task.files,     others,          exports,     program.version,
                              program.commit, "cornerpin_task"};
  std::istringstream text(all.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  task.key = sha256Of(text);
  return task;
}

std::string inputWord(const ShowShot& shot) {
  return shot.input.front() == '-' ? "./" + shot.input : shot.input;
}

std::vector<std::string> solveWords(const Show& show, const ShowShot& shot,
                                    const std::string& folder) {
  std::vector<std::string> words = {"cornerpin", "solve", inputWord(shot)};
  for (std::string& word : wordsOf(shot.options)) words.push_back(std::move(word));
  const auto add = [&](const std::string& option, const std::string& file) {
    words.push_back("--" + option + "=" + (std::filesystem::path(folder) / file).string());
  };
  words.insert(words.end(), {"--to=json", "--as=pin"});
  add("output", shot.name + ".json");
  for (const ShotExport& made : show.exports) {
    words.push_back("--to=" + made.format);
    words.push_back("--as=" + (made.kind.empty() ? "pin" : made.kind));
    add("output", fileNameOf(shot.name, made));
  }
  if (show.pages) add("report", shot.name + ".html");
  words.insert(words.end(), {"--quiet", "--progress=none", "--threads=1"});
  return words;
}

}  // namespace cornerpin
