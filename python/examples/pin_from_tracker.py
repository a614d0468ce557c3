# SPDX-License-Identifier: BSD-3-Clause
"""From a point tracker's arrays to a corner pin and a page.

    python pin_from_tracker.py TRACKS.csv FOLDER

A point tracker gives the position of each point in each frame, and whether it is visible there. Here
they come from a file; yours come from a model. What FOLDER holds afterwards: pin.nk, a corner pin for
compositing, shot.json, the whole result, and page.html, which shows whether it is good.
"""
from __future__ import annotations

import sys
from pathlib import Path

import cornerpin
import numpy as np
from numpy.typing import NDArray


def tracker(path: Path) -> tuple[NDArray[np.float32], NDArray[np.bool_]]:
    """Give positions (frames, points, 2) in pixels and visibility (frames, points), as trackers do."""
    tracks = cornerpin.read(path)
    visible = tracks.weights > 0
    # Trackers guess a position for points that are hidden, too.
    positions = np.where(visible[..., None], tracks.positions, -1.0)
    return positions.astype(np.float32), visible


def main(path: Path, folder: Path) -> None:
    """Solve what the tracker found, and write what there is to write."""
    positions, visible = tracker(path)
    picture = cornerpin.Picture(width=1024, height=576, y="down", pixel_centre=0.5, first_frame=0)
    tracks = cornerpin.Tracks.from_arrays(positions, visible, picture=picture)

    corners = [[181.5, 223.5], [463.5, 211.5], [441.5, 467.5], [114.5, 469.5]]
    result = cornerpin.solve(tracks, reference=50, quads={"left sheet": corners}, smooth=0.5)
    print(result.closing_sentence)

    doubtful = result.frames[result.verdict == "doubtful"]
    print("look at frames", doubtful.tolist())
    sheet = result.quads["left sheet"]
    print("in frame 60 the sheet's first corner is at", sheet.corners[60, 0].round(1).tolist())
    print("and may be", sheet.deviation[60, 0].round(1), "px off")

    folder.mkdir(parents=True, exist_ok=True)
    result.write(folder / "shot.json")
    result.write(folder / "pin.nk")
    pictures = path.parent / "planks_pictures" / "frame_%04d.jpg"
    result.report(folder / "page.html", pictures, picture_scale=0.5, title="Left sheet")


if __name__ == "__main__":
    main(Path(sys.argv[1]), Path(sys.argv[2]))
