// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_REPORT_SMALL_PICTURE_H
#define SHOT_REPORT_SMALL_PICTURE_H

#include <string>

namespace cornerpin {

/// A picture's file as the bytes of a JPEG file that is at most `widest` pixels wide, by means
/// over what each of its pixels covers. Throws `InputError` for a file that is refused (`headOf`)
/// or broken.
std::string smallPicture(const std::string& path, int widest);

}  // namespace cornerpin

#endif
