# SPDX-License-Identifier: BSD-3-Clause
import html.parser
import json
import re

import cornerpin
import numpy as np
import pytest
from conftest import ROOT
from hypothesis import given
from hypothesis import strategies as st
from shots import carry, tilted


@pytest.fixture(scope="module")
def planks():
    return cornerpin.solve(cornerpin.read(ROOT / "data/planks.csv"))


@pytest.fixture
def small():
    return cornerpin.solve(tilted(noise=0.2), base=4)


def numbers(value):
    """null as NaN."""
    return np.array(value, dtype=float)


def test_has_the_frames_of_its_json(planks):
    frames = json.loads(planks.to_json())["frames"]
    np.testing.assert_array_equal(planks.frames, [f["frame"] for f in frames])
    np.testing.assert_array_equal(planks.transforms, [f["h"] for f in frames])
    np.testing.assert_array_equal(planks.verdict, [f["verdict"] for f in frames])
    np.testing.assert_array_equal(planks.status, [f["status"] for f in frames])
    np.testing.assert_array_equal(
        planks.expected_error, numbers([f["expected_error"] for f in frames])
    )
    assert planks.doubts == [[d["text"] for d in f["doubts"]] for f in frames]
    assert [f.tracks for f in planks.details] == [f["tracks"] for f in frames]
    assert [f.rms for f in planks.details] == [f["rms"] for f in frames]
    assert (planks.verdict == "doubtful").any() and (planks.verdict == "good").any()


def test_has_the_quads_of_its_json(planks):
    result = json.loads(planks.to_json())
    assert list(planks.quads) == ["tracks"]
    quad = planks.quads["tracks"]
    assert quad.surface.tolist() == result["quads"][0]["corners"]
    told = [f["quads"]["tracks"] for f in result["frames"]]
    np.testing.assert_array_equal(planks.corners, numbers([t["corners"] for t in told]))
    np.testing.assert_array_equal(planks.covariance, numbers([t["covariance"] for t in told]))
    np.testing.assert_array_equal(planks.deviation, numbers([t["deviation"] for t in told]))
    assert planks.covariance.shape == (192, 4, 2, 2)
    trace = planks.covariance[..., 0, 0] + planks.covariance[..., 1, 1]
    np.testing.assert_allclose(planks.deviation, np.sqrt(trace), rtol=1e-12)


def test_has_the_tracks_of_its_json(planks):
    result = json.loads(planks.to_json())
    assert [t.name for t in planks.tracks] == [t["name"] for t in result["tracks"]]
    for track, told in zip(planks.tracks, result["tracks"]):
        for use in ("good", "ignored", "absent"):
            runs = [[run.first, run.last] for run in track.runs if run.use == use]
            assert runs == told[use]
        if told["place"] is not None:
            assert [track.x, track.y] == told["place"]
            assert track.covariance.tolist() == told["covariance"]
    assert [t.track for t in planks.worst_tracks] == [t["track"] for t in result["worst_tracks"]]
    assert [tuple(a) for a in planks.advice] == [
        (a["first"], a["last"], a["text"]) for a in result["advice"]
    ]
    assert [(t.name, t.why) for t in planks.left_out_tracks] == [
        (t["name"], t["why"]) for t in result["left_out_tracks"]
    ]


def test_covariance_is_that_of_repeated_noise():
    clean = tilted(frames=2, tracks=30)
    surface = np.array([[100.0, 100], [900, 100], [900, 900], [100, 900]])
    places, figures = [], []
    for seed in range(60):
        noisy = clean.copy()
        noisy[1] += 0.4 * np.random.default_rng(seed).standard_normal((30, 2))
        result = cornerpin.solve(noisy, base=0, quads={"square": surface}, advice=False)
        places.append(carry(result.transforms[1], surface))
        figures.append(result.covariance[1])
    expected = np.mean(figures, axis=0)
    for corner in range(4):
        seen = np.cov(np.array(places)[:, corner].T)
        assert 0.5 < np.trace(seen) / np.trace(expected[corner]) < 2


def test_reason_says_why_a_frame_is_reduced():
    positions = tilted(frames=5, tracks=20, noise=0.1)
    positions[3, 2:] = np.nan
    result = cornerpin.solve(positions, base=0)
    assert result.status.tolist() == ["base", "solved", "solved", "reduced", "solved"]
    assert [bool(reason) for reason in result.reason] == [False, False, False, True, False]
    assert result.verdict[3] == "doubtful"
    told = json.loads(result.to_json())["frames"][3]["reason"]
    assert result.reason[3] == told


def test_rebase_moves_the_reference_frame(small):
    moved = small.rebase(7)
    places = tilted()[4]
    assert moved.reference_frame == 7 and small.reference_frame == 4
    for f in range(10):
        by_way = carry(moved.transforms[f], carry(small.transforms[7], places))
        assert np.abs(by_way - carry(small.transforms[f], places)).max() < 1e-9
    np.testing.assert_array_equal(moved.transforms[7], np.eye(3))


@given(st.integers(0, 9), st.integers(0, 9))
def test_rebase_to_and_fro_gives_the_transforms_again(there, back):
    result = cornerpin.solve(tilted(), base=back)
    again = result.rebase(there).rebase(back)
    np.testing.assert_allclose(again.transforms, result.transforms, rtol=1e-9, atol=1e-9)


def test_rebase_gives_the_bytes_of_the_command(small, command, tmp_path):
    small.write(tmp_path / "in.json")
    command("rebase", tmp_path / "in.json", "--reference", 2, "-o", tmp_path / "out.json")
    assert small.rebase(2).to_json() == (tmp_path / "out.json").read_text()


@pytest.mark.parametrize(
    ("frame", "error", "text"),
    [
        (99, ValueError, "99"),
        (2.0, TypeError, "frame: a whole number is wanted, not float 2.0"),
        (None, TypeError, "frame: a whole number is wanted, not NoneType None"),
    ],
)
def test_refuses_to_rebase(small, frame, error, text):
    with pytest.raises(error, match=re.escape(text)):
        small.rebase(frame)


def test_writes_and_reads_itself(small, tmp_path):
    written = small.write(tmp_path / "shot.json")
    assert written.read_back == "read back: largest difference 0 px"
    again = cornerpin.read_result(tmp_path / "shot.json")
    assert again.to_json() == small.to_json() == (tmp_path / "shot.json").read_text()
    np.testing.assert_array_equal(again.covariance, small.covariance)
    assert small.write(tmp_path / "shot.json", read_back=False).read_back == ""
    small.write(tmp_path / "shot.csv")
    assert (tmp_path / "shot.csv").read_text() == small.to_csv()


@pytest.mark.parametrize(
    ("name", "options"),
    [
        ("pin.nk", {}),
        ("pin.nk", {"nk": "both"}),
        ("still.usda", {"as_": "stabilise"}),
        ("matrix.nk", {"as_": "matrix"}),
        ("pin.txt", {"format": "keyframes", "fps": 24}),
        ("clean.csv", {"as_": "tracks"}),
    ],
)
def test_writes_the_files_of_the_command(data, command, tmp_path, name, options):
    picture = cornerpin.Picture(width=426, height=320, y="down", pixel_centre=0.5, first_frame=0)
    tracks = cornerpin.read(data / "highway.csv", picture=picture)
    result = cornerpin.solve(tracks)
    words = []
    for option, value in options.items():
        words += [{"as_": "--as", "format": "--to"}.get(option, f"--{option}"), value]
    size = ["--size", "426x320", "--y-down", "--pixel-center", "0.5", "--first-frame", "0"]
    result.write(tmp_path / f"module-{name}", **options)
    path = tmp_path / f"command-{name}"
    command("solve", data / "highway.csv", "-q", *size, *words, "-o", path)
    assert (tmp_path / f"module-{name}").read_bytes() == path.read_bytes()


def test_with_tracks_finds_the_file_again(data, tmp_path):
    result = cornerpin.solve(cornerpin.read(data / "screen4.csv"))
    result.write(tmp_path / "shot.json")
    read = cornerpin.read_result(tmp_path / "shot.json")
    with pytest.raises(ValueError, match="as_: a result that was read from a file holds no tracks"):
        read.write(tmp_path / "tracks.csv", as_="tracks")
    read.with_tracks(data / "screen4.csv").write(tmp_path / "tracks.csv", as_="tracks")
    with pytest.raises(cornerpin.InputError):
        read.with_tracks(data / "planks.csv")


def test_report_gives_the_page_of_the_command(data, command, tmp_path):
    pictures = data / "planks_pictures/frame_%04d.jpg"
    result = cornerpin.solve(cornerpin.read(data / "planks.csv"))
    assert result.report(tmp_path / "module.html", pictures=pictures, picture_scale=0.5) == []
    command(
        *("solve", data / "planks.csv", "-q", "--report", tmp_path / "command.html"),
        *("--pictures", pictures, "--picture-scale", 0.5),
    )
    page = (tmp_path / "module.html").read_bytes()
    assert page == (tmp_path / "command.html").read_bytes()
    result.report(tmp_path / "plain.html", title="A <b>title</b>")
    assert "A &lt;b>title" in (tmp_path / "plain.html").read_text().replace("&gt;", ">")


def test_plot_writes_a_picture(small, tmp_path):
    small.plot(tmp_path / "plot.svg")
    assert (tmp_path / "plot.svg").read_text().startswith("<?xml")
    with pytest.raises(ValueError, match="path: "):
        small.plot(tmp_path / "plot.gif")


def test_explanation_wants_the_influences(small, tmp_path):
    with pytest.raises(ValueError, match="influences: "):
        small.write_explanation(tmp_path / "why.csv")
    cornerpin.solve(tilted(), influences=True).write_explanation(tmp_path / "why.csv")
    assert (tmp_path / "why.csv").read_text().startswith("track,frame,residual,weight,leverage")


@pytest.mark.parametrize(
    ("method", "arguments", "error", "words"),
    [
        ("write", {"path": 3}, TypeError, ["path: the name of a file", "int 3"]),
        ("write", {"path": "x.nk", "as_": "film"}, ValueError, ['as_: "film" is none of pin']),
        ("write", {"path": "x.json", "as_": 1}, TypeError, ["as_: a text is wanted, not int 1"]),
        ("write", {"path": "x.nk", "nk": "x"}, ValueError, ['nk: "x" is none of points']),
        ("write", {"path": "x", "format": "y"}, ValueError, ['format: "y" is none of']),
        ("write", {"path": "x"}, ValueError, ["format: the name", "tells no format"]),
        ("write", {"path": "x.json", "fps": 0}, ValueError, ["fps: a number above 0", "not 0"]),
        ("write", {"path": "x.json", "par": "1"}, TypeError, ["par: a number is wanted"]),
        ("report", {"path": "x.html", "pictures": "no/x"}, ValueError, ["pictures: ", "no/x"]),
        ("report", {"path": "x.html", "link": True}, ValueError, ["link: no pictures"]),
        ("report", {"path": "x.html", "link": 1}, TypeError, ["link: True or False"]),
        ("report", {"path": "x.html", "picture_scale": 2}, ValueError, ["picture_scale: "]),
        ("report", {"path": "no/folder/x.html"}, FileNotFoundError, ["no/folder/x.html"]),
    ],
)
def test_refuses_by_the_names_of_arguments(
    small, monkeypatch, tmp_path, method, arguments, error, words
):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(error) as refused:
        getattr(small, method)(**arguments)
    for word in words:
        assert word in str(refused.value)
    assert "--" not in str(refused.value)
    assert list(tmp_path.iterdir()) == []


def test_refuses_what_is_no_result(data, tmp_path):
    with pytest.raises(cornerpin.InputError, match="planks.csv"):
        cornerpin.read_result(data / "planks.csv")
    (tmp_path / "cut.json").write_text('{"cornerpin": 2,')
    with pytest.raises(cornerpin.InputError) as refused:
        cornerpin.read_result(tmp_path / "cut.json")
    assert refused.value.file == str(tmp_path / "cut.json")
    with pytest.raises(TypeError, match="read_result"):
        cornerpin.Result()


def test_ends_with_the_words_of_the_command(data, command):
    said = command("solve", data / "planks.csv")
    result = cornerpin.solve(cornerpin.read(data / "planks.csv"))
    assert result.closing_sentence in said.stdout.split("\n")
    for stretch in result.closing_stretches:
        assert f"{stretch.first}-{stretch.last}" in said.stdout
    assert repr(result) == f"<cornerpin.Result: {result.closing_sentence}>"
    assert len(result) == 192
    assert result.summary.split("\n")[0] == said.stdout.split("\n")[0]


class Elements(html.parser.HTMLParser):
    """What a piece of a page is made of; fails where it does not close what it opens."""

    def __init__(self, text):
        super().__init__()
        self.open, self.names, self.links = [], set(), []
        self.feed(text)
        assert self.open == []

    def handle_starttag(self, tag, attrs):
        self.open.append(tag)
        self.names.add(tag)
        self.links += [v for k, v in attrs if k in ("href", "src", "xlink:href") or "on" == k[:2]]

    def handle_endtag(self, tag):
        assert self.open.pop() == tag


def test_notebooks_show_the_verdict_and_a_plot(planks):
    text = planks._repr_html_()
    shown = Elements(text)
    assert planks.closing_sentence in text
    assert {"div", "table", "svg"} <= shown.names
    assert "script" not in shown.names
    assert [link for link in shown.links if not link.startswith("#")] == []
    assert "url(" not in text


def test_notebooks_show_names_as_text():
    positions = tilted(frames=12, tracks=12, noise=0.02)
    positions[6:, 0] += 30
    names = ["<script>alert(1)</script>&'\""] + [f"n{t:02}" for t in range(11)]
    result = cornerpin.solve(
        cornerpin.Tracks.from_arrays(positions, names=names), base=0, loss="none"
    )
    assert any("<script>" in stretch.text for stretch in result.closing_stretches)
    assert "script" not in Elements(result._repr_html_()).names
    assert "<script" not in result._repr_html_()


def test_arrays_own_their_memory_and_stay_the_same():
    result = cornerpin.solve(tilted())
    transforms, corners = result.transforms, result.corners
    assert transforms is result.transforms and transforms.flags.owndata
    assert corners.flags.owndata and result.frames.flags.owndata
    kept = transforms.copy()
    with pytest.raises(ValueError, match="read-only"):
        transforms[0] = 0
    del result
    for _ in range(20):
        cornerpin.solve(tilted(seed=2))
    np.testing.assert_array_equal(transforms, kept)
