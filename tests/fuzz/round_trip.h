// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_FUZZ_ROUND_TRIP_H
#define TESTS_FUZZ_ROUND_TRIP_H

#include <string>
#include <string_view>
#include <vector>

#include "shot/files/format.h"

namespace cornerpin {

/// A reader that is given files of any bytes, which has a folder of its name in the corpus.
struct FuzzedReader {
  const char* word;
  Format format;
  bool isOfResults = false;  ///< otherwise of tracks
};
const std::vector<FuzzedReader>& fuzzedReaders();

struct RoundTrip {
  bool isRead = false;  ///< not refused with `InputError`
  std::string flaw;     ///< empty where what was read is still the same
};

/// Reads bytes as tracks of a format. What is read is written, in the same format where it has a
/// writer and as CSV where it has none, and read again: names, frames, positions and weights are
/// the same, as far as the writer does not say that the format cannot carry them.
RoundTrip roundTrip(Format format, std::string_view bytes);

/// The same by a reader. Of results, the frames, their statuses and transforms and those between,
/// and the quads are the same; where no frame tells these as they are, the result is only read.
RoundTrip roundTrip(const FuzzedReader& reader, std::string_view bytes);

}  // namespace cornerpin

#endif
