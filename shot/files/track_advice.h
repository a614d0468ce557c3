// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_TRACK_ADVICE_H
#define SHOT_FILES_TRACK_ADVICE_H

#include <string>

#include "shot/solve/result.h"

namespace cornerpin {

/// The tracks of a result that are worth a look, as lines for people: those that move corners most
/// (`ShotResult::worst`), and the five that are ignored in most of the frames in which they are
/// seen, in at least `kFewestIgnored` frames; each with the option that leaves it out there. That
/// it helps is not known: nothing is solved.
std::string trackAdvice(const ShotResult& result);

constexpr int kFewestIgnored = 2;

}  // namespace cornerpin

#endif
