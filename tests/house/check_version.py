"""The version stands in the public header; the changelog begins with it, and what the README asks for can be had."""
import re

import house

NUMBER = r"^#define TOLVENAR_VERSION_%s ([0-9]+)$"


def stated_version(project):
    header = house.read(project / "include/tolvenar/tolvenar.h")
    return [re.search(NUMBER % part, header, re.MULTILINE).group(1) for part in ("MAJOR", "MINOR", "PATCH")]


def problems(project):
    version = stated_version(project)
    found = []
    latest = re.search(r"^## ([0-9.]+)", house.read(project / "CHANGELOG.md"), re.MULTILINE).group(1)
    if latest != ".".join(version):
        found.append("CHANGELOG.md: begins with %s, the header states %s" % (latest, ".".join(version)))
    asked = re.search(r"find_package\(tolvenar ([0-9.]+)", house.read(project / "README.md")).group(1)
    if asked != ".".join(version[:2]):
        found.append("README.md: asks for %s, the header states %s" % (asked, ".".join(version)))
    for path in house.files(project, "cmake", suffixes=(".cmake", ".in")) + [project / "CMakeLists.txt"]:
        found += house.lines_matching(path, house.read(path), r"tolvenar VERSION [0-9]|SOVERSION [0-9]",
                                      "a version that the header should state", project)
    return found


if __name__ == "__main__":
    house.main(problems, "The version")
