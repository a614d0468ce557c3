#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""record_script.py SCRIPT

Runs a script with stand-ins for the module bpy and the object app, and prints what it calls, a line
for each call, with all digits of the numbers.
"""
import sys
import types


def tell(*words):
    print("|".join(w if isinstance(w, str) else repr(float(w)) for w in words))


class Socket:
    def __init__(self, name):
        self.name = name
        self.default_value = None

    def keyframe_insert(self, path, frame):
        assert path == "default_value" and isinstance(frame, int)
        x, y, z = self.default_value
        tell("key", self.name, frame, x, y, z)


class Sockets(dict):
    def __missing__(self, name):
        assert name in ("Upper Left", "Upper Right", "Lower Left", "Lower Right")
        self[name] = Socket(name)
        return self[name]


class Node:
    def __init__(self):
        self.inputs = Sockets()

    def __setattr__(self, name, value):
        if name == "label":
            tell("label", value)
        super().__setattr__(name, value)


class Scene:
    use_nodes = False

    @property
    def node_tree(self):
        return types.SimpleNamespace(nodes=self) if self.use_nodes else None

    def new(self, kind):
        tell("new", kind)
        return Node()


class Param:
    def __init__(self, name):
        assert name[:-1] in ("from", "to") and name[-1] in "1234"
        self.name = name

    def setValueAtTime(self, value, time, dimension):
        assert isinstance(time, int) and dimension in (0, 1)
        tell("set", self.name, time, dimension, value)


class App:
    def createNode(self, kind):
        tell("new", kind)
        return types.SimpleNamespace(getParam=Param)


bpy = types.ModuleType("bpy")
bpy.context = types.SimpleNamespace(scene=Scene())
sys.modules["bpy"] = bpy
with open(sys.argv[1], "rb") as script:
    code = compile(script.read(), sys.argv[1], "exec")
exec(code, {"app": App(), "__name__": "__main__"})
