// SPDX-License-Identifier: BSD-3-Clause
#include "shot/interface/result.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "shot/advice/closing_words.h"
#include "shot/files/conversion.h"
#include "shot/files/quad_file.h"
#include "shot/files/result_csv.h"
#include "shot/files/result_json.h"
#include "shot/files/result_reader.h"
#include "shot/files/summary.h"
#include "shot/files/track_advice.h"
#include "shot/interface/boundary.h"
#include "shot/plane/homography.h"
#include "shot/report/tracks_of_result.h"
#include "shot/solve/rebase.h"
#include "shot/solve/this_program.h"

namespace cornerpin::shot {

namespace {

constexpr std::size_t kElements = 9;
constexpr std::size_t kCorners = 4;

std::array<double, kElements> flat(const Homography& h) {
  std::array<double, kElements> elements{};
  auto to = elements.begin();
  for (const auto& row : h) to = std::copy(row.begin(), row.end(), to);
  return elements;
}

std::array<double, 4> flat(const Symmetric2& c) { return {c.xx, c.xy, c.xy, c.yy}; }

Quad quadOf(const NamedQuad& quad) {
  Quad made;
  made.name = quad.name;
  for (std::size_t i = 0; i < kCorners; ++i) {
    made.corners[2 * i] = quad.corners[i].x;
    made.corners[2 * i + 1] = quad.corners[i].y;
  }
  return made;
}

Frame frameOf(const FrameResult& from) {
  const Verdict& verdict = from.verdict;
  Frame frame;
  frame.frame = from.frame;
  frame.transform = flat(from.h);
  frame.status = nameOf(verdict.status);
  if (verdict.status != Status::Base) {
    frame.model = nameOf(verdict.model);
    frame.onTop = verdict.onTop;
    frame.keptFrom = verdict.keptFrom;
  }
  frame.reason = reasonOf(from);
  frame.tracks = from.tracks;
  frame.handedOver = from.handedOver;
  frame.rms = from.rms;
  frame.noise = from.figures.noise;
  frame.goodRms = frame.sigma = kNoFigure;
  if (verdict.status == Status::Solved) {
    frame.why = whyOf(from);
    frame.stage = nameOf(verdict.origin.stage);
    frame.good = from.good;
    frame.goodRms = from.goodRms;
    frame.sigma = from.sigma;
    frame.loss = nameOf(from.loss);
    frame.width = from.width;
  }
  frame.isDoubtful = !from.doubts.empty();
  for (const cornerpin::Doubt& doubt : from.doubts) {
    frame.doubts.push_back({nameOf(doubt.code), doubt.text});
  }
  frame.expectedError = from.expectedError;
  frame.smoothed = from.smoothed;
  frame.filled = from.filled;
  return frame;
}

const char* wordOf(TrackUse use) {
  if (use == TrackUse::Good) return "good";
  return use == TrackUse::Ignored ? "ignored" : "absent";
}

Track trackOf(const TrackResult& from) {
  Track track;
  track.name = from.name;
  track.x = from.place.x;
  track.y = from.place.y;
  track.covariance = flat(from.covariance);
  for (const cornerpin::TrackRun& run : from.runs) {
    track.runs.push_back({run.first, run.last, wordOf(run.use)});
  }
  return track;
}

void requireQuad(const ShotResult& result, std::size_t quad) {
  if (quad < result.quads.size()) return;
  throw std::invalid_argument(
      fmt::format("quad: {} is wanted, and the result has {}", quad, result.quads.size()));
}

// So many numbers of each frame in a row.
template <class Add>
std::vector<double> ofFrames(const ShotResult& result, std::size_t each, const Add& add) {
  std::vector<double> numbers;
  numbers.reserve(each * result.frames.size());
  for (const FrameResult& frame : result.frames) add(frame, numbers);
  return numbers;
}

}  // namespace

std::vector<NamedQuad> namedQuadsOf(const std::vector<Quad>& quads) {
  std::vector<NamedQuad> named;
  named.reserve(quads.size());
  for (const Quad& quad : quads) {
    NamedQuad made;
    made.name = quad.name;
    for (std::size_t i = 0; i < kCorners; ++i) {
      made.corners[i] = {quad.corners[2 * i], quad.corners[2 * i + 1]};
    }
    named.push_back(std::move(made));
  }
  return named;
}

Result::Result(std::shared_ptr<const Data> data) : data_(std::move(data)) {}
Result::~Result() = default;

int Result::baseFrame() const { return data_->result.baseFrame; }
std::string Result::baseWhy() const { return data_->result.whyBase; }
int Result::referenceFrame() const { return data_->result.referenceFrame; }
double Result::maxError() const { return data_->result.maxError; }

std::vector<Frame> Result::frames() const {
  std::vector<Frame> frames;
  frames.reserve(data_->result.frames.size());
  for (const FrameResult& frame : data_->result.frames) frames.push_back(frameOf(frame));
  return frames;
}

std::vector<int> Result::frameNumbers() const {
  std::vector<int> numbers;
  numbers.reserve(data_->result.frames.size());
  for (const FrameResult& frame : data_->result.frames) numbers.push_back(frame.frame);
  return numbers;
}

std::vector<double> Result::transforms() const {
  return ofFrames(data_->result, kElements, [](const FrameResult& frame, auto& numbers) {
    for (const auto& row : frame.h) numbers.insert(numbers.end(), row.begin(), row.end());
  });
}

std::vector<double> Result::expectedErrors() const {
  return ofFrames(data_->result, 1, [](const FrameResult& frame, auto& numbers) {
    numbers.push_back(frame.expectedError);
  });
}

std::vector<BetweenFrame> Result::between() const {
  std::vector<BetweenFrame> frames;
  frames.reserve(data_->result.between.size());
  for (const auto& frame : data_->result.between) frames.push_back({frame.frame, flat(frame.h)});
  return frames;
}

std::vector<Quad> Result::quads() const {
  std::vector<Quad> quads;
  quads.reserve(data_->result.quads.size());
  for (const NamedQuad& quad : data_->result.quads) quads.push_back(quadOf(quad));
  return quads;
}

std::vector<double> Result::corners(std::size_t quad) const {
  const ShotResult& result = data_->result;
  requireQuad(result, quad);
  return ofFrames(result, 2 * kCorners, [&](const FrameResult& frame, auto& numbers) {
    for (const Point corner : result.quads[quad].corners) {
      const Point to = carried(result, frame, corner);
      numbers.insert(numbers.end(), {to.x, to.y});
    }
  });
}

std::vector<double> Result::covariance(std::size_t quad) const {
  requireQuad(data_->result, quad);
  return ofFrames(data_->result, 4 * kCorners, [&](const FrameResult& frame, auto& numbers) {
    for (const Symmetric2& c : frame.figures.quads[quad]) {
      const std::array<double, 4> elements = flat(c);
      numbers.insert(numbers.end(), elements.begin(), elements.end());
    }
  });
}

std::vector<double> Result::deviation(std::size_t quad) const {
  requireQuad(data_->result, quad);
  return ofFrames(data_->result, kCorners, [&](const FrameResult& frame, auto& numbers) {
    const std::array<double, kCorners> deviations = frame.figures.deviations(quad);
    numbers.insert(numbers.end(), deviations.begin(), deviations.end());
  });
}

std::vector<Track> Result::tracks() const {
  std::vector<Track> tracks;
  tracks.reserve(data_->result.tracks.size());
  for (const TrackResult& track : data_->result.tracks) tracks.push_back(trackOf(track));
  return tracks;
}

std::vector<LeftOutTrack> Result::leftOutTracks() const {
  std::vector<LeftOutTrack> tracks;
  if (!data_->result.unused) return tracks;
  tracks.reserve(data_->result.unused->size());
  for (const UnusedTrack& track : *data_->result.unused) {
    tracks.push_back({track.name, nameOf(track.why)});
  }
  return tracks;
}

std::vector<WorstTrack> Result::worstTracks() const {
  std::vector<WorstTrack> tracks;
  tracks.reserve(data_->result.worst.size());
  for (const cornerpin::WorstTrack& track : data_->result.worst) {
    const TrackStretch& s = track.stretch;
    tracks.push_back({track.name, s.first, s.last, s.peak, s.moves, s.off, s.standsOut});
  }
  return tracks;
}

std::string Result::closingSentence() const { return cornerpin::closingSentence(data_->result); }

std::vector<Stretch> Result::closingStretches() const {
  std::vector<Stretch> stretches;
  for (const StretchWords& words : cornerpin::closingStretches(data_->result)) {
    stretches.push_back({words.frames.first, words.frames.last, words.text});
  }
  return stretches;
}

std::vector<Stretch> Result::advice() const {
  std::vector<Stretch> stretches;
  stretches.reserve(data_->result.advice.size());
  for (const Advice& advice : data_->result.advice) {
    stretches.push_back({advice.frames.first, advice.frames.last, advice.text});
  }
  return stretches;
}

std::optional<InputFile> Result::input() const {
  const std::optional<cornerpin::InputFile>& input = data_->result.provenance.input;
  if (!input) return std::nullopt;
  return InputFile{input->name, input->sha256, input->format,
                   static_cast<std::size_t>(input->rows)};
}

std::vector<std::string> Result::notes() const { return data_->notes; }

FrameCounts Result::counts() const {
  const Summary summary = summarise(data_->result);
  return {data_->result.frames.size(), summary.solved, summary.reduced, summary.held,
          summary.doubtful};
}

std::string Result::doubtfulFrames() const { return doubtfulFramesLine(data_->result); }

std::string Result::summary(const SummaryOptions& options) const {
  return summaryTable(data_->result, {options.verbose, options.colour, options.rows});
}

std::string Result::trackAdvice() const { return cornerpin::trackAdvice(data_->result); }

std::string Result::toJson() const { return resultJson(data_->result); }
std::string Result::toCsv() const { return resultCsv(data_->result); }

Result Result::rebase(int reference) const {
  const auto data = std::make_shared<Data>(*data_);
  ShotResult& result = data->result;
  const int from = result.referenceFrame;
  cornerpin::rebase(result, reference);
  if (reference != from) result.provenance.rebased.push_back({from, reference, thisProgram()});
  return Result(data);
}

Result Result::withTracks(const std::string& path, const Progress& progress) const {
  return atBoundary(progress, [&](const cornerpin::Progress& report) {
    const auto data = std::make_shared<Data>(*data_);
    data->notes.clear();
    data->tracks = std::make_shared<const cornerpin::Tracks>(
        tracksOfResult(path, data_->result, report, data->notes));
    return Result(data);
  });
}

QuadFile readQuads(const std::string& path) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    const cornerpin::QuadFile file = cornerpin::readQuads(path);
    QuadFile made;
    made.frame = file.frame;
    made.quads.reserve(file.quads.size());
    for (const NamedQuad& quad : file.quads) made.quads.push_back(quadOf(quad));
    return made;
  });
}

Result readResult(const std::string& path, const Picture& picture) {
  return atBoundary({}, [&](const cornerpin::Progress&) {
    const auto data = std::make_shared<Result::Data>();
    data->result = cornerpin::readResult(path);
    data->source = path;
    cornerpin::Picture& own = data->result.provenance.picture;
    cornerpin::Picture contradicted;
    if (tell(own, Format::Json, pictureOf(picture), contradicted) != 0) {
      throw std::invalid_argument("first_frame: the result tells the clip's first frame itself");
    }
    refuseContradiction(contradicted, own, path);
    return Result(data);
  });
}

}  // namespace cornerpin::shot
