// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FIT_LOSS_H
#define SHOT_FIT_LOSS_H

#include <vector>

namespace cornerpin {

/// How much of a squared residual counts. Every loss is r^2 near 0 and bends at a width; beyond it
/// Huber's grows like r, Cauchy's like log r, and Tukey's is flat. None does not bend.
enum class Loss { None, Huber, Cauchy, Tukey };

/// "none", "huber", "cauchy", "tukey".
const char* nameOf(Loss loss);

/// The loss of a squared residual, and its derivative by it: what the loss multiplies the squared
/// weight of a match by.
struct BentSquare {
  double loss;
  double weight;
};
BentSquare bentSquare(Loss loss, double square, double width);

/// The weight alone, of a residual: 1 near 0. `width`, where the loss bends, has its unit.
double lossWeight(Loss loss, double residual, double width);

/// The weights of many squared residuals.
std::vector<double> bentWeights(Loss loss, std::vector<double> squares, double width);

/// The derivative of the weight's logarithm by the squared residual; 0 where the weight is 1.
double logWeightSlope(Loss loss, double square, double width);

}  // namespace cornerpin

#endif
