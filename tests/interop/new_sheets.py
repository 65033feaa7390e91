"""New workbooks and sheets, read by independent programs: every cell as the library promises to store it (single precision, dates
without time of day), and real workbooks to which a sheet is added, whose old sheets read as before.
"""
import ctypes
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

try:
    import xlrd
except ImportError as missing:
    print(f"SKIPPED: {missing}; scripts/install-packages brings it")
    sys.exit(77)

import corpus
import tolvenar_host as host

VT_R4, VT_CY, VT_DATE, VT_BOOL = 4, 6, 7, 11
BIFF5, BIFF8 = 5, 8
GENERAL, DATE = 15, 21  # XFs of a new workbook
MOST_ROWS = 65534
SLICE = 5000

u16, i16, u32, i32 = ctypes.c_uint16, ctypes.c_int16, ctypes.c_uint32, ctypes.c_int32
P = ctypes.POINTER


def declare(name, *arguments):
    function = getattr(host.LIB, name)
    function.restype, function.argtypes = i16, list(arguments)
    return function


create_book = declare("XLCreateEmptyBook", P(u32), P(u32), i32)
append_sheet = declare("XLAppendSheet", P(u32), P(u32), ctypes.c_char_p, i16, i16)
append_texts = declare("XLAppendFullSheet", P(u32), P(u32), ctypes.c_char_p, i16, i16, P(ctypes.c_char_p))
append_values = declare("XLAppendVariantSheet", P(u32), P(u32), ctypes.c_char_p, i16, i16, P(P(host.Variant)), P(u16))
begin_stages = declare("AppendVariantSheet1", P(u32), P(u32), ctypes.c_char_p)
open_sheet = declare("CreateVariantSheet1A", P(u32), P(u32), i32, i32, P(u32))
add_slice = declare("CreateVariantSheet2A", P(u32), P(u32), P(u32), u16, u16, u16, u16, P(host.Variant), P(u16))
close_sheet = declare("CreateVariantSheet3", P(u32), P(u32), P(u32))
end_stages = declare("AppendVariantSheet2", P(u32), P(u32), i16)
host.LIB.SysAllocStringLen.restype = ctypes.c_void_p
host.LIB.SysAllocStringLen.argtypes = [P(u16), u32]
host.LIB.SysFreeString.argtypes = [ctypes.c_void_p]


def single(number):
    """A double as it comes out of 32 bits."""
    return struct.unpack("<f", struct.pack("<f", number))[0]


class Values:
    """An array of VARIANTs of Python values: None, int, float, bytes (Latin-1), or a ready pair of type and 8 bytes."""

    def __init__(self, values):
        self.texts = []
        self.array = (host.Variant * max(len(values), 1))()
        for place, value in zip(self.array, values):
            place.vt, place.value = self.variant(value)

    def variant(self, value):
        if value is None:
            return host.VT_EMPTY, 0
        if isinstance(value, int):
            return host.VT_I4, value & 0xFFFFFFFF
        if isinstance(value, float):
            return host.VT_R8, struct.unpack("<Q", struct.pack("<d", value))[0]
        if isinstance(value, bytes):
            units = (u16 * len(value))(*value)
            self.texts.append(host.LIB.SysAllocStringLen(units, len(value)))
            return host.VT_BSTR, self.texts[-1]
        return value

    def addresses(self):
        return (P(host.Variant) * len(self.array))(*(ctypes.pointer(one) for one in self.array))

    def release(self):
        for text in self.texts:
            host.LIB.SysFreeString(text)


def date(day):
    return VT_DATE, struct.unpack("<Q", struct.pack("<d", day))[0]


class Book(host.Workbook):
    """A workbook that was made, not opened."""

    def __init__(self, selector):
        self.buffer, self.size, self.table = u32(), u32(), u32()
        assert create_book(self.buffer, self.size, selector) == 0

    def finish(self, path):
        self.locate()
        self.save(path)
        self.close()


def add_in_stages(book, name, columns, rows, cell, xf):
    """A sheet filled slice by slice; `cell` gives the value of (row, column)."""
    position = u32()
    sheet = begin_stages(book.buffer, book.size, name)
    assert sheet > 0, sheet
    assert open_sheet(book.buffer, book.size, columns, rows, position) == 0
    xf_array = (u16 * columns)(*xf)
    for first in range(0, rows, SLICE):
        count = min(SLICE, rows - first)
        values = Values([cell(row, column) for row in range(first, first + count) for column in range(columns)])
        assert add_slice(book.buffer, book.size, position, 0, first, columns, count, values.array, xf_array) == 0
        values.release()
    assert close_sheet(book.buffer, book.size, position) == 0
    assert end_stages(book.buffer, book.size, sheet) == sheet
    return sheet


def large_cell(row, column):
    """Texts, integers beyond single precision, fractions, dates with a time of day, and holes."""
    return (b"row %d" % row, 16777000 + row, row * 1.1, date(36526.75 + row), None)[column]


def large_expectation(row):
    return [f"row {row}", single(16777000 + row), single(row * 1.1), float(36526 + row), ""]


def without_country_check(book, data):
    """The reader insists that all COUNTRY records of a workbook are the same, and a sheet of values brings one of its own."""
    book.countries = struct.unpack_from("<HH", data)


xlrd.book.Book.handle_country = without_country_check


def read(path):
    with open(os.devnull, "w", encoding="utf-8") as log:
        return xlrd.open_workbook(path, logfile=log, formatting_info=True)


def contents(book):
    cells = {}
    for index, sheet in enumerate(book.sheets()):
        for row in range(sheet.nrows):
            for column in range(sheet.row_len(row)):
                kind = sheet.cell_type(row, column)
                if kind not in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                    cells[index, row, column] = (kind, repr(sheet.cell_value(row, column)))
    return cells


class InFolder(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

        host.LIB.MEMORYFREEALL()

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def path(self, name):
        return os.path.join(self.folder.name, name)


class LargeSheet(InFolder):
    XF = (GENERAL, GENERAL, GENERAL, DATE, GENERAL)

    def make(self, selector, rows):
        path = self.path(f"large{selector}.xls")
        book = Book(selector)
        add_in_stages(book, b"Large", 5, rows, large_cell, self.XF)
        book.finish(path)
        return path

    def check_every_cell(self, selector, rows):
        book = read(self.make(selector, rows))
        sheet = book.sheet_by_index(0)
        self.assertEqual((sheet.nrows, sheet.ncols), (rows, 5))
        for row in range(rows):
            self.assertEqual(sheet.row_values(row), large_expectation(row))
        self.assertEqual(list(sheet.row_types(rows - 1)), [xlrd.XL_CELL_TEXT, xlrd.XL_CELL_NUMBER, xlrd.XL_CELL_NUMBER,
                                                     xlrd.XL_CELL_DATE, xlrd.XL_CELL_BLANK])
        return book

    def test_biff5_every_cell_of_as_many_rows_as_its_generation_has(self):
        book = self.check_every_cell(BIFF5, 16384)
        self.assertEqual(book.sheet_names(), ["Large"])
        self.assertEqual(book.biff_version, 50)

    def test_biff8_every_cell_of_65534_rows(self):
        self.assertEqual(self.check_every_cell(BIFF8, MOST_ROWS).biff_version, 80)

    def test_biff5_and_biff8_65534_rows_by_a_second_reader(self):
        program = shutil.which("xls2csv")
        if program is None:
            self.skipTest("xls2csv (of catdoc) is not installed")
        for selector in (BIFF5, BIFF8):
            answer = subprocess.run([program, "-q", "0", "-f", "%Y-%m-%d", self.make(selector, MOST_ROWS)],
                                    capture_output=True, text=True, check=True)
            lines = answer.stdout.split("\n")[:MOST_ROWS]
            self.assertEqual(len(lines), MOST_ROWS)
            for row in range(MOST_ROWS):
                fields = lines[row].split(",")
                text, whole, fraction, _, _ = large_expectation(row)
                self.assertEqual(fields[0], text)
                self.assertEqual(float(fields[1]), whole)
                self.assertAlmostEqual(float(fields[2]), fraction, delta=1e-9 * max(1, fraction))

    def test_an_office_program_reads_the_same(self):
        program = shutil.which("soffice") or shutil.which("libreoffice")
        if program is None:
            self.skipTest("LibreOffice is not installed")
        path = self.make(BIFF5, 1000)
        profile = "-env:UserInstallation=file://" + self.path("profile")
        subprocess.run([program, profile, "--headless", "--convert-to", "csv", "--outdir", self.folder.name, path],
                       capture_output=True, check=True, timeout=180)
        with open(self.path("large5.csv"), encoding="utf-8") as file:
            lines = file.read().splitlines()
        self.assertEqual(len(lines), 1000)
        self.assertTrue(lines[999].startswith("row 999,16777999,"), lines[999])


# A value, and what a reader finds: None for nothing.
KINDS = (
    (None, ""),
    (7, 7.0),
    (16777217, 16777216.0),
    (0.1, 0.10000000149011612),
    (date(36526.75), 36526.0),
    (b"text", "text"),
    (b"", ""),
    (b"caf\xe9", "caf\u00e9"),
    ((VT_R4, struct.unpack("<I", struct.pack("<f", 2.5))[0]), 2.5),
    ((host.VT_I2, 0xFFFF), -1.0),
    ((VT_CY, struct.unpack("<Q", struct.pack("<d", 8.5))[0]), 8.5),
    ((VT_BOOL, 0xFFFF), ""),
)


class EveryWay(InFolder):
    def expect_kinds(self, sheet):
        self.assertEqual(sheet.row_values(0), [found for _, found in KINDS])
        self.assertEqual([sheet.cell_xf_index(0, column) for column in range(len(KINDS))], [GENERAL] * len(KINDS))

    def test_every_kind_of_value(self):
        for selector in (BIFF5, BIFF8):
            book, values = Book(selector), Values([value for value, _ in KINDS])
            xf = (u16 * len(KINDS))(*[GENERAL] * len(KINDS))
            self.assertEqual(append_values(book.buffer, book.size, b" One", len(KINDS), 1, values.addresses(), xf), 1)
            add_in_stages(book, b" Two", len(KINDS), 1, lambda _, column: KINDS[column][0], xf)
            values.release()
            path = self.path(f"kinds{selector}.xls")
            book.finish(path)
            found = read(path)
            self.expect_kinds(found.sheet_by_index(0))
            self.expect_kinds(found.sheet_by_index(1))

    def test_empty_sheets_and_names(self):
        book = Book(BIFF5)
        for number, name in enumerate((None, b"", b"Own", "caf\u00e9".encode("latin-1")), 1):
            self.assertEqual(append_sheet(book.buffer, book.size, name, 3, 4), number)
        book.finish(self.path("empty.xls"))
        found = read(self.path("empty.xls"))
        self.assertEqual(found.sheet_names(), ["Sheet1", "Sheet2", "Own", "caf\u00e9"])
        self.assertEqual(contents(found), {})
        selected = [sheet.sheet_selected for sheet in found.sheets()]
        self.assertEqual(selected, [0, 0, 0, 1])

    def test_texts(self):
        """A text begins with the zero byte that stands in front of it, in BIFF5 too, and so loses its last character there."""
        texts = [text + bytes(len(text)) for text in (b"Name", b"of", b"a", b"month")]
        for selector, wanted in ((BIFF5, ["\0Nam", "\0o", "\0", "\0mont"]), (BIFF8, ["Name", "of", "a", "month"])):
            book = Book(selector)
            array = (ctypes.c_char_p * 4)(*texts)
            self.assertEqual(append_texts(book.buffer, book.size, b" Texts", 2, 2, array), 1)
            path = self.path(f"texts{selector}.xls")
            book.finish(path)
            sheet = read(path).sheet_by_index(0)
            self.assertEqual(sheet.row_values(0) + sheet.row_values(1), wanted)


class SheetNames(InFolder):
    """In BIFF8 a reader takes the first byte of a new sheet's name for the option byte, and the byte to spare for its last."""

    def names(self, selector, *names):
        book = Book(selector)
        for name in names:
            self.assertGreater(append_sheet(book.buffer, book.size, name, 1, 1), 0)
        book.finish(self.path("names.xls"))
        return read(self.path("names.xls")).sheet_names()

    def test_biff5_names_are_read_as_given(self):
        self.assertEqual(self.names(BIFF5, b"Data", b"Products"), ["Data", "Products"])

    def test_biff8_names_lose_their_first_character(self):
        self.assertEqual(self.names(BIFF8, b"Products", b" Products"), ["roducts\0", "Products\0"])


class RealWorkbooks(InFolder):
    CELLS = [[b"added", 1.5], [7, None]]

    def add(self, book, way):
        """One of the ways to add a sheet of two columns and two rows; the name's blank is BIFF8's option byte."""
        cell = lambda row, column: self.CELLS[row][column]
        if way % 2 == 0:
            return add_in_stages(book, b" Added", 2, 2, cell, (0, 0))
        values = Values([cell(row, column) for row in range(2) for column in range(2)])
        sheet = append_values(book.buffer, book.size, b" Added", 2, 2, values.addresses(), (u16 * 2)(0, 0))
        values.release()
        return sheet

    def expect_added(self, path, before, numbers):
        """The old sheets in their order, and the new ones at their numbers. The reader numbers worksheets alone."""
        after = read(path)
        old, new = before._all_sheets_map, after._all_sheets_map
        order = list(range(len(old)))
        for number in numbers:
            order.insert(number - 1, None)
        self.assertEqual(len(new), len(order))
        moved = {new[place]: old[entry] for place, entry in enumerate(order) if entry is not None and old[entry] >= 0}
        old_cells = {(moved[place[0]],) + place[1:]: cell for place, cell in contents(after).items() if place[0] in moved}
        self.assertEqual(old_cells, contents(before))
        with host.Workbook(path) as book:
            for sheet in (place + 1 for place, entry in enumerate(order) if entry is None):
                cells = book.values(sheet)
                found = [cells.value(1, 1).rstrip(b"\0"), cells.value(1, 2), cells.value(2, 1)]
                cells.close()
                self.assertEqual(found, [b"added", b"1.500000", b"7.000000"])

    def check(self, entry, way):
        path = corpus.copy_to(self.folder.name, entry)
        before = read(path)
        with host.Workbook(path) as book:
            numbers = [self.add(book, way), self.add(book, way + 1)]
            host.LIB.XLFreeHandle(ctypes.byref(book.table))
            book.locate()
            book.save(path)
        self.expect_added(path, before, numbers)
        return numbers

    def test_old_sheets_read_as_before(self):
        if not os.path.isfile(os.path.join(corpus.FOLDER, "INDEX.tsv")):
            self.skipTest("no folder of real workbooks")
        checked = in_front = 0
        for entry in corpus.entries(damaged=False):
            if entry["xlrd"] == "yes" and corpus.is_compound(entry) and "+" not in entry["stream"]:
                with self.subTest(entry["file"]):
                    numbers = self.check(entry, checked)
                    checked += 1
                    in_front += numbers == [1, 2]
        print(f"  two sheets each added to {checked} workbooks, to {in_front} of them in front")
        self.assertGreater(checked, 30)


if __name__ == "__main__":
    unittest.main()
