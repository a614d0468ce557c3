// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_ADVICE_CLOSING_WORDS_H
#define SHOT_ADVICE_CLOSING_WORDS_H

#include <string>
#include <vector>

#include "shot/solve/result.h"
#include "shot/solve/wording.h"

namespace cornerpin {

/// What a solve comes to, in lines for people: how many frames are good; which are doubtful; and
/// for the three worst stretches of these why, by their worst frame, and what was found to help
/// (`ShotResult::advice`).
///
///     Good: 144 of 192 frames. Doubtful: 0-9, 11, 90-126.
///       0-11    the top right corner may be 17.9 px off, the limit is 4.43 px (frame 2);
///               without t133 there it is 3 px: --drop t133:0-11
///
/// \param colour  marks "Good" and "Doubtful" for a terminal
std::string closingWords(const ShotResult& result, bool colour);

/// The same in parts: the first line, and what is said of each stretch, as one line.
struct StretchWords {
  Stretch frames;
  std::string text;
};
std::string closingSentence(const ShotResult& result);
std::vector<StretchWords> closingStretches(const ShotResult& result);

/// The lines of those stretches alone for which something was found to help; empty without any.
std::string advisedStretches(const ShotResult& result);

}  // namespace cornerpin

#endif
