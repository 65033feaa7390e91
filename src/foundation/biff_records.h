// Workbook records: types, field offsets and sizes, named once. Offsets count from the record's first byte;
// integers are little-endian; rows and columns are 0-based.
//
// Records are recognised by the low byte of their type (the plain test of record_stream.h), so a type has a
// kLow... name; a full kType... is there only for records that this library writes.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// The BIFF generations, as BiffVersion holds them.
constexpr int32_t kBiff5 = 5;
constexpr int32_t kBiff8 = 6;

// Low bytes of the types.
constexpr uint8_t kLowDimensions = 0x00;
constexpr uint8_t kLowBlank = 0x01;
constexpr uint8_t kLowNumber = 0x03;
constexpr uint8_t kLowLabel = 0x04;
constexpr uint8_t kLowBoolErr = 0x05;
constexpr uint8_t kLowFormula = 0x06;
constexpr uint8_t kLowString = 0x07;
constexpr uint8_t kLowRow = 0x08;
constexpr uint8_t kLowBof = 0x09;
constexpr uint8_t kLowEof = 0x0A;
constexpr uint8_t kLowIndex = 0x0B;
constexpr uint8_t kLowFormat = 0x1E;
constexpr uint8_t kLowArray = 0x21;
constexpr uint8_t kLowDefaultRowHeight = 0x25;
constexpr uint8_t kLowFont = 0x31;
constexpr uint8_t kLowWindow1 = 0x3D;
constexpr uint8_t kLowWindow2 = 0x3E;
constexpr uint8_t kLowXfOld = 0x43;
constexpr uint8_t kLowDefColWidth = 0x55;
constexpr uint8_t kLowObj = 0x5D;
constexpr uint8_t kLowColInfo = 0x7D;
constexpr uint8_t kLowRk = 0x7E;
constexpr uint8_t kLowBoundSheet = 0x85;
constexpr uint8_t kLowPalette = 0x92;
constexpr uint8_t kLowScl = 0xA0;
constexpr uint8_t kLowShrFmla = 0xBC;
constexpr uint8_t kLowMulRk = 0xBD;
constexpr uint8_t kLowMulBlank = 0xBE;
constexpr uint8_t kLowRString = 0xD6;
constexpr uint8_t kLowDbCell = 0xD7;
constexpr uint8_t kLowXf = 0xE0;
constexpr uint8_t kLowSst = 0xFC;
constexpr uint8_t kLowLabelSst = 0xFD;

// Types of the records that are written.
constexpr uint16_t kTypeBlank = 0x0201;
constexpr uint16_t kTypeNumber = 0x0203;
constexpr uint16_t kTypeLabel = 0x0204;
constexpr uint16_t kTypeRow = 0x0208;
constexpr uint16_t kTypeRk = 0x027E;
constexpr uint16_t kTypeMulRk = 0x00BD;
constexpr uint16_t kTypeMulBlank = 0x00BE;

constexpr uint16_t kTypeColInfo = 0x007D;
constexpr uint16_t kTypeDefColWidth = 0x0055;
constexpr uint16_t kTypeBoundSheet = 0x0085;
constexpr uint16_t kTypeXf = 0x00E0;
constexpr uint16_t kTypeFont = 0x0031;
constexpr uint16_t kTypeFormat = 0x041E;
constexpr uint16_t kTypeWriteAccess = 0x005C;
constexpr uint16_t kTypePalette = 0x0092;
constexpr uint16_t kTypeDimensions = 0x0200;
constexpr uint16_t kTypeDefaultRowHeight = 0x0225;
constexpr uint16_t kTypeBof = 0x0809;

// BOF: version u16, substream type u16.
constexpr uint32_t kBofVersionHigh = 5;    // u8: the generation
constexpr uint32_t kBofSubstream = 6;      // u8, low byte of the type
constexpr uint32_t kBofSubstreamHigh = 7;  // u8
constexpr uint8_t kSubstreamGlobals = 0x05;
constexpr uint8_t kSubstreamVisualBasic = 0x06;
constexpr uint8_t kSubstreamChart = 0x20;
constexpr uint8_t kSubstreamMacroSheet = 0x40;
constexpr uint8_t kSubstreamWorkspace = 0x00;
constexpr uint8_t kSubstreamWorkspaceHigh = 0x01;  // any other type with that low byte is a worksheet

// EOF has no payload.
constexpr uint32_t kEofSize = kHeaderSize;

// WINDOW1 and WINDOW2: what the sheet that is added last changes in them.
constexpr uint32_t kWindow1ActiveTab = 14;   // u16, of which the low byte is written
constexpr uint32_t kWindow1FirstTab = 16;    // u16, likewise
constexpr uint32_t kWindow2OptionsHigh = 5;  // u8

// BOUNDSHEET: BOF offset u32, state and type u16, name length u8, a byte that is skipped, the name.
constexpr uint32_t kBoundSheetBof = 4;
constexpr uint32_t kBoundSheetNameLength = 10;
constexpr uint32_t kBoundSheetName = 12;

// EXTSST, the last record of BIFF8 globals: strings per bucket u16.
constexpr uint32_t kExtSstBucket = 4;

// SST: total u32, unique u32, the strings.
constexpr uint32_t kSstFirstString = 12;

// A shared string, from its first byte: length i16 in characters, flags u8, run count i16 if rich, characters, runs if rich.
constexpr uint32_t kSharedLength = 0;
constexpr uint32_t kSharedFlags = 2;
constexpr uint8_t kSharedWide = 0x01;  // two bytes a character
constexpr uint8_t kSharedRich = 0x08;  // runs behind the characters
constexpr uint32_t kSharedRunCount = 3;
constexpr uint32_t kSharedText = 3;
constexpr uint32_t kSharedTextRich = kSharedText + 2;  // behind the run count
constexpr uint32_t kSharedRun = 4;                     // bytes a run

// DIMENSIONS, BIFF5: four u16. BIFF8: two u32 of which the low halves are read, two u16.
struct DimensionsFields {
  uint32_t firstRow;
  uint32_t pastRow;
  uint32_t firstColumn;
  uint32_t pastColumn;
};
constexpr DimensionsFields kDimensionsBiff5 = {4, 6, 8, 10};
constexpr DimensionsFields kDimensionsBiff8 = {4, 8, 12, 14};

// ROW: row u16, first column u16, last column plus 1 u16, then height and the rest of the row's looks.
constexpr uint32_t kRowNumber = 4;
constexpr uint32_t kRowFirstColumn = 6;
constexpr uint32_t kRowPastColumn = 8;
constexpr uint32_t kRowHeight = 10;

// DEFAULTROWHEIGHT: options u16, height u16. DEFCOLWIDTH: width u16 in characters.
constexpr uint32_t kDefaultRowHeightHeight = 6;
constexpr uint32_t kDefColWidthWidth = 4;

// COLINFO: first column u16, last column u16, width u16 in 1/256 of a character, then the columns' looks.
constexpr uint32_t kColInfoFirst = 4;
constexpr uint32_t kColInfoLast = 6;
constexpr uint32_t kColInfoWidth = 8;

// SCL: the zoom as a fraction, two i16.
constexpr uint32_t kSclNumerator = 4;
constexpr uint32_t kSclDenominator = 6;

// PALETTE: count u16, then red, green, blue and a zero byte each.
constexpr uint32_t kPaletteCount = 4;
constexpr uint32_t kPaletteColours = 6;
constexpr uint32_t kPaletteColour = 4;  // bytes each

// FORMAT, BIFF5: index u16, length u8, text. (BIFF8 has a length of 16 bits and flags in front of the text.)
constexpr uint32_t kFormatIndex = 4;
constexpr uint32_t kFormatLength = 6;
constexpr uint32_t kFormatText = 7;

// FONT, BIFF5: height u16, flags u16, colour u16, boldness u16, script u16, underline u8, family u8, character set
// u8, reserved u8, length u8, name.
constexpr uint32_t kFontHeight = 4;
constexpr uint32_t kFontFlags = 6;
constexpr uint8_t kFontItalic = 0x02;
constexpr uint8_t kFontStrikeOut = 0x08;
constexpr uint32_t kFontColour = 8;
constexpr uint32_t kFontBoldness = 10;
constexpr uint32_t kFontUnderline = 14;
constexpr uint32_t kFontNameLength = 18;
constexpr uint32_t kFontName = 19;

// XF, BIFF5: eight u16. Its older form has one byte each for font and format.
constexpr uint32_t kXfFont = 4;
constexpr uint32_t kXfFormat = 6;
constexpr uint32_t kXfOptions = 8;
constexpr uint8_t kXfLocked = 0x01;
constexpr uint8_t kXfHidden = 0x02;
constexpr uint32_t kXfAlignment = 10;
constexpr uint32_t kXfColours = 12;
constexpr uint32_t kXfFill = 14;
constexpr uint32_t kXfBorders = 16;
constexpr uint32_t kXfSideColours = 18;
constexpr uint32_t kXfOldFormat = 5;
constexpr uint32_t kXfOldRest = 6;

// The lowest colour number that names a palette entry.
constexpr int32_t kFirstPaletteColour = 8;

// Cells: row u16, column u16 (a run: first column), XF u16 (a run: of its first cell), then what the kind
// holds.
constexpr uint32_t kCellRow = 4;
constexpr uint32_t kCellColumn = 6;
constexpr uint32_t kCellXf = 8;
constexpr uint32_t kCellBody = 10;
constexpr uint32_t kNumberValue = kCellBody;        // f64
constexpr uint32_t kRkValue = kCellBody;            // RK, 4 bytes
constexpr uint32_t kLabelLength = kCellBody;        // u16
constexpr uint32_t kLabelText = 12;                 // BIFF5
constexpr uint32_t kLabelTextBiff8 = 13;            // BIFF8: behind a flag byte
constexpr uint32_t kBoolErrValue = kCellBody;       // u8
constexpr uint32_t kBoolErrIsError = 11;            // u8
constexpr uint32_t kFormulaResult = kCellBody;      // 8 bytes
constexpr uint32_t kFormulaResultKind = kCellBody;  // u8, of a result that is no number
constexpr uint32_t kFormulaResultTag = 16;          // u16: 0xFFFF when the result is no number
constexpr uint32_t kLabelSstIndex = kCellBody;      // u32

// Formulas: a length u16, then the tokens. In a cell, in an ARRAY and in a SHRFMLA.
constexpr uint32_t kFormulaLength = 24;
constexpr uint32_t kFormulaTokens = 26;
constexpr uint32_t kArrayFormulaLength = 16;
constexpr uint32_t kArrayFormulaTokens = 18;
constexpr uint32_t kSharedFormulaLength = 12;
constexpr uint32_t kSharedFormulaTokens = 14;

// Runs: cells from kCellXf on, then the last column as the last u16 of the payload.
constexpr uint32_t kMulRkCell = 6;             // XF u16, RK 4 bytes
constexpr uint32_t kMulBlankCell = 2;          // XF u16
constexpr uint32_t kMulRkFirstRk = kCellBody;  // RK of the first cell
constexpr uint32_t kRunLastColumnFromEnd = 2;  // last column at offset + length + this

// Sizes of the records that are written, header included.
constexpr uint32_t kBlankSize = kHeaderSize + 6;     // row, column, XF
constexpr uint32_t kRowSize = kHeaderSize + 6 + 10;  // row, first column, last column plus 1, the rest
constexpr uint32_t kNumberSize = kHeaderSize + 6 + 8;
constexpr uint32_t kRkSize = kHeaderSize + 6 + 4;
constexpr uint32_t kLabelFixed = kHeaderSize + 6 + 2;  // row, column, XF, length; the text behind it
constexpr uint32_t kXfSizeBiff5 = kHeaderSize + 16;
constexpr uint32_t kRunFixed = kHeaderSize + 4 + 2;  // row, first column; last column; the cells between them

// Chart records: low bytes of types that have the chart bit.
constexpr uint8_t kLowChart = 0x02;
constexpr uint8_t kLowSeries = 0x03;
constexpr uint8_t kLowAreaFormat = 0x0A;
constexpr uint8_t kLowAttachedLabel = 0x0C;
constexpr uint8_t kLowSeriesText = 0x0D;
constexpr uint8_t kLowChartFormat = 0x14;
constexpr uint8_t kLowLegend = 0x15;
constexpr uint8_t kLowBar = 0x17;
constexpr uint8_t kLowLine = 0x18;
constexpr uint8_t kLowPie = 0x19;
constexpr uint8_t kLowArea = 0x1A;
constexpr uint8_t kLowScatter = 0x1B;
constexpr uint8_t kLowAxis = 0x1D;
constexpr uint8_t kLowText = 0x25;
constexpr uint8_t kLowFontX = 0x26;
constexpr uint8_t kLowObjectLink = 0x27;
constexpr uint8_t kLowBegin = 0x33;
constexpr uint8_t kLowEnd = 0x34;
constexpr uint8_t kLow3d = 0x3A;
constexpr uint8_t kLowRadar = 0x3E;
constexpr uint8_t kLowSurface = 0x3F;
constexpr uint8_t kLowRadarArea = 0x40;
constexpr uint8_t kLowSerToCrt = 0x45;
constexpr uint8_t kLowAi = 0x51;

// High byte of the type of a chart record, where that is looked at as a whole.
constexpr uint8_t kChartHigh = 0x10;

// CHART: left, top, width, height, each a fixed-point number of points: fraction u16, integer part i16.
constexpr uint32_t kChartWidth = 14;
constexpr uint32_t kChartHeight = 18;

// SERIES: kinds of data u16, u16, count of categories u16.
constexpr uint32_t kSeriesCategories = 8;

// AREAFORMAT: foreground colour u32, background colour u32, pattern u16.
constexpr uint32_t kAreaForeground = 4;
constexpr uint32_t kAreaBackground = 8;
constexpr uint32_t kAreaPattern = 12;  // u8
constexpr uint32_t kAreaPatternHigh = 13;

// SERIESTEXT: u16, length u8, text.
constexpr uint32_t kSeriesTextLength = 6;
constexpr uint32_t kSeriesTextText = 7;

// TEXT: alignment u8, u8, background mode u16, colour u32. FONTX: index of a FONT u16.
// OBJECTLINK: what the text belongs to u16. SERTOCRT: number of the series' chart group u16.
constexpr uint32_t kTextColour = 8;
constexpr uint32_t kFontXFont = 4;
constexpr uint32_t kObjectLinkKind = 4;
constexpr uint32_t kObjectLinkKindHigh = 5;
constexpr uint32_t kSerToCrtGroup = 4;

// LEGEND: rectangle 16 bytes, place u8.
constexpr uint32_t kLegendPlace = 20;

// Flags of chart types, of which the low byte is read. BAR: overlap i16, gap i16, flags u16. SCATTER, BIFF8: size
// ratio u16, kind of size u16, flags u16. AREA, RADAR, RADARAREA, SURFACE: flags u16.
constexpr uint32_t kBarFlags = 8;
constexpr uint32_t kScatterFlags = 8;
constexpr uint32_t kAreaFlags = 4;
constexpr uint32_t kRadarFlags = 4;
constexpr uint32_t kSurfaceFlags = 4;
// LINE has its flags at 4, and they are read at 8, on purpose: that is the length of the record behind it.
constexpr uint32_t kLineFlags = 8;

// ATTACHEDLABEL: flags u16.
constexpr uint32_t kAttachedLabelFlags = 4;

// AI: what it is the data of u8, how u8, flags u16, number format u16, length of the formula u16, its tokens.
constexpr uint32_t kAiKind = 4;
constexpr uint8_t kAiKindValues = 1;
constexpr uint32_t kAiLength = 10;
constexpr uint32_t kAiTokens = 12;

// OBJ, BIFF5: count u32, kind u16, id u16, flags u16, left column u16, u16, top row u16.
constexpr uint32_t kObjKind = 8;
constexpr uint32_t kObjId = 10;
constexpr uint32_t kObjLeft = 14;
constexpr uint32_t kObjTop = 18;

// For PassOver: true for a record that neither opens nor closes a substream. (It stops at charts' records of the same low bytes as well.)
inline bool IsInsideSubstream(const uint8_t* record) {
  return record[kRecordTypeLow] != kLowBof && record[kRecordTypeLow] != kLowEof;
}

}  // namespace tolvenar
