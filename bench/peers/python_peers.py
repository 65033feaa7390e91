#!/usr/bin/python3
"""The same pieces of work by xlrd and xlwt; each repetition prints its seconds and the processor's.

    python_peers.py make FOLDER                        workbooks by xlwt with the contents of those measured on
    python_peers.py xlrd R1|R2|R3 INPUT OUTPUT WARM_UPS REPEATS
    python_peers.py xlwt W1|W2 INPUT OUTPUT WARM_UPS REPEATS
"""
import os
import sys
import time

ROWS, COLUMNS = 65000, 20
TEXT_ROWS, TEXT_COLUMNS, TEXTS = 5000, 10, 5000
MIXED_ROWS, MIXED_COLUMNS = 10000, 10


def number_at(row, column):
    return row * 1.37 + column * 0.001 + 0.1


def integer_at(row, column):
    return row % 1000 * 20 + column


def text_at(index):
    return "Text %04d" % index


def mixed_at(row, column):
    if column < 5:
        return number_at(row, column)
    return "a text of a report" if column == 9 else integer_at(row, column)


def write_sheets(path, sheets, rows, columns, cell_at):
    import xlwt

    book = xlwt.Workbook()
    for sheet in range(sheets):
        written = book.add_sheet("Sheet%d" % (sheet + 1))
        part = rows // sheets
        for row in range(part):
            for column in range(columns):
                written.write(row, column, cell_at(sheet * part + row, column))
            if row % 1000 == 999:
                written.flush_row_data()
    book.save(path)


def make(folder):
    write_sheets(os.path.join(folder, "numbers_xlwt.xls"), 2, ROWS, COLUMNS, number_at)
    write_sheets(os.path.join(folder, "integers_xlwt.xls"), 2, ROWS, COLUMNS, integer_at)
    write_sheets(os.path.join(folder, "texts_xlwt.xls"), 1, TEXT_ROWS, TEXT_COLUMNS,
                 lambda row, column: text_at((row * TEXT_COLUMNS + column) % TEXTS))
    write_sheets(os.path.join(folder, "mixed_xlwt.xls"), 1, MIXED_ROWS, MIXED_COLUMNS, mixed_at)


def read(path, _):
    import xlrd

    book = xlrd.open_workbook(path)
    return sum(len(sheet.row_values(row)) for sheet in book.sheets() for row in range(sheet.nrows))


def write(job, path):
    if job == "W1":
        write_sheets(path, 1, ROWS, COLUMNS, number_at)
    else:
        write_sheets(path, 1, ROWS, TEXT_COLUMNS, lambda row, column: text_at((row * TEXT_COLUMNS + column) % TEXTS))


def run(peer, job, source, target, warm_ups, repeats):
    for turn in range(-warm_ups, repeats):
        begin, cpu = time.perf_counter(), time.process_time()
        if peer == "xlrd":
            read(source, target)
        else:
            write(job, target)
        if turn >= 0:
            print("%.6f %.6f" % (time.perf_counter() - begin, time.process_time() - cpu))


if __name__ == "__main__":
    if sys.argv[1] == "make":
        make(sys.argv[2])
    else:
        run(*sys.argv[1:5], *map(int, sys.argv[5:7]))
