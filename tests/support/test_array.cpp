// TestArray: elements got through the same functions that a host calls.
#include "support/test_array.h"

#include <cstring>

namespace tolvenar::testing {

namespace {

ULONG CountOf(LONG first, LONG last) {
  return static_cast<ULONG>(last - first + 1);
}

}  // namespace

std::string BytesOf(BSTR text) {
  if (text == nullptr) return "(none)";
  std::string bytes(SysStringByteLen(text), '\0');
  std::memcpy(bytes.data(), text, bytes.size());
  return bytes;
}

TestArray::TestArray(VARTYPE type, LONG first, LONG last)
    : type_(type), array_(SafeArrayCreateVector(type, first, CountOf(first, last))) {}

TestArray::TestArray(VARTYPE type, LONG first_row, LONG last_row, LONG first_column, LONG last_column)
    : type_(type) {
  SAFEARRAYBOUND bounds[2] = {{CountOf(first_row, last_row), first_row},
                              {CountOf(first_column, last_column), first_column}};
  array_ = SafeArrayCreate(type, 2, bounds);
}

TestArray::~TestArray() {
  SafeArrayDestroy(array_);
}

VARIANT TestArray::VariantAt(LONG row, LONG column) {
  LONG indices[2] = {row, column};
  VARIANT value;
  VariantInit(&value);
  SafeArrayGetElement(array_, indices, &value);
  return value;
}

std::string TestArray::TextAt(LONG row, LONG column) {
  LONG indices[2] = {row, column};
  if (type_ == VT_VARIANT) {
    VARIANT value = VariantAt(row, column);
    const std::string text = value.vt == VT_BSTR ? BytesOf(value.bstrVal) : "(none)";
    VariantClear(&value);
    return text;
  }
  BSTR text = nullptr;
  SafeArrayGetElement(array_, indices, &text);
  const std::string bytes = BytesOf(text);
  SysFreeString(text);
  return bytes;
}

int64_t TestArray::NumberAt(LONG row, LONG column) {
  LONG indices[2] = {row, column};
  int64_t number = 0;
  SafeArrayGetElement(array_, indices, &number);
  return number;
}

VARTYPE TestArray::TypeAt(LONG row, LONG column) {
  VARIANT value = VariantAt(row, column);
  const VARTYPE type = value.vt;
  VariantClear(&value);
  return type;
}

double TestArray::DoubleAt(LONG row, LONG column) {
  return VariantAt(row, column).dblVal;
}

void TestArray::SetNumber(LONG row, LONG column, int32_t value) {
  LONG indices[2] = {row, column};
  SafeArrayPutElement(array_, indices, &value);
}

void TestArray::SetText(LONG row, LONG column, const char* text) {
  LONG indices[2] = {row, column};
  const BSTR bytes = SysAllocStringByteLen(text, static_cast<UINT>(std::strlen(text)));
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = bytes;
  SafeArrayPutElement(array_, indices, type_ == VT_VARIANT ? static_cast<void*>(&value) : bytes);
  SysFreeString(bytes);
}

std::string TestArray::AllText() {
  LONG first_row, last_row, first_column, last_column;
  SafeArrayGetLBound(array_, 1, &first_row);
  SafeArrayGetUBound(array_, 1, &last_row);
  SafeArrayGetLBound(array_, 2, &first_column);
  SafeArrayGetUBound(array_, 2, &last_column);
  std::string all;
  for (LONG row = first_row; row <= last_row; ++row) {
    if (row != first_row) all += "/";
    for (LONG column = first_column; column <= last_column; ++column) {
      if (column != first_column) all += "|";
      all += TextAt(row, column);
    }
  }
  return all;
}

}  // namespace tolvenar::testing
