# SPDX-License-Identifier: BSD-3-Clause
"""Solving a shot."""
from __future__ import annotations

from typing import Iterable, Mapping, Sequence, Union

from numpy.typing import ArrayLike

from cornerpin import _check, _cornerpin
from cornerpin._result import Result
from cornerpin._tracks import Tracks

Words = Union[str, Sequence[str]]


def _quads(quads: Mapping[str, ArrayLike] | None) -> list[_cornerpin.Quad]:
    if quads is None:
        return []
    if not isinstance(quads, Mapping):
        raise _check.wrong_type("quads", quads, "a mapping of names to corners")
    made = []
    for name, corners in quads.items():
        array = _check.array(f"quads[{name!r}]", corners, (4, 2))
        made.append(_cornerpin.Quad(_check.text("quads", name), [float(n) for n in array.flat]))
    return made


def _times(at: Iterable[float]) -> list[float]:
    try:
        given = list(at)
    except TypeError:
        raise _check.wrong_type("at", at, "a list of numbers") from None
    return [_check.number(f"at[{i}]", time) for i, time in enumerate(given)]


def solve(
    tracks: ArrayLike | Tracks,
    weights: ArrayLike | None = None,
    *,
    base: int | None = None,
    reference: int | None = None,
    frames: str | None = None,
    keep: Words = (),
    drop: Words = (),
    base_only: bool = False,
    hold: bool = False,
    units: str = "fit",
    loss: str = "tukey",
    seed: int = 1,
    max_error: float | None = None,
    smooth: float | None = None,
    fill: bool = False,
    at: Iterable[float] = (),
    quads: Mapping[str, ArrayLike] | None = None,
    threads: int = 2,
    advice: bool = True,
    influences: bool = False,
    progress: _check.Progress | None = None,
) -> Result:
    """Find for every frame the transform that carries the surface from the reference frame to it.

    It is what the command `cornerpin solve` does, to the bit. Tracks that do not keep to the surface
    are found by how closely the others agree, and ignored. The interpreter's lock is free meanwhile,
    and Ctrl-C ends it.

    Parameters
    ----------
    tracks : array_like, shape (frames, tracks, 2), or Tracks
        x and y in pixels; NaN in both where a track is absent. As `Tracks.from_arrays` takes it: an
        array of float64 or float32 whose strides are aligned positive multiples of its item size
        is read where it is, any other is copied once.
    weights : array_like, shape (frames, tracks), optional
        0 where a track is absent. Only with an array.
    base : int, optional
        The frame to fit from; chosen otherwise.
    reference : int, optional
        The frame that transforms start from and `quads` belong to; the base frame otherwise.
    frames : str, optional
        Solve these only: "10-60", "60-".
    keep, drop : str or sequence of str
        Use only these tracks, leave these out: "t007", "n*", "t042:60-81".
    base_only : bool
        Only tracks that are seen in the base frame take part.
    hold : bool
        Frames with too few tracks take their neighbour's transform.
    units : {"fit", "raw"}
        "raw" where tracks are not to be scaled for the solver.
    loss : {"tukey", "cauchy", "huber", "none"}
        How much far-off tracks count. With "none" transforms are those of `match_move`.
    seed : int
        Of random choices, from 0 to 2**64 - 1.
    max_error : float, optional
        Pixels above which a frame is doubtful; 0.5 % of the surface's extent otherwise.
    smooth : float, optional
        Take jitter out, moving no corner by more pixels than this.
    fill : bool
        Interpolate held and reduced frames.
    at : iterable of float
        Transforms between frames, too: 10.5.
    quads : mapping of str to array_like, shape (4, 2), optional
        What the figures of trust are about, as read in the reference frame, in order around; one
        named "tracks", the box around the base frame's tracks, otherwise.
    threads : int
        At once, 1 to 1024. Changes no bit.
    advice : bool
        Look for what makes doubtful frames better, which takes two more solves at most.
    influences : bool
        Keep what `Result.write_explanation` writes.
    progress : callable, optional
        Called as ``progress(phase, done, total)``, in this thread, at the beginning of a phase and as
        it goes on; a total of 0 is one that nobody knows. What it raises comes out as it is; where
        it returns False, the work ends with `Cancelled`.

    Returns
    -------
    Result

    Raises
    ------
    TypeError, ValueError
        For an argument of a wrong type or shape, or one that makes no sense for these tracks.
    Cancelled
        Where `progress` has returned False.

    Examples
    --------
    A surface that moves 3 pixels to the right from frame to frame:

    >>> import numpy, cornerpin
    >>> corners = numpy.array([[0, 0], [640, 0], [640, 480], [0, 480], [310, 200], [100, 90]])
    >>> tracks = numpy.stack([corners + [3 * frame, 0] for frame in range(5)])
    >>> result = cornerpin.solve(tracks, base=0)
    >>> result.transforms[4].round(6) + 0.0
    array([[ 1.,  0., 12.],
           [ 0.,  1.,  0.],
           [ 0.,  0.,  1.]])
    """
    if not isinstance(tracks, Tracks):
        tracks = Tracks.from_arrays(tracks, weights)
    elif weights is not None:
        raise TypeError(
            "weights: None is wanted with cornerpin.Tracks, which have weights of their own"
        )
    options = _cornerpin.Options()
    options.base = _check.maybe_whole("base", base)
    options.reference = _check.maybe_whole("reference", reference)
    options.frames = _check.maybe_text("frames", frames)
    options.keep = _check.texts("keep", keep)
    options.drop = _check.texts("drop", drop)
    options.base_only = _check.flag("base_only", base_only)
    options.hold = _check.flag("hold", hold)
    options.units = _check.text("units", units)
    options.loss = _check.text("loss", loss)
    options.seed = _check.whole("seed", seed, 0, 2**64 - 1)
    options.max_error = _check.maybe_number("max_error", max_error)
    options.smooth = _check.maybe_number("smooth", smooth)
    options.fill = _check.flag("fill", fill)
    options.at = _times(at)
    options.quads = _quads(quads)
    options.threads = _check.whole("threads", threads, 1, 1024)
    options.advice = _check.flag("advice", advice)
    options.influences = _check.flag("influences", influences)
    return Result._of(
        _cornerpin.solve(tracks._inner, options, _check.callback("progress", progress))
    )
