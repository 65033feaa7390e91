"""Saves that are killed, and saves onto a full disk: the file is always the old workbook or the new one, whole, and a save never answers
0 for a file that is not there.
"""
import hashlib
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

try:
    import olefile
    import xlwt
except ImportError as missing:
    print(f"SKIPPED: {missing}; scripts/install-packages brings it")
    sys.exit(77)

import tolvenar_host as host

KILLS = 300


def make_workbook(path, rows=400):
    """A workbook of an independent writer: one sheet of numbers, some 100 KB."""
    book = xlwt.Workbook()
    sheet = book.add_sheet("Data")
    for row in range(rows):
        for column in range(10):
            sheet.write(row, column, row * 1.1 + column)
    book.save(path)


def digest(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()


def first_cell(path):
    """The number in the first cell, by the library; the whole file is listed by an independent program first."""
    with olefile.OleFileIO(path) as file:
        assert len(file.openstream("Workbook").read()) == file.get_size("Workbook")
        assert not file.parsing_issues, file.parsing_issues
    with host.Workbook(path) as book:
        cells = book.values(1)
        try:
            assert cells.value(400, 10) == b"%f" % (399 * 1.1 + 9)
            return float(cells.value(1, 1))
        finally:
            cells.close()


def change_and_save(path, number):
    with host.Workbook(path) as book:
        book.change(1, 1, 1, number)
        book.save(path)


class Killed(unittest.TestCase):
    def test_a_save_killed_at_any_instant_leaves_a_whole_workbook(self):
        chance = random.Random(20)
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "book.xls")
            make_workbook(path)
            seen, start = set(), 1
            longest = 0.03  # seconds until a kill: more where the machine is too busy for a save in that time
            for _ in range(KILLS):
                child = os.fork()
                if child == 0:
                    for number in range(start, start + 100000):
                        change_and_save(path, float(number))
                    os._exit(0)
                time.sleep(chance.uniform(0.0, longest))
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
                number = first_cell(path)
                longest = max(0.03, longest * (1.2 if number in seen else 0.9))
                seen.add(number)
                start = int(number) + 1
            self.assertGreater(len(seen), KILLS // 4, "the kills hit no saves")
            change_and_save(path, -1.0)
            self.assertEqual(first_cell(path), -1.0)
            print(f"  {KILLS} kills, {start - 1} saves completed; left in the folder: {os.listdir(folder)}")


    def test_a_creation_killed_at_any_instant_leaves_no_file_or_a_whole_workbook(self):
        chance = random.Random(21)
        # Where flushing is quick more calls are hit; what a kill leaves is the same everywhere.
        with tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as folder:
            source, path = os.path.join(folder, "source.xls"), os.path.join(folder, "new.xls")
            make_workbook(source)
            there = missing = 0
            for _ in range(KILLS):
                child = os.fork()
                if child == 0:
                    while True:
                        with host.Workbook(source) as book:
                            book.save(path)
                        os.remove(path)
                time.sleep(chance.uniform(0.0, 0.02))
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
                if os.path.exists(path):
                    self.assertEqual(first_cell(path), first_cell(source))
                    os.remove(path)
                    there += 1
                else:
                    missing += 1
            with host.Workbook(source) as book:
                book.save(path)
            self.assertEqual(set(os.listdir(folder)), {"source.xls", "new.xls"})
            self.assertGreater(missing, KILLS // 20, "the kills hit no creations")
            print(f"  {KILLS} kills: {there} times a whole workbook, {missing} times none")


class FullDisk(unittest.TestCase):
    """A small file system of its own, filled up to a number of free kilobytes."""

    FREE = range(0, 300, 4)

    def setUp(self):
        self.mount = tempfile.mkdtemp()
        made = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2m", "tmpfs", self.mount], capture_output=True, text=True)
        if made.returncode != 0:
            os.rmdir(self.mount)
            print(f"SKIPPED here: a small file system can't be mounted ({made.stderr.strip()})")
            self.skipTest("mount needs root")
        self.addCleanup(self.unmount)
        self.source = os.path.join(self.mount, "book.xls")
        make_workbook(self.source)

    def unmount(self):
        subprocess.run(["umount", self.mount], check=True)
        os.rmdir(self.mount)

    def leave_free(self, kilobytes):
        filler = os.path.join(self.mount, "filler")
        if os.path.exists(filler):
            os.remove(filler)
        free = shutil.disk_usage(self.mount).free - kilobytes * 1024
        with open(filler, "wb") as file:
            file.write(bytes(max(free, 0)))

    def test_an_existing_workbook_stays_whole(self):
        results = {}
        for kilobytes in self.FREE:
            self.leave_free(0)
            before = digest(self.source)
            value = first_cell(self.source)
            self.leave_free(kilobytes)
            try:
                change_and_save(self.source, value + 1)
                results[kilobytes] = 0
                self.assertEqual(first_cell(self.source), value + 1)
            except host.Error as error:
                results[kilobytes] = error.code
                self.assertEqual(digest(self.source), before)
            host.LIB.MEMORYFREEALL()
            self.assertEqual(set(os.listdir(self.mount)), {"book.xls", "filler"})
        print(f"  result by free kilobytes: {results}")
        self.assertIn(0, results.values())
        self.assertNotEqual(results[0], 0)

    def test_a_new_workbook_is_there_whole_or_not_at_all(self):
        results = {}
        for kilobytes in self.FREE:
            path = os.path.join(self.mount, "new.xls")
            self.leave_free(kilobytes)
            with host.Workbook(self.source) as book:
                try:
                    book.save(path)
                    results[kilobytes] = 0
                except host.Error as error:
                    results[kilobytes] = error.code
            host.LIB.MEMORYFREEALL()
            self.assertEqual(os.path.exists(path), results[kilobytes] == 0)
            if os.path.exists(path):
                self.assertEqual(first_cell(path), first_cell(self.source))
                os.remove(path)
        print(f"  result by free kilobytes: {results}")
        self.assertIn(0, results.values())
        self.assertNotEqual(results[0], 0)


if __name__ == "__main__":
    unittest.main()
