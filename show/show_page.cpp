// SPDX-License-Identifier: BSD-3-Clause
#include "show/show_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "show/wording.h"
#include "show_page_parts.h"

namespace cornerpin {

namespace {

constexpr double kWidth = 60.0;
constexpr double kHeight = 16.0;

// What HTML shows as this text.
std::string htmlText(const std::string& text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

// A file's name as a part of an address.
std::string addressOf(const std::string& file) {
  constexpr std::string_view kPlain = "-._~";
  std::string address;
  for (const char c : file) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isWord = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const bool isPlain = isWord || kPlain.find(c) != std::string_view::npos;
    address += isPlain ? std::string(1, c) : fmt::format("%{:02X}", byte);
  }
  return "./" + address;
}

std::string nameCell(const TaskRecord& record) {
  const std::string page = record.task.name + ".html";
  const auto& files = record.task.files;
  std::string name = htmlText(record.task.name);
  if (std::find(files.begin(), files.end(), page) == files.end()) return name;
  return fmt::format("<a href=\"{}\">{}</a>", addressOf(page), name);
}

std::string numberCell(double value) {
  return std::isfinite(value) ? fmt::format("<td data-value=\"{0}\">{0}", value)
                              : "<td data-value=\"\">";
}

std::string countCell(std::size_t count) {
  return fmt::format("<td data-value=\"{0}\">{0}", count);
}

std::string row(const TaskRecord& record) {
  const char* state = nameOf(record.state);
  std::string text =
      fmt::format("<tr><th scope=\"row\">{}<td class=\"{}\">{}", nameCell(record), state, state);
  if (!record.figures) {
    text += "<td data-value=\"\"><td data-value=\"\"><td data-value=\"\"><td data-value=\"\"><td>";
    return text + "<td class=\"text\">" + htmlText(record.message) + "\n";
  }
  const ShotFigures& figures = *record.figures;
  text += numberCell(figures.worst) + countCell(figures.doubtful) + countCell(figures.frames) +
          numberCell(figures.rms);
  text += fmt::format(
      "<td><svg width=\"120\" height=\"20\" viewBox=\"0 -1 {} {}\" role=\"img\" "
      "aria-label=\"expected error over the frames\"><path d=\"{}\"/></svg>",
      kWidth, kHeight + 2.0, sparkPath(figures.line));
  return text + "<td class=\"text\">" + htmlText(figures.text) + "\n";
}

std::string head(const char* name, const char* first, const char* sorted = "") {
  return fmt::format("<th scope=\"col\" data-first=\"{}\"{}><button>{}</button>", first, sorted,
                     name);
}

}  // namespace

std::string sparkPath(const std::vector<double>& values) {
  double largest = 0.0;
  for (const double value : values) {
    if (std::isfinite(value)) largest = std::max(largest, value);
  }
  std::string path;
  bool isOpen = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!std::isfinite(values[i])) {
      isOpen = false;
      continue;
    }
    const double height = largest > 0.0 ? values[i] / largest * kHeight : 0.0;
    const double x = kWidth * (static_cast<double>(i) + 0.5) / static_cast<double>(values.size());
    path += fmt::format("{}{:.1f} {:.1f}", isOpen ? "L" : "M", x, kHeight - height);
    if (!isOpen) path += "h0";  // a dot where neighbours are not known
    isOpen = true;
  }
  return path;
}

std::string showPageText(const ShowTable& table) {
  const std::string title = countText(table.records.size(), "shot");
  std::string text = fmt::format(
      "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width\">\n<title>{}</title>\n"
      "<style>\n{}</style>\n</head>\n<body>\n<h1>{}</h1>\n<p>{} solved",
      title, kShowPageStyle, title, table.count(ShotState::Solved));
  for (const ShotState state : {ShotState::Degraded, ShotState::Failed}) {
    text += fmt::format(", {} {}", table.count(state), nameOf(state));
  }
  text += fmt::format(
      "</p>\n<p><label>Pick by name or state <input type=\"search\"></label> "
      "<output>{} shown</output></p>\n<div class=\"wide\"><table>\n<thead><tr>",
      table.records.size());
  text += head("Shot", "ascending") + head("State", "ascending") +
          head("Corners off by, px", "descending", " aria-sort=\"descending\"") +
          head("Doubtful frames", "descending") + head("Frames", "descending") +
          head("Residual, px", "descending");
  text += "<th scope=\"col\">Over the frames<th scope=\"col\">Verdict</thead>\n<tbody>\n";
  for (const TaskRecord* record : worstFirst(table)) text += row(*record);
  return text + fmt::format("</tbody>\n</table></div>\n<script>\n{}</script>\n</body>\n</html>\n",
                            kShowPageScript);
}

}  // namespace cornerpin
