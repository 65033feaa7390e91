"""Includes point only downward, and programs that stand for a host know nothing but the public headers."""
import re

import house

BELOW_WORKBOOK = {"platform", "foundation"}
UP_TO_WORKBOOK = BELOW_WORKBOOK | {"workbook"}
UP_TO_QUERY = UP_TO_WORKBOOK | {"query"}

# Layer: what it may include beside itself and the public headers. The five layers above the workbook are siblings and do not know each
# other, but for the queries, which chart, sheet and edit may ask.
MAY_INCLUDE = {
    "platform": set(),
    "foundation": {"platform"},
    "workbook": BELOW_WORKBOOK,
    "query": UP_TO_WORKBOOK,
    "chart": UP_TO_QUERY,
    "sheet": UP_TO_QUERY,
    "edit": UP_TO_QUERY,
    "reference": UP_TO_WORKBOOK,
    "exports": UP_TO_QUERY | {"chart", "sheet", "edit", "reference"},
}
HOSTS = ("tests/host", "tests/install", "examples")
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def includes(path):
    text = house.read(path)
    return [(text.count("\n", 0, match.start(1)) + 1, match.group(1)) for match in INCLUDE.finditer(text)]


def layer_problem(layer, folder, name):
    """What is wrong with a file of `layer` (in `folder` below it) including `name`; None if nothing is."""
    target = name.split("/")[0]
    if target == "tolvenar":
        return None
    if "/" not in name or target not in MAY_INCLUDE:
        return "an include names its layer, as in foundation/record_stream.h"
    if target != layer and target not in MAY_INCLUDE[layer]:
        return "%s may not include %s" % (layer, target)
    below = name.split("/")[1:-1]
    if target == "platform" and below and below[0] != folder:
        return "what lies in platform/%s is known there alone" % below[0]
    return None


def source_problems(project):
    found = []
    for path in house.files(project, "src"):
        parts = path.relative_to(project / "src").parts
        if parts[0] not in MAY_INCLUDE:
            found.append("src/%s: no such layer" % "/".join(parts))
            continue
        folder = parts[1] if len(parts) > 2 else ""
        for line, name in includes(path):
            problem = layer_problem(parts[0], folder, name)
            if problem:
                found.append("%s:%d: %s (%s)" % (path.relative_to(project), line, problem, name))
    return found


def host_problems(project):
    found = []
    for path in house.files(project, *HOSTS):
        for line, name in includes(path):
            if not name.startswith("tolvenar/") and not (path.parent / name).exists():
                found.append("%s:%d: a host includes public headers only (%s)" % (path.relative_to(project), line, name))
    return found


def problems(project):
    return source_problems(project) + host_problems(project)


if __name__ == "__main__":
    house.main(problems, "Includes")
