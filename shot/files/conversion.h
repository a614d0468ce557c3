// SPDX-License-Identifier: BSD-3-Clause
#ifndef SHOT_FILES_CONVERSION_H
#define SHOT_FILES_CONVERSION_H

#include <string>

#include "shot/files/format.h"
#include "shot/plane/picture.h"
#include "shot/solve/tracks.h"

namespace cornerpin {

/// Takes what people tell of a file: facts that it does not tell itself are noted. A first frame
/// makes all frames those of the clip, which begins with it: returns how much is to be added to the
/// frames for that. Of paths the pixel centre is what people tell.
///
/// \param contradicted  facts that the file tells otherwise are left there
int tell(Picture& picture, Format format, const Picture& told, Picture& contradicted);

/// The same for tracks, whose frames are moved; returns the contradictions.
Picture tell(Tracks& tracks, Format format, const Picture& told);

/// Refuses a fact that is there, as one that the file tells otherwise: throws
/// `std::invalid_argument` with its option.
///
/// \param file  the file's name, for messages
void refuseContradiction(const Picture& contradicted, const Picture& picture,
                         const std::string& file);

/// Whether a file of the format has whatever picture its numbers are from.
bool isOpen(Format format);

enum class Needs { Conversion, Size };

/// The picture of a file in another format: what that always tells, and for the rest what `from`
/// tells. Throws `std::invalid_argument` with the option to add where `from` lacks what the other
/// file needs.
///
/// \param file   the name of the file that lacks it
/// \param needs  whether the size is needed whatever the conversion takes
Picture pictureFor(Format format, const Picture& from, const std::string& file,
                   Needs needs = Needs::Conversion);

/// Whether a conversion depends on how large the picture is.
bool takesSize(Picture from, Picture to);

/// Tracks with the coordinates and frames of another picture, of which nothing may be missing.
/// Gaps, weights and lines stay.
Tracks converted(Tracks tracks, const Picture& to);

/// Tracks in pixels as they are asked for, with facts that contradict those of the file. Throws
/// `std::invalid_argument` where the size that this takes is not known.
Tracks asAskedFor(Tracks tracks, const Picture& asked, const std::string& file);

/// Tracks as a solver takes them: in pixels. Throws `std::invalid_argument` where the size that
/// this takes is not known.
Tracks inPixels(Tracks tracks, const std::string& file);

}  // namespace cornerpin

#endif
