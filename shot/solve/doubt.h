// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_DOUBT_H
#define SHOT_SOLVE_DOUBT_H

#include <initializer_list>
#include <string>

namespace cornerpin {

/// What makes a frame doubtful.
enum class DoubtCode {
  ExpectedError,    ///< above the limit
  NoFigures,        ///< nothing tells how far a corner may be off
  NothingToCheck,   ///< its tracks are so few that a wrong one could not be told
  ChanceAgreement,  ///< chance makes as many tracks agree
  BudgetSpent,      ///< the search ended before it was sure to have missed nothing better
  Rival,            ///< other tracks support another transform about as well
  Jump,             ///< its corners stand out against those of the frames around
  Reduced,          ///< fewer than eight parameters were fitted
  Held,             ///< none was
};

constexpr std::initializer_list<DoubtCode> kDoubtCodes = {DoubtCode::ExpectedError,
                                                          DoubtCode::NoFigures,
                                                          DoubtCode::NothingToCheck,
                                                          DoubtCode::ChanceAgreement,
                                                          DoubtCode::BudgetSpent,
                                                          DoubtCode::Rival,
                                                          DoubtCode::Jump,
                                                          DoubtCode::Reduced,
                                                          DoubtCode::Held};

/// "expected-error", "no-figures", "nothing-to-check", "chance", "budget", "rival", "jump",
/// "reduced", "held".
const char* nameOf(DoubtCode code);

/// A frame without any is good.
struct Doubt {
  DoubtCode code = DoubtCode::Held;
  std::string text;  ///< for people: "the top left corner may be 12 px off, the limit
                     ///< is 5 px"
};

}  // namespace cornerpin

#endif
