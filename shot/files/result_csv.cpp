// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_csv.h"

#include <fmt/format.h>

#include "shot/files/csv_text.h"

namespace cornerpin {

namespace {

std::string csvFigures(const FrameResult& frame) {
  std::string text = ",,";
  if (frame.verdict.status != Status::Base)
    text = fmt::format(",{},{}", nameOf(frame.verdict.model), frame.verdict.onTop);
  text += "," + csvNumber(frame.figures.noise);
  for (double deviation : frame.figures.deviations()) text += "," + csvNumber(deviation);
  return text;
}

std::string csvFrame(const ShotResult& result, const FrameResult& frame,
                     const std::optional<Quad>& quad) {
  std::string text = fmt::format("{}", frame.frame);
  for (const auto& row : frame.h) {
    for (double element : row) text += fmt::format(",{}", element);
  }
  text +=
      fmt::format(",{},{},{}", csvNumber(frame.rms), frame.tracks, nameOf(frame.verdict.status));
  const bool solved = frame.verdict.status == Status::Solved;
  text += solved ? fmt::format(",{},{},{},{}", frame.good, csvNumber(frame.goodRms),
                               csvNumber(frame.sigma), nameOf(frame.verdict.origin.stage))
                 : ",,,,";
  if (quad) {
    for (const Point& corner : *quad) {
      const Point p = carried(result, frame, corner);
      text += fmt::format(",{},{}", csvNumber(p.x), csvNumber(p.y));
    }
  }
  text += csvFigures(frame);
  return text + fmt::format(",{},{},{}\n", csvText(frame.why), csvText(frame.reason),
                            solved
                                ? fmt::format("{},{}", nameOf(frame.loss), csvNumber(frame.width))
                                : ",");
}

}  // namespace

void writeResultCsv(const ShotResult& result, const std::optional<Quad>& quad, OutputFile& out) {
  out.write(
      "frame,h00,h01,h02,h10,h11,h12,h20,h21,h22,rms,tracks,status,inliers,inlier_rms,scale,stage");
  if (quad) out.write(",qx0,qy0,qx1,qy1,qx2,qy2,qx3,qy3");
  out.write(
      ",model,on_top,noise,deviation0,deviation1,deviation2,deviation3,why,reason,loss,width\n");
  for (const FrameResult& frame : result.frames) out.write(csvFrame(result, frame, quad));
}

}  // namespace cornerpin
