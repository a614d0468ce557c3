# SPDX-License-Identifier: BSD-3-Clause
"""The examples and the code of the guide do what they say."""
import ast
import doctest
import importlib
import importlib.metadata
import inspect
import re
import subprocess
import sys

import cornerpin
import nbformat
import pytest
from conftest import ROOT
from jupyter_client.manager import AsyncKernelManager
from nbclient import NotebookClient

EXAMPLES = ROOT / "python/examples"


def test_a_pin_from_a_tracker(tmp_path, command):
    done = subprocess.run(
        [
            sys.executable,
            EXAMPLES / "pin_from_tracker.py",
            ROOT / "data/planks.csv",
            tmp_path / "out",
        ],
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stderr == ""
    assert re.match(r"Good: all 192 frames\.", done.stdout)
    assert sorted(p.name for p in (tmp_path / "out").iterdir()) == [
        "page.html",
        "pin.nk",
        "shot.json",
    ]
    assert "<title>Left sheet" in (tmp_path / "out/page.html").read_text()
    said = command("info", tmp_path / "out/shot.json").stdout
    assert "left sheet" in said


class ThisPython(AsyncKernelManager):
    """A kernel of the interpreter that runs the tests, whatever else is installed."""

    def format_kernel_cmd(self, extra_arguments=None):
        return [sys.executable, "-m", "ipykernel_launcher", "-f", self.connection_file]


@pytest.mark.parametrize("path", sorted(EXAMPLES.glob("*.ipynb")), ids=lambda path: path.name)
def test_the_notebook_runs(path):
    notebook = nbformat.read(path, as_version=4)
    assert not any(cell.get("outputs") for cell in notebook.cells), "outputs are not kept"
    NotebookClient(
        notebook,
        timeout=120,
        kernel_manager_class=ThisPython,
        resources={"metadata": {"path": str(EXAMPLES)}},
    ).execute()
    code = [cell for cell in notebook.cells if cell.cell_type == "code"]
    shown = [output.data for cell in code for output in cell.outputs if "data" in output]
    assert shown[0]["text/plain"] == "(192, 142, 2)"
    assert "Good: 181 of 192 frames" in shown[1]["text/html"] and "<svg" in shown[1]["text/html"]
    printed = [o.text for cell in code for o in cell.outputs if o.output_type == "stream"]
    assert "read back: largest difference 0 px\n" in printed


def code_of(path):
    """The blocks of Python in a document."""
    return re.findall(r"^```python\n(.*?)^```$", path.read_text(), re.M | re.S)


DOCUMENTS = [path for path in (ROOT / "README.md", *ROOT.glob("docs/**/*.md")) if code_of(path)]


@pytest.mark.parametrize("path", DOCUMENTS, ids=lambda path: path.name)
def test_a_document_runs_from_top_to_bottom(path, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "data").symlink_to(ROOT / "data")
    names = {}
    for block in code_of(path):
        lines = block.split("\n")
        for statement in ast.parse(block).body:
            piece = ast.get_source_segment(block, statement)
            told = lines[statement.end_lineno - 1].partition("  # -> ")[2]
            if told:
                assert repr(eval(piece, names)) == told, piece
            else:
                exec(piece, names)


def test_the_guide_tells_what_its_code_gives():
    code = code_of(ROOT / "docs/python.md")
    assert len(code) >= 8
    assert "".join(code).count("# -> ") >= 15


def test_docstrings_say_what_is_true():
    ran = 0
    for module in ("_solve", "_result", "_tracks", "_library"):
        failed, tried = doctest.testmod(importlib.import_module(f"cornerpin.{module}"))
        assert failed == 0
        ran += tried
    assert ran > 0


def test_the_version_is_that_of_the_command(command):
    assert command("--version").stdout.split("\n")[0] == f"cornerpin {cornerpin.__version__}"
    assert importlib.metadata.version("cornerpin") == cornerpin.__version__


@pytest.mark.parametrize("name", [name for name in cornerpin.__all__ if name[0] != "_"])
def test_all_that_is_public_is_described(name):
    thing = getattr(cornerpin, name)
    text = inspect.getdoc(thing) or ""
    assert len(text) > 20
    if inspect.isfunction(thing):
        parameters = inspect.signature(thing).parameters
        for parameter in parameters if "Parameters\n---" in text else ():
            assert re.search(rf"^(\w+, )*{parameter}(, \w+)* : ", text, re.M), parameter
        assert "Parameters\n---" in text or len(parameters) <= 2
        assert "Raises\n---" in text
    for member, value in vars(thing).items() if inspect.isclass(thing) else ():
        if not member.startswith("_") and (callable(value) or isinstance(value, property)):
            listed = re.search(rf"^(\w+, )*{member}(, \w+)* : ", text, re.M)
            assert listed or inspect.getdoc(value), member
