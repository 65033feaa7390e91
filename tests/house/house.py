"""What the house checks share: the files of the project, their text without comments, and the way a check reports."""
import pathlib
import re
import subprocess
import sys

CODE = (".c", ".h", ".cpp")


def files(project, *folders, suffixes=CODE):
    """The files of these folders that belong to the project, in order; of the whole project without a folder."""
    found = []
    for path in _listed(project):
        inside = not folders or any(path.is_relative_to(project / folder) for folder in folders)
        if inside and path.suffix in suffixes:
            found.append(path)
    return found


def all_files(project):
    return _listed(project)


def _listed(project):
    """By git where there is a repository: tracked and new files, ignored ones left out. Else everything that isn't built."""
    command = ["git", "-C", str(project), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    if (project / ".git").exists():
        names = subprocess.run(command, check=True, capture_output=True).stdout.decode().split("\0")
        paths = [project / name for name in names if name]
    else:
        paths = [path for path in project.rglob("*") if "build" not in path.relative_to(project).parts]
    return sorted(path for path in paths if path.is_file())


def without_comments(text):
    """The text with comments and the insides of string literals blanked; line numbers stay."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def lines_matching(path, text, pattern, complaint, project):
    """One problem for every line of `text` that the pattern is found in."""
    return [
        "%s:%d: %s: %s" % (path.relative_to(project), number, complaint, line.strip())
        for number, line in enumerate(text.split("\n"), start=1)
        if re.search(pattern, line)
    ]


def read(path):
    return path.read_text(encoding="utf-8", errors="replace")


def main(problems, what):
    """Runs a check as a program: PROGRAM PROJECT [MORE ...]. Prints its problems and fails if there is one."""
    found = problems(pathlib.Path(sys.argv[1]).resolve(), *sys.argv[2:])
    for problem in found:
        print(problem)
    print("%s: %s" % (what, "%d problems" % len(found) if found else "as they should be"))
    sys.exit(1 if found else 0)
