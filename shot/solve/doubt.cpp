// SPDX-License-Identifier: BSD-3-Clause
#include "shot/solve/doubt.h"

namespace cornerpin {

const char* nameOf(DoubtCode code) {
  switch (code) {
    case DoubtCode::ExpectedError:
      return "expected-error";
    case DoubtCode::NoFigures:
      return "no-figures";
    case DoubtCode::NothingToCheck:
      return "nothing-to-check";
    case DoubtCode::ChanceAgreement:
      return "chance";
    case DoubtCode::BudgetSpent:
      return "budget";
    case DoubtCode::Rival:
      return "rival";
    case DoubtCode::Jump:
      return "jump";
    case DoubtCode::Reduced:
      return "reduced";
    case DoubtCode::Held:
      return "held";
  }
  return "";
}

}  // namespace cornerpin
