"""Formula adjustment a second time, in Python: what the tokens of a formula become when a row or column is inserted or deleted.

It shares nothing with the library and works on one record's payload. What the rules look for outside of it reads as zero, and what they
would write there is dropped. `Spill` is for the rules of other records that reach outside: this model cannot follow them.
"""
import struct

ROW_IN, ROW_DEL, COL_IN, COL_DEL = range(4)

FIXED = {0x01: 5, 0x02: 5, 0x19: 4, 0x1C: 2, 0x1D: 2, 0x1E: 3, 0x1F: 9,
         0x21: 3, 0x22: 4, 0x23: 15, 0x24: 4, 0x25: 7, 0x2A: 4, 0x2B: 7, 0x2C: 4, 0x2D: 7,
         0x39: 25, 0x3A: 18, 0x3B: 21, 0x3C: 18, 0x3D: 21}
MEM = {0x26: 7, 0x27: 7, 0x28: 7, 0x29: 3, 0x2E: 3, 0x2F: 3}
REFERENCES = {0x24: 0, 0x2C: 0, 0x3A: 14}
AREAS = {0x25: 0, 0x2D: 0, 0x3B: 14}
ERRORS = {0x24: 0x0A, 0x2C: 0x0A, 0x3A: 0x1C, 0x25: 0x0B, 0x2D: 0x0B, 0x3B: 0x1D}


class Spill(Exception):
    pass


def signed(value):
    return (value & 0xFFFF) - ((value & 0x8000) << 1)


class Formula:
    """The tokens from `start` on in a payload, adjusted in place."""

    def __init__(self, payload, start, length, position, mode):
        self.data, self.start, self.length = payload, start, length
        self.position, self.rows, self.inserts = position, mode < 2, mode % 2 == 0
        self.remaining = length

    def at(self, offset, size):
        """Place of a field in the payload, or None outside of it."""
        place = self.start + offset
        return place if 0 <= place <= len(self.data) - size else None

    def read(self, offset, size):
        place = self.at(offset, size)
        return 0 if place is None else int.from_bytes(self.data[place:place + size], "little")

    def write(self, offset, size, value):
        place = self.at(offset, size)
        if place is not None:
            self.data[place:place + size] = (value & (1 << 8 * size) - 1).to_bytes(size, "little")

    def u8(self, offset):
        return self.read(offset, 1)

    def u16(self, offset):
        return self.read(offset, 2)

    def put8(self, offset, value):
        self.write(offset, 1, value)

    def put16(self, offset, value):
        self.write(offset, 2, value)

    def base(self, offset):
        token = self.u8(offset)
        return token if token < 0x20 else (token & 0x1F) | 0x20 if token & 0x40 else token & 0x3F

    def size(self, offset):
        token = self.u8(offset)
        base = self.base(offset)
        if token > 0x7D or token == 0:
            return 1
        if base in FIXED:
            return FIXED[base]
        if base in MEM:
            self.remaining = signed(self.remaining - self.u16(offset + 5))
            return MEM[base]
        if base == 0x17:
            return self.u8(offset + 1) + 2
        if base == 0x20:
            return self.array_size(offset)
        return 1

    def array_size(self, offset):
        size = 4
        left = max(signed(self.u16(offset + 2) * (self.u8(offset + 1) or 256)), 0)
        while left and self.start + offset + size < len(self.data):
            left -= 1
            size += 9 if self.u8(offset + size) == 1 else self.u8(offset + size + 1) + 2
        return size + 2 * left  # outside of the payload all elements are empty texts

    def kill(self, offset, base):
        token = self.u8(offset)
        if token <= 0x7D:
            self.put8(offset, token & 0x60 | ERRORS[base])

    def span(self, first, last):
        """The area rule on one axis: first, last, and whether nothing is left."""
        position = self.position
        if self.inserts:
            if position <= first:
                first, last = first + 1, last + 1
            if first < position <= last:
                last += 1
            return first, last, False
        if position < first:
            first, last = first - 1, last - 1
        if first <= position <= last and first != last:
            last -= 1
        return first, last, position == last == first

    def exp(self, offset):
        field = offset + (1 if self.rows else 3)
        value = signed(self.u16(field))
        if self.inserts and self.position <= value:
            self.put16(field, value + 1)
        elif not self.inserts and self.position < value:
            self.put16(field, value - 1)

    def reference(self, offset, base):
        shift = REFERENCES[base]
        flags = self.u8(offset + 2) & 0xC0
        row = self.u16(offset + shift + 1) & 0x3FFF
        column = self.u8(offset + shift + 3)
        if self.rows:
            row, dead = self.single(row)
        else:
            column, dead = self.single(column)
            dead = dead and 0 <= column
            self.put8(offset + shift + 3, column)
        if dead:
            self.kill(offset, base)
        self.put16(offset + shift + 1, row | flags)

    def single(self, value):
        if self.inserts:
            return value + (self.position <= value), False
        value -= self.position < value
        return value, value == self.position

    def area(self, offset, base):
        place = offset + AREAS[base]
        words = [self.u16(place + 1), self.u16(place + 3)]
        flags = [word >> 8 & 0xC0 for word in words]
        rows = [word & 0x3FFF for word in words]
        columns = [self.u8(place + 5), self.u8(place + 6)]
        if self.rows:
            rows[0], rows[1], dead = self.span(*rows)
        else:
            columns[0], columns[1], dead = self.span(*columns)
        for index in (0, 1):
            self.put16(place + 1 + 2 * index, rows[index] | flags[index])
            self.put8(place + 5 + index, columns[index])
        if dead:
            self.kill(offset, base)

    def rectangles(self):
        # Those that lie in the payload, wholly or in part: a misread count can promise thousands of others.
        first = max((-self.start - self.remaining) // 6, 0)
        behind = (len(self.data) - self.start - self.remaining + 5) // 6
        for index in range(first, min((self.length - self.remaining + 5) // 6, behind)):
            place = self.remaining + 6 * index
            if self.rows:
                first, last, _ = self.span(signed(self.u16(place)), signed(self.u16(place + 2)))
                self.put16(place, first)
                self.put16(place + 2, last)
            else:
                first, last, _ = self.span(self.u8(place + 4), self.u8(place + 5))
                self.put8(place + 4, first)
                self.put8(place + 5, last)

    def adjust(self):
        offset = 0
        while offset < min(self.remaining, self.length) and self.start + offset < len(self.data):  # behind it, zeros: nothing
            base = self.base(offset)
            if base in (1, 2):
                self.exp(offset)
            elif base in REFERENCES:
                self.reference(offset, base)
            elif base in AREAS:
                self.area(offset, base)
            offset += self.size(offset)
        if self.remaining < self.length:
            self.rectangles()


PLACES = {0x06: (20, 22), 0x21: (12, 14), 0xBC: (8, 10)}  # length and tokens in the payload of FORMULA, ARRAY, SHRFMLA


def adjust_record(low, payload, position, mode):
    """Adjusts the formula of a FORMULA, ARRAY or SHRFMLA payload, a bytearray, in place."""
    length_at, tokens = PLACES[low]
    length = signed(struct.unpack_from("<H", payload, length_at)[0]) if length_at + 2 <= len(payload) else 0
    Formula(payload, tokens, length, position, mode).adjust()
