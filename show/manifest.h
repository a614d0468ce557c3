// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOW_MANIFEST_H
#define SHOW_MANIFEST_H

#include <string>

#include "show/show.h"

namespace cornerpin {

/// Reads a show from a manifest in JSON (docs/batch.md): its shots with the common options in them,
/// where they have none of their own. Files are relative to the manifest's folder. Names are those
/// of the shots' files, unless they are given; they are not checked.
///
/// Throws `shot::InputError` with file, line and place.
///
/// \param typed  options that go before the manifest's common ones
Show readManifest(const std::string& path, const ShotOptions& typed = {});

}  // namespace cornerpin

#endif
