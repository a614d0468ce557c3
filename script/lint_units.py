#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""script/lint_units.py COMMANDS FOLDER: clang-tidy over the sources named on standard input.

COMMANDS is a compile_commands.json. Most of clang-tidy's time goes into headers, so sources that
are compiled alike are read together, as one unit that is written to FOLDER. Where they do not
compile together, mostly because two of them give something the same name, each half is a unit.
Fails when clang-tidy finds something.
"""
import json
import os
import shlex
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TOGETHER = 8
ROOT = Path(__file__).resolve().parent.parent
# A source is to its unit what a header is to a source.
FILTER = r"--header-filter=/(cornerpin|shot|show|tools|tests|bench|examples|python)/.*\.(h|cpp)$"


def how_compiled(entry):
    """The folder and the command of a source, without the names of files."""
    words = shlex.split(entry["command"])
    for option in ("-o", "-c"):
        at = words.index(option)
        del words[at : at + 2]
    return entry["directory"], tuple(words)


def config_of(source):
    """The .clang-tidy that holds for a source."""
    return next(f / ".clang-tidy" for f in source.parents if (f / ".clang-tidy").exists())


def groups(entries, wanted):
    """Lists of sources, each with what their units share."""
    alike = {}
    for entry in entries:
        source = Path(entry["file"])
        if source in wanted:
            wanted.remove(source)
            alike.setdefault((how_compiled(entry), config_of(source)), []).append(source)
    for shared, sources in alike.items():
        for i in range(0, len(sources), TOGETHER):
            yield sources[i : i + TOGETHER], shared


def run(directory, *command):
    done = subprocess.run(command, cwd=directory, capture_output=True, text=True, check=False)
    return done.returncode == 0, done.stdout + done.stderr


def lint(folder, sources, shared):
    """Whether clang-tidy finds nothing in the sources; prints what it finds."""
    (directory, (compiler, *flags)), config = shared
    here = folder / config.parent.relative_to(ROOT)  # where clang-tidy finds the same .clang-tidy
    unit = here / f"{len(sources)}-{str(sources[0].relative_to(ROOT)).replace('/', '-')}"
    unit.write_text("".join(f'#include "{source}" // NOLINT\n' for source in sources))
    if len(sources) > 1:
        fits, _ = run(directory, compiler, *flags, "-fsyntax-only", "-Wfatal-errors", str(unit))
        if not fits:
            half = len(sources) // 2
            parts = [lint(folder, part, shared) for part in (sources[:half], sources[half:])]
            return all(parts)
    clean, said = run(directory, "clang-tidy", "--quiet", FILTER, str(unit), "--", *flags)
    if not clean:
        print(said, flush=True)
    return clean


def main():
    commands, folder = Path(sys.argv[1]), Path(sys.argv[2]).resolve()
    wanted = {ROOT / line.strip() for line in sys.stdin}
    shutil.rmtree(folder, ignore_errors=True)
    work = list(groups(json.loads(commands.read_text()), wanted))
    for config in {config for _, (_, config) in work} | {ROOT / ".clang-tidy"}:
        link = folder / config.relative_to(ROOT)
        link.parent.mkdir(parents=True, exist_ok=True)
        os.symlink(config, link)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        clean = list(pool.map(lambda group: lint(folder, *group), work))
    sys.exit(0 if all(clean) else 1)


if __name__ == "__main__":
    main()
