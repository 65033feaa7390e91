"""Reference files and stamps, seen by independent programs: a stamped workbook is read by one reader of workbooks, a ReferenceFile by one
reader of compound files, and calls that are killed leave the file old or new, whole.

TOLVENAR_NEWREF is the program that makes an empty ReferenceFile.
"""
import ctypes
import os
import random
import signal
import subprocess
import sys
import tempfile
import time
import unittest

try:
    import olefile
    import xlrd
    import xlwt
except ImportError as missing:
    print(f"SKIPPED: {missing}; scripts/install-packages brings it")
    sys.exit(77)

import tolvenar_host as host

KILLS = 100
u32, i16, i32, P = host.u32, host.i16, host.i32, host.P

LIB = host.LIB
for name, result, arguments in (
        ("XLCreateReference", i32, (ctypes.c_char_p,)), ("XLDeleteReference", i16, (ctypes.c_char_p, u32)),
        ("XLReadReference", i16, (ctypes.c_char_p, P(u32), P(u32), i32)), ("XLSaveReference", i16, (ctypes.c_char_p, P(u32), P(u32), i32)),
        ("XLInsertReference", i16, (P(u32), u32, P(u32), u32)), ("XLUnbindReference", i16, (u32, u32)),
        ("XLGetReference", i32, (ctypes.c_char_p,))):
    getattr(LIB, name).restype, getattr(LIB, name).argtypes = result, list(arguments)


def streams(path):
    """The streams of a compound file by name; the file must be without fault."""
    with olefile.OleFileIO(path) as file:
        assert not file.parsing_issues, file.parsing_issues
        return {entry[0]: file.openstream(entry).read() for entry in file.listdir()}


def listed(path):
    """The ids of a ReferenceFile, which has a stream for each of them and no other."""
    found = streams(path)
    contents = found.pop("Contents")
    records = [contents[at:at + 8] for at in range(0, len(contents), 8)]
    ids = [int.from_bytes(record[4:], "little") for record in records if record[0] == 0xFD]
    assert int.from_bytes(contents[4:8], "little") == len(ids)
    assert sorted(found) == sorted("%-8d" % one for one in ids), found.keys()
    return ids


def new_file(path):
    subprocess.run([os.environ["TOLVENAR_NEWREF"], path], check=True)


def make_workbook(path, formats):
    """A workbook of an independent writer; without `formats` its FORMAT records are renamed to a type that readers pass over."""
    book = xlwt.Workbook()
    for name in ("One", "Two"):
        book.add_sheet(name).write(3, 2, name + " here")
    book.save(path)
    if formats:
        return
    with open(path, "rb") as file:
        data = bytearray(file.read())
    at = 512  # the writer puts the stream first
    while data[at:at + 2] != b"\x0a\x00":
        if data[at:at + 2] == b"\x1e\x04":
            data[at:at + 2] = b"\xc0\x00"
        at += 4 + int.from_bytes(data[at + 2:at + 4], "little")
    with open(path, "wb") as file:
        file.write(data)


class Book:
    """The buffer of an open workbook and its table."""

    def __init__(self, path):
        self.path, self.buffer, self.table, self.size = path.encode(), u32(), u32(), u32()
        assert LIB.XLOpenFile(self.path, self.buffer, self.size) == 0
        assert LIB.XLLocateSheets(self.buffer, self.table, self.size) == 0

    def save(self):
        assert LIB.XLSaveFile(self.path, self.buffer, self.table, self.size) == 0
        LIB.MEMORYFREEALL()


class References(unittest.TestCase):
    def setUp(self):
        LIB.MEMORYFREEALL()
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.file = os.path.join(self.folder.name, "store.ref")
        self.book = os.path.join(self.folder.name, "book.xls")

    def sheets(self):
        with xlrd.open_workbook(self.book) as book:
            return {sheet.name: sheet.cell_value(3, 2) for sheet in book.sheets()}

    def test_a_new_file_takes_references(self):
        new_file(self.file)
        self.assertEqual(listed(self.file), [])
        self.assertEqual([LIB.XLCreateReference(self.file.encode()) for _ in range(3)], [1, 2, 3])
        self.assertEqual(LIB.XLDeleteReference(self.file.encode(), 2), 0)
        self.assertEqual(listed(self.file), [1, 3])
        self.assertEqual(LIB.XLCreateReference(self.file.encode()), 2)
        self.assertEqual(listed(self.file), [1, 3, 2])
        self.assertEqual({len(data) for name, data in streams(self.file).items() if name != "Contents"}, {32})

    def test_a_file_that_exists_is_not_made_anew(self):
        new_file(self.file)
        LIB.XLCreateReference(self.file.encode())
        again = subprocess.run([os.environ["TOLVENAR_NEWREF"], self.file], capture_output=True)
        self.assertEqual(again.returncode, 1)
        self.assertEqual(listed(self.file), [1])

    def test_a_stamped_workbook_is_whole_for_another_reader(self):
        for formats in (True, False):
            make_workbook(self.book, formats)
            book = Book(self.book)
            for number in (7, 12):
                self.assertEqual(LIB.XLInsertReference(book.buffer, book.table, book.size, number), 0)
            book.save()
            self.assertEqual(LIB.XLGetReference(self.book.encode()), 12)
            stream = streams(self.book)["Workbook"]
            self.assertEqual(stream.count(b'"Do not delete it!!!12      "'), 1)
            if not formats:
                self.assertEqual(stream[stream.index(b'Do not delete it!!!') + 28:][:4], b"\x0a\x00\x00\x00")
            self.assertEqual(self.sheets(), {"One": "One here", "Two": "Two here"})
            book = Book(self.book)
            self.assertEqual(LIB.XLUnbindReference(book.buffer, book.table), 0)
            book.save()
            self.assertEqual(LIB.XLGetReference(self.book.encode()), 0)
            self.assertEqual(self.sheets(), {"One": "One here", "Two": "Two here"})

    def test_calls_that_are_killed_leave_a_whole_file(self):
        new_file(self.file)
        path = self.file.encode()
        for _ in range(KILLS):
            child = os.fork()
            if child == 0:
                while True:
                    number = LIB.XLCreateReference(path)
                    buffer, size = u32(), u32()
                    LIB.XLReadReference(path, buffer, size, number)
                    LIB.XLSaveReference(path, buffer, size, number)
                    LIB.XLFreeHandle(buffer)
                    if random.random() < 0.8:
                        LIB.XLDeleteReference(path, number)
            time.sleep(random.random() * 0.03)
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            listed(self.file)
            for name, data in streams(self.file).items():
                if name != "Contents":
                    self.assertEqual((len(data), data[:2]), (32, b"\xff\x10"))
        self.assertGreater(len(listed(self.file)), 1, "no call was completed")


if __name__ == "__main__":
    unittest.main()
