// SPDX-License-Identifier: BSD-3-Clause
#include "watched.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace py = pybind11;

namespace cornerpin::python {

namespace {

// How long a signal waits for its handler where nothing is reported.
constexpr std::chrono::milliseconds kSignalsAreSeenAfter(50);

struct Report {
  const char* phase;
  std::size_t done;
  std::size_t total;
};

// One thread works and reports, the other waits for its reports and answers them.
class Watch {
 public:
  explicit Watch(const py::object& asked) : asked_(asked), isAsked_(!asked.is_none()) {}

  void run(const std::function<void(const shot::Progress&)>& work) {
    {
      const py::gil_scoped_release unlocked;
      std::thread worker([&] { finish(work); });
      answer();
      worker.join();
    }
    if (raised_) std::rethrow_exception(raised_);
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  // Of the thread that works.
  void finish(const std::function<void(const shot::Progress&)>& work) {
    try {
      work([this](const char* phase, std::size_t done, std::size_t total) {
        return report({phase, done, total});
      });
    } catch (...) {
      thrown_ = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    isDone_ = true;
    changed_.notify_all();
  }

  // Of any thread of the work, one at a time.
  bool report(const Report& report) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (isAsked_ && !isEnded_) {
      report_ = report;
      changed_.notify_all();
      changed_.wait(lock, [this] { return !report_; });
    }
    return !isEnded_;
  }

  // Of the thread that called.
  void answer() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
      changed_.wait_for(lock, kSignalsAreSeenAfter, [this] { return isDone_ || report_; });
      if (isDone_) return;
      const std::optional<Report> answered = report_;
      lock.unlock();
      const bool goesOn = isEnded_ || goesOnAfter(answered);
      lock.lock();
      isEnded_ = !goesOn || isEnded_;
      if (answered) {
        report_.reset();
        changed_.notify_all();
      }
    }
  }

  bool goesOnAfter(const std::optional<Report>& report) {
    const py::gil_scoped_acquire locked;
    try {
      if (PyErr_CheckSignals() != 0) throw py::error_already_set();
      if (!report) return true;
      return !asked_(report->phase, report->done, report->total).is(py::bool_(false));
    } catch (...) {
      raised_ = std::current_exception();
      return false;
    }
  }

  const py::object& asked_;
  const bool isAsked_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<Report> report_;  // that waits for its answer
  bool isEnded_ = false;
  bool isDone_ = false;
  std::exception_ptr raised_;  // in Python
  std::exception_ptr thrown_;  // by the work
};

}  // namespace

void watch(const py::object& asked, const std::function<void(const shot::Progress&)>& work) {
  Watch(asked).run(work);
}

}  // namespace cornerpin::python
