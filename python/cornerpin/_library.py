# SPDX-License-Identifier: BSD-3-Clause
"""The library's own functions on arrays. They give the bits that they give in C++."""
from __future__ import annotations

from typing import Any, NamedTuple, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

from cornerpin import _check, _cornerpin

Floats = NDArray[np.float64]
Either = Union[NDArray[np.float64], NDArray[np.float32]]

_SINGLE = (np.float32,)
_DOUBLE = (np.float64,)


class Svd(NamedTuple):
    """A singular value decomposition: ``a = U @ diag(S) @ V.T``.

    Attributes
    ----------
    U : ndarray, shape (m, n)
        Left singular vectors as columns; zero beyond column m.
    S : ndarray, shape (n,)
        Singular values, largest first; zero beyond the first m.
    V : ndarray, shape (n, n)
        Right singular vectors as columns, not as rows.
    """

    U: Either
    S: Either
    V: Either


class Roots(NamedTuple):
    """The real roots of polynomials.

    Attributes
    ----------
    roots : ndarray, shape (..., 4)
        The first `counts` of each are roots, not sorted, a double one twice; NaN behind them.
    counts : ndarray of int, shape (...)
        How many there are.
    """

    roots: Floats
    counts: NDArray[np.int32]


def match_move(
    tracks: ArrayLike, weights: ArrayLike | None = None, *, base_frame: int = 0
) -> NDArray[np.float32]:
    """Find a homography for every frame as `MMatchmove` does, to the bit.

    This is the library's solver alone: plain weighted least squares in single precision, without
    scaling and without a search for bad tracks. Scale and centre the tracks so that they are in
    -1 .. 1, or use `solve`, which does all of that.

    Parameters
    ----------
    tracks : array_like, shape (frames, tracks, 2)
        x and y. An array of float32 whose strides are aligned positive multiples of its item size is
        used where it is, any other is copied once. They have to be finite where the weight is
        above 0.
    weights : array_like, shape (frames, tracks), optional
        0 or less where a track is absent. A track that the base frame lacks takes part in no frame.
        1 everywhere by default.
    base_frame : int
        The frame whose transform is the identity, counted from 0.

    Returns
    -------
    ndarray of float32, shape (frames, 3, 3)
        From the base frame to each. The last element is 1.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape, and numbers that are not finite.
    numpy.linalg.LinAlgError
        Where the tracks of a frame fix no homography ("inverse: singular matrix", "nan").
    """
    positions = _check.array("tracks", tracks, ("frames", "tracks", 2), _SINGLE)
    if 0 in positions.shape:
        got = " x ".join(map(str, positions.shape))
        raise ValueError(f"tracks: a frame and a track at least are wanted, not {got} numbers")
    if weights is not None:
        weights = _check.array("weights", weights, positions.shape[:2], _SINGLE, kinds="fiub")
    base = _check.whole("base_frame", base_frame, 0, len(positions) - 1)
    return _cornerpin.match_move(positions, weights, base)


def homography(
    src: ArrayLike, dst: ArrayLike, weights: ArrayLike | None = None
) -> NDArray[np.float32]:
    """Find the homography that carries points to points, as `MMatchmove` solves it, to the bit.

    Parameters
    ----------
    src, dst : array_like, shape (n, 2)
        Where the points are, best in -1 .. 1: the solver computes in single precision and scales
        nothing. NaN in both coordinates of either where a match is absent. Both are gathered into one
        array of single precision, as `match_move` takes it.
    weights : array_like, shape (n,), optional
        0 where a match is absent. A residual r is multiplied by its weight w, so that its cost is
        w^2 r^2. 1 everywhere by default.

    Returns
    -------
    ndarray of float32, shape (3, 3)
        The last element is 1.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape, NaN in one coordinate alone, an infinity, a negative weight, and
        fewer than four matches.
    numpy.linalg.LinAlgError
        Where the matches fix no homography, as those on one line.
    """
    source = _check.array("src", src, ("n", 2))
    count = len(source)
    target = _check.array("dst", dst, (count, 2))
    positions = np.empty((2, count, 2), np.float32)
    with np.errstate(over="ignore"):  # an infinity is refused below
        positions[0] = source
        positions[1] = target
    used = np.ones((2, count), np.float32)
    if weights is not None:
        used[1] = _check.array("weights", weights, (count,), kinds="fiub")
        if not np.all(used[1] >= 0) or np.any(np.isinf(used[1])):
            bad = next(w for w in used[1] if not 0 <= w < np.inf)
            raise ValueError(f"weights: numbers from 0 on are wanted, not {bad}")
    used[:, np.isnan(positions).all(axis=2).any(axis=0)] = 0
    for name, places in zip(("src", "dst"), positions):
        _require_finite(name, places, used[1] > 0)
    present = int(np.count_nonzero(used[1] > 0))
    if present < 4:
        raise ValueError(f"src: four matches at least are wanted, not {present}")
    transforms = _cornerpin.match_move(positions, used, 0)
    return np.array(transforms[1])


def _require_finite(name: str, places: NDArray[Any], where: NDArray[np.bool_]) -> None:
    wrong = where & ~np.isfinite(places).all(axis=1)
    if wrong.any():
        i = int(np.argmax(wrong))
        x, y = places[i]
        raise ValueError(
            f"{name}: two finite numbers in single precision are wanted, or two NaN where a match is "
            f"absent, not {x} and {y} at {i}"
        )


def inverse(a: ArrayLike) -> Either:
    """Invert a square matrix by LU factorisation with partial pivoting.

    Parameters
    ----------
    a : array_like, shape (n, n)
        In float64 or float32. Where its strides are aligned positive multiples of its item size the
        factorisation starts from it as it is, any other is copied once before.

    Returns
    -------
    ndarray, shape (n, n)
        Of the type of `a`. norm1(I - X a) <= 30 n eps norm1(X) norm1(a).

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape, and no rows.
    numpy.linalg.LinAlgError
        "inverse: singular matrix" on an exactly zero pivot.
    """
    given = _check.array("a", a, ("n", "n"))
    _require_elements(given)
    if given.shape[0] != given.shape[1]:
        raise ValueError(
            f"a: as many rows as columns are wanted, not {given.shape[0]} and {given.shape[1]}"
        )
    return _cornerpin.inverse(given)


def svd(a: ArrayLike) -> Svd:
    """Decompose a matrix into its singular vectors and values, by QR iteration.

    Parameters
    ----------
    a : array_like, shape (m, n)
        In float64 or float32, finite. It is read as `inverse` reads its matrix.

    Returns
    -------
    Svd
        `U`, `S` and `V` of the type of `a`. ``a - U @ diag(S) @ V.T`` is within 10 max(m, n) eps of 0,
        relative to ``S[0]``.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape, no elements, NaN and infinity.
    numpy.linalg.LinAlgError
        Where the iteration does not converge.
    """
    given = _check.array("a", a, ("m", "n"))
    _require_elements(given)
    left, values, right, converged = _cornerpin.svd(given)
    if not converged:
        raise np.linalg.LinAlgError("svd: the iteration has not converged")
    return Svd(left, values, right)


def _require_elements(a: NDArray[Any]) -> None:
    if a.size == 0:
        raise ValueError(
            f"a: a row and a column at least are wanted, not {a.shape[0]} x {a.shape[1]}"
        )


def solve_quartic(coefficients: ArrayLike) -> Roots:
    """Find the real roots of a x^4 + b x^3 + c x^2 + d x + e by the library's closed form.

    It is fast and wrong or silent on some inputs: x^4 + p x^2 + r with two real roots loses them,
    double roots are often missed, and two roots have an error of 2e-8 in the median.
    cornerpin/geometry/roots.h has the rates.

    Parameters
    ----------
    coefficients : array_like, shape (..., 5)
        a, b, c, d and e. An array of float64 with positive strides is read where it is, any other is
        copied once.

    Returns
    -------
    Roots
        `roots` (..., 4) and `counts` (...): none, two or four of them. Where a is 0 they are those of
        the cubic, and so on.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape. Numbers are not checked: infinities and NaN go through.
    """
    given = _check.array("coefficients", coefficients, (None, 5), _DOUBLE)
    roots, counts = _cornerpin.solve_quartic(given.reshape(-1, 5))
    return Roots(roots.reshape(given.shape[:-1] + (4,)), counts.reshape(given.shape[:-1]))


def closest_point_on_ellipse(
    centre: ArrayLike, a: ArrayLike, b: ArrayLike, points: ArrayLike
) -> Floats:
    """Find the points of the ellipse centre + cos t a + sin t b that are nearest to points.

    Parameters
    ----------
    centre, a, b : array_like, shape (2,)
        The centre and the axis vectors, in any unit, of any length and at any angle.
    points : array_like, shape (..., 2)
        An array of float64 with positive strides is read where it is, any other is copied once.

    Returns
    -------
    ndarray, shape (..., 2)
        Right to one unit in the last place. Where several points are equally near, the one on the
        side that the axis vector points to; at the centre of a circle, centre + a.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape, NaN and infinity.
    """
    return _of_points(
        "points",
        points,
        lambda given: _cornerpin.closest_point_on_ellipse(
            _check.array("centre", centre, (2,), _DOUBLE),
            _check.array("a", a, (2,), _DOUBLE),
            _check.array("b", b, (2,), _DOUBLE),
            given,
        ),
    )


def _of_points(name: str, points: ArrayLike, function: Any) -> Floats:
    given = _check.array(name, points, (None, 2), _DOUBLE)
    images: Floats = function(given.reshape(-1, 2))
    return images.reshape(given.shape)


def square_to_quad(quad: ArrayLike) -> Floats:
    """Find the homography that carries the unit square to a quad.

    Parameters
    ----------
    quad : array_like, shape (4, 2)
        The images of (0, 0), (1, 0), (1, 1) and (0, 1). Convex; any unit.

    Returns
    -------
    ndarray, shape (3, 3)
        The last element is 1. Infinities or NaN where the last three corners are on one line.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    return _cornerpin.square_to_quad(_check.array("quad", quad, (4, 2), _DOUBLE))


def quad_to_square(quad: ArrayLike) -> Floats:
    """Find the homography that carries a quad to the unit square.

    Parameters
    ----------
    quad : array_like, shape (4, 2)
        As `square_to_quad` takes it.

    Returns
    -------
    ndarray, shape (3, 3)
        The adjugate of what `square_to_quad` gives, not divided by the determinant.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    return _cornerpin.quad_to_square(_check.array("quad", quad, (4, 2), _DOUBLE))


def quad_to_quad(source: ArrayLike, target: ArrayLike) -> Floats:
    """Find the homography that carries a quad to another: a corner pin.

    Parameters
    ----------
    source, target : array_like, shape (4, 2)
        As `square_to_quad` takes them.

    Returns
    -------
    ndarray, shape (3, 3)
        Scaled so that its bottom row has length 1, unless that is below 1e-7.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    return _cornerpin.quad_to_quad(
        _check.array("source", source, (4, 2), _DOUBLE),
        _check.array("target", target, (4, 2), _DOUBLE),
    )


def map_square_to_quad(quad: ArrayLike, points: ArrayLike) -> Floats:
    """Carry points of the unit square to a quad, without a matrix.

    Parameters
    ----------
    quad : array_like, shape (4, 2)
        As `square_to_quad` takes it.
    points : array_like, shape (..., 2)
        u and v.

    Returns
    -------
    ndarray, shape (..., 2)
        Infinite or NaN where a point lies on the line that is sent to infinity.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    corners = _check.array("quad", quad, (4, 2), _DOUBLE)
    return _of_points("points", points, lambda given: _cornerpin.map_square_to_quad(corners, given))


def map_quad_to_square(quad: ArrayLike, points: ArrayLike) -> Floats:
    """Carry points of a quad to the unit square, without a matrix.

    Parameters
    ----------
    quad : array_like, shape (4, 2)
        As `square_to_quad` takes it.
    points : array_like, shape (..., 2)
        x and y.

    Returns
    -------
    ndarray, shape (..., 2)
        Infinite or NaN where a point lies on the line that is sent to infinity.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    corners = _check.array("quad", quad, (4, 2), _DOUBLE)
    return _of_points("points", points, lambda given: _cornerpin.map_quad_to_square(corners, given))


def affine_at(transform: ArrayLike, point: ArrayLike) -> Floats:
    """Find the affine map that agrees with a homography around a point.

    Parameters
    ----------
    transform : array_like, shape (3, 3)
        The homography.
    point : array_like, shape (2,)
        Where the map has its value and its first derivatives.

    Returns
    -------
    ndarray, shape (3, 3)
        The last row is (0, 0, 1). Infinite or NaN where the point is sent to infinity.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    return _cornerpin.affine_at(
        _check.array("transform", transform, (3, 3), _DOUBLE),
        _check.array("point", point, (2,), _DOUBLE),
    )


def translation(x: float, y: float) -> Floats:
    """Give the 3 x 3 matrix that moves every point by (x, y).

    Raises
    ------
    TypeError
        For what is no number.
    """
    return _cornerpin.translation(_check.number("x", x), _check.number("y", y))


def rotation(centre: ArrayLike, degrees: float) -> Floats:
    """Give the 3 x 3 matrix that turns about a point, from the x axis towards the y axis.

    That is counter-clockwise where y points up, clockwise where it points down.

    Raises
    ------
    TypeError, ValueError
        For a wrong type or shape.
    """
    x, y = _check.array("centre", centre, (2,), _DOUBLE)
    return _cornerpin.rotation(float(x), float(y), _check.number("degrees", degrees))


def scaling(x: float, y: float) -> Floats:
    """Give the 3 x 3 matrix that scales about the origin.

    Raises
    ------
    TypeError
        For what is no number.
    """
    return _cornerpin.scaling(_check.number("x", x), _check.number("y", y))
