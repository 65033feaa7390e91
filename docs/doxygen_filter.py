"""Prints a public header as Doxygen wants it: each comment that stands before a declaration documents it, each "---- Title ----" begins a group.

The comments are laid out by hand, with tables and lists of results, so their text is passed on as it stands.
"""
import re
import sys

COMMENT = re.compile(r"^/\*(.*?)\*/[ \t]*\n", re.MULTILINE | re.DOTALL)
TITLE = re.compile(r"^-{3,} (.+?) -{3,}\s*", re.DOTALL)
groups = 0


def as_text(comment):
    lines = [re.sub(r"^ \*? ?", "", line) for line in comment.strip().split("\n")]
    return "\n".join(lines).strip("\n")


def documented(match):
    global groups
    text = as_text(match.group(1))
    title = TITLE.match(text)
    if title is None:
        return "/** @verbatim\n%s\n@endverbatim */\n" % text if text else ""
    close = "/** @} */\n" if groups else ""
    groups += 1
    body = text[title.end():].strip("\n")
    return "%s/** @defgroup g%d %s\n%s@{ */\n" % (
        close, groups, title.group(1), "@verbatim\n%s\n@endverbatim\n" % body if body else "")


with open(sys.argv[1], encoding="utf-8") as file:
    source = COMMENT.sub(documented, file.read())
if groups:
    end = source.rindex("#ifdef __cplusplus")
    source = source[:end] + "/** @} */\n" + source[end:]
first = "/** @file\n" if "@verbatim" in source else ""
sys.stdout.write(source.replace("/** @verbatim\n", first + "@verbatim\n" if first else "/** @verbatim\n", 1))
