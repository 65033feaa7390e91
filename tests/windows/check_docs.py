"""Builds the first host with the call that docs/windows.md tells; its import library is that of this build.

    check_docs.py PROJECT BUILD
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

PROJECT, BUILD = map(pathlib.Path, sys.argv[1:3])
text = (PROJECT / "docs/windows.md").read_text(encoding="utf-8")
call = re.search(r"^    (i686-w64-mingw32-gcc .*)$", text, re.MULTILINE).group(1)
with tempfile.TemporaryDirectory() as folder:
    work = pathlib.Path(folder)
    shutil.copyfile(PROJECT / "examples/first_host.c", work / "first_host.c")
    (work / "include").symlink_to(PROJECT / "include")
    (work / "build").mkdir()
    (work / "build/windows").symlink_to(BUILD)
    subprocess.run(["sh", "-c", call], cwd=work, check=True)
    program = (work / "first_host.exe").read_bytes()
if not program.startswith(b"MZ"):
    sys.exit("first_host.exe is no Windows program")
print("%s: %d bytes" % (call, len(program)))
