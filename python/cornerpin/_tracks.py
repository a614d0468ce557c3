# SPDX-License-Identifier: BSD-3-Clause
"""Tracks: from arrays, columns and files, and to them."""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Optional, Protocol, Sequence

import numpy as np
from numpy.typing import ArrayLike, NDArray

from cornerpin import _check, _cornerpin


@dataclass(frozen=True)
class Picture:
    """What is known of the picture and the clip that tracks are from.

    What is not known is None. A solve needs none of it, files in other formats do. x always grows
    to the right.

    Parameters
    ----------
    width, height : int, optional
        In pixels, above 0.
    y : {"up", "down"}, optional
        Where y grows to.
    pixel_centre : {0, 0.5}, optional
        The coordinates of the middle of the first pixel: 0, or 0.5 where whole numbers are edges.
    first_frame : int, optional
        The number of the clip's first frame.
    """

    width: Optional[int] = None
    height: Optional[int] = None
    y: Optional[str] = None
    pixel_centre: Optional[float] = None
    first_frame: Optional[int] = None


@dataclass(frozen=True)
class Written:
    """What is to be said of a file that was written.

    Attributes
    ----------
    notes : list of str
        What the format cannot carry.
    read_back : str
        How the file compares that was read again: "read back: largest difference 0 px".
    size : str
        Of the picture, such as "1920x1080", where something depended on it.
    """

    notes: list[str]
    read_back: str
    size: str


class Columns(Protocol):
    """What has columns by name: a dict of lists or arrays, a pandas.DataFrame, a structured array."""

    def __getitem__(self, name: str, /) -> Any:
        ...


def told(picture: Picture | None) -> _cornerpin.Picture:
    """The same for the compiled part."""
    made = _cornerpin.Picture()
    if picture is None:
        return made
    if not isinstance(picture, Picture):
        raise _check.wrong_type("picture", picture, "a cornerpin.Picture")
    made.width = _check.maybe_whole("picture.width", picture.width)
    made.height = _check.maybe_whole("picture.height", picture.height)
    made.set_y(_check.maybe_text("picture.y", picture.y))
    made.pixel_centre = _check.maybe_number("picture.pixel_centre", picture.pixel_centre)
    made.first_frame = _check.maybe_whole("picture.first_frame", picture.first_frame)
    return made


def written(given: _cornerpin.Written) -> Written:
    """The same for whoever called."""
    return Written(given.notes, given.read_back, given.size)


class Tracks:
    """The tracks of a shot. Nothing changes them.

    Made by `Tracks.from_arrays`, `Tracks.from_columns` and `read`. Equal tracks give the same
    results to the bit, wherever they came from.
    """

    def __init__(self) -> None:
        raise TypeError("Tracks: made by Tracks.from_arrays, Tracks.from_columns and read")

    _inner: _cornerpin.Tracks

    @classmethod
    def _of(cls, inner: _cornerpin.Tracks) -> Tracks:
        made = object.__new__(cls)
        made._inner = inner
        return made

    @classmethod
    def from_arrays(
        cls,
        tracks: ArrayLike,
        weights: ArrayLike | None = None,
        *,
        names: Sequence[str] | None = None,
        first_frame: int = 0,
        picture: Picture | None = None,
    ) -> Tracks:
        """Take tracks from arrays of all frames and tracks.

        Parameters
        ----------
        tracks : array_like, shape (frames, tracks, 2)
            x and y in pixels; NaN in both where a track is absent. An array of float64 or float32
            whose strides are aligned positive multiples of its item size is read where it is, any
            other is copied once.
        weights : array_like, shape (frames, tracks), optional
            From 0 on, or True and False for 1 and 0; 0 where a track is absent, whatever its
            position is then. A residual r is multiplied by its weight w, so that its cost is
            w^2 r^2. 1 everywhere by default.
        names : sequence of str, optional
            One for each track, all different. By default "t" and the track's index, with as many
            zeros in front as the largest index needs: "t00" to "t99" of 100 tracks, so that the
            order of the names is that of the indices.
        first_frame : int, default 0
            The number of the first of the frames, which follow one another.
        picture : Picture, optional
            What is known of it.

        Raises
        ------
        TypeError
            For an argument of another type.
        ValueError
            For a wrong shape, no frame or track, a name that is empty or there twice, NaN in one
            coordinate alone, a number beyond single precision, a weight that is negative or NaN,
            and where no track is seen anywhere.
        """
        positions = _check.array("tracks", tracks, ("frames", "tracks", 2))
        if 0 in positions.shape:
            got = " x ".join(map(str, positions.shape))
            raise ValueError(f"tracks: a frame and a track at least are wanted, not {got} numbers")
        if weights is not None:
            weights = _check.array("weights", weights, positions.shape[:2], kinds="fiub")
        return cls._of(
            _cornerpin.tracks_from_arrays(
                positions,
                weights,
                _names(names, positions.shape[1]),
                _check.whole("first_frame", first_frame),
                told(picture),
            )
        )

    @classmethod
    def from_columns(cls, columns: Columns, *, picture: Picture | None = None) -> Tracks:
        """Take tracks from columns: a row for each track and each frame in which it is seen.

        Parameters
        ----------
        columns : mapping of array_like
            A dict, a pandas.DataFrame, a structured array: whatever gives "frame" (whole numbers),
            "track" (names, or whole numbers from 0 on), "x" and "y" (in pixels), all as long as each
            other, and maybe "weight". What else it has is not looked at. Rows may be in any order.
            Numbers of tracks become names with zeros in front: "t007" where the largest is 123.
        picture : Picture, optional
            What is known of it.

        Raises
        ------
        TypeError
            For a column of another type.
        ValueError
            For a column that is missing or of another length, a track that is there twice in a
            frame, and as `from_arrays` does.
        """
        frame = _column(columns, "frame")
        count = len(frame)
        if count == 0:
            raise ValueError("columns: a row at least is wanted, not none")
        names, indices = _track_column(_column(columns, "track", count))
        x = _number_column(columns, "x", count)
        y = _number_column(columns, "y", count)
        try:
            weight = _number_column(columns, "weight", count)
        except _NoColumn:
            weight = np.ones(count)
        return cls._of(
            _cornerpin.tracks_from_rows(
                _int32("frame", frame), indices, x, y, weight, names, told(picture)
            )
        )

    def to_columns(self) -> Dict[str, NDArray[Any]]:
        """Give columns: a row for each track and each frame in which it was given.

        Returns
        -------
        dict of ndarray
            "frame" (int), "track" (str), "x", "y" and "weight" (float64), by frame, then by track.
            `pandas.DataFrame` takes it as it is.
        """
        frame, index, x, y, weight = self._inner.rows()
        names = np.array(self._inner.names, dtype=np.str_)
        return {"frame": frame, "track": names[index], "x": x, "y": y, "weight": weight}

    @property
    def positions(self) -> NDArray[np.float64]:
        """(frames, tracks, 2), in pixels: a new array, with NaN where a track is absent."""
        return self._inner.positions()

    @property
    def weights(self) -> NDArray[np.float64]:
        """(frames, tracks): a new array, with 0 where a track is absent."""
        return self._inner.weights()

    @property
    def names(self) -> list[str]:
        """The names in order, byte by byte. Arrays and results have the tracks in this order."""
        return self._inner.names

    @property
    def first_frame(self) -> int:
        """The number of the first frame."""
        return self._inner.first_frame

    @property
    def last_frame(self) -> int:
        """The number of the last frame."""
        return self._inner.last_frame

    @property
    def picture(self) -> Picture:
        """What is known of the picture."""
        given = self._inner.picture
        return Picture(
            given.width, given.height, given.y or None, given.pixel_centre, given.first_frame
        )

    @property
    def notes(self) -> list[str]:
        """What was skipped in the file, `FILE:LINE: text`, for people."""
        return self._inner.notes

    def write(self, path: _check.Path, format: str | None = None) -> Written:
        """Write them to a file, in the coordinates and frames of its format, and read it again.

        Parameters
        ----------
        path : str or path-like
            The file appears whole or not at all.
        format : str, optional
            As the command's --to names it; by the path's ending otherwise.

        Raises
        ------
        ValueError
            For a format that holds no tracks, and for what it needs to know and `Picture` does not
            tell.
        OSError
            For a file that cannot be written.
        """
        return written(
            self._inner.write(_check.path("path", path), _check.maybe_text("format", format))
        )

    def __len__(self) -> int:
        """How many tracks there are."""
        return len(self._inner.names)

    def __repr__(self) -> str:
        return f"<cornerpin.Tracks: {len(self)} in frames {self.first_frame} to {self.last_frame}>"


class _NoColumn(ValueError):
    pass


def _names(names: Sequence[str] | None, count: int) -> list[bytes]:
    if names is None:
        return []
    if isinstance(names, str):
        raise _check.wrong_type("names", names, "a list of texts")
    given = _check.texts("names", names)
    if len(given) != count:
        raise ValueError(f"names: {count} are wanted, one for each track, not {len(given)}")
    return given


def _column(columns: Columns, name: str, count: int | None = None) -> NDArray[Any]:
    try:
        given = columns[name]
    except (KeyError, IndexError, ValueError):
        raise _NoColumn(f'columns: "{name}" is missing') from None
    except TypeError:
        raise _check.wrong_type("columns", columns, "a mapping of columns") from None
    values = np.asarray(given)
    if values.ndim != 1:
        raise ValueError(
            f'columns["{name}"]: numbers in a row are wanted, not {values.ndim} dimensions'
        )
    if count is not None and len(values) != count:
        raise ValueError(
            f'columns["{name}"]: {count} rows are wanted, as "frame" has, not {len(values)}'
        )
    return values


def _number_column(columns: Columns, name: str, count: int) -> NDArray[Any]:
    return _check.array(
        f'columns["{name}"]', _column(columns, name, count), (count,), (np.float64,)
    )


def _int32(name: str, values: NDArray[Any]) -> NDArray[np.int32]:
    if values.dtype.kind not in "iu" and not (
        values.dtype.kind == "f" and bool(np.all(values == np.round(values)))
    ):
        raise TypeError(f'columns["{name}"]: whole numbers are wanted, not {values.dtype}')
    if not (-_check.INT32 <= values.min() and values.max() < _check.INT32):
        raise ValueError(
            f'columns["{name}"]: numbers in 32 bits are wanted, not {values.min()} to {values.max()}'
        )
    return values.astype(np.int32)


def _track_column(values: NDArray[Any]) -> tuple[list[bytes], NDArray[np.int32]]:
    """Names in order, and for each row the index of its name."""
    if values.dtype.kind in "iu":
        numbers, indices = np.unique(values, return_inverse=True)
        if numbers[0] < 0:
            raise ValueError(f'columns["track"]: numbers from 0 on are wanted, not {numbers[0]}')
        digits = len(str(numbers[-1]))
        return [b"t%0*d" % (digits, int(n)) for n in numbers], indices.astype(np.int32)
    if values.dtype.kind not in "UO" or not all(isinstance(name, str) for name in values):
        raise TypeError(f'columns["track"]: names or whole numbers are wanted, not {values.dtype}')
    names, indices = np.unique(values.astype(object), return_inverse=True)
    return _check.texts('columns["track"]', names), indices.astype(np.int32)


def read(
    path: _check.Path,
    *,
    format: str | None = None,
    frames: str | None = None,
    picture: Picture | None = None,
    digest: bool = True,
    progress: _check.Progress | None = None,
) -> Tracks:
    """Read tracks from a file in any format that docs/formats.md lists, plain or gzip.

    Frames and coordinates stay as the file has them, in pixels.

    Parameters
    ----------
    path : str or path-like
        "-" is standard input.
    format : str, optional
        As the command's --from names it; found by what is in the file otherwise.
    frames : str, optional
        Where a frame is far from all others, only these are read: "10-60", "60-". Such a frame is
        refused otherwise.
    picture : Picture, optional
        What the file does not say itself.
    digest : bool
        Take the SHA-256 of the file, which results in JSON tell.
    progress : callable, optional
        As `solve` takes it.

    Raises
    ------
    InputError
        For a file that cannot be read, is not as its format has it, or holds no tracks.
    ValueError
        Where the arguments contradict the file, or lack the size of the picture that coordinates are
        parts of.
    """
    return Tracks._of(
        _cornerpin.read_tracks(
            _check.path("path", path),
            _check.maybe_text("format", format),
            _check.maybe_text("frames", frames),
            told(picture),
            _check.flag("digest", digest),
            _check.callback("progress", progress),
        )
    )
