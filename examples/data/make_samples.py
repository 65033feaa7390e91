#!/usr/bin/python3
"""Makes sample_biff8.xls and sample_biff5.xls with programs that have nothing to do with this library.

    sample_biff8.xls   written by xlwt (Debian: python3-xlwt)
    sample_biff5.xls   the same workbook, written as "MS Excel 5.0/95" by ssconvert (Debian: gnumeric)

The samples are kept in the project, so nobody needs either program to build, test or try it. This script is here to show where they
come from, and to make them again:  /usr/bin/python3 examples/data/make_samples.py

What is in them, as a host counts (rows and columns from 1):

    Sheet "Sales"    rows 1 to 8, columns 1 to 6: headings; a date, a region, three numbers in a row, a formula; a total
    Sheet "Regions"  rows 1 to 4, columns 1 to 5: headings; a text, two formatted blanks, two numbers
"""
import datetime
import os
import shutil
import subprocess
import sys

import xlwt

FOLDER = os.path.dirname(os.path.abspath(__file__))

REGIONS = ("North", "South", "East")
SALES = (
    ((2024, 1, 31), "North", 120, 3, 17.5),
    ((2024, 1, 31), "South", 80, 1, 17.5),
    ((2024, 2, 29), "North", 131, 4, 18.25),
    ((2024, 2, 29), "South", 95, 0, 18.25),
    ((2024, 3, 31), "North", 140, 2, 18.25),
    ((2024, 3, 31), "East", 12, 0, 19.75),
)


def fill_sales(sheet, heading, date, money):
    for column, text in enumerate(("Date", "Region", "Units", "Returned", "Price", "Turnover")):
        sheet.write(0, column, text, heading)
    for row, (day, region, units, returned, price) in enumerate(SALES, start=1):
        sheet.write(row, 0, datetime.date(*day), date)
        sheet.write(row, 1, region)
        sheet.write(row, 2, units)
        sheet.write(row, 3, returned)
        sheet.write(row, 4, price)
        sheet.write(row, 5, xlwt.Formula("(C%d-D%d)*E%d" % (row + 1, row + 1, row + 1)), money)
    last = len(SALES) + 1
    sheet.write(last, 1, "Total", heading)
    sheet.write(last, 2, xlwt.Formula("SUM(C2:C%d)" % last))
    sheet.write(last, 5, xlwt.Formula("SUM(F2:F%d)" % last), money)
    sheet.col(0).width = 12 * 256


def fill_regions(sheet, heading, percent):
    for column, text in enumerate(("Region", "Manager", "Phone", "Target", "Share")):
        sheet.write(0, column, text, heading)
    for row, (region, target, share) in enumerate(zip(REGIONS, (400, 250, 50), (0.571, 0.357, 0.072)), start=1):
        sheet.write(row, 0, region)
        sheet.write(row, 1, None, heading)
        sheet.write(row, 2, None, heading)
        sheet.write(row, 3, target)
        sheet.write(row, 4, share, percent)


def write_biff8(path):
    book = xlwt.Workbook()
    heading = xlwt.easyxf("font: bold on; borders: bottom thin")
    date = xlwt.easyxf(num_format_str="YYYY-MM-DD")
    money = xlwt.easyxf(num_format_str="#,##0.00")
    percent = xlwt.easyxf(num_format_str="0.0%")
    fill_sales(book.add_sheet("Sales"), heading, date, money)
    fill_regions(book.add_sheet("Regions"), heading, percent)
    book.save(path)


def write_biff5(source, path):
    # By way of its own format: on the direct way it would keep the code page of the BIFF8 file, which means nothing in BIFF5.
    between = path + ".gnumeric"
    subprocess.run(["ssconvert", "--recalc", source, between], check=True)
    subprocess.run(["ssconvert", "--export-type=Gnumeric_Excel:excel_biff7", between, path], check=True)
    os.remove(between)


def main():
    biff8 = os.path.join(FOLDER, "sample_biff8.xls")
    write_biff8(biff8)
    if shutil.which("ssconvert") is None:
        sys.exit("sample_biff8.xls is made; sample_biff5.xls needs ssconvert (Debian: apt-get install gnumeric)")
    write_biff5(biff8, os.path.join(FOLDER, "sample_biff5.xls"))


if __name__ == "__main__":
    main()
