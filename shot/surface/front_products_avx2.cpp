// SPDX-License-Identifier: BSD-3-Clause
#include "shot/surface/front_products.inc"

namespace cornerpin {

extern const FrontProducts kAvx2FrontProducts;
const FrontProducts kAvx2FrontProducts = productsNamed("avx2");

}  // namespace cornerpin
