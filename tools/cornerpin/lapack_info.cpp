// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/lapack_info.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>
#include <system_error>

extern "C" {
void ilaver_(int* major, int* minor, int* patch);
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* pivots, int* info);
}

namespace cornerpin {

std::string lapackInfo() {
  int major = 0;
  int minor = 0;
  int patch = 0;
  ilaver_(&major, &minor, &patch);
  std::string version = fmt::format("{}.{}.{}", major, minor, patch);
  Dl_info info{};
  if (::dladdr(reinterpret_cast<const void*>(&sgetrf_), &info) == 0 || !info.dli_fname) {
    return version;
  }
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(info.dli_fname, error);
  return fmt::format("{} ({})", version, error ? info.dli_fname : file.string());
}

}  // namespace cornerpin
