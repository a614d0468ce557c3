// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_GZIP_H
#define SHOT_REPORT_GZIP_H

#include <string>
#include <string_view>

namespace cornerpin {

/// Bytes as a gzip file, packed as small as it goes, without a name or a time.
std::string gzip(std::string_view bytes);

}  // namespace cornerpin

#endif
