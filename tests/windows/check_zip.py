"""The zip that cpack makes for Windows holds what a host needs: the DLL, its import library, the headers, the Visual Basic declarations.

    check_zip.py CPACK BUILD PROJECT
"""
import glob
import os
import subprocess
import sys
import tempfile
import zipfile

CPACK, BUILD, PROJECT = sys.argv[1:4]
WANTED = {  # in the zip, below its one folder: where its bytes come from, or None where stripping changes them
    "bin/tolvenar.dll": None,
    "lib/libtolvenar.dll.a": None,
    "include/tolvenar/tolvenar.h": "include/tolvenar/tolvenar.h",
    "include/tolvenar/automation.h": "include/tolvenar/automation.h",
    "vb/tolvenar.bas": "examples/vb/tolvenar.bas",
}


def read(path):
    with open(path, "rb") as file:
        return file.read()


with tempfile.TemporaryDirectory() as folder:
    subprocess.run([CPACK, "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-G", "ZIP", "-B", folder], check=True,
                   stdout=subprocess.DEVNULL)
    (package,) = glob.glob(os.path.join(folder, "*.zip"))
    with zipfile.ZipFile(package) as archive:
        names = {name.split("/", 1)[1]: name for name in archive.namelist()}
        missing = sorted(set(WANTED) - set(names))
        if missing:
            sys.exit("%s lacks %s; it has %s" % (os.path.basename(package), missing, sorted(names)))
        for name, source in WANTED.items():
            if source is not None and archive.read(names[name]) != read(os.path.join(PROJECT, source)):
                sys.exit("%s in the zip differs from %s" % (name, source))
        if not archive.read(names["bin/tolvenar.dll"]).startswith(b"MZ"):
            sys.exit("bin/tolvenar.dll is no DLL")
print("%s: %s" % (os.path.basename(package), ", ".join(sorted(names))))
