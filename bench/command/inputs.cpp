// SPDX-License-Identifier: BSD-3-Clause
#include "bench/command/inputs.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/support/shot.h"

namespace bench {

namespace {

// A row "track,frame,rest" without its frame.
struct Row {
  std::string track, rest;
};

using Rows = std::map<int, std::vector<Row>>;  // by frame

Rows rowsOf(std::ifstream& file) {
  Rows rows;
  std::string line;
  while (std::getline(file, line)) {
    const std::size_t first = line.find(',');
    const std::size_t second = line.find(',', first + 1);
    if (second == std::string::npos) throw std::runtime_error("no track's row: " + line);
    const int frame = std::stoi(line.substr(first + 1, second - first - 1));
    rows[frame].push_back({line.substr(0, first), line.substr(second)});
  }
  return rows;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File create(const std::string& path) {
  File file(std::fopen(path.c_str(), "w"), std::fclose);
  if (!file) throw std::runtime_error("cannot write " + path);
  return file;
}

}  // namespace

Input repeated(const std::string& from, std::size_t frames, const std::string& to) {
  std::ifstream file(from);
  std::string header;
  std::getline(file, header);
  if (header.rfind("track,frame,", 0) != 0) throw std::runtime_error("no track file: " + from);
  const Rows rows = rowsOf(file);
  const File out = create(to);
  std::fprintf(out.get(), "%s\n", header.c_str());
  Input input{to, frames, 0};
  auto at = rows.begin();
  bool onwards = true;
  for (std::size_t f = 0; f < frames; ++f) {
    for (const Row& row : at->second) {
      std::fprintf(out.get(), "%s,%zu%s\n", row.track.c_str(), f, row.rest.c_str());
    }
    input.rows += at->second.size();
    if (at == rows.begin()) onwards = true;
    if (std::next(at) == rows.end()) onwards = false;
    at = onwards ? std::next(at) : std::prev(at);
  }
  return input;
}

Input synthetic(int tracks, int frames, const std::string& to) {
  const Shot shot = syntheticShot(tracks, frames);
  const File out = create(to);
  std::fputs("track,frame,x,y\n", out.get());
  for (int f = 0; f < frames; ++f) {
    int number = 0;
    for (const reference::Track& track : shot.scene.tracks) {
      const auto pixels = [&](int c) {
        return 500.0 + 500.0 * static_cast<double>(track.positions(f, c));
      };
      std::fprintf(out.get(), "t%03d,%d,%.3f,%.3f\n", number++, f, pixels(0), pixels(1));
    }
  }
  return {to, static_cast<std::size_t>(frames),
          static_cast<std::size_t>(frames) * static_cast<std::size_t>(tracks)};
}

}  // namespace bench
