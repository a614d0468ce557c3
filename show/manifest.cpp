// SPDX-License-Identifier: BSD-3-Clause
#include "show/manifest.h"

#include <filesystem>
#include <stdexcept>

#include "show/lined_json.h"

namespace cornerpin {

namespace {

constexpr const char* kVersion = "cornerpin_batch";

// A value as it is typed.
std::string typed(const LinedJson& value) {
  if (value.isObject() || value.isList()) value.refuseValue("a text or a number is needed");
  const nlohmann::json& scalar = value.scalar();
  if (!scalar.is_string() && !scalar.is_number()) {
    value.refuseValue("a text or a number is needed");
  }
  if (!scalar.is_string()) return scalar.dump();
  if (value.text().empty()) value.refuse("must not be empty");
  return value.text();
}

std::vector<std::string> valuesIn(const LinedJson& value) {
  if (!value.isList()) return {typed(value)};
  if (value.items().empty()) value.refuse("the list is empty: leave the option out");
  std::vector<std::string> values;
  for (const LinedJson& item : value.items()) values.push_back(typed(item));
  return values;
}

// Takes options over those that are there; false takes one away.
void setOptions(const LinedJson& object, ShotOptions& options) {
  for (const LinedJson::Member& member : object.members()) {
    const bool isFlag = !member.value.isList() && member.value.scalar().is_boolean();
    if (isFlag && !member.value.flag()) {
      options.erase(member.name);
    } else {
      options[member.name] = isFlag ? std::vector<std::string>() : valuesIn(member.value);
    }
  }
}

ShotExport exportOf(const LinedJson& value) {
  try {
    return cornerpin::exportIn(value.text());
  } catch (const std::invalid_argument& error) {
    value.refuse(error.what());
  }
}

ShowShot shotIn(const LinedJson& object, const std::string& folder, const ShotOptions& common) {
  object.allow({"name", "input", "options"});
  const LinedJson* input = object.find("input");
  if (input == nullptr) object.refuse("the shot has no input: name the file with its tracks");
  if (input->text().empty() || input->text() == "-") input->refuseValue("a file's name is needed");
  ShowShot shot;
  shot.folder = folder;
  shot.where = object.where();
  shot.input = input->text();
  const LinedJson* name = object.find("name");
  shot.name = name != nullptr ? name->text() : shotNameOf(shot.input);
  if (const std::string flaw = flawOfShotName(shot.name); !flaw.empty()) {
    (name != nullptr ? name : input)->refuse(flaw);
  }
  shot.options = common;
  if (const LinedJson* options = object.find("options")) setOptions(*options, shot.options);
  return shot;
}

void requireVersion(const LinedJson& whole) {
  const LinedJson* version = whole.find(kVersion);
  if (version == nullptr) {
    whole.refuse("this is no manifest: the member \"cornerpin_batch\" is missing");
  }
  if (version->isObject() || version->isList() || version->scalar() != 1) {
    version->refuseValue("only version 1 is known");
  }
}

}  // namespace

Show readManifest(const std::string& path, const ShotOptions& typed) {
  const LinedJsonFile file(path);
  const LinedJson& whole = file.whole();
  requireVersion(whole);
  whole.allow({kVersion, "options", "exports", "report", "shots"});
  Show show;
  ShotOptions common;
  if (const LinedJson* options = whole.find("options")) setOptions(*options, common);
  common = withOthers(typed, common);
  if (const LinedJson* exports = whole.find("exports")) {
    for (const LinedJson& item : exports->items()) show.exports.push_back(exportOf(item));
  }
  if (const LinedJson* report = whole.find("report")) show.pages = report->flag();
  const LinedJson* shots = whole.find("shots");
  if (shots == nullptr || shots->items().empty()) whole.refuse("there is no shot in \"shots\"");
  const std::string folder = std::filesystem::absolute(path).parent_path().string();
  show.shots.reserve(shots->items().size());
  for (const LinedJson& item : shots->items()) show.shots.push_back(shotIn(item, folder, common));
  return show;
}

}  // namespace cornerpin
