// StmFFile and StmFItem on real files: fields, lists, every check in its order. What the platform is asked
// for, and what happens when it fails, is tried on a storage of the tests' own in tests/workbook_faults.
#include "workbook/stm_file.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/allocation_faults.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"

namespace tolvenar::testing {
namespace {

constexpr int32_t Code(uint32_t code) {
  return static_cast<int32_t>(code);
}

class StmFileTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    path = folder.File("book.xls");
    ASSERT_TRUE(WriteWorkbook(path, "Book", {1, 2, 3, 4, 5}));
  }

  // Opens the file of the test and its stream.
  void OpenBook() {
    ASSERT_EQ(file.Open(path.c_str()), 0);
    ASSERT_EQ(file.OpenStream("Book", &item), 0);
  }

  void TearDown() override {
    delete item;
    PoolTest::TearDown();
  }

  TempFolder folder;
  std::string path;
  StmFFile file;
  StmFItem* item = nullptr;
};

// Objects.

TEST_F(StmFileTest, NewFile_HasItsTagAndNothingElse) {
  EXPECT_EQ(std::memcmp(file.tag, "StmFFile", 8), 0);
  EXPECT_EQ(Bytes(file.reserved, file.reserved + 8), Bytes(8));
  EXPECT_EQ(file.storage, nullptr);
  EXPECT_EQ(file.itemCount, 0);
  EXPECT_EQ(file.firstItem, nullptr);
  EXPECT_EQ(file.lastItem, nullptr);
  EXPECT_EQ(file.pendingName, nullptr);
}

TEST_F(StmFileTest, NewItem_HasItsTagAndNothingElse) {
  StmFItem fresh;
  EXPECT_EQ(std::memcmp(fresh.tag, "StmFItem", 8), 0);
  EXPECT_EQ(Bytes(fresh.reserved, fresh.reserved + 8), Bytes(8));
  EXPECT_EQ(Bytes(fresh.spare, fresh.spare + 8), Bytes(8));
  EXPECT_EQ(fresh.owner, nullptr);
  EXPECT_EQ(fresh.stream, nullptr);
  EXPECT_EQ(fresh.requested + fresh.transferred, 0u);
  EXPECT_EQ(fresh.previous, nullptr);
  EXPECT_EQ(fresh.next, nullptr);
}

TEST_F(StmFileTest, FieldsStandInTheirOrder) {
  const auto place = [](const void* object, const void* field) {
    return static_cast<const char*>(field) - static_cast<const char*>(object);
  };
  EXPECT_EQ(place(&file, &file.tag), 0);
  EXPECT_EQ(place(&file, &file.reserved), 8);
  EXPECT_EQ(place(&file, &file.storage), 16);
  EXPECT_LT(place(&file, &file.storage), place(&file, &file.itemCount));
  EXPECT_LT(place(&file, &file.itemCount), place(&file, &file.firstItem));
  EXPECT_LT(place(&file, &file.firstItem), place(&file, &file.lastItem));
  EXPECT_LT(place(&file, &file.lastItem), place(&file, &file.pendingName));
  StmFItem fresh;
  EXPECT_EQ(place(&fresh, &fresh.reserved), 8);
  EXPECT_EQ(place(&fresh, &fresh.owner), 16);
  EXPECT_LT(place(&fresh, &fresh.owner), place(&fresh, &fresh.stream));
  EXPECT_LT(place(&fresh, &fresh.stream), place(&fresh, &fresh.requested));
  EXPECT_EQ(place(&fresh.requested, &fresh.transferred), 4);
  EXPECT_LT(place(&fresh, &fresh.transferred), place(&fresh, &fresh.spare));
  EXPECT_LT(place(&fresh, &fresh.spare), place(&fresh, &fresh.previous));
  EXPECT_LT(place(&fresh, &fresh.previous), place(&fresh, &fresh.next));
}

TEST_F(StmFileTest, Destructor_ReleasesThePendingName) {
  const OLECHAR name[] = {'B', 'o', 'o', 'k', 0};
  StmFFile named;
  named.pendingName = SysAllocString(name);
  EXPECT_NE(named.pendingName, nullptr);  // the leak check of the sanitizers sees the rest
}

// Wrong tags.

TEST_F(StmFileTest, WrongTag_EveryFileOperationIsRefused) {
  for (char& byte : file.tag) {
    byte = static_cast<char>(byte ^ 0x20);
    EXPECT_FALSE(file.IsValid());
    byte = static_cast<char>(byte ^ 0x20);
  }
  file.tag[7] = 'E';
  EXPECT_EQ(file.Create(path.c_str(), true), Code(0x80000F07));
  EXPECT_EQ(file.Open(path.c_str()), Code(0x80000F07));
  EXPECT_EQ(file.OpenStream("Book", &item), Code(0x80000F07));
  EXPECT_EQ(file.CreateStream("Book", &item, true), Code(0x80000F07));
  EXPECT_EQ(file.DeleteStream("Book"), Code(0x80000F07));
  EXPECT_EQ(file.Close(), Code(0x80000F07));
  EXPECT_EQ(item, nullptr);
}

TEST_F(StmFileTest, WrongTag_EveryItemOperationIsRefused) {
  StmFItem fresh;
  for (char& byte : fresh.tag) {
    byte = static_cast<char>(byte ^ 0x20);
    EXPECT_FALSE(fresh.IsValid());
    byte = static_cast<char>(byte ^ 0x20);
  }
  fresh.tag[0] = 's';
  uint8_t byte = 0;
  EXPECT_EQ(fresh.Read(&byte, 1, nullptr), Code(0x80000F07));
  EXPECT_EQ(fresh.Write(&byte, 1, nullptr), Code(0x80000F07));
  EXPECT_EQ(fresh.Close(), Code(0x80000F07));
  ASSERT_EQ(file.Open(path.c_str()), 0);
  StmFItem* own = &fresh;
  EXPECT_EQ(file.OpenStream("Book", &own), Code(0x80000F07));
  EXPECT_EQ(file.CreateStream("New", &own, true), Code(0x80000F07));
  EXPECT_EQ(own, &fresh);
}

// Create and Open.

TEST_F(StmFileTest, Open_ThenClose) {
  EXPECT_EQ(file.Open(path.c_str()), 0);
  EXPECT_NE(file.storage, nullptr);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(file.storage, nullptr);
}

TEST_F(StmFileTest, Open_OnAnOpenObject_LeavesItsStorageOpen) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  platform::Storage* const before = file.storage;
  EXPECT_EQ(file.Open(path.c_str()), Code(0x80000F01));
  EXPECT_EQ(file.Create(folder.File("other.xls").c_str(), true), Code(0x80000F01));
  EXPECT_EQ(file.storage, before);
  EXPECT_EQ(file.OpenStream("Book", &item), 0);
}

TEST_F(StmFileTest, Open_ResetsTheObject) {
  file.reserved[3] = 9;
  file.itemCount = 7;
  StmFItem stray;
  file.firstItem = file.lastItem = &stray;
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.reserved[3], 0);
  EXPECT_EQ(file.itemCount, 0);
  EXPECT_EQ(file.firstItem, nullptr);
  EXPECT_EQ(file.lastItem, nullptr);
}

TEST_F(StmFileTest, Open_EveryPlatformFailureIsOneCode) {
  PutFile(folder.File("text.txt"), {'n', 'o'});
  StmFFile holder;
  ASSERT_EQ(holder.Open(path.c_str()), 0);
  for (const std::string& bad :
       {path, folder.File("missing.xls"), folder.File("text.txt"), folder.File(""), std::string()}) {
    EXPECT_EQ(file.Open(bad.c_str()), Code(0x80000F02)) << bad;
    EXPECT_EQ(file.storage, nullptr);
  }
}

TEST_F(StmFileTest, Create_EveryPlatformFailureIsOneCode_AndWhatWasThereStays) {
  const Bytes before = FileBytes(path);
  EXPECT_EQ(file.Create(path.c_str(), false), Code(0x80000002));
  EXPECT_EQ(file.storage, nullptr);
  EXPECT_EQ(FileBytes(path), before);
  EXPECT_EQ(file.Create(folder.File("no/folder.xls").c_str(), false), Code(0x80000002));
}

TEST_F(StmFileTest, Create_WithReplace_TakesThePlaceOfAFile) {
  EXPECT_EQ(file.Create(path.c_str(), true), 0);
  EXPECT_EQ(file.OpenStream("Book", &item), static_cast<int32_t>(0x80030002u));
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(ReadStream(path, "Book"), std::nullopt);
}

TEST_F(StmFileTest, NullAndUnwidenablePaths) {
  EXPECT_EQ(file.Open(nullptr), Code(0x80000002));
  EXPECT_EQ(file.Create(nullptr, false), Code(0x80000002));
  AllocationFault fault(0);
  EXPECT_EQ(file.Open(path.c_str()), Code(0x80000002));
  EXPECT_TRUE(fault.fired());
}

// Streams.

TEST_F(StmFileTest, OpenStream_FindsTheNameWithoutRegardToCase) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.OpenStream("bOOK", &item), 0);
  EXPECT_EQ(item->GetSize(), 5u);
}

TEST_F(StmFileTest, OpenStream_MakesAnItemAndLinksIt) {
  OpenBook();
  EXPECT_EQ(file.itemCount, 1);
  EXPECT_EQ(file.firstItem, item);
  EXPECT_EQ(file.lastItem, item);
  EXPECT_EQ(item->owner, &file);
}

TEST_F(StmFileTest, OpenStream_FailureLeavesTheVariableNull) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.OpenStream("Workbook", &item), static_cast<int32_t>(0x80030002u));
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(file.itemCount, 0);
  EXPECT_EQ(file.OpenStream("Book", &item), 0);
  EXPECT_NE(item, nullptr);
}

TEST_F(StmFileTest, OpenStream_CallersOwnItemIsResetUsedAndKeptOnFailure) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  StmFItem own;
  own.requested = 77;
  StmFItem* mine = &own;
  EXPECT_LT(file.OpenStream("Workbook", &mine), 0);
  EXPECT_EQ(mine, &own);
  EXPECT_EQ(own.stream, nullptr);
  EXPECT_EQ(own.requested, 0u);
  EXPECT_EQ(file.OpenStream("Book", &mine), 0);
  EXPECT_EQ(file.firstItem, &own);
  EXPECT_EQ(file.Close(), 0);
}

TEST_F(StmFileTest, OpenStream_ResetsEveryFieldOfTheCallersItem) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  StmFItem own;
  own.reserved[2] = own.spare[5] = 9;
  own.requested = own.transferred = 7;
  own.owner = &file;
  own.previous = own.next = &own;
  StmFItem* mine = &own;
  EXPECT_LT(file.OpenStream("Workbook", &mine), 0);
  EXPECT_EQ(own.reserved[2] + own.spare[5], 0);
  EXPECT_EQ(own.requested, 0u);
  EXPECT_EQ(own.transferred, 0u);
  EXPECT_EQ(own.owner, nullptr);
  EXPECT_EQ(own.previous, nullptr);
  EXPECT_EQ(own.next, nullptr);
}

TEST_F(StmFileTest, StreamOperationsOnAClosedFile) {
  EXPECT_EQ(file.OpenStream("Book", &item), Code(0x80000F02));
  EXPECT_EQ(file.CreateStream("Book", &item, false), Code(0x80000F02));
  EXPECT_EQ(file.DeleteStream("Book"), Code(0x80000F02));
  EXPECT_EQ(file.Close(), Code(0x80000F02));
  EXPECT_EQ(item, nullptr);
}

TEST_F(StmFileTest, StreamOperationsWithoutAPlaceForTheItem) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.OpenStream("Book", nullptr), Code(0x80000F03));
  EXPECT_EQ(file.CreateStream("New", nullptr, false), Code(0x80000F03));
  EXPECT_EQ(file.itemCount, 0);
}

TEST_F(StmFileTest, NoMemory_ForTheItem) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  {
    AllocationFault fault(0);
    EXPECT_EQ(file.OpenStream("Book", &item), Code(0x80000002));
  }
  AllocationFault fault(0);
  EXPECT_EQ(file.CreateStream("New", &item, false), Code(0x80000002));
  EXPECT_EQ(item, nullptr);
}

TEST_F(StmFileTest, NoMemory_ForTheName_IsABare2WhenOpening_OnPurpose) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  {
    AllocationFault fault(1);
    EXPECT_EQ(file.OpenStream("Book", &item), 2);
    EXPECT_EQ(item, nullptr);
  }
  {
    AllocationFault fault(1);
    EXPECT_EQ(file.CreateStream("New", &item, false), Code(0x80000002));
    EXPECT_EQ(item, nullptr);
  }
  AllocationFault fault(0);
  EXPECT_EQ(file.DeleteStream("Book"), Code(0x80000002));
}

TEST_F(StmFileTest, CreateStream_WithoutReplace_FailsWhenTheNameExists) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.CreateStream("BOOK", &item, false), static_cast<int32_t>(0x80030050u));
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(file.CreateStream("BOOK", &item, true), 0);
  EXPECT_EQ(item->GetSize(), 0u);
}

TEST_F(StmFileTest, DeleteStream_RemovesItAndCountsAnAbsentOneAsAFailure) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  EXPECT_EQ(file.DeleteStream("Workbook"), static_cast<int32_t>(0x80030002u));
  EXPECT_EQ(file.DeleteStream("book"), 0);
  EXPECT_LT(file.OpenStream("Book", &item), 0);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(ReadStream(path, "Book"), std::nullopt);
}

TEST_F(StmFileTest, StreamNamesAndStreams_TakeNoPoolBlock) {
  OpenBook();
  EXPECT_EQ(LiveBlocks(), 0u);
}

// Reading and writing.

TEST_F(StmFileTest, Read_WholeShortAndAtTheEnd) {
  OpenBook();
  uint8_t bytes[8] = {};
  uint32_t moved = 99;
  EXPECT_EQ(item->Read(bytes, 3, &moved), 0);
  EXPECT_EQ(moved, 3u);
  EXPECT_EQ(Bytes(bytes, bytes + 3), (Bytes{1, 2, 3}));
  EXPECT_EQ(item->Read(bytes, 8, nullptr), 0);
  EXPECT_EQ(item->requested, 8u);
  EXPECT_EQ(item->transferred, 2u);
  EXPECT_EQ(bytes[0], 4);
  EXPECT_EQ(item->Read(bytes, 8, &moved), 0);
  EXPECT_EQ(moved, 0u);
}

TEST_F(StmFileTest, Read_ChecksInTheirOrder) {
  uint8_t byte = 0;
  uint32_t moved = 99;
  StmFItem fresh;
  EXPECT_EQ(fresh.Read(nullptr, 0, &moved), Code(0x80000F02));
  OpenBook();
  EXPECT_EQ(item->Read(nullptr, 0, &moved), Code(0x80000F03));
  EXPECT_EQ(item->Read(&byte, 0, &moved), Code(0x80000F05));
  item->owner = nullptr;
  EXPECT_EQ(item->Read(nullptr, 0, &moved), Code(0x80000F04));
  item->owner = &file;
  EXPECT_EQ(moved, 99u);
}

TEST_F(StmFileTest, Write_OfNothingSucceeds_AndLeavesTheOutValueAlone) {
  OpenBook();
  uint32_t moved = 99;
  EXPECT_EQ(item->Write(nullptr, 0, &moved), 0);
  EXPECT_EQ(moved, 99u);
  EXPECT_EQ(item->requested, 0u);
}

TEST_F(StmFileTest, Write_ChecksInTheirOrder) {
  StmFItem fresh;
  EXPECT_EQ(fresh.Write(nullptr, 0, nullptr), Code(0x80000F02));
  OpenBook();
  item->owner = nullptr;
  EXPECT_EQ(item->Write(nullptr, 0, nullptr), Code(0x80000F04));
  item->owner = &file;
}

TEST_F(StmFileTest, Write_ReachesTheFileAtItsClose) {
  const uint8_t bytes[] = {9, 8, 7};
  uint32_t moved = 0;
  ASSERT_EQ(file.Open(path.c_str()), 0);
  ASSERT_EQ(file.CreateStream("Notes", &item, false), 0);
  EXPECT_EQ(item->Write(bytes, 3, &moved), 0);
  EXPECT_EQ(moved, 3u);
  EXPECT_EQ(item->requested, 3u);
  EXPECT_EQ(item->transferred, 3u);
  EXPECT_EQ(item->Close(), 0);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(ReadStream(path, "Notes"), (Bytes{9, 8, 7}));
  EXPECT_EQ(ReadStream(path, "Book"), (Bytes{1, 2, 3, 4, 5}));
}

// Sizes.

TEST_F(StmFileTest, QuerySize_LooksAtNeitherTagNorOwner) {
  OpenBook();
  uint32_t size = 99;
  item->tag[0] = 'x';
  item->owner = nullptr;
  EXPECT_EQ(item->QuerySize(&size), 0);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(item->GetSize(), 5u);
  EXPECT_EQ(item->QuerySize(nullptr), Code(0x80000F03));
  item->tag[0] = 'S';
  item->owner = &file;
}

TEST_F(StmFileTest, GetSize_OfAClosedItemIsZero) {
  StmFItem fresh;
  uint32_t size = 99;
  EXPECT_EQ(fresh.GetSize(), 0u);
  EXPECT_LT(fresh.QuerySize(&size), 0);
  EXPECT_EQ(fresh.QuerySize(nullptr), Code(0x80000F03));
  EXPECT_EQ(size, 99u);
}

// Closing.

TEST_F(StmFileTest, ItemClose_ChecksInTheirOrder) {
  StmFItem fresh;
  EXPECT_EQ(fresh.Close(), Code(0x80000F02));
  OpenBook();
  item->owner = nullptr;
  EXPECT_EQ(item->Close(), Code(0x80000F04));
  item->owner = &file;
  EXPECT_EQ(item->Close(), 0);
  EXPECT_EQ(item->stream, nullptr);
  EXPECT_EQ(item->Close(), Code(0x80000F02));
  EXPECT_EQ(file.itemCount, 0);
}

TEST_F(StmFileTest, ItemOfAClosedOwner) {
  OpenBook();
  uint8_t byte = 0;
  platform::Storage* const open = file.storage;
  file.storage = nullptr;
  EXPECT_FALSE(item->IsOwnerOpen());
  EXPECT_EQ(item->Read(&byte, 1, nullptr), Code(0x80000F04));
  EXPECT_EQ(item->Write(&byte, 1, nullptr), Code(0x80000F04));
  EXPECT_EQ(item->Close(), Code(0x80000F04));
  file.storage = open;
}

TEST_F(StmFileTest, ItemClose_AnswersWhatTheListAnswers) {
  OpenBook();
  file.firstItem = file.lastItem = nullptr;
  EXPECT_EQ(item->Close(), Code(0x80000F06));
  EXPECT_EQ(item->stream, nullptr);
  file.itemCount = 0;
}

TEST_F(StmFileTest, FileClose_ClosesItsItems) {
  OpenBook();
  StmFItem* second = nullptr;
  ASSERT_EQ(file.CreateStream("Second", &second, false), 0);
  EXPECT_EQ(file.itemCount, 2);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(item->stream, nullptr);
  EXPECT_EQ(second->stream, nullptr);
  EXPECT_EQ(file.itemCount, 0);
  delete second;
}

TEST_F(StmFileTest, FileClose_ItemThatCannotBeClosed_FileStaysOpen) {
  OpenBook();
  item->owner = nullptr;
  EXPECT_EQ(file.Close(), Code(0x80000F04 | 0x80000F80));
  EXPECT_NE(file.storage, nullptr);
  item->owner = &file;
  EXPECT_EQ(file.Close(), 0);
}

TEST_F(StmFileTest, FileClose_ListWithoutAHead) {
  OpenBook();
  file.firstItem = nullptr;
  EXPECT_EQ(file.Close(), Code(0x80000F06));
  EXPECT_NE(file.storage, nullptr);
  file.firstItem = item;
}

TEST_F(StmFileTest, FileClose_CountLeftOver) {
  ASSERT_EQ(file.Open(path.c_str()), 0);
  file.itemCount = 1;
  EXPECT_EQ(file.Close(), Code(0x80000F06));
  EXPECT_EQ(file.storage, nullptr);
}

TEST_F(StmFileTest, Destructors_CloseWhatIsOpen) {
  {
    StmFFile local;
    StmFItemHolder stream;
    ASSERT_EQ(local.Open(path.c_str()), 0);
    ASSERT_EQ(local.CreateStream("Notes", &stream.item, false), 0);
    ASSERT_EQ(stream.item->Write("abc", 3, nullptr), 0);
  }
  EXPECT_EQ(ReadStream(path, "Notes"), (Bytes{'a', 'b', 'c'}));
}

TEST_F(StmFileTest, Destructor_OfAFileWithAnItemThatCannotBeClosed_GivesTheFileFree) {
  StmFItem stray;
  StmFItem* mine = &stray;
  {
    StmFFile local;
    ASSERT_EQ(local.Open(path.c_str()), 0);
    ASSERT_EQ(local.OpenStream("Book", &mine), 0);
    platform::StreamRelease(stray.stream);
    stray.stream = nullptr;  // now its Close answers 0x80000F02
  }
  EXPECT_EQ(file.Open(path.c_str()), 0);
}

TEST_F(StmFileTest, Abandon_LeavesTheFileAsItWas) {
#if defined(_WIN32)
  GTEST_SKIP() << "the system's storage writes in direct mode: what was written is in the file at once";
#endif
  const Bytes before = FileBytes(path);
  ASSERT_EQ(file.Open(path.c_str()), 0);
  ASSERT_EQ(file.DeleteStream("Book"), 0);
  ASSERT_EQ(file.CreateStream("Book", &item, false), 0);
  ASSERT_EQ(item->Write("abc", 3, nullptr), 0);
  file.Abandon();
  EXPECT_EQ(file.storage, nullptr);
  EXPECT_EQ(item->stream, nullptr);
  EXPECT_EQ(file.itemCount, 0);
  EXPECT_EQ(FileBytes(path), before);
  EXPECT_EQ(folder.Count(), 1u);
  file.Abandon();  // a closed file has nothing to lose
}

TEST_F(StmFileTest, StreamThatTheListCannotTake_IsOpenAllTheSame) {
  OpenBook();
  file.firstItem = nullptr;
  StmFItem* second = nullptr;
  EXPECT_EQ(file.CreateStream("Second", &second, false), Code(0x80000F06));
  ASSERT_NE(second, nullptr);
  EXPECT_NE(second->stream, nullptr);
  EXPECT_EQ(second->owner, nullptr);
  platform::StreamRelease(second->stream);
  EXPECT_EQ(file.OpenStream("Second", &second), Code(0x80000F06));
  EXPECT_NE(second->stream, nullptr);
  EXPECT_EQ(file.itemCount, 1);
  platform::StreamRelease(second->stream);
  second->stream = nullptr;
  delete second;
  file.firstItem = item;
}

}  // namespace
}  // namespace tolvenar::testing
