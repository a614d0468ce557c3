// SPDX-License-Identifier: BSD-3-Clause
#ifndef TESTS_SHOT_KNOWN_SHOTS_H
#define TESTS_SHOT_KNOWN_SHOTS_H

#include <array>
#include <cstdint>
#include <vector>

#include "shot/plane/homography.h"
#include "shot/plane/points.h"
#include "shot/solve/tracks.h"

// Shots of which all is known. They depend on the seed alone, to the bit with every compiler.
namespace made {

// Lengths are in pixels. The picture is 1000 x 600, and so is the surface of all but the pans;
// frame 0 shows it as it is.
struct KnownShot {
  cornerpin::Tracks tracks;              // from frame 0 on, in every frame some
  std::vector<cornerpin::Point> places;  // of the tracks on the surface; not where they jump to
  std::vector<cornerpin::Homography> motion;  // from the surface to each frame
  std::vector<cornerpin::Quad> corners;       // in each frame, where errors are measured

  // The true transform from one frame to another.
  cornerpin::Homography truth(int from, int to) const;
};

// How far `h`, which leads from the base frame to another one, carries each corner of that frame
// from where it belongs; infinite where it carries one nowhere.
std::array<double, 4> cornerErrors(const KnownShot& shot, const cornerpin::Homography& h, int base,
                                   int frame);

// What is wrong with some of the tracks.
enum class Fault {
  None,
  Outlier,         // anywhere in the picture, in every frame
  Slide,           // for a third of its life, 1 px a frame; then back at its place
  SlideFromBirth,  // the first third
  SlideAndStay,    // as Slide, but it stays where it has come to
  Jump,            // goes on at another place of the surface, from some frame on
};

struct Faults {
  Fault fault = Fault::None;
  double share = 0.0;  // of the tracks
};

// Tracks that live for a number of frames. So many of them are there in every frame, and as many
// are born in any stretch of frames as in another of the same length. Of the tracks of frame 0 some
// are about to die. The corners are the surface's own.
struct Relay {
  int frames = 200;
  int life = 40;
  int atATime = 30;
  double noise = 0.5;  // standard deviation of a coordinate
  Faults faults;
};
KnownShot relay(const Relay& what, std::uint32_t seed);

// A camera that goes along a wall and turns a little on the way. A track is there whenever its
// place is in the picture, so that on the way back the tracks of the way there come again. The
// corners are those of the middle of the picture, 800 x 480: what they show changes with the frame.
struct Pan {
  int frames = 200;
  double widths = 3.0;  // of the picture, from end to end
  bool thereAndBack = false;
  int inPicture = 60;  // about so many tracks
  double noise = 0.5;
  Faults faults;
};
KnownShot pan(const Pan& what, std::uint32_t seed);

// Few tracks from beginning to end and many that come later and stay for 60 frames. The faults are
// those of the late ones. The corners are 100 and 60 px inside the surface.
struct Late {
  int frames = 120;
  int fromTheStart = 12;
  int later = 80;
  double noise = 0.5;
  Faults faults;
};
KnownShot late(const Late& what, std::uint32_t seed);

// The same shot with new names: a track gets one every so many frames, and for some frames more it
// is there under the old one as well, at the same place. Names end in "/0", "/1" and so on.
KnownShot renamed(const KnownShot& shot, int every, int overlap);

}  // namespace made

#endif
