"""Builds the extension of the Python module by the project's own CMake files."""

import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).parent.resolve()


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve()
        build = pathlib.Path(self.build_temp).resolve()
        build.mkdir(parents=True, exist_ok=True)
        subprocess.run(
            ["cmake", "-S", ROOT, "-B", build, "-DZORVEK_PYTHON=ON", "-DBUILD_TESTING=OFF"]
            + ["-DCMAKE_BUILD_TYPE=Release", f"-DPython3_EXECUTABLE={sys.executable}"]
            + [f"-DPYTHON_EXECUTABLE={sys.executable}"]
            + [f"-DCMAKE_LIBRARY_OUTPUT_DIRECTORY={target.parent}"],
            check=True,
        )
        subprocess.run(
            ["cmake", "--build", build, "--target", "zorvek_python"]
            + ["--parallel", str(os.cpu_count() or 1)],
            check=True,
        )


setup(
    version=re.search(r"project\(zorvek VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text())[1],
    ext_modules=[Extension("zorvek._core", [])],
    cmdclass={"build_ext": CMakeBuild},
)
