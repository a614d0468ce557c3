// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "shot/files/pin_text.h"
#include "shot/files/track_writers.h"
#include "shot/solve/wording.h"

namespace cornerpin {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Prims are named with letters, digits and underscores, and begin with no digit.
std::string primName(const std::string& name) {
  std::string text = name;
  for (char& c : text) {
    if (!isLetter(c) && !isDigit(c)) c = '_';
  }
  if (text.empty() || isDigit(text[0])) text.insert(0, "_");
  return text;
}

std::string rowText(double a, double b, double c, double d) {
  return fmt::format("({}, {}, {}, {})", decimal(a), decimal(b), decimal(c), decimal(d));
}

// Points are rows here, so that each column of the transform is a row; z stays.
std::string matrixText(const Homography& h) {
  return fmt::format("( {}, {}, (0, 0, 1, 0), {} )", rowText(h[0][0], h[1][0], 0.0, h[2][0]),
                     rowText(h[0][1], h[1][1], 0.0, h[2][1]),
                     rowText(h[0][2], h[1][2], 0.0, h[2][2]));
}

std::string pointText(double x, double y) {
  return fmt::format("({}, {}, 0)", decimal(x), decimal(y));
}

std::string pointsText(const Quad& quad) {
  std::string text;
  for (const Point p : quad) text.append(text.empty() ? "" : ", ").append(pointText(p.x, p.y));
  return text;
}

std::string extentText(const Quad& quad) {
  const auto [left, right] =
      std::minmax_element(quad.begin(), quad.end(), [](Point a, Point b) { return a.x < b.x; });
  const auto [low, high] =
      std::minmax_element(quad.begin(), quad.end(), [](Point a, Point b) { return a.y < b.y; });
  return pointText(left->x, low->y) + ", " + pointText(right->x, high->y);
}

void writeHead(const Pin& pin, const PinStyle& style, int first, int last, OutputFile& out) {
  const std::string rate = decimal(style.framesPerSecond);
  out.write(
      fmt::format("#usda 1.0\n"
                  "(\n"
                  "    defaultPrim = \"{0}\"\n"
                  "    startTimeCode = {1}\n"
                  "    endTimeCode = {2}\n"
                  "    timeCodesPerSecond = {3}\n"
                  "    framesPerSecond = {3}\n"
                  "    upAxis = \"Y\"\n"
                  ")\n\n"
                  "# The transform of {4}: points are rows (x, y, 0, 1), divided by the last of\n"
                  "# the four that come out. In pixels, x to the right and y up, from the lower\n"
                  "# left corner of the picture, so that the middle of its first pixel is\n"
                  "# (0.5, 0.5).\n"
                  "def Xform \"{0}\"\n"
                  "{{\n"
                  "    matrix4d xformOp:transform.timeSamples = {{\n",
                  primName(pin.name), first, last, rate, quotedName(pin.name)));
}

// A mesh of one face, the rectangle, with the picture's corners at its corners.
void writeTail(const Quad& from, OutputFile& out) {
  out.write(
      fmt::format("    }}\n"
                  "    uniform token[] xformOpOrder = [\"xformOp:transform\"]\n\n"
                  "    def Mesh \"rectangle\"\n"
                  "    {{\n"
                  "        uniform bool doubleSided = 1\n"
                  "        float3[] extent = [{}]\n"
                  "        int[] faceVertexCounts = [4]\n"
                  "        int[] faceVertexIndices = [0, 1, 2, 3]\n"
                  "        point3f[] points = [{}]\n"
                  "        texCoord2f[] primvars:st = [(0, 0), (1, 0), (1, 1), (0, 1)] (\n"
                  "            interpolation = \"vertex\"\n"
                  "        )\n"
                  "        uniform token subdivisionScheme = \"none\"\n"
                  "    }}\n"
                  "}}\n",
                  extentText(from), pointsText(from)));
}

}  // namespace

WriteNotes writeUsdaPin(const Pin& pin, const PinStyle& style, OutputFile& out) {
  WriteNotes notes;
  const std::vector<const PinFrame*> frames = transformedFrames(pin, notes);
  writeHead(pin, style, frames.front()->frame, frames.back()->frame, out);
  for (const PinFrame* frame : frames) {
    out.write(fmt::format("        {}: {},\n", frame->frame, matrixText(frame->h)));
  }
  writeTail(pin.from, out);
  return notes;
}

}  // namespace cornerpin
