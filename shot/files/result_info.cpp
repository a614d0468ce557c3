// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_info.h"

#include <fmt/format.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "shot/advice/closing_words.h"
#include "shot/files/info_row.h"
#include "shot/solve/option_words.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

std::string madeFrom(InputFile input) {
  const std::string digest = std::exchange(input.sha256, "");
  return infoRow("made from", describe(input)) + (digest.empty() ? "" : infoRow("SHA-256", digest));
}

std::string options(const ShotResult& result) {
  const std::string given = textOf(optionWords(result));
  const bool known = result.provenance.options.has_value();
  if (!known) return infoRow("options", given.empty() ? "not known" : given + ", others not known");
  return infoRow("options", given.empty() ? "none" : given);
}

std::string frames(const ShotResult& result) {
  std::string text = infoRow(
      "frames",
      fmt::format("{}  ({})", textOf({result.frames.front().frame, result.frames.back().frame}),
                  counted(result.frames.size(), "frame")));
  text += infoRow("base frame", fmt::format("{}", result.baseFrame));
  if (result.referenceFrame == result.baseFrame) return text;
  return text + infoRow("reference", fmt::format("{}", result.referenceFrame));
}

std::string tracks(const ShotResult& result) {
  if (result.tracks.empty()) return "";
  std::string text = fmt::format("{}", result.tracks.size());
  if (result.leftOut > 0) text += fmt::format(", {} of them left out", result.leftOut);
  if (result.unused && !result.unused->empty()) text += " (" + describe(*result.unused) + ")";
  return infoRow("tracks", text);
}

std::string quads(const ShotResult& result) {
  std::vector<std::string> names;
  for (const NamedQuad& quad : result.quads) names.push_back("\"" + quad.name + "\"");
  return infoRow("quads", fmt::format("{}", fmt::join(names, ", ")));
}

}  // namespace

std::string resultInfo(const ShotResult& result, const FileLook& look, bool colour) {
  std::string text = fileRows(look, "the result of a solve in JSON");
  if (result.provenance.program) {
    text += infoRow("made by", describe(*result.provenance.program));
  }
  if (result.provenance.input) text += madeFrom(*result.provenance.input);
  text += options(result) + frames(result) + tracks(result) + quads(result);
  return text + "\n" + closingWords(result, colour);
}

}  // namespace cornerpin
