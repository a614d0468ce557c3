// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <filesystem>

#include "shot/files/result_csv.h"
#include "shot/files/result_json.h"

namespace cornerpin {

std::optional<Format> formatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  if (extension == ".json") return Format::Json;
  if (extension == ".csv") return Format::Csv;
  return std::nullopt;
}

void writeResult(const ShotResult& result, Format format, OutputFile& out,
                 const Progress& progress) {
  format == Format::Json ? writeResultJson(result, out, progress)
                         : writeResultCsv(result, out, progress);
}

}  // namespace cornerpin
