# SPDX-License-Identifier: BSD-3-Clause
"""Made shots, and how to map points."""
import numpy as np


def carry(h, points):
    """Points (..., 2) through the homography h, in plain arithmetic."""
    x, y = np.asarray(points, dtype=float)[..., 0], np.asarray(points, dtype=float)[..., 1]
    w = h[2, 0] * x + h[2, 1] * y + h[2, 2]
    u = (h[0, 0] * x + h[0, 1] * y + h[0, 2]) / w
    v = (h[1, 0] * x + h[1, 1] * y + h[1, 2]) / w
    return np.stack([u, v], axis=-1)


def tilt(amount):
    """A homography of a picture of about 1000 pixels that turns, moves and tilts it."""
    c, s = np.cos(0.1 * amount), np.sin(0.1 * amount)
    h = np.array([[c, -s, 20 * amount], [s, c, -9 * amount], [2e-5 * amount, -1e-5 * amount, 1]])
    return h / h[2, 2]


def tilted(frames=10, tracks=40, noise=0.0, seed=1, step=1.0):
    """Positions (frames, tracks, 2) of a shot whose transforms are tilt(0), tilt(step) ..."""
    random = np.random.default_rng(seed)
    places = random.uniform(0, 1000, (tracks, 2))
    positions = np.stack([carry(tilt(step * f), places) for f in range(frames)])
    return positions + noise * random.standard_normal(positions.shape)


def without_input(json_text):
    """The lines of a result but for that which tells the file."""
    lines = json_text.split("\n")
    return [line for line in lines if not line.startswith('"input":')]


def csv_of(positions, weights=None, names=None):
    """A track file of the arrays, in plain loops, numbers to the last bit."""
    frames, tracks = positions.shape[:2]
    digits = len(str(tracks - 1))
    rows = ["track,frame,x,y,weight"]
    for t in range(tracks):
        name = names[t] if names else f"t{t:0{digits}}"
        for f in range(frames):
            x, y = map(float, positions[f, t])
            weight = 1.0 if weights is None else float(weights[f, t])
            if x == x and weight > 0:
                rows.append(f"{name},{f},{x!r},{y!r},{weight!r}")
    return "\n".join(rows) + "\n"


def slow(times):
    """The same 500 frames again and again, with a fifth of the tracks where chance puts them."""
    positions = tilted(500, 200, 0.5, step=0.01)
    positions[:, :40] += 60 * np.random.default_rng(3).standard_normal((500, 40, 2))
    return np.tile(positions, (times, 1, 1))
