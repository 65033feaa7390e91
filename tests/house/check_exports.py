"""The exports agree: what the headers declare, what the lists name, what the shared library gives, and whose types are held fast.

    check_exports.py PROJECT LIBRARY [READELF NM]
"""
import re
import subprocess

import house

SONAME = "libtolvenar.so.1"
DECLARATION = re.compile(r"^TOLVENAR_API\b[^;(]*?\b(\w+)\(", re.MULTILINE)
PROTOTYPE = re.compile(r"\bTOLVENAR_(?:CALL|CDECL) (\w+)\(")
COMMENT = re.compile(r"/\*(?:(?!\*/).)*\*/", re.DOTALL)


def declared(header):
    """Names that a public header declares, in its order."""
    return DECLARATION.findall(COMMENT.sub("", header))


def held_fast(text):
    """Names that the file of prototypes declares once more; the compiler compares their types."""
    return PROTOTYPE.findall(COMMENT.sub("", text))


def in_def_file(text):
    return re.findall(r"^  (\w+)$", text, re.MULTILINE)


def in_name_list(text):
    return re.findall(r"^(\w+)$", text, re.MULTILINE)


def compare(left, left_names, right, right_names):
    found = ["%s: named twice in %s" % (name, left) for name in sorted(set(left_names)) if left_names.count(name) > 1]
    found += ["%s: in %s, but not in %s" % (name, left, right) for name in left_names if name not in right_names]
    found += ["%s: in %s, but not in %s" % (name, right, left) for name in right_names if name not in left_names]
    return found


def undocumented(header):
    """Declarations without a comment right above them that tells the results."""
    found = []
    for match in DECLARATION.finditer(header):
        above = header[: match.start()].rstrip()
        comment = above[above.rfind("/*"):] if above.endswith("*/") else ""
        if "Result" not in comment:
            found.append("%s: no comment with its Result in the header" % match.group(1))
    return found


def given(library, nm):
    """Names that the shared library gives to whoever loads it."""
    text = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return [line.split()[-1].split("@")[0] for line in text.splitlines() if line.split()[-2] != "A"]


def soname(library, readelf):
    text = subprocess.run([readelf, "-d", library], check=True, capture_output=True, text=True).stdout
    match = re.search(r"\(SONAME\).*\[(.*)\]", text)
    return match.group(1) if match else "none"


def problems(project, library, readelf="readelf", nm="nm"):
    header = house.read(project / "include/tolvenar/tolvenar.h")
    automation = declared(house.read(project / "include/tolvenar/automation.h"))
    exports = in_def_file(house.read(project / "src/exports/tolvenar.def"))
    names = in_name_list(house.read(project / "src/exports/automation.exports"))
    found = compare("tolvenar.def", exports, "tolvenar.h", declared(header))
    found += compare("prototypes_c11.c", held_fast(house.read(project / "tests/host/prototypes_c11.c")), "tolvenar.h", declared(header))
    found += compare("automation.exports", names, "automation.h", automation)
    found += compare("the lists", exports + names, "the shared library", given(library, nm))
    found += undocumented(header)
    if soname(library, readelf) != SONAME:
        found.append("the library calls itself %s, not %s" % (soname(library, readelf), SONAME))
    return found


if __name__ == "__main__":
    house.main(problems, "Exports")
