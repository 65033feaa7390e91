"""Every test on disk is in one of the Windows test programs, or a row of docs/windows.md says why not; and every row is needed: its
test is not there, or it does not pass.

    check_suite.py PROJECT EMULATOR PROGRAM...
"""
import os
import pathlib
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "house"))

import check_tests
import house

DOCUMENT = "docs/windows.md"
ROW = re.compile(r"^\| (`[^|]+`) +\| *(.*?) *\|$", re.MULTILINE)


def rows_of(document):
    """(file or test, reason) of the table. A row may name several."""
    return [(what, reason) for names, reason in ROW.findall(document) for what in re.findall(r"`([^`]+)`", names)]


def listed_by(emulator, program):
    """The names of a GoogleTest program's tests."""
    command = [emulator, program, "--gtest_list_tests"]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    found = set()
    suite = ""
    for line in text.splitlines():
        name = line.split("#")[0].strip()
        if line.startswith("  "):
            found.add(suite + name)
        elif name.endswith("."):
            suite = name
    return found


def passes(emulator, program, name):
    """Whether a test of a program passes. Each is tried by itself, since some crash."""
    command = [emulator, program, "--gtest_filter=" + name]
    no_debugger = {"WINEDLLOVERRIDES": "winedbg.exe=d"}
    try:
        done = subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=20, env={**os.environ, **no_debugger})
    except subprocess.TimeoutExpired:
        return False
    text = done.stdout
    return re.search(r"^\[       OK \] ", text, re.MULTILINE) is not None


def skipped_here(code):
    """Tests of a file that skip themselves on Windows."""
    bodies = [(match.group(1) + "." + match.group(2), match.group(3)) for match in check_tests.TEST.finditer(code)]
    return {name for name, body in bodies if "_WIN32" in body and "GTEST_SKIP" in body}


def on_disk(project):
    """(file, name) of every test, and the names of those that skip themselves on Windows."""
    found, skipped = [], set()
    for path in house.files(project, "tests"):
        if path.name.endswith("_test.cpp"):
            code = re.sub(r"//[^\n]*", "", house.read(path))
            found += [(path.relative_to(project).as_posix(), name) for name, _ in check_tests.tests_in(code)]
            skipped |= skipped_here(code)
    return found, skipped


def compare(tests, run, failing, rows):
    """`tests` as on_disk gives them; `run` the names of those that are run, `failing` of those that are left out and don't pass; `rows` as
    rows_of gives them."""
    found = ["%s: %s gives no reason" % (DOCUMENT, what) for what, reason in rows if not reason]
    needed = set(failing)
    for file, name in tests:
        if check_tests.is_run(name, run):
            continue
        row = next((what for what, _ in rows if what in (file, name)), None)
        needed.add(row)
        if row is None:
            found.append("%s: %s is not run on Windows, and %s does not say why" % (file, name, DOCUMENT))
    found += ["%s: %s need not be left out" % (DOCUMENT, what) for what, _ in rows if what not in needed]
    return found


def problems(project, emulator, *programs):
    rows = rows_of(house.read(project / DOCUMENT))
    left_out = {what for what, _ in rows}
    run, failing = set(), set()
    for program in programs:
        listed = listed_by(emulator, program)
        run |= listed - left_out
        failing |= {name for name in sorted(listed & left_out) if not passes(emulator, program, name)}
    tests, skipped = on_disk(project)
    return compare(tests, run - skipped, failing, rows)


if __name__ == "__main__":
    house.main(problems, "The suite on Windows")
