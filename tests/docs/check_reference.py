"""Makes the API reference and looks each export up in it, with a result among what is said.

    check_reference.py PROJECT OUT
"""
import html
import os
import pathlib
import re
import shutil
import subprocess
import sys

PROJECT, OUT = map(pathlib.Path, sys.argv[1:])
shutil.rmtree(OUT, ignore_errors=True)
OUT.mkdir(parents=True)
answer = subprocess.run(["doxygen", "docs/Doxyfile"], cwd=PROJECT, env=dict(os.environ, TOLVENAR_DOCS=str(OUT)), capture_output=True, text=True)
if answer.returncode or answer.stderr:
    sys.exit("Doxygen is not content:\n" + answer.stderr)
pages = "".join(html.unescape(re.sub(r"<[^>]+>", "", page.read_text(encoding="utf-8"))) for page in (OUT / "html").glob("group__*.html"))
exports = re.findall(r"^\s+(\w+)$", (PROJECT / "src/exports/tolvenar.def").read_text(encoding="utf-8"), re.MULTILINE)
missing = []
for name in exports:
    described = re.search(r"\u25c6\s*%s\(\)(.*?)(\u25c6|\Z)" % name, pages, re.DOTALL)
    if described is None or "Result" not in described.group(1):
        missing.append(name)
print("%d exports, %d without a description that tells the result: %s" % (len(exports), len(missing), missing))
sys.exit(1 if missing or not exports else 0)
