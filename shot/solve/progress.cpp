// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/progress.h"

namespace cornerpin {

const char* nameOf(Phase phase) {
  switch (phase) {
    case Phase::Reading:
      return "reading";
    case Phase::Solving:
      return "solving";
    case Phase::ChoosingBase:
      return "choosing the base frame";
    case Phase::HandingOver:
      return "handing over";
    case Phase::Figures:
      return "figures of trust";
    case Phase::Smoothing:
      return "smoothing";
    case Phase::Filling:
      return "filling";
    case Phase::Advice:
      return "looking for what helps";
    case Phase::Writing:
      return "writing";
  }
  return "";
}

}  // namespace cornerpin
