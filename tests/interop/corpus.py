"""The folder of real workbooks: its index, and a reader of BIFF records that shares nothing with the library.

The workbooks are third parties' and are read where they are; a test copies one to a temporary folder before it opens it.
"""
import csv
import os
import shutil
import struct
import sys

FOLDER = os.environ.get("TOLVENAR_CORPUS", "")
SKIP = 77  # exit status by which ctest knows a skipped test


def require():
    """Ends the test as skipped, in one loud line, where the folder is absent."""
    if not os.path.isfile(os.path.join(FOLDER, "INDEX.tsv")):
        print(f"SKIPPED: no folder of real workbooks at {FOLDER or '(TOLVENAR_CORPUS is not set)'}")
        sys.exit(SKIP)


def entries(damaged=None):
    """Rows of the index as dictionaries; `damaged` False leaves out those marked so, True keeps only them."""
    with open(os.path.join(FOLDER, "INDEX.tsv"), encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))
    if damaged is None:
        return rows
    return [row for row in rows if (row["damaged"] == "yes") == damaged]


def is_compound(entry):
    return entry["stream"] != "-"


def copy_to(folder, entry):
    return shutil.copyfile(os.path.join(FOLDER, entry["file"]), os.path.join(folder, entry["file"]))


def records(stream, offset=0):
    """(offset, type, payload) of each record from `offset` on, up to the first that runs past the stream."""
    while offset + 4 <= len(stream):
        kind, length = struct.unpack_from("<HH", stream, offset)
        if offset + 4 + length > len(stream):
            return
        yield offset, kind, stream[offset + 4:offset + 4 + length]
        offset += 4 + length


def sheet_offsets(stream):
    """(BOF offset, sheet type) of each BOUNDSHEET."""
    found = []
    for _, kind, payload in records(stream):
        if kind == 0x0085:
            found.append((struct.unpack_from("<I", payload)[0], payload[5]))
        if kind == 0x000A:
            break
    return found


def sheet_records(stream, bof):
    """(depth, type, payload, following type, following payload) of the sheet at `bof`, up to its EOF."""
    depth = 0
    run = list()
    for _, kind, payload in records(stream, bof):
        if kind & 0x10FF == 0x09:
            depth += 1
        run.append((depth, kind, payload))
        if kind & 0x10FF == 0x0A:
            depth -= 1
            if depth == 0:
                break
    for index, (level, kind, payload) in enumerate(run):
        following = run[index + 1] if index + 1 < len(run) else (0, 0, b"")
        yield level, kind, payload, following[1], following[2]
