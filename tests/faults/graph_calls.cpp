// Calls: what a reference holds: tables, graphs, chart edits, and the slots and sets of graphs.
#include "faults/calls.h"
#include "foundation/memory_pool.h"
#include "reference/reference_directory.h"
#include "reference/reference_records.h"
#include "reference/table_array.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

const Bytes kReference = {0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0,
                          0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};

// A reference with table 1 of two cells, graphs 1 and 2 and the chart edits 1 and 2.
void OpenObjects(Ground& g) {
  g.buffer = StreamBuilder().Raw(kReference).Load(&g.size);
  ASSERT_EQ(::XLRCreateTable(&g.buffer, &g.size, 1, 1, 1, 2), 1);
  ASSERT_EQ(::XLRCreateGraph(&g.buffer, &g.size, 1), 1);
  ASSERT_EQ(::XLRCreateGraph(&g.buffer, &g.size, 1), 2);
  ASSERT_EQ(::XLRCreateChartEdit(&g.buffer, &g.size, 1, 4, 1), 0);
  ASSERT_EQ(::XLRCreateChartEdit(&g.buffer, &g.size, 2, 4, 1), 0);
}

// The directory leads behind the head of graph 1.
void LoseGraph(Ground& g) {
  OpenObjects(g);
  RepointRefEntry(g.buffer, 1, kKindGraph, static_cast<uint32_t>(FindRefEntry(g.buffer, 2, kKindGraph)));
}

// With a text in slot 1, in the first cell and in item 1 of text set 1.
void OpenTexts(Ground& g) {
  OpenObjects(g);
  ASSERT_EQ(::XLRSaveText(&g.buffer, &g.size, 1, "a", 1), 0);
  ASSERT_EQ(::XLRTextToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, "a"), 0);
  ASSERT_EQ(::XLRValueToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, 1, 2), 0);
  ASSERT_EQ(::XLRSaveSetText(&g.buffer, &g.size, 1, 1, "a", 1), 0);
}

SAFEARRAY** Array(Ground& g, int type, LONG first, LONG last) {
  g.array = std::make_unique<TestArray>(static_cast<VARTYPE>(type), first, last);
  for (LONG i = first; i <= last; ++i) g.array->SetNumber(i, 0, static_cast<int32_t>(7 * i * i));
  return g.array->Ref();
}

SAFEARRAY** SecondArray(Ground& g, LONG first, LONG last) {
  g.array2 = std::make_unique<TestArray>(static_cast<VARTYPE>(VT_I4), first, last);
  return g.array2->Ref();
}

using enum Leaves;

using Results = std::vector<Failure>;
const Results kSaving = {{-4, kUnchanged}, {-5, kReleased}, {-6, kReleased}, {-8, kUnchanged}};
const Results kSetSaving = {{-14, kUnchanged}, {-4, kLive}, {-5, kReleased}};
// A maker can have entered the object by the time that it finds no block.
const Results kMaking = {{-2, kLive}, {-4, kReleased}};

int32_t FillTable(Ground& g) {
  TableArray values({1, 1, 1, 2});
  values.SetAll({5, 0x10005});
  return ::XLRFillTable(&g.buffer, &g.size, values.Ref(), 1);
}

int32_t ReadTable(Ground& g) {
  TableArray values({1, 1, 1, 2});
  return ::XLRGetRefTable(g.buffer, 1, values.Ref());
}

// Items 1 to `last` of text references: a sequence, which takes a record for each pair of them.
std::function<int32_t(Ground&)> SaveRefs(LONG last, LONG step) {
  return [last, step](Ground& g) {
    Array(g, VT_I4, 1, last);
    for (LONG i = 1; i <= last; ++i) g.array->SetNumber(i, 0, static_cast<int32_t>(100 + step * i));
    return ::XLRSaveTextRef(&g.buffer, &g.size, 1, 1, static_cast<int16_t>(last), 20, g.array->Ref(),
                            SecondArray(g, 1, last), 1);
  };
}

std::vector<Call> ObjectCalls() {
  const auto indices = [](Ground& g) {
    return ::XLRGetIndices(g.buffer, Array(g, VT_I4, 1, 2), SecondArray(g, 1, 2), 2, 2);
  };
  const auto cell_value = [](Ground& g) {
    double value = 0;
    return ::XLRGetTableValue(g.buffer, 1, &value, 1, 1, 1, 1);
  };
  const auto delete_graph = [](Ground& g) { return ::XLRDeleteGraph(g.buffer, 1); };
  const Results cells = {{-4, kUnchanged}, {-5, kReleased}, {-6, kReleased}};
  // clang-format off
  return {
      {"XLRCreateTable", "", OpenObjects, [](Ground& g) { return ::XLRCreateTable(&g.buffer, &g.size, 1, 1, 1, 1); }, {2}, kMaking},
      {"XLRDeleteTable", "", OpenTexts, [](Ground& g) { return ::XLRDeleteTable(g.buffer, 1); }, {0}, {}},
      {"XLRFillTable", "", OpenObjects, FillTable, {0}, {{-8, kUnchanged}, {-10, kLiveOrReleased}}},
      {"XLRTextToTable", "New", OpenObjects, [](Ground& g) { return ::XLRTextToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, "text"); }, {0}, cells},
      {"XLRTextToTable", "Known", OpenTexts, [](Ground& g) { return ::XLRTextToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, "text"); }, {0}, cells},
      {"XLRValueToTable", "New", OpenObjects, [](Ground& g) { return ::XLRValueToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, 1, 2); }, {0}, cells},
      {"XLRValueToTable", "Known", OpenTexts, [](Ground& g) { return ::XLRValueToTable(&g.buffer, &g.size, 1, 1, 1, 1, 1, 3, 4); }, {0}, cells},
      {"XLRGetRefTable", "", OpenTexts, ReadTable, {0}, {}},
      {"XLRGetTableText", "", OpenTexts, [](Ground& g) { return ::XLRGetTableText(g.buffer, 1, &g.text, 1, 1, 1, 1); }, {0}, {}},
      {"XLRGetTableValue", "", OpenTexts, cell_value, {0}, {}},
      {"XLRGetNumItems", "", OpenObjects, [](Ground& g) { return ::XLRGetNumItems(g.buffer, 2); }, {2}, {}},
      {"XLRGetIndices", "", OpenObjects, indices, {0}, {}},
      {"XLRCreateGraph", "", OpenObjects, [](Ground& g) { return ::XLRCreateGraph(&g.buffer, &g.size, 1); }, {3}, kMaking},
      {"XLRCreateChartEdit", "", OpenObjects, [](Ground& g) { return ::XLRCreateChartEdit(&g.buffer, &g.size, 3, 4, 1); }, {0}, kMaking},
      {"XLRUpdateGraph", "", OpenObjects, [](Ground& g) { return ::XLRUpdateGraph(g.buffer, 1, 7); }, {0}, {}},
      {"XLRUpdateChartEdit", "", OpenObjects, [](Ground& g) { return ::XLRUpdateChartEdit(g.buffer, 1, 4, 2); }, {0}, {}},
      {"XLRDeleteGraph", "", OpenTexts, delete_graph, {0}, {}},
      {"XLRDeleteGraph", "Lost", LoseGraph, delete_graph, {-2}, {}},
      {"XLRDeleteChartEdit", "", OpenObjects, [](Ground& g) { return ::XLRDeleteChartEdit(g.buffer, 1, 4); }, {0}, {}},
      {"XLRTableByGraph", "", OpenObjects, [](Ground& g) { return ::XLRTableByGraph(g.buffer, 1, 0); }, {1}, {}},
      {"XLRGraphByChartEdit", "", OpenObjects, [](Ground& g) { return ::XLRGraphByChartEdit(g.buffer, 1, 4) > 0; }, {1}, {}},
      {"XLRUpdateGraphTable", "", OpenObjects, [](Ground& g) { return ::XLRUpdateGraphTable(&g.buffer, &g.size, 1, 5, 2); }, {0}, {{-4, kUnchanged}, {-5, kReleased}}},
  };
  // clang-format on
}

std::vector<Call> SlotCalls() {
  const auto get_double = [](Ground& g) {
    double value = 0;
    return ::XLRGetDouble(g.buffer, 1, &value, 1);
  };
  const auto get_font = [](Ground& g) {
    uint16_t font[4] = {};
    return ::XLRGetFont(g.buffer, 1, font, font + 1, font + 2, font + 3, 1);
  };
  // clang-format off
  return {
      {"XLRSaveText", "New", OpenObjects, [](Ground& g) { return ::XLRSaveText(&g.buffer, &g.size, 1, "text", 1); }, {0}, kSaving},
      {"XLRSaveText", "Known", OpenTexts, [](Ground& g) { return ::XLRSaveText(&g.buffer, &g.size, 1, "text", 1); }, {0}, kSaving},
      {"XLRSaveText", "Lost", LoseGraph, [](Ground& g) { return ::XLRSaveText(&g.buffer, &g.size, 1, "text", 1); }, {-2}, kSaving},
      {"XLRGetText", "", OpenTexts, [](Ground& g) { return ::XLRGetText(g.buffer, 1, &g.text, 1); }, {0}, {}},
      {"XLRSaveDouble", "", OpenObjects, [](Ground& g) { return ::XLRSaveDouble(&g.buffer, &g.size, 1, 1, 2, 1); }, {0}, kSaving},
      {"XLRGetDouble", "", OpenObjects, get_double, {0}, {}},
      {"XLRSaveFont", "", OpenObjects, [](Ground& g) { return ::XLRSaveFont(&g.buffer, &g.size, 1, 1, 2, 3, 4, 1); }, {0}, kSaving},
      {"XLRGetFont", "", OpenObjects, get_font, {0}, {}},
      {"XLRSaveProperties", "", OpenObjects, [](Ground& g) { return ::XLRSaveProperties(&g.buffer, &g.size, Array(g, VT_I4, 1, 128), 1); }, {0}, kSaving},
      {"XLRSaveProperties", "Lost", LoseGraph, [](Ground& g) { return ::XLRSaveProperties(&g.buffer, &g.size, Array(g, VT_I4, 1, 128), 1); }, {-2}, kSaving},
      {"XLRGetProperties", "", OpenObjects, [](Ground& g) { return ::XLRGetProperties(g.buffer, Array(g, VT_I4, 1, 128), 1); }, {0}, {}},
      {"XLRSaveSelVis", "", OpenObjects, [](Ground& g) { return ::XLRSaveSelVis(&g.buffer, &g.size, Array(g, VT_I2, 1, 9), 1, 9, 1); }, {0}, kSaving},
      {"XLRSaveSelVis", "Lost", LoseGraph, [](Ground& g) { return ::XLRSaveSelVis(&g.buffer, &g.size, Array(g, VT_I2, 1, 9), 1, 9, 1); }, {-2}, kSaving},
      {"XLRGetSelVis", "", OpenObjects, [](Ground& g) { return ::XLRGetSelVis(g.buffer, Array(g, VT_I2, 1, 9), 1, 9, 1); }, {0}, {}},
      {"XLRDeleteProperty", "", OpenTexts, [](Ground& g) { return ::XLRDeleteProperty(g.buffer, 1, 5, 0); }, {0}, {}},
  };
  // clang-format on
}

std::vector<Call> SetCalls() {
  const auto ints = [](Ground& g) {
    return ::XLRSaveSetInt(&g.buffer, &g.size, 1, 1, 4, 9, Array(g, VT_I2, 1, 4), 1);
  };
  const auto longs = [](Ground& g) {
    return ::XLRSaveSetLong(&g.buffer, &g.size, 1, 1, 4, 9, Array(g, VT_I4, 1, 4), 1);
  };
  const auto text = [](Ground& g) { return ::XLRSaveSetText(&g.buffer, &g.size, 1, 1, "text", 1); };
  const auto get_refs = [](Ground& g) {
    return ::XLRGetTextRef(g.buffer, 1, 5, Array(g, VT_I4, 1, 5), SecondArray(g, 1, 5), 1);
  };
  // clang-format off
  return {
      {"XLRSaveSetText", "New", OpenObjects, text, {0}, kSaving},
      {"XLRSaveSetText", "Known", OpenTexts, text, {0}, kSaving},
      {"XLRGetSetText", "", OpenTexts, [](Ground& g) { return ::XLRGetSetText(g.buffer, 1, 1, &g.text, 1); }, {0}, {}},
      {"XLRSaveSetInt", "", OpenObjects, ints, {0}, kSetSaving},
      {"XLRSaveSetInt", "Lost", LoseGraph, ints, {-2}, kSetSaving},
      {"XLRGetSetInt", "", OpenObjects, [](Ground& g) { return ::XLRGetSetInt(g.buffer, 1, 4, Array(g, VT_I2, 1, 4), 1); }, {0}, {}},
      {"XLRSaveSetLong", "", OpenObjects, longs, {0}, kSetSaving},
      {"XLRSaveSetLong", "Lost", LoseGraph, longs, {-2}, kSetSaving},
      {"XLRGetSetLong", "", OpenObjects, [](Ground& g) { return ::XLRGetSetLong(g.buffer, 1, 4, Array(g, VT_I4, 1, 4), 1); }, {0}, {}},
      {"XLRSaveTextRef", "One", OpenObjects, SaveRefs(1, 1), {0}, kSetSaving},
      {"XLRSaveTextRef", "OverAText", OpenTexts, SaveRefs(1, 1), {0}, kSetSaving},
      {"XLRSaveTextRef", "Five", OpenObjects, SaveRefs(5, 1), {0}, kSetSaving},
      {"XLRSaveTextRef", "Singles", OpenObjects, SaveRefs(3, 7), {0}, kSetSaving},
      {"XLRSaveTextRef", "TooMany", OpenObjects, SaveRefs(20, 7), {-4}, kSetSaving},
      {"XLRSaveTextRef", "Lost", LoseGraph, SaveRefs(5, 1), {-2}, kSetSaving},
      {"XLRGetTextRef", "", OpenObjects, get_refs, {0}, {}},
  };
  // clang-format on
}

}  // namespace

std::vector<Call> GraphCalls() {
  std::vector<Call> calls = ObjectCalls();
  for (const Call& call : SlotCalls()) calls.push_back(call);
  for (const Call& call : SetCalls()) calls.push_back(call);
  return calls;
}

}  // namespace tolvenar::testing
