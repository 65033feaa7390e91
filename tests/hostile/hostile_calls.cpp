// The calls, as a host would make them.
#include "hostile/hostile_calls.h"

#include <gtest/gtest.h>

#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

// An array that is given back with its owner.
class Cells {
 public:
  explicit Cells(VARTYPE type) {
    SAFEARRAYBOUND bounds[] = {{100, 1}, {10, 1}};
    array_ = SafeArrayCreate(type, 2, bounds);
  }
  Cells(VARTYPE type, LONG first, ULONG count) : array_(SafeArrayCreateVector(type, first, count)) {}
  Cells(const Cells&) = delete;
  Cells& operator=(const Cells&) = delete;
  ~Cells() { SafeArrayDestroy(array_); }
  SAFEARRAY** get() { return &array_; }

 private:
  SAFEARRAY* array_;
};

void ListRecords(HostileBook* b) {
  Cells offsets(VT_I4, 1, 1000), types(VT_I2, 1, 1000), images(VT_BSTR, 1, 1000), lengths(VT_I2, 1, 1000);
  int32_t count = 0;
  ::XLGetList(b->buffer, static_cast<int32_t>(b->size), &count, offsets.get(), types.get(), images.get(),
              lengths.get());
}
void NameSheets(HostileBook* b) {
  BSTR name = nullptr;
  ::XLGetNameSheet(b->buffer, b->table, ::XLGetNumSheets(b->table), &name);
  SysFreeString(name);
  ::XLSheetsNameNum(b->buffer, b->table, 0);
}
void ReadValues(HostileBook* b) {
  Cells cells(VT_VARIANT);
  EXPECT_EQ(::XLGetVariantData(cells.get(), b->buffer, b->table, 1), 0);
}
void ReadFormats(HostileBook* b) {
  Cells cells(VT_I4);
  EXPECT_EQ(::XLGetCellData(cells.get(), b->buffer, b->table, 1), 0);
}
void ReadHeights(HostileBook* b) {
  Cells heights(VT_I2, 1, 100);
  EXPECT_EQ(::XLGetRowHeight(heights.get(), b->buffer, b->table, 1), 0);
}
void ReadWidths(HostileBook* b) {
  Cells widths(VT_I2, 1, 10);
  EXPECT_EQ(::XLGetColWidth(widths.get(), b->buffer, b->table, 1), 0);
}
void ReadGlobals(HostileBook* b) {
  ::XLGetNumVers(b->buffer, b->table);
  ::XLNumStrBucket(b->buffer, b->table);
  ::XLNumStrExt(b->buffer, b->table);
  ::XLGetMagnification(b->buffer, b->table, 1);
}
void ReadItems(HostileBook* b) {
  for (int16_t kind = 0; kind <= 3; ++kind) {
    Cells items(VT_I4, 0, ::XLGetNumFormatItems(b->buffer, b->table, kind));
    ::XLGetFormatData(items.get(), b->buffer, b->table, kind);
  }
}
void FindFont(HostileBook* b) {
  ::XLGetFont(&b->buffer, b->table, &b->size, "Some font", 1, 200, 400, 0, 0, 0);
}
void FindFormat(HostileBook* b) {
  ::XLGetFormat(&b->buffer, b->table, &b->size, "0.0000");
}
void FindXfs(HostileBook* b) {
  ::XLGetXFInd(&b->buffer, b->table, &b->size, 1, 2, 1, 0, 1, 2, 0, 3);
  ::XLGetXFIndFull(&b->buffer, b->table, &b->size, 1, 2, 1, 0, 1, 2, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1);
}
void ChangeValue(HostileBook* b) {
  VARIANT value = {};
  value.vt = VT_I2;
  ::XLChangeCellValue(&b->buffer, b->table, &b->size, 1, 100, 5, &value);
}
void ChangeXf(HostileBook* b) {
  ::XLChangeCellXF(&b->buffer, b->table, &b->size, 1, 100, 5, 20);
}
void GiveFormats(HostileBook* b) {
  static const std::vector<int16_t> matrix(1000, 3);
  ::ChangeFormat(b->buffer, b->table, 1, matrix.data(), 10);
}
void InsertRow(HostileBook* b) {
  ::XLInsertRow(&b->buffer, b->table, &b->size, 1, 5);
}
void InsertCol(HostileBook* b) {
  ::XLInsertCol(&b->buffer, b->table, &b->size, 1, 5);
}
void DeleteRow(HostileBook* b) {
  ::XLDeleteRow(&b->buffer, b->table, &b->size, 1, 5);
}
void DeleteCol(HostileBook* b) {
  ::XLDeleteCol(&b->buffer, b->table, &b->size, 1, 5);
}
void AddRows(HostileBook* b) {
  ::XLAddRow(&b->buffer, b->table, &b->size, 1, 120);
}
void AddCol(HostileBook* b) {
  ::XLAddCol(&b->buffer, b->table, &b->size, 1, 12);
}
void ChangeSizes(HostileBook* b) {
  ::XLChangeRowHeight(&b->buffer, b->table, &b->size, 1, 50, 300);
  ::XLChangeColWidth(&b->buffer, b->table, &b->size, 1, 5, 300);
}
void DeleteDbCells(HostileBook* b) {
  ::XLDeleteDBCells(b->buffer, b->size);
}
void Refresh(HostileBook* b) {
  ::XLRefreshHandles(&b->buffer, b->table, &b->size);
}
void AppendSheet(HostileBook* b) {
  ::XLAppendSheet(&b->buffer, &b->size, "New", 3, 3);
}
void Stamp(HostileBook* b) {
  ::XLInsertReference(&b->buffer, b->table, &b->size, 7);
  ::XLUnbindReference(b->buffer, b->table);
}
void SaveAndOpen(HostileBook* b) {
  if (::XLSaveFile(b->path.c_str(), &b->buffer, &b->table, &b->size) != 0) return;
  ::MEMORYFREE(&b->buffer);
  EXPECT_EQ(::XLOpenFile(b->path.c_str(), &b->buffer, &b->size), 0);
}

}  // namespace

std::vector<HostileCall> HostileCalls() {
  return {{"ListRecords", ListRecords},
          {"NameSheets", NameSheets},
          {"ReadValues", ReadValues},
          {"ReadFormats", ReadFormats},
          {"ReadHeights", ReadHeights},
          {"ReadWidths", ReadWidths},
          {"ReadGlobals", ReadGlobals},
          {"ReadItems", ReadItems},
          {"FindFont", FindFont},
          {"FindFormat", FindFormat},
          {"FindXfs", FindXfs},
          {"ChangeValue", ChangeValue},
          {"ChangeXf", ChangeXf},
          {"GiveFormats", GiveFormats},
          {"InsertRow", InsertRow},
          {"InsertCol", InsertCol},
          {"DeleteRow", DeleteRow},
          {"DeleteCol", DeleteCol},
          {"AddRows", AddRows},
          {"AddCol", AddCol},
          {"ChangeSizes", ChangeSizes},
          {"DeleteDbCells", DeleteDbCells},
          {"Refresh", Refresh},
          {"AppendSheet", AppendSheet},
          {"Stamp", Stamp},
          {"SaveAndOpen", SaveAndOpen}};
}

}  // namespace tolvenar::testing
