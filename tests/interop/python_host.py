"""The Python example as a user would take it: the module by its methods, the script by its command line, the results read with xlrd."""
import os
import subprocess
import sys
import tempfile
import unittest

import xlrd

EXAMPLES = os.environ["TOLVENAR_EXAMPLES"]
sys.path.insert(0, os.path.join(EXAMPLES, "python"))
import tolvenar  # noqa: E402

SCRIPT = os.path.join(EXAMPLES, "python", "csv_report.py")


def sample(name):
    return os.path.join(EXAMPLES, "data", name)


def values(path, sheet=0):
    sheet = xlrd.open_workbook(path).sheet_by_index(sheet)
    return [sheet.row_values(row) for row in range(sheet.nrows)]


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name, text=None):
        path = os.path.join(self.folder, name)
        if text is not None:
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
        return path


class Module(Folder):
    def test_sheets_and_values_of_both_generations(self):
        for name, generation in (("sample_biff5.xls", 5), ("sample_biff8.xls", 8)):
            with tolvenar.Workbook(sample(name)) as book:
                self.assertEqual(book.generation(), generation)
                self.assertEqual(book.sheet_names(), xlrd.open_workbook(sample(name)).sheet_names())
                self.assertEqual(book.rows(1)[1][1:5], ["North", 120.0, 3.0, 17.5])
                self.assertEqual(book.rows(1, numbers=False)[1][2], "120.000000")

    def test_a_changed_workbook_is_saved(self):
        saved = self.path("saved.xls")
        with tolvenar.Workbook(sample("sample_biff5.xls")) as book:
            book.change(1, 2, 2, "Süd")
            book.change(1, 2, 3, 7)
            book.insert_row(1, 2)
            book.save(saved)
            self.assertEqual(book.rows(1)[2][1:3], ["Süd", 7.0])  # and goes on
        self.assertEqual(values(saved)[2][1:3], ["Süd", 7.0])

    def test_a_new_workbook_of_two_sheets(self):
        saved = self.path("new.xls")
        with tolvenar.Workbook.new() as book:
            book.append("One", [["a", 1.5], ["b", None]])
            with book.sheet("Two", 3, 1) as sheet:
                sheet.write([[1], [2]])
                sheet.write([[3]])
            self.assertEqual(book.sheet_names(), ["One", "Two"])
            book.save(saved)
        self.assertEqual(values(saved, 0), [["a", 1.5], ["b", ""]])
        self.assertEqual(values(saved, 1), [[1.0], [2.0], [3.0]])

    def test_a_failure_names_call_code_and_cause(self):
        with self.assertRaisesRegex(tolvenar.Error, r"no such file.*\(XLOpenFile: result 101\)"):
            tolvenar.Workbook(self.path("missing.xls"))
        with tolvenar.Workbook(sample("sample_biff8.xls")) as book:
            with self.assertRaises(tolvenar.Error) as raised:
                book.change(1, 20000, 1, 0)
            self.assertEqual((raised.exception.function, raised.exception.code), ("XLChangeCellValue", 1))
            with self.assertRaises(tolvenar.Error):
                book.rows(9)

    def test_closing_gives_the_blocks_back(self):
        for _ in range(20):  # nine blocks serve the whole process
            with tolvenar.Workbook(sample("sample_biff8.xls")) as book:
                book.sheets()


class Script(Folder):
    def run_script(self, *arguments):
        return subprocess.run([sys.executable, SCRIPT, *arguments], capture_output=True, text=True, timeout=120)

    def test_each_file_becomes_a_sheet(self):
        many = "number,text\n" + "".join(f"{i},row {i}\n" for i in range(2500))
        first, second = self.path("sales.csv", "Region,Amount\nNorth,120.5\nSouth,\n"), self.path("many.csv", many)
        answer = self.run_script("--out", self.path("report.xls"), first, second)
        self.assertEqual(answer.returncode, 0, answer)
        self.assertIn("many: 2501 rows", answer.stderr)
        self.assertEqual(xlrd.open_workbook(self.path("report.xls")).sheet_names(), ["sales", "many"])
        self.assertEqual(values(self.path("report.xls")), [["Region", "Amount"], ["North", 120.5], ["South", ""]])
        self.assertEqual(values(self.path("report.xls"), 1)[2500], [2499.0, "row 2499"])

    def refused(self, sentence, *arguments):
        answer = self.run_script(*arguments)
        self.assertNotEqual(answer.returncode, 0)
        self.assertIn(sentence, answer.stderr)
        self.assertNotIn("Traceback", answer.stderr)

    def test_what_went_wrong_is_said_in_words(self):
        small, out = self.path("small.csv", "1\n"), self.path("out.xls")
        self.refused("is there already", "--out", self.path("old.xls", "mine"), small)
        self.refused("No such file", "--out", out, self.path("missing.csv"))
        self.refused("the file is empty", "--out", out, self.path("empty.csv", ""))
        self.refused("Split the file", "--out", out, self.path("long.csv", "1\n" * 16385))
        self.refused("can't be created", "--out", self.path("no/such/folder.xls"), small)
        self.assertFalse(os.path.exists(out))
        with open(self.path("old.xls"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "mine")


if __name__ == "__main__":
    unittest.main()
