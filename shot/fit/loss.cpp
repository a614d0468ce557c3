// SPDX-License-Identifier: BSD-3-Clause
#include "shot/fit/loss.h"

namespace cornerpin {

const char* nameOf(Loss loss) {
  if (loss == Loss::None) return "none";
  if (loss == Loss::Huber) return "huber";
  return loss == Loss::Cauchy ? "cauchy" : "tukey";
}

double lossWeight(Loss loss, double residual, double width) {
  const double part = residual / width;
  const double rest = 1.0 - part * part;
  if (loss == Loss::Tukey) return part < 1.0 ? rest * rest : 0.0;
  if (loss == Loss::Cauchy) return 1.0 / (1.0 + part * part);
  return loss == Loss::Huber && part > 1.0 ? 1.0 / part : 1.0;
}

}  // namespace cornerpin
