#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""complete_in_zsh.py MANUAL FOLDER LINE...

Types each line into a zsh that has the completions of MANUAL, in FOLDER, presses the tabulator, and
prints what is on the line then.
"""
import os
import pty
import select
import sys
import time

manual, folder, lines = sys.argv[1], sys.argv[2], sys.argv[3:]
pid, terminal = pty.fork()
if pid == 0:
    os.environ.update(TERM="xterm", HOME=folder)
    os.chdir(folder)
    os.execvp("zsh", ["zsh", "-f", "-i"])


def read_until(mark):
    text = b""
    end = time.time() + 60
    while mark not in text:
        if time.time() > end:
            sys.exit("no %r in %r" % (mark, text))
        if select.select([terminal], [], [], 0.2)[0]:
            text += os.read(terminal, 4096)
    return text


def send(text):
    os.write(terminal, text.encode())


# Marks are parted by quotes, so that the echo of what is typed has none.
send("PS1=; fpath=(%s $fpath); autoload -Uz compinit; compinit -u -D; "
     "show() { print -r -- '<<''<'\"$BUFFER\"'>>''>' }; zle -N show; bindkey '^X' show; "
     "echo rea''dy\n" % manual)
read_until(b"ready")
for line in lines:
    send("\x15" + line + "\t\x18")
    text = read_until(b">>>")
    print(text[text.rindex(b"<<<") + 3:text.rindex(b">>>")].decode())
