// Variant sheets in one call: every type of value, both shapes of arrays, and what failures leave.
#include "sheet/variant_sheet.h"

#include "sheet/cell_mapping.h"
#include "sheet/sheet_fixture.h"

namespace tolvenar::testing {
namespace {

constexpr uint16_t kXf = 0x21;

class VariantSheetTest : public SheetTest {};

TEST_F(VariantSheetTest, EveryTypeOfValue) {
  for (int32_t selector : {5, 8}) {
    for (const MappedCell& mapped : kMappedCells) {
      NewBook(selector);
      Variants values;
      mapped.add(values);
      ASSERT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 1, 1, values.Addresses().data(), &kXf), 1);
      EXPECT_EQ(Cells(1), RecordOfMapping(mapped, selector == 8, "00 00 00 00 21 00 ")) << mapped.label;
      MEMORYFREE(&buffer);
    }
  }
}

TEST_F(VariantSheetTest, CellsRowByRow_XfByColumn) {
  NewBook(5);
  Variants values;
  values.I2(1).I2(2).I2(3).I2(4);
  const uint16_t xf[] = {15, 21};
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 2, 2, values.Addresses().data(), xf), 1);
  EXPECT_EQ(Cells(1),
            "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F0 3F \n"
            "03 02 0E 00 00 00 01 00 15 00 00 00 00 00 00 00 00 40 \n"
            "03 02 0E 00 01 00 00 00 0F 00 00 00 00 00 00 00 08 40 \n"
            "03 02 0E 00 01 00 01 00 15 00 00 00 00 00 00 00 10 40 \n");
  ExpectWholeWorkbook(1);
}

TEST_F(VariantSheetTest, CountryStandsBetweenRowHeightAndWsBool) {
  NewBook(5);
  Variants values;
  values.I2(1);
  XLAppendVariantSheet(&buffer, &size, nullptr, 1, 1, values.Addresses().data(), &kXf);
  std::vector<uint16_t> types;
  for (const FoundRecord& record : Records(BofOf(1))) types.push_back(record.type);
  EXPECT_EQ(types,
            (std::vector<uint16_t>{0x0809, 0x000D, 0x000C, 0x000F, 0x0011, 0x0010, 0x005F, 0x002A, 0x002B,
                                   0x0082, 0x0080, 0x0225, 0x008C, 0x0081, 0x0014, 0x0015, 0x0083, 0x0084,
                                   0x00A1, 0x0055, 0x0200, 0x0208, 0x0203, 0x023E, 0x001D, 0x000A}));
  EXPECT_EQ(Sheets()[0].first, "Sheet1");
}

TEST_F(VariantSheetTest, NullText_TheCellIsLeftOut) {
  NewBook(5);
  Variants values;
  values.Empty(VT_BSTR).Empty(VT_BSTR | VT_BYREF).TextByReference(nullptr);
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 3, 1, values.Addresses().data(), nullptr), 1);
  EXPECT_EQ(Cells(1), "");
}

TEST_F(VariantSheetTest, NullAddressesAndArrays_Blanks) {
  NewBook(5);
  const VARIANT* none[] = {nullptr};
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 1, 1, none, nullptr), 1);
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 1, 1, nullptr, nullptr), 2);
  EXPECT_EQ(Cells(1), "01 02 06 00 00 00 00 00 00 00 \n");
  EXPECT_EQ(Cells(2), "01 02 06 00 00 00 00 00 00 00 \n");
}

TEST_F(VariantSheetTest, NullValue_Minus5_TheOldBufferIsStillLive) {
  NewBook(5);
  const uint32_t old = buffer;
  Variants values;
  values.I2(1).Empty(VT_NULL);
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 2, 1, values.Addresses().data(), &kXf), -5);
  EXPECT_EQ(MEMORYISHANDLE(old), 4);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5);
  EXPECT_EQ(size, kEmptyBiff5 + 16) << "where the sheet begins";
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(VariantSheetTest, Body_NullValue_Result2_VariablesAsBeforeEvenIfTheBufferMoved) {
  BiffVersion = 5;
  buffer = MEMORYALLOC(200);
  const uint32_t before = buffer;
  size = 100;
  Variants values;
  values.Empty(VT_NULL);
  EXPECT_EQ(CreateVariantSheet(&buffer, &size, 1, 1, values.Addresses().data(), &kXf), 2);
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(size, 100u);
  EXPECT_EQ(MEMORYISHANDLE(before), 0) << "moved to slot 5";
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(VariantSheetTest, Body_AppendFails_Minus2_BufferReleasedVariablesAsBefore) {
  BiffVersion = 5;
  TakeAllSlotsBut({1, 2, 3});
  buffer = MEMORYALLOC(200);
  const uint32_t before = buffer;
  size = 100;
  EXPECT_EQ(CreateVariantSheet(&buffer, &size, 0, 0, nullptr, nullptr), -2);
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(size, 100u);
  EXPECT_EQ(LiveBlocks(), 6u);
}

TEST_F(VariantSheetTest, Body_Done_SizeIsTheTrueEnd) {
  BiffVersion = 5;
  buffer = MEMORYALLOC(200);
  size = 100;
  EXPECT_EQ(CreateVariantSheet(&buffer, &size, 0, 0, nullptr, nullptr), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5);
  EXPECT_EQ(size, 100 + kHeadBiff5 + kCountrySize + kDimensionsBytes + kTailBiff5);
}

class VariantArrayTest : public VariantSheetTest {
 protected:
  // An array of the values, from index 0 on.
  static void Put(SAFEARRAY* array, const Variants& values) {
    LONG index = 0;
    for (const VARIANT* value : values.Addresses()) {
      ASSERT_EQ(SafeArrayPutElement(array, &index, const_cast<VARIANT*>(value)), S_OK);
      ++index;
    }
  }
};

TEST_F(VariantArrayTest, EveryTypeOfValue) {
  const LeaksExpected text_copies;
  for (const MappedCell& mapped : kMappedCells) {
    Variants values;
    mapped.add(values);
    if ((values.Data()->vt & VT_ARRAY) != 0 || values.Data()->vt == 0xFFFF) continue;  // no array takes them
    if (values.Data()->vt == VT_VARIANT) continue;
    NewBook(5);
    OwnedArray cells(VT_VARIANT, 1);
    Put(cells, values);
    OwnedArray xf(VT_I2, 1);
    *xf.Data<uint16_t>() = kXf;
    SAFEARRAY* arrays[] = {cells, xf};
    ASSERT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, &arrays[0], &arrays[1]), 1);
    EXPECT_EQ(Cells(1), RecordOfMapping(mapped, false, "00 00 00 00 21 00 ")) << mapped.label;
    EXPECT_EQ(LiveBlocks(), 1u);
    MEMORYFREE(&buffer);
  }
}

TEST_F(VariantArrayTest, CellsRowByRow_LocksAreReleased) {
  NewBook(8);
  Variants values;
  values.I2(1).I2(2).I2(3).I2(4);
  OwnedArray cells(VT_VARIANT, 4);
  Put(cells, values);
  OwnedArray xf(VT_UI2, 2);
  xf.Data<uint16_t>()[0] = 15;
  xf.Data<uint16_t>()[1] = 21;
  SAFEARRAY* arrays[] = {cells, xf};
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 2, 2, &arrays[0], &arrays[1]), 1);
  EXPECT_EQ(Cells(1),
            "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F0 3F \n"
            "03 02 0E 00 00 00 01 00 15 00 00 00 00 00 00 00 00 40 \n"
            "03 02 0E 00 01 00 00 00 0F 00 00 00 00 00 00 00 08 40 \n"
            "03 02 0E 00 01 00 01 00 15 00 00 00 00 00 00 00 10 40 \n");
  EXPECT_EQ(SafeArrayUnlock(xf), E_UNEXPECTED) << "no lock is left";
  ExpectWholeWorkbook(1);
}

TEST_F(VariantArrayTest, ArraysTooSmallOrOfOtherTypes_BlanksAndXf0) {
  NewBook(5);
  OwnedArray cells(VT_R8, 2);
  cells.Data<double>()[0] = 1.5;
  OwnedArray xf(VT_I4, 2);
  xf.Data<int32_t>()[0] = 7;
  SAFEARRAY* arrays[] = {cells, xf};
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, &arrays[0], &arrays[1]), 1);
  EXPECT_EQ(Cells(1), "01 02 06 00 00 00 00 00 00 00 \n");
  OwnedArray short_cells(VT_VARIANT, 1);
  OwnedArray short_xf(VT_I2, 1);
  *short_xf.Data<uint16_t>() = 9;
  SAFEARRAY* short_arrays[] = {short_cells, short_xf};
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 2, 1, &short_arrays[0], &short_arrays[1]), 2);
  EXPECT_EQ(Cells(2), "01 02 06 00 00 00 00 00 09 00 \n01 02 06 00 00 00 01 00 00 00 \n");
}

TEST_F(VariantArrayTest, TwoDimensions_TheSecondIndexIsZero) {
  NewBook(5);
  OwnedArray cells(VT_VARIANT, {{2, 0}, {2, 0}});
  cells.Data<VARIANT>()[1].vt = VT_I2;
  cells.Data<VARIANT>()[1].iVal = 1;
  SAFEARRAY* array = cells;
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 2, 1, &array, nullptr), 1);
  EXPECT_EQ(Cells(1),
            "01 02 06 00 00 00 00 00 00 00 \n03 02 0E 00 00 00 01 00 00 00 00 00 00 00 00 00 F0 3F \n");
}

TEST_F(VariantArrayTest, NullArrays_Blanks) {
  NewBook(5);
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, nullptr, nullptr), 1);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, &none, &none), 2);
  EXPECT_EQ(Cells(2), "01 02 06 00 00 00 00 00 00 00 \n");
}

TEST_F(VariantArrayTest, NullValue_Minus5_BlocksAndLockReleased) {
  NewBook(5);
  Variants values;
  values.Empty(VT_NULL);
  OwnedArray cells(VT_VARIANT, 1);
  Put(cells, values);
  OwnedArray xf(VT_I2, 1);
  SAFEARRAY* arrays[] = {cells, xf};
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, &arrays[0], &arrays[1]), -5);
  EXPECT_EQ(LiveBlocks(), 2u) << "the old buffer and the new one";
  EXPECT_EQ(SafeArrayUnlock(xf), E_UNEXPECTED);
}

TEST_F(VariantArrayTest, NoBlockForTheTables_Minus5_NothingChanges) {
  NewBook(5);
  const uint32_t old = buffer;
  while (LiveBlocks() < 8) MEMORYALLOC(1);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 1, 1, nullptr, nullptr), -5);
  EXPECT_EQ(buffer, old);
  EXPECT_EQ(size, kEmptyBiff5);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(VariantArrayTest, MoreCellsThanABlockHolds_Minus5) {
  NewBook(5);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 32767, 32767, nullptr, nullptr), -5);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 3000, 3000, nullptr, nullptr), -5);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(VariantArrayTest, CountsOfZeroAndBelow_AnEmptySheet) {
  NewBook(5);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 0, 0, nullptr, nullptr), 1);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", -2, -3, nullptr, nullptr), 2);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", -32768, 32767, nullptr, nullptr), 3);
  EXPECT_EQ(Cells(1), "");
  EXPECT_EQ(Cells(2), "");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(VariantSheetTest, NullPointersAndNoBuffer) {
  EXPECT_EQ(XLAppendVariantSheet(nullptr, nullptr, nullptr, 1, 1, nullptr, nullptr), -4);
  EXPECT_EQ(XLAppendVariantSheetVB(nullptr, nullptr, nullptr, 1, 1, nullptr, nullptr), -4);
  EXPECT_EQ(CreateVariantSheet(nullptr, nullptr, 1, 1, nullptr, nullptr), -2);
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
