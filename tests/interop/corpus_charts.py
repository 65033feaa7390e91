"""The charts of real workbooks, through all five chart exports, held against an independent walk over the records.

Twice: as they are, where a formula of BIFF8 is taken for one of BIFF5, so that what is compared are the bytes at BIFF5's places; and with
the formulas and texts of the charts transcribed to BIFF5's layout, where the cells have to be those that the formulas mean. What can't be
compared is counted apart, with the reason: "out:" a chart that the rules for a sheet's end leave out, or a formula of another kind.
"""
import ctypes
import os
import struct
import tempfile
import unittest
from collections import Counter
from itertools import islice

import corpus

corpus.require()

import tolvenar_host as host  # noqa: E402

LIB, byref = host.LIB, ctypes.byref
ARRAY = host.P(ctypes.c_void_p)
LIB.MEMORYALLOC.restype, LIB.MEMORYALLOC.argtypes = host.u32, [host.i32]
LIB.XLGetNumCharts.restype, LIB.XLGetNumCharts.argtypes = host.i32, [host.u32, host.u32, host.i16]
LIB.XLGetGraphData.restype, LIB.XLGetGraphData.argtypes = host.i16, [ARRAY, host.u32, host.u32, host.i16, host.i16]
LIB.XLGetChartData.restype, LIB.XLGetChartData.argtypes = host.i16, [ARRAY, host.u32, host.u32, host.i16, host.i16]
LIB.XLGetSetData.restype = host.i16
LIB.XLGetSetData.argtypes = [host.u32, host.u32, host.i16, host.i16] + [ARRAY] * 5 + [host.i16, host.i16]
LIB.XLGetTitleData.restype = host.i16
LIB.XLGetTitleData.argtypes = [host.u32, host.u32, host.i16, host.i16] + [ARRAY] * 3 + [host.P(host.u16)] * 2 + [host.P(host.u32)]
LIB.SysFreeString.restype, LIB.SysFreeString.argtypes = None, [ctypes.c_void_p]

BOF, EOF, BEGIN, END = 0x0809, 0x000A, 0x1033, 0x1034
CHART, SERIES, AREAFORMAT, SERIESTEXT, CHARTFORMAT, AI = 0x1002, 0x1003, 0x100A, 0x100D, 0x1014, 0x1051
TEXT, FONTX, OBJECTLINK, SERTOCRT = 0x1025, 0x1026, 0x1027, 0x1045
KINDS = {0x1017: 0, 0x1019: 0, 0x101A: 0, 0x103F: 0, 0x1018: 1, 0x101B: 1, 0x103E: 1, 0x1040: 1}
SIZES = {0x10: 1, 0x15: 1, 0x1C: 2, 0x1E: 3, 0x1F: 9, 0x23: 15, 0x29: 3, 0x39: 25, 0x3A: 18, 0x3B: 21, 0x3C: 18, 0x3D: 21}
ITEMS = 500  # compared of a series as it is; what stands where BIFF5 has an area's ends can be any number of cells
UNSET = -7


class Record:
    """A record of a chart; `owner` is the kind of the record whose block it stands in, 0 outside; `series` its series, from 0."""

    def __init__(self, offset, kind, payload):
        self.offset, self.kind, self.payload, self.owner, self.inside = offset, kind, payload, 0, []


def substreams(stream, bof):
    """(records of each chart substream, the record in front of the sheet's EOF) of the sheet at `bof`."""
    charts, depth, before, own = [], 0, None, []
    for offset, kind, payload in corpus.records(stream, bof):
        if kind == BOF:
            depth += 1
            if payload[2] == 0x20:
                own = []
        own.append(Record(offset, kind, payload))
        if kind == EOF:
            if any(record.kind == CHART for record in own):
                charts.append(own)
            own, depth = [], depth - 1
            if depth == 0:
                return charts, before
        before = own[-1] if own else before
    raise AssertionError("a sheet without an end")


def nest(records):
    """Gives each record its owner, and each owner what is directly in its block, in the order of the stream."""
    owners, previous = [], None
    for record in records:
        if record.kind == END:
            owners.pop()
        record.owner = owners[-1].kind if owners else 0
        if record.kind == BEGIN:
            owners.append(previous)
        elif owners:
            owners[-1].inside.append(record)
        previous = record


def first(records, kind):
    return next((record for record in records if record.kind == kind), None)


def deep(record):
    """All in the block of a record, at any depth, in the order of the stream."""
    for one in record.inside:
        yield one
        yield from deep(one)


def formula(ai):
    return ai.payload[8:8 + struct.unpack_from("<H", ai.payload, 6)[0]]


def cells_of(areas):
    for low, high, top, bottom, left, right in areas:
        for sheet in range(low, high + 1):
            for row in range(top, bottom + 1):
                for column in range(left, right + 1):
                    yield (sheet & 0xFF) + (row << 8) + (column << 24) + 1


def areas_biff5(stream, ai):
    """What stands in the stream at BIFF5's places; None for a formula with tokens that are not listed here."""
    place, end, areas = ai.offset + 12, ai.offset + 12 + len(formula(ai)), []
    while place < end:
        kind = stream[place]
        if kind not in SIZES:
            return None
        low, high = struct.unpack_from("<HH", stream, place + 11)
        if kind == 0x3A:
            row, column = struct.unpack_from("<HB", stream, place + 15)
            areas.append((low, high, row & 0x3FFF, row & 0x3FFF, column, column))
        if kind == 0x3B:
            top, bottom, left, right = struct.unpack_from("<HHBB", stream, place + 15)
            areas.append((low, high, top & 0x3FFF, bottom & 0x3FFF, left, right))
        place += SIZES[kind]
    return areas


def areas_biff8(tokens, sheets):
    """What a formula of BIFF8 means; None when it has other tokens than areas, references and their union, or what BIFF5 can't hold."""
    place, areas = 0, []
    while place < len(tokens):
        kind = tokens[place]
        if kind in (0x29, 0x10, 0x15):
            place += 3 if kind == 0x29 else 1
            continue
        if kind not in (0x3A, 0x3B):
            return None
        low, high = sheets[struct.unpack_from("<H", tokens, place + 1)[0]]
        if kind == 0x3A:
            top, left = struct.unpack_from("<HH", tokens, place + 3)
            bottom, right = top, left
        else:
            top, bottom, left, right = struct.unpack_from("<HHHH", tokens, place + 3)
        left, right = left & 0x3FFF, right & 0x3FFF
        if high > 0xFF or bottom > 0x3FFF or right > 0xFF:
            return None
        areas.append((low, high, top, bottom, left, right))
        place += 7 if kind == 0x3A else 11
    return areas


def sheets_of(stream):
    """(first, last) sheet of each entry of EXTERNSHEET."""
    for _, kind, payload in corpus.records(stream):
        if kind == 0x0017:
            return [struct.unpack_from("<HH", payload, 4 + 6 * entry) for entry in range(struct.unpack_from("<H", payload)[0])]
        if kind == EOF:
            return []
    return []


def token_biff5(area):
    low, high, top, bottom, left, right = area
    head = struct.pack("<h8xHH", -1, low, high)
    if (top, left) == (bottom, right):
        return b"\x3A" + head + struct.pack("<HB", top | 0xC000, left)
    return b"\x3B" + head + struct.pack("<HHBB", top | 0xC000, bottom, left, right)


def transcribed(kind, payload, sheets):
    """The payload of a chart record in BIFF5's layout."""
    if kind == SERIESTEXT:
        count, flags = payload[2], payload[3]
        text = payload[4:4 + 2 * count:2] if flags & 1 else payload[4:4 + count]
        return payload[:2] + bytes([len(text)]) + text
    if kind == AI and len(payload) >= 8:
        areas = areas_biff8(formula(Record(0, kind, payload)), sheets)
        if areas:
            union = b"\x10" * (len(areas) - 1)
            tokens = b"".join(token_biff5(area) for area in areas) + union
            return payload[:6] + struct.pack("<H", len(tokens)) + tokens
    return payload


def transcribe(stream):
    """The stream with its charts in BIFF5's layout, and the offset of each old record in it."""
    sheets, new, moved, bounds = sheets_of(stream), bytearray(), {}, []
    for offset, kind, payload in corpus.records(stream):
        moved[offset] = len(new)
        if kind == 0x0085:
            bounds.append(len(new))
        payload = transcribed(kind, payload, sheets)
        new += struct.pack("<HH", kind, len(payload)) + payload
    for bound in bounds:
        struct.pack_into("<I", new, bound + 4, moved[struct.unpack_from("<I", new, bound + 4)[0]])
    return bytes(new), moved


class StreamWorkbook(host.Workbook):
    """A workbook from a stream in memory."""

    def __init__(self, stream):
        stream += b"\xF8\xFE\0\0"
        self.buffer, self.size, self.table = host.u32(LIB.MEMORYALLOC(len(stream))), host.u32(len(stream)), host.u32()
        ctypes.memmove(self.buffer.value, stream, len(stream))
        self.locate()


class Vector:
    """An array of one dimension from 1 on; `numbers` puts its elements to a value."""

    def __init__(self, vartype, count, number=None):
        self.width, self.count = (8 if vartype == host.VT_BSTR else 4), count
        self.array = ctypes.c_void_p(LIB.SafeArrayCreate(vartype, 1, (host.Bound * 1)(host.Bound(count, 1))))
        self.data = ctypes.c_void_p()
        LIB.SafeArrayAccessData(self.array, byref(self.data))
        if number is not None:
            ctypes.memmove(self.data, struct.pack("<i", number) * count, 4 * count)

    def numbers(self):
        return list(struct.unpack("<%di" % self.count, ctypes.string_at(self.data, 4 * self.count)))

    def texts(self):
        return [host.bstr_bytes(one) for one in struct.unpack("<%dQ" % self.count, ctypes.string_at(self.data, 8 * self.count))]

    def close(self):
        LIB.SafeArrayUnaccessData(self.array)
        LIB.SafeArrayDestroy(self.array)


def is_reached(sheet, sheets, kind, charts, before):
    """Whether a chart's EOF lies in front of the sheet's end, which depends on the sheet's number being that of its charts."""
    if kind == 0:
        return True  # embedded: its EOF is not the sheet's
    if sheet == charts:
        return sheet != sheets
    return sheet == sheets and len(before.payload) != 0


class Charts(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.counts = Counter()

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def compare_cells(self, book, place, series, wanted):
        """`wanted` holds the cells of each series, or None where its formula was not compared."""
        items = max([1] + [len(cells) for cells in wanted if cells is not None]) + 1
        ours = host.Cells(host.VT_I4, 4, len(series), items)
        self.assertEqual(LIB.XLGetGraphData(byref(ours.array), book.buffer, book.table, *place), 0)
        for number, cells in enumerate(wanted, 1):
            if cells is None:
                self.counts["out: series with another kind of formula"] += 1
                continue
            got = [struct.unpack("<I", ours.element(number, item + 1))[0] for item in range(len(cells) + (len(cells) < ITEMS))]
            self.assertEqual(got, (cells + [0])[:len(got)])
            self.counts["series"] += 1
            self.counts["cells of series"] += len(cells)
        ours.close()

    def compare_details(self, book, place, records, series, stream):
        count = len(series)
        names, references, groups, colours = (Vector(host.VT_BSTR, count), Vector(host.VT_I4, count, UNSET),
                                              Vector(host.VT_I4, count, 0), Vector(host.VT_I4, count, UNSET))
        code = LIB.XLGetSetData(book.buffer, book.table, *place, byref(names.array), byref(references.array), byref(names.array),
                                byref(groups.array), byref(colours.array), count, count)
        self.assertEqual(code, 0)
        kinds = []
        for record in records:
            if record.kind == CHARTFORMAT:
                kinds.append(0xFFFF)
            elif kinds and kinds[-1] == 0xFFFF:
                kinds[-1] = KINDS.get(record.kind, 0xFFFF)
        texts, wanted_groups, wanted_colours = [], [], []
        for one in series:
            text, group, area = first(one.inside, SERIESTEXT), first(one.inside, SERTOCRT), first(deep(one), AREAFORMAT)
            texts.append(self.text_at(stream, text) if text else b"")
            if texts[-1] == b"#REF!":  # a lost name counts as none
                texts[-1] = b""
                self.counts["names that are lost"] += 1
            number = struct.unpack("<H", group.payload[:2])[0] if group else 0
            wanted_groups.append(kinds[number] if number < len(kinds) else 0)
            at = 0 if area and area.payload[8:10] == b"\1\0" else 4
            wanted_colours.append(struct.unpack_from("<i", area.payload, at)[0] if area else UNSET)
        self.assertEqual(names.texts(), texts)
        self.assertEqual(groups.numbers(), wanted_groups)
        self.assertEqual(colours.numbers(), wanted_colours)
        # The formulas of names are in records whose length has no low byte of 0.
        self.assertEqual(references.numbers(), [UNSET] * count)
        self.counts["names"] += len([text for text in texts if text])
        self.counts["colours of series"] += len([colour for colour in wanted_colours if colour != UNSET])
        for vector in (names, references, groups, colours):
            vector.close()

    @staticmethod
    def text_at(stream, record):
        return stream[record.offset + 7:record.offset + 7 + record.payload[2]]

    def compare_titles(self, book, place, records, stream):
        wanted = [b"", b"", b"", UNSET & 0xFFFF, UNSET & 0xFFFF, UNSET & 0xFFFFFFFF]
        for record in records:
            text, link, font = (first(record.inside, kind) for kind in (SERIESTEXT, OBJECTLINK, FONTX))
            if record.kind != TEXT or not text or not link or link.payload[1] or not 1 <= link.payload[0] <= 3:
                continue
            wanted[link.payload[0] - 1] = self.text_at(stream, text)
            if font:
                wanted[3 if link.payload[0] == 1 else 4] = struct.unpack("<H", font.payload[:2])[0]
            wanted[5] = struct.unpack_from("<I", record.payload, 4)[0]
            self.counts["titles"] += 1
        texts = [ctypes.c_void_p() for _ in range(3)]
        numbers = [host.u16(UNSET), host.u16(UNSET), host.u32(UNSET)]
        code = LIB.XLGetTitleData(book.buffer, book.table, *place, *map(byref, texts), *map(byref, numbers))
        self.assertEqual(code, 0)
        self.assertEqual([host.bstr_bytes(text.value) for text in texts] + [number.value for number in numbers], wanted)
        for text in texts:
            LIB.SysFreeString(text)

    def compare_properties(self, book, place, records, series, values):
        ours = Vector(host.VT_I4, 21, 0)
        self.assertEqual(LIB.XLGetChartData(byref(ours.array), book.buffer, book.table, *place), 0)
        got = [None] + ours.numbers()
        ours.close()
        chart = first(records, CHART)
        self.assertEqual(got[2], len(series))
        self.assertEqual(got[13:15], [struct.unpack_from("<h", chart.payload, at)[0] * 20 for at in (10, 14)])
        self.assertEqual(got[19], int(first(records, 0x1015) is not None))
        if None not in values:
            categories = [struct.unpack_from("<h", one.payload, 4)[0] for one in series]
            cells = [sum((h - l + 1) * (b - t + 1) * (r - f + 1) for l, h, t, b, f, r in areas) for areas in values]
            cells = [(cell + 0x8000) % 0x10000 - 0x8000 for cell in cells]
            self.assertEqual(got[1], max([0] + categories + cells))
        self.counts["property lists"] += 1

    def compare_chart(self, book, place, records, stream, values_of):
        """`values_of` gives the areas of an AI, or None."""
        nest(records)
        series = [record for record in records if record.kind == SERIES]
        values = []
        for one in series:
            ai = next(record for record in one.inside if record.kind == AI and record.payload[0] == 1)
            values.append(values_of(ai))
        wanted = [None if areas is None else list(islice(cells_of(areas), ITEMS)) for areas in values]
        self.compare_cells(book, place, series, wanted)
        self.compare_details(book, place, records, series, stream)
        self.compare_titles(book, place, records, stream)
        self.compare_properties(book, place, records, series, values)
        self.counts["charts"] += 1

    def expect_unreached(self, book, place):
        ours = Vector(host.VT_I4, 1, 0)
        for reader in (LIB.XLGetGraphData, LIB.XLGetChartData):
            self.assertEqual(reader(byref(ours.array), book.buffer, book.table, *place), 9)
        arrays = [byref(ours.array)] * 5
        self.assertEqual(LIB.XLGetSetData(book.buffer, book.table, *place, *arrays, 1, 1), 9)
        self.assertEqual(LIB.XLGetTitleData(book.buffer, book.table, *place, None, None, None, None, None, None), 9)
        ours.close()
        self.counts["out: chart sheet whose EOF is behind the sheet's end"] += 1

    def compare_book(self, book, stream, values_of):
        offsets = corpus.sheet_offsets(stream)
        self.assertEqual(book.sheets(), len(offsets))
        for sheet, (bof, kind) in enumerate(offsets, 1):
            if kind not in (0, 2):
                continue
            charts, before = substreams(stream, bof)
            self.assertEqual(LIB.XLGetNumCharts(book.buffer, book.table, sheet), len(charts))
            self.counts["sheets"] += 1
            for number, records in enumerate(charts, 1):
                with self.subTest(f"sheet {sheet}, chart {number}"):
                    if is_reached(sheet, len(offsets), kind, len(charts), before):
                        self.compare_chart(book, (sheet, number), records, stream, values_of)
                    else:
                        self.expect_unreached(book, (sheet, number))
            if kind == 0:
                ours = Vector(host.VT_I4, 21, 0)
                code = LIB.XLGetChartData(byref(ours.array), book.buffer, book.table, sheet, len(charts) + 1)
                self.assertEqual(code, 9)
                ours.close()

    def books(self):
        """(stream, workbook) of every readable workbook."""
        for entry in corpus.entries(damaged=False):
            if not corpus.is_compound(entry) or "encrypted" in entry["features"]:
                continue
            try:
                book = host.Workbook(corpus.copy_to(self.folder.name, entry))
            except host.Error:
                continue
            with book, self.subTest(entry["file"]):
                yield book.stream(), book

    def print_counts(self):
        for name, count in sorted(self.counts.items()):
            print(f"  {count:8} {name}")

    def test_charts_as_they_are(self):
        for stream, book in self.books():
            self.compare_book(book, stream, lambda ai, stream=stream: areas_biff5(stream, ai))
        self.print_counts()
        self.assertGreater(self.counts["charts"], 25)
        self.assertGreater(self.counts["titles"], 10)

    def test_charts_with_formulas_in_the_layout_that_is_read(self):
        for stream, book in self.books():
            if not any(kind == CHART for _, kind, _ in corpus.records(stream)):
                continue
            sheets = sheets_of(stream)
            new, moved = transcribe(stream)
            meant = {moved[offset]: areas_biff8(formula(Record(offset, kind, payload)), sheets)
                     for offset, kind, payload in corpus.records(stream) if kind == AI}
            with StreamWorkbook(new) as again:
                self.compare_book(again, new, lambda ai, meant=meant: meant[ai.offset])
        self.print_counts()
        self.assertGreater(self.counts["series"], 50)
        self.assertGreater(self.counts["cells of series"], 500)


if __name__ == "__main__":
    unittest.main()
