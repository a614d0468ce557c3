// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_vector.h"

#include "cornerpin/foundation/lv_vector_impl.h"

template struct LvVector2<float>;
template struct LvVector2<double>;
template struct LvVector3<double>;
template struct LvVector4<double>;
