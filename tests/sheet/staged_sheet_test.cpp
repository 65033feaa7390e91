// Variant sheets in stages: sizes and positions after every stage, the bytes, and what each failure leaves.
#include "sheet/staged_sheet.h"

#include "sheet/cell_mapping.h"
#include "sheet/sheet_fixture.h"

namespace tolvenar::testing {
namespace {

constexpr uint16_t kXf[] = {15, 21, 16};
constexpr uint32_t kOpenBiff5 = kEmptyBiff5 + 16;  // where the sheet "Data" begins
constexpr uint32_t kOpenBiff8 = kEmptyBiff8 + 16;
constexpr uint32_t kStagedHead5 = kHeadBiff5 + kCountrySize;
constexpr uint32_t kStagedHead8 = kHeadBiff8 + kCountrySize;

class StagedSheetTest : public SheetTest {
 protected:
  void Splice(int32_t selector) {
    NewBook(selector);
    ASSERT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), 1);
  }

  void Close() {
    ASSERT_EQ(CreateVariantSheet3(&buffer, &size, &position), 0);
    ASSERT_EQ(size, position);
    ASSERT_EQ(AppendVariantSheet2(&buffer, &size, 1), 1);
    ExpectWholeWorkbook(1);
    EXPECT_EQ(LiveBlocks(), 1u);
  }

  uint32_t position = 0x7777;
};

TEST_F(StagedSheetTest, Spliced_NoBufEnd_SizeWhereTheBofGoes_OldBufferReleased) {
  NewBook(5);
  EXPECT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), 1);
  EXPECT_EQ(size, kOpenBiff5);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5);
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(Sheets()[0].second, kOpenBiff5);
  EXPECT_EQ(Last4(), "0A 00 00 00 ");
}

TEST_F(StagedSheetTest, InSlices_SizesAndPositionsOfEveryStageBiff5) {
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 3, 10, &position), 0);
  const uint32_t rows_at = kOpenBiff5 + kStagedHead5 + kDimensionsBytes;
  EXPECT_EQ(position, rows_at + 10 * kRowBytes);
  EXPECT_EQ(size, kOpenBiff5 + 10 * kRowBytes + rows_at) << "overshoots by the position";
  const uint32_t nominal = size;
  Variants values;
  values.I2(1).Text(OLESTR("Ab")).Empty();
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 3, 1, values.Data(), kXf), 0);
  EXPECT_EQ(position, rows_at + 10 * kRowBytes + 18 + 14 + 10);
  EXPECT_EQ(size, nominal);
  EXPECT_EQ(CreateVariantSheet3(&buffer, &size, &position), 0);
  EXPECT_EQ(position, rows_at + 10 * kRowBytes + 42 + kTailBiff5);
  EXPECT_EQ(size, position);
  EXPECT_EQ(AppendVariantSheet2(&buffer, &size, 77), 77);
  EXPECT_EQ(size, position + 4);
  ExpectWholeWorkbook(1);
}

TEST_F(StagedSheetTest, InSlices_SizesAndPositionsBiff8) {
  Splice(8);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 3, 10, &position), 0);
  const uint32_t rows_at = kOpenBiff8 + kStagedHead8 + kDimensionsBytes;
  EXPECT_EQ(position, rows_at + 200);
  EXPECT_EQ(size, kOpenBiff8 + 200 + rows_at);
  Variants values;
  values.Text(OLESTR("Ab"));
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 1, values.Data(), kXf), 0);
  EXPECT_EQ(position, rows_at + 200 + 15);
  Close();
}

TEST_F(StagedSheetTest, InOneGo_SizesAndPositionsOfEveryStage) {
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1(&buffer, &size, &position), 0);
  EXPECT_EQ(position, kOpenBiff5 + kStagedHead5);
  EXPECT_EQ(size, kOpenBiff5);
  Variants values;
  values.I2(1).I2(2).I2(3).I2(4);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 2, 2, values.Data(), kXf), 0);
  const uint32_t rows_at = kOpenBiff5 + kStagedHead5 + kDimensionsBytes;
  EXPECT_EQ(position, rows_at + 2 * kRowBytes + 4 * 18);
  EXPECT_EQ(size, kOpenBiff5 + 2 * kRowBytes + rows_at);
  Close();
  EXPECT_EQ(Cells(1),
            "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F0 3F \n"
            "03 02 0E 00 00 00 01 00 15 00 00 00 00 00 00 00 00 40 \n"
            "03 02 0E 00 01 00 00 00 0F 00 00 00 00 00 00 00 08 40 \n"
            "03 02 0E 00 01 00 01 00 15 00 00 00 00 00 00 00 10 40 \n");
}

TEST_F(StagedSheetTest, Slice_GoesOutColumnByColumn_AtItsPlace) {
  Splice(5);
  CreateVariantSheet1A(&buffer, &size, 9, 9, &position);
  Variants values;
  values.I2(1).I2(2).I2(3).I2(4);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 2, 5, 2, 2, values.Data(), kXf), 0);
  Close();
  EXPECT_EQ(Cells(1),
            "03 02 0E 00 05 00 02 00 0F 00 00 00 00 00 00 00 F0 3F \n"
            "03 02 0E 00 06 00 02 00 0F 00 00 00 00 00 00 00 08 40 \n"
            "03 02 0E 00 05 00 03 00 15 00 00 00 00 00 00 00 00 40 \n"
            "03 02 0E 00 06 00 03 00 15 00 00 00 00 00 00 00 10 40 \n");
}

TEST_F(StagedSheetTest, EveryTypeOfValue_BothFillings) {
  for (int32_t selector : {5, 8}) {
    for (const MappedCell& mapped : kMappedCells) {
      Splice(selector);
      CreateVariantSheet1(&buffer, &size, &position);
      Variants values;
      mapped.add(values);
      EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 1, values.Data(), kXf), 0);
      EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 7, 8, 1, 1, values.Data(), kXf + 1), 0);
      Close();
      EXPECT_EQ(Cells(1), RecordOfMapping(mapped, selector == 8, "00 00 00 00 0F 00 ") +
                              RecordOfMapping(mapped, selector == 8, "08 00 07 00 15 00 "))
          << mapped.label;
      MEMORYFREE(&buffer);
    }
  }
}

TEST_F(StagedSheetTest, NullValueIsABlank_NullTextIsOneBlankOfText) {
  Splice(5);
  CreateVariantSheet1(&buffer, &size, &position);
  Variants values;
  values.Empty(VT_NULL).Empty(VT_BSTR).Empty(VT_BSTR | VT_BYREF);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 3, 1, values.Data(), kXf), 0);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 1, 1, 1, values.Data(), kXf), 0);
  Close();
  EXPECT_EQ(Cells(1),
            "01 02 06 00 00 00 00 00 0F 00 \n"
            "04 02 09 00 00 00 01 00 15 00 01 00 20 \n"
            "04 02 09 00 00 00 02 00 10 00 01 00 20 \n"
            "01 02 06 00 01 00 00 00 0F 00 \n");
}

TEST_F(StagedSheetTest, NullArrays_BlanksOfXf0) {
  Splice(5);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 1, nullptr, nullptr), 0);
  Close();
  EXPECT_EQ(Cells(1), "01 02 06 00 00 00 00 00 00 00 \n");
}

TEST_F(StagedSheetTest, TextLongerThanTheShell_IsCut) {
  Splice(8);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  const uint32_t before = position;
  Variants values;
  values.Text(std::basic_string<OLECHAR>(40000, u'x').c_str());
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 1, values.Data(), kXf), 0);
  EXPECT_EQ(position, before + 32767);
  Close();
}

TEST_F(StagedSheetTest, Range_CountsAreClampedAndStatedOneLarger) {
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 70000, 1, &position), 0);
  Close();
  EXPECT_EQ(Hex(RecordsOfType(0x0200).at(0).bytes), "00 02 0E 00 00 00 02 00 00 00 FF FF 00 00 00 00 00 00 ");
  EXPECT_EQ(Hex(RecordsOfType(0x0208).at(0).bytes),
            "08 02 10 00 00 00 00 00 FF FF FF 00 00 00 F3 00 40 01 1D 02 ");
}

TEST_F(StagedSheetTest, Range_RowsAreClampedTo65534) {
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 1000000, &position), 0);
  const uint32_t rows_at = kOpenBiff5 + kStagedHead5 + kDimensionsBytes;
  EXPECT_EQ(position, rows_at + 65534 * kRowBytes);
  EXPECT_EQ(size, kOpenBiff5 + 65534 * kRowBytes + rows_at);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 7) << "reserved in one step";
  EXPECT_EQ(MEMORYSIZE(buffer), size + 4096);
  Close();
  const std::vector<FoundRecord> rows = RecordsOfType(0x0208);
  ASSERT_EQ(rows.size(), 65534u);
  EXPECT_EQ(ReadU16(rows.back().bytes.data() + 4), 65533u);
}

TEST_F(StagedSheetTest, Range_NoRows_OneRowStands_BothWays) {
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 0, &position), 0);
  Close();
  EXPECT_EQ(RecordsOfType(0x0208).size(), 1u);
  MEMORYFREE(&buffer);
  Splice(5);
  CreateVariantSheet1(&buffer, &size, &position);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 0, nullptr, nullptr), 0);
  Close();
  EXPECT_EQ(RecordsOfType(0x0208).size(), 1u);
  EXPECT_EQ(Cells(1), "");
}

TEST_F(StagedSheetTest, Range_NegativeRows_OneRowInOneGo_65535InSlices) {
  Splice(5);
  CreateVariantSheet1(&buffer, &size, &position);
  const uint32_t rows_at = kOpenBiff5 + kStagedHead5 + kDimensionsBytes;
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, -1, nullptr, nullptr), 0);
  EXPECT_EQ(size, kOpenBiff5 - kRowBytes + rows_at) << "the count is signed in the reservation";
  Close();
  EXPECT_EQ(RecordsOfType(0x0208).size(), 1u);
  MEMORYFREE(&buffer);
  Splice(5);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, -1, &position), 0);
  EXPECT_EQ(size, kOpenBiff5 - kRowBytes + rows_at + 2 * 32767) << "and two growths";
  Close();
  EXPECT_EQ(RecordsOfType(0x0208).size(), 65535u);
}

TEST_F(StagedSheetTest, Slice_PlacesAndCountsAre16BitsWithoutASign) {
  Splice(5);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  const uint32_t before = position;
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 40000, 1, nullptr, nullptr), 0);
  EXPECT_EQ(position, before + 40000 * 10);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 65535, 65535, 2, 2, nullptr, nullptr), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, position)).substr(3 * (position - 40)),
            "01 02 06 00 FF FF FF FF 00 00 "
            "01 02 06 00 00 00 FF FF 00 00 "
            "01 02 06 00 FF FF 00 00 00 00 "
            "01 02 06 00 00 00 00 00 00 00 ");
}

TEST_F(StagedSheetTest, Slice_NoColumnsOrNoRows_Nothing) {
  Splice(5);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  const uint32_t before = position;
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 0, 5, nullptr, nullptr), 0);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 5, 0, nullptr, nullptr), 0);
  EXPECT_EQ(position, before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(StagedSheetTest, InSlices_ReservationOfExactlyTheCapacity_Stays_OneRowMoreMoves) {
  const uint32_t rows_at = kEmptyBiff8 + 18 + kStagedHead8 + kDimensionsBytes;
  for (const uint32_t rows : {4849u, 4850u}) {
    NewBook(8);
    ASSERT_EQ(AppendVariantSheet1(&buffer, &size, "Monday"), 1);
    const uint32_t spliced = MEMORYSIZE(buffer);
    EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, static_cast<int32_t>(rows), &position), 0);
    EXPECT_EQ(position, rows_at + rows * kRowBytes);
    EXPECT_EQ(size, 100000 + (rows - 4849) * kRowBytes);
    EXPECT_EQ(MEMORYISHANDLE(buffer), rows == 4849 ? 5 : 6);
    EXPECT_EQ(MEMORYSIZE(buffer), rows == 4849 ? spliced : size + 4096);
    MEMORYFREE(&buffer);
  }
}

TEST_F(StagedSheetTest, HeadAndTailGrowTheBuffer_TheNominalSizeFollows) {
  BiffVersion = 5;
  buffer = MEMORYALLOC(256);
  size = 100;
  EXPECT_EQ(CreateVariantSheet1(&buffer, &size, &position), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5) << "256 + 32767 is too much for slot 4";
  EXPECT_EQ(position, 100 + kStagedHead5);
  EXPECT_EQ(size, 100u + 32767);
  position = 99980;
  EXPECT_EQ(CreateVariantSheet3(&buffer, &size, &position), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 6);
  EXPECT_EQ(size, 99980 + kTailBiff5) << "the true end again";
  EXPECT_EQ(LiveBlocks(), 1u);
}

// BOF, row height and column width are all that is served then.
TEST_F(StagedSheetTest, NoGeneration_TheRangeInSlicesIsBiff5s_InOneGoItIsEmpty) {
  BiffVersion = 0;
  buffer = MEMORYALLOC(4096);
  size = 0;
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 3, 1, &position), 0);
  EXPECT_EQ(position, 12u + 8 + 6 + kDimensionsBytes + kRowBytes);
  EXPECT_EQ(Hex(BlockContents(buffer, 44)).substr(3 * 26),
            "00 02 0E 00 00 00 02 00 00 00 04 00 00 00 00 00 00 00 ");
  position = 0;
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 3, 0, nullptr, nullptr), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, 18)), "00 02 0E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ");
}

// The reservation of CreateVariantSheet2 asks for what is missing alone, which the slot has already.
TEST_F(StagedSheetTest, InOneGo_ReservationKeepsTheSlot_RowsThatDontFitGrowIt) {
  Splice(5);
  CreateVariantSheet1(&buffer, &size, &position);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 0, 4900, nullptr, nullptr), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5) << "98000 bytes of rows still fit";
  const uint32_t rows_at = kOpenBiff5 + kStagedHead5 + kDimensionsBytes;
  EXPECT_EQ(position, rows_at + 98000);
  EXPECT_EQ(size, kOpenBiff5 + 98000 + rows_at);
  EXPECT_EQ(MEMORYSIZE(buffer), size - 100000 + 4096);
  MEMORYFREE(&buffer);
  Splice(5);
  CreateVariantSheet1(&buffer, &size, &position);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 0, 5000, nullptr, nullptr), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 6);
  EXPECT_EQ(size, kOpenBiff5 + 100000 + rows_at + 32767);
  Close();
  EXPECT_EQ(RecordsOfType(0x0208).size(), 5000u);
}

TEST_F(StagedSheetTest, Fill_GrowsByTheSlots_NominalSizeByEachGrowth) {
  Splice(5);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  const uint32_t nominal = size;
  const std::vector<VARIANT> blanks(60000, VARIANT{});
  const uint32_t first = position;
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 60000, blanks.data(), kXf), 0);
  EXPECT_EQ(position, first + 600000);
  EXPECT_EQ(size, nominal + 32767);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 6);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 1, 0, 1, 60000, blanks.data(), kXf), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 7);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 2, 0, 1, 60000, blanks.data(), kXf), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 8);
  EXPECT_EQ(size, nominal + 3 * 32767);
  Close();
}

TEST_F(StagedSheetTest, Slice_LastByteOfTheBufferStaysFree) {
  for (const uint32_t gap : {11u, 10u}) {
    BiffVersion = 5;
    buffer = MEMORYALLOC(33000);
    size = position = 33000 - gap;
    EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 1, 2, 1, 1, nullptr, nullptr), 0);
    EXPECT_EQ(position, 33010 - gap);
    EXPECT_EQ(MEMORYISHANDLE(buffer), gap == 11 ? 4 : 6) << "slot 5 holds the shell";
    EXPECT_EQ(size, 33000 - gap + (gap == 11 ? 0 : 32767));
    EXPECT_EQ(Hex(BlockContents(buffer, position)).substr(3 * (position - 10)),
              "01 02 06 00 02 00 01 00 00 00 ");
    MEMORYFREE(&buffer);
  }
}

TEST_F(StagedSheetTest, SecondSheetBehindAFinishedOne) {
  Splice(8);
  CreateVariantSheet1A(&buffer, &size, 1, 1, &position);
  Close();
  EXPECT_EQ(AppendVariantSheet1(&buffer, &size, ""), 2);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 1, &position), 0);
  EXPECT_EQ(CreateVariantSheet3(&buffer, &size, &position), 0);
  EXPECT_EQ(AppendVariantSheet2(&buffer, &size, 2), 2);
  EXPECT_EQ(Sheets()[1].first, "Sheet2");
  ExpectWholeWorkbook(2);
}

TEST_F(StagedSheetTest, AnyNumberComesBack) {
  for (int16_t number : {int16_t{0}, int16_t{-1}, int16_t{32767}}) {
    Splice(5);
    CreateVariantSheet1(&buffer, &size, &position);
    CreateVariantSheet3(&buffer, &size, &position);
    EXPECT_EQ(AppendVariantSheet2(&buffer, &size, number), number);
    MEMORYFREE(&buffer);
  }
}

TEST_F(StagedSheetTest, Zembler_BufEndBehindTheEnd) {
  NewBook(5);
  EXPECT_EQ(AddZemblerRecord(&buffer, &size), 0);
  EXPECT_EQ(size, kEmptyBiff5 + 4);
  EXPECT_EQ(Last4(), "F8 FE 00 00 ");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(StagedSheetTest, Zembler_Fails_BufferReleased_SizeIsMinusOne) {
  TakeAllSlotsBut({1, 2});
  buffer = MEMORYALLOC(256);
  size = 253;
  EXPECT_EQ(AddZemblerRecord(&buffer, &size), -2);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0xFFFFFFFFu);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_F(StagedSheetTest, Zembler_NoBlockForTheRecord_NothingIsWritten) {
  NewBook(5);
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(AddZemblerRecord(&buffer, &size), 0);
  EXPECT_EQ(size, kEmptyBiff5);
}

TEST_F(StagedSheetTest, NoBuffer_Minus2_TheSizeIsSetAllTheSame) {
  for (const uint32_t none : {0u, 0x12345678u}) {
    buffer = none;
    size = 50;
    EXPECT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), -2);
    EXPECT_EQ(buffer, none);
    EXPECT_EQ(size, 50u + 16);
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(StagedSheetTest, NullPointers) {
  BiffVersion = 5;
  EXPECT_EQ(AppendVariantSheet1(nullptr, nullptr, nullptr), -2);
  EXPECT_EQ(CreateVariantSheet1(nullptr, nullptr, nullptr), -2);
  EXPECT_EQ(CreateVariantSheet1A(nullptr, nullptr, 1, 1, nullptr), -2);
  EXPECT_EQ(CreateVariantSheet2(nullptr, nullptr, nullptr, 1, 1, nullptr, nullptr), -2);
  EXPECT_EQ(CreateVariantSheet2A(nullptr, nullptr, nullptr, 0, 0, 1, 1, nullptr, nullptr), -2);
  EXPECT_EQ(CreateVariantSheet3(nullptr, nullptr, nullptr), -2);
  EXPECT_EQ(AppendVariantSheet2(nullptr, nullptr, 5), -2);
  EXPECT_EQ(AddZemblerRecord(nullptr, nullptr), -2);
  EXPECT_EQ(LiveBlocks(), 0u);
}

// A template may be given the slot that a handle of the host's still names, and a cell then goes over the template that it is made of.
TEST_F(StagedSheetTest, HandleOfAReleasedBuffer_IsSafeThoughATemplateTakesItsSlot) {
  for (const int32_t small : {256, 512, 1024}) MEMORYALLOC(small);
  for (const VARTYPE type : {VT_EMPTY, VT_R8, VT_NULL}) {
    for (uint32_t begin = 0; begin < 16; ++begin) {
      buffer = MEMORYALLOC(2000);
      uint32_t released = buffer;
      MEMORYFREE(&released);
      position = begin;
      VARIANT cell = {};
      cell.vt = type;
      CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 1, &cell, nullptr);
      EXPECT_EQ(LiveBlocks(), 3u);
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
