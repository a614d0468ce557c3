// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/option_words.h"

#include <fmt/format.h>

#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

using Words = std::vector<OptionWords>;

void add(const char* name, const std::vector<std::string>& values, Words& words) {
  for (const std::string& value : values) words.push_back({name, value});
}

template <class Number>
void add(const char* name, const std::optional<Number>& value, Words& words) {
  if (value) words.push_back({name, fmt::format("{}", *value)});
}

void addFlag(const char* name, bool given, Words& words) {
  if (given) words.push_back({name, ""});
}

std::string textOf(const NamedQuad& quad) {
  std::vector<double> numbers;
  for (Point corner : quad.corners) numbers.insert(numbers.end(), {corner.x, corner.y});
  return fmt::format("{}={}", quad.name, fmt::join(numbers, ","));
}

void addGiven(const GivenOptions& given, Words& words) {
  add("--base", given.base, words);
  add("--reference", given.reference, words);
  for (const NamedQuad& quad : given.quads) words.push_back({"--quad", textOf(quad)});
  if (!given.frames.isAll()) words.push_back({"--frames", given.frames.text()});
  add("--drop", given.drop, words);
  add("--keep", given.keep, words);
  add("--max-error", given.maxError, words);
  if (!given.at.empty()) words.push_back({"--at", fmt::format("{}", fmt::join(given.at, ","))});
  addFlag("--base-only", given.baseOnly, words);
  addFlag("--hold", given.hold, words);
}

}  // namespace

std::vector<OptionWords> optionWords(const ShotResult& result) {
  Words words;
  if (result.provenance.options) addGiven(*result.provenance.options, words);
  add("--smooth", result.smooth, words);
  addFlag("--fill", result.fill, words);
  if (result.loss != Loss::Tukey) words.push_back({"--loss", nameOf(result.loss)});
  if (result.units != Units::Fit) words.push_back({"--units", nameOf(result.units)});
  if (result.seed != 1) words.push_back({"--seed", fmt::format("{}", result.seed)});
  return words;
}

std::string textOf(const std::vector<OptionWords>& options) {
  std::string text;
  for (const OptionWords& option : options) {
    text += (text.empty() ? "" : " ") + option.name;
    if (!option.value.empty()) text += " " + shellWord(option.value);
  }
  return text;
}

}  // namespace cornerpin
