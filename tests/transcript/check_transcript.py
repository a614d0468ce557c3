#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""check_transcript.py PROGRAM DATA TRANSCRIPT [QUOTING ...]

Runs the commands of a transcript, the lines behind "$ " in its console blocks, one after the other
in an empty folder with the link "data", and fails where one prints anything else than what stands
below it. Each console block of the quoting files has to stand in the transcript, too.
"""
import os
import re
import subprocess
import sys
import tempfile


def blocks_of(path):
    with open(path, encoding="utf-8") as file:
        return re.findall(r"^```console\n(.*?)^```$", file.read(), re.DOTALL | re.MULTILINE)


def runs_of(block):
    """The commands of a block, and what each prints."""
    runs = []
    for line in block.splitlines(keepends=True):
        if line.startswith("$ "):
            runs.append([line[2:].rstrip("\n"), ""])
        elif not runs:
            raise SystemExit(f"a console block begins without a command: {line}")
        else:
            runs[-1][1] += line
    return runs


def printed_by(command, folder, program):
    path = os.path.dirname(program) + os.pathsep + os.environ["PATH"]
    run = subprocess.run(["sh", "-c", command], cwd=folder, env={**os.environ, "PATH": path},
                         stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, check=False, encoding="utf-8")
    return run.stdout


def main():
    program, data, transcript, *quoting = sys.argv[1:]
    blocks = blocks_of(transcript)
    problems = 0 if blocks else 1
    with tempfile.TemporaryDirectory() as folder:
        os.symlink(data, os.path.join(folder, "data"))
        for command, expected in (run for block in blocks for run in runs_of(block)):
            printed = printed_by(command, folder, program)
            if printed != expected:
                problems += 1
                print(f"$ {command}\nprints\n{printed}and the transcript says\n{expected}")
    for path in quoting:
        quotes = blocks_of(path)
        wrong = [quote for quote in quotes if not any(quote in block for block in blocks)]
        problems += len(wrong) + (0 if quotes else 1)
        for quote in wrong:
            print(f"{path} quotes what the transcript does not say:\n{quote}")
    print(f"{sum(len(runs_of(block)) for block in blocks)} commands, {problems} problems")
    return problems != 0


if __name__ == "__main__":
    sys.exit(main())
