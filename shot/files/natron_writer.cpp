// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include "shot/files/pin_text.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

namespace {

std::string cornersText(const Quad& quad) {
  return fmt::format("{}, {}, {}, {}", pairText(quad[kBottomLeft]), pairText(quad[kBottomRight]),
                     pairText(quad[kTopRight]), pairText(quad[kTopLeft]));
}

}  // namespace

WriteNotes writeNatronPin(const Pin& pin, OutputFile& out) {
  WriteNotes notes;
  const std::vector<const PinFrame*> frames = keyedFrames(pin, notes);
  out.write(
      fmt::format("# The corner pin {} for Natron: run it in the script editor.\n"
                  "# In pixels, x to the right and y up, from the lower left corner of the\n"
                  "# picture, so that the middle of its first pixel is (0.5, 0.5).\n\n"
                  "# (x, y) of from1 to from4: bottom left, bottom right, top right, top left\n"
                  "FROM = ({})\n"
                  "# frame, then (x, y) of to1 to to4 in the same order\n"
                  "KEYS = [\n",
                  quotedName(pin.name), cornersText(pin.from)));
  for (const PinFrame* frame : frames) {
    out.write(fmt::format("    ({}, {}),\n", frame->frame, cornersText(frame->to)));
  }
  out.write(
      "]\n\n"
      "pin = app.createNode(\"net.sf.openfx.CornerPinPlugin\")\n"
      "for number, (x, y) in enumerate(FROM, 1):\n"
      "    param = pin.getParam(\"from%d\" % number)\n"
      "    param.setValueAtTime(x, KEYS[0][0], 0)\n"
      "    param.setValueAtTime(y, KEYS[0][0], 1)\n"
      "for frame, *corners in KEYS:\n"
      "    for number, (x, y) in enumerate(corners, 1):\n"
      "        param = pin.getParam(\"to%d\" % number)\n"
      "        param.setValueAtTime(x, frame, 0)\n"
      "        param.setValueAtTime(y, frame, 1)\n");
  return notes;
}

}  // namespace cornerpin
