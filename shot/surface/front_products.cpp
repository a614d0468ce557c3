// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front_products.h"

#include "shot/surface/front_products.inc"

namespace cornerpin {

#ifdef CORNERPIN_X86_64
extern const FrontProducts kAvx2FrontProducts;
#endif

const std::vector<FrontProducts>& frontProducts() {
  static const std::vector<FrontProducts> products = [] {
    std::vector<FrontProducts> available = {productsNamed("base")};
#ifdef CORNERPIN_X86_64
    if (__builtin_cpu_supports("avx2")) available.push_back(kAvx2FrontProducts);
#endif
    return available;
  }();
  return products;
}

const FrontProducts& fastestFrontProducts() {
  static const FrontProducts& fastest = frontProducts().back();
  return fastest;
}

}  // namespace cornerpin
