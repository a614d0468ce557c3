# SPDX-License-Identifier: BSD-3-Clause
"""What cornerpin raises besides Python's own exceptions."""
from __future__ import annotations


class InputError(ValueError):
    """A file that cannot be read or is refused.

    The text is `FILE:LINE: text`, or `FILE: text` where no line is to blame; of several flaws, one
    below the other, and file and line are the first one's.

    Attributes
    ----------
    file : str
        The file as it was given.
    line : int
        The line, from 1; 0 where none is to blame.
    """

    def __init__(self, text: str, file: str = "", line: int = 0) -> None:
        super().__init__(text, file, line)
        self.file = file
        self.line = line

    def __str__(self) -> str:
        return str(self.args[0])


class Cancelled(Exception):
    """The work was ended by its progress callback, which returned False."""
