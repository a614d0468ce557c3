// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_SHOW_PAGE_H
#define SHOW_SHOW_PAGE_H

#include <string>

#include "show/show_table.h"

namespace cornerpin {

/// A page for a browser with all shots in a table, the worst first, which can be sorted by any
/// column. One file that asks for nothing; the shots' own pages are links to files beside it.
std::string showPageText(const ShowTable& table);

/// A line over the values in 60 x 16 units, the largest at the top, with a gap where one is not
/// known: the data of an SVG path.
std::string sparkPath(const std::vector<double>& values);

}  // namespace cornerpin

#endif
