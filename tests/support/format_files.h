// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_FORMAT_FILES_H
#define TESTS_SUPPORT_FORMAT_FILES_H

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// Files of tracks in all formats, written and read by other code than the program's: a second
/// implementation of what their numbers mean.
namespace other {

/// A track's name and a frame.
using Key = std::pair<std::string, int>;
struct Place {
  double x = 0.0;
  double y = 0.0;
};
using Places = std::map<Key, Place>;

inline const std::vector<std::string> kRead = {"csv",       "json",  "points", "nk", "blocks",
                                               "keyframes", "paths", "rz2",    "uv"};
inline const std::vector<std::string> kWritten = {"csv", "json", "points", "nk", "blocks", "uv"};

/// A picture, and the number of its clip's first frame.
struct Clip {
  int width = 0;
  int height = 0;
  int first = 0;
};

/// The numbers of a file for a place with x to the right and y up from the lower left corner of the
/// picture, in a frame as the clip counts.
inline Place numbersIn(const std::string& format, const Clip& clip, Place p) {
  const double w = clip.width;
  const double h = clip.height;
  if (format == "blocks") return {p.x - 0.5, p.y - 0.5};
  if (format == "keyframes" || format == "rz2") return {p.x, h - p.y};
  if (format == "uv") return {p.x / w, p.y / h};
  if (format != "paths") return p;
  return {2.0 * (p.x - 0.5) / (w - 1.0) - 1.0, -(2.0 * (p.y - 0.5) / (h - 1.0) - 1.0)};
}

inline int frameIn(const std::string& format, const Clip& clip, int frame) {
  if (format == "points" || format == "blocks") return frame - clip.first + 1;
  return format == "keyframes" ? frame - clip.first : frame;
}

inline Places numbersIn(const std::string& format, const Clip& clip, const Places& places) {
  Places numbers;
  for (const auto& [key, p] : places) {
    numbers[{key.first, frameIn(format, clip, key.second)}] = numbersIn(format, clip, p);
  }
  return numbers;
}

/// The places of a track by frame.
using Track = std::vector<std::pair<int, Place>>;

inline std::map<std::string, Track> tracksOf(const Places& places) {
  std::map<std::string, Track> tracks;
  for (const auto& [key, p] : places) tracks[key.first].emplace_back(key.second, p);
  return tracks;
}

inline std::string rowOf(const std::string& format, const std::string& name, int frame, Place p) {
  if (format == "csv") return fmt::format("{},{},{},{}\n", name, frame, p.x, p.y);
  if (format == "json") return fmt::format("[{},{},{}],", frame, p.x, p.y);
  if (format == "blocks") return fmt::format("{} {} {} 0.5\n", frame, p.x, p.y);
  if (format == "keyframes") return fmt::format("\t{}\t{}\t{}\t\n", frame, p.x, p.y);
  if (format == "paths") return fmt::format("{} {} {} {} 7\n", name, frame, p.x, p.y);
  if (format == "rz2") return fmt::format("\t{} {} {} p+( 1 )\n", frame, p.x, p.y);
  return fmt::format("{} {} {}{}\n", frame, p.x, p.y, format == "uv" ? " 1" : "");
}

inline std::string nodeRow(const std::string& name, const Track& track) {
  std::string x;
  std::string y;
  for (const auto& [frame, p] : track) {
    x += fmt::format(" x{} {}", frame, p.x);
    y += fmt::format(" x{} {}", frame, p.y);
  }
  return fmt::format(" {{ \"{}\" {{curve{}}} {{curve{}}} }}\n", name, x, y);
}

inline std::string blockOf(const std::string& format, const std::string& name, const Track& track) {
  if (format == "nk") return nodeRow(name, track);
  std::string rows;
  for (const auto& [frame, p] : track) rows += rowOf(format, name, frame, p);
  if (format == "points") return fmt::format("{}\n0\n{}\n{}", name, track.size(), rows);
  if (format == "uv") return fmt::format("{}\n{}\n{}", name, track.size(), rows);
  if (format == "blocks") return fmt::format("\"{}\"\n1\n{}\n{}", name, track.size(), rows);
  if (format == "rz2") return fmt::format("pointTrack \"{}\"\n{{\n{}}}\n", name, rows);
  if (format == "keyframes") {
    return fmt::format(
        "Motion Trackers\tTracker #1\t{}\tFeature Center\n\tFrame\tX pixels\tY pixels\n{}\n", name,
        rows);
  }
  if (format != "json") return rows;
  rows.back() = ']';
  return fmt::format(R"({{"name":"{}","positions":[{}}},)", name, rows);
}

inline std::string headOf(const std::string& format, const Clip& clip, std::size_t tracks) {
  const int w = clip.width;
  const int h = clip.height;
  if (format == "csv") return "track,frame,x,y\n";
  if (format == "points" || format == "uv") return fmt::format("{}\n", tracks);
  if (format == "json") {
    return fmt::format(R"({{"cornerpin_tracks":1,"picture":{{"width":{},"height":{},"y":"up",)"
                       R"("pixel_centre":0.5,"first_frame":null}},"tracks":[)",
                       w, h);
  }
  if (format == "keyframes") {
    return fmt::format(
        "Adobe After Effects 6.0 Keyframe Data\n\n\tUnits Per Second\t24\n\tSource Width\t{}\n"
        "\tSource Height\t{}\n\n",
        w, h);
  }
  if (format == "rz2") {
    return fmt::format("imageSequence \"s\"\n{{\n\t{} {} f( \"a\" ) b( {} {} 1 )\n}}\n", w, h,
                       clip.first, clip.first + 1);
  }
  if (format != "nk") return "";
  return fmt::format(
      "Tracker4 {{\n tracks {{ {{ 1 3 {} }}\n{{ {{ 3 1 75 name name 1 }}\n{{ 2 1 58 track_x "
      "track_x 1 }}\n{{ 2 1 58 track_y track_y 1 }} }}\n{{\n",
      tracks);
}

inline std::string tailOf(const std::string& format) {
  if (format == "json") return "]}\n";
  if (format == "nk") return "} }\n name Tracker1\n}\n";
  return format == "keyframes" ? "End of Keyframe Data\n" : "";
}

/// A file of numbers as they stand in it.
inline std::string fileOf(const std::string& format, const Clip& clip, const Places& numbers) {
  const std::map<std::string, Track> tracks = tracksOf(numbers);
  std::string text = headOf(format, clip, tracks.size());
  for (const auto& [name, track] : tracks) text += blockOf(format, name, track);
  if (format == "json") text.pop_back();
  return text + tailOf(format);
}

inline std::vector<std::string> split(const std::string& line, const std::string& at) {
  std::vector<std::string> parts;
  for (std::size_t from = 0; from <= line.size();) {
    const std::size_t end = std::min(line.find_first_of(at, from), line.size());
    parts.push_back(line.substr(from, end - from));
    from = end + 1;
  }
  return parts;
}

inline Places numbersInJson(const std::string& text) {
  Places numbers;
  const nlohmann::json whole = nlohmann::json::parse(text);
  for (const auto& track : whole.at("tracks")) {
    for (const auto& row : track.at("positions"))
      numbers[{track.at("name"), row.at(0)}] = {row.at(1), row.at(2)};
  }
  return numbers;
}

// Of curves that have a frame in front of each value.
inline Places numbersInNode(const std::string& text) {
  Places numbers;
  std::size_t at = 0;
  // The text behind `opening`, up to `closing`; empty where there is none.
  const auto next = [&](const std::string& opening, char closing) {
    const std::size_t begin = text.find(opening, at);
    if (begin == std::string::npos) return std::string();
    const std::size_t first = begin + opening.size();
    at = text.find(closing, first);
    return text.substr(first, at - first);
  };
  // A row is {enable} "name" {x} {y} ..., the enable curve alone in front of a name.
  for (;;) {
    const std::string name = next("} \"", '"');
    if (name.empty()) return numbers;
    const std::vector<std::string> x = split(next("{curve", '}'), " ");
    const std::vector<std::string> y = split(next("{curve", '}'), " ");
    for (std::size_t i = 1; i + 1 < x.size(); i += 2) {
      if (x[i] != y.at(i)) throw std::runtime_error("keys in " + x[i] + " and " + y[i]);
      numbers[{name, std::stoi(x[i].substr(1))}] = {std::stod(x[i + 1]), std::stod(y.at(i + 1))};
    }
  }
}

/// The numbers that a file has, of those that the program writes.
inline Places numbersIn(const std::string& format, const std::string& text) {
  if (format == "json") return numbersInJson(text);
  if (format == "nk") return numbersInNode(text);
  Places numbers;
  std::string name;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#' || line == "track,frame,x,y,weight") continue;
    std::vector<std::string> words = split(line, " ,");
    if (format == "csv") {
      name = words.at(0);
      words.erase(words.begin());
    }
    if (words.size() > 2) {
      numbers[{name, std::stoi(words[0])}] = {std::stod(words[1]), std::stod(words[2])};
    } else if (line.find_first_not_of("0123456789") != std::string::npos) {
      name = line[0] == '"' ? line.substr(1, line.size() - 2) : line;
    }
  }
  return numbers;
}

}  // namespace other

#endif
