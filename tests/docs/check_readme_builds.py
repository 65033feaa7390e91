"""Installs the library, and builds the README's program by the README's own lines: the compiler's call, and those for a CMake project.

    check_readme_builds.py PROJECT BUILD WORK CMAKE LIBDIR
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

PROJECT, BUILD, WORK = map(pathlib.Path, sys.argv[1:4])
CMAKE, LIBDIR = sys.argv[4:6]
README = (PROJECT / "README.md").read_text(encoding="utf-8")


def run(*command, **more):
    subprocess.run(command, check=True, cwd=WORK, **more)


shutil.rmtree(WORK, ignore_errors=True)
WORK.mkdir(parents=True)
run(CMAKE, "--install", BUILD, "--prefix", WORK / "prefix", stdout=subprocess.DEVNULL)
program = re.search(r"^```c\n(.*?)^```", README, re.MULTILINE | re.DOTALL).group(1)
(WORK / "first_host.c").write_text(program, encoding="utf-8")
libraries = str(WORK / "prefix" / LIBDIR)
environment = dict(os.environ, PKG_CONFIG_PATH=libraries + "/pkgconfig", LD_LIBRARY_PATH=libraries)

compiler_call = re.search(r"^    (cc first_host\.c .*)$", README, re.MULTILINE).group(1)
run("sh", "-c", compiler_call, env=environment)
sample = PROJECT / "examples/data/sample_biff5.xls"
run("./first_host", sample, "changed.xls", env=environment)

cmake_lines = re.search(r"((?:^    \w+\(.*\)\n)+)", README[README.index("in a CMake project"):], re.MULTILINE).group(1)
(WORK / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(reader LANGUAGES C)\nadd_executable(first_host first_host.c)\n"
                                     + re.sub("^    ", "", cmake_lines, flags=re.MULTILINE), encoding="utf-8")
run(CMAKE, "-S", ".", "-B", "by_cmake", "-G", "Ninja", "-D", "CMAKE_PREFIX_PATH=" + str(WORK / "prefix"), stdout=subprocess.DEVNULL)
run(CMAKE, "--build", "by_cmake", stdout=subprocess.DEVNULL)
run("by_cmake/first_host", sample, "again.xls", env=environment)
if (WORK / "changed.xls").read_bytes() != (WORK / "again.xls").read_bytes():
    sys.exit("the two programs wrote different workbooks")
print("by the compiler's line and by CMake: %d bytes" % (WORK / "changed.xls").stat().st_size)
