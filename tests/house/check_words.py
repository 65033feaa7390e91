"""No file speaks of things outside the project: folders of one machine, or papers and people that a reader can't ask."""
import house

# The brackets keep this list from finding itself.
WORDS = "|".join((
    r"\b[s]pec(s|ification|ifications)?\b",
    r"\b[P]art [0-9]",
    r"\b[S]ubsystem [0-9]",
    r"\b[iI]ssues?\b",
    r"\b[sS]essions?\b",
    r"\b([b]rief|[d]esign|[s]tyle|[i]nterface)\.md\b",
))
# A folder that everyone has, and where a name of the corpus may stand.
PATHS = r"(?<![\w.}\])$*-])/([w]ork|[h]ome|[r]oot|[U]sers|[t]mp)/"
CORPUS = r"[s]hared/corpus"
CORPUS_MAY_STAND_IN = "tests/CMakeLists.txt"
BINARY = (".xls", ".bin", ".png")


def problems(project):
    found = []
    for path in house.all_files(project):
        if path.suffix in BINARY:
            continue
        name = path.relative_to(project).as_posix()
        text = house.read(path)
        found += house.lines_matching(path, text, WORDS, "a word that does not belong here", project)
        found += house.lines_matching(path, text, PATHS, "a folder of one machine", project)
        if name != CORPUS_MAY_STAND_IN:
            found += house.lines_matching(path, text, CORPUS, "the corpus is known by its variable alone", project)
    return found


if __name__ == "__main__":
    house.main(problems, "Words")
