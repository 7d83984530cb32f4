"""Builds the extension module of the package quorel with CMake (the
project's own build, see pyproject.toml) and puts libquorel beside it: the
module finds the library in its own folder, wherever the package lands."""
import os
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = os.path.dirname(os.path.abspath(__file__))


def version():
    with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as cmake:
        return re.search(r"project\(quorel VERSION ([0-9.]+)", cmake.read()).group(1)


class BuildWithCMake(build_ext):
    """Configures a build of the library and the module alone (no tests,
    examples or benchmarks), for the running interpreter, and copies the
    module and the library it links into the package. The build folder is
    kept, so a second install builds only what changed."""

    def build_extension(self, ext):
        build = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        configure = ["cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
                     "-DPython3_EXECUTABLE=" + sys.executable, "-DQUOREL_PYTHON_BUNDLE=ON",
                     "-DQUOREL_BUILD_TESTS=OFF", "-DQUOREL_BUILD_EXAMPLES=OFF", "-DQUOREL_BUILD_BENCH=OFF",
                     "-DQUOREL_IPO=OFF"]
        subprocess.run(configure, check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", "2")
        subprocess.run(["cmake", "--build", build, "--target", "_quorel", "-j", jobs], check=True)
        built = os.path.join(build, "python", "quorel")
        module = [f for f in os.listdir(built) if f.startswith("_quorel") and f.endswith(".so")]
        if len(module) != 1:
            sys.exit("the CMake build made no extension module _quorel in %s (are pybind11-dev and python3-dev "
                     "installed?)" % built)
        target = os.path.dirname(os.path.abspath(self.get_ext_fullpath(ext.name)))
        os.makedirs(target, exist_ok=True)
        shutil.copy2(os.path.join(built, module[0]), os.path.join(target, os.path.basename(
            self.get_ext_fullpath(ext.name))))
        # The library under its SONAME, the name the module asks the loader for.
        library = os.path.join(build, "quorel")
        for name in os.listdir(library):
            if re.fullmatch(r"libquorel\.so\.[0-9]+", name):
                shutil.copy2(os.path.realpath(os.path.join(library, name)), os.path.join(target, name))


# build-python beside the CMake build folders, which .gitignore skips too.
setup(version=version(), ext_modules=[Extension("quorel._quorel", sources=[])],
      options={"build": {"build_base": "build-python"}},
      cmdclass={"build_ext": BuildWithCMake})
