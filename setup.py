# SPDX-License-Identifier: BSD-3-Clause
"""What pyproject.toml cannot say: the version, which is CMake's, and the compiled part."""
import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent
WORK = Path(os.environ.get("CORNERPIN_PYTHON_BUILD", "build/python"))


def version():
    found = re.search(
        r"^project\(cornerpin VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M
    )
    if not found:
        raise SystemExit("setup.py: CMakeLists.txt tells no version")
    return found[1]


class CMakeBuild(build_ext):
    """Has CMake build the module, with CMAKE_ARGS and what CMake itself finds in the environment."""

    def build_extension(self, ext):
        folder = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        work = Path(self.build_temp).resolve() / "cmake"
        configure = ["cmake", "-S", ROOT / "python", "-B", work, "-DCMAKE_BUILD_TYPE=Release"]
        configure += [
            f"-DPython_EXECUTABLE={sys.executable}",
            f"-DCORNERPIN_PYTHON_FOLDER={folder}",
        ]
        # What an earlier run found, in other folders perhaps, is found anew.
        (work / "CMakeCache.txt").unlink(missing_ok=True)
        subprocess.run(configure + os.environ.get("CMAKE_ARGS", "").split(), check=True)
        os.environ.setdefault("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count()))
        build = ["cmake", "--build", work, "--target", "cornerpin_python"]
        subprocess.run(build, check=True)


WORK.mkdir(parents=True, exist_ok=True)
setup(
    version=version(),
    ext_modules=[Extension("cornerpin._cornerpin", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    options={"build": {"build_base": str(WORK)}, "egg_info": {"egg_base": str(WORK)}},
)
