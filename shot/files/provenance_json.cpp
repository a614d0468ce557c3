// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/provenance_json.h"

#include <cstdlib>
#include <limits>
#include <string>

#include "shot/files/quad_file.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kOpen = std::numeric_limits<int>::max();

Json orNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

template <class T>
Json orElse(const std::optional<T>& value, const Json& otherwise) {
  return value ? Json(*value) : otherwise;
}

Json jsonOf(const ProgramVersion& program) {
  return {{"name", program.name}, {"version", program.version}, {"commit", orNull(program.commit)}};
}

Json jsonOf(const InputFile& input) {
  return {{"name", orNull(input.name)},
          {"sha256", orNull(input.sha256)},
          {"format", orNull(input.format)},
          {"rows", input.rows}};
}

Json jsonOf(const FrameRange& frames) {
  if (frames.isAll()) return "all";
  return Json::array({frames.first, frames.last == kOpen ? Json(nullptr) : Json(frames.last)});
}

Json jsonOf(const std::vector<NamedQuad>& quads) {
  Json list = Json::array();
  for (const NamedQuad& quad : quads) list.push_back(quadJson(quad));
  return list;
}

Json optionsJson(const ShotResult& result) {
  const std::optional<GivenOptions>& given = result.provenance.options;
  const auto known = [&given](auto jsonIn) { return given ? Json(jsonIn(*given)) : Json(nullptr); };
  using Given = const GivenOptions&;
  return {{"base", known([](Given o) { return orElse(o.base, "auto"); })},
          {"reference", known([](Given o) { return orElse(o.reference, "base"); })},
          {"frames", known([](Given o) { return jsonOf(o.frames); })},
          {"keep", known([](Given o) { return Json(o.keep); })},
          {"drop", known([](Given o) { return Json(o.drop); })},
          {"base_only", known([](Given o) { return Json(o.baseOnly); })},
          {"hold", known([](Given o) { return Json(o.hold); })},
          {"units", nameOf(result.units)},
          {"loss", nameOf(result.loss)},
          {"seed", result.seed},
          {"max_error", known([](Given o) { return orElse(o.maxError, "auto"); })},
          {"smooth", orElse(result.smooth, "off")},
          {"fill", result.fill},
          {"at", known([](Given o) { return Json(o.at); })},
          {"quads", known([](Given o) { return jsonOf(o.quads); })}};
}

// None for null, and for a field that is not there.
std::optional<JsonField> known(const JsonField& field, const char* name) {
  if (!field.has(name) || field.at(name).isNull()) return std::nullopt;
  return field.at(name);
}

std::string textOrNull(const JsonField& field) { return field.isNull() ? "" : field.text(); }

// A value that may be a word instead.
bool isWord(const JsonField& field, const char* word) {
  return field.json().is_string() && field.text() == word;
}

ProgramVersion programIn(const JsonField& field) {
  return {field.at("name").text(), field.at("version").text(), textOrNull(field.at("commit"))};
}

InputFile inputIn(const JsonField& field) {
  InputFile input;
  input.name = textOrNull(field.at("name"));
  input.sha256 = textOrNull(field.at("sha256"));
  if (const auto format = known(field, "format")) input.format = format->text();
  const std::uint64_t rows = field.at("rows").count();
  if (rows > std::numeric_limits<std::int64_t>::max()) field.at("rows").refuse("too many");
  input.rows = static_cast<std::int64_t>(rows);
  return input;
}

std::optional<int> pixelsIn(const JsonField& picture, const char* name) {
  const auto field = known(picture, name);
  if (!field) return std::nullopt;
  if (field->tally() == 0) field->refuse("a number above 0 or null is needed");
  return field->tally();
}

FrameRange framesIn(const JsonField& field) {
  if (isWord(field, "all")) return {};
  field.list(2);
  FrameRange frames;
  frames.first = field.at(std::size_t{0}).integer();
  const JsonField last = field.at(std::size_t{1});
  if (!last.isNull()) frames.last = last.integer();
  if (frames.last < frames.first) field.refuse("the range ends before it begins");
  return frames;
}

std::vector<std::string> textsIn(const JsonField& list) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < list.size(); ++i) texts.push_back(list.at(i).text());
  return texts;
}

GivenOptions optionsIn(const JsonField& field) {
  GivenOptions options;
  if (!isWord(field.at("base"), "auto")) options.base = field.at("base").integer();
  const JsonField reference = field.at("reference");
  if (!isWord(reference, "base")) options.reference = reference.integer();
  options.frames = framesIn(field.at("frames"));
  options.keep = textsIn(field.at("keep"));
  options.drop = textsIn(field.at("drop"));
  options.baseOnly = field.at("base_only").flag();
  options.hold = field.at("hold").flag();
  const JsonField maxError = field.at("max_error");
  if (!isWord(maxError, "auto")) options.maxError = maxError.length();
  const JsonField at = field.at("at");
  for (std::size_t i = 0; i < at.size(); ++i) options.at.push_back(at.at(i).number());
  options.quads = quadsIn(field.at("quads"));
  return options;
}

}  // namespace

Json pictureJson(const Picture& picture) {
  Json y;
  if (picture.y) y = *picture.y == YAxis::Down ? "down" : "up";
  return {{"width", orElse(picture.width, nullptr)},
          {"height", orElse(picture.height, nullptr)},
          {"y", y},
          {"pixel_centre", orElse(picture.pixelCentre, nullptr)},
          {"first_frame", orElse(picture.firstFrame, nullptr)}};
}

Picture pictureIn(const JsonField& field) {
  Picture picture;
  picture.width = pixelsIn(field, "width");
  picture.height = pixelsIn(field, "height");
  if (const auto y = known(field, "y")) {
    if (!isWord(*y, "down") && !isWord(*y, "up")) y->refuse("\"down\", \"up\" or null is needed");
    picture.y = isWord(*y, "down") ? YAxis::Down : YAxis::Up;
  }
  if (const auto centre = known(field, "pixel_centre")) {
    picture.pixelCentre = centre->number();
    if (*picture.pixelCentre != 0.0 && *picture.pixelCentre != 0.5) {
      centre->refuse("0, 0.5 or null is needed");
    }
  }
  if (const auto first = known(field, "first_frame")) {
    picture.firstFrame = first->integer();
    if (std::abs(*picture.firstFrame) > kFurthestFrame) first->refuse("too far from 0");
  }
  return picture;
}

Json provenanceJson(const ShotResult& result) {
  const Provenance& from = result.provenance;
  Json rebased = Json::array();
  for (const RebaseStep& step : from.rebased) {
    rebased.push_back({{"from", step.from}, {"to", step.to}, {"program", jsonOf(step.program)}});
  }
  return {{"program", from.program ? jsonOf(*from.program) : Json(nullptr)},
          {"options", optionsJson(result)},
          {"input", from.input ? jsonOf(*from.input) : Json(nullptr)},
          {"picture", pictureJson(from.picture)},
          {"rebased", std::move(rebased)}};
}

Provenance provenanceIn(const JsonField& whole) {
  Provenance from;
  if (const auto program = known(whole, "program")) from.program = programIn(*program);
  if (const auto options = known(whole, "options"); options && known(*options, "base")) {
    from.options = optionsIn(*options);
  }
  if (const auto input = known(whole, "input")) from.input = inputIn(*input);
  if (const auto picture = known(whole, "picture")) from.picture = pictureIn(*picture);
  if (const auto steps = known(whole, "rebased")) {
    for (std::size_t i = 0; i < steps->size(); ++i) {
      const JsonField step = steps->at(i);
      from.rebased.push_back(
          {step.at("from").integer(), step.at("to").integer(), programIn(step.at("program"))});
    }
  }
  return from;
}

}  // namespace cornerpin
