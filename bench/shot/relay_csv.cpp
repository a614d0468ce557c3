// SPDX-License-Identifier: BSD-3-Clause

// cornerpin_relay_csv FRAMES TRACKS writes a relay shot of that length with so many tracks at a
// time, which live for 40 frames, to standard output.
#include <cstdio>
#include <cstdlib>

#include "tests/shot/known_shots.h"

int main(int argc, char** argv) {
  made::Relay what;
  what.frames = argc == 3 ? std::atoi(argv[1]) : 0;
  what.atATime = argc == 3 ? std::atoi(argv[2]) : 0;
  if (what.frames < 1 || what.atATime < 1) {
    std::fputs("usage: cornerpin_relay_csv FRAMES TRACKS\n", stderr);
    return 2;
  }
  const cornerpin::Tracks tracks = relay(what, 1).tracks;
  std::puts("track,frame,x,y");
  for (const cornerpin::Observation& o : tracks.observations) {
    std::printf("%s,%d,%.4f,%.4f\n", tracks.names[static_cast<std::size_t>(o.track)].c_str(),
                static_cast<int>(o.frame), o.x, o.y);
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
