// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "shot/files/result_csv.h"
#include "shot/files/result_json.h"

namespace cornerpin {

Quad parseQuad(const std::string& text) {
  std::array<double, 8> numbers{};
  const char* at = text.data();
  const char* end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (at == end || *at++ != ',')) at = end;
    const auto [stop, error] = std::from_chars(at, end, numbers[i]);
    if (error != std::errc() || !std::isfinite(numbers[i])) {
      throw std::invalid_argument("a quad is eight numbers, x0,y0,x1,y1,x2,y2,x3,y3, not \"" +
                                  text + "\"");
    }
    at = stop;
  }
  if (at != end)
    throw std::invalid_argument("a quad has eight numbers, not more: \"" + text + "\"");
  Quad quad;
  for (std::size_t i = 0; i < quad.size(); ++i) quad[i] = {numbers[2 * i], numbers[2 * i + 1]};
  return quad;
}

std::optional<Format> formatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  if (extension == ".json") return Format::Json;
  if (extension == ".csv") return Format::Csv;
  return std::nullopt;
}

void writeResult(const ShotResult& result, Format format, const std::optional<Quad>& quad,
                 OutputFile& out) {
  format == Format::Json ? writeResultJson(result, quad, out) : writeResultCsv(result, quad, out);
}

}  // namespace cornerpin
