// SPDX-License-Identifier: BSD-3-Clause
// fuzz_reader --reader=WORD [LIBFUZZER-OPTION...] [FOLDER...]: gives a reader files that
// libFuzzer makes up, and stops where one breaks it (`roundTrip`). script/fuzz runs it.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tests/fuzz/round_trip.h"

namespace {

const cornerpin::FuzzedReader* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  for (int i = 1; i < *count; ++i) {
    for (const cornerpin::FuzzedReader& reader : cornerpin::fuzzedReaders()) {
      if ((*arguments)[i] == std::string("--reader=") + reader.word) chosen = &reader;
    }
  }
  if (chosen == nullptr) {
    std::fputs("fuzz_reader: --reader=WORD is missing\n", stderr);
    std::exit(2);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string flaw = cornerpin::roundTrip(*chosen, bytes).flaw;
  if (flaw.empty()) return 0;
  std::fprintf(stderr, "%s\n", flaw.c_str());
  std::abort();
}
