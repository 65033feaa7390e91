// What the wrappers and the exports ask of the storage, call by call.
#include <gtest/gtest.h>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/open_workbook.h"
#include "workbook/save_workbook.h"
#include "workbook/sheet_table.h"
#include "workbook/stm_file.h"
#include "workbook/two_sheets.h"
#include "workbook_faults/fake_disk.h"

namespace tolvenar::testing {
namespace {

using Calls = std::vector<std::string>;

class StorageCallsTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    FakeDisk().Reset();
    BiffVersion = 6;
  }

  int16_t Save() {
    buffer = TwoSheets::Builder().Load(&size);
    EXPECT_EQ(XLLocateSheets(buffer, &table, size), 0);
    return XLSaveFile("book.xls", &buffer, &table, &size);
  }

  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

TEST_F(StorageCallsTest, Open_TriesWorkbookThenBook_ReadsInOneCall) {
  FakeDisk().Put("book.xls", "Book", TwoSheets::Builder(5).Stream());
  EXPECT_EQ(XLOpenFile("book.xls", &buffer, &size), 0);
  EXPECT_EQ(FakeDisk().calls, (Calls{"open 0x12", "open stream Workbook 0x12", "open stream book 0x12",
                                     "size", "read", "commit stream 0x0", "commit 0x0"}));
}

TEST_F(StorageCallsTest, Save_OfANewFile) {
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(FakeDisk().calls, (Calls{"open 0x12", "create 0x12", "create stream Workbook 0x12", "write",
                                     "commit stream 0x0", "commit 0x0"}));
}

TEST_F(StorageCallsTest, Save_OverAnExistingFile) {
  BiffVersion = 5;
  FakeDisk().Put("book.xls", "Book", {1});
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(FakeDisk().calls, (Calls{"open 0x12", "open stream Book 0x12", "destroy Book",
                                     "create stream Book 0x12", "write", "commit stream 0x0", "commit 0x0"}));
}

TEST_F(StorageCallsTest, DebugSave_OpensOnlyWhatExists) {
  EXPECT_EQ(DebugSaveFile("book.xls", 2), 0);
  EXPECT_EQ(FakeDisk().calls, (Calls{"create 0x12", "create stream Workbook 0x12", "write",
                                     "commit stream 0x0", "commit 0x0"}));
}

TEST_F(StorageCallsTest, ReplaceFlag_AddsTheCreateMode) {
  StmFFile file;
  StmFItemHolder stream;
  EXPECT_EQ(file.Create("x", true), 0);
  EXPECT_EQ(file.CreateStream("y", &stream.item, true), 0);
  EXPECT_EQ(FakeDisk().calls, (Calls{"create 0x1012", "create stream y 0x1012"}));
}

TEST_F(StorageCallsTest, PathBytesAbove0x7F_ReachThePlatformAsUnitsAbove0xFF7F) {
  EXPECT_EQ(XLOpenFile("a\x80\xFF", &buffer, &size), 101);
  EXPECT_EQ(FakeDisk().last_path, (std::vector<uint16_t>{0x61, 0xFF80, 0xFFFF}));
}

TEST_F(StorageCallsTest, Close_ClosesItemsFromTheHeadOfTheList) {
  StmFFile file;
  StmFItemHolder a, b;
  ASSERT_EQ(file.Create("x", false), 0);
  ASSERT_EQ(file.CreateStream("a", &a.item, false), 0);
  ASSERT_EQ(file.CreateStream("b", &b.item, false), 0);
  b.item->owner = nullptr;
  EXPECT_LT(file.Close(), 0);
  EXPECT_EQ(a.item->stream, nullptr);
  EXPECT_NE(b.item->stream, nullptr);
  b.item->owner = &file;
}

}  // namespace
}  // namespace tolvenar::testing
