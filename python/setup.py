"""Builds the wheel: the package, and the library named by PRISMO_LIBRARY beside it."""

import os
import re
import shutil
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

HERE = Path(__file__).resolve().parent


class BuildWithLibrary(build_py):
    def run(self) -> None:
        super().run()
        target = Path(self.build_lib) / "prismoutl" / "libPrismoUtl.so.1"
        shutil.copyfile(os.environ["PRISMO_LIBRARY"], target)


class AnyPython3(bdist_wheel):
    """The library is called by ctypes: one wheel for all versions of Python 3, but for one platform."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


class WithLibrary(Distribution):
    def has_ext_modules(self) -> bool:
        return True


project = re.search(
    r'project\(PrismoUtl VERSION (\S+) DESCRIPTION "([^"]+)"', (HERE.parent / "CMakeLists.txt").read_text()
)
setup(
    name="prismoutl",
    version=project[1],
    description=project[2],
    packages=["prismoutl"],
    package_data={"prismoutl": ["py.typed"]},
    python_requires=">=3.8",
    install_requires=["numpy"],
    distclass=WithLibrary,
    cmdclass={"bdist_wheel": AnyPython3, "build_py": BuildWithLibrary},
)
