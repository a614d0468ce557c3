// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SUPPORT_REPORTS_H
#define TESTS_SUPPORT_REPORTS_H

#include <string>
#include <vector>

#include "cornerpin/foundation/exception.h"

// Records what is reported through MMatrixError::err while it lives, in order, so that the
// reporting code carries on. One at a time. Recording a long text allocates.
class RecordedReports {
 public:
  RecordedReports() : previous_(MMatrixError::setErrorHandler(&record)) { texts().clear(); }
  ~RecordedReports() { MMatrixError::setErrorHandler(previous_); }
  RecordedReports(const RecordedReports&) = delete;
  RecordedReports& operator=(const RecordedReports&) = delete;

  const std::vector<std::string>& all() const { return texts(); }

 private:
  static std::vector<std::string>& texts() {
    static std::vector<std::string> recorded;
    return recorded;
  }
  static void record(const char* text) { texts().emplace_back(text); }

  MMatrixError::Handler previous_;
};

using Reports = std::vector<std::string>;

// The message of the MMatrixError that `action` throws, or a text that says there was none.
template <class Action>
std::string thrownMessage(const Action& action) {
  try {
    action();
  } catch (const MMatrixError& error) {
    return error.message.c_str();
  }
  return "(nothing was thrown)";
}

#endif
