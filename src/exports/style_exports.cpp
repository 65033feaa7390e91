// Exports of the style tables, of the lookups in them, and of the sizes of rows and columns: forwards, and nothing
// but forwards.
#include "edit/row_column_size_change.h"
#include "query/format_catalogue.h"
#include "query/item_decoders.h"
#include "query/palette.h"
#include "query/row_column_sizes.h"
#include "query/style_lookup.h"
#include "tolvenar/tolvenar.h"

extern "C" {

uint16_t TOLVENAR_CALL XLGetNumFormatItems(uint32_t buffer, uint32_t table, int16_t kind) {
  return tolvenar::XLGetNumFormatItems(buffer, table, kind);
}

int16_t TOLVENAR_CALL XLGetFormatData(SAFEARRAY** items, uint32_t buffer, uint32_t table, int16_t kind) {
  return tolvenar::XLGetFormatData(items, buffer, table, kind);
}

int16_t TOLVENAR_CALL XLGetColorData(SAFEARRAY** colours, uint32_t buffer, uint32_t table) {
  return tolvenar::XLGetColorData(colours, buffer, table);
}

int16_t TOLVENAR_CALL XLGetStandardPalette(SAFEARRAY** colours) {
  return tolvenar::XLGetStandardPalette(colours);
}

int16_t TOLVENAR_CALL XLGetRowHeight(SAFEARRAY** heights, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetRowHeight(heights, buffer, table, sheet);
}

int16_t TOLVENAR_CALL XLGetColWidth(SAFEARRAY** widths, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetColWidth(widths, buffer, table, sheet);
}

double TOLVENAR_CALL XLGetMagnification(uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetMagnification(buffer, table, sheet);
}

int16_t TOLVENAR_CALL XLFontSize(uint32_t block) {
  return tolvenar::XLFontSize(block);
}

int16_t TOLVENAR_CALL XLFontColor(uint32_t block) {
  return tolvenar::XLFontColor(block);
}

int16_t TOLVENAR_CALL XLFontBoldness(uint32_t block) {
  return tolvenar::XLFontBoldness(block);
}

int16_t TOLVENAR_CALL XLFontItalic(uint32_t block) {
  return tolvenar::XLFontItalic(block);
}

int16_t TOLVENAR_CALL XLFontStrikeOut(uint32_t block) {
  return tolvenar::XLFontStrikeOut(block);
}

int16_t TOLVENAR_CALL XLFontUnderline(uint32_t block) {
  return tolvenar::XLFontUnderline(block);
}

int16_t TOLVENAR_CALL XLXFFont(uint32_t block) {
  return tolvenar::XLXFFont(block);
}

int16_t TOLVENAR_CALL XLXFFormat(uint32_t block) {
  return tolvenar::XLXFFormat(block);
}

int16_t TOLVENAR_CALL XLXFLocked(uint32_t block) {
  return tolvenar::XLXFLocked(block);
}

int16_t TOLVENAR_CALL XLXFHidden(uint32_t block) {
  return tolvenar::XLXFHidden(block);
}

int16_t TOLVENAR_CALL XLXFHAlignment(uint32_t block) {
  return tolvenar::XLXFHAlignment(block);
}

int16_t TOLVENAR_CALL XLXFVAlignment(uint32_t block) {
  return tolvenar::XLXFVAlignment(block);
}

int16_t TOLVENAR_CALL XLXFRotation(uint32_t block) {
  return tolvenar::XLXFRotation(block);
}

int16_t TOLVENAR_CALL XLXFBorderStyle(uint32_t block, uint16_t* fill, uint16_t* top, uint16_t* bottom,
                                      uint16_t* left, uint16_t* right) {
  return tolvenar::XLXFBorderStyle(block, fill, top, bottom, left, right);
}

int16_t TOLVENAR_CALL XLXFColors(uint32_t block, uint16_t* colour1, uint16_t* colour2, uint16_t* top,
                                 uint16_t* bottom, uint16_t* left, uint16_t* right) {
  return tolvenar::XLXFColors(block, colour1, colour2, top, bottom, left, right);
}

int16_t TOLVENAR_CALL XLFontName(uint32_t block, BSTR* name) {
  return tolvenar::XLFontName(block, name);
}

int16_t TOLVENAR_CALL XLFormatString(uint32_t block, BSTR* text) {
  return tolvenar::XLFormatString(block, text);
}

int16_t TOLVENAR_CALL XLGetFont(uint32_t* buffer, uint32_t table, uint32_t* size, const char* name,
                                int16_t colour, uint16_t height, uint16_t boldness, uint16_t italic,
                                uint16_t underline, uint16_t strikeout) {
  return tolvenar::XLGetFont(buffer, table, size, name,
                             {colour, height, boldness, italic, underline, strikeout});
}

int16_t TOLVENAR_CALL XLGetFormat(uint32_t* buffer, uint32_t table, uint32_t* size, const char* text) {
  return tolvenar::XLGetFormat(buffer, table, size, text);
}

int16_t TOLVENAR_CALL XLGetXFInd(uint32_t* buffer, uint32_t table, uint32_t* size, uint16_t font,
                                 uint16_t format, uint16_t locked, uint16_t hidden, int16_t horizontal,
                                 int16_t vertical, int16_t rotation, uint16_t colours) {
  return tolvenar::XLGetXFInd(buffer, table, size,
                              {font, format, locked, hidden, horizontal, vertical, rotation, colours});
}

int16_t TOLVENAR_CALL XLGetXFIndFull(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t font,
                                     int16_t format, uint16_t locked, uint16_t hidden, int16_t horizontal,
                                     int16_t vertical, int16_t rotation, int16_t background,
                                     int16_t fillPattern, int16_t patternColour, int16_t bottomStyle,
                                     int16_t bottomColour, int16_t topStyle, int16_t topColour,
                                     int16_t leftStyle, int16_t leftColour, int16_t rightStyle,
                                     int16_t rightColour) {
  return tolvenar::XLGetXFIndFull(
      buffer, table, size,
      {font, format, horizontal, vertical, rotation, fillPattern, patternColour, background, bottomStyle,
       topStyle, leftStyle, rightStyle, bottomColour, topColour, leftColour, rightColour},
      locked, hidden);
}

int16_t TOLVENAR_CALL XLChangeRowHeight(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                        int16_t row, uint16_t height) {
  return tolvenar::XLChangeRowHeight(buffer, table, size, sheet, row, height);
}

int16_t TOLVENAR_CALL XLChangeColWidth(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                       int16_t column, uint16_t width) {
  return tolvenar::XLChangeColWidth(buffer, table, size, sheet, column, width);
}

}  // extern "C"
