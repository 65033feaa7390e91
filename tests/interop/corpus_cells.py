"""Real worksheets, read through XLGetVariantData and XLGetCellData and held against an independent reader, cell by cell.

Where the two have to agree, and where the library's rules say that they can't, is a matter of the record that holds the cell; each
class is counted, and the counts are printed. docs/readers-compared.md tells the classes and why.
"""
import os
import struct
import tempfile
import unittest
from collections import Counter, defaultdict

import corpus

corpus.require()

import olefile  # noqa: E402
import xlrd  # noqa: E402

import tolvenar_host as host  # noqa: E402

SINGLE = {0x01: "BLANK", 0x03: "NUMBER", 0x04: "LABEL", 0x05: "BOOLERR", 0x06: "FORMULA", 0x7E: "RK", 0xD6: "RSTRING", 0xFD: "LABELSST"}
FIRST_LOST_ROW = 32767  # a row from 32768 on is a negative index to the readers; the record's row is 0-based


class Cell:
    def __init__(self, kind, xf, payload, following_kind, following):
        self.kind, self.xf, self.payload = kind, xf, payload
        self.following_kind, self.following = following_kind, following


def cells_of(stream, bof):
    """(row, column) -> its Cells in stream order: a cell can be stored more than once."""
    found = defaultdict(list)
    for depth, kind, payload, following_kind, following in corpus.sheet_records(stream, bof):
        low = kind & 0xFF
        if depth != 1 or kind & 0x1000:
            continue
        if low in SINGLE and len(payload) >= 6:
            row, column, xf = struct.unpack_from("<HHH", payload)
            found[row, column].append(Cell(SINGLE[low], xf, payload, following_kind, following))
        elif low in (0xBD, 0xBE):
            width, name = (6, "MULRK") if low == 0xBD else (2, "MULBLANK")
            row, first = struct.unpack_from("<HH", payload)
            last = struct.unpack_from("<H", payload, len(payload) - 2)[0]
            for index in range(last - first + 1):
                xf = struct.unpack_from("<H", payload, 4 + width * index)[0]
                found[row, first + index].append(Cell(name, xf, payload, following_kind, following))
    return found


class SharedStrings:
    """The shared strings as records hold them, to tell which of them the library's reader can give whole."""

    def __init__(self, stream):
        self.readable = []
        for offset, kind, payload in corpus.records(stream):
            if kind == 0x00FC:
                self.scan(offset, payload)
            if kind == 0x000A:
                break

    def scan(self, offset, payload):
        place, previous = 8, 0
        while place + 3 <= len(payload):
            count, flags = struct.unpack_from("<HB", payload, place)
            rich, phonetic, wide = flags & 8, flags & 4, flags & 1
            # 8-bit, plain, read in the shape of its predecessor, at an offset that survives 16 bits
            self.readable.append(offset < 0x8000 and flags == 0 and previous == 0)
            if phonetic:
                return  # the reader takes the phonetic bytes for strings from here on
            runs = struct.unpack_from("<H", payload, place + 3)[0] if rich else 0
            place += 3 + (2 if rich else 0) + count * (2 if wide else 1) + 4 * runs
            if place > len(payload):
                self.readable.pop()
                return  # goes on in a CONTINUE
            previous = flags

    def has(self, index):
        return index < 0x8000 and index < len(self.readable) and self.readable[index]


def text(number):
    return ("%f" % number).encode("ascii")


class Comparison(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def expect_blank(self, records, ours, counts):
        if len(records) > 1:
            counts["out: blank stored behind another record of its cell"] += 1
            return
        self.assertIsNone(ours)
        counts[records[-1].kind] += 1

    def expect_format(self, records, ours, counts):
        """Shared strings give no XF; an earlier record of their cell may have given one."""
        stamped = [cell.xf for cell in records if cell.kind != "LABELSST"]
        self.assertEqual(ours, stamped[-1] if stamped else 0)
        counts["XF" if stamped else "out: XF of a shared string"] += 1

    def expect_value(self, cell, theirs, ours, strings, encoding):
        """Class of the cell, after the assertion that goes with it. A class that begins with 'out:' was not compared."""
        kind = cell.kind
        if kind in ("NUMBER", "RK", "MULRK"):
            self.assertEqual(ours, text(theirs))
        elif kind == "BOOLERR":
            value, is_error = cell.payload[6], cell.payload[7]
            self.assertEqual(ours, b"ERROR" if is_error == 1 else b" TRUE" if value else b"FALSE")
        elif kind == "RSTRING":
            self.assertEqual(ours.decode(encoding), theirs)
        elif kind == "LABEL":
            if cell.wide:
                return "out: wide label"
            self.assertEqual(ours[:len(ours) // 2].decode(encoding if encoding != "utf_16_le" else "latin-1"), theirs)
            self.assertEqual(ours[len(ours) // 2:], bytes(len(ours) // 2))
        elif kind == "LABELSST":
            index = struct.unpack_from("<I", cell.payload, 6)[0]
            if not strings.has(index):
                return "out: shared string beyond the reader's shape"
            self.assertEqual(ours.decode("latin-1"), theirs)
        else:
            return self.expect_formula(cell, theirs, ours)
        return kind

    def expect_formula(self, cell, theirs, ours):
        result = cell.payload[6:14]
        if result[6:] != b"\xff\xff":
            self.assertEqual(repr(ours), repr(struct.unpack("<d", result)[0]))
            self.assertEqual(repr(ours), repr(theirs))
            return "FORMULA number"
        if result[0] == 0:
            if cell.following_kind & 0xFF != 0x07:
                self.assertIsNone(ours)
                return "out: FORMULA string behind another record"
            self.assertEqual(ours, cell.following)
            return "FORMULA string"
        if result[0] in (1, 2):
            self.assertEqual(ours, b"FALSE" if result[0] == 1 else b"ERROR")
            return "FORMULA boolean or error"
        self.assertIsNone(ours)
        return "out: FORMULA result of another kind"

    def compare_sheet(self, book, number, sheet, found, strings, encoding, counts):
        values, formats = book.values(number), book.formats(number)
        self.assertIsNotNone(values)
        try:
            for (row, column), records in found.items():
                cell = records[-1]  # the last record of a cell wins, as in an array that is filled in stream order
                if row >= FIRST_LOST_ROW:
                    counts["out: row from 32768 on"] += 1
                    continue
                if row >= values.rows or (column + 1) * values.rows * 16 > values.rows * 16 * max(book.used_range(number)[3], 1):
                    counts["out: behind the used range"] += 1
                    continue
                cell.wide = book.version == 6 and cell.kind == "LABEL" and len(cell.payload) > 8 and cell.payload[8] & 1
                with self.subTest(f"{cell.kind} at row {row}, column {column}"):
                    ours = values.value(row + 1, column + 1)
                    if cell.kind.endswith("BLANK"):  # the independent reader keeps none of them
                        self.expect_blank(records, ours, counts)
                    else:
                        theirs = sheet.cell_value(row, column)
                        counts[self.expect_value(cell, theirs, ours, strings, encoding)] += 1
                    xf = struct.unpack("<I", formats.element(row + 1, column + 1))[0]
                    self.expect_format(records, xf, counts)
        finally:
            values.close()
            formats.close()

    def compare_book(self, entry, counts):
        path = corpus.copy_to(self.folder.name, entry)
        with open(os.devnull, "w", encoding="utf-8") as log:
            theirs = xlrd.open_workbook(path, logfile=log, formatting_info=False)
        with host.Workbook(path) as book:
            stream = book.stream()
            strings = SharedStrings(stream)
            book.version = host.LIB.XLGetNumVers(book.buffer, book.table)
            offsets = corpus.sheet_offsets(stream)
            worksheets = 0
            for number, (bof, kind) in enumerate(offsets, 1):
                if kind != 0:
                    continue
                sheet = theirs.sheet_by_index(theirs._all_sheets_map[number - 1])
                found = cells_of(stream, bof)
                self.compare_sheet(book, number, sheet, found, strings, theirs.encoding or "latin-1", counts)
                worksheets += 1
        return worksheets

    def test_every_worksheet_agrees_with_the_independent_reader(self):
        counts, worksheets = Counter(), 0
        for entry in corpus.entries(damaged=False):
            if entry["xlrd"] == "yes" and corpus.is_compound(entry) and "+" not in entry["stream"]:
                with self.subTest(entry["file"]):
                    worksheets += self.compare_book(entry, counts)
        for name, count in sorted(counts.items()):
            print(f"  {count:8} {name}")
        self.assertGreater(worksheets, 100)
        for needed in ("NUMBER", "RK", "MULRK", "FORMULA number", "LABEL", "LABELSST", "XF"):
            self.assertGreater(counts[needed], 0, needed)


if __name__ == "__main__":
    unittest.main()
