#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""check_site.py SITE

Fails where a page of the built site refers to a file or a place in a page that is not there, loads
something from elsewhere, or shows a character by its code; and where a public header or name of the
Python module has no place in the site. Prints the addresses elsewhere that pages link to.
"""
import ast
import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urldefrag, urlsplit

SOURCE = Path(__file__).resolve().parents[2]


class Page(HTMLParser):
    """The places of a page, what it loads, and what it links to."""

    def __init__(self, path):
        super().__init__()
        self.places, self.loaded, self.links = set(), [], []
        self.text = ""
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.places.update(values[key] for key in ("id", "name") if values.get(key))
        for key in ("src", "href"):
            if values.get(key):
                (self.links if tag == "a" else self.loaded).append(values[key])

    def handle_data(self, data):
        self.text += data


def style_sheets(site):
    """What each style sheet loads."""
    for path in site.rglob("*.css"):
        for address in re.findall(r"url\(\s*[\"']?([^\"')]+)", path.read_text(encoding="utf-8")):
            if not address.startswith(("data:", "#")):
                yield path, address


def problems_of(site, pages, elsewhere):
    def missing(path, address):
        target, place = urldefrag(address)
        parts = urlsplit(target)
        if parts.scheme or parts.netloc or target.startswith("/"):
            return f"{address} is not of the site"
        file = (path.parent / unquote(parts.path)).resolve() if parts.path else path
        if not file.is_file() or not file.is_relative_to(site):
            return f"{address} is not there"
        if place and (file not in pages or unquote(place) not in pages[file].places):
            return f"{address}: that page has no such place"
        return None

    for path, page in pages.items():
        for broken in re.findall(r"&#?\w+;", page.text):
            yield f"{path.relative_to(site)}: it shows {broken}"
        for address in page.links:
            if address.startswith("https://"):
                elsewhere.add(address)
            elif problem := missing(path, address):
                yield f"{path.relative_to(site)}: {problem}"
    loaded = [(path, address) for path, page in pages.items() for address in page.loaded]
    for path, address in [*loaded, *style_sheets(site)]:
        if not address.startswith("data:") and (problem := missing(path, address)):
            yield f"{path.relative_to(site)} loads: {problem}"


def unmentioned(site, pages):
    text = (SOURCE / "cornerpin/CMakeLists.txt").read_text()
    headers = re.search(r"set\(CORNERPIN_PUBLIC_HEADERS([^)]*)\)", text)[1].split()
    reference = "".join(path.read_text() for path in (SOURCE / "docs/reference").glob("*.md"))
    for header in ["shot.h", *headers]:
        if f"`cornerpin/{header}`" not in reference:
            yield f"no page of docs/reference is about cornerpin/{header}"
    module = ast.parse((SOURCE / "python/cornerpin/__init__.py").read_text())
    (names,) = (
        ast.literal_eval(part.value)
        for part in module.body
        if isinstance(part, ast.Assign) and part.targets[0].id == "__all__"
    )
    page = site / "reference/python.html"
    told = set(re.findall(r'<span class="pre">(\w+)</span>', page.read_text()))
    for name in names:
        if name[0] != "_" and f"cornerpin.{name}" not in pages[page].places and name not in told:
            yield f"the reference of Python does not have {name}"


def main():
    site = Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    elsewhere = set()
    problems = [*problems_of(site, pages, elsewhere), *unmentioned(site, pages)]
    print("\n".join(problems), end="\n" if problems else "")
    for address in sorted(elsewhere):
        print(f"elsewhere: {address}")
    links = sum(len(page.links) for page in pages.values())
    print(f"{len(pages)} pages, {links} links, {len(problems)} problems")
    return bool(problems) or len(pages) < 20


if __name__ == "__main__":
    sys.exit(main())
