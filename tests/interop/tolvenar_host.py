"""A Python host of the shared library: the exports by ctypes, and a workbook as a host would hold it.

The library's path comes from TOLVENAR_LIBRARY, the folder of real workbooks from TOLVENAR_CORPUS (both set by the build).
"""
import ctypes
import os
import struct

VT_EMPTY, VT_I2, VT_I4, VT_R8, VT_BSTR, VT_VARIANT = 0, 2, 3, 5, 8, 12

u16, i16, u32, i32 = ctypes.c_uint16, ctypes.c_int16, ctypes.c_uint32, ctypes.c_int32
P = ctypes.POINTER


class Variant(ctypes.Structure):
    _fields_ = [("vt", u16), ("reserved", u16 * 3), ("value", ctypes.c_uint64)]

    @staticmethod
    def r8(number):
        return Variant(VT_R8, (u16 * 3)(), struct.unpack("<Q", struct.pack("<d", number))[0])


class Bound(ctypes.Structure):
    _fields_ = [("elements", u32), ("lower", i32)]


def load():
    lib = ctypes.CDLL(os.environ["TOLVENAR_LIBRARY"])
    array = ctypes.c_void_p

    def declare(name, result, *arguments):
        function = getattr(lib, name)
        function.restype, function.argtypes = result, list(arguments)

    declare("MEMORYHANDLES", u32, P(u32), u32)
    declare("MEMORYFREEALL", None)
    declare("XLOpenFile", i16, ctypes.c_char_p, P(u32), P(u32))
    declare("XLLocateSheets", i16, u32, P(u32), u32)
    declare("XLFreeHandle", u32, P(u32))
    declare("XLSaveFile", i16, ctypes.c_char_p, P(u32), P(u32), P(u32))
    declare("XLRefreshHandles", i16, P(u32), u32, P(u32))
    declare("XLGetNumSheets", i16, u32)
    declare("XLGetNumVers", u16, u32, u32)
    declare("XLGetSheetSize", i16, u32, u32, i16, P(u16), P(u16), P(u16), P(u16))
    declare("XLGetVariantData", i16, P(array), u32, u32, i16)
    declare("XLGetCellData", i16, P(array), u32, u32, i16)
    declare("XLChangeCellValue", i16, P(u32), u32, P(u32), i16, i16, i16, P(Variant))
    declare("SafeArrayCreate", array, u16, u32, P(Bound))
    declare("SafeArrayDestroy", i32, array)
    declare("SafeArrayAccessData", i32, array, P(ctypes.c_void_p))
    declare("SafeArrayUnaccessData", i32, array)
    return lib


LIB = load()


class Error(Exception):
    """A result code other than 0."""

    def __init__(self, function, code):
        super().__init__(f"{function} gave {code}")
        self.code = code


def bstr_bytes(address):
    """The bytes of a BSTR."""
    if not address:
        return b""
    (length,) = struct.unpack("<I", ctypes.string_at(address - 4, 4))
    return ctypes.string_at(address, length)


class Cells:
    """A two-dimensional array from 1 to `rows`, 1 to `columns`, its elements read in place."""

    def __init__(self, vartype, width, rows, columns):
        bounds = (Bound * 2)(Bound(max(rows, 1), 1), Bound(max(columns, 1), 1))
        self.rows, self.width = max(rows, 1), width
        self.array = ctypes.c_void_p(LIB.SafeArrayCreate(vartype, 2, bounds))
        assert self.array.value, "no memory for the array"
        self.data = ctypes.c_void_p()
        LIB.SafeArrayAccessData(self.array, ctypes.byref(self.data))

    def element(self, row, column):
        """Raw bytes of the element at a 1-based row and column: dimension 1, the row, varies fastest."""
        return ctypes.string_at(self.data.value + ((column - 1) * self.rows + row - 1) * self.width, self.width)

    def value(self, row, column):
        """None, a float, or the bytes of a text."""
        raw = self.element(row, column)
        vt, payload = struct.unpack("<H6xQ", raw)
        if vt == VT_EMPTY:
            return None
        if vt == VT_R8:
            return struct.unpack("<d", raw[8:])[0]
        assert vt == VT_BSTR, f"an element of type {vt}"
        return bstr_bytes(payload)

    def close(self):
        LIB.SafeArrayUnaccessData(self.array)
        LIB.SafeArrayDestroy(self.array)


class Workbook:
    """An open workbook: buffer, size and SheetTable. Raises Error with the code of what failed."""

    def __init__(self, path):
        self.buffer, self.size, self.table = u32(), u32(), u32()
        code = LIB.XLOpenFile(os.fsencode(path), ctypes.byref(self.buffer), ctypes.byref(self.size))
        if code:
            LIB.XLFreeHandle(ctypes.byref(self.buffer))
            raise Error("XLOpenFile", code)
        self.locate()

    def locate(self):
        code = LIB.XLLocateSheets(self.buffer, ctypes.byref(self.table), self.size)
        if code:
            if code == 1:
                LIB.XLFreeHandle(ctypes.byref(self.buffer))
            raise Error("XLLocateSheets", code)

    def stream(self):
        """The stream without its BUFEND."""
        return ctypes.string_at(self.buffer.value, self.size.value - 4)

    def sheets(self):
        return LIB.XLGetNumSheets(self.table)

    def used_range(self, sheet):
        """(first row, last row, first column, last column), or None when the sheet is no worksheet or has no DIMENSIONS."""
        unset = 0xFFFF
        edges = [u16(unset) for _ in range(4)]
        if LIB.XLGetSheetSize(self.buffer, self.table, sheet, *(ctypes.byref(edge) for edge in edges)):
            return None
        values = tuple(edge.value for edge in edges)
        return None if values == (unset,) * 4 else values

    def _read(self, reader, vartype, width, sheet):
        edges = self.used_range(sheet)
        if edges is None:
            return None
        cells = Cells(vartype, width, edges[1], edges[3])
        code = reader(ctypes.byref(cells.array), self.buffer, self.table, sheet)
        if code:
            cells.close()
            raise Error(reader.__name__, code)
        return cells

    def values(self, sheet):
        return self._read(LIB.XLGetVariantData, VT_VARIANT, 16, sheet)

    def formats(self, sheet):
        return self._read(LIB.XLGetCellData, VT_I4, 4, sheet)

    def change(self, sheet, row, column, number):
        value = Variant.r8(number)
        code = LIB.XLChangeCellValue(ctypes.byref(self.buffer), self.table, ctypes.byref(self.size), sheet, row, column,
                                     ctypes.byref(value))
        if code:
            raise Error("XLChangeCellValue", code)

    def save(self, path):
        code = LIB.XLSaveFile(os.fsencode(path), ctypes.byref(self.buffer), ctypes.byref(self.table),
                              ctypes.byref(self.size))
        if code:
            raise Error("XLSaveFile", code)

    def close(self):
        LIB.XLFreeHandle(ctypes.byref(self.table))
        LIB.XLFreeHandle(ctypes.byref(self.buffer))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


def live_blocks():
    total = u32()
    return LIB.MEMORYHANDLES(ctypes.byref(total), 0)
