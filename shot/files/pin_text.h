// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_PIN_TEXT_H
#define SHOT_FILES_PIN_TEXT_H

#include <string>
#include <vector>

#include "shot/files/pin.h"

/// What the writers of pins share.
namespace cornerpin {

/// The frames whose corners all go somewhere, which are those that formats of points have a key
/// for; a note names the others. Throws `std::invalid_argument` where there is none.
std::vector<const PinFrame*> keyedFrames(const Pin& pin, WriteNotes& notes);

/// The frames that have a transform; a note names the others. Throws `std::invalid_argument` where
/// there is none.
std::vector<const PinFrame*> transformedFrames(const Pin& pin, WriteNotes& notes);

/// Notes, where the rectangle is not `picture`, the whole of it, that the format has no place for
/// it.
void noteRectangle(const Pin& pin, const Quad& picture, WriteNotes& notes);

/// The number as the shortest decimal without an exponent that reads back as the same.
std::string decimal(double value);

/// The corner as a pair of numbers, "(0.5, 1080)".
std::string pairText(Point p);

/// A name in double quotes, as Python reads it; on one line and in UTF-8 whatever is in it.
std::string quotedName(const std::string& name);

}  // namespace cornerpin

#endif
