"""Reference files and stamps, seen by independent programs: a stamped workbook is read by one reader of workbooks, a ReferenceFile by one
reader of compound files, and calls that are killed leave the file old or new, whole.

A full disk leaves the file as it was.

TOLVENAR_NEWREF is the program that makes an empty ReferenceFile.
"""
import ctypes
import errno
import os
import random
import shutil
import signal
import struct
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

KILLS = 300
VALUES = 3000  # records of the reference that is saved over and over
u32, i16, i32, P = host.u32, host.i16, host.i32, host.P

LIB = host.LIB
for name, result, arguments in (
        ("XLCreateReference", i32, (ctypes.c_char_p,)), ("XLDeleteReference", i16, (ctypes.c_char_p, u32)),
        ("XLReadReference", i16, (ctypes.c_char_p, P(u32), P(u32), i32)), ("XLSaveReference", i16, (ctypes.c_char_p, P(u32), P(u32), i32)),
        ("XLInsertReference", i16, (P(u32), u32, P(u32), u32)), ("XLUnbindReference", i16, (u32, u32)),
        ("XLGetReference", i32, (ctypes.c_char_p,)), ("XLRefreshReference", i16, (P(u32), P(u32))),
        ("MEMORYALLOC", u32, (i32,))):
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


def reference_stream(number, values):
    """A compact reference: one table of `values` values, each of them the number."""
    def record(low, *fields):
        return struct.pack("<HH%dI" % len(fields), 0x1000 | low, 4 * len(fields), *fields)

    table = struct.pack("<HHHhhhh", 0x10DF, 10, 1, 10, 1, 1, 1)
    table += b"".join(record(0xD4, cell, number, 0) for cell in range(1, values + 1)) + record(0xE0)
    directory = record(0xDA, 0) + record(0xDB, 0) + struct.pack("<HHHHI", 0x10DC, 8, 1, 1, 8) + record(0xFE, 0)
    return record(0xFF, 8 + len(table)) + table + directory


def save(path, number, reference, values=VALUES):
    """Saves a reference that is made for it; the result."""
    stream = reference_stream(number, values)
    buffer, size = u32(LIB.MEMORYALLOC(len(stream) + 4)), u32(len(stream) + 4)
    ctypes.memmove(buffer.value, stream + b"\xf8\xfe\x00\x00", size.value)
    result = LIB.XLSaveReference(path, buffer, size, reference)
    LIB.MEMORYFREEALL()
    return result


def saved_number(data):
    """The number of a saved reference, which is whole."""
    number = int.from_bytes(data[8 + 14 + 8:][:4], "little")
    values = (len(data) - 8 - 14 - 4 - 8 - 8 - 12 - 8) // 16
    assert data == reference_stream(number, values)
    return number


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
        # Where flushing is quick more calls are hit; what a kill leaves is the same everywhere.
        folder = tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None)
        self.addCleanup(folder.cleanup)
        self.file = os.path.join(folder.name, "store.ref")
        new_file(self.file)
        path = self.file.encode()
        self.assertEqual(LIB.XLCreateReference(path), 1)
        self.assertEqual(save(path, 1, 1), 0)
        chance = random.Random(6)
        numbers, lists, start = set(), set(), 1
        for _ in range(KILLS):
            seed = chance.random()
            child = os.fork()
            if child == 0:
                own = random.Random(seed)
                for number in range(start, start + 1000000):
                    made = LIB.XLCreateReference(path)
                    save(path, number, 1)
                    save(path, number, made, values=own.randrange(1, 40))
                    if own.random() < 0.8:
                        LIB.XLDeleteReference(path, made)
                os._exit(0)
            time.sleep(chance.uniform(0.0, 0.03))
            os.kill(child, signal.SIGKILL)
            os.waitpid(child, 0)
            lists.add(tuple(listed(self.file)))
            for name, data in streams(self.file).items():
                if name != "Contents" and len(data) != 32:
                    number = saved_number(data)
                    if name == "%-8d" % 1:
                        numbers.add(number)
                        start = number + 1
        self.assertGreater(len(numbers), KILLS // 20, "the kills hit no saves")
        self.assertGreater(len(lists), KILLS // 20, "the kills hit no creations and deletions")
        print(f"  {KILLS} kills; {len(numbers)} saves and {len(lists)} directories seen; in the folder: {os.listdir(folder.name)}")


class FullDisk(unittest.TestCase):
    """A small file system of its own, filled up to a number of free kilobytes. Each call is tried with ever more room: the file is what it
    was before a call that fails, byte for byte, and whole behind one that does not.
    """

    def setUp(self):
        LIB.MEMORYFREEALL()
        self.mount = tempfile.mkdtemp()
        made = self.mount_small()
        if made.returncode != 0:
            os.rmdir(self.mount)
            print(f"SKIPPED here: a small file system can't be mounted ({made.stderr.strip()})")
            self.skipTest("mount needs root")
        self.addCleanup(self.unmount)
        self.file = os.path.join(self.mount, "store.ref")
        self.path = self.file.encode()
        new_file(self.file)
        for reference in (1, 2, 3):
            self.assertEqual(LIB.XLCreateReference(self.path), reference)
        self.assertEqual(save(self.path, 1, 1), 0)

    def mount_small(self):
        return subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", self.mount], capture_output=True, text=True)

    def unmount(self):
        subprocess.run(["umount", self.mount], check=True)
        os.rmdir(self.mount)

    def leave_free(self, kilobytes):
        filler = os.path.join(self.mount, "filler")
        if os.path.exists(filler):
            os.remove(filler)
        folder = os.open(self.mount, os.O_RDONLY)
        os.fsync(folder)  # the blocks of the old filler are free only now
        os.close(folder)
        free = shutil.disk_usage(self.mount).free - kilobytes * 1024
        try:
            with open(filler, "wb", buffering=0) as file:
                file.write(bytes(max(free, 0)))  # as much of it as there is room for
                os.fsync(file.fileno())
        except OSError as failure:
            if failure.errno != errno.ENOSPC:
                raise

    def results(self, call, good):
        """What the call says by free kilobytes, from none to more than it needs. The first failures and the last results are as told."""
        with open(self.file, "rb") as file:
            before = file.read()
        told = {}
        for kilobytes in range(0, 160, 4):
            with open(self.file, "wb") as file:
                file.write(before)
            self.leave_free(kilobytes)
            told[kilobytes] = call()
            LIB.MEMORYFREEALL()
            with open(self.file, "rb") as file:
                self.assertEqual(file.read() == before, told[kilobytes] != good, (kilobytes, told))
            listed(self.file)
            self.assertEqual(set(os.listdir(self.mount)) - {"lost+found"}, {"store.ref", "filler"})
        print(f"  result by free kilobytes: {told}")
        self.assertNotEqual(told[0], good)
        self.assertEqual(told[156], good)
        return set(told.values())

    def test_a_creation(self):
        self.assertLessEqual(self.results(lambda: LIB.XLCreateReference(self.path), 4), {4, -8, -20, -21, -25, -26, -27})
        self.assertEqual(listed(self.file), [1, 2, 3, 4])

    def test_a_deletion(self):
        self.assertLessEqual(self.results(lambda: LIB.XLDeleteReference(self.path, 2), 0), {0, -20, -21, -27})
        self.assertEqual(listed(self.file), [1, 3])

    def test_a_save(self):
        self.assertLessEqual(self.results(lambda: save(self.path, 2, 1), 0), {0, 6, 103, 105})
        self.assertEqual(saved_number(streams(self.file)["%-8d" % 1]), 2)


class FullExt4(FullDisk):
    """The same on the file system of a disk, in an image."""

    def mount_small(self):
        image = tempfile.NamedTemporaryFile()
        self.addCleanup(image.close)
        image.truncate(2 << 20)
        mkfs = shutil.which("mkfs.ext4") or "/usr/sbin/mkfs.ext4"
        if not os.path.exists(mkfs):
            return subprocess.CompletedProcess([], 1, "", "no mkfs.ext4")
        made = subprocess.run([mkfs, "-q", "-m", "0", image.name], capture_output=True, text=True)
        if made.returncode != 0:
            return made
        return subprocess.run(["mount", "-o", "loop", image.name, self.mount], capture_output=True, text=True)


if __name__ == "__main__":
    unittest.main()
