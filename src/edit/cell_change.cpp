// XLChangeCellValue and XLChangeCellXF. The rules stand in cell_change.h.
#include "edit/cell_change.h"

#include <cmath>
#include <cstring>

#include "edit/cell_writers.h"
#include "edit/find_cell.h"
#include "edit/run_splitters.h"

namespace tolvenar {

namespace {

// The kinds of new record, and what each type of VARIANT becomes.
enum class Form { kNone, kBlank, kInteger, kFloat, kDouble, kLabel };

struct ValueRule {
  VARTYPE type;
  Form form;
  int16_t failure;
};
constexpr ValueRule kValueRules[] = {
    {VT_EMPTY, Form::kBlank, kChangeBlank},
    {VT_I2, Form::kInteger, kChangeInteger},
    {VT_I4, Form::kInteger, kChangeInteger},
    {VT_R4, Form::kFloat, kChangeFloat},
    {VT_R8, Form::kDouble, kChangeDouble},
    {VT_CY, Form::kDouble, kChangeDouble},
    {VT_DATE, Form::kInteger, kChangeInteger},
    {VT_BSTR, Form::kLabel, kChangeLabel},
    {static_cast<VARTYPE>(VT_BSTR | VT_BYREF), Form::kLabel, kChangeLabel},
};
constexpr ValueRule kNotServed = {VT_EMPTY, Form::kNone, kChangeDone};

const ValueRule& RuleOf(VARTYPE type) {
  for (const ValueRule& rule : kValueRules) {
    if (rule.type == type) return rule;
  }
  return kNotServed;
}

// Toward zero, so that the time of day is dropped. What 32 bits can't hold becomes what the processor's
// conversion makes of it.
int32_t TruncateDate(double date) {
  const bool fits = date > -2147483649.0 && date < 2147483648.0;
  return fits ? static_cast<int32_t>(date) : INT32_MIN;
}

int32_t IntegerOf(const VARIANT& value) {
  if (value.vt == VT_I2) return value.iVal;
  return value.vt == VT_DATE ? TruncateDate(value.date) : value.lVal;
}

// The 8 bytes of a double or of a currency, which is stored as if it were one, on purpose. Copied, not
// loaded: some are no number.
uint64_t BytesOf(const VARIANT& value) {
  uint64_t bytes;
  std::memcpy(&bytes, &value.cyVal, sizeof bytes);
  return bytes;
}

BSTR TextOf(const VARIANT& value) {
  if (value.vt == VT_BSTR) return value.bstrVal;
  return value.pbstrVal != nullptr ? *value.pbstrVal : nullptr;
}

// One change under way: what the caller gave, and what FindCell made of it.
struct Change {
  uint32_t* buffer;
  uint32_t* size;
  int16_t row;
  int16_t column;
  // The record that holds the cell, or before which it belongs; later the place of the new cell.
  uint32_t at = 0;
  bool present = false;
};

// Step one of both changes. False when the cell can't exist.
bool Locate(Change* change, uint32_t table, int16_t sheet) {
  const int32_t found = FindCell(*change->buffer, table, sheet, change->row, change->column);
  change->present = found > 0;
  change->at = static_cast<uint32_t>(change->present ? found : -found);
  return found != 0;
}

// Takes the old record out of the walk and, for a run, moves change->at to the place of the new cell. Result:
// kChangeDone, or why not. *gone is set when there is nothing more to do: a blank in a run of blanks takes
// the whole run with it, on purpose.
int16_t RemoveCell(Change* change, Form form, bool* gone) {
  const Block block = OpenBlock(*change->buffer);
  const CellShape shape = ShapeOfCell(block, change->at);
  if (shape == CellShape::kNoCell) return kChangeDone;
  MarkRecordSlack(block, change->at);
  if (shape == CellShape::kSingle) return kChangeDone;
  if (shape == CellShape::kMulBlank && form == Form::kBlank) {
    *gone = true;
    return kChangeDone;
  }
  const auto split = shape == CellShape::kMulRk ? SplitMulRkForChange : SplitMulBlankForChange;
  const int32_t place = split(change->buffer, change->size, change->at, change->column);
  if (place == 0) return shape == CellShape::kMulRk ? kChangeMulRk : kChangeMulBlank;
  change->at = static_cast<uint32_t>(place);
  return kChangeDone;
}

// The writer's own result; 0 is success for all of them.
int16_t WriteValue(const Change& c, Form form, uint16_t xf, const VARIANT& value) {
  switch (form) {
    case Form::kBlank:
      return WriteBlankCell(c.buffer, c.size, c.at, c.row, c.column, xf);
    case Form::kInteger:
      return WriteIntegerCell(c.buffer, c.size, c.at, c.row, c.column, xf, IntegerOf(value));
    case Form::kFloat:
      return WriteFloatCell(c.buffer, c.size, c.at, c.row, c.column, xf, value.fltVal);
    case Form::kDouble:
      return WriteDoubleCell(c.buffer, c.size, c.at, c.row, c.column, xf, BytesOf(value));
    case Form::kLabel:
      return WriteLabelCell(c.buffer, c.size, c.at, c.row, c.column, xf, TextOf(value));
    case Form::kNone:
      break;
  }
  return kWriteDone;
}

// True when the column (caller's) lies between the ends of the run, compared as the stamping has it.
bool InRun(const Block& block, uint32_t at, int16_t column) {
  return column - I16At(block, at + kCellColumn) - 1 >= 0 && LastColumnOfRun(block, at) - column + 1 >= 0;
}

int32_t SetRunCellXF(uint32_t buffer, uint32_t offset, int16_t column, uint16_t xf, uint32_t cell_size) {
  if (buffer == 0) return 0;
  const Block block = OpenBlock(buffer);
  if (!InRun(block, offset, column)) return 0;
  const uint32_t cell = static_cast<uint32_t>(column - 1 - I16At(block, offset + kCellColumn));
  PutU16(block, offset + kCellXf + cell * cell_size, xf);
  return static_cast<int32_t>(offset);
}

// Stamps a cell that stands in the sheet. The first cell of a run is restamped before the named one, on
// purpose.
int16_t StampCell(const Change& change, uint16_t xf) {
  const Block block = OpenBlock(*change.buffer);
  const CellShape shape = ShapeOfCell(block, change.at);
  if (shape != CellShape::kNoCell) PutU16(block, change.at + kCellXf, xf);
  if (shape == CellShape::kMulRk && SetMulRkCellXF(*change.buffer, change.at, change.column, xf) == 0)
    return kChangeMulRk;
  if (shape == CellShape::kMulBlank && SetMulBlankCellXF(*change.buffer, change.at, change.column, xf) == 0)
    return kChangeMulBlank;
  return kChangeDone;
}

}  // namespace

int16_t XLChangeCellValue(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row,
                          int16_t column, const VARIANT* value) {
  if (buffer == nullptr || size == nullptr) return kChangeNoCell;
  Change change = {buffer, size, row, column};
  if (!Locate(&change, table, sheet)) return kChangeNoCell;
  if (value == nullptr || value->vt == VT_NULL) return kChangeNullValue;
  const ValueRule& rule = RuleOf(value->vt);
  if (*buffer == 0) return kChangeNoBuffer;

  uint16_t xf = kDefaultCellXf;
  if (change.present) {
    xf = GetCellXF(OpenBlock(*buffer), change.at, column);
    bool gone = false;
    const int16_t removed = RemoveCell(&change, rule.form, &gone);
    if (removed != kChangeDone || gone) return removed;
  }
  return WriteValue(change, rule.form, xf, *value) == kWriteDone ? kChangeDone : rule.failure;
}

int16_t XLChangeCellXF(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row,
                       int16_t column, uint16_t xf) {
  if (buffer == nullptr || size == nullptr) return kChangeNoCell;
  Change change = {buffer, size, row, column};
  if (!Locate(&change, table, sheet)) return kChangeNoCell;
  if (*buffer == 0) return kChangeNoBuffer;
  if (change.present) return StampCell(change, xf);
  return WriteBlankCell(buffer, size, change.at, row, column, xf) == kWriteDone ? kChangeDone : kChangeBlank;
}

int32_t SetMulRkCellXF(uint32_t buffer, uint32_t offset, int16_t column, uint16_t xf) {
  return SetRunCellXF(buffer, offset, column, xf, kMulRkCell);
}

int32_t SetMulBlankCellXF(uint32_t buffer, uint32_t offset, int16_t column, uint16_t xf) {
  return SetRunCellXF(buffer, offset, column, xf, kMulBlankCell);
}

}  // namespace tolvenar
