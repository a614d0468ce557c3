// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_csv.h"

#include <fmt/format.h>

#include "shot/files/csv_text.h"

namespace cornerpin {

namespace {

std::string csvTransform(const FrameResult& frame) {
  std::string text;
  for (const auto& row : frame.h) {
    for (double element : row) text += fmt::format(",{}", element);
  }
  return text;
}

std::string csvCorners(const ShotResult& result, const FrameResult& frame, const Quad& quad) {
  std::string text;
  for (const Point& corner : quad) {
    const Point p = carried(result, frame, corner);
    text += fmt::format(",{},{}", csvNumber(p.x), csvNumber(p.y));
  }
  return text;
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

// A frame with one of the quads, whose name stands there where there are several.
std::string csvRow(const ShotResult& result, const FrameResult& frame, std::size_t quad) {
  const NamedQuad& named = result.quads[quad];
  std::string text = fmt::format("{}", frame.frame);
  if (result.quads.size() > 1) text += "," + csvText(named.name);
  text += csvTransform(frame);
  text +=
      fmt::format(",{},{},{}", csvNumber(frame.rms), frame.tracks, nameOf(frame.verdict.status));
  const bool solved = frame.verdict.status == Status::Solved;
  text += solved ? fmt::format(",{},{},{},{}", frame.good, csvNumber(frame.goodRms),
                               csvNumber(frame.sigma), nameOf(frame.verdict.origin.stage))
                 : ",,,,";
  text += csvCorners(result, frame, named.corners);
  text += csvFigures(frame, quad);
  text +=
      fmt::format(",{},{},{},{}", csvText(frame.why), csvText(frame.reason),
                  solved ? fmt::format("{},{}", nameOf(frame.loss), csvNumber(frame.width)) : ",",
                  frame.handedOver);
  return text + csvJudgement(frame) + "\n";
}

}  // namespace

void writeResultCsv(const ShotResult& result, OutputFile& out) {
  out.write(result.quads.size() > 1 ? "frame,quad" : "frame");
  out.write(
      ",h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,good,good_rms,sigma,stage,"
      "qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3,"
      "model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason,loss,width,"
      "handed_over,verdict,expected_error,doubts\n");
  for (const FrameResult& frame : result.frames) {
    for (std::size_t quad = 0; quad < result.quads.size(); ++quad) {
      out.write(csvRow(result, frame, quad));
    }
  }
}

}  // namespace cornerpin
