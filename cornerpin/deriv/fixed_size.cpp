// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/deriv/fixed_size.h"

#include "cornerpin/foundation/lv_matrix44_impl.h"
#include "cornerpin/foundation/lv_quat_impl.h"
#include "cornerpin/foundation/lv_vector_impl.h"

using Number = MDeriv<double>;

template struct LvVector2<Number>;
template struct LvVector3<Number>;
template struct LvVector4<Number>;
template class LvMatrix44Tmpl<Number>;
template class LvQuat<Number>;

template void LvMatrix44Tmpl<Number>::transform(const LvVector2<Number>&, LvVector2<Number>&) const;
template void LvMatrix44Tmpl<Number>::transform(const LvVector3<Number>&, LvVector3<Number>&) const;
template void LvMatrix44Tmpl<Number>::transform(const LvVector4<Number>&, LvVector4<Number>&) const;
template void LvMatrix44Tmpl<double>::transform(const LvVector2<Number>&, LvVector2<Number>&) const;
template void LvMatrix44Tmpl<double>::transform(const LvVector3<Number>&, LvVector3<Number>&) const;
template void LvMatrix44Tmpl<double>::transform(const LvVector4<Number>&, LvVector4<Number>&) const;
