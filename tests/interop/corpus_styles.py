"""The style tables, row heights and column widths of real workbooks, held against the records and an independent reader.

Counts are those of the records, and of the XFs also those of the independent reader. Of heights and widths the library's arithmetic is
applied to what the independent reader gives: a ROW's height plus 1, 120 units a character. Sheets whose used range reaches beyond the
signed 16-bit row numbers fit no array, and are counted apart.
"""
import ctypes
import os
import struct
import tempfile
import unittest
from collections import Counter

import corpus

corpus.require()

import xlrd  # noqa: E402

import tolvenar_host as host  # noqa: E402

UNTOUCHED = 21555
LOW_BYTES = {0: (0xE0, 0x43), 1: (0x31,), 2: (0x1E,)}
BUILT_IN = {5: 17, 6: 36}

host.LIB.XLGetNumFormatItems.restype = host.u16
host.LIB.XLGetNumFormatItems.argtypes = [host.u32, host.u32, host.i16]
for reader in (host.LIB.XLGetRowHeight, host.LIB.XLGetColWidth):
    reader.restype = host.i16
    reader.argtypes = [host.P(ctypes.c_void_p), host.u32, host.u32, host.i16]


def globals_types(stream):
    for _, kind, _ in corpus.records(stream):
        if kind == 0x000A:
            return
        yield kind


def sizes(reader, book, number, last):
    """Code and elements of an array from 1 to `last`."""
    array = ctypes.c_void_p(host.LIB.SafeArrayCreate(host.VT_I2, 1, (host.Bound * 1)(host.Bound(last, 1))))
    data = ctypes.c_void_p()
    host.LIB.SafeArrayAccessData(array, ctypes.byref(data))
    ctypes.memmove(data, struct.pack("<h", UNTOUCHED) * last, 2 * last)
    code = reader(ctypes.byref(array), book.buffer, book.table, number)
    values = struct.unpack("<%dh" % last, ctypes.string_at(data.value, 2 * last))
    host.LIB.SafeArrayUnaccessData(array)
    host.LIB.SafeArrayDestroy(array)
    return code, list(values)


def last_of(stream, bof, kind):
    """Payload of the sheet's last record of this type at its own level, or None."""
    found = [payload for depth, one, payload, _, _ in corpus.sheet_records(stream, bof) if depth == 1 and one == kind]
    return found[-1] if found else None


class Styles(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def compare_counts(self, book, stream, theirs, version):
        kinds = Counter(kind & 0xFF for kind in globals_types(stream) if not kind & 0x1000)
        ours = [host.LIB.XLGetNumFormatItems(book.buffer, book.table, kind) for kind in range(3)]
        xfs, fonts, formats = (sum(kinds[low] for low in LOW_BYTES[kind]) for kind in range(3))
        self.assertEqual(ours, [xfs, fonts + 1 if fonts else 0, formats + BUILT_IN[version]])
        self.assertEqual(ours[0], len(theirs.xf_list))

    def compare_heights(self, book, number, stream, bof, sheet, last, counts):
        code, ours = sizes(host.LIB.XLGetRowHeight, book, number, last)
        self.assertEqual(code, 0)
        stated = last_of(stream, bof, 0x0225)
        wanted = [sheet.default_row_height if stated else UNTOUCHED] * last
        for row, info in sheet.rowinfo_map.items():
            if row < last:
                wanted[row] = info.height + 1
        # The library keeps the height's high bit, the independent reader masks it off.
        self.assertEqual([height & 0x7FFF for height in ours], [height & 0x7FFF for height in wanted])
        counts["rows"] += last

    def compare_widths(self, book, number, stream, bof, sheet, last, counts):
        code, ours = sizes(host.LIB.XLGetColWidth, book, number, last)
        self.assertEqual(code, 0)
        stated = last_of(stream, bof, 0x0055)
        wanted = [sheet.defcolwidth * 120 if stated else UNTOUCHED] * last
        for column, info in sheet.colinfo_map.items():
            if column < last:
                wanted[column] = info.width * 120 // 256
        self.assertEqual(ours, wanted)
        counts["columns"] += last

    def compare_book(self, entry, counts):
        path = corpus.copy_to(self.folder.name, entry)
        with open(os.devnull, "w", encoding="utf-8") as log:
            theirs = xlrd.open_workbook(path, logfile=log, formatting_info=True)
        with host.Workbook(path) as book:
            stream = book.stream()
            self.compare_counts(book, stream, theirs, host.LIB.XLGetNumVers(book.buffer, book.table))
            for number, (bof, kind) in enumerate(corpus.sheet_offsets(stream), 1):
                edges = book.used_range(number) if kind == 0 else None
                if edges is None:
                    continue
                sheet = theirs.sheet_by_index(theirs._all_sheets_map[number - 1])
                for last, compare in ((edges[1], self.compare_heights), (edges[3], self.compare_widths)):
                    if not 0 < last < 0x8000:
                        counts["out: an empty range, or one that fits no array"] += 1
                        continue
                    with self.subTest(f"{compare.__name__} of sheet {number}"):
                        compare(book, number, stream, bof, sheet, last, counts)
        counts["workbooks"] += 1

    def test_every_workbook_agrees_with_its_records_and_the_independent_reader(self):
        counts = Counter()
        for entry in corpus.entries(damaged=False):
            if entry["xlrd"] == "yes" and corpus.is_compound(entry) and "+" not in entry["stream"]:
                with self.subTest(entry["file"]):
                    self.compare_book(entry, counts)
        for name, count in sorted(counts.items()):
            print(f"  {count:8} {name}")
        self.assertGreater(counts["workbooks"], 20)
        self.assertGreater(counts["rows"], 1000)
        self.assertGreater(counts["columns"], 100)


if __name__ == "__main__":
    unittest.main()
