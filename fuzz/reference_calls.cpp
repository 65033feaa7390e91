// The calls, a function for each family of exports: an export that is added goes into the function of its family.
#include "reference_calls.h"

#include <iterator>

namespace tolvenar::fuzz {

namespace {

constexpr ULONG kProperties = 128;

class Array {
 public:
  Array(VARTYPE type, LONG first, ULONG count, Choices* choices)
      : array_(SafeArrayCreateVector(type, first, count)) {
    for (LONG i = first; i < first + static_cast<LONG>(count) && choices != nullptr; ++i) {
      uint32_t value = choices->Below(4) == 0 ? choices->Word() : static_cast<uint32_t>(i);
      SafeArrayPutElement(array_, &i, &value);
    }
  }
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  ~Array() { SafeArrayDestroy(array_); }
  SAFEARRAY** get() { return &array_; }

 private:
  SAFEARRAY* array_;
};

// A table's array of positions: mostly the steps that a box is made of.
SAFEARRAY* Positions(Choices* choices, const uint16_t (&sizes)[4]) {
  SAFEARRAYBOUND bounds[4] = {{sizes[0], 1}, {sizes[1], 1}, {sizes[2], 1}, {sizes[3], 1}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 4, bounds);
  LONG index[4];
  for (index[0] = 1; index[0] <= sizes[0]; ++index[0]) {
    for (index[1] = 1; index[1] <= sizes[1]; ++index[1]) {
      index[2] = sizes[2];
      index[3] = sizes[3];
      const uint32_t odd = choices->Below(8) == 0 ? choices->Word() : 0u;
      uint32_t value = static_cast<uint32_t>(index[0] + 256 * index[1]) + odd;
      SafeArrayPutElement(array, index, &value);
    }
  }
  return array;
}

uint16_t ChosenId(Choices* choices) {
  return static_cast<uint16_t>(choices->Below(6));
}

void CallTables(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices);
  const uint16_t sizes[4] = {static_cast<uint16_t>(choices->Below(4)),
                             static_cast<uint16_t>(choices->Below(4)), 2, 1};
  const uint32_t c1 = choices->Below(5), c2 = choices->Below(4);
  const int16_t signed_id = static_cast<int16_t>(choices->Below(2) == 0 ? id : -id);
  switch (choices->Below(7)) {
    case 0:
      XLRCreateTable(&r->buffer, &r->size, sizes[0], sizes[1], sizes[2], sizes[3]);
      break;
    case 1:
      XLRDeleteTable(r->buffer, id);
      break;
    case 2:
      XLRTextToTable(&r->buffer, &r->size, signed_id, c1, c2, 1, 1, "a text");
      break;
    case 3:
      XLRValueToTable(&r->buffer, &r->size, signed_id, c1, c2, 1, 1, c1, c2);
      break;
    case 4: {
      BSTR text = nullptr;
      uint8_t value[8];
      XLRGetTableText(r->buffer, id, &text, c1, c2, 1, 1);
      XLRGetTableValue(r->buffer, id, value, c1, c2, 1, 1);
      SysFreeString(text);
      break;
    }
    default: {
      SAFEARRAY* positions = Positions(choices, sizes);
      if (c1 % 2 == 0) XLRFillTable(&r->buffer, &r->size, &positions, id);
      XLRGetRefTable(r->buffer, id, &positions);
      SafeArrayDestroy(positions);
    }
  }
}

void CallGraphs(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices), other = ChosenId(choices);
  const uint8_t number = static_cast<uint8_t>(choices->Below(4));
  switch (choices->Below(9)) {
    case 0:
      XLRCreateGraph(&r->buffer, &r->size, other);
      break;
    case 1:
      XLRCreateChartEdit(&r->buffer, &r->size, number, id, other);
      break;
    case 2:
      XLRUpdateGraph(r->buffer, id, other);
      break;
    case 3:
      XLRUpdateChartEdit(r->buffer, number, id, other);
      break;
    case 4:
      XLRDeleteGraph(r->buffer, id);
      break;
    case 5:
      XLRDeleteChartEdit(r->buffer, number, id);
      break;
    case 6:
      XLRUpdateGraphTable(&r->buffer, &r->size, id, other, number);
      break;
    default:
      XLRTableByGraph(r->buffer, id, number);
      XLRGraphByChartEdit(r->buffer, number, id);
  }
}

void CallSlots(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices), slot = static_cast<uint16_t>(choices->Below(9));
  const std::string text(choices->Below(20), 't');
  switch (choices->Below(6)) {
    case 0:
      XLRSaveText(&r->buffer, &r->size, id, text.c_str(), slot);
      break;
    case 1:
      XLRSaveDouble(&r->buffer, &r->size, id, 1, 2, static_cast<int16_t>(slot));
      break;
    case 2:
      XLRSaveFont(&r->buffer, &r->size, id, 1, 2, 3, 4, slot);
      break;
    case 3:
      XLRSaveSetText(&r->buffer, &r->size, id, slot, text.c_str(), ChosenId(choices));
      break;
    case 4:
      XLRDeleteProperty(r->buffer, id, static_cast<uint16_t>(choices->Below(26)), slot);
      break;
    default: {
      BSTR texts[2] = {};
      uint16_t font[4];
      uint8_t value[8];
      XLRGetText(r->buffer, id, &texts[0], slot);
      XLRGetSetText(r->buffer, id, slot, &texts[1], ChosenId(choices));
      XLRGetDouble(r->buffer, id, value, slot);
      XLRGetFont(r->buffer, id, &font[0], &font[1], &font[2], &font[3], slot);
      for (const BSTR given : texts) SysFreeString(given);
    }
  }
}

void CallProperties(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices), set = static_cast<uint16_t>(choices->Below(3));
  const int16_t n = static_cast<int16_t>(choices->Below(20));
  Array properties(VT_I4, 1, kProperties, nullptr), flags(VT_I2, 1, static_cast<ULONG>(n), choices);
  if (choices->Below(2) == 0) {
    XLRSaveProperties(&r->buffer, &r->size, properties.get(), id);
    XLRSaveSelVis(&r->buffer, &r->size, flags.get(), id, n, static_cast<int16_t>(set));
  } else {
    XLRGetProperties(r->buffer, properties.get(), id);
    XLRGetSelVis(r->buffer, flags.get(), id, n, set);
  }
}

void SaveSets(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices);
  const int16_t first = static_cast<int16_t>(choices->Below(12)),
                count = static_cast<int16_t>(choices->Below(5));
  const int16_t last = static_cast<int16_t>(first + count - 1),
                max = static_cast<int16_t>(choices->Below(40));
  const int16_t set = static_cast<int16_t>(static_cast<int16_t>(choices->Below(7)) - 3);
  Array ints(VT_I2, first, static_cast<ULONG>(count), choices),
      longs(VT_I4, first, static_cast<ULONG>(count), choices);
  Array seconds(VT_I4, first, static_cast<ULONG>(count), choices->Below(2) == 0 ? choices : nullptr);
  switch (choices->Below(3)) {
    case 0:
      XLRSaveSetInt(&r->buffer, &r->size, id, first, last, max, ints.get(), set);
      break;
    case 1:
      XLRSaveSetLong(&r->buffer, &r->size, id, first, last, max, longs.get(), set);
      break;
    default:
      XLRSaveTextRef(&r->buffer, &r->size, id, first, last, max, longs.get(), seconds.get(), set);
  }
}

void GetSets(Reference* r, Choices* choices) {
  const uint16_t id = ChosenId(choices), set = ChosenId(choices);
  const int16_t n = static_cast<int16_t>(choices->Below(40));
  Array ints(VT_I2, 1, static_cast<ULONG>(n), nullptr), longs(VT_I4, 1, static_cast<ULONG>(n), nullptr);
  Array seconds(VT_I4, 1, static_cast<ULONG>(n), nullptr);
  XLRGetSetInt(r->buffer, id, n, ints.get(), set);
  XLRGetSetLong(r->buffer, id, n, longs.get(), set);
  XLRGetTextRef(r->buffer, id, n, longs.get(), seconds.get(), set);
  XLRGetIndices(r->buffer, ints.get(), ints.get(), static_cast<uint32_t>(n), set);
  XLRGetNumItems(r->buffer, static_cast<int16_t>(set));
}

constexpr void (*kFamilies[])(Reference*, Choices*) = {CallTables,     CallGraphs, CallSlots,
                                                       CallProperties, SaveSets,   GetSets};

}  // namespace

void CallObjectExport(Reference* reference, Choices* choices) {
  kFamilies[choices->Below(std::size(kFamilies))](reference, choices);
}

}  // namespace tolvenar::fuzz
