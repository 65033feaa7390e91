"""Real worksheets: an existing number cell is changed, the change survives a save and a reopening, and an independent reader finds it,
with every other cell as it was.
"""
import os
import struct
import tempfile
import unittest
from collections import Counter

import corpus

corpus.require()

import xlrd  # noqa: E402

import tolvenar_host as host  # noqa: E402

NEW_VALUE = 123456.75


def number_cells(stream, bof):
    """(row, column) of the number cells at depth 1 that a search finds by its own rules, in stream order.

    A search takes the first words of a STRING for a row and a column, on purpose, and may stop at one in front of the cell; and of a cell
    that is stored more than once it finds the first record, while readers show the last. Cells behind a STRING and such cells are left out.
    """
    places = []
    stored = Counter()
    string_met = False
    for depth, kind, payload, _, _ in corpus.sheet_records(stream, bof):
        if depth != 1 or kind & 0x1000:
            continue
        low = kind & 0xFF
        string_met = string_met or low == 0x07
        if low in (0x01, 0x03, 0x04, 0x05, 0x06, 0x7E, 0xD6, 0xFD):
            cells = [struct.unpack_from("<HH", payload)]
        elif low in (0xBD, 0xBE):
            row, first = struct.unpack_from("<HH", payload)
            cells = [(row, column) for column in range(first, struct.unpack_from("<H", payload, len(payload) - 2)[0] + 1)]
        else:
            continue
        stored.update(cells)
        if low in (0x03, 0x7E, 0xBD) and not string_met:
            places += cells
    return [place for place in places if stored[place] == 1]


def contents(path):
    with open(os.devnull, "w", encoding="utf-8") as log:
        book = xlrd.open_workbook(path, logfile=log)
    cells = {}
    for index, sheet in enumerate(book.sheets()):
        for row in range(sheet.nrows):
            for column in range(sheet.ncols):
                if sheet.cell_type(row, column) not in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                    cells[index, row, column] = repr(sheet.cell_value(row, column))
    return cells, book


class Edit(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def change_first(self, book, number, candidates):
        """Changes the first of the cells that the library can find, and gives its place."""
        for row, column in candidates:
            try:
                book.change(number, row + 1, column + 1, NEW_VALUE)
                return row, column
            except host.Error as error:
                self.assertEqual(error.code, 1)  # outside DIMENSIONS, or no ROW record
        return None

    def check(self, entry):
        path = corpus.copy_to(self.folder.name, entry)
        before, theirs = contents(path)
        changed = {}
        with host.Workbook(path) as book:
            stream = book.stream()
            for number, (bof, kind) in enumerate(corpus.sheet_offsets(stream), 1):
                if kind == 0:
                    cells = number_cells(stream, bof)
                    place = self.change_first(book, number, cells)
                    if place:
                        changed[(theirs._all_sheets_map[number - 1],) + place] = repr(NEW_VALUE)
                    elif cells:
                        self.unreached += 1
            book.save(path)
        with host.Workbook(path) as book:  # reopens
            self.assertEqual(book.sheets(), len(theirs._all_sheets_map))
        after, _ = contents(path)
        self.assertEqual(after, {**before, **changed})
        return len(changed)

    def test_a_changed_number_survives_and_nothing_else_moves(self):
        sheets = self.unreached = 0
        for entry in corpus.entries(damaged=False):
            if entry["xlrd"] == "yes" and corpus.is_compound(entry) and "+" not in entry["stream"]:
                with self.subTest(entry["file"]):
                    sheets += self.check(entry)
        print(f"  {sheets} worksheets changed, {self.unreached} whose number cells lie in rows without a ROW record")
        self.assertGreater(sheets, 50)


if __name__ == "__main__":
    unittest.main()
