"""A Python host of Tolvenar: handles, texts and arrays as Python values, result codes as exceptions.

    import tolvenar

    with tolvenar.Workbook("report.xls") as book:
        for name, number in zip(book.sheet_names(), range(1, book.sheets() + 1)):
            print(name, book.used_range(number))
        book.change(1, 2, 3, 42.0)              # sheet 1, row 2, column 3
        book.save("changed.xls")

    with tolvenar.Workbook.new(biff8=False) as book:
        book.append("Sales", [["Region", "Amount"], ["North", 120.5]])
        book.save("sales.xls")

Standard library only. The shared library is found by the environment variable TOLVENAR_LIBRARY (a path), else as the system finds a
library "tolvenar", else in the build folder of this source tree. Sheets, rows and columns are counted from 1. The library serves one
thread at a time, and has nine blocks of memory for all open workbooks together: close what you are done with, as `with` does.
"""
import contextlib
import ctypes
import ctypes.util
import os
import re
import struct

_U16, _I16, _U32, _I32 = ctypes.c_uint16, ctypes.c_int16, ctypes.c_uint32, ctypes.c_int32
_ARRAY, _BSTR = ctypes.c_void_p, ctypes.c_void_p
_VT_EMPTY, _VT_R8, _VT_BSTR, _VT_ERROR, _VT_BOOL, _VT_VARIANT = 0, 5, 8, 10, 11, 12

# Texts are stored with one byte a character.
ENCODING = "cp1252"


class Error(Exception):
    """A call that did not do what it was asked for: `function`, its result `code`, and a sentence for people."""

    def __init__(self, function, code, sentence):
        super().__init__(f"{sentence} ({function}: result {code})")
        self.function, self.code = function, code


class _Variant(ctypes.Structure):
    _fields_ = [("vt", _U16), ("reserved", _U16 * 3), ("value", ctypes.c_uint64)]


class _Bound(ctypes.Structure):
    _fields_ = [("elements", _U32), ("lower", _I32)]


_REF32, _VARIANTS, _PATH = ctypes.POINTER(_U32), ctypes.POINTER(_Variant), ctypes.c_char_p

# Result and arguments of the functions that are used here; include/tolvenar/tolvenar.h has all of them, with their result codes.
_FUNCTIONS = {
    "XLOpenFile": (_I16, _PATH, _REF32, _REF32),
    "XLLocateSheets": (_I16, _U32, _REF32, _U32),
    "XLFreeHandle": (_U32, _REF32),
    "XLSaveFile": (_I16, _PATH, _REF32, _REF32, _REF32),
    "XLGetNumSheets": (_I16, _U32),
    "XLGetNumVers": (_U16, _U32, _U32),
    "XLGetSheetSize": (_I16, _U32, _U32, _I16) + (ctypes.POINTER(_U16),) * 4,
    "XLGetVariantData": (_I16, ctypes.POINTER(_ARRAY), _U32, _U32, _I16),
    "XLChangeCellValue": (_I16, _REF32, _U32, _REF32, _I16, _I16, _I16, _VARIANTS),
    "XLInsertRow": (_I16, _REF32, _U32, _REF32, _I16, _I16),
    "XLDeleteRow": (_I16, _REF32, _U32, _REF32, _I16, _I16),
    "XLCreateEmptyBook": (_I16, _REF32, _REF32, _I32),
    "AppendVariantSheet1": (_I16, _REF32, _REF32, ctypes.c_char_p),
    "CreateVariantSheet1A": (_I16, _REF32, _REF32, _I32, _I32, _REF32),
    "CreateVariantSheet2A": (_I16, _REF32, _REF32, _REF32, _U16, _U16, _U16, _U16, _VARIANTS, ctypes.POINTER(_U16)),
    "CreateVariantSheet3": (_I16, _REF32, _REF32, _REF32),
    "AppendVariantSheet2": (_I16, _REF32, _REF32, _I16),
    "SysAllocStringLen": (_BSTR, ctypes.c_void_p, _U32),
    "SysFreeString": (None, _BSTR),
    "SafeArrayCreate": (_ARRAY, _U16, _U32, ctypes.POINTER(_Bound)),
    "SafeArrayDestroy": (_I32, _ARRAY),
    "SafeArrayAccessData": (_I32, _ARRAY, ctypes.POINTER(ctypes.c_void_p)),
    "SafeArrayUnaccessData": (_I32, _ARRAY),
}


def _candidates():
    if "TOLVENAR_LIBRARY" in os.environ:
        yield os.environ["TOLVENAR_LIBRARY"]
        return
    found = ctypes.util.find_library("tolvenar")
    if found:
        yield found
    tree = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    yield os.path.join(tree, "build", "release", "libtolvenar.so")


def _load():
    tried = []
    for path in _candidates():
        try:
            library = ctypes.CDLL(path)
        except OSError as failure:
            tried.append(f"  {failure}")
            continue
        for name, (result, *arguments) in _FUNCTIONS.items():
            function = getattr(library, name)
            function.restype, function.argtypes = result, arguments
        return library
    raise ImportError("libtolvenar.so was not found. Build it with scripts/demo, install it, or name it in TOLVENAR_LIBRARY.\n"
                      + "\n".join(tried))


_LIB = _load()

_OPEN = {5: "the workbook is larger than the memory blocks that are free", 6: "the workbook's stream can't be read",
         101: "there is no such file, or it is in use, can't be written, or is no compound file",
         102: "the file holds no workbook", 103: "the workbook is empty or too large"}
_LOCATE = {9: "the workbook has no end", 11: "no memory block is free for the table of sheets", 12: "the last sheet has no end"}
_SAVE = {4: "no memory block is free for the copy", 6: "the disk is full, or the stream can't be written",
         101: "the file that is there can't be opened for writing, or is no compound file",
         102: "the file that is there holds no workbook of this generation", 105: "the file can't be completed: nothing is saved",
         111: "the file can't be created"}
_CELL = {1: "there is no such sheet, row or column in the used range", 12: "the text is too long"}
_READ = {3: "there is no such sheet, or it is no worksheet"}
_ROW = {1: "there are no sheets", 3: "there is no such sheet, or it is no worksheet", 4: "the used range is damaged",
        10: "the new row can't be written: the memory blocks are all taken"}
_APPEND = {-2: "no larger memory block is free: the workbook is lost", -7: "no memory block is free for the layout",
           -8: "the workbook's sheets can't be located: it is lost"}


def _check(done, function, code, sentences):
    if not done:
        raise Error(function, code, sentences.get(code, "the call failed"))


def _bstr_bytes(address):
    if not address:
        return b""
    (length,) = struct.unpack("<I", ctypes.string_at(address - 4, 4))
    return ctypes.string_at(address, length)


def _python_value(raw):
    """What an element of 16 bytes, a VARIANT, holds: None, a float, a bool, or text."""
    vt, payload = struct.unpack("<H6xQ", raw)
    if vt == _VT_BSTR:
        # A text has as many units as characters, but its bytes stand packed in the first half.
        return _bstr_bytes(payload).rstrip(b"\0").decode(ENCODING, "replace")
    if vt == _VT_R8:
        return struct.unpack("<d", raw[8:])[0]
    if vt == _VT_BOOL:
        return struct.unpack("<h", raw[8:10])[0] != 0
    return None


_NUMBER = re.compile(r"-?[0-9]+\.[0-9]{6}\Z")


class _Values:
    """VARIANTs that the library can read, made of Python values; their texts are released by close()."""

    def __init__(self, values):
        self.variants = (_Variant * max(len(values), 1))()
        self.texts = []
        for variant, value in zip(self.variants, values):
            self._set(variant, value)

    def _set(self, variant, value):
        if value is None:
            variant.vt = _VT_EMPTY
        elif isinstance(value, (int, float)):
            variant.vt = _VT_R8
            variant.value = struct.unpack("<Q", struct.pack("<d", value))[0]
        else:
            # One unit a character, of which the library keeps the low byte.
            units = str(value).encode(ENCODING, "replace")
            wide = units.decode("latin-1").encode("utf-16-le")
            text = _LIB.SysAllocStringLen(wide, len(units))
            self.texts.append(text)
            variant.vt, variant.value = _VT_BSTR, text

    def close(self):
        for text in self.texts:
            _LIB.SysFreeString(text)
        self.texts = []


class Workbook:
    """An open workbook. `path` is opened for reading and writing, read, and closed again: nothing is written until save()."""

    def __init__(self, path):
        self._start()
        code = _LIB.XLOpenFile(os.fsencode(path), ctypes.byref(self._buffer), ctypes.byref(self._size))
        if code:
            _LIB.XLFreeHandle(ctypes.byref(self._buffer))
        _check(code == 0, "XLOpenFile", code, _OPEN)

    @classmethod
    def new(cls, biff8=False):
        """A workbook without sheets. BIFF5, the default, is what every program reads as it was meant."""
        book = cls.__new__(cls)
        book._start()
        code = _LIB.XLCreateEmptyBook(ctypes.byref(book._buffer), ctypes.byref(book._size), 8 if biff8 else 5)
        _check(code == 0, "XLCreateEmptyBook", code, {-1: "no memory block is free for a workbook"})
        return book

    def _start(self):
        self._buffer, self._size, self._table = _U32(), _U32(), _U32()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Gives the memory back. The workbook is of no use after it."""
        _LIB.XLFreeHandle(ctypes.byref(self._table))
        _LIB.XLFreeHandle(ctypes.byref(self._buffer))

    def _located(self):
        """The table of sheets, made when it is needed: a save and a new sheet make the old one useless."""
        if not self._table.value:
            code = _LIB.XLLocateSheets(self._buffer, ctypes.byref(self._table), self._size)
            if code not in (0, 1):
                self._buffer.value = 0  # released by the call
            _check(code == 0, "XLLocateSheets", code, _LOCATE)
        return self._table

    def sheets(self):
        """The number of sheets."""
        return _LIB.XLGetNumSheets(self._located())

    def generation(self):
        """5 for BIFF5, 8 for BIFF8."""
        return 8 if _LIB.XLGetNumVers(self._buffer, self._located()) == 6 else 5

    def sheet_names(self):
        """The names of the sheets, from their BOUNDSHEET records. (XLGetNameSheet reads all names by the layout of BIFF8.)"""
        biff8 = self.generation() == 8
        stream = ctypes.string_at(self._buffer.value, self._size.value)
        names, at = [], 0
        while at + 4 <= len(stream):
            record, length = struct.unpack_from("<HH", stream, at)
            if record == 0x000A:  # EOF
                break
            if record == 0x0085:  # BOUNDSHEET
                names.append(self._name(stream[at + 10:at + 4 + length], biff8))
            if record == 0xFEFF:  # a record has moved behind the workbook's end, and the walk goes on there
                at, = struct.unpack_from("<I", stream, at + 4)
            elif record == 0xFEFA:  # and back
                at, = struct.unpack_from("<I", stream, at + 4)
            else:
                at += 4 + length
        return names

    @staticmethod
    def _name(payload, biff8):
        count = payload[0]
        if not biff8:
            return payload[1:1 + count].decode(ENCODING, "replace")
        if payload[1] & 1:
            return payload[2:2 + 2 * count].decode("utf-16-le", "replace")
        return payload[2:2 + count].decode("latin-1")

    def used_range(self, sheet):
        """(first row, last row, first column, last column) of a worksheet; None for a chart, a macro sheet, or when it is not told."""
        edges = [_U16(0) for _ in range(4)]
        code = _LIB.XLGetSheetSize(self._buffer, self._located(), sheet, *(ctypes.byref(edge) for edge in edges))
        _check(code not in (1, 2, 3), "XLGetSheetSize", code, {2: "there is no such sheet"})
        return tuple(edge.value for edge in edges) if code == 0 and edges[1].value else None

    def rows(self, sheet, numbers=True):
        """The values of a worksheet, row by row from row 1 and column 1: None, float or str.

        The library hands numbers out as texts with six decimals. With `numbers` whatever looks like that becomes a float again; without, all
        but the results of formulas stays text."""
        edges = self.used_range(sheet)
        if edges is None:
            return []
        rows, columns = edges[1], edges[3]
        bounds = (_Bound * 2)(_Bound(rows, 1), _Bound(columns, 1))
        array = ctypes.c_void_p(_LIB.SafeArrayCreate(_VT_VARIANT, 2, bounds))
        if not array.value:
            raise MemoryError(f"an array of {rows} x {columns} elements")
        try:
            code = _LIB.XLGetVariantData(ctypes.byref(array), self._buffer, self._located(), sheet)
            _check(code == 0, "XLGetVariantData", code, _READ)
            return self._elements(array, rows, columns, numbers)
        finally:
            _LIB.SafeArrayDestroy(array)

    @staticmethod
    def _elements(array, rows, columns, numbers):
        data = ctypes.c_void_p()
        _LIB.SafeArrayAccessData(array, ctypes.byref(data))
        raw = ctypes.string_at(data.value, rows * columns * 16)
        table = []
        for row in range(rows):  # the row varies fastest
            places = range(row * 16, len(raw), rows * 16)
            values = [_python_value(raw[place:place + 16]) for place in places]
            if numbers:
                values = [float(value) if isinstance(value, str) and _NUMBER.match(value) else value for value in values]
            table.append(values)
        _LIB.SafeArrayUnaccessData(array)
        return table

    def change(self, sheet, row, column, value):
        """Gives a cell of the used range another value: a number, a text, or None for a blank."""
        values = _Values([value])
        try:
            code = _LIB.XLChangeCellValue(ctypes.byref(self._buffer), self._located(), ctypes.byref(self._size), sheet, row, column,
                                          values.variants)
        finally:
            values.close()
        _check(code == 0, "XLChangeCellValue", code, _CELL)

    def insert_row(self, sheet, row):
        """Opens an empty row; cells and formulas of the sheet follow."""
        code = _LIB.XLInsertRow(ctypes.byref(self._buffer), self._located(), ctypes.byref(self._size), sheet, row)
        _check(code == 0, "XLInsertRow", code, _ROW)

    def delete_row(self, sheet, row):
        """Takes a row away; cells and formulas of the sheet follow."""
        code = _LIB.XLDeleteRow(ctypes.byref(self._buffer), self._located(), ctypes.byref(self._size), sheet, row)
        _check(code == 0, "XLDeleteRow", code, _ROW)

    def append(self, name, rows, formats=None):
        """Adds a worksheet with these rows, all of the same length. Large tables: see sheet()."""
        rows = list(rows)
        columns = max((len(row) for row in rows), default=1)
        with self.sheet(name, len(rows), columns, formats) as sheet:
            sheet.write(rows)

    @contextlib.contextmanager
    def sheet(self, name, rows, columns, formats=None):
        """Adds a worksheet of `rows` x `columns` that is written slice by slice:

            with book.sheet("Sales", 60000, 5) as sheet:
                for slice in slices:
                    sheet.write(slice)

        The workbook is of no use when something fails in between: start again with a new one.
        `formats` has the XF of each column: 15 General, 17 #,##0, 18 money, 20 percent, 21 dates; without it all are General."""
        _LIB.XLFreeHandle(ctypes.byref(self._table))
        by_buffer, by_size = ctypes.byref(self._buffer), ctypes.byref(self._size)
        number = _LIB.AppendVariantSheet1(by_buffer, by_size, name.encode(ENCODING, "replace"))
        _check(number > 0, "AppendVariantSheet1", number, {-2: "no memory block is free for the new workbook"})
        sheet = SheetWriter(by_buffer, by_size, rows, columns, formats)
        yield sheet
        sheet.finish()
        code = _LIB.AppendVariantSheet2(by_buffer, by_size, number)
        _check(code == number, "AppendVariantSheet2", code, _APPEND)

    def save(self, path):
        """Saves the workbook as `path`, where it replaces the workbook of a file that is there; whatever happens, the old file or the new
        one stands on the disk, never a part of it."""
        self._located()
        code = _LIB.XLSaveFile(os.fsencode(path), ctypes.byref(self._buffer), ctypes.byref(self._table), ctypes.byref(self._size))
        if code == 6 and not self._table.value:
            self._buffer.value = 0  # released by the call
        _check(code == 0, "XLSaveFile", code, _SAVE)


class SheetWriter:
    """A sheet that is being written, from its first row on. Made by Workbook.sheet()."""

    def __init__(self, buffer, size, rows, columns, formats):
        self._buffer, self._size, self._position = buffer, size, _U32()
        self._columns, self._row = columns, 0
        self._formats = (_U16 * columns)(*(formats or [15] * columns))
        code = _LIB.CreateVariantSheet1A(buffer, size, columns, rows, ctypes.byref(self._position))
        _check(code == 0, "CreateVariantSheet1A", code, _APPEND)

    def write(self, rows):
        """Writes the next rows; a short one is filled up with blanks."""
        rows = list(rows)
        cells = []
        for row in rows:
            cells.extend(list(row)[:self._columns] + [None] * (self._columns - len(row)))
        values = _Values(cells)
        try:
            code = _LIB.CreateVariantSheet2A(self._buffer, self._size, ctypes.byref(self._position), 0, self._row, self._columns,
                                             len(rows), values.variants, self._formats)
        finally:
            values.close()
        _check(code == 0, "CreateVariantSheet2A", code, _APPEND)
        self._row += len(rows)

    def finish(self):
        code = _LIB.CreateVariantSheet3(self._buffer, self._size, ctypes.byref(self._position))
        _check(code == 0, "CreateVariantSheet3", code, _APPEND)
