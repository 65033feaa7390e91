"""Compound files between this library and independent programs: gsf and olefile read what it wrote, it reads what gsf and xlwt wrote,
and a file built here by hand brings the version that neither of them writes.
"""
import os
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

try:
    import olefile
    import xlwt
except ImportError as missing:
    print(f"SKIPPED: {missing}; scripts/install-packages brings it")
    sys.exit(77)

TOOL = os.environ["TOLVENAR_COMPOUND_TOOL"]
GSF = shutil.which("gsf")
if GSF is None:
    print("SKIPPED: no gsf on this machine; scripts/install-packages brings it")
    sys.exit(77)

# Sizes around the mini sector, the sector, the cutoff, a full sector of the table, and a table whose list outgrows the header.
SIZES = [0, 1, 63, 64, 65, 511, 512, 4095, 4096, 4097, 511 * 128, 109 * 128 * 512, 20000000]


def run(*command):
    return subprocess.run(command, check=True, capture_output=True).stdout


def olefile_streams(path):
    """Every stream by its path, read by olefile, which must find nothing to complain about."""
    with olefile.OleFileIO(path, raise_defects=olefile.DEFECT_UNSURE) as file:
        assert not file.parsing_issues, file.parsing_issues
        return {"/".join(name): file.openstream(name).read() for name in file.listdir(storages=False)}


def gsf_listing(path):
    """Size of every stream by its path, as gsf lists them."""
    lines = run(GSF, "list", path).decode().splitlines()[1:]
    found = [re.fullmatch(r"(.)  (?:\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)? *(\d+) (.*)", line).groups() for line in lines]
    return {name: int(size) for kind, size, name in found if kind == "f"}


class Compound(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.path = self.place("file")
        self.random = random.Random(7)

    def place(self, name):
        return os.path.join(self.folder, name)

    def source(self, size):
        """A file of random bytes to be put into a stream: its path and its bytes."""
        content = self.random.randbytes(size)
        path = self.place(f"source{size}")
        with open(path, "wb") as file:
            file.write(content)
        return path, content

    def tool(self, command, *arguments):
        return run(TOOL, command, self.path, *arguments)

    def check(self, streams):
        """All three readers agree on the file."""
        self.assertEqual(olefile_streams(self.path), streams)
        self.assertEqual(gsf_listing(self.path), {name: len(content) for name, content in streams.items()})
        for name, content in streams.items():
            self.assertEqual(run(GSF, "cat", self.path, name), content, name)
            if "/" not in name:
                self.assertEqual(self.tool("get", name), content, name)


class WrittenHere(Compound):
    def test_a_stream_of_every_size_is_read_by_others(self):
        for size in SIZES:
            with self.subTest(size=size):
                source, content = self.source(size)
                self.path = self.place(f"file{size}")
                self.tool("create", f"Workbook={source}")
                self.check({"Workbook": content})

    def test_all_sizes_in_one_file_are_read_by_others(self):
        streams, words = {}, []
        for size in SIZES:
            source, content = self.source(size)
            streams[f"size {size}"] = content
            words.append(f"size {size}={source}")
        self.tool("create", *words)
        self.check(streams)

    def test_hundreds_of_streams_are_found_by_others(self):
        streams, words = {}, []
        for number in range(400):
            source, content = self.source(number * 20)
            streams[f"{number * 7919}"] = content
            words.append(f"{number * 7919}={source}")
        self.tool("create", *words)
        self.assertEqual(olefile_streams(self.path), streams)
        self.assertEqual(set(gsf_listing(self.path)), set(streams))
        for name in list(streams)[::40]:
            self.assertEqual(run(GSF, "cat", self.path, name), streams[name])

    def test_replaced_and_destroyed_streams_are_gone_for_others(self):
        small, first = self.source(100)
        large, second = self.source(9000)
        self.tool("create", f"a={small}", f"b={large}", f"c={small}")
        self.tool("put", f"A={large}", f"d={small}")
        self.tool("destroy", "B")
        self.check({"A": second, "c": first, "d": first})


class WrittenByOthers(Compound):
    def test_a_workbook_of_xlwt_keeps_its_bytes_and_takes_streams(self):
        book = xlwt.Workbook()
        sheet = book.add_sheet("Data")
        for row in range(300):
            for column in range(20):
                sheet.write(row, column, row * column)
        book.save(self.path)
        before = olefile_streams(self.path)
        self.assertEqual(self.tool("get", "workbook"), before["Workbook"])
        source, content = self.source(5000)
        self.tool("put", f"extra={source}")
        self.check({**before, "extra": content})

    def test_a_file_of_gsf_with_nested_storages_is_read_and_kept(self):
        os.makedirs(self.place("tree/outer/inner"))
        contents = {"outer/inner/deep": 5000, "outer/small": 77, "top": 4096, "none": 0}
        streams = {}
        for name, size in contents.items():
            source, streams[name] = self.source(size)
            shutil.copy(source, self.place("tree/" + name))
        subprocess.run([GSF, "createole", self.path, "outer", "top", "none"], check=True, capture_output=True,
                       cwd=self.place("tree"))
        self.assertEqual(olefile_streams(self.path), streams)
        self.assertEqual(self.tool("get", "TOP"), streams["top"])
        source, streams["added"] = self.source(600)
        self.tool("put", f"added={source}")
        self.check(streams)
        self.tool("destroy", "outer")
        self.check({name: content for name, content in streams.items() if "/" not in name})

    def test_a_version_4_file_stays_one(self):
        with open(self.path, "wb") as file:
            file.write(version_4_file(b"w" * 5000))
        self.assertEqual(self.tool("get", "Workbook"), b"w" * 5000)
        words, streams = [], {"Workbook": b"w" * 5000}
        for size in SIZES:
            source, streams[f"size {size}"] = self.source(size)
            words.append(f"size {size}={source}")
        self.tool("put", *words)
        self.check(streams)
        with open(self.path, "rb") as file:
            self.assertEqual(struct.unpack_from("<H", file.read(32), 26)[0], 4)


def version_4_file(content):
    """Sectors of 4096 bytes: the table, the directory, and two of one stream."""
    end, free = 0xFFFFFFFE, 0xFFFFFFFF
    header = bytes.fromhex("D0CF11E0A1B11AE1") + bytes(16) + struct.pack("<HHHHH", 0x3E, 4, 0xFFFE, 12, 6) + bytes(6)
    header += struct.pack("<IIIIIIIII", 1, 1, 1, 0, 4096, end, 0, end, 0) + struct.pack("<109I", 0, *[free] * 108)
    table = struct.pack("<1024I", 0xFFFFFFFD, end, 3, end, *[free] * 1020)

    def entry(name, kind, child, start, size):
        wide = name.encode("utf-16-le")
        return wide.ljust(64, b"\0") + struct.pack("<HBBIII", len(wide) + 2, kind, 1, free, free, child) + bytes(36) + \
            struct.pack("<IQ", start, size)

    directory = entry("Root Entry", 5, 1, end, 0) + entry("Workbook", 2, free, 2, len(content))
    return header.ljust(4096, b"\0") + table + directory.ljust(4096, b"\0") + content.ljust(8192, b"\0")


if __name__ == "__main__":
    unittest.main()
