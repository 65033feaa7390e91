// Sheets added to workbooks that were edited and not saved: the patches are folded away first, so that the
// result is that of an append to the compact workbook.
#include "edit/cell_change.h"
#include "foundation/record_stream.h"
#include "sheet/sheet_append.h"
#include "sheet/sheet_fixture.h"
#include "sheet/staged_sheet.h"
#include "sheet/variant_sheet.h"
#include "support/variants.h"
#include "workbook/refresh.h"

namespace tolvenar::testing {
namespace {

class EditedBookTest : public SheetTest {
 protected:
  // Two sheets of two cells each.
  void TwoSheets(int32_t selector) {
    NewBook(selector);
    Variants values;
    values.I2(1).Text(OLESTR("old"));
    for (const char* name : {"One", "Two"}) {
      ASSERT_GT(XLAppendVariantSheet(&buffer, &size, name, 2, 1, values.Addresses().data(), nullptr), 0);
    }
  }

  // A font before the first one, and a longer text in a cell of each sheet: DETOURs in the globals and in
  // both sheets, of which the last sheet's is the last patch.
  void Edit() {
    const uint32_t font = RecordsOfType(0x0031).at(0).at;
    const Bytes patch = U16(0x0031) + U16(4) + Bytes{'F', 'O', 'N', 'T'};
    ASSERT_EQ(PatchRecord(&buffer, patch.data(), font, 8, &size), 0);
    uint32_t table = 0;
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    Variants text;
    text.Text(OLESTR("a text longer than the old one"));
    for (int16_t sheet : {int16_t{1}, int16_t{2}}) {
      ASSERT_EQ(XLChangeCellValue(&buffer, table, &size, sheet, 1, 1, text.Data()), 0);
    }
    MEMORYFREE(&table);
    ASSERT_NE(Last4(), "F8 FE 00 00 ");
  }

  void Refresh() {
    uint32_t table = 0;
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    ASSERT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
    MEMORYFREE(&table);
  }

  int16_t Stages() {
    uint32_t position = 0;
    const int16_t sheet = AppendVariantSheet1(&buffer, &size, "New");
    CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
    CreateVariantSheet3(&buffer, &size, &position);
    return AppendVariantSheet2(&buffer, &size, sheet);
  }

  // Each way to add a sheet.
  int16_t Append(int way) {
    switch (way) {
      case 0:
        return XLAppendSheet(&buffer, &size, "New", 1, 1);
      case 1:
        return XLAppendFullSheet(&buffer, &size, "New", 1, 1, nullptr);
      case 2:
        return XLAppendVariantSheet(&buffer, &size, "New", 1, 1, nullptr, nullptr);
      case 3:
        return XLAppendVariantSheetVB(&buffer, &size, "New", 1, 1, nullptr, nullptr);
      default:
        return Stages();
    }
  }
  static constexpr int kWays = 5;
};

TEST_F(EditedBookTest, EveryWay_AsOnTheCompactWorkbook) {
  for (int32_t selector : {5, 8}) {
    for (int way = 0; way < kWays; ++way) {
      TwoSheets(selector);
      Edit();
      Refresh();
      EXPECT_EQ(Append(way), 3);
      const Bytes expected = BlockContents(buffer, size);
      MEMORYFREE(&buffer);

      TwoSheets(selector);
      Edit();
      EXPECT_EQ(Append(way), 3) << way;
      EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected)) << way;
      ExpectWholeWorkbook(3);
      EXPECT_EQ(LiveBlocks(), 1u);
      MEMORYFREE(&buffer);
    }
  }
}

TEST_F(EditedBookTest, OldSheetsAndThePatchReadAsEdited) {
  for (int32_t selector : {5, 8}) {
    TwoSheets(selector);
    Edit();
    const std::string one = Cells(1);
    const std::string two = Cells(2);
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "New", 1, 1), 3);
    EXPECT_EQ(Cells(1), one);
    EXPECT_EQ(Cells(2), two);
    EXPECT_EQ(Hex(RecordsOfType(0x0031).at(0).bytes), "31 00 04 00 46 4F 4E 54 ");
    EXPECT_TRUE(RecordsOfType(0xFEFF).empty());
    MEMORYFREE(&buffer);
  }
}

TEST_F(EditedBookTest, EditAndAppendByTurns) {
  TwoSheets(8);
  for (int16_t sheets = 3; sheets <= 8; ++sheets) {
    Edit();
    const std::string one = Cells(1);
    EXPECT_EQ(Append(sheets % kWays), sheets);
    EXPECT_EQ(Cells(1), one);
    ExpectWholeWorkbook(static_cast<size_t>(sheets));
  }
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(EditedBookTest, EditedEmptyBook_WithoutSheets) {
  NewBook(5);
  AddZemblerRecord(&buffer, &size);
  const Bytes patch = U16(0x0031) + U16(4) + Bytes{'F', 'O', 'N', 'T'};
  ASSERT_EQ(PatchRecord(&buffer, patch.data(), RecordsOfType(0x0031).at(0).at, 8, &size), 0);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "New", 1, 1), 1);
  EXPECT_EQ(RecordsOfType(0x0031).size(), 6u);
  ExpectWholeWorkbook(1);
}

TEST_F(EditedBookTest, NoBlockForTheFold_Minus7_NothingChanges) {
  for (int way = 0; way < 4; ++way) {
    MEMORYFREEALL();
    TwoSheets(5);
    Edit();
    const Bytes before = BlockContents(buffer, size);
    const uint32_t buffer_before = buffer;
    const uint32_t size_before = size;
    while (LiveBlocks() < 6) MEMORYALLOC(33000);
    EXPECT_EQ(Append(way), -7) << way;
    EXPECT_EQ(buffer, buffer_before);
    ASSERT_EQ(size, size_before);
    EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(before));
    EXPECT_EQ(LiveBlocks(), 6u);
  }
}

TEST_F(EditedBookTest, NoBlockForTheTable_Minus8_NothingChanges) {
  TwoSheets(5);
  Edit();
  const Bytes before = BlockContents(buffer, size);
  const uint32_t buffer_before = buffer;
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "New", 1, 1), -8);
  EXPECT_EQ(buffer, buffer_before);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(before));
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(EditedBookTest, Staged_FoldFails_Minus2_SizeStands) {
  TwoSheets(5);
  Edit();
  const uint32_t size_before = size;
  const uint32_t buffer_before = buffer;
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(AppendVariantSheet1(&buffer, &size, "New"), -2);
  EXPECT_EQ(size, size_before);
  EXPECT_EQ(buffer, buffer_before);
}

// The walk runs on from the BUFEND through the patch into the globals, whose EOF closes the sheet for the
// table, but not for the refresh, which ends at the BUFEND.
TEST_F(EditedBookTest, LastSheetNotClosed_Minus7_TheCallersBufferIsNotReleased) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Eof().Bof(5, kWorksheet).Number(0, 0, 15, 1.5);
  buffer = book.Load(&size);
  const Bytes patch = U16(0x0042) + U16(4) + Bytes(4);
  ASSERT_EQ(PatchRecord(&buffer, patch.data(), 12, 8, &size), 0);
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "New", 1, 1), -7);
  EXPECT_NE(MEMORYISHANDLE(buffer), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(before));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(EditedBookTest, RingOfJumps_EndsAndChangesNothing) {
  StreamBuilder book;
  buffer = book.Bof(5).Detour(20).Detour(12).Eof().Load(&size);
  BiffVersion = 5;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "New", 1, 1), -8);
  EXPECT_NE(MEMORYISHANDLE(buffer), 0);
  EXPECT_EQ(LiveBlocks(), 1u);
}

}  // namespace
}  // namespace tolvenar::testing
