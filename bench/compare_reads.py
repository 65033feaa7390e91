#!/usr/bin/python3
"""How long a whole workbook takes to read, here and with an independent reader (xlrd), on the same file in one run.

    compare_reads.py LIBRARY [ROWS]

Whole means: open the file and have the value of every cell of every sheet. Each side is timed several times in turn and its best
time counts, so that what else the machine does weighs on both alike. The workbook is written by xlwt: numbers, dates, texts.
"""
import ctypes
import datetime
import os
import sys
import tempfile
import time

import xlrd
import xlwt

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "host"))

import host_ctypes

TURNS = 5
COLUMNS = 10


def write_workbook(path, rows):
    book = xlwt.Workbook()
    date = xlwt.easyxf(num_format_str="YYYY-MM-DD")
    for name in ("First", "Second"):
        sheet = book.add_sheet(name)
        for row in range(rows):
            sheet.write(row, 0, datetime.date(2024, 1, 1) + datetime.timedelta(days=row % 366), date)
            sheet.write(row, 1, "Region %d" % (row % 50))
            for column in range(2, COLUMNS):
                sheet.write(row, column, row * 1.37 + column if column % 2 else row * column)
    book.save(path)


def read_here(library, path):
    """Opens the workbook and reads every sheet into an array, which is then released; gives the number of arrays."""
    book = host_ctypes.Workbook(library, path)
    count = library.XLGetNumSheets(book.table)
    for sheet in range(1, count + 1):
        edges = [ctypes.c_uint16() for _ in range(4)]
        library.XLGetSheetSize(book.buffer, book.table, sheet, *(ctypes.byref(edge) for edge in edges))
        bounds = (host_ctypes.Bound * 2)(host_ctypes.Bound(edges[1].value, 1), host_ctypes.Bound(edges[3].value, 1))
        cells = ctypes.c_void_p(library.SafeArrayCreate(host_ctypes.VT_VARIANT, 2, bounds))
        host_ctypes.check(library.XLGetVariantData(ctypes.byref(cells), book.buffer, book.table, sheet), "read the cells")
        library.SafeArrayDestroy(cells)
    book.close()
    return count


def read_there(path):
    book = xlrd.open_workbook(path)
    return len([sheet.nrows for sheet in book.sheets()])


def seconds(function, *arguments):
    begin = time.perf_counter()
    if function(*arguments) != 2:
        sys.exit("one of the readers did not find the two sheets")
    return time.perf_counter() - begin


def main():
    library = host_ctypes.load(sys.argv[1])
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "book.xls")
        write_workbook(path, rows)
        times = [(seconds(read_here, library, path), seconds(read_there, path)) for _ in range(TURNS)]
        here, there = (min(column) for column in zip(*times))
        print("%d cells, %.1f MB" % (2 * rows * COLUMNS, os.path.getsize(path) / 1e6))
    print("here %.4f s, xlrd %.4f s: %.1f times as fast" % (here, there, there / here))


if __name__ == "__main__":
    main()
