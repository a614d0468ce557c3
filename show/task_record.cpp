// SPDX-License-Identifier: BSD-3-Clause
#include "show/task_record.h"

#include <algorithm>
#include <filesystem>

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

Json orNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

std::string textOrEmpty(const LinedJson& json) { return json.isNull() ? "" : json.text(); }

std::vector<std::string> textsIn(const LinedJson& list) {
  std::vector<std::string> texts;
  for (const LinedJson& item : list.items()) texts.push_back(item.text());
  return texts;
}

ShotState stateIn(const LinedJson& json) {
  for (ShotState state : {ShotState::Solved, ShotState::Degraded, ShotState::Failed}) {
    if (json.text() == nameOf(state)) return state;
  }
  json.refuseValue("solved, degraded or failed is needed");
}

}  // namespace

const char* nameOf(ShotState state) {
  switch (state) {
    case ShotState::Solved:
      return "solved";
    case ShotState::Degraded:
      return "degraded";
    case ShotState::Failed:
      return "failed";
  }
  return "";
}

std::string jsonLine(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string recordText(const TaskRecord& record) {
  const ShotTask& task = record.task;
  const shot::Version& program = record.program;
  const Json json = {
      {"cornerpin_task", 1},
      {"key", task.key},
      {"name", task.name},
      {"input", {{"name", task.input}, {"sha256", orNull(task.sha256)}}},
      {"options", task.options},
      {"program",
       {{"name", program.program},
        {"version", program.version},
        {"commit", orNull(program.commit)}}},
      {"state", nameOf(record.state)},
      {"message", orNull(record.message)},
      {"files", record.state == ShotState::Failed ? Json::array() : Json(task.files)},
      {"figures", record.figures ? figuresJson(*record.figures) : Json(nullptr)}};
  return jsonLine(json) + "\n";
}

std::set<std::string> recordedShots(const std::string& folder) {
  const std::string ending = recordNameOf("");
  std::set<std::string> shots;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    const std::size_t stem = name.size() - std::min(name.size(), ending.size());
    if (stem > 0 && name.compare(stem, ending.size(), ending) == 0) {
      shots.insert(name.substr(0, stem));
    }
  }
  return shots;
}

TaskRecord readRecord(const std::string& path) {
  const LinedJsonFile file(path);
  const LinedJson& whole = file.whole();
  if (whole.at("cornerpin_task").integer() != 1) {
    whole.at("cornerpin_task").refuseValue("only version 1 is known");
  }
  TaskRecord record;
  record.task.key = whole.at("key").text();
  record.task.name = whole.at("name").text();
  record.task.input = whole.at("input").at("name").text();
  record.task.sha256 = textOrEmpty(whole.at("input").at("sha256"));
  record.task.options = textsIn(whole.at("options"));
  record.task.files = textsIn(whole.at("files"));
  const LinedJson& program = whole.at("program");
  record.program = {program.at("name").text(), program.at("version").text(),
                    textOrEmpty(program.at("commit"))};
  record.state = stateIn(whole.at("state"));
  record.message = textOrEmpty(whole.at("message"));
  if (record.state != ShotState::Failed && whole.at("figures").isNull()) {
    whole.at("figures").refuse("a shot that did not fail has figures");
  }
  if (!whole.at("figures").isNull()) record.figures = figuresIn(whole.at("figures"));
  return record;
}

Json listedJson(const TaskRecord& record) {
  return {{"name", record.task.name},
          {"input", record.task.input},
          {"state", nameOf(record.state)},
          {"message", orNull(record.message)},
          {"files", record.task.files},
          {"figures", record.figures ? figuresJson(*record.figures) : Json(nullptr)}};
}

}  // namespace cornerpin
