// SPDX-License-Identifier: BSD-3-Clause
#include <fmt/format.h>

#include "shot/files/pin_text.h"
#include "shot/files/track_writers.h"

namespace cornerpin {

namespace {

constexpr Quad kPicture = {{{0.0, 0.0}, {1.0, 0.0}, {1.0, 1.0}, {0.0, 1.0}}};

}  // namespace

WriteNotes writeBlenderPin(const Pin& pin, OutputFile& out) {
  WriteNotes notes;
  const std::vector<const PinFrame*> frames = keyedFrames(pin, notes);
  noteRectangle(pin, kPicture, notes);
  const std::string name = quotedName(pin.name);
  out.write(
      fmt::format("# The corner pin {} for Blender's compositor: run it in the text editor.\n"
                  "# x grows to the right and y up, from the lower left corner of the picture,\n"
                  "# in units of its width and of its height.\n"
                  "import bpy\n\n"
                  "SOCKETS = (\"Upper Left\", \"Upper Right\", \"Lower Left\", \"Lower Right\")\n"
                  "# frame, then (x, y) of each socket\n"
                  "KEYS = [\n",
                  name));
  for (const PinFrame* frame : frames) {
    out.write(fmt::format("    ({}, {}, {}, {}, {}),\n", frame->frame,
                          pairText(frame->to[kTopLeft]), pairText(frame->to[kTopRight]),
                          pairText(frame->to[kBottomLeft]), pairText(frame->to[kBottomRight])));
  }
  out.write(
      fmt::format("]\n\n"
                  "scene = bpy.context.scene\n"
                  "scene.use_nodes = True\n"
                  "node = scene.node_tree.nodes.new(\"CompositorNodeCornerPin\")\n"
                  "node.label = {}\n"
                  "for frame, *corners in KEYS:\n"
                  "    for socket, (x, y) in zip(SOCKETS, corners):\n"
                  "        node.inputs[socket].default_value = (x, y, 0.0)\n"
                  "        node.inputs[socket].keyframe_insert(\"default_value\", frame=frame)\n",
                  name));
  return notes;
}

}  // namespace cornerpin
