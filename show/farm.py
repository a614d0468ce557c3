# SPDX-License-Identifier: BSD-3-Clause
"""python3 -c THIS SCHEDULER PIECES PROGRESS

Has the workers of a scheduler of dask.distributed run commands. PIECES is a file with a line for each:
its key, how many shots it has, and the command as a shell takes it. PROGRESS is a file that holds how
many shots are done. Ends in 1 and says why when the scheduler cannot be used, or no more; says which
commands failed on the workers, and ends in 0.
"""

import logging
import os
import shlex
import sys

CONNECTED = 10  # seconds that it may take
FIRST_WORKER = 60  # seconds until one has come
RETRIES = 2  # of a command that fails; of workers that end with it the scheduler counts by itself
TOLD = 5  # failures that differ, at most


# What workers are sent. The command ends with its worker, so that nobody does the same beside the
# worker that is given it next.
def run(words):
    import os
    import shutil
    import subprocess
    import tempfile

    ends_with_parent = ["setpriv", "--pdeathsig", "KILL"] if shutil.which("setpriv") else []
    with tempfile.TemporaryFile() as errors:
        null = subprocess.DEVNULL
        child = subprocess.Popen([*ends_with_parent, *words], stdin=null, stdout=null, stderr=errors)
        status = os.waitpid(child.pid, os.WUNTRACED)[1]
        if os.WIFSTOPPED(status):
            child.kill()
            child.wait()
            raise RuntimeError(f"stopped by signal {os.WSTOPSIG(status)}")
        child.returncode = os.waitstatus_to_exitcode(status)
        errors.seek(0)
        text = errors.read(2000).decode(errors="replace").strip()
    if child.returncode < 0:
        raise RuntimeError(f"ended by signal {-child.returncode}")
    if child.returncode not in (0, 1, 4):  # 1: shots have failed; 4: frames lack a full transform
        raise RuntimeError(text.removeprefix("cornerpin: ") or f"ended in {child.returncode}")


# At once: a client that is half open would wait for its scheduler.
def end(code, texts):
    for text in texts:
        print(text, file=sys.stderr)
    sys.stderr.flush()
    os._exit(code)


def fail(text):
    end(1, [text])


def connected(scheduler):
    try:
        from distributed import Client
    except ImportError as error:
        fail(
            "--scheduler needs dask.distributed (Debian: python3-distributed), which "
            f"{sys.executable} does not find: {error}"
        )
    logging.getLogger("distributed").setLevel(logging.CRITICAL + 1)
    try:
        client = Client(scheduler, timeout=CONNECTED, set_as_default=False)
    except (OSError, RuntimeError, TypeError, ValueError) as error:
        fail(f"{scheduler}: the scheduler cannot be reached: {error}")
    try:
        client.wait_for_workers(1, timeout=FIRST_WORKER)
    except Exception as error:  # its kind depends on the version
        fail(f"{scheduler}: the scheduler has no workers: {error}")
    return client


def main():
    scheduler, pieces, progress = sys.argv[1:]
    client = connected(scheduler)
    from distributed import as_completed

    keys, shots, words = [], {}, []
    with open(pieces) as lines:
        for line in lines:
            key, count, command = line.split(" ", 2)
            keys.append(key)
            shots[key] = int(count)
            words.append(shlex.split(command))
    failures = {}  # each text once, in their order
    done = 0
    futures = client.map(run, words, key=keys, retries=RETRIES)
    for future in as_completed(futures, loop=client.loop):
        if future.status == "error":
            failures[f"a worker's command failed: {future.exception()}"] = True
        elif future.status != "finished":
            fail(
                f"{scheduler}: the scheduler is gone; what is done stays: the same command goes on "
                "from here"
            )
        done += shots[future.key]
        with open(progress, "w") as file:
            file.write(str(done))
    client.close()
    end(0, list(failures)[:TOLD])


if __name__ == "__main__":
    main()
