#!/usr/bin/env python3
"""Makes a workbook of CSV files: one sheet a file, numbers as numbers, progress while it goes.

    csv_report.py --out report.xls sales.csv [more.csv ...]
"""
import argparse
import csv
import os
import sys

try:
    import tolvenar
except ImportError as failure:
    sys.exit(f"csv_report: {failure}")

SLICE = 1000
MAX_ROWS = 16384  # of a BIFF5 sheet, as other programs read it
MAX_COLUMNS = 256


def value(field):
    """A number where the field is one, else its text; nothing for an empty field."""
    if not field:
        return None
    try:
        return float(field)
    except ValueError:
        return field


def measure(path, delimiter):
    """Rows and columns of a file, read once so that it need not be held in memory."""
    rows = columns = 0
    with open(path, newline="", encoding="utf-8-sig") as file:
        for row in csv.reader(file, delimiter=delimiter):
            rows, columns = rows + 1, max(columns, len(row))
    if rows == 0 or columns == 0:
        raise ValueError("the file is empty")
    if rows > MAX_ROWS or columns > MAX_COLUMNS:
        raise ValueError(f"{rows} rows and {columns} columns; a sheet has {MAX_ROWS} and {MAX_COLUMNS}. Split the file")
    return rows, columns


def show(name, done, all_rows):
    """A line that is written over on a terminal, and a line for the end alone everywhere else."""
    if sys.stderr.isatty():
        print(f"\r{name}: {done} of {all_rows} rows", end="\n" if done == all_rows else "", file=sys.stderr, flush=True)
    elif done == all_rows:
        print(f"{name}: {done} rows", file=sys.stderr)


def add_sheet(book, path, delimiter):
    rows, columns = measure(path, delimiter)
    name = os.path.splitext(os.path.basename(path))[0][:31]
    with open(path, newline="", encoding="utf-8-sig") as file, book.sheet(name, rows, columns) as sheet:
        part, done = [], 0
        for row in csv.reader(file, delimiter=delimiter):
            part.append([value(field) for field in row])
            if len(part) == SLICE or done + len(part) == rows:
                sheet.write(part)
                done, part = done + len(part), []
                show(name, done, rows)


def main():
    parser = argparse.ArgumentParser(description="Makes a workbook of CSV files, one sheet a file.")
    parser.add_argument("files", nargs="+", metavar="FILE.csv", help="comma-separated, UTF-8; its name becomes the sheet's")
    parser.add_argument("--out", required=True, metavar="WORKBOOK.xls", help="the workbook to make; it must not exist yet")
    parser.add_argument("--delimiter", default=",", help="what stands between the fields (default: a comma)")
    arguments = parser.parse_args()
    if os.path.exists(arguments.out):
        sys.exit(f"csv_report: {arguments.out} is there already. Name another file, or remove it.")
    path = arguments.out
    try:
        with tolvenar.Workbook.new() as book:
            for path in arguments.files:
                add_sheet(book, path, arguments.delimiter)
            path = arguments.out
            book.save(path)
    except (OSError, ValueError, csv.Error, tolvenar.Error) as failure:
        sys.exit(f"csv_report: {path}: {failure}")
    print(f"{arguments.out}: {os.path.getsize(arguments.out)} bytes")


if __name__ == "__main__":
    main()
