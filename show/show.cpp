// SPDX-License-Identifier: BSD-3-Clause
#include "show/show.h"

#include <cornerpin/shot.h>
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <unordered_map>

#include "show/wording.h"

namespace cornerpin {

namespace {

constexpr std::size_t kLongestName = 200;  // in bytes: with endings it stays within 255

std::string endingOf(const std::string& word) {
  for (const shot::FileFormat& format : shot::fileFormats()) {
    if (format.word == word && !format.extension.empty()) return format.extension;
  }
  const bool isScript = word == "blender" || word == "natron";
  return fmt::format(".{}.{}", word, isScript ? "py" : "txt");
}

// A file, and the shot that it is made of.
using Owners = std::unordered_map<std::string, const ShowShot*>;

void addFile(const std::string& file, const ShowShot& shot, Owners& owners) {
  const auto [found, isNew] = owners.emplace(file, &shot);
  if (isNew) return;
  const ShowShot& other = *found->second;
  if (&other == &shot) {
    throw std::invalid_argument(fmt::format("{} is to be written twice of shot {}: leave one out",
                                            inQuotes(file), inQuotes(shot.name)));
  }
  throw std::invalid_argument(
      fmt::format("the shots of {} and {} would both write {}: name one of "
                  "them otherwise",
                  inQuotes(other.input), inQuotes(shot.input), inQuotes(file)));
}

}  // namespace

ShotOptions withOthers(ShotOptions options, const ShotOptions& others) {
  options.insert(others.begin(), others.end());
  return options;
}

std::vector<std::string> wordsOf(const ShotOptions& options) {
  std::vector<std::string> words;
  for (const auto& [name, values] : options) {
    if (values.empty()) words.push_back("--" + name);
    for (const std::string& value : values) words.push_back(fmt::format("--{}={}", name, value));
  }
  return words;
}

ShotExport exportIn(const std::string& text) {
  const std::size_t colon = std::min(text.find(':'), text.size());
  ShotExport made{text.substr(0, colon), colon < text.size() ? text.substr(colon + 1) : ""};
  if (made.format.empty() || (colon < text.size() && made.kind.empty())) {
    throw std::invalid_argument(
        fmt::format("an export is a format such as nk, or nk:stabilise, not {}", inQuotes(text)));
  }
  return made;
}

std::string textOf(const ShotExport& made) {
  return made.kind.empty() ? made.format : made.format + ":" + made.kind;
}

std::string fileNameOf(const std::string& shot, const ShotExport& made) {
  const std::string kind = made.kind.empty() || made.kind == "pin" ? "" : "." + made.kind;
  return shot + kind + endingOf(made.format);
}

std::vector<std::string> filesOf(const Show& show, const ShowShot& shot) {
  std::vector<std::string> files = {shot.name + ".json"};
  for (const ShotExport& made : show.exports) files.push_back(fileNameOf(shot.name, made));
  if (show.pages) files.push_back(shot.name + ".html");
  return files;
}

std::string recordNameOf(const std::string& shot) { return shot + ".task.json"; }

std::string shotNameOf(const std::string& input) {
  std::filesystem::path name = std::filesystem::path(input).filename();
  if (name.extension() == ".gz") name = name.stem();
  return name.stem().string();
}

std::string flawOfShotName(const std::string& name) {
  if (name.empty()) return "a shot's name is empty";
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
  if (name.front() == '.' || name.find_first_of("/\\") != std::string::npos ||
      std::any_of(name.begin(), name.end(), isControl)) {
    return fmt::format(
        "{} cannot be a shot's name, after which files are called: no slashes, no "
        "control characters, no dot in front",
        inQuotes(name));
  }
  const std::string ofRecords = ".task";
  if (name.size() >= ofRecords.size() &&
      name.compare(name.size() - ofRecords.size(), ofRecords.size(), ofRecords) == 0) {
    return fmt::format("{} cannot be a shot's name: its result would be called like a record",
                       inQuotes(name));
  }
  if (name.size() > kLongestName) {
    return fmt::format("the shot's name {} is longer than {} bytes", inQuotes(name), kLongestName);
  }
  return "";
}

void checkNames(const Show& show) {
  if (show.shots.empty()) throw std::invalid_argument("there is no shot");
  static const ShowShot ours{"batch", "", "the whole batch", {}, ""};
  Owners owners;
  for (const char* file : {kShowFile, kShowPage}) addFile(file, ours, owners);
  for (const ShowShot& shot : show.shots) {
    if (const std::string flaw = flawOfShotName(shot.name); !flaw.empty()) {
      throw std::invalid_argument(fmt::format("{}: {}", shot::printable(shot.input), flaw));
    }
    for (const std::string& file : filesOf(show, shot)) addFile(file, shot, owners);
    addFile(recordNameOf(shot.name), shot, owners);
  }
}

}  // namespace cornerpin
