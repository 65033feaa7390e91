// Record list: what XLGetList puts for each record, and where it stops.
#include "query/record_list.h"

#include <cstring>

#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class RecordList : public PoolTest {
 protected:
  int16_t List(uint32_t buffer, int32_t size) {
    return XLGetList(buffer, size, &count_, offsets_.Ref(), types_.Ref(), images_.Ref(), lengths_.Ref());
  }
  int16_t List(const StreamBuilder& stream) {
    uint32_t size = 0;
    buffer_ = stream.Load(&size);
    return List(buffer_, static_cast<int32_t>(size));
  }

  uint32_t buffer_ = 0;
  int32_t count_ = -77;
  TestArray offsets_{VT_I4, 1, 20};
  TestArray types_{VT_I2, 1, 20};
  TestArray images_{VT_BSTR, 1, 20};
  TestArray lengths_{VT_I2, 1, 20};
};

TEST_F(RecordList, NullBuffer_GivesOneAndLeavesTheCount) {
  EXPECT_EQ(List(0, 100), 1);
  EXPECT_EQ(count_, -77);
}

TEST_F(RecordList, StaleBuffer_GivesOneAndLeavesTheCount) {
  uint32_t block = MEMORYALLOC(100);
  const uint32_t stale = block;
  MEMORYFREE(&block);
  EXPECT_EQ(List(stale, 100), 1);
  EXPECT_EQ(count_, -77);
}

TEST_F(RecordList, SizeOfOneOrLess_ListsNothing) {
  uint32_t loaded = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Load(&loaded);
  for (int32_t size : {1, 0, -1, -1000, INT32_MIN}) {
    count_ = -77;
    EXPECT_EQ(List(buffer, size), 0) << size;
    EXPECT_EQ(count_, 0) << size;
  }
  EXPECT_EQ(images_.TextAt(1), "(none)");
}

TEST_F(RecordList, SizeOfTwo_ListsTheFirstRecord) {
  uint32_t loaded = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Eof().Load(&loaded);
  EXPECT_EQ(List(buffer, 2), 0);
  EXPECT_EQ(count_, 1);
  EXPECT_EQ(lengths_.NumberAt(1), 20);
  EXPECT_EQ(images_.TextAt(2), "(none)");
}

TEST_F(RecordList, ListsEveryRecordUpToTheBufEnd) {
  EXPECT_EQ(List(StreamBuilder().Bof(5).Record(0x0042, U16(1200)).Eof()), 0);
  EXPECT_EQ(count_, 4);
  const struct {
    int offset, type, length;
    std::string image;
  } rows[] = {{0, 0x09, 12, std::string("\x09\x08\x08\x00\x00\x05\x05\x00\xBB\x0D\xCC\x07", 12)},
              {12, 0x42, 6, std::string("\x42\x00\x02\x00\xB0\x04", 6)},
              {18, 0x0A, 4, std::string("\x0A\x00\x00\x00", 4)},
              {22, 0xF8, 4, std::string("\xF8\xFE\x00\x00", 4)}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(offsets_.NumberAt(i + 1), rows[i].offset);
    EXPECT_EQ(types_.NumberAt(i + 1), rows[i].type);
    EXPECT_EQ(lengths_.NumberAt(i + 1), rows[i].length);
    EXPECT_EQ(images_.TextAt(i + 1), rows[i].image);
  }
  EXPECT_EQ(images_.TextAt(5), "(none)");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(RecordList, TypeCode_AddsOnlyForAHighByteOfExactly0x10) {
  EXPECT_EQ(List(StreamBuilder().Record(0x1051).Record(0x1151).Record(0x1009).Record(0x0809).Record(0xFFFF)),
            0);
  EXPECT_EQ(types_.NumberAt(1), 0x151);
  EXPECT_EQ(types_.NumberAt(2), 0x51);
  EXPECT_EQ(types_.NumberAt(3), 0x109);
  EXPECT_EQ(types_.NumberAt(4), 0x09);
  EXPECT_EQ(types_.NumberAt(5), 0xFF);
}

TEST_F(RecordList, WiderElements_HaveZerosAboveThe16Bits) {
  TestArray types(VT_I4, 1, 5), lengths(VT_I4, 1, 5);
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Record(0x1051).Load(&size);
  XLGetList(buffer, static_cast<int32_t>(size), &count_, offsets_.Ref(), types.Ref(), images_.Ref(),
            lengths.Ref());
  EXPECT_EQ(types.NumberAt(1), 0x151);
  EXPECT_EQ(lengths.NumberAt(1), 4);
}

TEST_F(RecordList, FollowsJumps_AndListsThePatchRecords) {
  // 0 DETOUR to 16; 8 BOF's rest ... 12 BUFEND; 16 a patch; 20 RESUME to 8.
  EXPECT_EQ(List(StreamBuilder().Detour(16).Record(0x0042).Record(0xFEF8).Record(0x0077).Resume(8).BufEnd()),
            0);
  EXPECT_EQ(count_, 5);
  const int offsets[] = {0, 16, 20, 8, 12};
  const int types[] = {0xFF, 0x77, 0xFA, 0x42, 0xF8};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(offsets_.NumberAt(i + 1), offsets[i]);
    EXPECT_EQ(types_.NumberAt(i + 1), types[i]);
  }
}

TEST_F(RecordList, WithoutBufEnd_StopsAtSizeMinusOne) {
  uint32_t loaded = 0;
  const uint32_t buffer = StreamBuilder().Record(0x0042).Record(0x0043).Record(0x0044).Load(&loaded);
  EXPECT_EQ(List(buffer, 9), 0);
  EXPECT_EQ(count_, 2);
  EXPECT_EQ(List(buffer, 10), 0);
  EXPECT_EQ(count_, 3);
}

TEST_F(RecordList, RecordTooLongFor16Bits_HasAnEmptyImageAndANegativeLength) {
  images_.SetText(1, 0, "before");
  EXPECT_EQ(List(StreamBuilder().Record(0x0042, Bytes(32764, 0x55)).Record(0x0043, Bytes(32763, 0x66))), 0);
  EXPECT_EQ(count_, 3);
  EXPECT_EQ(static_cast<int16_t>(lengths_.NumberAt(1)), -32768);
  EXPECT_EQ(static_cast<int16_t>(lengths_.NumberAt(2)), 32767);
  EXPECT_EQ(images_.TextAt(2).size(), 32767u);
#if !defined(_WIN32)
  EXPECT_EQ(images_.TextAt(1), "(none)");
#endif
}

TEST_F(RecordList, RecordOf65532PayloadBytes_HasLengthZero) {
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Record(0x0042, Bytes(65532, 0x55)).Load(&size);
  EXPECT_EQ(List(buffer, static_cast<int32_t>(size)), 0);
  EXPECT_EQ(lengths_.NumberAt(1), 0);
  EXPECT_EQ(images_.TextAt(1), "");
  EXPECT_EQ(offsets_.NumberAt(2), 65536);
}

TEST_F(RecordList, ArraysThatAreShortOrMissing_AreFilledAsFarAsTheyGo) {
  TestArray two(VT_I4, 1, 2);
  SAFEARRAY* none = nullptr;
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Eof().Load(&size);
  const int32_t n = static_cast<int32_t>(size);
  EXPECT_EQ(XLGetList(buffer, n, &count_, two.Ref(), &none, nullptr, lengths_.Ref()), 0);
  EXPECT_EQ(count_, 3);
  EXPECT_EQ(two.NumberAt(2), 20);
  EXPECT_EQ(lengths_.NumberAt(3), 4);
  EXPECT_EQ(XLGetList(buffer, n, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

// An index that isn't there must not be read: the sanitized build tells.
TEST_F(RecordList, ArraysOfSeveralDimensions_ArePassedOver) {
  TestArray offsets(VT_I4, 1, 5, 0, 9), images(VT_BSTR, 1, 5, 0, 9);
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Eof().Load(&size);
  EXPECT_EQ(XLGetList(buffer, static_cast<int32_t>(size), &count_, offsets.Ref(), types_.Ref(), images.Ref(),
                      lengths_.Ref()),
            0);
  EXPECT_EQ(count_, 3);
  EXPECT_EQ(types_.NumberAt(3), 0xF8);
  EXPECT_EQ(images.AllText().find_first_of("\x09\xF8"), std::string::npos);
  for (LONG column = 0; column <= 9; ++column) EXPECT_EQ(offsets.NumberAt(2, column), 0);
}

#if !defined(_WIN32)
TEST_F(RecordList, ImagesAsVariants) {
  TestArray images(VT_VARIANT, 1, 5);
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Eof().Load(&size);
  EXPECT_EQ(XLGetList(buffer, static_cast<int32_t>(size), &count_, nullptr, nullptr, images.Ref(), nullptr),
            0);
  EXPECT_EQ(images.TextAt(1), std::string("\x0A\0\0\0", 4));
}
#endif

TEST_F(RecordList, FullPool_GivesTenAndWhatWasFilledSoFar) {
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Eof().Load(&size);
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(List(buffer, static_cast<int32_t>(size)), 10);
  EXPECT_EQ(count_, 0);
  EXPECT_EQ(types_.NumberAt(1), 9);
  EXPECT_EQ(images_.TextAt(1), "(none)");
  EXPECT_EQ(lengths_.NumberAt(1), 0);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(RecordList, RoomForSmallImagesOnly_GivesTenAtTheFirstLargeOne) {
  uint32_t slot1 = MEMORYALLOC(1);
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Bof(6).Record(0x0042, Bytes(253)).Load(&size);
  while (MEMORYALLOC(1) != 0) continue;
  MEMORYFREE(&slot1);
  EXPECT_EQ(List(buffer, static_cast<int32_t>(size)), 10);
  EXPECT_EQ(count_, 1);
  EXPECT_EQ(offsets_.NumberAt(2), 20);
  EXPECT_EQ(lengths_.NumberAt(1), 20);
  EXPECT_EQ(lengths_.NumberAt(2), 0);
}

TEST_F(RecordList, ElementsAreCountedInSigned16Bits) {
  StreamBuilder stream;
  for (int i = 0; i < 32769; ++i) stream.Record(0x0042);
  uint32_t size = 0;
  const uint32_t buffer = stream.Load(&size);
  TestArray offsets(VT_I4, -32768, 32768);
  EXPECT_EQ(XLGetList(buffer, static_cast<int32_t>(size), &count_, offsets.Ref(), nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(count_, 32770);
  EXPECT_EQ(offsets.NumberAt(32768), 32767 * 4);
  EXPECT_EQ(offsets.NumberAt(-32767), 32768 * 4);
  EXPECT_EQ(offsets.NumberAt(-32766), 32769 * 4);
}

TEST_F(RecordList, Rings_End) {
  for (uint32_t target : {0u, 4u, 8u, 12u}) {
    EXPECT_EQ(List(StreamBuilder().Record(0x0042).Record(0x0043).Record(0x0044).Detour(target)), 0);
    EXPECT_LT(count_, 64);
    EXPECT_EQ(offsets_.NumberAt(4), 12);
    MEMORYFREE(&buffer_);
  }
}

TEST_F(RecordList, HeaderCutByTheEndOfTheSlot_IsListedWithZeros) {
  const uint32_t buffer = MEMORYALLOC(256);
  const Bytes stream = (StreamBuilder().Record(0x0042, Bytes(250)).Raw({0x43, 0x10})).Stream();
  std::memcpy(BlockBytes(buffer), stream.data(), 256);
  EXPECT_EQ(List(buffer, 256), 0);
  EXPECT_EQ(count_, 2);
  EXPECT_EQ(offsets_.NumberAt(2), 254);
  EXPECT_EQ(types_.NumberAt(2), 0x143);
  EXPECT_EQ(lengths_.NumberAt(2), 4);
  EXPECT_EQ(images_.TextAt(2), std::string("\x43\x10\0\0", 4));
}

TEST_F(RecordList, JumpOutOfTheBlock_EndsTheList) {
  for (uint32_t target : {0xFFFFFFF0u, 0x80000000u, 300u}) {
    EXPECT_EQ(List(StreamBuilder().Record(0x0042).Detour(target)), 0);
    EXPECT_EQ(count_, 2) << target;
    MEMORYFREE(&buffer_);
  }
}

}  // namespace
