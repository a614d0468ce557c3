// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_TASK_RECORD_H
#define SHOW_TASK_RECORD_H

#include <optional>
#include <set>
#include <string>

#include "show/shot_figures.h"
#include "show/shot_task.h"

namespace cornerpin {

/// What became of a shot: the word for the exit code of its solve.
enum class ShotState { Solved, Degraded, Failed };
const char* nameOf(ShotState state);

/// What is kept of a task that was done (docs/batch.md). Nothing in it depends on where or when.
struct TaskRecord {
  ShotTask task;
  shot::Version program;
  ShotState state = ShotState::Failed;
  std::string message;                 ///< why it failed; empty where it did not
  std::optional<ShotFigures> figures;  ///< none where it failed
};

/// As JSON, with a line end.
std::string recordText(const TaskRecord& record);

/// The names of the shots whose records are in a folder.
std::set<std::string> recordedShots(const std::string& folder);

/// Throws `shot::InputError` for what is no record.
TaskRecord readRecord(const std::string& path);

/// What a record is in the list of a whole batch: without its key and program.
nlohmann::ordered_json listedJson(const TaskRecord& record);

/// JSON on one line; bytes that are no UTF-8 become the replacement character.
std::string jsonLine(const nlohmann::ordered_json& json);

}  // namespace cornerpin

#endif
