# SPDX-License-Identifier: BSD-3-Clause
"""What is given, checked: what is wrong names the argument, what it got and what it wants."""
from __future__ import annotations

import numbers
import operator
import os
from typing import Any, Callable, Optional, Sequence, Tuple, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

Path = Union[str, "os.PathLike[str]"]
Progress = Callable[[str, int, int], Optional[bool]]

INT32 = 2**31
_SOME = 40  # characters of a value that a message shows


def _shown(value: object) -> str:
    text = repr(value)
    return text if len(text) <= _SOME else text[: _SOME - 3] + "..."


def wrong_type(name: str, value: object, wanted: str) -> TypeError:
    """The error of an argument of another type than is wanted."""
    return TypeError(f"{name}: {wanted} is wanted, not {type(value).__name__} {_shown(value)}")


def wrong_value(name: str, value: object, wanted: str) -> ValueError:
    """The error of an argument that makes no sense."""
    return ValueError(f"{name}: {wanted} is wanted, not {_shown(value)}")


def whole(name: str, value: Any, least: int = -INT32, most: int = INT32 - 1) -> int:
    """A whole number; a bool is none."""
    if isinstance(value, (bool, np.bool_)):
        raise wrong_type(name, value, "a whole number")
    try:
        number = operator.index(value)
    except TypeError:
        raise wrong_type(name, value, "a whole number") from None
    if not least <= number <= most:
        raise wrong_value(name, number, f"a whole number from {least} to {most}")
    return number


def maybe_whole(name: str, value: Any) -> int | None:
    """A whole number or None."""
    return None if value is None else whole(name, value)


def number(name: str, value: Any) -> float:
    """A real number; a bool is none."""
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, (numbers.Real, np.number)):
        raise wrong_type(name, value, "a number")
    return float(value)


def maybe_number(name: str, value: Any) -> float | None:
    """A real number or None."""
    return None if value is None else number(name, value)


def flag(name: str, value: Any) -> bool:
    """True or False, nothing that merely counts as one."""
    if not isinstance(value, (bool, np.bool_)):
        raise wrong_type(name, value, "True or False")
    return bool(value)


def text(name: str, value: Any) -> bytes:
    """A text, as the bytes that are passed on."""
    if not isinstance(value, str):
        raise wrong_type(name, value, "a text")
    if "\0" in value:
        raise wrong_value(name, value, "a text without a zero byte")
    try:
        return value.encode("utf-8", "surrogateescape")
    except UnicodeEncodeError:
        raise wrong_value(name, value, "a text that UTF-8 can hold") from None


def maybe_text(name: str, value: Any) -> bytes:
    """A text; None is empty."""
    return b"" if value is None else text(name, value)


def texts(name: str, value: Any) -> list[bytes]:
    """Texts in a row; a text by itself is one."""
    if isinstance(value, str):
        return [text(name, value)]
    try:
        given = list(value)
    except TypeError:
        raise wrong_type(name, value, "a text or a list of texts") from None
    return [text(f"{name}[{i}]", item) for i, item in enumerate(given)]


def path(name: str, value: Any) -> bytes:
    """The name of a file."""
    try:
        given = os.fspath(value)
    except TypeError:
        raise wrong_type(name, value, "the name of a file") from None
    encoded = os.fsencode(given)
    if b"\0" in encoded:
        raise wrong_value(name, value, "the name of a file, without a zero byte,")
    return encoded


def callback(name: str, value: Any) -> Progress | None:
    """A function or None."""
    if value is not None and not callable(value):
        raise wrong_type(name, value, "a function of (phase, done, total)")
    return value  # type: ignore[no-any-return]


def _fits(array: NDArray[Any]) -> bool:
    """Whether the strides are positive multiples of the item size that an int can count."""
    return bool(array.flags.aligned) and all(
        count <= 1
        or (0 < stride and stride % array.itemsize == 0 and stride // array.itemsize < INT32)
        for count, stride in zip(array.shape, array.strides)
    )


def array(
    name: str,
    value: ArrayLike,
    shape: Sequence[int | str | None],
    dtypes: Tuple[Any, ...] = (np.float64, np.float32),
    kinds: str = "fiu",
) -> NDArray[Any]:
    """The array itself, or one copy of it.

    It is the array itself where its elements are of one of the `dtypes`, in the byte order of this
    machine, aligned, and where its strides are positive multiples of their size. Otherwise it is
    one packed copy, of the first of the `dtypes` unless the elements are one of them but for their
    byte order. What is no array is made one.

    A number in `shape` is how many there have to be, a word what they are called, None the dimensions in
    front, however many. `kinds` are the kinds of elements, as NumPy has them, that are taken.
    """
    if isinstance(value, np.ma.MaskedArray):
        raise TypeError(
            f"{name}: a masked array hides numbers: give one with NaN there, such as .filled(numpy.nan)"
        )
    try:
        given = np.asarray(value)
    except ValueError:
        raise ValueError(
            f"{name}: an array of {_shape_text(shape)} numbers is wanted, not rows of different lengths"
        ) from None
    if given.dtype.kind not in kinds:
        raise TypeError(f"{name}: an array of numbers is wanted, not of {given.dtype}")
    _check_shape(name, given, shape)
    native = given.dtype.newbyteorder("=")
    dtype = native if native in [np.dtype(d) for d in dtypes] else np.dtype(dtypes[0])
    if given.dtype == dtype and given.dtype.isnative and _fits(given):
        return given
    return np.array(given, dtype=dtype, order="C", copy=True)


def _shape_text(shape: Sequence[int | str | None]) -> str:
    return " x ".join("..." if part is None else str(part) for part in shape)


def _check_shape(name: str, given: NDArray[Any], shape: Sequence[int | str | None]) -> None:
    wanted = list(shape)
    actual = list(given.shape)
    if wanted[0] is None:
        wanted = wanted[1:]
        actual = actual[len(actual) - len(wanted) :] if len(actual) >= len(wanted) else [-1]
    if len(actual) == len(wanted) and all(
        isinstance(w, str) or w == a for w, a in zip(wanted, actual)
    ):
        return
    got = " x ".join(map(str, given.shape)) or "a single number"
    raise ValueError(f"{name}: an array of {_shape_text(shape)} is wanted, not one of {got}")
