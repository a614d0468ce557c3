// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_SOLVE_DOUBT_H
#define SHOT_SOLVE_DOUBT_H

namespace cornerpin {

/// What makes a frame doubtful. A frame without any of it is good.
enum class Doubt {
  ExpectedError,    ///< above the limit
  NoFigures,        ///< nothing tells how far it may be off
  NothingToCheck,   ///< its tracks are so few that a wrong one could not be told
  ChanceAgreement,  ///< chance makes as many tracks agree
  BudgetSpent,      ///< the search ended before it was sure to have missed nothing better
  Jump,             ///< its corners stand out against those of its neighbours
  Reduced,          ///< fewer than eight parameters were fitted
  Held,             ///< none was
};

}  // namespace cornerpin

#endif
