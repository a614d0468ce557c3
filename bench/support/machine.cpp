// SPDX-License-Identifier: BSD-3-Clause
#include "bench/support/machine.h"

#include <dlfcn.h>

#include <fstream>

#include "cornerpin/internal/cpu.h"

namespace bench {

namespace {

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  std::string line;
  while (std::getline(file, line)) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

// The file whose definition of a symbol every library of this process uses.
std::string providerOf(const char* symbol) {
  Dl_info found{};
  void* const address = dlsym(RTLD_DEFAULT, symbol);
  if (address == nullptr || dladdr(address, &found) == 0) return "unknown";
  return found.dli_fname;
}

std::string compilerName() {
#if defined(__clang__)
  return "Clang " __clang_version__;
#elif defined(__GNUC__)
  return "GCC " __VERSION__;
#else
  return "unknown";
#endif
}

std::string kernelsName() {
  if (cornerpin::internal::hasAvx512()) return "avx512";
  return cornerpin::internal::hasAvx2() ? "avx2" : "scalar";
}

}  // namespace

Machine thisMachine() {
  return {processorName(), compilerName(), providerOf("sgetri_"), providerOf("strsm_"),
          kernelsName()};
}

}  // namespace bench
