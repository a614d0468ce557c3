// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/page_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "shot/advice/closing_words.h"
#include "shot/files/number_text.h"
#include "shot/files/result_json.h"

namespace cornerpin {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDigits = 9;
constexpr double kFinest = 200'000.0;
// Counts beyond it would not be whole numbers in every JSON reader.
constexpr double kFurthestCount = 1e12;

std::string textOf(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json verdictOf(const ShotResult& result) {
  Json lines = Json::array();
  for (const StretchWords& words : closingStretches(result)) {
    lines.push_back(
        {{"first", words.frames.first}, {"last", words.frames.last}, {"text", words.text}});
  }
  return {{"sentence", closingSentence(result)}, {"lines", lines}};
}

Json shareOf(std::size_t shown, std::size_t of, const std::string& how) {
  return {{"shown", shown}, {"of", of}, {"how", how.empty() ? Json(nullptr) : Json(how)}};
}

Json jsonOf(const View& view) {
  const Homography map = view.fromTracks.matrix();
  return {{"x", view.x},
          {"y", view.y},
          {"width", view.width},
          {"height", view.height},
          {"is_picture", view.isPicture},
          {"from_tracks", {map[0][0], map[0][2], map[1][1], map[1][2]}}};
}

Json jsonOf(const std::optional<PictureNote>& note) {
  if (!note) return nullptr;
  return {{"linked", note->linked},
          {"frames", note->frames},
          {"missing", note->missing.empty() ? Json(nullptr) : Json(note->missing)}};
}

// Frames next to each other in which a track is seen: where, in units.
struct Seen {
  std::size_t first = 0;
  std::vector<std::int64_t> x;
  std::vector<std::int64_t> y;
};

// The runs of each shown track, by its index among these.
std::vector<std::vector<Seen>> runsOf(const PageSubject& subject, const Shown& shown, double unit) {
  constexpr std::size_t kNot = SIZE_MAX;
  std::vector<std::size_t> shownAs(subject.result.tracks.size(), kNot);
  for (std::size_t i = 0; i < shown.tracks.size(); ++i) shownAs[shown.tracks[i]] = i;
  const auto count = [&](double v) {
    return std::llround(std::clamp(v / unit, -kFurthestCount, kFurthestCount));
  };
  std::vector<std::vector<Seen>> runs(shown.tracks.size());
  for (std::size_t f = 0; f < shown.frames.size(); ++f) {
    for (const Observation& row :
         subject.tracks->inFrame(subject.result.frames[shown.frames[f]].frame)) {
      const auto track = static_cast<std::size_t>(row.track);
      if (!(row.weight > 0.0f) || track >= shownAs.size() || shownAs[track] == kNot) continue;
      std::vector<Seen>& own = runs[shownAs[track]];
      if (own.empty() || own.back().first + own.back().x.size() != f) own.push_back({f, {}, {}});
      own.back().x.push_back(count(row.x));
      own.back().y.push_back(count(row.y));
    }
  }
  return runs;
}

void appendSteps(std::string& json, const std::vector<std::int64_t>& counts) {
  std::int64_t before = 0;
  const char* comma = "";
  for (const std::int64_t count : counts) {
    fmt::format_to(std::back_inserter(json), "{}{}", comma, count - before);
    before = count;
    comma = ",";
  }
}

std::string observationsOf(const PageSubject& subject, const Shown& shown, double unit) {
  if (subject.tracks == nullptr) return "null";
  std::string json = fmt::format("{{\"unit\":{},\"tracks\":[", textOf(unit));
  const char* comma = "\n";
  for (const std::vector<Seen>& runs : runsOf(subject, shown, unit)) {
    json += comma;
    json += '[';
    comma = ",\n";
    const char* next = "";
    for (const Seen& seen : runs) {
      fmt::format_to(std::back_inserter(json), "{}{{\"first\":{},\"x\":[", next, seen.first);
      appendSteps(json, seen.x);
      json += "],\"y\":[";
      appendSteps(json, seen.y);
      json += "]}";
      next = ",";
    }
    json += ']';
  }
  return json + "]}";
}

}  // namespace

double unitFor(const View& view) {
  const double most = view.width / kFinest;
  const double power = roundedTo(1, std::pow(10.0, std::floor(std::log10(most))));
  for (const double times : {5.0, 2.0}) {
    if (times * power <= most) return roundedTo(1, times * power);
  }
  return power;
}

std::string pageDataJson(const PageSubject& subject, const Shown& shown, const View& view,
                         const std::optional<PictureNote>& pictures) {
  const ShotResult& result = subject.result;
  const Json reduced = {
      {"frames", shareOf(shown.frames.size(), result.frames.size(), shown.howFrames)},
      {"tracks", shareOf(shown.tracks.size(), result.tracks.size(), shown.howTracks)},
      {"between", shareOf(shown.between.size(), result.between.size(), shown.howBetween)}};
  return fmt::format(
      "{{\"page\":1,\n\"title\":{},\n\"verdict\":{},\n\"result\":{},\n\"reduced\":{},\n"
      "\"view\":{},\n\"observations\":{},\n\"pictures\":{}}}\n",
      textOf(subject.title), textOf(verdictOf(result)),
      roundedResultJson(onlyShown(result, shown), kDigits), textOf(reduced), textOf(jsonOf(view)),
      observationsOf(subject, shown, unitFor(view)), textOf(jsonOf(pictures)));
}

}  // namespace cornerpin
