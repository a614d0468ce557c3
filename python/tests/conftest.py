# SPDX-License-Identifier: BSD-3-Clause
import os
import subprocess
from pathlib import Path

import numpy as np
import pytest
from hypothesis import settings

ROOT = Path(__file__).resolve().parents[2]

settings.register_profile("suite", deadline=None, max_examples=40, derandomize=True, database=None)
settings.load_profile("suite")


@pytest.fixture
def data():
    """The folder of real shots."""
    return ROOT / "data"


@pytest.fixture
def command():
    """Runs the command cornerpin, which CORNERPIN_COMMAND names, with arguments."""
    built = ROOT / "build/release/tools/cornerpin/cornerpin"
    program = os.environ.get("CORNERPIN_COMMAND", str(built))

    def run(*arguments):
        done = subprocess.run(
            [program, *map(str, arguments)], capture_output=True, text=True, check=False
        )
        assert done.returncode in (0, 4), done.stderr
        return done

    return run


@pytest.fixture
def pan():
    """A shot that moves 3 to the right and 2 up from frame to frame: (8, 12, 2), exact numbers."""
    t = np.arange(12)
    places = np.stack([100 + 8 * (t * 37 % 101), 600 + 8 * (t * t * 13 % 59)], axis=1)
    return np.stack([places + [3 * f, -2 * f] for f in range(8)]).astype(float)
