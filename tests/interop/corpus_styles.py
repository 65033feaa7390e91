"""The style tables, row heights, column widths and zooms of real workbooks, held against the records and an independent reader.

Counts are those of the records and of the independent reader. Of heights and widths the library's arithmetic is applied to what the
independent reader gives: a ROW's height plus 1, 120 units a character. Sheets whose used range reaches beyond the signed 16-bit row
numbers fit no array, and are counted apart. In BIFF5, whose layout the lookups compare by, every font and format of a workbook is
looked up: it is found, and nothing is added.
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

PALETTE = 3

host.LIB.XLGetNumFormatItems.restype = host.u16
host.LIB.XLGetNumFormatItems.argtypes = [host.u32, host.u32, host.i16]
for reader in (host.LIB.XLGetRowHeight, host.LIB.XLGetColWidth):
    reader.restype = host.i16
    reader.argtypes = [host.P(ctypes.c_void_p), host.u32, host.u32, host.i16]
host.LIB.XLGetColorData.restype = host.i16
host.LIB.XLGetColorData.argtypes = [host.P(ctypes.c_void_p), host.u32, host.u32]
host.LIB.XLGetMagnification.restype = ctypes.c_double
host.LIB.XLGetMagnification.argtypes = [host.u32, host.u32, host.i16]
for lookup, values in ((host.LIB.XLGetFont, 6 * [host.u16]), (host.LIB.XLGetFormat, [])):
    lookup.restype = host.i16
    lookup.argtypes = [host.P(host.u32), host.u32, host.P(host.u32), ctypes.c_char_p] + values


def globals_records(stream):
    """(type, payload) of the records of the globals."""
    for offset, kind in globals_offsets(stream):
        (length,) = struct.unpack_from("<H", stream, offset + 2)
        yield kind, stream[offset + 4:offset + 4 + length]


def globals_offsets(stream):
    """(offset, type) of the records of the globals."""
    for offset, kind, _ in corpus.records(stream):
        if kind == 0x000A:
            return
        yield offset, kind


def elements(code_of, vartype, width, lower, count, filler):
    """Code of a call that fills an array, and the raw bytes of its elements."""
    array = ctypes.c_void_p(host.LIB.SafeArrayCreate(vartype, 1, (host.Bound * 1)(host.Bound(count, lower))))
    data = ctypes.c_void_p()
    host.LIB.SafeArrayAccessData(array, ctypes.byref(data))
    ctypes.memmove(data, filler * count, width * count)
    code = code_of(ctypes.byref(array))
    raw = ctypes.string_at(data.value, width * count)
    host.LIB.SafeArrayUnaccessData(array)
    host.LIB.SafeArrayDestroy(array)
    return code, raw


def sizes(reader, book, number, last):
    """Code and elements of an array from 1 to `last`."""
    filler = struct.pack("<h", UNTOUCHED)
    code, raw = elements(lambda array: reader(array, book.buffer, book.table, number), host.VT_I2, 2, 1, last, filler)
    return code, list(struct.unpack("<%dh" % last, raw))


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

    def compare_counts(self, book, stream, theirs, version, counts):
        kinds = Counter(kind & 0xFF for kind, _ in globals_records(stream) if not kind & 0x1000)
        ours = [host.LIB.XLGetNumFormatItems(book.buffer, book.table, kind) for kind in range(3)]
        xfs, fonts, formats = (sum(kinds[low] for low in LOW_BYTES[kind]) for kind in range(3))
        self.assertEqual(ours, [xfs, fonts + 1 if fonts else 0, formats + BUILT_IN[version]])
        self.assertEqual(xfs, len(theirs.xf_list))
        # The independent reader puts a font of its own at the number that does not exist.
        self.assertEqual(fonts, len(theirs.font_list) - (1 if len(theirs.font_list) > 4 else 0))
        self.assertEqual(formats, len(theirs.format_list))
        counts["XFs"] += xfs
        counts["fonts"] += fonts
        counts["formats"] += formats

    def compare_palette(self, book, stream, theirs, counts):
        # By the low byte of the type, as the library goes: STYLEEXT, 0x0892, is taken for a palette as well.
        palettes = [(offset, kind) for offset, kind in globals_offsets(stream) if kind & 0x10FF == 0x0092]
        count = host.LIB.XLGetNumFormatItems(book.buffer, book.table, PALETTE)
        self.assertEqual(count, struct.unpack_from("<H", stream, palettes[-1][0] + 4)[0] if palettes else 0)
        if count == 0:
            return
        code, raw = elements(lambda array: host.LIB.XLGetColorData(array, book.buffer, book.table), host.VT_I4, 4, 0, count, bytes(4))
        first = palettes[0][0] + 6
        inside = stream[first:first + 4 * count]
        self.assertEqual((code, raw[:len(inside)]), (0, inside))
        if [kind for _, kind in palettes] == [0x0092]:
            self.assertEqual([tuple(raw[at:at + 3]) for at in range(0, len(raw), 4)], [tuple(colour) for colour in theirs.palette_record])
            counts["colours"] += count
        else:
            counts["out: workbooks with a STYLEEXT taken for a palette"] += 1

    def look_up(self, book, stream, counts):
        """Every font and format of a BIFF5 workbook; the first of equal ones is the one that is found."""
        fonts, formats, before = [], {}, book.size.value
        for kind, payload in globals_records(stream):
            if kind == 0x0031:
                height, flags, colour, weight, _, underline = struct.unpack_from("<HHHHHB", payload)
                name = payload[15:15 + payload[14]]
                fonts.append((name, (colour - 8) & 0xFFFF, height, weight, flags >> 1 & 1, underline, flags >> 3 & 1))
            if kind == 0x041E:
                formats.setdefault(payload[3:3 + payload[2]], struct.unpack_from("<H", payload)[0])
        for font in fonts:
            first = fonts.index(font)
            index = host.LIB.XLGetFont(ctypes.byref(book.buffer), book.table, ctypes.byref(book.size), *font)
            self.assertEqual(index, first if first < 4 else first + 1, font)
        for text, index in formats.items():
            self.assertEqual(host.LIB.XLGetFormat(ctypes.byref(book.buffer), book.table, ctypes.byref(book.size), text), index, text)
        self.assertEqual(book.size.value, before)
        counts["fonts and formats found again"] += len(fonts) + len(formats)

    def compare_zoom(self, book, number, stream, bof, sheet, counts):
        found = [(depth, payload) for depth, kind, payload, _, _ in corpus.sheet_records(stream, bof) if kind & 0x10FF == 0x00A0]
        scales = [struct.unpack_from("<hh", payload) for _, payload in found]
        ratio = host.LIB.XLGetMagnification(book.buffer, book.table, number)
        self.assertEqual(ratio, scales[-1][0] / scales[-1][1] if scales else 1.0)
        if [depth for depth, _ in found] == [1]:
            self.assertEqual(int(ratio * 100 + 1e-9), sheet.scl_mag_factor)
            counts["zooms"] += 1

    def compare_heights(self, book, number, stream, bof, sheet, last, counts):
        code, ours = sizes(host.LIB.XLGetRowHeight, book, number, last)
        self.assertEqual(code, 0)
        stated = last_of(stream, bof, 0x0225)
        wanted = [sheet.default_row_height if stated else UNTOUCHED] * last
        for row, info in sheet.rowinfo_map.items():
            if row < last:
                wanted[row] = info.height + 1
        # The library keeps the height's high bit, the independent reader masks it off.
        self.assertEqual([(height - 1 & 0x7FFF) + 1 if row in sheet.rowinfo_map else height for row, height in enumerate(ours)], wanted)
        for _, kind, payload, _, _ in corpus.sheet_records(stream, bof):
            if kind == 0x0208 and payload[1] < 0x80 and struct.unpack_from("<H", payload)[0] < last:
                row, height = struct.unpack_from("<H4xH", payload)
                wanted[row] = struct.unpack("<h", struct.pack("<H", (height + 1) & 0xFFFF))[0]
                counts["rows with a height of their own"] += 1
                counts["rows with the high bit"] += height >> 15
        self.assertEqual(ours, wanted)
        counts["rows"] += last

    def compare_widths(self, book, number, stream, bof, sheet, last, counts):
        code, ours = sizes(host.LIB.XLGetColWidth, book, number, last)
        self.assertEqual(code, 0)
        stated = last_of(stream, bof, 0x0055)
        wanted = [sheet.defcolwidth * 120 if stated else UNTOUCHED] * last
        for column, info in sheet.colinfo_map.items():
            if column < last:
                wanted[column] = info.width * 120 // 256
                counts["columns with a width of their own"] += 1
        self.assertEqual(ours, wanted)
        counts["columns"] += last

    def compare_book(self, entry, counts):
        path = corpus.copy_to(self.folder.name, entry)
        with open(os.devnull, "w", encoding="utf-8") as log:
            theirs = xlrd.open_workbook(path, logfile=log, formatting_info=True)
        with host.Workbook(path) as book:
            stream = book.stream()
            version = host.LIB.XLGetNumVers(book.buffer, book.table)
            self.compare_counts(book, stream, theirs, version, counts)
            self.compare_palette(book, stream, theirs, counts)
            if version == 5:
                self.look_up(book, stream, counts)
            for number, (bof, kind) in enumerate(corpus.sheet_offsets(stream), 1):
                edges = book.used_range(number) if kind == 0 else None
                if edges is None:
                    continue
                sheet = theirs.sheet_by_index(theirs._all_sheets_map[number - 1])
                with self.subTest(f"zoom of sheet {number}"):
                    self.compare_zoom(book, number, stream, bof, sheet, counts)
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
        least = {"workbooks": 20, "XFs": 1000, "fonts": 200, "formats": 200, "colours": 50, "zooms": 1, "fonts and formats found again": 20,
                 "rows with a height of their own": 500, "columns with a width of their own": 100}
        self.assertEqual([(name, counts[name]) for name in least if counts[name] < least[name]], [])


if __name__ == "__main__":
    unittest.main()
