# SPDX-License-Identifier: BSD-3-Clause
import cornerpin
import numpy as np
import pytest
from hypothesis import assume, given
from hypothesis import strategies as st
from hypothesis.extra import numpy as nps
from shots import carry

EPS = {np.float64: 2.0**-52, np.float32: 2.0**-23}
UNIT = np.array([[0, 0], [1, 0], [1, 1], [0, 1]], dtype=float)
ELEMENTS = st.floats(-8, 8, width=32)
DTYPES = st.sampled_from([np.float64, np.float32])


def matrices(rows, columns):
    return st.tuples(rows, columns, DTYPES).flatmap(
        lambda shape: nps.arrays(shape[2], shape[:2], elements=ELEMENTS)
    )


def convex_quads():
    """The unit square with corners moved by up to 0.2."""
    return nps.arrays(float, (4, 2), elements=st.floats(-0.2, 0.2)).map(lambda d: UNIT + d)


def test_homography_of_a_known_map():
    h = np.array([[1.05, 0.1, 0.05], [-0.08, 0.95, -0.1], [0.03, -0.02, 1]])
    src = np.random.default_rng(3).uniform(-1, 1, (20, 2))
    found = cornerpin.homography(src, carry(h, src))
    assert found.dtype == np.float32 and found.shape == (3, 3) and found[2, 2] == 1
    assert np.abs(carry(found, src) - carry(h, src)).max() < 1e-4


def test_homography_weighs_squares_of_weights():
    random = np.random.default_rng(7)
    src = random.uniform(-1, 1, (12, 2))
    dst = src + 0.05 * random.standard_normal((12, 2))
    weights = np.ones(12)
    weights[4] = 2
    repeated = [np.concatenate([a, a[4:5], a[4:5], a[4:5]]) for a in (src, dst)]
    heavy = cornerpin.homography(src, dst, weights)
    assert np.abs(heavy - cornerpin.homography(*repeated)).max() < 2e-3
    assert np.abs(heavy - cornerpin.homography(src, dst)).max() > 4e-3


def test_homography_leaves_out_absent_matches():
    random = np.random.default_rng(8)
    src, dst = random.uniform(-1, 1, (2, 9, 2))
    weights = np.ones(9)
    weights[2] = 0
    absent = dst.copy()
    absent[2] = np.nan
    without = cornerpin.homography(np.delete(src, 2, 0), np.delete(dst, 2, 0))
    assert (cornerpin.homography(src, dst, weights) == without).all()
    assert (cornerpin.homography(src, absent) == without).all()


def test_homography_is_that_of_a_solve_without_a_loss():
    # With raw units and no loss the host layer gives the library's bits.
    random = np.random.default_rng(9)
    positions = random.uniform(-1, 1, (3, 9, 2)).astype(np.float32)
    positions[1:] = positions[0] + 0.05 * positions[1:]
    solved = cornerpin.solve(positions, base=0, loss="none", units="raw", advice=False)
    moved = cornerpin.match_move(positions)
    assert (solved.transforms == moved).all()
    assert (cornerpin.homography(positions[0], positions[1]) == moved[1]).all()


def test_match_move_goes_by_strides():
    positions = np.random.default_rng(9).uniform(-1, 1, (3, 9, 2)).astype(np.float32)
    positions[1:] = positions[0] + 0.05 * positions[1:]
    weights = np.linspace(0.5, 1, 27, dtype=np.float32).reshape(3, 9)
    expected = cornerpin.match_move(positions, weights, base_frame=1)
    assert (expected[1] == np.eye(3)).all()
    wide = np.zeros((6, 18, 4), np.float32)
    wide[::2, ::2, ::2] = positions
    by_columns = np.asfortranarray(weights)
    assert (cornerpin.match_move(wide[::2, ::2, ::2], by_columns, base_frame=1) == expected).all()
    assert (cornerpin.match_move(positions.astype(">f8"), weights, base_frame=1) == expected).all()


@pytest.mark.parametrize(
    ("arguments", "error", "words"),
    [
        ((UNIT, UNIT[:3]), ValueError, ["dst: ", "4 x 2", "3 x 2"]),
        ((UNIT[:, :1], UNIT), ValueError, ["src: ", "n x 2", "4 x 1"]),
        ((UNIT[:3], UNIT[:3]), ValueError, ["src: four matches at least are wanted, not 3"]),
        ((UNIT, UNIT, [1, 1, 1, 0]), ValueError, ["src: four matches", "not 3"]),
        ((UNIT, UNIT, [1, 1, 1, -1]), ValueError, ["weights: ", "-1"]),
        ((UNIT, UNIT, [1, 1, 1, np.nan]), ValueError, ["weights: ", "nan"]),
        ((UNIT, UNIT + [0, np.inf]), ValueError, ["dst: two finite numbers", "inf"]),
        ((UNIT * 1e39, UNIT), ValueError, ["src: two finite numbers", "inf"]),
        ((UNIT, "abcd"), TypeError, ["dst: an array of numbers"]),
    ],
)
def test_homography_refuses_by_names(arguments, error, words):
    with pytest.raises(error) as refused:
        cornerpin.homography(*arguments)
    for word in words:
        assert word in str(refused.value)


def test_homography_of_one_point_is_singular():
    with pytest.raises(np.linalg.LinAlgError):
        cornerpin.homography(np.zeros((5, 2)), np.zeros((5, 2)))
    with pytest.raises(ValueError, match="base_frame: a whole number from 0 to 1"):
        cornerpin.match_move(np.zeros((2, 4, 2)), base_frame=2)


def test_inverse_of_a_worked_matrix():
    assert cornerpin.inverse([[2, 1], [4, 4]]).tolist() == [[1, -0.25], [-1, 0.5]]


@given(st.integers(1, 6).flatmap(lambda n: matrices(st.just(n), st.just(n))))
def test_inverse_is_as_accurate_as_promised(a):
    try:
        x = cornerpin.inverse(a)
    except np.linalg.LinAlgError as singular:
        assert str(singular) == "inverse: singular matrix"
        return
    assume(np.isfinite(x).all())
    exact, wide = np.asarray(a, np.longdouble), np.asarray(x, np.longdouble)
    error = np.abs(np.eye(len(a)) - wide @ exact).sum(axis=0).max()
    norms = np.abs(wide).sum(axis=0).max() * np.abs(exact).sum(axis=0).max()
    assert x.dtype == a.dtype and x.flags.owndata
    assert error <= 30 * len(a) * EPS[a.dtype.type] * norms


@given(matrices(st.integers(1, 6), st.integers(1, 6)))
def test_svd_puts_the_matrix_together_again(a):
    u, s, v = cornerpin.svd(a)
    m, n = a.shape
    k = min(m, n)
    bound = 10 * max(m, n) * EPS[a.dtype.type]
    assert (u.shape, s.shape, v.shape) == ((m, n), (n,), (n, n))
    assert (np.diff(s[:k]) <= 0).all() and (s[k:] == 0).all()
    assert np.abs(a - u @ np.diag(s) @ v.T).max() <= bound * max(float(s[0]), 1e-30)
    assert np.abs(u[:, :k].T @ u[:, :k] - np.eye(k)).max() <= bound
    assert np.abs(v.T @ v - np.eye(n)).max() <= bound


@given(st.integers(2, 5), DTYPES, st.integers(0, 2**32 - 1))
def test_strides_change_no_bit(n, dtype, seed):
    a = np.random.default_rng(seed).uniform(-1, 1, (n, n)).astype(dtype)
    wide = np.zeros((3 * n, 2 * n), dtype)
    wide[::3, ::2] = a
    others = [
        np.asfortranarray(a),
        wide[::3, ::2],
        a[::-1].copy()[::-1],
        a.astype(a.dtype.newbyteorder()),
    ]
    for other in others:
        assert (cornerpin.inverse(other) == cornerpin.inverse(a)).all()
        for one, two in zip(cornerpin.svd(other), cornerpin.svd(a)):
            assert (one == two).all()


@pytest.mark.parametrize("function", [cornerpin.inverse, cornerpin.svd])
def test_matrices_are_refused_by_name(function):
    for bad, error in [
        (3.0, ValueError),
        ([[]], ValueError),
        ("x", TypeError),
        ([[1j]], TypeError),
    ]:
        with pytest.raises(error, match="^a: "):
            function(bad)
    with pytest.raises(ValueError, match="NaN"):
        cornerpin.svd([[np.nan]])
    with pytest.raises(ValueError, match="a: as many rows as columns are wanted, not 2 and 3"):
        cornerpin.inverse(np.ones((2, 3)))


def test_quartic_of_known_roots():
    found = cornerpin.solve_quartic(np.poly([1, 2, 3, 4]))
    assert found.counts == 4
    assert sorted(found.roots) == pytest.approx([1, 2, 3, 4], rel=1e-12)
    many = cornerpin.solve_quartic([[1, 0, 2, 0, 1], [0, 0, 1, 0, -4], [1, 0, -5, 0, 4]])
    assert many.counts.tolist() == [0, 2, 4]
    assert sorted(many.roots[1, :2]) == [-2, 2] and np.isnan(many.roots[1, 2:]).all()
    assert np.isnan(many.roots[0]).all()
    with pytest.raises(
        ValueError, match=r"coefficients: an array of \.\.\. x 5 is wanted, not one of 4"
    ):
        cornerpin.solve_quartic([1, 2, 3, 4])


@given(st.lists(st.integers(-9, 9), min_size=4, max_size=4, unique=True))
def test_quartic_finds_four_whole_roots(roots):
    found = cornerpin.solve_quartic(np.poly(roots))
    assert found.counts == 4
    assert sorted(found.roots) == pytest.approx(sorted(roots), abs=1e-6)


@given(
    st.floats(0.01, 10),
    st.floats(0.01, 10),
    st.floats(0, 6.3),
    st.floats(-20, 20),
    st.floats(-20, 20),
)
def test_no_point_of_the_ellipse_is_nearer(width, height, turned, x, y):
    a = width * np.array([np.cos(turned), np.sin(turned)])
    b = height * np.array([-np.sin(turned), np.cos(turned)])
    centre = np.array([1.0, -2.0])
    nearest = cornerpin.closest_point_on_ellipse(centre, a, b, [x, y])
    t = np.linspace(0, 2 * np.pi, 4001)[:, None]
    ellipse = centre + np.cos(t) * a + np.sin(t) * b
    assert (
        np.hypot(*(nearest - [x, y])) <= np.hypot(*(ellipse - [x, y]).T).min() * (1 + 1e-12) + 1e-12
    )
    along, across = (nearest - centre) @ a / width**2, (nearest - centre) @ b / height**2
    assert along**2 + across**2 == pytest.approx(1, abs=1e-9)


def test_closest_points_of_an_array_are_those_of_each():
    points = np.random.default_rng(4).uniform(-3, 3, (2, 3, 2))
    together = cornerpin.closest_point_on_ellipse([0, 0], [2, 0], [0, 1], points)
    assert together.shape == (2, 3, 2)
    for i in np.ndindex(2, 3):
        alone = cornerpin.closest_point_on_ellipse([0, 0], [2, 0], [0, 1], points[i])
        assert (together[i] == alone).all()
    assert cornerpin.closest_point_on_ellipse([0, 0], [2, 0], [0, 1], [0, 0]).tolist() == [0, 1]
    with pytest.raises(ValueError, match="NaN"):
        cornerpin.closest_point_on_ellipse([0, 0], [2, 0], [0, 1], [np.nan, 0])
    with pytest.raises(ValueError, match="centre: an array of 2 is wanted, not one of 3"):
        cornerpin.closest_point_on_ellipse([0, 0, 0], [2, 0], [0, 1], [1, 1])


@given(convex_quads(), convex_quads(), nps.arrays(float, (5, 2), elements=st.floats(0, 1)))
def test_planar_mappings_agree(source, target, points):
    onto = cornerpin.square_to_quad(source)
    assert onto[2, 2] == 1
    np.testing.assert_allclose(carry(onto, UNIT), source, atol=1e-14)
    np.testing.assert_allclose(
        cornerpin.map_square_to_quad(source, points), carry(onto, points), atol=1e-13
    )
    back = cornerpin.quad_to_square(source)
    np.testing.assert_allclose(carry(back, source), UNIT, atol=1e-13)
    np.testing.assert_allclose(
        cornerpin.map_quad_to_square(source, carry(onto, points)), points, atol=1e-12
    )
    pin = cornerpin.quad_to_quad(source, target)
    assert np.hypot(np.hypot(*pin[2, :2]), pin[2, 2]) == pytest.approx(1)
    np.testing.assert_allclose(carry(pin, source), target, atol=1e-13)


@given(convex_quads(), st.floats(0.1, 0.9), st.floats(0.1, 0.9))
def test_the_affine_map_is_the_tangent(quad, x, y):
    h = cornerpin.square_to_quad(quad)
    affine = cornerpin.affine_at(h, [x, y])
    assert affine[2].tolist() == [0, 0, 1]
    np.testing.assert_allclose(carry(affine, [x, y]), carry(h, [x, y]), atol=1e-13)
    step = 1e-6
    for way in np.eye(2):
        slope = (carry(h, [x, y] + step * way) - carry(h, [x, y] - step * way)) / (2 * step)
        np.testing.assert_allclose(affine[:2, :2] @ way, slope, atol=1e-7)


def test_affine_maps_of_the_plane():
    assert carry(cornerpin.translation(3, -2), [1, 1]).tolist() == [4, -1]
    assert carry(cornerpin.scaling(2, 3), [1, 1]).tolist() == [2, 3]
    turned = carry(cornerpin.rotation([1, 1], 90), [2, 1])
    assert turned == pytest.approx([1, 2], abs=1e-15)
    with pytest.raises(TypeError, match="x: a number is wanted, not str"):
        cornerpin.translation("3", 0)
    with pytest.raises(ValueError, match="quad: an array of 4 x 2 is wanted, not one of 3 x 2"):
        cornerpin.square_to_quad(UNIT[:3])
