# SPDX-License-Identifier: BSD-3-Clause
import hashlib
import json

import cornerpin
import numpy as np
import pytest
from cornerpin import Picture, Tracks
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as nps

PLACES = st.floats(-1e6, 1e6, width=32)


def test_keeps_places_frames_and_weights(pan):
    weights = np.linspace(0.25, 2, 96).reshape(8, 12).astype(np.float32)
    tracks = Tracks.from_arrays(pan, weights, first_frame=-3)
    assert (tracks.positions == pan).all()
    assert (tracks.weights == weights).all()
    assert (tracks.first_frame, tracks.last_frame, len(tracks)) == (-3, 4, 12)


def test_takes_visibility_for_weights(pan):
    visible = np.arange(96).reshape(8, 12) % 5 > 0
    tracks = Tracks.from_arrays(pan, visible)
    assert (tracks.weights == visible).all()
    assert (np.isnan(tracks.positions[..., 0]) == ~visible).all()


@given(
    nps.arrays(
        np.float64, st.tuples(st.integers(1, 4), st.integers(1, 4), st.just(2)), elements=PLACES
    )
)
def test_arrays_come_back_as_they_were(positions):
    positions[0, 0] = 1
    absent = positions[..., 0] > 1000
    positions[absent] = np.nan
    tracks = Tracks.from_arrays(positions)
    np.testing.assert_array_equal(tracks.positions, positions)
    np.testing.assert_array_equal(tracks.weights, np.where(absent, 0.0, 1.0))
    again = Tracks.from_columns(tracks.to_columns())
    np.testing.assert_array_equal(again.positions, positions)
    assert again.names == tracks.names


def test_numbers_unnamed_tracks_with_zeros_in_front():
    names = Tracks.from_arrays(np.zeros((1, 101, 2))).names
    assert names == [f"t{t:03}" for t in range(101)]


def test_puts_names_in_order_and_places_with_them():
    tracks = Tracks.from_arrays([[[1, 2], [3, 4], [5, 6]]], names=["b", "ä", "a"])
    assert tracks.names == ["a", "b", "ä"]
    assert tracks.positions[0].tolist() == [[5, 6], [1, 2], [3, 4]]


def test_columns_of_any_order_are_tracks():
    columns = {
        "frame": [11, 10, 11],
        "track": ["b", "b", "a"],
        "x": [3, 1, 5.5],
        "y": [4, 2, 6],
        "note": ["not", "looked", "at"],
    }
    tracks = Tracks.from_columns(columns)
    assert tracks.names == ["a", "b"]
    np.testing.assert_array_equal(
        tracks.positions, [[[np.nan, np.nan], [1, 2]], [[5.5, 6], [3, 4]]]
    )
    assert tracks.to_columns()["track"].tolist() == ["b", "a", "b"]
    assert tracks.to_columns()["frame"].tolist() == [10, 11, 11]


def test_numbers_of_tracks_become_names_with_zeros_in_front():
    columns = {"frame": [0, 0], "track": [7, 123], "x": [1, 2], "y": [3, 4], "weight": [1, 0.5]}
    tracks = Tracks.from_columns(columns)
    assert tracks.names == ["t007", "t123"]
    assert tracks.weights.tolist() == [[1, 0.5]]


def test_takes_structured_arrays_and_data_frames(pan):
    columns = Tracks.from_arrays(pan).to_columns()
    kinds = [(name, values.dtype) for name, values in columns.items() if name != "weight"]
    rows = np.zeros(len(columns["frame"]), kinds)
    for name, _ in kinds:
        rows[name] = columns[name]
    assert (Tracks.from_columns(rows).positions == pan).all()

    class Frame:  # as far as pandas.DataFrame is looked at
        def __getitem__(self, name):
            return columns[name]

    assert (Tracks.from_columns(Frame()).positions == pan).all()


@pytest.mark.parametrize(
    ("change", "error", "words"),
    [
        ({"x": None}, ValueError, ['columns: "x" is missing']),
        ({"x": [1]}, ValueError, ['columns["x"]: 2 rows are wanted', "not 1"]),
        ({"x": ["a", "b"]}, TypeError, ['columns["x"]: an array of numbers']),
        ({"frame": [0.5, 1]}, TypeError, ['columns["frame"]: whole numbers are wanted', "float64"]),
        ({"frame": ["a", "b"]}, TypeError, ['columns["frame"]: whole numbers']),
        ({"frame": [0, 2**40]}, ValueError, ['columns["frame"]: ', "32 bits"]),
        ({"frame": [[0, 1]]}, ValueError, ['columns["frame"]: ', "2 dimensions"]),
        ({"track": [1.5, 2]}, TypeError, ['columns["track"]: names or whole numbers']),
        ({"track": [-1, 2]}, ValueError, ['columns["track"]: numbers from 0 on', "-1"]),
        ({"track": ["a", ""]}, ValueError, ["names", "empty"]),
        ({"track": ["a", "a"], "frame": [0, 0]}, ValueError, ['"a" is given twice in frame 0']),
        ({"weight": [1, -1]}, ValueError, ["weights", "-1"]),
        ({"x": [1, np.nan]}, ValueError, ["tracks: ", "nan"]),
        ({name: [] for name in ("frame", "track", "x", "y")}, ValueError, ["columns: a row"]),
    ],
)
def test_refuses_columns_by_their_names(change, error, words):
    columns = {"frame": [0, 1], "track": ["a", "b"], "x": [1, 2], "y": [3, 4]}
    columns.update(change)
    columns = {name: values for name, values in columns.items() if values is not None}
    with pytest.raises(error) as refused:
        Tracks.from_columns(columns)
    for word in words:
        assert word in str(refused.value)


@pytest.mark.parametrize(
    ("options", "error", "words"),
    [
        ({"names": ["a"]}, ValueError, ["names: 2 are wanted", "not 1"]),
        ({"names": "ab"}, TypeError, ["names: a list of texts is wanted, not str 'ab'"]),
        ({"names": ["a", "a"]}, ValueError, ['names: "a" is there twice']),
        ({"names": ["a", ""]}, ValueError, ["names: that of track 1 is empty"]),
        ({"names": ["a", "b\0"]}, ValueError, ["names[1]: a text without a zero byte"]),
        ({"names": ["a", "\ud800"]}, ValueError, ["names[1]: a text that UTF-8 can hold"]),
        ({"first_frame": 0.0}, TypeError, ["first_frame: a whole number is wanted, not float"]),
        ({"first_frame": 2 * 10**9}, ValueError, ["frames: ", "1000000000"]),
        ({"picture": (10, 10)}, TypeError, ["picture: a cornerpin.Picture is wanted, not tuple"]),
        ({"picture": Picture(width=0)}, ValueError, ["width: ", "not 0"]),
        ({"picture": Picture(width=1.0)}, TypeError, ["picture.width: a whole number"]),
        ({"picture": Picture(y="left")}, ValueError, ['y: "left" is none of up, down']),
        ({"picture": Picture(pixel_centre=1)}, ValueError, ["pixel_centre: 0 or 0.5", "1"]),
    ],
)
def test_refuses_what_is_said_of_arrays(options, error, words):
    with pytest.raises(error) as refused:
        Tracks.from_arrays(np.zeros((1, 2, 2)), **options)
    for word in words:
        assert word in str(refused.value)


def test_keeps_the_picture(pan):
    picture = Picture(width=1920, height=1080, y="down", pixel_centre=0.5, first_frame=1001)
    assert Tracks.from_arrays(pan, picture=picture).picture == picture
    assert Tracks.from_arrays(pan).picture == Picture()


def test_reads_a_file(data):
    tracks = cornerpin.read(data / "planks.csv")
    assert (len(tracks), tracks.first_frame, tracks.last_frame) == (142, 0, 191)
    assert tracks.positions[90, tracks.names.index("n000")].tolist() == [713.5, 357.5]


def test_takes_the_digest_of_a_file_unless_told_not_to(data):
    path = data / "screen4.csv"
    digest = hashlib.sha256(path.read_bytes()).hexdigest()
    for options in ({}, {"digest": True}, {"digest": False}):
        result = cornerpin.solve(cornerpin.read(path, **options))
        told = digest if options.get("digest", True) else None
        assert json.loads(result.to_json())["input"]["sha256"] == told
        assert result.input == ("screen4.csv", told or "", "csv", 397)


def test_tells_no_file_of_arrays(pan):
    assert cornerpin.solve(pan).input is None


def test_writes_files_that_it_reads(pan, tmp_path):
    picture = Picture(width=1920, height=1080, y="down", pixel_centre=0.5, first_frame=0)
    tracks = Tracks.from_arrays(pan, picture=picture)
    assert "largest difference" in tracks.write(tmp_path / "tracks.csv").read_back
    assert (cornerpin.read(tmp_path / "tracks.csv").positions == pan).all()
    # Node scripts have y growing up, and that is how they are read.
    tracks.write(tmp_path / "tracks.txt", "nk")
    read = cornerpin.read(tmp_path / "tracks.txt")
    np.testing.assert_allclose(read.positions, [0, 1080] + pan * [1, -1], atol=1e-3)


def test_tells_file_and_line_of_what_it_refuses(tmp_path):
    path = tmp_path / "tracks.csv"
    path.write_text("track,frame,x,y\na,0,1,2\na,1,nonsense,2\n")
    with pytest.raises(cornerpin.InputError) as refused:
        cornerpin.read(path)
    assert isinstance(refused.value, ValueError)
    assert refused.value.file == str(path)
    assert refused.value.line == 3
    assert str(refused.value).startswith(f"{path}:3: ")


@pytest.mark.parametrize(
    ("arguments", "error", "words"),
    [
        ({"path": 3}, TypeError, ["path: the name of a file is wanted, not int 3"]),
        ({"path": "a\0b"}, ValueError, ["path: ", "zero byte"]),
        ({"path": "no/such/file"}, cornerpin.InputError, ["no/such/file: there is no such file"]),
        ({"format": "xyz"}, ValueError, ['format: "xyz" is none of']),
        ({"format": 1}, TypeError, ["format: a text is wanted, not int 1"]),
        ({"frames": "x"}, ValueError, ["frames: "]),
        ({"digest": 1}, TypeError, ["digest: "]),
    ],
)
def test_refuses_to_read(data, arguments, error, words):
    with pytest.raises(error) as refused:
        cornerpin.read(**{"path": data / "screen4.csv", **arguments})
    for word in words:
        assert word in str(refused.value)


def test_refuses_to_write_what_the_format_lacks(pan, tmp_path):
    tracks = Tracks.from_arrays(pan)
    with pytest.raises(ValueError, match="format: the name .* tells no format"):
        tracks.write(tmp_path / "tracks")
    with pytest.raises(ValueError, match="y"):
        tracks.write(tmp_path / "tracks.nk")
    assert list(tmp_path.iterdir()) == []


def test_says_what_it_is(pan):
    assert repr(Tracks.from_arrays(pan)) == "<cornerpin.Tracks: 12 in frames 0 to 7>"
    with pytest.raises(TypeError, match="from_arrays"):
        Tracks()
