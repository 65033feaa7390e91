// The mapping of VARIANTs to cells.
#include "sheet/cell_value.h"

#include <bit>
#include <cstring>

namespace tolvenar {

namespace {

constexpr VARTYPE kBstrByReference = static_cast<VARTYPE>(VT_BSTR | VT_BYREF);

CellValue Number(float number) {
  return {CellKind::kNumber, number, nullptr};
}

CellValue Text(const OLECHAR* text) {
  return {CellKind::kText, 0, text};
}

// The 8 value bytes as a double, whatever they are.
double DoubleOf(const VARIANT& value) {
  double number;
  std::memcpy(&number, &value.dblVal, sizeof number);
  return number;
}

// Toward zero. What 32 bits can't hold becomes what the processor's conversion makes of it.
int32_t DayOf(double date) {
  const bool fits = date > -2147483649.0 && date < 2147483648.0;
  return fits ? static_cast<int32_t>(date) : INT32_MIN;
}

}  // namespace

CellValue MapCell(const VARIANT* value) {
  if (value == nullptr) return {CellKind::kBlank, 0, nullptr};
  switch (value->vt) {
    case VT_NULL:
      return {CellKind::kNull, 0, nullptr};
    case VT_I2:
      return Number(value->iVal);
    case VT_I4:
      return Number(static_cast<float>(value->lVal));
    case VT_R4:
      return Number(value->fltVal);
    case VT_R8:
    case VT_CY:
      return Number(static_cast<float>(DoubleOf(*value)));
    case VT_DATE:
      return Number(static_cast<float>(DayOf(value->date)));
    case VT_BSTR:
      return Text(value->bstrVal);
    case kBstrByReference:
      return Text(value->pbstrVal != nullptr ? *value->pbstrVal : nullptr);
    default:
      return {CellKind::kBlank, 0, nullptr};
  }
}

}  // namespace tolvenar
