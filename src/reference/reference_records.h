// Reference records: types and field offsets of the private records 0x10xx, named once. Offsets count from the record's first byte,
// header included; integers are little-endian. They are told apart by the low byte and the chart bit (IsChart of record_stream.h).
//
//   STREAM, in the walk
//   REFHEADER                at offset 0; says where the live REFMARK stands
//   objects                  in the order of their creation: head, content, end; they never nest
//   REFMARK                  the live one: the next real record is REFDIR. A new object goes in front of it
//   REFDIR                   a position only
//   REFENTRY ...             one per object, in the order of their creation
//   REFEND                   every walk stops here
//
// A stream that has been edited also has retired REFMARKs, one behind each object made since, and the patch records.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// High byte of every type that is written here.
constexpr uint16_t kReferenceType = 0x1000;
constexpr uint16_t ReferenceType(uint8_t low) {
  return static_cast<uint16_t>(kReferenceType | low);
}

// Structure. Each of these has a u32 at kRefField, REFENTRY the fields below.
constexpr uint8_t kLowRefHeader = 0xFF;
constexpr uint8_t kLowRefMark = 0xDA;
constexpr uint8_t kLowRefDir = 0xDB;
constexpr uint8_t kLowRefEntry = 0xDC;
constexpr uint8_t kLowRefEnd = 0xFE;
constexpr uint8_t kLowRefId = 0xFD;  // in the directory of a file
constexpr uint32_t kRefField = kHeaderSize;
constexpr uint32_t kRefRecordSize = kHeaderSize + 4;
constexpr uint32_t kRefHeaderMark = kRefField;  // u32: offset of the live REFMARK
constexpr uint32_t kRefEntryKindWord =
    kRefField;  // u16: kind, and of a chart edit its number less 1 above it
constexpr uint32_t kRefEntryNumber = kRefField + 1;  // u8
constexpr uint32_t kRefEntryId = 6;                  // u16
constexpr uint32_t kRefEntryOffset = 8;              // u32: offset of the object
constexpr uint32_t kRefEntrySize = 12;

// Kind words.
constexpr uint16_t kKindTable = 1;
constexpr uint16_t kKindGraph = 2;
constexpr uint16_t kKindEdit = 3;
constexpr uint16_t kKindNumberUnit = 0x100;  // of a chart edit: number less 1, times this, on top of the kind

// Tables.
constexpr uint8_t kLowTableHead = 0xDF;
constexpr uint8_t kLowTableEnd = 0xE0;
constexpr uint8_t kLowTableValue = 0xD4;
constexpr uint8_t kLowTableText = 0xD5;
constexpr uint8_t kLowTableBlock = 0xF8;
constexpr uint8_t kLowTableCell = 0xF9;
constexpr uint32_t kObjectId = 4;         // u16, of a TABLEHEAD and a GRAPHHEAD
constexpr uint32_t kTableDimensions = 6;  // 4 x i16
constexpr uint32_t kTableHeadSize = 14;
constexpr uint32_t kObjectEndSize = kHeaderSize;  // TABLEEND, GRAPHEND, EDITEND
constexpr uint32_t kTableCellNumber = 4;          // u32: linear index, plus 1 in TABLEVALUE and TABLETEXT
constexpr uint32_t kTableValue = 8;               // 8 bytes
constexpr uint32_t kTableValueSize = 16;
constexpr uint32_t kTableTextLength = 8;  // i16
constexpr uint32_t kTableText = 10;
constexpr uint32_t kTableCellPosition = 8;  // u32
constexpr uint32_t kTableCellSize = 12;
constexpr uint32_t kTableBlockAxes = 4;      // u8: a + 5 b + 25 c
constexpr uint32_t kTableBlockFirst = 5;     // u32: linear index of the first corner
constexpr uint32_t kTableBlockPosition = 9;  // u32: its position value
constexpr uint32_t kTableBlockCountA = 13;   // u8
constexpr uint32_t kTableBlockCountB = 14;   // u16
constexpr uint32_t kTableBlockCountC = 16;   // u8
constexpr uint32_t kTableBlockSize = 17;

// Graphs.
constexpr uint8_t kLowGraphHead = 0xFC;
constexpr uint8_t kLowGraphEnd = 0xE2;
constexpr uint8_t kLowGraphTable = 0xD6;
constexpr uint8_t kLowGraphProps = 0xFA;  // a RESUME passes the same test
constexpr uint8_t kLowSelVis = 0xD7;
constexpr uint8_t kLowGraphFont[] = {0xDD, 0xDE, 0xF1, 0xF2, 0xF3};
constexpr uint8_t kLowGraphDouble[] = {0xE4, 0xE8, 0xEA};
constexpr uint8_t kLowGraphText[] = {0xE5, 0xE6, 0xE7, 0xF4, 0xF5, 0xF6, 0xF7};
constexpr uint8_t kLowSetText[] = {0xEB, 0xEC, 0xED, 0xEE};
constexpr uint8_t kLowSetInt[] = {0xE3, 0xE9};
constexpr uint8_t kLowSetLong[] = {0xEF, 0xF0};
constexpr uint8_t kLowSetIntRun = 0xD8;
constexpr uint8_t kLowSetLongRun = 0xD9;
constexpr uint8_t kLowTextRef = 0xD2;
constexpr uint8_t kLowTextRefRun = 0xD1;
// Type that a slot number without a slot gives, on purpose: nothing reads it, and it is no SLACK.
constexpr uint16_t kTypeNoSlot = 0x00FD;
constexpr uint32_t kGraphTableId = 6;  // u16, of a GRAPHHEAD
constexpr uint32_t kGraphHeadSize = 8;
constexpr uint32_t kGraphTableLink = 4;    // u8
constexpr uint32_t kGraphTableLinked = 5;  // u16: table id
constexpr uint32_t kGraphTableSize = 7;
constexpr uint32_t kGraphPropsValues = 4;
constexpr uint32_t kGraphPropsCount = 128;  // i32 each
constexpr uint32_t kGraphPropsSize = 516;
constexpr uint32_t kSelVisSet = 4;         // u8
constexpr uint32_t kSelVisCount = 5;       // i16
constexpr uint32_t kSelVisFlags = 7;       // count / 8 + 1 bytes
constexpr uint32_t kGraphFontValues = 4;   // 4 x u16
constexpr uint32_t kGraphDoubleValue = 4;  // 8 bytes
constexpr uint32_t kGraphDoubleSize = 12;
constexpr uint32_t kGraphTextLength = 4;  // i16
constexpr uint32_t kGraphText = 6;
constexpr uint32_t kSetItem = 4;        // 16 bits: index, of SETTEXT, SETINT and SETLONG
constexpr uint32_t kSetTextLength = 6;  // i16
constexpr uint32_t kSetText = 8;
constexpr uint32_t kSetValue = 6;     // u16 of SETINT, u32 of SETLONG
constexpr uint32_t kSetRunSet = 4;    // u8
constexpr uint32_t kSetRunFirst = 5;  // i16
constexpr uint32_t kSetRunLast = 7;   // i16
constexpr uint32_t kSetRunValues = 9;
constexpr uint32_t kTextRefSet = 4;      // u8, also of TEXTREFRUN
constexpr uint32_t kTextRefItem = 5;     // i16
constexpr uint32_t kTextRefFirst = 7;    // u32
constexpr uint32_t kTextRefSecond = 11;  // u32
constexpr uint32_t kTextRefSize = 15;
constexpr uint32_t kTextRefRunStep = 5;   // u8
constexpr uint32_t kTextRefRunFirst = 6;  // i16
constexpr uint32_t kTextRefRunCount = 8;  // i16
constexpr uint32_t kTextRefRunBase = 10;  // u32
constexpr uint32_t kTextRefRunSize = 14;

// Chart edits; their 16-bit fields stand at odd offsets.
constexpr uint8_t kLowEditHead = 0xFB;
constexpr uint8_t kLowEditEnd = 0xE1;
constexpr uint32_t kEditNumber = 4;  // u8: number less 1
constexpr uint32_t kEditId = 5;      // u16
constexpr uint32_t kEditGraph = 7;   // u16
constexpr uint32_t kEditHeadSize = 9;

}  // namespace tolvenar
