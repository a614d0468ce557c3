// SPDX-License-Identifier: BSD-3-Clause
#include "tools/cornerpin/progress_bar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace cornerpin {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 500ms;
constexpr auto kPeriod = 100ms;
constexpr std::size_t kWidth = 30;
constexpr std::size_t kLeastWidth = 5;

// How many characters a line of the terminal holds; many where it does not say.
std::size_t columnsOf(int terminal) {
  winsize size{};
  const bool known = ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return known ? size.ws_col : 1000;
}

// "1:05:09", "2:07" or "9 s".
std::string textOf(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  if (whole < 60) return fmt::format("{} s", whole);
  if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

// The writer takes no signals: their handlers belong to the thread that writes files.
ProgressBar::ProgressBar(ProgressStyle style) : style_(style) {
  if (style == ProgressStyle::None) return;
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  writer_ = std::thread([this] { writeUntilStopped(); });
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ProgressBar::~ProgressBar() {
  if (!writer_.joinable()) return;
  {
    const std::lock_guard<std::mutex> alone(mutex_);
    stopped_ = true;
  }
  stop_.notify_one();
  writer_.join();
}

shot::Progress ProgressBar::progress() {
  if (style_ == ProgressStyle::None) return {};
  return [this](const char* phase, std::size_t done, std::size_t total) {
    update(phase, done, total);
    return true;
  };
}

void ProgressBar::update(const char* phase, std::size_t done, std::size_t total) {
  if (!writer_.joinable()) return;
  const auto now = Clock::now();
  const std::lock_guard<std::mutex> alone(mutex_);
  if (!begun_ || phase != phase_ || done == 0) {
    begin_ = now;
    doneBefore_ = done;
  }
  begun_ = true;
  changed_ = true;
  phase_ = phase;
  done_ = done;
  total_ = total;
  reported_ = now;
}

void ProgressBar::writeUntilStopped() {
  const bool isBar = style_ == ProgressStyle::Bar;
  std::unique_lock<std::mutex> lock(mutex_);
  const auto isStopped = [this] { return stopped_; };
  bool drawn = false;
  for (auto wait = isBar ? kPatience : kPeriod; !stop_.wait_for(lock, wait, isStopped);
       wait = kPeriod) {
    if (!begun_ || (!isBar && !changed_)) continue;
    std::fputs((isBar ? barLine() : jsonLine()).c_str(), stderr);
    std::fflush(stderr);
    changed_ = false;
    drawn = true;
  }
  if (isBar && drawn) std::fputs("\r\033[K", stderr);
}

// On a narrow terminal the bar is shorter, and where there is no room for any, the line is: one
// that goes over the edge could not be cleared away.
std::string ProgressBar::barLine() const {
  const std::size_t most = columnsOf(STDERR_FILENO) - 1;
  if (total_ == 0) return "\r" + phase_.substr(0, most) + "\033[K";
  const std::size_t done = std::min(done_, total_);
  const std::optional<double> left = secondsLeft(Clock::now());
  const std::string figures =
      fmt::format(" {} %{}", done * 100 / total_,
                  left ? fmt::format(", {} left", textOf(std::max(*left, 1.0))) : "");
  const std::size_t others = phase_.size() + figures.size() + std::strlen(" []");
  const std::size_t width = most > others ? std::min(kWidth, most - others) : 0;
  if (width < kLeastWidth) return "\r" + (phase_ + figures).substr(0, most) + "\033[K";
  const std::size_t filled = done * width / total_;
  return fmt::format("\r{} [{:#<{}}{:.<{}}]{}\033[K", phase_, "", filled, "", width - filled,
                     figures);
}

std::string ProgressBar::jsonLine() const {
  const std::optional<double> left = secondsLeft(Clock::now());
  return fmt::format("{{\"phase\":\"{}\",\"done\":{},\"total\":{},\"seconds_left\":{}}}\n", phase_,
                     done_, total_ > 0 ? fmt::format("{}", total_) : "null",
                     left ? fmt::format("{:.1f}", std::max(*left, 0.0)) : "null");
}

// Goes on counting down between two reports.
std::optional<double> ProgressBar::secondsLeft(Clock::time_point now) const {
  if (done_ <= doneBefore_ || done_ >= total_) return std::nullopt;
  const auto seconds = [](Clock::duration d) { return std::chrono::duration<double>(d).count(); };
  const double each = seconds(reported_ - begin_) / static_cast<double>(done_ - doneBefore_);
  return each * static_cast<double>(total_ - done_) - seconds(now - reported_);
}

void writeFinished(int exitCode) {
  std::fputs(fmt::format("{{\"phase\":\"finished\",\"exit_code\":{}}}\n", exitCode).c_str(),
             stderr);
}

}  // namespace cornerpin
