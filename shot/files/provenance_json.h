// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_PROVENANCE_JSON_H
#define SHOT_FILES_PROVENANCE_JSON_H

#include <nlohmann/json.hpp>

#include "shot/files/json_field.h"
#include "shot/solve/result.h"

namespace cornerpin {

/// What places and distances in a result are in.
constexpr const char* kPixels = "pixels of the input";

/// What is known of a picture (docs/result.md); what is not known is null, and may be missing where
/// it is read.
nlohmann::ordered_json pictureJson(const Picture& picture);
Picture pictureIn(const JsonField& field);

/// The fields of a result that say where it comes from (docs/result.md), each under its name. What
/// is not known is null; an option that was not given has a word for that.
nlohmann::ordered_json provenanceJson(const ShotResult& result);

/// Reads the provenance back from the whole of a result. Fields may be missing. Throws
/// `InputError`.
Provenance provenanceIn(const JsonField& whole);

}  // namespace cornerpin

#endif
