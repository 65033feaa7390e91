// Formula adjustment: the walk over the tokens, the reference rule and the area rule. Layout and invariants
// stand in formula_adjustment.h.
#include "edit/formula_adjustment.h"

#include "query/formula_tokens.h"

namespace tolvenar {

namespace {

constexpr uint8_t kFlagBits = 0xC0;           // of a row word's high byte
constexpr uint16_t kRowBits = 0x3FFF;         // of a row word
constexpr uint32_t kSheetReferenceSize = 14;  // stands between id and fields of the 3d tokens

// ptgExp and ptgTbl.
constexpr uint32_t kExpRow = 1;
constexpr uint32_t kExpColumn = 3;

// A rectangle of the list behind the tokens.
constexpr uint32_t kRectFirstRow = 0;
constexpr uint32_t kRectLastRow = 2;
constexpr uint32_t kRectFirstColumn = 4;
constexpr uint32_t kRectLastColumn = 5;
constexpr int32_t kRectSize = 6;

struct ReferenceFields {
  uint32_t row;
  uint32_t flags;
  uint32_t column;
};
constexpr ReferenceFields kReference = {1, 2, 3};
// The flags of a ptgRef3d come out of its sheet reference and not out of its row word, on purpose; those of a
// ptgArea3d come from where they are.
constexpr ReferenceFields kReference3d = {kSheetReferenceSize + 1, 2, kSheetReferenceSize + 3};

struct AreaFields {
  uint32_t firstRow;
  uint32_t lastRow;
  uint32_t firstColumn;
  uint32_t lastColumn;
};
constexpr AreaFields kArea = {1, 3, 5, 6};
constexpr AreaFields kArea3d = {kSheetReferenceSize + 1, kSheetReferenceSize + 3, kSheetReferenceSize + 5,
                                kSheetReferenceSize + 6};

struct Edit {
  int16_t position;
  bool rows;
  bool inserts;
};

// Rows or columns from first to last.
struct Span {
  int16_t first;
  int16_t last;
};

// The area rule on one axis; true when what is left is to become an error. The steps build on each other: an
// area that starts right behind a deleted row is moved down and then, as it now holds the position, shrunk as
// well, on purpose.
bool MoveSpan(Span* span, const Edit& edit) {
  const int16_t position = edit.position;
  const int16_t step = edit.inserts ? 1 : -1;
  if (edit.inserts ? position <= span->first : position < span->first) {
    span->first = static_cast<int16_t>(span->first + step);
    span->last = static_cast<int16_t>(span->last + step);
  }
  if (edit.inserts) {
    if (position > span->first && position <= span->last)
      span->last = static_cast<int16_t>(span->last + step);
    return false;
  }
  if (position >= span->first && position <= span->last && span->first != span->last) {
    span->last = static_cast<int16_t>(span->last + step);
  }
  return position == span->last && span->first == span->last;
}

// Turns the token at `at` into its error form, in its own class. False when its id is none of a token: then
// it stays.
bool TurnIntoError(const Block& block, uint32_t at, uint8_t error_base) {
  const uint8_t id = U8At(block, at);
  if (id > kLastTokenId) return false;
  PutU8(block, at, static_cast<uint8_t>((id & kTokenClassBits) | (error_base & kTokenNumberBits)));
  return true;
}

// The row of a row word, without its flags.
int16_t RowAt(const Block& block, uint32_t at) {
  return static_cast<int16_t>(U16At(block, at) & kRowBits);
}

// Writes a row word. The flags go into bits 7 and 6, whatever the edit was and even when the row did not
// move: they do not return to where they came from, on purpose.
void PutRow(const Block& block, uint32_t at, int16_t row, uint8_t flags) {
  PutU16(block, at, static_cast<uint16_t>(static_cast<uint16_t>(row) | flags));
}

// ptgExp and ptgTbl: the one field of the edit's axis.
void AdjustExp(const Block& block, uint32_t at, const Edit& edit) {
  const uint32_t field = at + (edit.rows ? kExpRow : kExpColumn);
  const int16_t value = I16At(block, field);
  if (edit.inserts) {
    if (edit.position <= value) PutU16(block, field, static_cast<uint16_t>(value + 1));
  } else {
    if (edit.position < value) PutU16(block, field, static_cast<uint16_t>(value - 1));
  }
}

// The row part of the reference rule. The test for the deleted row comes after the move, so the row right
// behind it dies as well, on purpose. True when the reference is dead.
bool MoveReferenceRow(int16_t* row, const Edit& edit) {
  if (edit.inserts) {
    if (edit.position <= *row) *row = static_cast<int16_t>(*row + 1);
    return false;
  }
  if (edit.position < *row) *row = static_cast<int16_t>(*row - 1);
  return edit.position == *row;
}

// The column part, in 8 bits: 255 wraps to 0. True when the reference is dead.
bool MoveReferenceColumn(const Block& block, uint32_t at, const Edit& edit) {
  uint8_t column = U8At(block, at);
  if (edit.inserts ? edit.position <= column : edit.position < column) {
    column = static_cast<uint8_t>(edit.inserts ? column + 1 : column - 1);
    PutU8(block, at, column);
  }
  return !edit.inserts && edit.position == column;
}

int16_t AdjustReference(const Block& block, uint32_t at, const ReferenceFields& fields, uint8_t error_base,
                        const Edit& edit) {
  const uint8_t flags = U8At(block, at + fields.flags) & kFlagBits;
  int16_t row = RowAt(block, at + fields.row);
  int16_t result = 1;
  if (edit.rows && MoveReferenceRow(&row, edit) && TurnIntoError(block, at, error_base)) result = 0;
  PutRow(block, at + fields.row, row, flags);
  // A dead column is not reported, on purpose: the result stays 1.
  if (!edit.rows && MoveReferenceColumn(block, at + fields.column, edit))
    TurnIntoError(block, at, error_base);
  return result;
}

// First and last column, compared in 16 bits and stored in 8. True when the area is dead.
bool MoveColumns(const Block& block, uint32_t first_at, uint32_t last_at, const Edit& edit) {
  Span columns = {U8At(block, first_at), U8At(block, last_at)};
  const bool dead = MoveSpan(&columns, edit);
  PutU8(block, first_at, static_cast<uint8_t>(columns.first));
  PutU8(block, last_at, static_cast<uint8_t>(columns.last));
  return dead;
}

int16_t AdjustArea(const Block& block, uint32_t at, const AreaFields& fields, uint8_t error_base,
                   const Edit& edit) {
  const uint32_t first = at + fields.firstRow;
  const uint32_t last = at + fields.lastRow;
  const uint8_t first_flags = U8At(block, first + 1) & kFlagBits;
  const uint8_t last_flags = U8At(block, last + 1) & kFlagBits;
  Span rows = {RowAt(block, first), RowAt(block, last)};
  bool dead = edit.rows && MoveSpan(&rows, edit);
  PutRow(block, first, rows.first, first_flags);
  PutRow(block, last, rows.last, last_flags);
  if (!edit.rows) dead = MoveColumns(block, at + fields.firstColumn, at + fields.lastColumn, edit);
  return dead && TurnIntoError(block, at, error_base) ? 0 : 1;
}

// The token at `at`, by its base. An id beyond the table is treated by its base too, on purpose, although its
// size is 1.
int16_t AdjustToken(const Block& block, uint32_t at, const Edit& edit) {
  switch (TokenBase(U8At(block, at))) {
    case kPtgExp:
    case kPtgTbl:
      AdjustExp(block, at, edit);
      return 1;
    case kPtgRef:
    case kPtgRefN:
      return AdjustReference(block, at, kReference, kPtgRefErr, edit);
    case kPtgRef3d:
      return AdjustReference(block, at, kReference3d, kPtgRefErr3d, edit);
    case kPtgArea:
    case kPtgAreaN:
      return AdjustArea(block, at, kArea, kPtgAreaErr, edit);
    case kPtgArea3d:
      return AdjustArea(block, at, kArea3d, kPtgAreaErr3d, edit);
    default:
      return 1;
  }
}

// A rectangle of the list: the area rule on words without flags, and it never becomes an error.
void AdjustRectangle(const Block& block, uint32_t at, const Edit& edit) {
  if (!edit.rows) {
    MoveColumns(block, at + kRectFirstColumn, at + kRectLastColumn, edit);
    return;
  }
  Span rows = {I16At(block, at + kRectFirstRow), I16At(block, at + kRectLastRow)};
  MoveSpan(&rows, edit);
  PutU16(block, at + kRectFirstRow, static_cast<uint16_t>(rows.first));
  PutU16(block, at + kRectLastRow, static_cast<uint16_t>(rows.last));
}

// The rectangles from offset `remaining` of the formula on. Their count is rounded up, so the last one may
// lie partly behind the formula, on purpose.
void AdjustRectangles(const Block& block, uint32_t tokens, int16_t remaining, int16_t length,
                      const Edit& edit) {
  const int32_t count = (length - remaining + kRectSize - 1) / kRectSize;
  uint32_t at = tokens + static_cast<uint32_t>(static_cast<int32_t>(remaining));
  for (int32_t i = 0; i < count; ++i, at += kRectSize) AdjustRectangle(block, at, edit);
}

}  // namespace

int16_t AdjustFormulaReferences(const Block& block, uint32_t tokens, int16_t length, int16_t position,
                                AdjustMode mode) {
  const Edit edit = {position, mode < AdjustMode::kColumnInserted,
                     mode == AdjustMode::kRowInserted || mode == AdjustMode::kColumnInserted};
  int16_t result = 1;
  int16_t remaining = length;
  for (int32_t offset = 0; offset < length && offset < remaining;) {
    const uint32_t at = tokens + static_cast<uint32_t>(offset);
    if (AdjustToken(block, at, edit) == 0) result = 0;
    offset += FormulaTokenSize(block, at, &remaining);
  }
  if (remaining < length) AdjustRectangles(block, tokens, remaining, length, edit);
  return result;
}

}  // namespace tolvenar
