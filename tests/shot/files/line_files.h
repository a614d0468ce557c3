// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_FILES_LINE_FILES_H
#define TESTS_SHOT_FILES_LINE_FILES_H

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "shot/files/format.h"
#include "shot/solve/tracks.h"

/// Small files of the formats in which each position has a line, for what all readers have in
/// common; of a picture of 1920 x 1080 where the file tells.
namespace cornerpin {

constexpr Format kLineFormats[] = {Format::Points, Format::Blocks, Format::Paths, Format::Rz2,
                                   Format::Uv};

/// One position as it stands in the file.
struct TextRow {
  std::string name;
  std::string frame;
  std::string x;
  std::string y;
};

inline std::string lineOf(Format format, const TextRow& row) {
  const std::string place = row.frame + " " + row.x + " " + row.y;
  switch (format) {
    case Format::Blocks:
      return place + " 0.125\n";
    case Format::Paths:
      return row.name + " " + place + " 7\n";
    case Format::Rz2:
      return "\t" + place + "  p+( 1 )\n";
    case Format::Uv:
      return place + " 1\n";
    default:
      return place + "\n";
  }
}

inline std::string openingOf(Format format, const std::string& name, std::size_t rows) {
  switch (format) {
    case Format::Points:
      return fmt::format("{}\n0\n{}\n", name, rows);
    case Format::Blocks:
      return fmt::format("\"{}\"\n1\n{}\n", name, rows);
    case Format::Rz2:
      return fmt::format("pointTrack \"{}\" rgb( 0 0 0 )\n{{\n", name);
    case Format::Uv:
      return fmt::format("{}\n{}\n", name, rows);
    default:
      return "";
  }
}

/// A file of these rows; neighbours of one name make a block.
inline std::string lineFile(Format format, const std::vector<TextRow>& rows) {
  std::string blocks;
  int count = 0;
  for (auto first = rows.begin(); first != rows.end(); ++count) {
    const auto last = std::find_if(first, rows.end(),
                                   [&](const TextRow& row) { return row.name != first->name; });
    blocks += openingOf(format, first->name, static_cast<std::size_t>(last - first));
    for (; first != last; ++first) blocks += lineOf(format, *first);
    if (format == Format::Rz2) blocks += "}\n";
  }
  if (format == Format::Points || format == Format::Uv) return fmt::format("{}\n", count) + blocks;
  if (format != Format::Rz2) return blocks;
  return "imageSequence \"S\"\n{\n\t1920 1080 f( \"a b\" ) b( 1 9 1 )\n}\n" + blocks;
}

/// A position that was read, by its track's name.
struct ReadRow {
  std::string name;
  int frame;
  double x;
  double y;
  bool operator==(const ReadRow& other) const {
    return std::tie(name, frame, x, y) == std::tie(other.name, other.frame, other.x, other.y);
  }
};

inline void PrintTo(const ReadRow& row, std::ostream* out) {
  *out << fmt::format("{} {} {} {}", row.name, row.frame, row.x, row.y);
}

/// By track, then by frame.
inline std::vector<ReadRow> rowsOf(const Tracks& tracks) {
  std::vector<ReadRow> rows;
  rows.reserve(tracks.observations.size());
  for (const Observation& row : tracks.observations) {
    rows.push_back({tracks.names[static_cast<std::size_t>(row.track)], row.frame, row.x, row.y});
  }
  std::sort(rows.begin(), rows.end(), [](const ReadRow& a, const ReadRow& b) {
    return std::tie(a.name, a.frame) < std::tie(b.name, b.frame);
  });
  return rows;
}

/// The same of one track.
inline std::vector<ReadRow> rowsOf(const Tracks& tracks, const std::string& name) {
  std::vector<ReadRow> rows = rowsOf(tracks);
  rows.erase(std::remove_if(rows.begin(), rows.end(),
                            [&](const ReadRow& row) { return row.name != name; }),
             rows.end());
  return rows;
}

inline std::string replaced(std::string text, const std::string& part, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size())
    text.replace(at, part.size(), by);
  return text;
}

}  // namespace cornerpin

#endif
