// SPDX-License-Identifier: BSD-3-Clause
#include "cornerpin/foundation/lv_matrix44.h"

#include "cornerpin/foundation/lv_matrix44_impl.h"

template class LvMatrix44Tmpl<double>;

template void LvMatrix44Tmpl<double>::transform(const LvVector2<double>& in,
                                                LvVector2<double>& out) const;
template void LvMatrix44Tmpl<double>::transform(const LvVector3<double>& in,
                                                LvVector3<double>& out) const;
template void LvMatrix44Tmpl<double>::transform(const LvVector4<double>& in,
                                                LvVector4<double>& out) const;
