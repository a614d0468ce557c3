# SPDX-License-Identifier: BSD-3-Clause
"""compare.py [ROUNDS]: a shot in Python beside loops over OpenCV's findHomography, in turns.

The shot has 1,000 frames of a smooth camera move and 100 tracks with noise of 0.3 px; in the second of
the two a fifth of the tracks slides off the surface. Prints milliseconds for the whole shot, processor time
too, as a solve may use two threads, and how far the corners of the surface are off: the root mean square over
all frames, and the worst. Two of the solvers do not look for bad tracks: findHomography by itself, and loss="none".
"""
import statistics
import sys
import time

import cornerpin
import cv2
import numpy as np

FRAMES, TRACKS = 1000, 100
SURFACE = np.array([[0.0, 0], [1000, 0], [1000, 600], [0, 600]])


def carry(h, points):
    image = np.concatenate([points, np.ones((len(points), 1))], axis=1) @ h.T
    return image[:, :2] / image[:, 2:]


def truth():
    transforms = []
    for f in range(FRAMES):
        t = f / FRAMES
        c, s = np.cos(0.4 * t), np.sin(0.4 * t)
        h = np.array([[c, -s, 300 * t], [s, c, -80 * np.sin(6 * t)], [2e-4 * t, -1e-4 * t, 1]])
        transforms.append(h)
    return transforms


def shot(transforms, sliding):
    random = np.random.default_rng(7)
    places = random.uniform(0, 1, (TRACKS, 2)) * [1000, 600]
    positions = np.stack([carry(h, places) for h in transforms])
    positions[1:] += 0.3 * random.standard_normal(positions[1:].shape)
    frames = np.arange(FRAMES)[:, None, None]
    positions[:, :sliding] += frames * random.uniform(-0.5, 0.5, (sliding, 2))
    return positions


def opencv(method):
    def solve(positions):
        first = positions[0]
        loop = [cv2.findHomography(first, frame, method, 3.0)[0] for frame in positions[1:]]
        return np.stack([np.eye(3), *loop])

    return solve


def module(**options):
    return lambda positions: cornerpin.solve(positions, base=0, **options).transforms


SOLVERS = {
    "cornerpin.solve": module(),
    "cornerpin.solve, advice=False": module(advice=False),
    'cornerpin.solve, loss="none"': module(loss="none", advice=False),
    "findHomography": opencv(0),
    "findHomography, RANSAC": opencv(cv2.RANSAC),
    "findHomography, USAC_MAGSAC": opencv(cv2.USAC_MAGSAC),
}


def measured(solve, positions):
    wall, cpu = time.perf_counter(), time.process_time()
    transforms = solve(positions)
    return time.perf_counter() - wall, time.process_time() - cpu, transforms


def off(transforms, known):
    errors = [
        np.hypot(*(carry(h, SURFACE) - carry(k, SURFACE)).T) for h, k in zip(transforms, known)
    ]
    return np.sqrt(np.mean(np.square(errors))), np.max(errors)


def compare(title, positions, known, rounds):
    times = {name: [] for name in SOLVERS}
    errors = {}
    for _ in range(rounds):
        for name, solve in SOLVERS.items():
            *took, transforms = measured(solve, positions)
            times[name].append(took)
            errors[name] = off(transforms, known)
    print(f"\n{title}, {FRAMES:,} frames x {TRACKS} tracks, median of {rounds}:\n")
    print("| solver | ms | processor ms | RMS px | worst px |")
    print("|---|---|---|---|---|")
    for name, took in times.items():
        wall, cpu = (1000 * statistics.median(column) for column in zip(*took))
        rms, worst = errors[name]
        print(f"| {name} | {wall:.0f} | {cpu:.0f} | {rms:.3g} | {worst:.3g} |")


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    cv2.setNumThreads(1)
    known = truth()
    print(f"NumPy {np.__version__}, OpenCV {cv2.__version__}")
    compare("All tracks on the surface", shot(known, 0), known, rounds)
    compare("20 tracks slide off", shot(known, TRACKS // 5), known, rounds)


main()
