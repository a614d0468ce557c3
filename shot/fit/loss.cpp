// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/loss.h"

#include "shot/fit/loss.inc"

namespace cornerpin {

const char* nameOf(Loss loss) {
  if (loss == Loss::None) return "none";
  if (loss == Loss::Huber) return "huber";
  return loss == Loss::Cauchy ? "cauchy" : "tukey";
}

namespace {

void bend(Loss loss, double width, Lanes& losses, Lanes& weights) {
  switch (loss) {
    case Loss::None:
      return bend<Loss::None>(width, losses, weights);
    case Loss::Huber:
      return bend<Loss::Huber>(width, losses, weights);
    case Loss::Cauchy:
      return bend<Loss::Cauchy>(width, losses, weights);
    case Loss::Tukey:
      return bend<Loss::Tukey>(width, losses, weights);
  }
}

}  // namespace

BentSquare bentSquare(Loss loss, double square, double width) {
  Lanes losses = {square, square, square, square};
  Lanes weights = {1.0, 1.0, 1.0, 1.0};
  bend(loss, width, losses, weights);
  return {losses[0], weights[0]};
}

std::vector<double> bentWeights(Loss loss, std::vector<double> squares, double width) {
  const std::size_t count = squares.size();
  squares.resize((count + 3) / 4 * 4);
  for (std::size_t i = 0; i < count; i += 4) {
    Lanes losses, weights = {};
    load(&squares[i], losses);
    bend(loss, width, losses, weights);
    store(weights, &squares[i]);
  }
  squares.resize(count);
  return squares;
}

double lossWeight(Loss loss, double residual, double width) {
  return bentSquare(loss, residual * residual, width).weight;
}

double logWeightSlope(Loss loss, double square, double width) {
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
