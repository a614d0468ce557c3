// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_KEYFRAMES_SECTION_H
#define SHOT_FILES_KEYFRAMES_SECTION_H

#include <string>
#include <string_view>

#include "shot/files/pin.h"

namespace cornerpin {

/// What the heading of a section of keyframe text says: cells with tabs between, of which the last
/// is the property that the section's rows hold.
struct KeyframesSection {
  enum class Kind {
    Layer,  ///< no section: what follows belongs to another layer
    End,    ///< nor this one
    Corner,
    FeatureCenter,
    AttachPoint,
    Anchor,
    Position,
    Scale,
    Rotation,
    Other,
  };

  Kind kind = Kind::Other;
  Corner corner = kBottomLeft;  ///< of a corner
  std::string owner;            ///< of a corner, its effect; of a point, its tracker
  std::string point;            ///< the name of a tracker's point
};

KeyframesSection sectionOf(std::string_view heading);

}  // namespace cornerpin

#endif
