// The makers of costly streams. Records are laid down by hand: there are millions of them.
#include "hostile/hostile_streams.h"

#include <algorithm>

namespace tolvenar::testing {

namespace {

constexpr uint32_t kJump = 8;

void Add(Bytes* to, const Bytes& bytes) {
  to->insert(to->end(), bytes.begin(), bytes.end());
}

void AddRecord(Bytes* to, uint16_t type, const Bytes& payload = {}) {
  Add(to, U16(type) + U16(static_cast<uint16_t>(payload.size())));
  Add(to, payload);
}

void PutU32(Bytes* to, size_t at, uint32_t value) {
  const Bytes bytes = U32(value);
  std::copy(bytes.begin(), bytes.end(), to->begin() + static_cast<std::ptrdiff_t>(at));
}

uint32_t Here(const Bytes& bytes) {
  return static_cast<uint32_t>(bytes.size());
}

void AddDetour(Bytes* to, uint32_t target) {
  AddRecord(to, 0xFEFF, U32(target));
}

// A workbook's frame: globals, then the sheet's head. `sheet_at` is where the BOUNDSHEET says that it begins.
struct Frame {
  Bytes bytes;
  size_t bound_sheet = 0;

  Frame() {
    AddRecord(&bytes, 0x0809, Bytes{0, 6, 5, 0, 0, 0, 0, 0});
    bound_sheet = bytes.size() + 4;
    AddRecord(&bytes, 0x0085, U32(0) + Bytes{0, 0, 4, 0, 'D', 'a', 't', 'a'});
  }
  void StartSheet() {
    AddRecord(&bytes, 0x000A);
    PutU32(&bytes, bound_sheet, Here(bytes));
    AddRecord(&bytes, 0x0809, Bytes{0, 6, 0x10, 0, 0, 0, 0, 0});
    AddRecord(&bytes, 0x0200, U32(0) + U32(100) + U16(0) + U16(10) + U16(0));
  }
  HostileStream End() {
    AddRecord(&bytes, 0x000A);
    AddRecord(&bytes, 0xFEF8);
    return {std::move(bytes)};
  }
};

// A sheet of one record again and again; `vary` changes it for its number.
template <typename Make>
HostileStream SheetOf(size_t bytes, Make make) {
  Frame frame;
  frame.StartSheet();
  frame.bytes.reserve(bytes + 100);
  for (uint32_t i = 0; frame.bytes.size() < bytes; ++i) make(&frame.bytes, i);
  return frame.End();
}

HostileStream EmptyRecords(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t) { to->resize(to->size() + 4); });
}

HostileStream EmptyRecordsInGlobals(size_t bytes) {
  Frame frame;
  frame.bytes.resize(frame.bytes.size() + bytes / 4 * 4);
  frame.StartSheet();
  return frame.End();
}

// DETOURs that lead from one end of their field to the other, again and again, and in the end out of it.
HostileStream Detours(size_t bytes) {
  Frame frame;
  frame.StartSheet();
  const uint32_t first = Here(frame.bytes);
  const uint32_t count = static_cast<uint32_t>(bytes / kJump) / 2 * 2;
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t half = count / 2;
    const uint32_t target = i < half ? count - 1 - i : count - i;  // the last one met is number half
    AddDetour(&frame.bytes, first + target * kJump);
  }
  PutU32(&frame.bytes, first + (count / 2) * kJump + 4, first + count * kJump);
  return frame.End();
}

HostileStream DetourCircle(size_t bytes) {
  HostileStream stream = Detours(bytes);
  const Frame frame;
  const uint32_t first = Here(frame.bytes) + 4 + 12 + 18;
  const uint32_t count = static_cast<uint32_t>(bytes / kJump) / 2 * 2;
  stream.late_at = first + (count / 2) * kJump + 4;
  stream.late_value = first;
  return stream;
}

// A walk of the sheet that comes, when it sets its mark for a lap of many steps, to the end of as many records alike, and is led back to their
// beginning: all the way over them the mark lies ahead.
HostileStream MarkBehind(size_t bytes, uint16_t alike) {
  constexpr uint32_t kEmptyRecord = 4;
  Frame frame;
  frame.StartSheet();
  uint32_t lap = 4;
  while (size_t{lap} * 4 * kEmptyRecord <= bytes) lap *= 2;
  for (uint32_t step = 2; step < lap - 2; ++step) AddRecord(&frame.bytes, 0x0044);
  const uint32_t first = Here(frame.bytes) + kJump;
  const uint32_t mark = first + (lap - 16) * kEmptyRecord;
  AddDetour(&frame.bytes, mark);
  while (Here(frame.bytes) < mark) AddRecord(&frame.bytes, alike);
  AddRecord(&frame.bytes, 0x00D7, U32(first));
  HostileStream stream = frame.End();
  stream.late_at = mark;
  stream.late_value = 0x0004FEFA;  // the record becomes a RESUME
  return stream;
}

HostileStream MarkBehindRows(size_t bytes) {
  return MarkBehind(bytes, 0x0208);
}

HostileStream MarkBehindEmptyRecords(size_t bytes) {
  return MarkBehind(bytes, 0x0042);
}

// 30000 strings and cells that all hold the last one.
HostileStream LastSharedString(size_t bytes) {
  constexpr uint16_t kStrings = 30000;
  Frame frame;
  AddRecord(&frame.bytes, 0x00FC, U32(kStrings) + U32(kStrings) + Bytes(kStrings * 2));
  // The strings, empty ones of 3 bytes each, run on into a second record.
  AddRecord(&frame.bytes, 0x003C, Bytes(kStrings * 2));
  frame.StartSheet();
  for (uint32_t i = 0; frame.bytes.size() < bytes; ++i) {
    const uint16_t row = static_cast<uint16_t>(i / 10 % 100);
    AddRecord(&frame.bytes, 0x00FD,
              U16(row) + U16(static_cast<uint16_t>(i % 10)) + U16(15) + U32(kStrings - 1));
  }
  return frame.End();
}

HostileStream NestedSubstreams(size_t bytes) {
  Frame frame;
  frame.StartSheet();
  const size_t depth = bytes / 16;
  for (size_t i = 0; i < depth; ++i) AddRecord(&frame.bytes, 0x0809, Bytes{0, 6, 0x20, 0, 0, 0, 0, 0});
  for (size_t i = 0; i < depth; ++i) AddRecord(&frame.bytes, 0x000A);
  return frame.End();
}

// As many sheets as 16 bits can count, all in one place.
HostileStream ManySheets(size_t bytes) {
  constexpr size_t kEntry = 600;
  Frame frame;
  std::vector<size_t> entries = {frame.bound_sheet};
  while (frame.bytes.size() < bytes && entries.size() < 32000) {
    entries.push_back(frame.bytes.size() + 4);
    AddRecord(&frame.bytes, 0x0085, Bytes(kEntry - 4));
  }
  frame.StartSheet();
  HostileStream stream = frame.End();
  const uint32_t sheet = static_cast<uint32_t>(stream.bytes.size()) - 4 - 4 - 18 - 12;
  for (const size_t at : entries) PutU32(&stream.bytes, at, sheet);
  return stream;
}

HostileStream Runs(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    AddRecord(to, 0x00BD, U16(static_cast<uint16_t>(i % 100)) + U16(0) + Bytes(60) + U16(9));
  });
}

// Runs that say they reach to the last column there can be: their pieces can't be put back.
HostileStream RunsThatCantBeSplit(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    AddRecord(to, 0x00BD, U16(static_cast<uint16_t>(i % 100)) + U16(0) + Bytes(6) + U16(0x7FFE));
  });
}

// The same behind a long way that each of them makes the walk go anew.
HostileStream LongWayToRunsThatCantBeSplit(size_t bytes) {
  return SheetOf(bytes, [&](Bytes* to, uint32_t i) {
    if (to->size() < bytes / 2) return to->resize(to->size() + 4);
    AddRecord(to, 0x00BD, U16(static_cast<uint16_t>(i % 100)) + U16(0) + Bytes(6) + U16(0x7FFE));
  });
}

// Every other cell is reached by a DETOUR into the patch area and left by a RESUME.
HostileStream Patches(size_t bytes) {
  constexpr uint32_t kStep = 18 + kJump;   // a NUMBER, a DETOUR
  constexpr uint32_t kPatch = 18 + kJump;  // a NUMBER, a RESUME
  Frame frame;
  frame.StartSheet();
  const uint32_t first = Here(frame.bytes);
  const uint32_t count = static_cast<uint32_t>(bytes / (kStep + kPatch));
  const uint32_t area = first + count * kStep + 8;  // behind the EOF and the BUFEND
  const auto number = [](Bytes* to, uint32_t i) {
    AddRecord(to, 0x0203, U16(static_cast<uint16_t>(i % 100)) + U16(0) + U16(15) + F64(1.5));
  };
  for (uint32_t i = 0; i < count; ++i) {
    number(&frame.bytes, i);
    AddDetour(&frame.bytes, area + i * kPatch);
  }
  HostileStream stream = frame.End();
  for (uint32_t i = 0; i < count; ++i) {
    number(&stream.bytes, i);
    AddRecord(&stream.bytes, 0xFEFA, U32(first + (i + 1) * kStep));
  }
  return stream;
}

HostileStream Rows(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    AddRecord(to, 0x0208, U16(static_cast<uint16_t>(i % 100)) + U16(0) + U16(10) + Bytes(10));
  });
}

// Formulas with an array constant that claims more elements than the file has bytes.
HostileStream ArrayFormulas(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    const Bytes tokens = {0x20, 1, 0xFF, 0x7F};
    AddRecord(to, 0x0006,
              U16(static_cast<uint16_t>(i % 100)) + U16(1) + U16(15) + F64(1) + Bytes(6) +
                  U16(static_cast<uint16_t>(tokens.size())) + tokens);
  });
}

// Formulas whose every byte is a token, and whose rectangles take all of the rest.
HostileStream LongFormulas(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    Bytes tokens = {0x26, 0, 0, 0, 0, 0, 0x70};
    tokens.resize(0x7F00, 0x03);
    AddRecord(to, 0x0006,
              U16(static_cast<uint16_t>(i % 100)) + U16(1) + U16(15) + F64(1) + Bytes(6) +
                  U16(static_cast<uint16_t>(tokens.size())) + tokens);
  });
}

HostileStream ColumnWidths(size_t bytes) {
  return SheetOf(bytes, [](Bytes* to, uint32_t i) {
    if (i % 2 == 0) AddRecord(to, 0x007D, U16(0) + U16(0x7FF0) + U16(2000) + Bytes(6));
    if (i % 2 != 0) AddRecord(to, i % 4 == 1 ? 0x0055 : 0x0225, U32(8));
  });
}

// Fonts, formats and XFs, a third each.
HostileStream Styles(size_t bytes) {
  Frame frame;
  const size_t third = bytes / 3;
  while (frame.bytes.size() < third) AddRecord(&frame.bytes, 0x0031, Bytes(14) + Bytes{1, 'A'});
  for (uint16_t i = 0; frame.bytes.size() < 2 * third; ++i)
    AddRecord(&frame.bytes, 0x041E, U16(i) + Bytes{1, 0, 0, '0'});
  while (frame.bytes.size() < bytes) AddRecord(&frame.bytes, 0x00E0, Bytes(20));
  frame.StartSheet();
  return frame.End();
}

void AddRef(Bytes* to, uint8_t low, uint32_t field) {
  AddRecord(to, static_cast<uint16_t>(0x1000 | low), U32(field));
}

}  // namespace

std::vector<HostileShape> HostileWorkbooks() {
  return {{"EmptyRecords", EmptyRecords},
          {"EmptyRecordsInGlobals", EmptyRecordsInGlobals},
          {"Detours", Detours},
          {"DetourCircle", DetourCircle},
          {"MarkBehindRows", MarkBehindRows},
          {"MarkBehindEmptyRecords", MarkBehindEmptyRecords},
          {"LastSharedString", LastSharedString},
          {"NestedSubstreams", NestedSubstreams},
          {"ManySheets", ManySheets},
          {"Runs", Runs},
          {"RunsThatCantBeSplit", RunsThatCantBeSplit},
          {"LongWayToRunsThatCantBeSplit", LongWayToRunsThatCantBeSplit},
          {"Patches", Patches},
          {"Rows", Rows},
          {"ArrayFormulas", ArrayFormulas},
          {"LongFormulas", LongFormulas},
          {"ColumnWidths", ColumnWidths},
          {"Styles", Styles}};
}

Bytes HostileReference(size_t bytes) {
  constexpr size_t kTable = 14 + 4 + 12;
  const uint32_t count = static_cast<uint32_t>(bytes / kTable);
  Bytes stream;
  AddRef(&stream, 0xFF, 8 + count * 18);
  for (uint32_t i = 0; i < count; ++i) {
    AddRecord(&stream, 0x10DF, U16(static_cast<uint16_t>(count - i)) + Bytes{1, 0, 1, 0, 1, 0, 1, 0});
    AddRecord(&stream, 0x10E0);
  }
  AddRef(&stream, 0xDA, 0);
  AddRef(&stream, 0xDB, 0);
  for (uint32_t i = 0; i < count; ++i) {
    AddRecord(&stream, 0x10DC, U16(1) + U16(static_cast<uint16_t>(i + 1)) + U32(8 + (count - 1 - i) * 18));
  }
  AddRef(&stream, 0xFE, 0);
  AddRecord(&stream, 0xFEF8);
  return stream;
}

Bytes HostileContents(size_t bytes) {
  const uint32_t count = static_cast<uint32_t>(bytes / 8);
  Bytes stream;
  AddRef(&stream, 0xFF, count);
  for (uint32_t id = count; id >= 1; --id) AddRef(&stream, 0xFD, id);
  AddRef(&stream, 0xFE, 0);
  return stream;
}

}  // namespace tolvenar::testing
