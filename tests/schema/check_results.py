#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""check_results.py SCHEMA FIELD (PROGRAM FILTER)...

Runs each test program with a filter, gathers the results in JSON that its tests write, and holds
those that have the field against the schema. Fails for a result that is not as the schema says, for
a program that writes none, and when the schema lets a damaged result pass.
"""
import copy
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import urllib.request

import jsonschema  # Debian's package python3-jsonschema

FEWEST = {"cornerpin_show": 2}  # results of a program; 5 of others
FEWEST_DAMAGED = {
    "cornerpin": 50,
    "cornerpin_tracks": 20,
    "page": 50,
    "cornerpin_task": 50,
    "cornerpin_show": 50,
}


def validator_of(path):
    """Of a schema that may refer to other files."""
    schema = json.loads(path.read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    try:
        from referencing import Registry, Resource
    except ImportError:  # an older jsonschema
        resolver = jsonschema.RefResolver(path.as_uri(), schema)
        return jsonschema.Draft202012Validator(schema, resolver=resolver)

    def retrieve(uri):
        with urllib.request.urlopen(uri) as file:
            return Resource.from_contents(json.load(file))

    registry = Registry(retrieve=retrieve)
    return jsonschema.Draft202012Validator({"$ref": path.as_uri()}, registry=registry)


def richness(value):
    """Of several results the one with the most kinds of frames and members, and the shortest."""
    shots = value.get("shots", [value])[:2]
    frames = value.get("result", value).get("frames", [])
    members = sum(bool(member) for member in value.values()) if "page" in value else 0
    figures = all(shot.get("figures") for shot in shots)
    return len({frame["status"] for frame in frames}), members, figures, -len(json.dumps(value))


def results_of(program, selection, field):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            [program, f"--gtest_filter={selection}", "--gtest_brief=1"],
            env={**os.environ, "CORNERPIN_KEPT_RESULTS": folder},
            check=True,
        )
        results = [json.loads(path.read_text()) for path in sorted(pathlib.Path(folder).iterdir())]
        return [result for result in results if field in result]


def places(value, path=()):
    """The paths of all objects, and of the values in them, down to the first items of lists."""
    if isinstance(value, dict):
        yield path
        for key in value:
            yield from places(value[key], path + (key,))
    elif isinstance(value, list):
        for i in range(min(len(value), 2)):
            yield from places(value[i], path + (i,))


def at(value, path):
    for key in path:
        value = value[key]
    return value


def damaged(result):
    """Copies of a result with one thing wrong, and what that is."""
    optional = {"why", "untouched"}
    for path in places(result):
        members = at(result, path)
        named = path and path[-1] == "quads"  # its members have the names of quads
        if not named:
            copied = copy.deepcopy(result)
            at(copied, path)["extra"] = 1
            yield f"{path} has an extra member", copied
        for key in members:
            if key in optional or (named and len(members) > 1):
                continue
            copied = copy.deepcopy(result)
            del at(copied, path)[key]
            yield f"{path} without {key}", copied
        for key in members:
            copied = copy.deepcopy(result)
            at(copied, path)[key] = {"wrong": "type"}
            yield f"{path + (key,)} is an object of something else", copied


def main():
    validator = validator_of(pathlib.Path(sys.argv[1]).resolve())
    problems = []
    richest = None
    field = sys.argv[2]
    for program, selection in zip(sys.argv[3::2], sys.argv[4::2]):
        results = results_of(program, selection, field)
        if len(results) < FEWEST.get(field, 5):
            problems.append(f"{program}: only {len(results)} results")
        for result in results:
            for error in list(validator.iter_errors(result))[:5]:
                problems.append(f"{program}: {error.json_path}: {error.message[:200]}")
        print(f"{program}: {len(results)} results")
        richest = max(results + ([richest] if richest else []), key=richness, default=richest)
    copies = list(damaged(richest)) if richest else []
    for what, copied in copies:
        if validator.is_valid(copied):
            problems.append(f"the schema lets pass: {what}")
    print(f"{len(copies)} damaged results")
    if problems or len(copies) < FEWEST_DAMAGED[field]:
        sys.exit("\n".join(problems or ["too few damaged results"]))


main()
