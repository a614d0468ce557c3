// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/result_file.h"

#include "shot/files/result_csv.h"
#include "shot/files/result_json.h"

namespace cornerpin {

void writeResult(const ShotResult& result, Format format, OutputFile& out,
                 const Progress& progress) {
  format == Format::Json ? writeResultJson(result, out, progress)
                         : writeResultCsv(result, out, progress);
}

}  // namespace cornerpin
