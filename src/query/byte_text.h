// Byte text: how narrow text and values leave the library.
//
//   FORM        LENGTH    CONTENT
//   ByteBstr    n bytes   the n text bytes
//   PackedBstr  2n bytes  the n text bytes, then n zero bytes: one 16-bit unit a character
//
// Text is 8-bit throughout, without a code page. Every BSTR made here is the caller's.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"
#include "tolvenar/automation.h"

namespace tolvenar {

// Text of the n bytes at `bytes`. Null when n is negative (a length that overflowed its 16 bits makes no
// text) or there is no memory.
BSTR ByteBstr(const void* bytes, int32_t n);

// Text of the n bytes at `at` of the block; those behind the block are zero. Null as above.
BSTR ByteBstr(const Block& block, uint32_t at, int32_t n);

// Text of n 16-bit units, with the n bytes at `at` of the block packed into its first half. Null when
// there is no memory.
BSTR PackedBstr(const Block& block, uint32_t at, uint32_t n);

// Text of a number as C's "%f" writes it: fixed notation, six decimals, no exponent however large it is;
// "inf", "-inf", "nan", "-nan".
BSTR NumberBstr(double value);

// Makes *variant a value of `type`, copied from the bytes at `value` by the width of the type: 8 bits for
// VT_UI1; 16 for VT_I2 and VT_BOOL; 32 for VT_I4, VT_R4 and VT_ERROR; 64 for VT_R8, VT_CY and VT_DATE; a
// pointer for VT_BSTR and VT_BYREF | VT_BSTR, which is then in the variant and not copied. Of any other
// type only the type is set, and the value stays zero.
void FillVariant(VARIANT* variant, VARTYPE type, const void* value);

// True when the pool could give a block of `size` bytes now. A text is copied out of the stream in one
// go, but the rule is that it goes through a pool block, and that it is dropped when there is none: that
// much stays to be seen of the block.
bool PoolHasRoom(int32_t size);

}  // namespace tolvenar
