// Grounds: the workbook that calls work on, and what a host lets go of in the end.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "tolvenar/tolvenar.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

namespace {

Bytes Font(std::string_view name) {
  return U16(200) + U16(0) + U16(8) + U16(400) + U16(0) + Bytes{0, 0, 0, 0} +
         Bytes{static_cast<uint8_t>(name.size())} + Text(name);
}

Bytes Format(uint16_t index, std::string_view text) {
  return U16(index) + Bytes{static_cast<uint8_t>(text.size())} + Text(text);
}

Bytes ColInfo(uint16_t first, uint16_t last) {
  return U16(first) + U16(last) + U16(2304) + U16(0) + U16(0) + Bytes(1);
}

StreamBuilder& FirstSheet(StreamBuilder& book, uint8_t version) {
  return book.Bof(version, kWorksheet)
      .Record(0x007D, ColInfo(0, 0))
      .Dimensions(0, 4, 0, 6)
      .Row(0, 0, 6)
      .Row(1, 0, 6)
      .Row(2, 0, 6)
      .Row(3, 0, 6)
      .Number(0, 0, 15, 1.5)
      .Label(0, 1, 15, "text")
      .MulRk(1, 0, {{15, 2}, {15, 6}, {15, 10}, {15, 14}, {15, 18}})
      .MulBlank(2, 0, {15, 15, 15, 15, 15})
      .Rk(3, 0, 15, 6)
      .Record(0x023E, Bytes(10))
      .Eof();
}

}  // namespace

Ground::Ground() {
  MEMORYFREEALL();
}

Ground::~Ground() {
  SysFreeString(text);
  MEMORYFREEALL();
  BiffVersion = 0;
}

void Ground::Release() {
  for (uint32_t* variable : {&buffer, &table, &block}) MEMORYFREE(variable);
  for (int32_t i = 0; i < items; ++i) {
    uint32_t item = static_cast<uint32_t>(array->NumberAt(i));
    MEMORYFREE(&item);
  }
}

void Nothing(Ground&) {}

StreamBuilder TwoSheetBook(uint8_t version, uint32_t filler) {
  const Bytes xf(version == kBiff8 ? 20 : 16);
  StreamBuilder book;
  book.Bof(version).Record(0x0031, Font("Arial")).Record(0x0031, Font("Big"));
  book.Record(0x041E, Format(164, "0.0")).Record(0x00E0, xf).Record(0x00E0, xf);
  book.Record(0x0092, U16(2) + Bytes(8)).Sheet("One").Sheet("Two").Eof();
  FirstSheet(book, version);
  book.Bof(version, kWorksheet).Dimensions(0, 1, 0, 1);
  if (filler != 0) book.Record(0x0042, Bytes(filler));
  book.Eof();
  return book;
}

void OpenStream(Ground& ground, const StreamBuilder& stream, uint8_t version) {
  BiffVersion = version;
  ground.buffer = stream.Load(&ground.size);
  ASSERT_NE(ground.buffer, 0u);
  ASSERT_EQ(::XLLocateSheets(ground.buffer, &ground.table, ground.size), 0);
}

void OpenBook(Ground& ground) {
  constexpr int32_t kRoom = 33000;
  OpenTightBook(ground);
  ground.buffer = MEMORYREALLOC(ground.buffer, kRoom);
}

void OpenTightBook(Ground& ground) {
  OpenStream(ground, TwoSheetBook(kBiff8), kBiff8);
}

void OpenBookBiff5(Ground& ground) {
  OpenStream(ground, TwoSheetBook(kBiff5), kBiff5);
}

const std::vector<Call>& AllCalls() {
  static const std::vector<Call> all = [] {
    std::vector<Call> calls;
    for (const auto& topic : {PoolCalls(), FileCalls(), QueryCalls(), StyleCalls(), EditCalls(), SheetCalls(),
                              ReferenceCalls(), ChartCalls(), GraphCalls()}) {
      calls.insert(calls.end(), topic.begin(), topic.end());
    }
    return calls;
  }();
  return all;
}

}  // namespace tolvenar::testing
