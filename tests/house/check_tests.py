"""Every test on disk is one that ctest runs; none is switched off; test bodies are short enough to read.

    check_tests.py PROJECT BUILD [CTEST]
"""
import json
import re
import subprocess

import house

LONGEST_BODY = 25
TEST = re.compile(r"^(?:TEST|TEST_F|TEST_P|TYPED_TEST)\(\s*(\w+)\s*,\s*(\w+)\s*\)(.*?)^}", re.MULTILINE | re.DOTALL)
OFF = r"\bDISABLED_|^\s*#\s*if\s+0\b|--gtest_filter"
SILENT_SKIP = r"GTEST_SKIP\(\)\s*;"


DIRECTIVE = re.compile(r"^\s*#\s*(if|ifdef|ifndef|else|endif)\b(.*)")


def off_windows(text):
    """The text without what is compiled on Windows alone."""
    kept, skipping = [], []  # for each open #if: whether its present branch is Windows' own; None for conditions of another kind
    for line in text.split("\n"):
        match = DIRECTIVE.match(line)
        kind = match.group(1) if match else ""
        if kind.startswith("if"):
            of_windows = "_WIN32" in match.group(2)
            negated = kind == "ifndef" or "!" in match.group(2)
            skipping.append(not negated if of_windows else None)
        elif kind == "else" and skipping and skipping[-1] is not None:
            skipping[-1] = not skipping[-1]
        elif kind == "endif" and skipping:
            skipping.pop()
        kept.append("" if True in skipping else line)
    return "\n".join(kept)


def tests_in(text):
    """(name, lines of its body) of the tests of a file."""
    return [("%s.%s" % match.group(1, 2), match.group(3).count("\n") - 1) for match in TEST.finditer(text)]


def listed_by_ctest(build, ctest):
    command = [ctest, "--test-dir", build, "--show-only=json-v1"]
    answer = json.loads(subprocess.run(command, check=True, capture_output=True, text=True).stdout)
    return [test["name"] for test in answer["tests"]]


def is_run(name, listed):
    """A test with parameters is listed once for each, as Prefix/Suite.Name/0, a typed one as Suite/0.Name."""
    suite, test = name.split(".")
    pattern = re.compile(r"(?:.*/)?%s(?:/\w+)?\.%s(?:/.*)?(?: .*)?" % (suite, test))
    return name in listed or any(pattern.fullmatch(one) for one in listed)


def file_problems(project, path, listed):
    name = path.relative_to(project)
    text = house.read(path)
    code = re.sub(r"//[^\n]*", "", text)
    tests = tests_in(off_windows(code))
    found = [] if tests else ["%s: holds no test" % name]
    found += ["%s: %s is not run by ctest" % (name, test) for test, _ in tests if not is_run(test, listed)]
    found += ["%s: %s has %d lines" % (name, test, lines) for test, lines in tests if lines > LONGEST_BODY]
    found += house.lines_matching(path, code, OFF, "a test that is switched off", project)
    found += house.lines_matching(path, code, SILENT_SKIP, "a skipped test says why", project)
    return found


def problems(project, build, ctest="ctest"):
    listed = set(listed_by_ctest(build, ctest))
    found = []
    for path in house.files(project, "tests"):
        if path.name.endswith("_test.cpp"):
            found += file_problems(project, path, listed)
    return found


if __name__ == "__main__":
    house.main(problems, "Tests")
