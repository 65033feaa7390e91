"""The first program in README.md is examples/first_host.c, byte for byte, and every file that a document links to is there."""
import re

import house

SAMPLE = "examples/first_host.c"
LINK = re.compile(r"\[[^\]]*\]\(([^)#:\s]+)(?:#[^)]*)?\)")


def code_blocks(text):
    return re.findall(r"^```c\n(.*?)^```", text, re.MULTILINE | re.DOTALL)


def sample_problems(readme, sample):
    return [] if sample in code_blocks(readme) else ["README.md: does not show %s as it is" % SAMPLE]


def dead_links(project):
    found = []
    for path in house.files(project, suffixes=(".md",)):
        for target in LINK.findall(house.read(path)):
            if not (path.parent / target).exists():
                found.append("%s: links to %s, which is not there" % (path.relative_to(project), target))
    return found


def problems(project):
    return sample_problems(house.read(project / "README.md"), house.read(project / SAMPLE)) + dead_links(project)


if __name__ == "__main__":
    house.main(problems, "Documents")
