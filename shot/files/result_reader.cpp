// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

#include "shot/files/json_field.h"
#include "shot/files/provenance_json.h"
#include "shot/files/quad_file.h"
#include "shot/plane/extent.h"
#include "shot/solve/judge.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

namespace {

constexpr std::uint64_t kNewest = 2;
constexpr Symmetric2 kNone = {kNoFigure, kNoFigure, kNoFigure};

// The one of the values that has the field's text for a name.
template <class Named>
Named oneOf(const JsonField& field, std::initializer_list<Named> values) {
  const std::string& text = field.text();
  for (Named value : values) {
    if (text == nameOf(value)) return value;
  }
  field.refuse("not one of the words that it can be");
}

Loss lossIn(const JsonField& field) {
  return oneOf(field, {Loss::None, Loss::Huber, Loss::Cauchy, Loss::Tukey});
}

std::vector<Doubt> doubtsIn(const JsonField& list) {
  std::vector<Doubt> doubts;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const JsonField doubt = list.at(i);
    doubts.push_back({oneOf(doubt.at("code"), kDoubtCodes), doubt.at("text").text()});
  }
  return doubts;
}

Point pointIn(const JsonField& field) {
  field.list(2);
  return {field.at(std::size_t{0}).number(), field.at(std::size_t{1}).number()};
}

Symmetric2 covarianceIn(const JsonField& field) {
  if (field.isNull()) return kNone;
  field.list(2);
  const JsonField first = field.at(std::size_t{0}).list(2);
  const JsonField second = field.at(std::size_t{1}).list(2);
  second.at(std::size_t{0}).number();
  return {first.at(std::size_t{0}).length(), first.at(std::size_t{1}).number(),
          second.at(std::size_t{1}).length()};
}

Homography transformIn(const JsonField& field) {
  Homography h{};
  field.list(3);
  for (std::size_t i = 0; i < 3; ++i) {
    const JsonField row = field.at(i);
    row.list(3);
    for (std::size_t j = 0; j < 3; ++j) h[i][j] = row.at(j).number();
  }
  if (h[2][2] != 1.0) field.refuse("the last element has to be 1");
  return h;
}

// Whether this is what `--quads` takes: an object of nothing but corners, or with a list of quads.
bool holdsQuads(const nlohmann::json& whole) {
  if (!whole.is_object() || whole.empty()) return false;
  return whole.contains("quads") || std::all_of(whole.begin(), whole.end(), [](const auto& item) {
           return item.is_array() && item.size() == 4;
         });
}

// They follow from the covariances.
void checkDeviations(const JsonField& list) {
  for (std::size_t i = 0; i < list.size(); ++i) list.at(i).lengthOrNull();
}

void addRuns(const JsonField& list, TrackUse use, std::vector<TrackRun>& runs) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    const JsonField run = list.at(i);
    run.list(2);
    const int first = run.at(std::size_t{0}).integer();
    const int last = run.at(std::size_t{1}).integer();
    if (last < first) run.refuse("the run ends before it begins");
    runs.push_back({first, last, use});
  }
}

TrackResult trackIn(const JsonField& field) {
  TrackResult track;
  track.name = field.at("name").text();
  const JsonField place = field.at("place");
  if (!place.isNull()) track.place = pointIn(place);
  track.covariance = covarianceIn(field.at("covariance"));
  addRuns(field.at("good"), TrackUse::Good, track.runs);
  addRuns(field.at("ignored"), TrackUse::Ignored, track.runs);
  addRuns(field.at("absent"), TrackUse::Absent, track.runs);
  std::sort(track.runs.begin(), track.runs.end(),
            [](const TrackRun& a, const TrackRun& b) { return a.first < b.first; });
  return track;
}

class ResultReader {
 public:
  explicit ResultReader(const JsonField& whole) : whole_(whole), version_(versionOf(whole)) {}

  ShotResult read() {
    readShot();
    readQuadsAndFront();
    const JsonField frames = whole_.at("frames");
    if (frames.size() == 0) frames.refuse("there is none");
    if (frames.size() > kMaxFrames) frames.refuse(fmt::format("more than {}", kMaxFrames));
    for (std::size_t i = 0; i < frames.size(); ++i) addFrame(frames.at(i));
    requireFrameIn("base_frame", result_.baseFrame);
    if (version_ > 1) requireFrameIn("reference_frame", result_.referenceFrame);
    if (version_ > 1) readTracks();
    readRetouch();
    readWorstTracks();
    readAdvice();
    if (!isJudged()) judge(result_);
    return std::move(result_);
  }

 private:
  static std::uint64_t versionOf(const JsonField& whole) {
    if (!whole.isObject() || !whole.has("cornerpin")) {
      whole.refuse(fmt::format("{}: give what cornerpin solve -o shot.json writes",
                               holdsQuads(whole.json()) ? "these are quads, not a result"
                                                        : "this is JSON, but no result"));
    }
    const JsonField version = whole.at("cornerpin");
    if (version.count() == 0) version.refuse("there is no such version");
    if (version.count() > kNewest) {
      version.refuse(
          fmt::format("version {} of a result, and this program reads up to {}: use a newer one",
                      version.count(), kNewest));
    }
    return version.count();
  }

  void readShot() {
    result_.baseFrame = whole_.at("base_frame").integer();
    if (const auto why = known(whole_, "base_why"); why && !why->isNull()) {
      result_.whyBase = why->text();
    }
    result_.referenceFrame =
        version_ > 1 ? whole_.at("reference_frame").integer() : result_.baseFrame;
    result_.baseTracks = whole_.at("base_tracks").tally();
    if (const auto count = known(whole_, "handed_over")) result_.handedOver = count->tally();
    result_.leftOut = whole_.at("left_out").tally();
    result_.units = readUnits();
    result_.provenance = provenanceIn(whole_);
    readUnused();
    if (const auto loss = known(whole_, "loss")) result_.loss = lossIn(*loss);
    if (const auto seed = known(whole_, "seed")) result_.seed = seed->count();
    if (isJudged()) result_.maxError = whole_.at("max_error").lengthOrNull();
  }

  // Older files have the name of what the solver computed in at this place.
  Units readUnits() const {
    const JsonField units = whole_.at("units");
    const bool older = units.text() != kPixels;
    return oneOf(older ? units : whole_.at("options").at("units"), {Units::Fit, Units::Raw});
  }

  void readUnused() {
    if (!whole_.has("left_out_tracks") || whole_.at("left_out_tracks").isNull()) return;
    const JsonField list = whole_.at("left_out_tracks");
    result_.unused.emplace();
    for (std::size_t i = 0; i < list.size(); ++i) {
      const JsonField track = list.at(i);
      result_.unused->push_back({track.at("name").text(), oneOf(track.at("why"), kReasonsUnused)});
    }
  }

  void readAdvice() {
    if (!whole_.has("advice")) return;
    const JsonField list = whole_.at("advice");
    for (std::size_t i = 0; i < list.size(); ++i) {
      const JsonField advice = list.at(i);
      result_.advice.push_back(
          {{advice.at("first").integer(), advice.at("last").integer()}, advice.at("text").text()});
    }
  }

  void readQuadsAndFront() {
    if (version_ > 1) {
      const JsonField quads = whole_.at("quads");
      result_.quads = quadsIn(quads);
      if (result_.quads.empty()) quads.refuse("there is none");
      result_.baseCentre = pointIn(whole_.at("front"));
      return;
    }
    const JsonField frames = whole_.at("frames");
    const bool named = frames.size() > 0 && frames.at(std::size_t{0}).has("quad");
    const Quad corners = cornersIn(whole_.at("corners"));
    result_.quads = {{named ? "quad" : "tracks", corners}};
    const Box box = boxAround({corners[0], corners[1], corners[2], corners[3]});
    result_.baseCentre = {box.low.x / 2 + box.high.x / 2, box.low.y / 2 + box.high.y / 2};
  }

  // Whether whoever wrote the file knew doubts.
  bool isJudged() const { return whole_.has("max_error"); }

  // A field that version 1 may lack.
  std::optional<JsonField> known(const JsonField& field, const char* name) const {
    if (version_ == 1 && !field.has(name)) return std::nullopt;
    return field.at(name);
  }

  void addFrame(const JsonField& field) {
    FrameResult frame;
    frame.frame = field.at("frame").integer();
    if (frame.frame < -kFurthestFrame || frame.frame > kFurthestFrame) {
      field.at("frame").refuse("too large");
    }
    const std::vector<FrameResult>& frames = result_.frames;
    if (!frames.empty() && frame.frame != std::int64_t{frames.back().frame} + 1) {
      field.at("frame").refuse("not the frame behind the one before");
    }
    frame.verdict.status =
        oneOf(field.at("status"), {Status::Base, Status::Solved, Status::Reduced, Status::Held});
    if ((frame.verdict.status == Status::Base) != (frame.frame == result_.baseFrame)) {
      field.at("status").refuse("\"base\" is for the base frame, and for no other");
    }
    frame.tracks = field.at("tracks").tally();
    if (const auto count = known(field, "handed_over")) frame.handedOver = count->tally();
    frame.rms = field.at("rms").lengthOrNull();
    frame.h = transformIn(field.at("h"));
    if (const auto noise = known(field, "noise")) frame.figures.noise = noise->lengthOrNull();
    readTexts(field, frame);
    if (frame.verdict.status != Status::Base) readModel(field, frame.verdict);
    if (frame.verdict.status == Status::Solved) readFit(field, frame);
    frame.figures.quads = covariancesIn(field, frame.verdict.status);
    if (isJudged()) {
      frame.expectedError = field.at("expected_error").lengthOrNull();
      frame.doubts = doubtsIn(field.at("doubts"));
    }
    readRetouch(field, frame);
    result_.frames.push_back(std::move(frame));
  }

  void readModel(const JsonField& field, Verdict& verdict) const {
    verdict.model = verdict.status == Status::Solved ? Model::Projective : Model::Held;
    if (const auto model = known(field, "model")) {
      verdict.model = oneOf(*model, {Model::Held, Model::Translation, Model::Similarity,
                                     Model::Affine, Model::Projective});
    }
    if (const auto onTop = known(field, "on_top")) verdict.onTop = onTop->flag();
    if (!field.has("kept_from")) return;
    const JsonField kept = field.at("kept_from");
    for (std::size_t i = 0; i < kept.size(); ++i) verdict.keptFrom.push_back(kept.at(i).integer());
  }

  void readFit(const JsonField& field, FrameResult& frame) const {
    const bool first = version_ == 1;
    if (const auto good = known(field, first ? "inliers" : "good")) frame.good = good->tally();
    if (const auto rms = known(field, first ? "inlier_rms" : "good_rms")) {
      frame.goodRms = rms->lengthOrNull();
    }
    if (const auto sigma = known(field, first ? "scale" : "sigma")) {
      frame.sigma = sigma->lengthOrNull();
    }
    if (const auto loss = known(field, "loss")) frame.loss = lossIn(*loss);
    if (const auto width = known(field, "width")) frame.width = width->length();
    if (const auto stage = known(field, "stage")) {
      frame.verdict.origin.stage =
          oneOf(*stage, {Stage::Library, Stage::Neighbour, Stage::Sampled});
    }
  }

  void readTexts(const JsonField& field, FrameResult& frame) const {
    FrameTexts texts;
    const bool isSolved = frame.verdict.status == Status::Solved;
    if (isSolved && field.has("why")) texts.why = field.at("why").text();
    if (field.has("reason")) texts.reason = field.at("reason").text();
    frame.texts = std::make_shared<FrameTexts>(std::move(texts));
  }

  std::vector<CornerCovariances> covariancesIn(const JsonField& field, Status status) const {
    if (version_ == 1) {
      CornerCovariances none;
      none.fill(status == Status::Base ? Symmetric2{} : kNone);
      return {none};
    }
    std::vector<CornerCovariances> all;
    const JsonField quads = field.at("quads");
    for (const NamedQuad& quad : result_.quads) {
      const JsonField inFrame = quads.at(quad.name);
      const JsonField list = inFrame.at("covariance").list(4);
      CornerCovariances covariances;
      for (std::size_t i = 0; i < 4; ++i) covariances[i] = covarianceIn(list.at(i));
      all.push_back(covariances);
      if (inFrame.has("deviation")) checkDeviations(inFrame.at("deviation").list(4));
    }
    return all;
  }

  void readRetouch(const JsonField& field, FrameResult& frame) const {
    if (field.has("smoothed")) frame.smoothed = field.at("smoothed").length();
    if (field.has("filled")) frame.filled = field.at("filled").flag();
    if (!field.has("untouched")) return;
    const JsonField untouched = field.at("untouched");
    frame.untouched = std::make_shared<Untouched>(
        Untouched{transformIn(untouched.at("h")), covariancesIn(untouched, frame.verdict.status)});
  }

  void readRetouch() {
    if (whole_.has("smooth") && !whole_.at("smooth").isNull()) {
      const JsonField smooth = whole_.at("smooth");
      if (!(smooth.number() > 0.0)) smooth.refuse("a number above 0 or null is needed");
      result_.smooth = smooth.number();
    }
    if (whole_.has("fill")) result_.fill = whole_.at("fill").flag();
    if (!whole_.has("between")) return;
    const JsonField list = whole_.at("between");
    for (std::size_t i = 0; i < list.size(); ++i) {
      const JsonField frame = list.at(i).at("frame");
      const double number = frame.number();
      const bool inside = number >= result_.frames.front().frame &&
                          number <= result_.frames.back().frame &&
                          (i == 0 || number > result_.between.back().frame);
      if (!inside) frame.refuse("not between the frames, or not behind the one before");
      result_.between.push_back({number, transformIn(list.at(i).at("h"))});
    }
  }

  void requireFrameIn(const char* name, int frame) const {
    if (frame < result_.frames.front().frame || frame > result_.frames.back().frame) {
      whole_.at(name).refuse("not one of the frames");
    }
  }

  void readTracks() {
    const JsonField tracks = whole_.at("tracks");
    for (std::size_t i = 0; i < tracks.size(); ++i) {
      result_.tracks.push_back(trackIn(tracks.at(i)));
      indices_.emplace(result_.tracks.back().name, static_cast<int>(i));
    }
  }

  void readWorstTracks() {
    const std::optional<JsonField> list = known(whole_, "worst_tracks");
    for (std::size_t i = 0; list && i < list->size(); ++i) {
      const JsonField item = list->at(i);
      WorstTrack worst{item.at("track").text(), {}};
      const auto found = indices_.find(worst.name);
      worst.stretch = {found == indices_.end() ? 0 : found->second,
                       item.at("first").integer(),
                       item.at("last").integer(),
                       item.at("peak").integer(),
                       item.at("moves").length(),
                       item.at("off").lengthOrNull(),
                       item.at("stands_out").flag()};
      result_.worst.push_back(std::move(worst));
    }
  }

  JsonField whole_;
  std::uint64_t version_;
  ShotResult result_;
  std::unordered_map<std::string, int> indices_;  // of the tracks
};

}  // namespace

ShotResult readResult(const std::string& path) {
  const JsonFile file(path);
  return ResultReader(file.whole()).read();
}

}  // namespace cornerpin
