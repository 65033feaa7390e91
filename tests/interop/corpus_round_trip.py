"""Real workbooks, opened and saved without an edit: the stream comes back byte for byte, every other stream and storage is as it was,
and an independent reader finds the same cells. Damaged ones give a result code within a second.
"""
import hashlib
import os
import tempfile
import time
import unittest

import corpus

corpus.require()

import olefile  # noqa: E402
import xlrd  # noqa: E402

import tolvenar_host as host  # noqa: E402


def other_entries(path, workbook):
    """What the compound file holds beside its workbook stream: per entry its times, class id, state bits and contents."""
    found = {}
    with olefile.OleFileIO(path) as file:
        for name in file.listdir(streams=True, storages=True):
            if len(name) == 1 and name[0].upper() == workbook.upper():
                continue
            entry = file.direntries[file._find(name)]
            contents = ""
            if entry.entry_type == olefile.STGTY_STREAM:
                contents = hashlib.sha256(file.openstream(name).read()).hexdigest()
            found["/".join(name)] = (entry.entry_type, entry.createTime, entry.modifyTime, entry.clsid, entry.dwUserFlags, contents)
        root = file.root
        found["(root)"] = (root.clsid, root.dwUserFlags)
    return found


def workbook_name(entry):
    """The stream that the library works with: Workbook where a file has both."""
    names = entry["stream"].split("+")
    return next((name for name in names if name.upper() == "WORKBOOK"), names[0])


def stream_of(path, name):
    """The contents of a root stream; of an odd file, whose chain is longer than its size, what its size says."""
    with olefile.OleFileIO(path) as file:
        return file.openstream(name).read()


def cells(path):
    with open(os.devnull, "w", encoding="utf-8") as log:
        book = xlrd.open_workbook(path, logfile=log)
    return [(sheet.name, [(sheet.row_types(row), sheet.row_values(row)) for row in range(sheet.nrows)]) for sheet in book.sheets()]


class RoundTrip(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def tearDown(self):
        self.assertEqual(host.live_blocks(), 0)

    def check(self, entry):
        path = corpus.copy_to(self.folder.name, entry)
        original = os.path.join(corpus.FOLDER, entry["file"])
        name = workbook_name(entry)
        before = stream_of(original, name)
        with host.Workbook(path) as book:
            kept = book.stream()
            self.assertEqual(kept, before[:len(kept)])
            book.save(path)
            self.assertEqual(book.stream(), kept)
        self.assertEqual(stream_of(path, name), kept)
        self.assertEqual(other_entries(path, name), other_entries(original, name))
        if entry["xlrd"] == "yes":
            # repr, since a NaN is not equal to itself
            self.assertEqual(repr(cells(path)), repr(cells(original)))

    def test_undamaged_workbooks_come_back_byte_for_byte(self):
        tried = 0
        for entry in corpus.entries(damaged=False):
            if corpus.is_compound(entry):
                with self.subTest(entry["file"]):
                    self.check(entry)
                    tried += 1
        self.assertGreater(tried, 50)

    def test_damaged_files_give_a_result_code_within_a_second(self):
        for entry in corpus.entries(damaged=True):
            with self.subTest(entry["file"]):
                path = corpus.copy_to(self.folder.name, entry)
                start = time.monotonic()
                try:
                    with host.Workbook(path) as book:
                        for sheet in range(1, book.sheets() + 1):
                            for read in (book.values, book.formats):
                                try:
                                    array = read(sheet)
                                    if array:
                                        array.close()
                                except host.Error as error:
                                    self.assertIn(error.code, range(1, 9))
                        book.save(path)
                except host.Error as error:
                    self.assertGreater(error.code, 0)
                    print(f"  {entry['file']}: {error}")
                self.assertLess(time.monotonic() - start, 1.0)

    def test_what_is_no_compound_file_is_refused_and_left_alone(self):
        for entry in corpus.entries():
            if entry["stream"] == "-" and "no_compound_file" in entry["features"]:
                path = corpus.copy_to(self.folder.name, entry)
                with self.assertRaises(host.Error) as caught:
                    host.Workbook(path)
                self.assertEqual(caught.exception.code, 101)
                with open(path, "rb") as file:
                    self.assertEqual(hashlib.sha256(file.read()).hexdigest(), entry["sha256"])


if __name__ == "__main__":
    unittest.main()
