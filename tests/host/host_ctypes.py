"""A host in Python: loads the shared library with ctypes and declares for itself what it needs of the exports, as any outsider would.

    host_ctypes.py LIBRARY SAMPLE FOLDER
"""
import ctypes
import os
import shutil
import sys
from ctypes import POINTER, byref, c_char_p, c_double, c_int16, c_int32, c_uint8, c_uint16, c_uint32, c_void_p

VT_EMPTY, VT_NULL, VT_I4, VT_R8, VT_BSTR, VT_VARIANT = 0, 1, 3, 5, 8, 12
SLOT_CAPACITIES = (256, 512, 1024, 33000, 100000, 1000000, 1500000, 105000000, 105000000)


class Payload(ctypes.Union):
    _fields_ = [("number", c_double), ("integer", c_int32), ("text", c_void_p)]


class Variant(ctypes.Structure):
    _anonymous_ = ("payload",)
    _fields_ = [("vt", c_uint16), ("reserved", c_uint16 * 3), ("payload", Payload)]


class Bound(ctypes.Structure):
    _fields_ = [("elements", c_uint32), ("lower", c_int32)]


U32 = POINTER(c_uint32)
PROTOTYPES = {
    "MEMORYALLOC": (c_uint32, [c_int32]),
    "MEMORYREALLOC": (c_uint32, [c_uint32, c_int32]),
    "MEMORYFREE": (c_int32, [U32]),
    "MEMORYREMOVE": (c_int32, [U32]),
    "MEMORYISHANDLE": (c_int32, [c_uint32]),
    "MEMORYFREEALL": (None, []),
    "MEMORYHANDLES": (c_uint32, [U32, c_uint32]),
    "MEMORYSIZE": (c_uint32, [c_uint32]),
    "MEMORYALLOCSIZE": (c_uint32, [c_uint32]),
    "MEMORYSET1": (c_int32, [U32, c_int32, c_uint8]),
    "MEMORYGET": (c_uint32, [U32, c_int32, c_int32]),
    "XLOpenFile": (c_int16, [c_char_p, U32, U32]),
    "XLLocateSheets": (c_int16, [c_uint32, U32, c_uint32]),
    "XLFreeHandle": (c_uint32, [U32]),
    "XLSaveFile": (c_int16, [c_char_p, U32, U32, U32]),
    "XLGetNumSheets": (c_int16, [c_uint32]),
    "XLGetNumVers": (c_uint16, [c_uint32, c_uint32]),
    "XLGetNameSheet": (c_int16, [c_uint32, c_uint32, c_int16, POINTER(c_void_p)]),
    "XLGetSheetSize": (c_int16, [c_uint32, c_uint32, c_int16] + [POINTER(c_uint16)] * 4),
    "XLGetVariantData": (c_int16, [POINTER(c_void_p), c_uint32, c_uint32, c_int16]),
    "XLChangeCellValue": (c_int16, [U32, c_uint32, U32, c_int16, c_int16, c_int16, POINTER(Variant)]),
    "XLChangeCellXF": (c_int16, [U32, c_uint32, U32, c_int16, c_int16, c_int16, c_uint16]),
    "SysAllocStringLen": (c_void_p, [c_char_p, c_uint32]),
    "SysStringByteLen": (c_uint32, [c_void_p]),
    "SysFreeString": (None, [c_void_p]),
    "VariantClear": (c_int32, [POINTER(Variant)]),
    "SafeArrayCreate": (c_void_p, [c_uint16, c_uint32, POINTER(Bound)]),
    "SafeArrayGetElement": (c_int32, [c_void_p, POINTER(c_int32), c_void_p]),
    "SafeArrayPutElement": (c_int32, [c_void_p, POINTER(c_int32), c_void_p]),
    "SafeArrayDestroy": (c_int32, [c_void_p]),
}


def load(path):
    library = ctypes.CDLL(path)
    for name, (result, arguments) in PROTOTYPES.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


def require(condition, sentence):
    if not condition:
        sys.exit("host_ctypes.py: " + sentence)


def check(result, what):
    require(result == 0, "could not %s: result %d" % (what, result))


def narrow(library, text):
    """A BSTR's text, one byte a character, up to the first zero."""
    if not text:
        return ""
    return ctypes.string_at(text, library.SysStringByteLen(text)).split(b"\0")[0].decode("latin-1")


def value_of(library, element):
    value = narrow(library, element.text) if element.vt == VT_BSTR else element.number if element.vt == VT_R8 else None
    library.VariantClear(byref(element))
    return value


def check_pool(library):
    in_use = c_uint32(5)
    require(library.MEMORYHANDLES(byref(in_use), 0) == 0 and in_use.value == 0, "an unset pool has live blocks")
    blocks = [c_uint32(library.MEMORYALLOC(capacity)) for capacity in SLOT_CAPACITIES]
    for number, (block, capacity) in enumerate(zip(blocks, SLOT_CAPACITIES), start=1):
        require(library.MEMORYISHANDLE(block) == number, "a block of %d bytes is not in slot %d" % (capacity, number))
        require(library.MEMORYALLOCSIZE(block) == capacity, "slot %d has another capacity" % number)
    require(library.MEMORYALLOC(0) == 0, "there is a tenth block")
    require(library.MEMORYHANDLES(byref(in_use), 0) == 9 and in_use.value == sum(SLOT_CAPACITIES), "the bytes in use are miscounted")
    require(library.MEMORYREALLOC(blocks[7], 105000001) == 0, "a block outgrows the largest slot")
    require(library.MEMORYREALLOC(blocks[3], 33001) == 0, "a block moves up where all is taken")
    require(library.MEMORYREALLOC(blocks[3], 10) == blocks[3].value, "a block moves down")
    require(library.MEMORYSIZE(blocks[3]) == 10, "a block forgets its new size")
    require(library.MEMORYGET(byref(blocks[8]), 105000001, 105000000) == 0, "a byte behind the slot can be read")
    require(library.MEMORYSET1(byref(blocks[0]), 256, 200) == 256, "a whole slot can't be set")
    require(ctypes.string_at(blocks[0].value, 256) == bytes([200]) * 256, "a handle is not the address of its bytes")
    require(library.MEMORYREMOVE(byref(blocks[0])) == 1 and blocks[0].value == 0, "a block can't be removed")
    again = library.MEMORYALLOC(2)
    require(ctypes.string_at(again, 3) == b"\0\0\xc8", "more was zeroed than was asked for, or less")
    library.MEMORYFREEALL()
    require(library.MEMORYISHANDLE(again) == 0 and library.MEMORYSIZE(again) == 0, "a handle outlived the pool")


class Workbook:
    """An open workbook; the caller closes it."""

    def __init__(self, library, path):
        self.library = library
        self.buffer, self.table, self.size = c_uint32(), c_uint32(), c_uint32()
        check(library.XLOpenFile(os.fsencode(path), byref(self.buffer), byref(self.size)), "open " + path)
        self.locate()
        self.generation = library.XLGetNumVers(self.buffer, self.table)

    def locate(self):
        check(self.library.XLLocateSheets(self.buffer, byref(self.table), self.size), "locate the sheets")

    def sheets(self):
        names = []
        for sheet in range(1, self.library.XLGetNumSheets(self.table) + 1):
            name = c_void_p()
            self.library.XLGetNameSheet(self.buffer, self.table, sheet, byref(name))
            names.append(narrow(self.library, name))
            self.library.SysFreeString(name)
        return names

    def rows(self, sheet):
        library = self.library
        first_row, last_row, first_column, last_column = (c_uint16() for _ in range(4))
        outs = [byref(out) for out in (first_row, last_row, first_column, last_column)]
        check(library.XLGetSheetSize(self.buffer, self.table, sheet, *outs), "measure a sheet")
        bounds = (Bound * 2)(Bound(last_row.value, 1), Bound(last_column.value, 1))
        cells = c_void_p(library.SafeArrayCreate(VT_VARIANT, 2, bounds))
        check(library.XLGetVariantData(byref(cells), self.buffer, self.table, sheet), "read the cells")
        rows = []
        for row in range(1, last_row.value + 1):
            rows.append([])
            for column in range(1, last_column.value + 1):
                element = Variant()
                check(library.SafeArrayGetElement(cells, (c_int32 * 2)(row, column), byref(element)), "read an element")
                rows[-1].append(value_of(library, element))
        check(library.SafeArrayDestroy(cells), "give an array back")
        return rows

    def put(self, sheet, row, column, value):
        element = Variant(vt=VT_EMPTY)
        if isinstance(value, str):
            element.vt = VT_BSTR
            element.text = self.library.SysAllocStringLen(value.encode("utf-16-le"), len(value))
        elif value is not None:
            element.vt, element.number = VT_R8, value
        change = self.library.XLChangeCellValue
        result = change(byref(self.buffer), self.table, byref(self.size), sheet, row, column, byref(element))
        self.library.VariantClear(byref(element))
        return result

    def save(self, path):
        check(self.library.XLSaveFile(os.fsencode(path), byref(self.buffer), byref(self.table), byref(self.size)), "save " + path)
        require(self.table.value == 0, "a save leaves the table")
        self.locate()

    def close(self):
        self.library.XLFreeHandle(byref(self.table))
        self.library.XLFreeHandle(byref(self.buffer))


def check_sample(book, generation):
    require(book.generation == generation, "the sample is of generation %d" % book.generation)
    names = book.sheets()
    require(len(names) == 2, "the sample has %d sheets" % len(names))
    if generation == 6:
        require(names == ["Sales", "Regions"], "the sheets are called %s" % names)
    rows = book.rows(1)
    require(rows[0] == ["Date", "Region", "Units", "Returned", "Price", "Turnover"], "the headings are %s" % rows[0])
    require(rows[6][:5] == ["45382.000000", "East", "12.000000", "0.000000", "19.750000"], "the seventh row is %s" % rows[6])


LONG_TEXT = "a text of some length, longer than what stood there"


def change(book):
    check(book.put(1, 7, 3, 1e6), "write a number")
    check(book.put(1, 7, 4, LONG_TEXT), "write a text")
    check(book.put(1, 6, 5, None), "write an empty value")
    require(book.put(1, 9, 1, 1.0) == 1, "a cell below the sheet is written")
    require(book.put(3, 1, 1, 1.0) == 1, "a cell of a third sheet is written")


def check_changed(book):
    rows = book.rows(1)
    # A text is written in BIFF5's layout in both generations, on purpose: a reader of BIFF8 takes its first character for flags.
    written = LONG_TEXT if book.generation == 5 else LONG_TEXT[1:]
    require([rows[6][2], rows[6][4]] == ["1000000.000000", "19.750000"], "row 7 is %s" % rows[6])
    require(rows[6][3].startswith(written), "the text reads as %s" % rows[6][3])
    require(rows[5][4] is None and rows[5][3] == "2.000000", "row 6 is %s" % rows[5])


def check_workbook(library, sample, folder):
    generation = 5 if "biff5" in os.path.basename(sample) else 6
    copy = os.path.join(folder, "ctypes_copy_%d.xls" % generation)
    saved = os.path.join(folder, "ctypes_saved_%d.xls" % generation)
    shutil.copyfile(sample, copy)
    if os.path.exists(saved):
        os.remove(saved)
    book = Workbook(library, copy)
    check_sample(book, generation)
    change(book)
    check_changed(book)
    book.save(saved)
    check_changed(book)
    book.close()
    again = Workbook(library, saved)
    check_changed(again)
    again.close()
    require(library.MEMORYHANDLES(None, 0) == 0, "closed workbooks left blocks behind")
    with open(copy, "rb") as left, open(sample, "rb") as right:
        require(left.read() == right.read(), "a workbook that was only read has changed")


def main():
    library = load(sys.argv[1])
    check_pool(library)
    check_workbook(library, sys.argv[2], sys.argv[3])
    print("%s: opened, changed, saved and read back" % sys.argv[2])


if __name__ == "__main__":
    main()
