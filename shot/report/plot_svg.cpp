// SPDX-License-Identifier: BSD-3-Clause
#include "shot/report/plot_svg.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "shot/advice/closing_words.h"
#include "shot/report/html_text.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

// In pixels.
constexpr double kWidth = 960.0;
constexpr double kLeft = 80.0;
constexpr double kRight = 24.0;
constexpr double kTop = 64.0;
constexpr double kPanel = 140.0;
constexpr double kBetween = 44.0;
constexpr double kBelow = 40.0;
constexpr double kMark = 4.0;

constexpr double kMostTimesLimit = 8.0;

// Apart for all kinds of colour vision.
constexpr const char* kBlue = "#0072b2";
constexpr const char* kOrange = "#d55e00";
constexpr const char* kGrey = "#555555";

// The same on a dark ground, where the reader's system asks for one.
constexpr const char* kDarkStyle =
    "<style>@media (prefers-color-scheme: dark) {\n"
    "  svg { fill: #e7eaed }\n  rect { fill: #121518 }\n"
    "  [stroke=\"#0072b2\"] { stroke: #56b4e9 }\n  [stroke=\"#555555\"] { stroke: #a6afb9 }\n"
    "  [stroke=\"#d55e00\"] { stroke: #f09a4c }\n  [fill=\"#d55e00\"] { fill: #f09a4c }\n"
    "}</style>\n";

// A figure of some frames next to each other, and whether one of them is doubtful.
struct PlotPoint {
  double frame = 0.0;
  double value = 0.0;
  bool isDoubtful = false;
};

enum class Stands { Largest, Smallest };

using Figure = double (*)(const FrameResult&);

// A missing figure stands for the others before all.
bool standsBefore(double a, double b, Stands which) {
  if (!std::isfinite(a) || !std::isfinite(b)) return !std::isfinite(a) && std::isfinite(b);
  return which == Stands::Largest ? a > b : a < b;
}

std::vector<PlotPoint> pointsOf(const ShotResult& result, Figure figure, Stands which) {
  const std::size_t all = result.frames.size();
  const std::size_t each = (all + kMostPoints - 1) / kMostPoints;
  std::vector<PlotPoint> points;
  points.reserve(all / each + 1);
  for (std::size_t f = 0; f < all; ++f) {
    const FrameResult& frame = result.frames[f];
    const PlotPoint point = {static_cast<double>(frame.frame), figure(frame),
                             !frame.doubts.empty()};
    if (f % each == 0) {
      points.push_back(point);
      continue;
    }
    PlotPoint& last = points.back();
    const bool isDoubtful = last.isDoubtful || point.isDoubtful;
    if (standsBefore(point.value, last.value, which)) last = point;
    last.isDoubtful = isDoubtful;
  }
  return points;
}

double largestOf(const std::vector<PlotPoint>& points) {
  double largest = 0.0;
  for (const PlotPoint& p : points) {
    if (std::isfinite(p.value)) largest = std::max(largest, p.value);
  }
  return largest;
}

// One plot: where frames and values are on it.
struct Panel {
  double top = 0.0;
  double first = 0.0;  // frames
  double last = 0.0;
  double most = 1.0;  // value at the upper edge

  double x(double frame) const {
    const double share = last > first ? (frame - first) / (last - first) : 0.5;
    return kLeft + share * (kWidth - kLeft - kRight);
  }
  double y(double value) const { return top + kPanel * (1.0 - std::clamp(value / most, 0.0, 1.0)); }
};

std::string text(double x, double y, const char* anchor, const std::string& words) {
  return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", x, y, anchor,
                     htmlText(words));
}

std::string line(double x1, double y1, double x2, double y2, const char* style) {
  return fmt::format("<path d=\"M{:.1f} {:.1f}L{:.1f} {:.1f}\" {}/>\n", x1, y1, x2, y2, style);
}

std::string frameOf(const Panel& panel, const std::string& label, const std::string& most) {
  const double bottom = panel.top + kPanel;
  const double right = kWidth - kRight;
  return fmt::format("<path d=\"M{0} {1}V{2}H{3}\" fill=\"none\" stroke=\"{4}\"/>\n", kLeft,
                     panel.top, bottom, right, kGrey) +
         text(kLeft, panel.top - kMark * 2.0, "start", label) +
         text(kLeft - kMark * 2.0, panel.top + kMark, "end", most) +
         text(kLeft - kMark * 2.0, bottom + kMark, "end", "0");
}

// The line through the points, with gaps where there is no figure.
std::string courseOf(const Panel& panel, const std::vector<PlotPoint>& points) {
  std::string path;
  bool isBegun = false;
  for (const PlotPoint& p : points) {
    const bool isKnown = std::isfinite(p.value);
    if (isKnown) {
      fmt::format_to(std::back_inserter(path), "{}{:.1f} {:.1f}", isBegun ? 'L' : 'M',
                     panel.x(p.frame), panel.y(p.value));
    }
    isBegun = isKnown;
  }
  if (path.empty()) return {};
  return fmt::format(
      "<path d=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"1.5\" "
      "stroke-linecap=\"round\"/>\n",
      path, kBlue);
}

std::string triangle(double x, double y) {
  return fmt::format("M{:.1f} {:.1f}l{} {}h{}z", x, y - kMark, kMark, kMark * 2.0, -kMark * 2.0);
}

std::string cross(double x, double y) {
  return fmt::format("M{:.1f} {:.1f}l{} {}m0 {}l{} {}", x - kMark, y - kMark, kMark * 2.0,
                     kMark * 2.0, -kMark * 2.0, -kMark * 2.0, kMark * 2.0);
}

// Triangles where frames are doubtful, crosses at the upper edge where one has no figure.
std::string marksOf(const Panel& panel, const std::vector<PlotPoint>& points) {
  std::string triangles;
  std::string crosses;
  for (const PlotPoint& p : points) {
    if (!p.isDoubtful) continue;
    const double x = panel.x(p.frame);
    if (std::isfinite(p.value)) {
      triangles += triangle(x, panel.y(p.value));
    } else {
      crosses += cross(x, panel.top);
    }
  }
  std::string marks;
  if (!triangles.empty())
    marks += fmt::format("<path d=\"{}\" fill=\"{}\"/>\n", triangles, kOrange);
  if (!crosses.empty()) {
    marks += fmt::format("<path d=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"2\"/>\n",
                         crosses, kOrange);
  }
  return marks;
}

double errorOf(const FrameResult& frame) { return frame.expectedError; }
double rmsOf(const FrameResult& frame) {
  return frame.verdict.status == Status::Solved ? frame.goodRms : frame.rms;
}
double tracksOf(const FrameResult& frame) { return frame.tracks; }

std::string errors(Panel panel, const ShotResult& result) {
  const std::vector<PlotPoint> points = pointsOf(result, errorOf, Stands::Largest);
  const double largest = largestOf(points);
  const bool hasLimit = std::isfinite(result.maxError);
  panel.most = hasLimit
                   ? std::clamp(largest, 1.25 * result.maxError, kMostTimesLimit * result.maxError)
                   : largest;
  if (!(panel.most > 0.0)) panel.most = 1.0;
  std::string label = "Expected corner error";
  if (panel.most < largest) label += ", drawn at the upper edge where it is more";
  std::string svg = frameOf(panel, label, pixels(panel.most));
  if (hasLimit) {
    const double y = panel.y(result.maxError);
    svg += line(kLeft, y, kWidth - kRight, y,
                fmt::format("stroke=\"{}\" stroke-dasharray=\"6 4\"", kOrange).c_str()) +
           text(kWidth - kRight, y - kMark, "end", "limit " + pixels(result.maxError));
  }
  return svg + courseOf(panel, points) + marksOf(panel, points);
}

std::string residuals(Panel panel, const ShotResult& result) {
  const std::vector<PlotPoint> points = pointsOf(result, rmsOf, Stands::Largest);
  if (const double largest = largestOf(points); largest > 0.0) panel.most = largest;
  return frameOf(panel, "RMS of the good tracks", pixels(panel.most)) + courseOf(panel, points) +
         marksOf(panel, points);
}

std::string tracksInUse(Panel panel, const ShotResult& result) {
  const std::vector<PlotPoint> points = pointsOf(result, tracksOf, Stands::Smallest);
  if (const double largest = largestOf(points); largest > 0.0) panel.most = largest;
  return frameOf(panel, "Tracks in use", fmt::format("{:.0f}", panel.most)) +
         courseOf(panel, points) + marksOf(panel, points);
}

}  // namespace

std::string plotSvg(const ShotResult& result, const std::string& title) {
  constexpr double kStep = kPanel + kBetween;
  const int first = result.frames.front().frame;
  const int last = result.frames.back().frame;
  Panel panel;
  panel.top = kTop;
  panel.first = first;
  panel.last = last;
  Panel second = panel;
  second.top += kStep;
  Panel third = second;
  third.top += kStep;
  const double bottom = third.top + kPanel;
  const std::string sentence = closingSentence(result);
  return fmt::format(
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" "
             "viewBox=\"0 0 {0} {1}\" role=\"img\" aria-labelledby=\"title desc\" "
             "font-family=\"sans-serif\" font-size=\"13\" fill=\"#222222\">\n"
             "<title id=\"title\">{2}</title>\n<desc id=\"desc\">{3} Triangles mark doubtful "
             "frames, crosses those without a figure.</desc>\n"
             "{4}<rect width=\"{0}\" height=\"{1}\" fill=\"#ffffff\"/>\n",
             kWidth, bottom + kBelow, htmlText(title), htmlText(sentence), kDarkStyle) +
         text(kLeft, kTop - kBetween, "start", title + ". " + sentence) + errors(panel, result) +
         residuals(second, result) + tracksInUse(third, result) +
         text(kLeft, bottom + kBelow / 2.0, "start", fmt::format("frame {}", first)) +
         (last > first ? text(kWidth - kRight, bottom + kBelow / 2.0, "end", std::to_string(last))
                       : std::string()) +
         "</svg>\n";
}

}  // namespace cornerpin
