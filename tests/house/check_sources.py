"""How a source file looks: it says first what it is for, it is short, it reads bytes without casts, and the exports only forward."""
import re

import house

LONGEST_FILE = 600
CASTS = r"pragma\s+pack|reinterpret_cast<[^>]*int(16|32|64)_t"
DECISIONS = r"\b(if|for|while|switch)\b"
PURPOSE = re.compile(r"(//|/\*)\s*\S.{14,}")


def says_its_purpose(text):
    return PURPOSE.match(text) is not None


def problems(project):
    found = []
    for path in house.files(project, "src", "tests", "fuzz", "bench", "examples"):
        name = path.relative_to(project)
        text = house.read(path)
        if not says_its_purpose(text):
            found.append("%s: does not begin with a comment that says what it is for" % name)
        if text.count("\n") > LONGEST_FILE:
            found.append("%s: has more than %d lines" % (name, LONGEST_FILE))
        code = house.without_comments(text)
        if name.parts[0] == "src":
            found += house.lines_matching(path, code, CASTS, "bytes are read through platform/bytes.h", project)
        if name.parts[:2] == ("src", "exports"):
            found += house.lines_matching(path, code, DECISIONS, "an export only forwards", project)
    return found


if __name__ == "__main__":
    house.main(problems, "Source files")
