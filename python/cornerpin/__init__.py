# SPDX-License-Identifier: BSD-3-Clause
"""Match-move solver: from 2D tracks of a flat surface to a corner pin, and what it is worth.

    result = cornerpin.solve(tracks)      # (frames, tracks, 2), NaN where a track is absent
    result.transforms                     # (frames, 3, 3)
    result.verdict                        # (frames,): "good" or "doubtful"
    result.write("pin.nk")
    result.report("page.html")

`solve`, `read`, `Tracks` and `Result` give what the command `cornerpin` gives, to the bit; the other
functions are those of the library. docs/python.md is the guide.
"""
from cornerpin._cornerpin import __version__
from cornerpin._errors import Cancelled, InputError
from cornerpin._library import (
    Roots,
    Svd,
    affine_at,
    closest_point_on_ellipse,
    homography,
    inverse,
    map_quad_to_square,
    map_square_to_quad,
    match_move,
    quad_to_quad,
    quad_to_square,
    rotation,
    scaling,
    solve_quartic,
    square_to_quad,
    svd,
    translation,
)
from cornerpin._result import (
    BetweenFrame,
    Doubt,
    Frame,
    InputFile,
    LeftOutTrack,
    Quad,
    Result,
    Stretch,
    Track,
    TrackRun,
    WorstTrack,
    read_result,
)
from cornerpin._solve import solve
from cornerpin._tracks import Picture, Tracks, Written, read

__all__ = [
    "BetweenFrame",
    "Cancelled",
    "Doubt",
    "Frame",
    "InputError",
    "InputFile",
    "LeftOutTrack",
    "Picture",
    "Quad",
    "Result",
    "Roots",
    "Stretch",
    "Svd",
    "Track",
    "TrackRun",
    "Tracks",
    "WorstTrack",
    "Written",
    "__version__",
    "affine_at",
    "closest_point_on_ellipse",
    "homography",
    "inverse",
    "map_quad_to_square",
    "map_square_to_quad",
    "match_move",
    "quad_to_quad",
    "quad_to_square",
    "read",
    "read_result",
    "rotation",
    "scaling",
    "solve",
    "solve_quartic",
    "square_to_quad",
    "svd",
    "translation",
]
