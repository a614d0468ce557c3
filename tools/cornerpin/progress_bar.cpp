// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/progress_bar.h"

#include <unistd.h>

#include <cstdio>

namespace cornerpin {

namespace {

constexpr std::size_t kWidth = 30;
constexpr const char* kFull = "##############################";
constexpr const char* kEmpty = "..............................";

}  // namespace

ProgressBar::ProgressBar()
    : shown_(::isatty(STDERR_FILENO) != 0), next_(Clock::now() + std::chrono::milliseconds(500)) {}

ProgressBar::~ProgressBar() {
  if (drawn_) std::fputs("\r\033[K", stderr);
}

void ProgressBar::update(std::size_t done, std::size_t total) {
  if (!shown_) return;
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(100);
  const int filled = static_cast<int>(done * kWidth / total);
  const int empty = static_cast<int>(kWidth) - filled;
  std::fprintf(stderr, "\rsolving [%.*s%.*s] %zu/%zu", filled, kFull, empty, kEmpty, done, total);
  std::fflush(stderr);
  drawn_ = true;
}

}  // namespace cornerpin
