"""Runs the examples as a user would, and reads with an independent program what they wrote.

    run_examples.py FIRST_HOST REPORT NEW_REPORT NEWREF REFERENCE_TOUR FOLDER_OF_SAMPLES
"""
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

import olefile
import xlrd

FIRST_HOST, REPORT, NEW_REPORT, NEWREF, REFERENCE_TOUR, SAMPLES = sys.argv[1:7]
SAMPLE_NAMES = ("sample_biff5.xls", "sample_biff8.xls")


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)


def read(path):
    with open(path, "rb") as file:
        return file.read()


def record(kind, *parts):
    payload = b"".join(parts)
    return struct.pack("<HH", kind, len(payload)) + payload


def words(*values):
    return struct.pack("<%dH" % len(values), *values)


def area(sheet, top, bottom, column):
    """The values of a series: rows of one column."""
    token = b"\x3B" + struct.pack("<h8xHH", -1, sheet, sheet) + words(top, bottom) + bytes([column, column])
    return record(0x1051, b"\1\2", words(0, 0, len(token)), token)


def text(value):
    return record(0x100D, words(0), bytes([len(value)]), value)


def series(name, values):
    block = record(0x1033) + (text(name) if name else b"") + values + record(0x1034)
    return record(0x1003, words(1, 1, 3, 3)) + block


def title(kind, value):
    link = record(0x1027, words(kind, 0, 0))
    return record(0x1025, words(2, 1), bytes(20)) + record(0x1033) + record(0x1026, words(5)) + link + text(value) + record(0x1034)


def chart(kind, *parts):
    """An embedded chart of 300.5 by 200.25 points: its type, then series and titles."""
    size = struct.pack("<8xHHHH", 0x8000, 300, 0x4000, 200)
    group = record(0x1014, bytes(16)) + record(0x1033) + kind + record(0x1034)
    body = record(0x1002, size) + record(0x1033) + b"".join(parts) + group + record(0x1034)
    return record(0x0809, words(0x0500, 0x20, 0, 0)) + body + record(0x000A)


def workbook_of(*charts):
    """A BIFF5 stream with one sheet, which holds a number and these charts."""
    bof = record(0x0809, words(0x0500, 5, 0, 0))
    bound = record(0x0085, struct.pack("<IHB", len(bof) + 15 + 4, 0, 4), b"Data")
    cell = record(0x0208, words(0, 0, 1, 255, 0, 0, 0, 15)) + record(0x0203, words(0, 0, 15), struct.pack("<d", 1.5))
    sheet = record(0x0809, words(0x0500, 0x10, 0, 0)) + record(0x0200, words(0, 1, 0, 1, 0)) + cell
    return bof + bound + record(0x000A) + sheet + b"".join(charts) + record(0x023E, bytes(10)) + record(0x000A)


class Examples(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.out = os.path.join(self.folder.name, "out")
        for name in SAMPLE_NAMES:
            shutil.copyfile(os.path.join(SAMPLES, name), self.path(name))

    def tearDown(self):
        self.folder.cleanup()

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def write(self, name, data):
        with open(self.path(name), "wb") as file:
            file.write(data)
        return self.path(name)

    def refused(self, path, sentence, result):
        answer = run(REPORT, "--out", self.out, path)
        self.assertEqual(answer.returncode, 1, answer)
        self.assertIn(sentence, answer.stderr)
        self.assertIn("(result %d)" % result, answer.stderr)
        self.assertFalse(os.path.exists(os.path.join(self.out, os.path.basename(path))))

    def test_first_host_writes_its_number(self):
        for name in SAMPLE_NAMES:
            saved = self.path("first_" + name)
            self.assertEqual(run(FIRST_HOST, self.path(name), saved).returncode, 0)
            sheet = xlrd.open_workbook(saved).sheet_by_index(0)
            self.assertEqual(sheet.cell_value(1, 2), 42.0)
            self.assertEqual(sheet.row_values(2)[1:5], ["South", 80.0, 1.0, 17.5])

    def test_each_tells_how_it_is_called(self):
        for program in (REPORT, NEW_REPORT, NEWREF, REFERENCE_TOUR):
            answer = run(program, "--help")
            self.assertEqual(answer.returncode, 0, program)
            self.assertIn("usage: " + os.path.basename(program), answer.stdout)
            self.assertEqual(run(program, "--no-such", "option", "at", "all").returncode, 2 if program != REPORT else 1)
        self.assertIn("usage: first_host", run(FIRST_HOST, "--help").stdout)
        self.assertFalse(os.path.exists("--help"))

    def test_reference_tour_prints_what_it_has_saved(self):
        store = self.path("store.ref")
        answer = run(REFERENCE_TOUR, store)
        self.assertEqual(answer.returncode, 1)
        self.assertIn("tolvenar-newref " + store, answer.stderr)
        self.assertEqual(run(NEWREF, store).returncode, 0)
        for number in (1, 2):
            lines = run(REFERENCE_TOUR, store).stdout.splitlines()
            self.assertEqual(lines[0], "reference %d in %s" % (number, store))
            self.assertIn("|   |-- text of (1,3,1,1): \"West\"", lines)
            self.assertIn("|   `-- places: 0x01000101 in the first cell, 24 of 24 as they were stored", lines)
            self.assertIn('    |-- text 1: "Turnover by region"', lines)
            self.assertIn("    |-- properties: 3 first, -1 last", lines)
            self.assertIn("    |-- flags 1: 1 1 0 0 1 0", lines)
            self.assertIn("    |-- set of ints 1: 0 16 24 32 40 0", lines)
            self.assertEqual(lines[-1], "    `-- text references 1: 0x00000000 0x01000101 0x01000201 0x01000301 0x00000000 0x00000000")

    def test_first_host_tells_by_its_status_that_there_is_no_workbook(self):
        self.assertEqual(run(FIRST_HOST, self.path("missing.xls"), self.path("saved.xls")).returncode, 1)
        self.assertFalse(os.path.exists(self.path("saved.xls")))

    def test_report_changes_four_cells_of_each_sample(self):
        answer = run(REPORT, "--out", self.out, *(self.path(name) for name in SAMPLE_NAMES))
        self.assertEqual(answer.returncode, 0, answer)
        self.assertEqual(answer.stdout.count("  Wrote "), 2 * 4, answer.stdout)
        for name in SAMPLE_NAMES:
            values = self.values(os.path.join(self.out, name))
            self.assertIn(1234.5, values)
            self.assertIn("changed", values)
            self.assertEqual(len([value for value in self.values(self.path(name)) if value == 1234.5]), 0)

    def values(self, path):
        sheet = xlrd.open_workbook(path).sheet_by_index(0)
        return [value for row in range(sheet.nrows) for value in sheet.row_values(row)]

    def charts_of(self, *charts):
        """The lines about charts that the report prints for a workbook with these."""
        path = self.path("sample_biff5.xls")
        with olefile.OleFileIO(path, write_mode=True) as file:
            stream = workbook_of(*charts)
            file.write_stream("Book", stream + bytes(file.get_size("Book") - len(stream)))
        answer = run(REPORT, "--out", self.out, path)
        self.assertEqual(answer.returncode, 0, answer)
        return re.findall(r"^ +((?:chart|series) .*)$", answer.stdout, re.MULTILINE)

    def test_report_lists_charts_with_series_and_titles(self):
        columns = chart(record(0x1017, words(0, 150, 0)), series(b"North", area(0, 1, 3, 1)), series(b"", area(2, 4, 9, 25)),
                        title(1, b"Sales"), title(2, b"Region"), title(3, b"EUR"))
        pie = chart(record(0x1019, words(0, 0)), series(b"M\xFCnchen", area(0, 0, 0, 0)))
        self.assertEqual(self.charts_of(columns, pie), [
            'chart 1: columns, 300 by 200 points, 2 series, title "Sales", axes "Region" and "EUR"',
            'series 1 "North": sheet 1 R2C2, sheet 1 R3C2, sheet 1 R4C2',
            'series 2 "": sheet 3 R5C26, sheet 3 R6C26, sheet 3 R7C26, sheet 3 R8C26 ... 2 cells more',
            'chart 2: pie, 300 by 200 points, 1 series, title "", axes "" and ""',
            'series 1 "M\u00FCnchen": sheet 1 R1C1'])

    def test_report_names_the_families_of_charts(self):
        types = {"bars": record(0x1017, words(0, 150, 1)), "lines": record(0x1018, words(0)), "radar": record(0x103E, words(0)),
                 "three-dimensional": record(0x1017, words(0, 150, 0)) + record(0x103A, bytes(14)),
                 "areas or points": record(0x101A, words(0))}
        lines = self.charts_of(*(chart(kind) for kind in types.values()))
        self.assertEqual([line.split(",")[0] for line in lines], ["chart %d: %s" % pair for pair in enumerate(types, 1)])

    def test_report_shows_patches_come_and_go(self):
        text = run(REPORT, "--out", self.out, self.path("sample_biff8.xls")).stdout
        counts = re.findall(r"(As \w+): \d+ bytes with (\d+) DETOUR, (\d+) RESUME, (\d+) SLACK and (\d+) BUFEND", text)
        self.assertEqual([count[0] for count in counts], ["As opened", "As changed", "As saved", "As opened"])
        self.assertEqual(counts[0][1:], ("0", "0", "0", "1"))
        self.assertGreater(int(counts[1][1]), 0)
        self.assertEqual(counts[2][1:], ("0", "0", "0", "1"))
        self.assertEqual(counts[3][1:], ("0", "0", "0", "1"))

    def test_report_binds_each_result_to_a_reference_of_its_own(self):
        store = self.path("store.ref")
        self.assertEqual(run(NEWREF).returncode, 2)
        self.assertEqual(run(NEWREF, store).returncode, 0)
        answer = run(REPORT, "--out", self.out, "--references", store, *(self.path(name) for name in SAMPLE_NAMES))
        self.assertEqual(answer.returncode, 0, answer)
        for number, name in enumerate(SAMPLE_NAMES, 1):
            self.assertIn("Bound to reference %d, and %d is what the file says" % (number, number), answer.stdout)
            result = os.path.join(self.out, name)
            self.assertIn(b'"Do not delete it!!!%-8d"' % number, read(result))
            self.assertEqual(xlrd.open_workbook(result).sheet_names(), xlrd.open_workbook(self.path(name)).sheet_names())

    def test_report_leaves_the_original_as_it_is(self):
        before = read(self.path("sample_biff5.xls"))
        run(REPORT, "--out", self.out, self.path("sample_biff5.xls"))
        self.assertEqual(read(self.path("sample_biff5.xls")), before)
        answer = run(REPORT, "--out", self.folder.name, self.path("sample_biff5.xls"))
        self.assertEqual(answer.returncode, 1)
        self.assertIn("would replace the workbook itself", answer.stderr)
        self.assertEqual(read(self.path("sample_biff5.xls")), before)

    def test_report_keeps_the_other_streams(self):
        run(REPORT, "--out", self.out, self.path("sample_biff5.xls"))
        with olefile.OleFileIO(self.path("sample_biff5.xls")) as old, olefile.OleFileIO(os.path.join(self.out, "sample_biff5.xls")) as new:
            self.assertEqual(sorted(old.listdir()), sorted(new.listdir()))
            properties = "\x05SummaryInformation"
            self.assertEqual(old.openstream(properties).read(), new.openstream(properties).read())

    def test_report_refuses_a_path_that_is_missing(self):
        self.refused(self.path("missing.xls"), "can't be opened", 101)

    def test_report_refuses_what_is_no_compound_file(self):
        self.refused(self.write("text.xls", b"no workbook at all\n" * 100), "can't be opened", 101)

    def test_report_refuses_a_compound_file_without_a_workbook(self):
        data = read(self.path("sample_biff8.xls"))
        name = "Workbook".encode("utf-16-le")
        self.assertEqual(data.count(name), 1)
        self.refused(self.write("other.xls", data.replace(name, "Wirkbook".encode("utf-16-le"))), "holds no workbook", 102)

    def test_new_report_makes_two_workbooks_of_two_sheets(self):
        os.mkdir(self.out)
        answer = run(NEW_REPORT, self.out)
        self.assertEqual(answer.returncode, 0, answer)
        self.assertEqual(answer.stdout.count("10001 rows, 5 columns"), 2, answer.stdout)
        for generation in ("biff5", "biff8"):
            book = xlrd.open_workbook(os.path.join(self.out, "new_report_%s.xls" % generation), formatting_info=True)
            products, orders = book.sheets()
            self.assertEqual(products.row_values(1), ["Anvil", 249.5, 0.4000000059604645])
            self.assertEqual(orders.row_values(0), ["Order", "Day", "Product", "Count", "Amount"])
            self.assertEqual(orders.row_values(10000), ["Order 10000", 45625.0, "Engraver", 64.0, 776.0])
            self.assertEqual(list(orders.row_types(10000)), [1, 3, 1, 2, 2])
            formats = [book.format_map[book.xf_list[orders.cell_xf_index(1, c)].format_key].format_str for c in (1, 3)]
            self.assertEqual(formats, ["dd\\-mmm\\-yy", '_(* #,##0_);_(* \\(#,##0\\);_(* "-"_);_(@_)'])

    def test_new_report_adds_a_font_and_a_format_to_the_biff5_workbook(self):
        os.mkdir(self.out)
        self.assertEqual(run(NEW_REPORT, self.out).returncode, 0)
        book = xlrd.open_workbook(os.path.join(self.out, "new_report_biff5.xls"), formatting_info=True)
        products, orders = book.sheets()
        header = book.font_list[book.xf_list[orders.cell_xf_index(0, 0)].font_index]
        body = book.font_list[book.xf_list[orders.cell_xf_index(1, 0)].font_index]
        self.assertEqual((header.name, header.weight, header.height), ("Arial", 700, 200))
        self.assertEqual(body.weight, 400)
        for sheet, column in ((orders, 4), (products, 1)):
            key = book.xf_list[sheet.cell_xf_index(1, column)].format_key
            self.assertEqual((key, book.format_map[key].format_str), (254, '#,##0.00;[Red]-#,##0.00'))

    def test_new_report_adds_two_xfs_that_an_independent_program_reads_in_full(self):
        os.mkdir(self.out)
        self.assertEqual(run(NEW_REPORT, self.out).returncode, 0)
        book = xlrd.open_workbook(os.path.join(self.out, "new_report_biff5.xls"), formatting_info=True)
        products, orders = book.sheets()
        header, amount = orders.cell_xf_index(0, 0), orders.cell_xf_index(1, 4)
        self.assertEqual([orders.cell_xf_index(0, column) for column in range(5)], 5 * [header])
        self.assertEqual([products.cell_xf_index(row, 1) for row in range(1, 6)], 5 * [amount])
        # Behind the XFs that every new workbook brings along, and the last there are.
        self.assertEqual([header, amount], [len(book.xf_list) - 2, len(book.xf_list) - 1])
        self.assertEqual(book.font_list[-1].font_index, book.xf_list[header].font_index)
        self.assertEqual([(xf.font_index, xf.format_key) for xf in (book.xf_list[header], book.xf_list[amount])],
                         [(len(book.font_list) - 1, 0), (0, 254)])
        for xf in (book.xf_list[header], book.xf_list[amount]):
            self.assertEqual((xf.is_style, xf.protection.cell_locked, xf.protection.formula_hidden), (0, 1, 0))
            self.assertEqual((xf.alignment.hor_align, xf.alignment.vert_align), (0, 2))
            self.assertEqual((xf.background.fill_pattern, xf.border.top_line_style, xf.border.left_line_style), (0, 0, 0))

    def test_new_report_tells_that_the_folder_is_missing(self):
        answer = run(NEW_REPORT, self.path("nowhere"))
        self.assertEqual(answer.returncode, 1)
        self.assertIn("can't be saved", answer.stderr)

    def test_report_without_a_workbook_says_how_it_is_called(self):
        answer = run(REPORT)
        self.assertEqual(answer.returncode, 2)
        self.assertIn("usage:", answer.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
