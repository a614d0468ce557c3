# SPDX-License-Identifier: BSD-3-Clause
"""Which arrays are copied, told by addresses and by what is allocated, and that nothing is kept."""
import gc
import resource
import subprocess
import sys
import tracemalloc

import cornerpin
import numpy as np
import pytest
from cornerpin import _cornerpin

SHAPE = (60, 500, 2)


def packed(dtype=np.float64):
    random = np.random.default_rng(1)
    return random.uniform(0, 1, SHAPE).astype(dtype)


def spread(dtype=np.float64):
    """With strides of 3, 2 and 2 elements' width."""
    wide = np.zeros((SHAPE[0] * 3, SHAPE[1] * 2, 4), dtype)
    wide[::3, ::2, ::2] = packed(dtype)
    return wide[::3, ::2, ::2]


def records():
    """Positions between other fields of 4 bytes, so that strides are no multiples of 8."""
    rows = np.zeros(SHAPE[:2], np.dtype([("id", "i4"), ("at", "f8", 2)]))
    rows["at"] = packed()
    return rows["at"]


def unaligned():
    raw = np.zeros(8 * packed().size + 1, np.uint8)
    array = raw[1:].view(np.float64).reshape(SHAPE)
    array[...] = packed()
    return array


LOOKED_AT = {
    "packed": packed,
    "single": lambda: packed(np.float32),
    "spread": spread,
    "spread single": lambda: spread(np.float32),
    "by columns": lambda: np.asfortranarray(packed()),
    "transposed": lambda: np.ascontiguousarray(packed().transpose(2, 1, 0)).transpose(2, 1, 0),
    "read only": lambda: np.frombuffer(packed().tobytes()).reshape(SHAPE),
}
COPIED = {
    "backwards": lambda: packed()[::-1],
    "repeated": lambda: np.broadcast_to(packed()[:1], SHAPE),
    "other byte order": lambda: packed().astype(">f8"),
    "other byte order, single": lambda: packed().astype(">f4"),
    "integers": lambda: (1000 * packed()).astype(np.int64),
    "half": lambda: packed().astype(np.float16),
    "unaligned": unaligned,
    "odd strides": records,
}


@pytest.fixture
def passed(monkeypatch):
    """What the compiled part was given as positions."""
    seen = []
    inner = _cornerpin.tracks_from_arrays
    monkeypatch.setattr(
        _cornerpin, "tracks_from_arrays", lambda *given: seen.append(given[0]) or inner(*given)
    )
    return seen


def address(array):
    return array.__array_interface__["data"][0]


def allocated(work):
    """The most that was allocated at once by Python and NumPy during some work, in bytes."""
    work()
    gc.collect()
    tracemalloc.start()
    try:
        before = tracemalloc.get_traced_memory()[0]
        tracemalloc.reset_peak()
        work()
        return tracemalloc.get_traced_memory()[1] - before
    finally:
        tracemalloc.stop()


@pytest.mark.parametrize("kind", LOOKED_AT)
def test_is_looked_at_where_it_is(passed, kind):
    array = LOOKED_AT[kind]()
    tracks = cornerpin.Tracks.from_arrays(array)
    assert address(passed[0]) == address(array)
    assert passed[0].strides == array.strides
    assert (tracks.positions == array).all()
    assert allocated(lambda: cornerpin.Tracks.from_arrays(array)) < array.nbytes / 10


@pytest.mark.parametrize("kind", COPIED)
def test_is_copied_once(passed, kind):
    array = COPIED[kind]()
    tracks = cornerpin.Tracks.from_arrays(array)
    assert not np.shares_memory(passed[0], array)
    assert passed[0].flags.c_contiguous and passed[0].flags.owndata
    assert (tracks.positions == array).all()
    most = allocated(lambda: cornerpin.Tracks.from_arrays(array))
    assert 0.9 < most / passed[0].nbytes < 1.1


@pytest.mark.parametrize("dtype", [np.float64, np.float32])
def test_matrices_are_looked_at_where_they_are(monkeypatch, dtype):
    a = np.random.default_rng(1).uniform(0, 1, (60, 60)).astype(dtype)
    wide = np.zeros((120, 180), dtype)
    wide[::2, ::3] = a
    for name in ("inverse", "svd"):
        seen = []
        inner = getattr(_cornerpin, name)
        monkeypatch.setattr(_cornerpin, name, lambda g, i=inner, s=seen: s.append(g) or i(g))
        for given in (a, a.T, wide[::2, ::3]):
            getattr(cornerpin, name)(given)
            assert address(seen[-1]) == address(given)
            assert seen[-1].strides == given.strides
        getattr(cornerpin, name)(a[::-1])
        assert address(seen[-1]) != address(a[::-1])


def test_the_compiled_part_reads_where_the_array_is():
    # Nearly all is absent, which takes no memory: a copy of any kind would more than show.
    program = """
import resource, numpy, cornerpin
positions = numpy.full((1000, 8000, 2), numpy.nan)
weights = numpy.ones((1000, 8000), numpy.float32)
positions[:, :4] = numpy.arange(8000).reshape(1000, 4, 2)
cornerpin.Tracks.from_arrays(positions[:2], weights[:2])
before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
cornerpin.Tracks.from_arrays(positions, weights)
after = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
print((after - before) * 1024, positions.nbytes + weights.nbytes)
"""
    done = subprocess.run(
        [sys.executable, "-c", program], capture_output=True, text=True, check=True
    )
    grown, given = map(int, done.stdout.split())
    assert grown < given / 20, done.stdout


def test_match_move_uses_the_array_where_it_is():
    # Tracks that the base frame lacks take part nowhere: only views of them are made.
    program = """
import resource, numpy, cornerpin
positions = numpy.zeros((20000, 400, 2), numpy.float32)
positions[:, :4] = [[-1, -1], [1, -1], [1, 1], [-1, 1]]
weights = numpy.zeros((20000, 400), numpy.float32)
weights[:, :4] = 1
cornerpin.match_move(positions[:2], weights[:2])
before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
transforms = cornerpin.match_move(positions, weights)
after = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
assert abs(transforms - numpy.eye(3)).max() < 1e-6
print((after - before) * 1024, positions.nbytes + weights.nbytes)
"""
    done = subprocess.run(
        [sys.executable, "-c", program], capture_output=True, text=True, check=True
    )
    grown, given = map(int, done.stdout.split())
    assert grown < given / 10, done.stdout


def test_results_outlive_what_they_are_from():
    a = np.array([[2.0, 0], [0, 4]])
    inverse = cornerpin.inverse(a)
    tracks = cornerpin.Tracks.from_arrays(packed())
    positions = tracks.positions
    assert inverse.flags.owndata and positions.flags.owndata
    del tracks
    a[:] = 7
    assert inverse.tolist() == [[0.5, 0], [0, 0.25]]
    assert (positions == packed()).all()


def test_what_is_given_stays_as_it_is():
    array = packed()[:2, :20]
    array[1] = array[0] + 0.1
    single = array.astype(np.float32)
    cornerpin.solve(array, base=0)
    cornerpin.match_move(single)
    a = array[:, :2, 0].copy()
    cornerpin.inverse(a)
    cornerpin.svd(a)
    assert (array[0] == packed()[0, :20]).all() and (array[1] == array[0] + 0.1).all()
    assert (single == array.astype(np.float32)).all() and (a == array[:, :2, 0]).all()


def refused(function, *arguments):
    try:
        function(*arguments)
    except Exception:
        return
    raise AssertionError("it was not refused")


CALLS = {
    "solve": lambda p: cornerpin.solve(
        p, base=0, advice=False, threads=1, progress=lambda *told: None
    ).transforms,
    "raising progress": lambda p: refused(lambda: cornerpin.solve(p, progress=lambda *told: 1 / 0)),
    "tracks": lambda p: cornerpin.Tracks.from_columns(cornerpin.Tracks.from_arrays(p).to_columns()),
    "match_move": lambda p: cornerpin.match_move(p),
    "inverse": lambda p: cornerpin.inverse(p[0, 1:3]),
    "singular inverse": lambda p: refused(cornerpin.inverse, np.zeros((4, 4))),
    "svd": lambda p: cornerpin.svd(p[0]),
    "quartic": lambda p: cornerpin.solve_quartic([1, 0, -5, 0, 4]),
    "ellipse": lambda p: cornerpin.closest_point_on_ellipse([0, 0], [2, 0], [0, 1], p[0]),
    "quads": lambda p: cornerpin.quad_to_quad(p[0, :4], p[0, :4] + 1),
    "refused": lambda p: refused(cornerpin.solve, p[0]),
}


@pytest.mark.parametrize("name", CALLS)
def test_nothing_leaks_over_10000_calls(name):
    positions = np.array([[[0, 0], [9, 1], [8, 9], [1, 8], [4, 3], [2, 6]]] * 2, float)
    call = CALLS[name]

    def repeat(times):
        for _ in range(times):
            call(positions)
        gc.collect()
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss, sys.getrefcount(positions)

    rss, references = repeat(500)
    grown, held = repeat(9500)
    # A hundred bytes a call would be 950 KB.
    assert grown - rss < 900, f"{grown - rss} KB more"
    assert held == references
