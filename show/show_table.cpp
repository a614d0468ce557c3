// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "show/wording.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kListed = 5;
constexpr std::size_t kLongest = 100;  // bytes of a message
constexpr double kEndless = std::numeric_limits<double>::infinity();

// Larger for what is worse.
double badness(const TaskRecord& record) {
  if (!record.figures) return kEndless;
  const double worst = record.figures->worst;
  return std::isnan(worst) ? std::numeric_limits<double>::max() : worst;
}

std::string row(const std::string& label, const std::string& text) {
  return fmt::format("{:<14}{}\n", label, text);
}

// The first line, cut where it is long.
std::string beginningOf(const std::string& text) {
  const std::string line = text.substr(0, text.find('\n'));
  return line.size() <= kLongest ? line : line.substr(0, kLongest) + "...";
}

}  // namespace

std::size_t ShowTable::count(ShotState state) const {
  return static_cast<std::size_t>(
      std::count_if(records.begin(), records.end(),
                    [state](const TaskRecord& record) { return record.state == state; }));
}

ShowTable readTable(const Show& show, const OutputFolder& folder, std::size_t first,
                    std::size_t last) {
  ShowTable table;
  last = std::min(last, show.shots.size() - 1);
  table.records.reserve(last + 1 - first);
  for (std::size_t i = first; i <= last; ++i) {
    table.records.push_back(readRecord(folder / recordNameOf(show.shots[i].name)));
  }
  return table;
}

std::string showText(const ShowTable& table, const shot::Version& program) {
  const Json made = {{"name", program.program},
                     {"version", program.version},
                     {"commit", program.commit.empty() ? Json(nullptr) : Json(program.commit)}};
  Json counts = {{"shots", table.records.size()}};
  for (ShotState state : {ShotState::Solved, ShotState::Degraded, ShotState::Failed}) {
    counts[nameOf(state)] = table.count(state);
  }
  std::string text = "{\"cornerpin_show\":1,\n\"program\":" + jsonLine(made) +
                     ",\n\"counts\":" + jsonLine(counts) + ",\n\"shots\":[";
  const char* separator = "\n";
  for (const TaskRecord& record : table.records) {
    text += separator + jsonLine(listedJson(record));
    separator = ",\n";
  }
  return text + "\n]}\n";
}

std::vector<const TaskRecord*> worstFirst(const ShowTable& table) {
  std::vector<const TaskRecord*> order;
  order.reserve(table.records.size());
  for (const TaskRecord& record : table.records) order.push_back(&record);
  std::stable_sort(order.begin(), order.end(), [](const TaskRecord* a, const TaskRecord* b) {
    return badness(*a) > badness(*b);
  });
  return order;
}

std::string shortText(const TaskRecord& record) {
  if (!record.figures) return "failed: " + beginningOf(record.message);
  const ShotFigures& figures = *record.figures;
  std::string text = std::isnan(figures.worst) ? "nothing is known" : lengthText(figures.worst);
  if (figures.doubtful > 0) {
    text +=
        fmt::format(", {} of {} doubtful", figures.doubtful, countText(figures.frames, "frame"));
  }
  return text;
}

std::string summaryOf(const ShowTable& table) {
  std::string counts = countText(table.count(ShotState::Solved), "shot");
  for (ShotState state : {ShotState::Degraded, ShotState::Failed}) {
    if (table.count(state) > 0) counts += fmt::format(", {} {}", table.count(state), nameOf(state));
  }
  std::string text = row("solved", fmt::format("{} of {}", counts, table.records.size()));
  std::string label = "worst";
  const std::vector<const TaskRecord*> order = worstFirst(table);
  for (std::size_t i = 0; i < std::min(order.size(), kListed); ++i) {
    text += row(label, shot::printable(order[i]->task.name) + "  " + shortText(*order[i]));
    label.clear();
  }
  return text;
}

}  // namespace cornerpin
