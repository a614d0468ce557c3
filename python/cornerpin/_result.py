# SPDX-License-Identifier: BSD-3-Clause
"""What a solve gives."""
from __future__ import annotations

import html
import os
import tempfile
from dataclasses import dataclass, field
from functools import cached_property
from typing import NamedTuple, TypeVar

import numpy as np
from numpy.typing import NDArray

from cornerpin import _check, _cornerpin
from cornerpin._cornerpin import Doubt, Frame, LeftOutTrack, Track, TrackRun, WorstTrack
from cornerpin._tracks import Picture, Written, told, written

__all__ = ["Doubt", "Frame", "LeftOutTrack", "Track", "TrackRun", "WorstTrack"]

Floats = NDArray[np.float64]
_T = TypeVar("_T", bound=np.generic)


class Stretch(NamedTuple):
    """Frames next to each other, both ends included, and what is said of them."""

    first: int
    last: int
    text: str


class BetweenFrame(NamedTuple):
    """A transform between two frames: the time, and 3 x 3 numbers from the reference frame to it."""

    frame: float
    transform: Floats


class InputFile(NamedTuple):
    """A file that tracks were read from: its name without its folder, the SHA-256 of its bytes.

    The format is as the command's --from names it, the rows are those that were read. A text is empty
    where it is not known.
    """

    name: str
    sha256: str
    format: str
    rows: int


@dataclass(frozen=True)
class Quad:
    """Four corners of something on the surface, and where they are in every frame.

    Attributes
    ----------
    name : str
        Of each quad another.
    surface : ndarray, shape (4, 2)
        The corners in the reference frame, in order around, in pixels.
    corners : ndarray, shape (frames, 4, 2)
        Where they are in each frame, in pixels; NaN on or behind the horizon.
    covariance : ndarray, shape (frames, 4, 2, 2)
        How far noise lets each be off, in pixels squared; NaN without a figure.
    deviation : ndarray, shape (frames, 4)
        The root of the trace of each covariance, in pixels.
    """

    name: str
    surface: Floats = field(repr=False)
    corners: Floats = field(repr=False)
    covariance: Floats = field(repr=False)
    deviation: Floats = field(repr=False)


class Result:
    """A solved shot. Nothing changes it.

    Made by `solve` and `read_result`. Its arrays are made when they are first asked for, own their
    memory, and are the same ones from then on, so they cannot be written to; `numpy.array` copies
    them. All have the frames in the order of `frames`.
    """

    def __init__(self) -> None:
        raise TypeError("Result: made by solve and read_result")

    _inner: _cornerpin.Result

    @classmethod
    def _of(cls, inner: _cornerpin.Result) -> Result:
        made = object.__new__(cls)
        made._inner = inner
        return made

    @property
    def base_frame(self) -> int:
        """The frame that the others were fitted from."""
        return self._inner.base_frame

    @property
    def base_why(self) -> str:
        """Why it was chosen; empty where it was given."""
        return self._inner.base_why

    @property
    def reference_frame(self) -> int:
        """The frame that the transforms start from."""
        return self._inner.reference_frame

    @property
    def max_error(self) -> float:
        """Above which a frame is doubtful, in pixels; NaN: none."""
        return self._inner.max_error

    @cached_property
    def frames(self) -> NDArray[np.int32]:
        """(frames,): the numbers of the frames, from the first to the last, gaps included."""
        return _readonly(self._inner.frame_numbers())

    @cached_property
    def transforms(self) -> Floats:
        """(frames, 3, 3): each carries (x, y, 1) from the reference frame to that frame.

        In pixels, up to a factor; the last element is 1.
        """
        return _readonly(self._inner.transforms())

    @cached_property
    def expected_error(self) -> Floats:
        """(frames,), in pixels: how far the worst corner may be off, as a root mean square.

        NaN where there is no figure.
        """
        return _readonly(self._inner.expected_errors())

    @cached_property
    def details(self) -> list[Frame]:
        """Each frame with all that is known of it; docs/result.md says what each figure is."""
        return self._inner.frames()

    @property
    def verdict(self) -> NDArray[np.str_]:
        """(frames,): "good" or "doubtful"."""
        return np.array(["doubtful" if f.is_doubtful else "good" for f in self.details])

    @property
    def status(self) -> NDArray[np.str_]:
        """(frames,): "base", "solved", "reduced" or "held"."""
        return np.array([frame.status for frame in self.details])

    @property
    def reason(self) -> NDArray[np.str_]:
        """(frames,): why a frame is reduced or held; empty for others."""
        return np.array([frame.reason for frame in self.details])

    @property
    def doubts(self) -> list[list[str]]:
        """Of each frame what makes it doubtful, for people; nothing of good ones."""
        return [[doubt.text for doubt in frame.doubts] for frame in self.details]

    @property
    def between(self) -> list[BetweenFrame]:
        """The transforms that `at` asked for, by rising time."""
        return [BetweenFrame(*frame) for frame in self._inner.between()]

    @cached_property
    def quads(self) -> dict[str, Quad]:
        """What the figures of trust are about, by name."""
        made = {}
        for i, (name, surface) in enumerate(self._inner.quads()):
            made[name] = Quad(
                name,
                _readonly(surface),
                _readonly(self._inner.corners(i)),
                _readonly(self._inner.covariance(i)),
                _readonly(self._inner.deviation(i)),
            )
        return made

    @property
    def corners(self) -> Floats:
        """(frames, 4, 2): the corners of the first of the `quads` in each frame, in pixels."""
        return self._first.corners

    @property
    def covariance(self) -> Floats:
        """(frames, 4, 2, 2), in pixels squared: how far noise lets each of `corners` be off."""
        return self._first.covariance

    @property
    def deviation(self) -> Floats:
        """(frames, 4), in pixels: the root of the trace of each `covariance`."""
        return self._first.deviation

    @property
    def _first(self) -> Quad:
        return next(iter(self.quads.values()))

    @property
    def input(self) -> InputFile | None:
        """What it was solved from; None where that was no file, or an older result does not tell."""
        given = self._inner.input()
        return None if given is None else InputFile(*given)

    @cached_property
    def tracks(self) -> list[Track]:
        """What became of each track, in the order of the names."""
        return self._inner.tracks()

    @property
    def left_out_tracks(self) -> list[LeftOutTrack]:
        """The tracks that take part nowhere, and why."""
        return self._inner.left_out_tracks()

    @property
    def worst_tracks(self) -> list[WorstTrack]:
        """The tracks that move corners most, first those that stand out; at most five."""
        return self._inner.worst_tracks()

    @property
    def closing_sentence(self) -> str:
        """What it comes to: "Good: 144 of 192 frames. Doubtful: 0-9, 11, 90-126."."""
        return self._inner.closing_sentence()

    @property
    def closing_stretches(self) -> list[Stretch]:
        """Of the three worst stretches of doubtful frames, why, and what was found to help."""
        return [Stretch(*stretch) for stretch in self._inner.closing_stretches()]

    @property
    def advice(self) -> list[Stretch]:
        """What was found to make doubtful frames better, by trying it."""
        return [Stretch(*stretch) for stretch in self._inner.advice()]

    @property
    def summary(self) -> str:
        """All of it as the command prints it: several lines."""
        return self._inner.summary()

    def to_json(self) -> str:
        """Give the result as the JSON that `cornerpin solve -o` writes (docs/result.md)."""
        return self._inner.to_json()

    def to_csv(self) -> str:
        """Give the result as CSV, a row for each frame and quad."""
        return self._inner.to_csv()

    def rebase(self, frame: int) -> Result:
        """Give the same result relative to another reference frame.

        Nothing is fitted anew: transforms are multiplied by one inverse, and quads, places and
        covariances are carried along.

        Raises
        ------
        ValueError
            For a frame outside the shot, a held one, and one that does not show all corners.
        """
        return Result._of(self._inner.rebase(_check.whole("frame", frame)))

    def with_tracks(self, path: _check.Path, *, progress: _check.Progress | None = None) -> Result:
        """Give the same result with its tracks, for `write` and `report`, where it was read.

        Parameters
        ----------
        path : str or path-like
            The file that was solved.
        progress : callable, optional
            As `solve` takes it.

        Raises
        ------
        InputError
            Where the file is not the one that was solved.
        """
        return Result._of(
            self._inner.with_tracks(
                _check.path("path", path), _check.callback("progress", progress)
            )
        )

    def write(
        self,
        path: _check.Path,
        format: str | None = None,
        *,
        as_: str = "pin",
        nk: str = "points",
        keyframes: str = "pin",
        fps: float | None = None,
        par: float = 1.0,
        read_back: bool = True,
        progress: _check.Progress | None = None,
    ) -> Written:
        """Write the result, a pin, its inverse, the transforms or the good tracks to a file.

        Parameters
        ----------
        path : str or path-like
            The file appears whole or not at all.
        format : str, optional
            As the command's --to names it; by the path's ending otherwise. Results are written to
            .json and .csv, the others to the formats of docs/formats.md.
        as_ : {"pin", "stabilise", "matrix", "tracks"}
            What is written.
        nk : {"points", "matrix", "both"}
            How nk files have pins.
        keyframes : {"pin", "transform"}
            Keyframes of corners or of the layer's transform.
        fps : float, optional
            Frames a second; keyframes files need it.
        par : float
            Width of a pixel over its height, for keyframes.
        read_back : bool
            Read the file again and compare.
        progress : callable, optional
            As `solve` takes it.

        Raises
        ------
        ValueError
            For a format that does not hold it, what the format needs to know and the tracks'
            `Picture` does not tell, a pin of several quads, and tracks that are not at hand.
        OSError
            For a file that cannot be written.
        """
        options = _cornerpin.WriteOptions()
        options.format = _check.maybe_text("format", format)
        options.as_ = _check.text("as_", as_)
        options.nk = _check.text("nk", nk)
        options.keyframes = _check.text("keyframes", keyframes)
        options.fps = _check.maybe_number("fps", fps)
        options.par = _check.number("par", par)
        options.read_back = _check.flag("read_back", read_back)
        return written(
            self._inner.write(
                _check.path("path", path), options, _check.callback("progress", progress)
            )
        )

    def report(
        self,
        path: _check.Path,
        pictures: _check.Path | None = None,
        *,
        picture_scale: float | None = None,
        link: bool = False,
        title: str | None = None,
        progress: _check.Progress | None = None,
    ) -> list[str]:
        """Write the page that shows whether the result is good: one file for a browser.

        Parameters
        ----------
        path : str or path-like
            The file appears whole or not at all.
        pictures : str or path-like, optional
            "img_%04d.jpg", "img_####.jpg", a folder or a list: the pictures of the frames.
        picture_scale : float, optional
            Their width over that of the tracks' picture; by the sizes otherwise.
        link : bool
            Leave the pictures beside the page, instead of taking them into it.
        title : str, optional
            The name of the tracks' file, or "shot", otherwise.
        progress : callable, optional
            As `solve` takes it.

        Returns
        -------
        list of str
            Which pictures were left out, as they are broken.

        Raises
        ------
        ValueError
            For pictures that are not there or do not fit.
        OSError
            For a file that cannot be written.
        """
        options = _cornerpin.PageOptions()
        options.pictures = b"" if pictures is None else _check.path("pictures", pictures)
        options.picture_scale = _check.maybe_number("picture_scale", picture_scale)
        options.link = _check.flag("link", link)
        options.title = _check.maybe_text("title", title)
        return self._inner.report(
            _check.path("path", path), options, _check.callback("progress", progress)
        )

    def plot(self, path: _check.Path) -> None:
        """Write a quick look at the frames as a picture, .svg or .png.

        It has how far corners may be off, the residuals and how many tracks are in use.

        Raises
        ------
        ValueError
            For another ending.
        RuntimeError
            Where rsvg-convert, which draws PNG, is missing.
        OSError
            For a file that cannot be written.
        """
        self._inner.plot(_check.path("path", path))

    def write_explanation(
        self, path: _check.Path, *, progress: _check.Progress | None = None
    ) -> None:
        """Write what every track does to every frame as CSV.

        The columns are track, frame, residual, weight, leverage and influence.

        Raises
        ------
        ValueError
            Unless it was solved with `influences`.
        OSError
            For a file that cannot be written.
        """
        self._inner.write_explanation(
            _check.path("path", path), _check.callback("progress", progress)
        )

    def __len__(self) -> int:
        """How many frames there are."""
        return len(self.frames)

    def __repr__(self) -> str:
        return f"<cornerpin.Result: {self.closing_sentence}>"

    def _repr_html_(self) -> str:
        """Give what a notebook shows: the verdict, why, and a plot of all frames."""
        rows = "".join(
            f"<tr><td>{s.first}-{s.last}</td><td>{html.escape(s.text)}</td></tr>"
            for s in self.closing_stretches
        )
        sentence = html.escape(self.closing_sentence)
        return f"<div><p><b>{sentence}</b></p><table>{rows}</table>{self._plotted()}</div>"

    def _plotted(self) -> str:
        """The plot as an element of a page."""
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "plot.svg")
            self.plot(path)
            with open(path, encoding="utf-8") as file:
                text = file.read()
        return text[text.index("<svg") :]


def _readonly(array: NDArray[_T]) -> NDArray[_T]:
    array.flags.writeable = False
    return array


def read_result(path: _check.Path, *, picture: Picture | None = None) -> Result:
    """Read a result from the JSON file of a solve.

    `Result.to_json` gives the bytes of the file again where this version has written it.

    Parameters
    ----------
    path : str or path-like
        "-" is standard input.
    picture : Picture, optional
        What the result does not say of the tracks' picture itself, for `Result.write`.

    Raises
    ------
    InputError
        For a file that is no result.
    ValueError
        For a picture that contradicts the file.
    """
    return Result._of(_cornerpin.read_result(_check.path("path", path), told(picture)))
