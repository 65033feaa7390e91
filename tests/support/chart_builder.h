// ChartBuilder: workbooks with charts that read in the test as they stand in the stream.
//
//   ChartBuilder().Open().Chart().Begin().Series(5).Begin().Ai(1, Ref3d(0, 2, 1)).End().End().Close()
//
// The workbook is BIFF8 with one worksheet, unless the sheets are named; Close ends a chart, Done the workbook.
#pragma once

#include <string_view>

#include "support/stream_builder.h"

namespace tolvenar::testing {

// Tokens of a series' formula, in BIFF5's layout; rows may carry flags in bits 15 and 14.
inline Bytes SheetsOf3d(uint16_t first_sheet, uint16_t last_sheet) {
  return Bytes{0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0} + U16(first_sheet) + U16(last_sheet);
}
inline Bytes Ref3d(uint16_t first_sheet, uint16_t last_sheet, uint16_t row, uint8_t column) {
  return Bytes{0x3A} + SheetsOf3d(first_sheet, last_sheet) + U16(row) + Bytes{column};
}
inline Bytes Ref3d(uint16_t sheet, uint16_t row, uint8_t column) {
  return Ref3d(sheet, sheet, row, column);
}
struct TestArea {
  uint16_t firstRow, lastRow;
  uint8_t firstColumn, lastColumn;
};
inline Bytes Area3d(uint16_t first_sheet, uint16_t last_sheet, TestArea area) {
  return Bytes{0x3B} + SheetsOf3d(first_sheet, last_sheet) + U16(area.firstRow) + U16(area.lastRow) +
         Bytes{area.firstColumn, area.lastColumn};
}

class ChartBuilder {
 public:
  explicit ChartBuilder(std::initializer_list<const char*> sheets = {"Data"}) {
    stream_.Bof(6);
    for (const char* name : sheets) stream_.Sheet(name);
    stream_.Eof();
  }

  // Any record. `Low` takes the low byte of a chart record.
  ChartBuilder& Record(uint16_t type, const Bytes& payload = {}) {
    stream_.Record(type, payload);
    return *this;
  }
  ChartBuilder& Low(uint8_t low, const Bytes& payload = {}) {
    return Record(static_cast<uint16_t>(0x1000 | low), payload);
  }
  ChartBuilder& Raw(const Bytes& bytes) {
    stream_.Raw(bytes);
    return *this;
  }

  // Sheets, and substreams of charts in them.
  ChartBuilder& Worksheet() {
    stream_.Bof(6, kWorksheet).Dimensions(0, 4, 0, 4);
    return *this;
  }
  ChartBuilder& Bof(uint16_t substream) {
    stream_.Bof(6, substream);
    return *this;
  }
  ChartBuilder& Open() { return Bof(kChart); }
  ChartBuilder& Close() {
    stream_.Eof();
    return *this;
  }
  // The sheet's EOF, behind a record that has a payload.
  ChartBuilder& EndSheet() { return Record(0x023E, Bytes(10)).Close(); }

  ChartBuilder& Begin() { return Record(0x1033); }
  ChartBuilder& End() { return Record(0x1034); }
  // Whole numbers of points; the fractions are one half.
  ChartBuilder& Chart(int16_t width = 300, int16_t height = 200) {
    return Low(0x02, U32(0) + U32(0) + U16(0x8000) + U16(static_cast<uint16_t>(width)) + U16(0x8000) +
                         U16(static_cast<uint16_t>(height)));
  }
  ChartBuilder& Series(uint16_t categories) {
    return Low(0x03, U16(1) + U16(1) + U16(categories) + U16(categories));
  }
  ChartBuilder& Ai(uint8_t kind, const Bytes& tokens) {
    return Low(0x51, Bytes{kind, 2} + U16(0) + U16(0) + U16(static_cast<uint16_t>(tokens.size())) + tokens);
  }
  // An AI of exactly 256 bytes, which is taken for that of a name.
  ChartBuilder& Ai256(const Bytes& tokens) {
    const uint16_t length = static_cast<uint16_t>(tokens.size());
    return Low(0x51, Bytes{7, 2} + U16(0) + U16(0) + U16(length) + tokens + Bytes(256 - 8 - length, 0x03));
  }
  ChartBuilder& SeriesText(std::string_view text) {
    return Low(0x0D, U16(0) + Bytes{static_cast<uint8_t>(text.size())} + Text(text));
  }
  ChartBuilder& TextRecord(uint32_t colour) { return Low(0x25, Bytes{2, 2, 1, 0} + U32(colour) + Bytes(16)); }
  ChartBuilder& FontX(uint16_t font) { return Low(0x26, U16(font)); }
  ChartBuilder& ObjectLink(uint8_t kind, uint8_t high = 0) {
    return Low(0x27, Bytes{kind, high} + U16(0) + U16(0));
  }
  ChartBuilder& AreaFormat(uint32_t fore, uint32_t back, uint8_t pattern, uint8_t pattern_high = 0) {
    return Low(0x0A, U32(fore) + U32(back) + Bytes{pattern, pattern_high} + U16(0));
  }
  ChartBuilder& Obj(uint16_t kind, uint16_t id, uint16_t left, uint16_t top) {
    return Record(0x005D, U32(1) + U16(kind) + U16(id) + U16(0) + U16(left) + U16(0) + U16(top) + U16(0));
  }

  uint32_t Here() const { return stream_.Here(); }
  uint32_t Last() const { return stream_.Last(); }
  StreamBuilder& Stream() { return stream_; }

 private:
  StreamBuilder stream_;
};

}  // namespace tolvenar::testing
