#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""check_blocks.py LANGUAGE PROGRAM PROGRAMS BUILD

Tests the blocks of code in all documents that are in the language:

  cmake     each line is one of a CMakeLists.txt of tests/consumer
  console   the commands behind "$ " print what stands below them, and one of them prints a verdict
            that is quoted as text
  cpp       one with a main function is compiled, into one of the .cpp files in the folder PROGRAMS;
            any other stands in an example, and each example is quoted
  json      it is as the schema says that its first member names
  sh        the commands run, in a folder that has what they read; scripts of this tree are there
  all       there is no block that none of these tests, nor any other test; and links from file to
            file lead to one

Python is run by python/tests/test_examples.py, from the top of each document to its end. A block of
text is no code. A block below a line `<!-- tested: NAME -->` is tested by that test of the folder BUILD,
or by a script with a word, as in `<!-- tested: script/soak package -->`.
The commands are given PROGRAM as cornerpin. What frames come to (4) does not count as a failure of a
command in a block of sh.
"""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import NamedTuple, Optional

SOURCE = Path(__file__).resolve().parents[2]
MADE = ("build", "node_modules", "demo")  # folders that are not of the source


class Block(NamedTuple):
    document: Path
    line: int
    language: str
    text: str
    tested_by: Optional[str]

    def __str__(self):
        return f"{self.document.relative_to(SOURCE)}:{self.line}: {self.language or 'no language'}"


def documents():
    found = sorted(SOURCE.rglob("*.md"))
    return [path for path in found if path.relative_to(SOURCE).parts[0] not in MADE]


def blocks_of(document):
    """The fenced blocks, without Sphinx's directives, which it checks itself."""
    blocks, fence, above = [], None, ""
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        opened = re.match(r" *(`{3,}|~{3,})(.*)$", line)
        if fence:
            if line.strip() == fence:
                if not language.startswith("{"):
                    named = re.fullmatch(r"<!-- tested: (.+) -->", above)
                    text = "".join(f"{each}\n" for each in lines)
                    blocks.append(Block(document, begin, language, text, named and named[1]))
                fence, above = None, ""
            else:
                lines.append(line)
        elif opened:
            fence, language, begin, lines = opened[1], opened[2].strip(), number, []
        elif line.strip():
            above = line.strip()
    if fence:
        raise SystemExit(f"{document}:{begin}: this block has no end")
    return blocks


class Shell:
    """A folder in which commands find the built program as cornerpin."""

    def __init__(self, folder, program):
        self.folder = Path(folder)
        if not (self.folder / "data").exists():
            (self.folder / "data").symlink_to(SOURCE / "data")
        path = f"{Path(program).resolve().parent}{os.pathsep}{os.environ['PATH']}"
        self.environment = {**os.environ, "PATH": path}

    def run(self, command):
        return subprocess.run(
            ["sh", "-c", command],
            cwd=self.folder,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            check=False,
            encoding="utf-8",
        )

    def must(self, command):
        done = self.run(command)
        if done.returncode not in (0, 4):
            raise SystemExit(f"$ {command}\n{done.stdout}ended in {done.returncode}")


def prepare(shell, blocks):
    """What the commands in the documents read: the tracks of planks.csv under many names."""
    folder = shell.folder
    rows = (SOURCE / "data/planks.csv").read_text().split("\n")
    head, rows = rows[0], [row.split(",") for row in rows[1:] if row]

    def write(name, first, last, offset=0):
        kept = [(t, int(f), float(x) / 2, float(y) / 2, w) for t, f, x, y, w in rows]
        lines = [
            f"{t},{f + offset},{x},{y},{w}" for t, f, x, y, w in kept if first <= f <= last
        ]
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("\n".join([head, *lines, ""]))

    write("shot.csv", 0, 81)
    write("few.csv", 50, 65, 951)
    write("tracks/sh010.csv", 50, 60)
    write("tracks/sh020.csv", 40, 81)
    write("shots/sh010.csv", 50, 65)
    write("shots/sh020.csv", 50, 65)
    facts = "--size 1920x1080 --y-down --pixel-center 0.5 --first-frame 1001"
    for name in ("sign.nk", "shot.nk", "tracks.2dt"):
        shell.must(f"cornerpin convert few.csv {name} {facts}")
    for picture in (SOURCE / "data/planks_pictures").glob("*.jpg"):
        number = picture.stem[-4:]
        for name in (f"plates/img_{number}.jpg", f"plates/sh020.{number}.jpg"):
            (folder / name).parent.mkdir(exist_ok=True)
            (folder / name).symlink_to(picture)
    shell.must("cornerpin batch shots/ -o before/")
    for name in ("solved-0.1", "solved-0.2"):
        shutil.copytree(folder / "before", folder / name)
    for block in blocks:
        if block.language == "json" and "cornerpin_batch" in block.text:
            (folder / "show.json").write_text(block.text)


def commands_of(text):
    """The lines of a script, those that go on put together, without comments."""
    joined = re.sub(r"\\\n\s*", "", text)
    lines = [re.sub(r"(^|\s+)#.*", "", line).strip() for line in joined.splitlines()]
    return [line for line in lines if line]


def problem_of(block, command, shell):
    """What is wrong with a command in a block of sh, if anything."""
    word = command.split()[0]
    if word == "cornerpin":
        if not shutil.which("parallel"):
            command = command.replace("| parallel", "| sh -e")
        done = shell.run(command)
        if done.returncode not in (0, 4):
            return f"{block}: $ {command}\n{done.stdout}ends in {done.returncode}"
    elif word.startswith(("script/", ".ci/", "abi/")):
        if not os.access(SOURCE / word, os.X_OK):
            return f"{block}: {word} is no script of this tree"
    else:
        return f"{block}: nobody tests {command}: who does stands above it, <!-- tested: NAME -->"
    return None


def check_sh(blocks, program, _):
    scripts = [block for block in blocks if block.language == "sh" and not block.tested_by]
    with tempfile.TemporaryDirectory() as folder:
        prepared = Path(folder, "prepared")
        prepared.mkdir()
        prepare(Shell(prepared, program), blocks)
        for document in documents():
            copy = Path(folder, "copy")
            shutil.copytree(prepared, copy, symlinks=True)
            shell = Shell(copy, program)
            for block in (script for script in scripts if script.document == document):
                for command in commands_of(block.text):
                    problem = problem_of(block, command, shell)
                    if problem:
                        yield problem
            shutil.rmtree(copy)


def check_console(blocks, program, _):
    for document in documents():
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(folder, program)
            for block in (b for b in blocks if b.document == document and b.language == "console"):
                if not block.text.startswith("$ "):
                    yield f"{block}: it begins without a command"
                for run in block.text.split("\n$ "):
                    command, _, expected = run.removeprefix("$ ").partition("\n")
                    printed = shell.run(command).stdout
                    if printed.rstrip("\n") != expected.rstrip("\n"):
                        yield f"{block}: $ {command}\nprints\n{printed}and not\n{expected}"

    printed = [block.text for block in blocks if block.language == "console"]
    for block in blocks:
        verdict = block.language == "text" and re.match(r"Good: |Doubtful: ", block.text)
        if verdict and not any(block.text in text for text in printed):
            yield f"{block}: no command in a console block prints this verdict"


def check_cmake(blocks, _, __):
    projects = {}
    for path in (SOURCE / "tests/consumer").rglob("CMakeLists.txt"):
        projects[path] = path.read_text().replace("consumer", "my_program").splitlines()
    for block in blocks:
        if block.language == "cmake" and not block.tested_by:
            wanted = commands_of(block.text)
            if not any(all(line in lines for line in wanted) for lines in projects.values()):
                yield f"{block}: no project of tests/consumer has these lines"


def check_cpp(blocks, _, programs):
    compiled = [path.read_text(encoding="utf-8") for path in programs.glob("*.cpp")]
    examples = {path.name: path.read_text() for path in (SOURCE / "examples").glob("*.cpp")}
    quoted = set()
    for block in blocks:
        if block.language != "cpp":
            continue
        if "int main(" in block.text:
            if block.text not in compiled:
                yield f"{block}: it is not compiled: name it in tests/docs/CMakeLists.txt"
            continue
        where = [name for name, text in examples.items() if f"\n{block.text}" in text]
        quoted.update(where)
        if not where:
            yield f"{block}: no example has these lines"
    for name in sorted(set(examples) - quoted):
        yield f"examples/{name} is not quoted"


def check_json(blocks, _, __):
    import jsonschema  # Debian's package python3-jsonschema

    schemas = {"cornerpin_batch": "batch", "cornerpin_tracks": "tracks", "cornerpin": "result"}
    for block in blocks:
        if block.language == "json":
            value = json.loads(block.text)
            name = schemas.get(next(iter(value)))
            if name is None:
                yield f"{block}: there is no schema for it"
                continue
            schema = json.loads((SOURCE / f"docs/{name}.schema.json").read_text())
            for error in jsonschema.Draft202012Validator(schema).iter_errors(value):
                yield f"{block}: {error.message}"


CHECKS = {
    "cmake": check_cmake,
    "console": check_console,
    "cpp": check_cpp,
    "json": check_json,
    "sh": check_sh,
}


def test_of(language):
    return {"python": "python.tests", "text": "none"}.get(language, f"docs.blocks.{language}")


def is_part_of_script(name):
    path, _, word = name.partition(" ")
    script = SOURCE / path
    return os.access(script, os.X_OK) and script.is_file() and word in script.read_text()


def check_all(blocks, build):
    listed = subprocess.run(
        ["ctest", "--test-dir", build, "-N"], check=True, capture_output=True, encoding="utf-8"
    ).stdout
    tests = set(re.findall(r"Test +#\d+: (\S+)", listed))
    for block in blocks:
        if block.tested_by and block.tested_by not in tests:
            if not is_part_of_script(block.tested_by):
                yield f"{block}: there is no test {block.tested_by}"
        elif not block.tested_by and test_of(block.language) not in {*tests, "none"}:
            yield f"{block}: nobody tests such a block"
        print(f"{block}: {block.tested_by or test_of(block.language)}")


def broken_links():
    """Links from file to file, as they are followed in the repository."""
    for document in documents():
        text = re.sub(r"```.*?```|`[^`]*`", "", document.read_text(encoding="utf-8"), flags=re.S)
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            if not re.match(r"[a-z]+:|#", target):
                if not (document.parent / target.partition("#")[0]).exists():
                    yield f"{document.relative_to(SOURCE)}: {target} is not there"


def main():
    language, program, programs, build = sys.argv[1:]
    blocks = [block for document in documents() for block in blocks_of(document)]
    if language == "all":
        problems = [*check_all(blocks, build), *broken_links()]
        tested = blocks
    else:
        problems = list(CHECKS[language](blocks, program, Path(programs)))
        tested = [block for block in blocks if block.language == language]
    print("\n".join(problems))
    print(f"{len(tested)} blocks, {len(problems)} problems")
    return bool(problems) or not tested


if __name__ == "__main__":
    sys.exit(main())
