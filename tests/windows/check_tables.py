"""The tables of the DLL: it imports from the system only, it exports the plain names of the list and no others, and the import library
leads a C host's decorated names to them. Visual Basic's declarations pass as many bytes as the exports take off the stack.

    check_tables.py PROJECT DLL IMPORT_LIBRARY OBJDUMP NM
"""
import pathlib
import re
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "house"))

import check_exports
import house

MAY_IMPORT_FROM = {"kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"}
CDECL = {"XLEXTLabel", "XLSGetVariantData"}
DECLARE = re.compile(r"^(?:' )?Public Declare (?:Sub|Function) (\w+) Lib \"[^\"]*\" \((.*?)\)(?: As \w+)?$", re.MULTILINE)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def imported_from(headers):
    return {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}


def exported(headers):
    table = headers.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    return re.findall(r"^\s*\[\s*\d+\]\s+(\S+)$", table, re.MULTILINE)


def decorated(symbols):
    """Name of an export: the bytes of its arguments by the import library, None for cdecl."""
    found = re.findall(r"^\w* T _(\w+?)(?:@(\d+))?$", symbols, re.MULTILINE)
    return {name: int(size) if size else None for name, size in found}


def declared_sizes(module):
    """Name of an export: the bytes that Visual Basic passes. An address and a small number take 4, a Double by value 8."""
    text = re.sub(r" _\n('? +)", " ", module.replace("\r\n", "\n"))
    text = re.sub(r"(\w)\(\) As", r"\1 As", text)
    return {
        name: sum(8 if re.fullmatch(r"ByVal \w+ As Double", one) else 4 for one in arguments.split(", ") if one)
        for name, arguments in DECLARE.findall(text)
    }


def convention_problems(names, sizes, declares):
    found = []
    for name in names:
        if name not in sizes:
            found.append("%s: not in the import library" % name)
        elif (sizes[name] is None) != (name in CDECL):
            found.append("%s: has the wrong calling convention" % name)
        elif name not in declares:
            found.append("%s: Visual Basic has no declaration of it" % name)
        elif sizes[name] not in (None, declares[name]):
            found.append("%s: Visual Basic passes %d bytes and it takes %d" % (name, declares[name], sizes[name]))
    return found


def problems(project, dll, import_library, objdump, nm):
    names = check_exports.in_def_file(house.read(project / "src/exports/tolvenar.def"))
    headers = run(objdump, "-p", dll)
    found = ["imports from %s" % name for name in sorted(imported_from(headers) - MAY_IMPORT_FROM)]
    found += check_exports.compare("tolvenar.def", names, "the DLL", exported(headers))
    declares = declared_sizes((project / "examples/vb/tolvenar.bas").read_bytes().decode("ascii"))
    return found + convention_problems(names, decorated(run(nm, import_library)), declares)


if __name__ == "__main__":
    house.main(problems, "Tables of the DLL")
