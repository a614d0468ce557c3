# SPDX-License-Identifier: BSD-3-Clause
"""The site of documentation, which script/docs has Sphinx make of the pages in this folder."""
import re
import sys
from pathlib import Path

import furo

ROOT = Path(__file__).resolve().parents[1]

project = "Cornerpin"
version = re.search(r"project\(cornerpin VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
release = version

extensions = ["breathe", "myst_parser", "numpydoc", "sphinx.ext.autodoc"]
myst_heading_anchors = 4  # as pages in the repository have them

html_theme = "furo"
# Debian's style sheet has them for readers who ask for them, not for those whose system does.
colours = Path(furo.__file__).with_name("assets") / "styles/variables/_colors.scss"
dark = colours.read_text().split("@mixin colors-dark", 1)[1]
html_theme_options = {"dark_css_variables": dict(re.findall(r"--([\w-]+): ([^;]+);", dark))}
html_title = f"Cornerpin {version}"
html_static_path = ["site.css", "/usr/share/javascript/normalize.css/normalize.css"]
html_css_files = ["site.css"]
html_copy_source = False
html_show_copyright = False
html_show_search_summary = False  # pages from disk cannot read each other

breathe_projects = {"cornerpin": str(ROOT / "build/docs/xml")}
breathe_default_project = "cornerpin"

# The module's Python part alone tells all: the compiled one need not be there.
sys.path.insert(0, str(ROOT / "python"))
autodoc_mock_imports = ["cornerpin._cornerpin"]
autodoc_member_order = "bysource"
autodoc_typehints = "none"
default_role = "code"
smartquotes = False
numpydoc_show_class_members = False

# Types in docstrings are phrases for people, and what is not of this project has no page here.
nitpick_ignore_regex = [
    ("py:class", ".*"),
    ("py:exc", r"numpy\..*"),
    ("cpp:identifier", "Data"),  # private
]
