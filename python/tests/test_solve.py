# SPDX-License-Identifier: BSD-3-Clause
import inspect
import json

import cornerpin
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from shots import carry, csv_of, tilt, tilted, without_input


def test_finds_the_transforms_of_a_pan(pan):
    result = cornerpin.solve(pan, base=0)
    for f, h in enumerate(result.transforms):
        assert carry(h, pan[0]) == pytest.approx(pan[0] + [3 * f, -2 * f], abs=1e-6)
    assert result.transforms.shape == (8, 3, 3)
    assert (result.transforms[:, 2, 2] == 1).all()


def test_finds_known_homographies():
    result = cornerpin.solve(tilted(), base=0)
    places = tilted()[0]
    for f, h in enumerate(result.transforms):
        assert np.abs(carry(h, places) - carry(tilt(f), places)).max() < 1e-5
    assert (result.verdict == "good").all()


@given(st.integers(0, 2**32 - 1), st.floats(-4, 4))
def test_finds_any_homography(seed, amount):
    places = np.random.default_rng(seed).uniform(0, 1000, (12, 2))
    moved = carry(tilt(amount), places)
    h = cornerpin.solve(np.stack([places, moved]), base=0).transforms[1]
    assert np.abs(carry(h, places) - moved).max() < 1e-4


def test_single_precision_gives_what_its_numbers_give_in_double():
    single = tilted(noise=0.1).astype(np.float32)
    assert cornerpin.solve(single).to_json() == cornerpin.solve(single.astype(np.float64)).to_json()


def test_ignores_tracks_that_do_not_keep_to_the_surface():
    positions = tilted(frames=6, tracks=40, noise=0.05)
    positions[:, :8] += np.arange(6)[:, None, None] * [25, -40]
    result = cornerpin.solve(positions, base=0)
    good = positions[0, 8:]
    for f, h in enumerate(result.transforms):
        assert np.abs(carry(h, good) - carry(tilt(f), good)).max() < 0.5
    uses = {track.name: {run.use for run in track.runs} for track in result.tracks}
    assert uses["t00"] == {"good", "ignored"}  # good in the base frame alone
    assert uses["t30"] == {"good"}


def test_nan_in_both_coordinates_and_weight_0_are_absent(pan):
    absent = pan.copy()
    absent[3, 5] = np.nan
    weights = np.ones(pan.shape[:2])
    weights[3, 5] = 0
    junk = pan.copy()
    junk[3, 5] = 1e9
    by_nan = cornerpin.solve(absent, base=0)
    by_weight = cornerpin.solve(junk, weights, base=0)
    assert by_nan.to_json() == by_weight.to_json()
    assert [(r.first, r.last) for r in by_nan.tracks[5].runs if r.use == "absent"] == [(3, 3)]


def test_a_weight_of_2_counts_as_four_tracks():
    places = tilted(frames=2, tracks=9, noise=0.5)
    doubled = np.ones((2, 9))
    doubled[:, 2] = 2
    repeated = np.concatenate([places] + 3 * [places[:, 2:3]], axis=1)
    options = {"base": 0, "loss": "none"}
    one = cornerpin.solve(places, doubled, **options).transforms[1]
    four = cornerpin.solve(repeated, **options).transforms[1]
    equal = cornerpin.solve(places, **options).transforms[1]
    assert np.abs(carry(one, places[0]) - carry(four, places[0])).max() < 0.01
    assert np.abs(carry(one, places[0]) - carry(equal, places[0])).max() > 0.02


@pytest.mark.parametrize(
    "options", [{}, {"loss": "none", "base": 3}, {"smooth": 0.5, "fill": True}]
)
def test_gives_the_bytes_of_the_command(command, tmp_path, options):
    positions = tilted(frames=8, tracks=13, noise=0.2)
    positions[2:4, 5] = np.nan
    weights = np.random.default_rng(5).uniform(0, 1, positions.shape[:2])
    weights[weights < 0.1] = 0
    (tmp_path / "tracks.csv").write_text(csv_of(positions, weights))
    words = []
    for name, value in options.items():
        words += [f"--{name}"] + ([] if value is True else [str(value)])
    command("solve", tmp_path / "tracks.csv", "-q", "-o", tmp_path / "out.json", *words)
    written = (tmp_path / "out.json").read_text()
    solved = cornerpin.solve(positions, weights, **options).to_json()
    assert without_input(solved) == without_input(written)
    assert len(without_input(written)) == len(written.split("\n")) - 1


def test_gives_the_bytes_of_the_command_for_a_file(command, data, tmp_path):
    command("solve", data / "screen4.csv", "-q", "-o", tmp_path / "out.json")
    assert (
        cornerpin.solve(cornerpin.read(data / "screen4.csv")).to_json()
        == (tmp_path / "out.json").read_text()
    )


def test_a_hundred_tracks_keep_the_order_of_their_indices(command, tmp_path):
    positions = tilted(frames=3, tracks=101, noise=0.3)
    (tmp_path / "tracks.csv").write_text(csv_of(positions))
    command("solve", tmp_path / "tracks.csv", "-q", "-o", tmp_path / "out.json")
    result = cornerpin.solve(positions)
    assert [t.name for t in result.tracks] == [f"t{t:03}" for t in range(101)]
    assert without_input(result.to_json()) == without_input((tmp_path / "out.json").read_text())


def test_options_are_those_that_the_result_tells(pan):
    quad = [[100, 600], [500, 600], [500, 900], [100, 900]]
    result = cornerpin.solve(
        pan,
        base=2,
        reference=3,
        frames="1-6",
        keep="t*",
        drop=["t11", "t03:2-4"],
        base_only=True,
        hold=True,
        units="raw",
        loss="huber",
        seed=2**64 - 1,
        max_error=3,
        smooth=0.25,
        fill=True,
        at=[2.5, np.float32(4.25)],
        quads={"sign": quad},
        threads=1,
        advice=False,
    )
    options = json.loads(result.to_json())["options"]
    assert options == {
        "base": 2,
        "reference": 3,
        "frames": [1, 6],
        "keep": ["t*"],
        "drop": ["t11", "t03:2-4"],
        "base_only": True,
        "hold": True,
        "units": "raw",
        "loss": "huber",
        "seed": 2**64 - 1,
        "max_error": 3.0,
        "smooth": 0.25,
        "fill": True,
        "at": [2.5, 4.25],
        "quads": [{"name": "sign", "corners": quad}],
    }
    assert [frame.frame for frame in result.between] == [2.5, 4.25]
    assert result.between[0].transform.shape == (3, 3)


def test_the_number_of_threads_changes_no_bit():
    positions = tilted(noise=0.2)
    assert (
        cornerpin.solve(positions, threads=1).to_json()
        == cornerpin.solve(positions, threads=4).to_json()
    )


def test_takes_lists(pan):
    assert (cornerpin.solve(pan.tolist()).transforms == cornerpin.solve(pan).transforms).all()


def test_its_arguments_are_in_its_signature():
    parameters = inspect.signature(cornerpin.solve).parameters
    assert list(parameters)[:2] == ["tracks", "weights"]
    assert parameters["loss"].default == "tukey"
    assert not any(p.kind is p.VAR_KEYWORD for p in parameters.values())


@pytest.mark.parametrize(
    ("options", "error", "words"),
    [
        ({"loss": "l1"}, ValueError, ['loss: "l1"', "tukey"]),
        ({"loss": 3}, TypeError, ["loss: a text is wanted, not int 3"]),
        ({"units": "mm"}, ValueError, ['units: "mm"', "fit"]),
        ({"base": 2.0}, TypeError, ["base: a whole number is wanted, not float 2.0"]),
        ({"base": True}, TypeError, ["base: a whole number", "bool True"]),
        ({"base": 2**31}, ValueError, ["base: a whole number from -2147483648 to", "2147483648"]),
        ({"base": 99}, ValueError, ["99"]),
        ({"reference": "4"}, TypeError, ["reference: a whole number", "str '4'"]),
        ({"threads": 0}, ValueError, ["threads: a whole number from 1 to 1024 is wanted, not 0"]),
        ({"seed": -1}, ValueError, ["seed: a whole number from 0 to 18446744073709551615", "-1"]),
        ({"hold": 1}, TypeError, ["hold: True or False is wanted, not int 1"]),
        ({"max_error": "1"}, TypeError, ["max_error: a number is wanted, not str '1'"]),
        ({"max_error": -1.0}, ValueError, ["max_error: a number above 0 is wanted, not -1"]),
        ({"smooth": "1"}, TypeError, ["smooth: a number is wanted, not str '1'"]),
        ({"fill": "yes"}, TypeError, ["fill: True or False is wanted, not str 'yes'"]),
        ({"smooth": float("nan")}, ValueError, ["smooth: a number above 0 is wanted, not nan"]),
        ({"frames": "9-1"}, ValueError, ["frames: ", "9-1"]),
        ({"frames": 3}, TypeError, ["frames: a text is wanted, not int 3"]),
        ({"keep": "zz"}, ValueError, ["keep", '"zz"']),
        ({"drop": ["t0", 3]}, TypeError, ["drop[1]: a text is wanted, not int 3"]),
        ({"drop": 3}, TypeError, ["drop: a text or a list of texts is wanted, not int 3"]),
        ({"drop": "t*"}, ValueError, ["keep and drop leave no track"]),
        ({"at": 2.5}, TypeError, ["at: a list of numbers is wanted, not float 2.5"]),
        ({"at": ["x"]}, TypeError, ["at[0]: a number is wanted, not str 'x'"]),
        ({"at": [99.5]}, ValueError, ["at: ", "99.5"]),
        ({"quads": [[0, 0]] * 4}, TypeError, ["quads: a mapping of names to corners", "list"]),
        ({"quads": {"a": [[0, 0]]}, "base": 0}, ValueError, ["quads['a']", "4 x 2", "1 x 2"]),
        ({"quads": {"a": np.eye(4, 2)}}, ValueError, ["quads: ", "reference"]),
        ({"progress": 3}, TypeError, ["progress: a function", "int 3"]),
        ({"tuning": 1}, TypeError, ["tuning"]),
    ],
)
def test_refuses_options_by_their_names(pan, options, error, words):
    with pytest.raises(error) as refused:
        cornerpin.solve(pan, **options)
    assert type(refused.value) is error
    for word in words:
        assert word in str(refused.value)
    assert "--" not in str(refused.value)


@pytest.mark.parametrize(
    ("tracks", "weights", "error", "words"),
    [
        (np.zeros((4, 5)), None, ValueError, ["tracks: ", "frames x tracks x 2", "4 x 5"]),
        (np.zeros((4, 5, 3)), None, ValueError, ["tracks: ", "frames x tracks x 2", "4 x 5 x 3"]),
        (3.0, None, ValueError, ["tracks: ", "a single number"]),
        (np.zeros((0, 5, 2)), None, ValueError, ["tracks: ", "0 x 5 x 2"]),
        (np.zeros((5, 0, 2)), None, ValueError, ["tracks: ", "5 x 0 x 2"]),
        (np.zeros((4, 5, 2), complex), None, TypeError, ["tracks: ", "numbers", "complex128"]),
        (np.zeros((4, 5, 2), object), None, TypeError, ["tracks: ", "numbers", "object"]),
        ("tracks.csv", None, TypeError, ["tracks: an array of numbers is wanted"]),
        (None, None, TypeError, ["tracks: an array of numbers is wanted"]),
        ([[[1, 2]], [[1]]], None, ValueError, ["tracks: ", "different lengths"]),
        (np.ma.zeros((4, 5, 2)), None, TypeError, ["tracks: a masked array hides numbers"]),
        (np.ones((4, 5, 2)), np.ones((5, 4)), ValueError, ["weights: ", "4 x 5", "5 x 4"]),
        (np.ones((4, 5, 2)), -np.ones((4, 5)), ValueError, ["weights: ", "-1"]),
        (np.ones((4, 5, 2)), np.full((4, 5), np.nan), ValueError, ["weights: ", "nan"]),
        (np.full((4, 5, 2), np.nan), None, ValueError, ["tracks: no track is seen"]),
        (np.full((4, 5, 2), np.inf), None, ValueError, ["tracks: ", "inf"]),
        (np.full((4, 5, 2), 1e39), None, ValueError, ["tracks: ", "1e+39"]),
        (np.full((4, 5, 2), [1, np.nan]), None, ValueError, ["tracks: ", "1 and nan", "frame 0"]),
    ],
)
def test_refuses_arrays_by_their_names(tracks, weights, error, words):
    with pytest.raises(error) as refused:
        cornerpin.solve(tracks, weights)
    assert type(refused.value) is error
    for word in words:
        assert word in str(refused.value)


def test_weights_go_with_an_array_only(pan):
    with pytest.raises(TypeError, match="weights: None is wanted"):
        cornerpin.solve(cornerpin.Tracks.from_arrays(pan), np.ones(pan.shape[:2]))


@given(st.binary(max_size=60))
def test_no_file_of_junk_breaks_it(tmp_path_factory, junk):
    path = tmp_path_factory.mktemp("junk") / "junk"
    path.write_bytes(b"track,frame,x,y\n" + junk)
    try:
        result = cornerpin.solve(cornerpin.read(path))
    except ValueError:
        return
    assert np.isfinite(result.transforms).all()
