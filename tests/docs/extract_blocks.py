"""Takes the blocks of C out of a document, in their order, as one source that a test compiles.

    extract_blocks.py DOCUMENT.md OUT.h
"""
import pathlib
import re
import sys

document, out = map(pathlib.Path, sys.argv[1:])
text = document.read_text(encoding="utf-8")
parts = []
for match in re.finditer(r"^```c\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
    line = text.count("\n", 0, match.start(1)) + 1
    parts.append('#line %d "%s"\n%s' % (line, document.name, match.group(1)))
if not parts:
    sys.exit("%s has no block of C" % document.name)
out.write_text("\n".join(parts), encoding="utf-8")
