# SPDX-License-Identifier: BSD-3-Clause
"""What the parts have in common that run `cornerpin batch`."""

import functools
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

# Debian's Python, which has dask.distributed, whatever comes first in the path.
os.environ["PATH"] = "/usr/bin:" + os.environ["PATH"]

TOP = pathlib.Path(__file__).resolve().parents[2]


@functools.lru_cache(maxsize=None)
def program():
    """The command: that of the release preset, which is built, or CORNERPIN_PROGRAM."""
    if "CORNERPIN_PROGRAM" not in os.environ:
        subprocess.run(
            ["script/build", "release", "--target", "cornerpin_program"],
            cwd=TOP, check=True, stdout=subprocess.DEVNULL,
        )
    return os.environ.get("CORNERPIN_PROGRAM", str(TOP / "build/release/tools/cornerpin/cornerpin"))


def new_folder():
    """A folder under build/soak, which is removed where it is used in `with`."""
    (TOP / "build/soak").mkdir(parents=True, exist_ok=True)
    return tempfile.TemporaryDirectory(dir=TOP / "build/soak")


def small_shot(step):
    """Tracks of a shot that takes no time to solve; another step gives other bytes."""
    rows = ["track,frame,x,y"]
    for track in range(6):
        for frame in range(3):
            x, y = track * 37 % 100 + frame * 0.001 * step, track * track * 13 % 70
            rows.append(f"t{track},{frame},{x:.3f},{y}")
    return "\n".join(rows) + "\n"


def make_shots(folder, count, others=None):
    """A manifest in a new folder, with small shots and others by their names, and its path."""
    folder = pathlib.Path(folder)
    folder.mkdir()
    shots = {f"small{i:05d}": small_shot(i) for i in range(count)}
    shots.update(others or {})
    for name, text in shots.items():
        (folder / f"{name}.csv").write_text(text)
    manifest = folder / "show.json"
    inputs = [{"input": f"{name}.csv"} for name in shots]
    manifest.write_text(json.dumps({"cornerpin_batch": 1, "shots": inputs}))
    return manifest


def batch(*words, code=0):
    """Runs `cornerpin batch` and requires its exit code. Returns what it printed, and its errors."""
    run = subprocess.run([program(), "batch", *map(str, words)], capture_output=True, text=True)
    require(run.returncode == code, f"exit code {run.returncode}, not {code}: {run.stderr}")
    return run.stdout, run.stderr


def records(folder):
    """The records in a folder of results: their paths by the shots' names."""
    ending = ".task.json"
    return {p.name[: -len(ending)]: p for p in pathlib.Path(folder).glob("*" + ending)}


def read(path):
    return json.loads(pathlib.Path(path).read_text())


def times(folder):
    """When each record was written."""
    return {name: path.stat().st_mtime_ns for name, path in records(folder).items()}


def files(folder):
    """The bytes of all files, by their names. Nothing hidden may be left."""
    return {p.name: p.read_bytes() for p in pathlib.Path(folder).iterdir()}


def processes(*parts):
    """Processes of which the words of the command have all these parts: (id, words)."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                words = (entry / "cmdline").read_bytes().decode(errors="replace").split("\0")
            except OSError:
                continue
            if all(any(part in word for word in words) for part in parts):
                found.append((int(entry.name), words))
    return found


def wait_for(what, holds, seconds=120):
    """Waits until something holds, and returns what it gave."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        given = holds()
        if given:
            return given
        time.sleep(0.005)
    return require(False, f"{what}: not within {seconds} s")


def require(holds, message):
    if not holds:
        sys.exit(f"{pathlib.Path(sys.argv[0]).name}: {message}")
