// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/loss.h"

#include "shot/fit/loss.inc"

namespace cornerpin {

const char* nameOf(Loss loss) {
  if (loss == Loss::None) return "none";
  if (loss == Loss::Huber) return "huber";
  return loss == Loss::Cauchy ? "cauchy" : "tukey";
}

BentSquare bentSquare(Loss loss, double square, double width) {
  Lanes losses = {square, square, square, square};
  Lanes weights = {1.0, 1.0, 1.0, 1.0};
  switch (loss) {
    case Loss::None:
      break;
    case Loss::Huber:
      bend<Loss::Huber>(width, losses, weights);
      break;
    case Loss::Cauchy:
      bend<Loss::Cauchy>(width, losses, weights);
      break;
    case Loss::Tukey:
      bend<Loss::Tukey>(width, losses, weights);
      break;
  }
  return {losses[0], weights[0]};
}

double lossWeight(Loss loss, double residual, double width) {
  return bentSquare(loss, residual * residual, width).weight;
}

double logWeightSlope(Loss loss, double residual, double width) {
  const double square = residual * residual;
  const double bound = width * width;
  switch (loss) {
    case Loss::None:
      break;
    case Loss::Huber:
      return square > bound ? -0.5 / square : 0.0;
    case Loss::Cauchy:
      return -1.0 / (bound + square);
    case Loss::Tukey:
      return square < bound ? -2.0 / (bound - square) : 0.0;
  }
  return 0.0;
}

}  // namespace cornerpin
