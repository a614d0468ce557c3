// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_PROCESSOR_H
#define TESTS_SUPPORT_PROCESSOR_H

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace processor {

// What the system says that the first processor can do, by the system's names. Empty where it says
// nothing.
inline std::set<std::string> flags() {
  std::ifstream file("/proc/cpuinfo");
  std::string line;
  while (std::getline(file, line)) {
    if (line.rfind("flags", 0) != 0) continue;
    std::istringstream words(line.substr(line.find(':') + 1));
    std::set<std::string> found;
    for (std::string word; words >> word;) found.insert(word);
    return found;
  }
  return {};
}

// The names of the kernel variants that these flags ask for, in their order.
inline std::vector<std::string> kernelVariants() {
  const std::set<std::string> has = flags();
  std::vector<std::string> names = {"scalar"};
  if (has.count("avx2") == 0) return names;
  names.emplace_back("avx2");
  for (const char* flag : {"fma", "avx512f", "avx512vl", "avx512dq"}) {
    if (has.count(flag) == 0) return names;
  }
  names.emplace_back("avx512");
  return names;
}

}  // namespace processor

#endif
