"""setup.py: builds the package. Its extension nuv1math._native holds the library, the judgement module and the C
interface, which the repository's CMake compiles as everywhere.

    pip wheel --no-index --no-build-isolation --no-deps bindings/python    the package as a file
    python3 setup.py build_ext --inplace                                   the extension beside the sources

Copyright (c) 2026 the nuv1math authors
SPDX-License-Identifier: MIT
"""

import os
import pathlib
import re
import shutil
import subprocess

from setuptools import setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
HEADER = ROOT / "nuv/nuv_math/include/nuv1math.h"


def version():
    """The version that the header states."""
    return ".".join(re.findall(r"^#define NUV1MATH_VERSION_[A-Z]+ (\d+)$", HEADER.read_text(encoding="utf-8"),
                               re.MULTILINE))


class BuildWithLibrary(build_ext):
    """Builds the extension with the C interface: its shared library NUV1MATH_C_LIBRARY if the environment has one, as
    for a package of a distribution, or else an archive with all that is needed, which is built first."""

    def run(self):
        library = os.environ.get("NUV1MATH_C_LIBRARY") or self.built_archive()
        for extension in self.extensions:
            extension.extra_objects.append(library)
            extension.depends.append(library)
        super().run()

    def built_archive(self):
        """The archive of the library, the judgement module and the C interface."""
        directory = pathlib.Path(self.build_temp).resolve() / "library"
        generator = ["-G", "Ninja"] if shutil.which("ninja") and "CMAKE_GENERATOR" not in os.environ else []
        subprocess.run(["cmake", "--preset", "library", "-B", directory, *generator, "-DBUILD_SHARED_LIBS=OFF",
                        "-DNUV1MATH_BUILD_PYTHON=ON"], cwd=ROOT, check=True)
        subprocess.run(["cmake", "--build", directory, "--target", "nuv1math_python", "--parallel",
                        str(os.cpu_count())], check=True)
        return str(directory / "bindings/python/libnuv1math_python.a")


os.chdir(HERE)
setup(version=version(), cmdclass={"build_ext": BuildWithLibrary}, cffi_modules=["build_native.py:BUILDER"])
