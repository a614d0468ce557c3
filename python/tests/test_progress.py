# SPDX-License-Identifier: BSD-3-Clause
import os
import signal
import subprocess
import sys
import threading
import time

import cornerpin
import pytest
from shots import slow, tilted


@pytest.fixture(scope="module")
def long_shot():
    """A shot that takes about half a second."""
    return cornerpin.Tracks.from_arrays(slow(8))


def test_tells_all_phases_in_the_calling_thread(data, tmp_path):
    told = []

    def progress(phase, done, total):
        told.append((phase, done, total, threading.current_thread()))

    tracks = cornerpin.read(data / "planks.csv", progress=progress)
    result = cornerpin.solve(tracks, smooth=0.5, fill=True, threads=4, progress=progress)
    result.write(tmp_path / "shot.json", progress=progress)
    phases = list(dict.fromkeys(phase for phase, *_ in told))
    assert phases == [
        "reading",
        "solving",
        "choosing the base frame",
        "handing over",
        "figures of trust",
        "smoothing",
        "filling",
        "looking for what helps",
        "writing",
    ]
    assert {thread for *_, thread in told} == {threading.main_thread()}
    assert all(done <= total or total == 0 for _, done, total, _ in told)


def test_a_progress_changes_no_bit(data):
    tracks = cornerpin.read(data / "screen4.csv")
    told = cornerpin.solve(tracks, progress=lambda *_: None)
    assert told.to_json() == cornerpin.solve(tracks).to_json()


@pytest.mark.parametrize("threads", [1, 3])
def test_false_cancels_in_every_phase(data, threads):
    tracks = cornerpin.read(data / "planks.csv")
    seen = set()
    cornerpin.solve(tracks, progress=lambda phase, *_: seen.add(phase))
    for ending in seen:
        with pytest.raises(cornerpin.Cancelled, match="cancelled"):
            cornerpin.solve(tracks, threads=threads, progress=lambda phase, *_: phase != ending)


def test_only_false_cancels(pan):
    for answer in (None, True, 0, "", []):
        cornerpin.solve(pan, progress=lambda *_, a=answer: a)


def test_what_it_raises_comes_out_as_it_is(pan):
    class Stop(BaseException):
        pass

    stop = Stop("now")

    def progress(phase, done, total):
        if phase == "solving":
            raise stop

    with pytest.raises(Stop) as raised:
        cornerpin.solve(pan, progress=progress)
    assert raised.value is stop
    with pytest.raises(TypeError, match="positional argument"):
        cornerpin.solve(pan, progress=lambda: None)


def test_a_cancelled_write_leaves_nothing_behind(data, tmp_path):
    result = cornerpin.solve(cornerpin.read(data / "screen4.csv"))
    with pytest.raises(cornerpin.Cancelled):
        result.write(tmp_path / "shot.json", progress=lambda *_: False)
    assert list(tmp_path.iterdir()) == []


def test_the_lock_is_free_while_solving(long_shot):
    counted = 0
    done = threading.Event()

    def count():
        nonlocal counted
        while not done.is_set():
            counted += 1
            time.sleep(0.001)

    thread = threading.Thread(target=count)
    thread.start()
    start = time.monotonic()
    cornerpin.solve(long_shot)
    took = time.monotonic() - start
    done.set()
    thread.join()
    # With the lock held the whole time it would have counted once or twice.
    assert took > 0.1
    assert counted > 20 * took


def test_shots_are_solved_in_different_threads():
    shots = [tilted(seed=seed, noise=0.2) for seed in range(6)]
    alone = [cornerpin.solve(shot).to_json() for shot in shots]
    together = [None] * len(shots)

    def work(i):
        together[i] = cornerpin.solve(shots[i], progress=lambda *_: None).to_json()

    threads = [threading.Thread(target=work, args=(i,)) for i in range(len(shots))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert together == alone


# Tells what part of the time of a whole solve went by until it was interrupted.
PROGRAM = """
import sys, time, cornerpin
sys.path.insert(0, sys.argv[1])
from shots import slow
tracks = cornerpin.Tracks.from_arrays(slow(16))
start = time.process_time()
print("solving", flush=True)
try:
    cornerpin.solve(tracks, {options})
except KeyboardInterrupt:
    interrupted = time.process_time() - start
    start = time.process_time()
    cornerpin.solve(tracks, {options})
    print(interrupted / (time.process_time() - start))
"""


@pytest.mark.parametrize("options", ["threads=1", "threads=4, progress=lambda *told: None"])
def test_ctrl_c_interrupts_a_solve(options):
    with subprocess.Popen(
        [sys.executable, "-c", PROGRAM.format(options=options), os.path.dirname(__file__)],
        stdout=subprocess.PIPE,
        text=True,
    ) as child:
        assert child.stdout.readline() == "solving\n"
        time.sleep(0.1)
        child.send_signal(signal.SIGINT)
        part = float(child.stdout.read())
    assert child.returncode == 0
    assert part < 0.5


def test_handlers_of_signals_run_while_solving(long_shot):
    seen = []
    before = signal.signal(signal.SIGALRM, lambda *_: seen.append(time.monotonic()))
    try:
        start = time.monotonic()
        signal.setitimer(signal.ITIMER_REAL, 0.02)
        cornerpin.solve(long_shot)
        ended = time.monotonic()
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert len(seen) == 1
    assert seen[0] - start < 0.5 * (ended - start)
