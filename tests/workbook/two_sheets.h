// A small workbook of two sheets, the second with an embedded chart, whose offsets the tests know by heart.
//
//   OFFSET  RECORD                  OFFSET  RECORD
//        0  BOF, globals                54  BOF, sheet "One"          136  BOF, sheet "Two"
//       20  BOUNDSHEET "One"            74  INDEX                     156  BOF, chart
//       35  BOUNDSHEET "Two"            94  NUMBER 1.5                176  EOF of the chart
//       50  EOF                        112  DBCELL                    180  EOF
//                                      132  EOF                       184  the end
#pragma once

#include "support/stream_builder.h"

namespace tolvenar::testing {

struct TwoSheets {
  static constexpr uint32_t kBoundSheetOne = 20;
  static constexpr uint32_t kBoundSheetTwo = 35;
  static constexpr uint32_t kGlobalsEof = 50;
  static constexpr uint32_t kOne = 54;
  static constexpr uint32_t kIndex = 74;
  static constexpr uint32_t kNumber = 94;
  static constexpr uint32_t kDbCell = 112;
  static constexpr uint32_t kOneEof = 132;
  static constexpr uint32_t kTwo = 136;
  static constexpr uint32_t kChart = 156;
  static constexpr uint32_t kTwoEof = 180;
  static constexpr uint32_t kSize = 184;

  static StreamBuilder Builder(uint8_t version = 6) {
    StreamBuilder book;
    book.Bof(version).Sheet("One").Sheet("Two").Eof();
    book.Bof(version, kWorksheet)
        .Record(0x020B, Bytes(16))
        .Number(0, 0, 15, 1.5)
        .Record(0x00D7, Bytes(16))
        .Eof();
    book.Bof(version, kWorksheet).Bof(version, testing::kChart).Eof().Eof();
    return book;
  }
};

}  // namespace tolvenar::testing
