// Chart titles: the texts that belong to a chart and to its axes, their fonts and their colour.
//
//   RECORD                   READ                            A TEXT qualifies when its block has, directly in it,
//   TEXT, chart 0x25         colour u32 at 8                 an OBJECTLINK with a kind from 1 to 3 (1 the title,
//   OBJECTLINK, chart 0x27   kind, bytes at 4 and 5          2 and 3 the axes) and a zero byte behind it, and a
//   SERIESTEXT, chart 0x0D   n bytes at 7, n the byte at 6   SERIESTEXT. The first of each record counts.
//   FONTX, chart 0x26        font u16 at 4
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Where a chart's titles go; a null pointer takes nothing.
struct TitleOutputs {
  BSTR* title;
  BSTR* axisOne;
  BSTR* axisTwo;
  uint16_t* titleFont;
  uint16_t* axisFont;  // of both axes
  uint32_t* colour;    // of whatever qualifies
};

// Gives the titles of chart `chart` of sheet `sheet` (1-based). Texts are the caller's; the bytes stand as in the
// record. Of several that go to the same place the last one stays, and an earlier one that this call made is
// released. What the chart does not tell stays untouched, and a text that was there is not released.
// RESULT: 1, 2, 3, 6, 7, 8 as the checks of chart_search.h; 9 no such chart, or it is not closed; 0 done, also when a
// text found no pool block or no memory: then nothing of its TEXT is given.
int16_t XLGetTitleData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                       const TitleOutputs& outputs);

}  // namespace tolvenar
