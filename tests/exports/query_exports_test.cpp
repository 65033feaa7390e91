// Exports of the queries: every argument arrives where it belongs. All values differ, so that two that have changed places show.
#include <gtest/gtest.h>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/test_array.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

class QueryExports : public PoolTest {
 protected:
  void Load(const StreamBuilder& book) {
    buffer_ = book.Load(&size_);
    ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size_), 0);
    ::XLGetNumVers(buffer_, table_);
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

TEST_F(QueryExports, List_Arrays) {
  Load(StreamBuilder().Bof(6).Record(0x1042, U16(7)).Eof());
  TestArray offsets(VT_I4, 1, 9), types(VT_I2, 1, 9), images(VT_BSTR, 1, 9), lengths(VT_I2, 1, 9);
  int32_t count = 0;
  EXPECT_EQ(::XLGetList(buffer_, static_cast<int32_t>(size_), &count, offsets.Ref(), types.Ref(),
                        images.Ref(), lengths.Ref()),
            0);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(offsets.NumberAt(2), 20);
  EXPECT_EQ(types.NumberAt(2), 0x142);
  EXPECT_EQ(images.TextAt(2), std::string("\x42\x10\x02\0\x07\0", 6));
  EXPECT_EQ(lengths.NumberAt(2), 6);
}

TEST_F(QueryExports, SheetSize_Outputs) {
  Load(StreamBuilder().Bof(6).Sheet("A").Eof().Bof(6, kWorksheet).Dimensions(2, 9, 1, 5).Eof());
  uint16_t range[4] = {};
  EXPECT_EQ(::XLGetSheetSize(buffer_, table_, 1, &range[0], &range[1], &range[2], &range[3]), 0);
  EXPECT_EQ((std::vector<int>(range, range + 4)), (std::vector<int>{3, 9, 2, 5}));
}

TEST_F(QueryExports, SharedString_Arguments) {
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A");
  const uint32_t sst = book.Here();
  const Bytes strings = U16(1) + Bytes{0} + Text("x") + U16(2) + Bytes{0} + Text("yz");
  book.Record(0x00FC, U32(2) + U32(2) + strings).Record(0x00FF, U16(8)).Eof().Bof(6, kWorksheet);
  const uint32_t record = book.Here();
  Load(book.LabelSst(1, 2, 15, 1).Eof());
  TestArray cells(VT_BSTR, 1, 4, 1, 4);
  int32_t index = 1;
  int16_t bucket = 8;
  EXPECT_EQ(::XLNumStrExt(buffer_, table_), static_cast<int16_t>(sst));
  EXPECT_EQ(::XLNumStrBucket(buffer_, table_), 8);
  ::XLEXTLabel(buffer_, &index, &bucket, static_cast<int32_t>(sst), cells.Ref(),
               static_cast<int32_t>(record));
  EXPECT_EQ(cells.TextAt(2, 3), "yz");
}

}  // namespace
