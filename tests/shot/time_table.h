// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_TIME_TABLE_H
#define TESTS_SHOT_TIME_TABLE_H

#include <functional>
#include <string>

#include "tests/shot/known_shots.h"

// What smoothing without a budget, and filling in, are worth on shots of which all is known. Errors
// and jitter are those of the corners of the result's own quad.
namespace made {

void printTimeHeader();

// Prints a row over the shots with seeds 1 .. shots.
void printTimeRow(const std::string& name, const std::function<KnownShot(unsigned seed)>& make,
                  unsigned shots);

}  // namespace made

#endif
