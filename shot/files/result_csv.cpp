// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

#include "shot/files/csv_text.h"

namespace cornerpin {

namespace {

// Behind the frame and the quad.
const std::string kColumns =
    ",h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,good,good_rms,sigma,stage,"
    "qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3,"
    "model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason,loss,width,"
    "handed_over,kept_from,verdict,expected_error,doubts,smoothed,filled";

std::string csvTransform(const Homography& h) {
  std::string text;
  for (const auto& row : h) {
    for (double element : row) text += fmt::format(",{}", element);
  }
  return text;
}

std::string csvCorners(const ShotResult& result, const Homography& h, const Quad& quad) {
  std::string text;
  for (const Point& corner : quad) {
    const Point p = carried(result, h, corner);
    text += fmt::format(",{},{}", csvNumber(p.x), csvNumber(p.y));
  }
  return text;
}

// A frame's number, and the quad's name where there are several.
std::string csvFrame(const ShotResult& result, double frame, std::size_t quad) {
  const std::string number = fmt::format("{}", frame);
  return result.quads.size() > 1 ? number + "," + csvText(result.quads[quad].name) : number;
}

std::string csvFigures(const FrameResult& frame, std::size_t quad) {
  std::string text = ",,";
  if (frame.verdict.status != Status::Base)
    text = fmt::format(",{},{}", nameOf(frame.verdict.model), frame.verdict.onTop);
  text += "," + csvNumber(frame.figures.noise);
  for (double deviation : frame.figures.deviations(quad)) text += "," + csvNumber(deviation);
  return text;
}

std::string csvJudgement(const FrameResult& frame) {
  std::string codes;
  for (const Doubt& doubt : frame.doubts) {
    codes += codes.empty() ? "" : " ";
    codes += nameOf(doubt.code);
  }
  return fmt::format(",{},{},{}", judgementOf(frame), csvNumber(frame.expectedError), codes);
}

std::string csvFrames(const std::vector<int>& frames) {
  return fmt::format("{}", fmt::join(frames, " "));
}

// A frame with one of the quads.
std::string csvRow(const ShotResult& result, const FrameResult& frame, std::size_t quad) {
  const NamedQuad& named = result.quads[quad];
  std::string text = csvFrame(result, frame.frame, quad) + csvTransform(frame.h);
  text +=
      fmt::format(",{},{},{}", csvNumber(frame.rms), frame.tracks, nameOf(frame.verdict.status));
  const bool solved = frame.verdict.status == Status::Solved;
  text += solved ? fmt::format(",{},{},{},{}", frame.good, csvNumber(frame.goodRms),
                               csvNumber(frame.sigma), nameOf(frame.verdict.origin.stage))
                 : ",,,,";
  text += csvCorners(result, frame.h, named.corners);
  text += csvFigures(frame, quad);
  text +=
      fmt::format(",{},{},{},{},{}", csvText(whyOf(frame)), csvText(reasonOf(frame)),
                  solved ? fmt::format("{},{}", nameOf(frame.loss), csvNumber(frame.width)) : ",",
                  frame.handedOver, csvFrames(frame.verdict.keptFrom));
  return text + csvJudgement(frame) +
         fmt::format(",{},{}\n", csvNumber(frame.smoothed), frame.filled);
}

// A transform between frames; what is about a fit is empty.
std::string csvRow(const ShotResult& result, const BetweenFrame& between, std::size_t quad) {
  const std::string text = csvTransform(between.h) + ",,,between,,,," +
                           csvCorners(result, between.h, result.quads[quad].corners);
  const auto missing =
      std::count(kColumns.begin(), kColumns.end(), ',') - std::count(text.begin(), text.end(), ',');
  return csvFrame(result, between.frame, quad) + text +
         std::string(static_cast<std::size_t>(missing), ',') + "\n";
}

using Sink = std::function<void(std::string_view)>;

template <class Frame>
void writeRows(const ShotResult& result, const Frame& frame, const Sink& write) {
  for (std::size_t quad = 0; quad < result.quads.size(); ++quad) {
    write(csvRow(result, frame, quad));
  }
}

void writeAll(const ShotResult& result, PhaseCount& count, const Sink& write) {
  write((result.quads.size() > 1 ? "frame,quad" : "frame") + kColumns + "\n");
  auto between = result.between.begin();
  for (const FrameResult& frame : result.frames) {
    writeRows(result, frame, write);
    for (; between != result.between.end() && between->frame < frame.frame + 1.0; ++between) {
      writeRows(result, *between, write);
    }
    count.add();
  }
}

}  // namespace

void writeResultCsv(const ShotResult& result, OutputFile& out, const Progress& progress) {
  PhaseCount count(progress, Phase::Writing, result.frames.size());
  writeAll(result, count, [&out](std::string_view text) { out.write(text); });
}

std::string resultCsv(const ShotResult& result) {
  const Progress nobody;
  PhaseCount count(nobody, Phase::Writing, result.frames.size());
  std::string csv;
  writeAll(result, count, [&csv](std::string_view text) { csv += text; });
  return csv;
}

}  // namespace cornerpin
