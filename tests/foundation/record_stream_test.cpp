// Record stream: the gate, the record tests, the walk and the small helpers. Patches and appends have tests
// of their own.
#include "foundation/record_stream.h"

#include <array>
#include <cstring>
#include <vector>

#include "foundation/biff_records.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::operator+;
using testing::Bytes;
using testing::StreamBuilder;
using testing::Text;
using testing::U32;

class RecordStreamTest : public testing::PoolTest {
 protected:
  // Offsets that a walk of the whole buffer visits, up to and with its BUFEND.
  static std::vector<uint32_t> Visited(uint32_t buffer, uint32_t size) {
    std::vector<uint32_t> offsets;
    const Block block = OpenBlock(buffer);
    for (Walk walk = StartWalk(block, 0); walk.at < size - 1 && !walk.ended; Step(&walk)) {
      offsets.push_back(walk.at);
      if (IsPrivate(block, walk.at, kLowBufEnd)) break;
    }
    return offsets;
  }
};

TEST_F(RecordStreamTest, OpenBlock_SpansTheCapacityOfTheSlot) {
  const uint32_t handle = MEMORYALLOC(10);
  EXPECT_EQ(OpenBlock(handle).extent, 256u);
  EXPECT_EQ(OpenBlock(handle).base, BlockBytes(handle));
}

TEST_F(RecordStreamTest, OpenBlock_OfWhatIsNoLiveBlockIsEmpty) {
  const uint32_t handle = MEMORYALLOC(10);
  for (uint32_t value : {0u, handle + 1, 4096u}) {
    EXPECT_EQ(OpenBlock(value).extent, 0u);
    EXPECT_EQ(U32At(OpenBlock(value), 0), 0u);
  }
}

TEST_F(RecordStreamTest, Reads_NotWhollyInsideGiveZero) {
  const uint32_t handle = MEMORYALLOC(256);
  std::memset(BlockBytes(handle), 0xFF, 256);
  const Block block = OpenBlock(handle);
  EXPECT_EQ(U8At(block, 255), 0xFF);
  EXPECT_EQ(U8At(block, 256), 0);
  EXPECT_EQ(U16At(block, 254), 0xFFFF);
  EXPECT_EQ(U16At(block, 255), 0);
  EXPECT_EQ(U32At(block, 252), 0xFFFFFFFFu);
  EXPECT_EQ(U32At(block, 253), 0u);
  EXPECT_EQ(U32At(block, 0xFFFFFFFFu), 0u);
  EXPECT_EQ(F64At(block, 249), 0.0);
}

TEST_F(RecordStreamTest, Writes_NotWhollyInsideDoNothing) {
  const uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  PutU32(block, 253, 0xFFFFFFFF);
  PutU16(block, 255, 0xFFFF);
  PutU8(block, 256, 0xFF);
  PutU32(block, 0xFFFFFFFE, 0xFFFFFFFF);
  for (uint32_t i = 0; i < 260; ++i) EXPECT_EQ(BlockBytes(handle)[i], 0);
  PutU32(block, 252, 0x04030201);
  EXPECT_EQ(BlockBytes(handle)[255], 4);
}

TEST_F(RecordStreamTest, CopyOut_FillsUpWithZeros) {
  const uint32_t handle = MEMORYALLOC(256);
  std::memset(BlockBytes(handle), 7, 256);
  uint8_t out[8];
  CopyOut(OpenBlock(handle), 252, out, 8);
  const uint8_t want[8] = {7, 7, 7, 7, 0, 0, 0, 0};
  EXPECT_EQ(std::memcmp(out, want, 8), 0);
}

TEST_F(RecordStreamTest, CopyIn_DropsWhatFallsBehind) {
  const uint32_t handle = MEMORYALLOC(256);
  const uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  CopyIn(OpenBlock(handle), 253, bytes, 8);
  CopyIn(OpenBlock(handle), 300, bytes, 8);
  EXPECT_EQ(BlockBytes(handle)[255], 3);
  EXPECT_EQ(BlockBytes(handle)[256], 0);
}

TEST_F(RecordStreamTest, CopyIn_TakesASourceInTheBlockItself) {
  const uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  for (uint8_t i = 0; i < 8; ++i) PutU8(block, i, i);
  CopyIn(block, 2, BlockBytes(handle), 8);
  EXPECT_EQ(testing::BlockContents(handle, 10), (Bytes{0, 1, 0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(RecordStreamTest, Reads_OfAWholeFieldAtTheEnd) {
  const uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  PutU32(block, 252, 0xC0000000);
  EXPECT_EQ(F64At(block, 248), -2.0);
  EXPECT_EQ(I16At(block, 254), -16384);
  EXPECT_EQ(F64At(block, 249), 0.0);
}

TEST_F(RecordStreamTest, BytesInside_CountsUpToTheEnd) {
  const Block block = OpenBlock(MEMORYALLOC(256));
  EXPECT_EQ(BytesInside(block, 0, 256), 256u);
  EXPECT_EQ(BytesInside(block, 250, 10), 6u);
  EXPECT_EQ(BytesInside(block, 250, 3), 3u);
  EXPECT_EQ(BytesInside(block, 256, 1), 0u);
  EXPECT_EQ(BytesInside(block, 0xFFFFFFFF, 0xFFFFFFFF), 0u);
}

TEST_F(RecordStreamTest, PayloadOf_IsABlockOfItsOwn) {
  uint32_t size = 0;
  const uint32_t handle =
      StreamBuilder().Record(0x0042).Record(0x0043, {7, 8, 9}).Record(0x0044, {1}).Load(&size);
  const Block payload = PayloadOf(OpenBlock(handle), 4);
  EXPECT_EQ(payload.base, BlockBytes(handle) + 8);
  EXPECT_EQ(payload.extent, 3u);
  EXPECT_EQ(U8At(payload, 2), 9);
  EXPECT_EQ(U8At(payload, 3), 0);
  EXPECT_EQ(PayloadOf(OpenBlock(handle), 0).extent, 0u);
  EXPECT_EQ(PayloadOf(OpenBlock(handle), 0).base, nullptr);
}

TEST_F(RecordStreamTest, PayloadOf_EndsWhereTheBlockDoes) {
  const Block block = OpenBlock(MEMORYALLOC(256));
  PutU16(block, 240 + 2, 100);
  EXPECT_EQ(PayloadOf(block, 240).extent, 12u);
  PutU16(block, 252 + 2, 100);
  EXPECT_EQ(PayloadOf(block, 252).extent, 0u);
  EXPECT_EQ(PayloadOf(block, 1000).extent, 0u);
}

TEST_F(RecordStreamTest, RecordTests_AtTheLastByteOfTheBlock) {
  const Block block = OpenBlock(MEMORYALLOC(256));
  PutU8(block, 255, 0xFD);
  EXPECT_TRUE(IsPlain(block, 255, 0xFD));  // the high byte reads as zero
  EXPECT_FALSE(IsChart(block, 255, 0xFD));
  EXPECT_FALSE(IsPrivate(block, 255, 0xFD));
  EXPECT_TRUE(IsPlain(block, 256, 0));
  EXPECT_FALSE(IsPlain(block, 256, 0xFD));
}

TEST_F(RecordStreamTest, PutPrivateHeader_TouchesTheHeaderOnly) {
  const uint32_t handle = MEMORYALLOC(256);
  MEMORYSET1(&handle, 8, 0x55);
  PutPrivateHeader(OpenBlock(handle), 2, kLowSlack, 0x0102);
  EXPECT_EQ(testing::BlockContents(handle, 8), (Bytes{0x55, 0x55, 0xFD, 0xFE, 2, 1, 0x55, 0x55}));
}

struct TypeCase {
  const char* label;
  uint16_t type;
  bool plain, chart, private_record;
};

class RecordTests : public RecordStreamTest, public ::testing::WithParamInterface<TypeCase> {};

TEST_P(RecordTests, LowByte09) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Record(GetParam().type).Load(&size));
  EXPECT_EQ(IsPlain(block, 0, kLowBof), GetParam().plain) << GetParam().label;
  EXPECT_EQ(IsChart(block, 0, kLowBof), GetParam().chart) << GetParam().label;
  EXPECT_EQ(IsPrivate(block, 0, kLowBof), GetParam().private_record) << GetParam().label;
}

INSTANTIATE_TEST_SUITE_P(Types, RecordTests,
                         ::testing::Values(TypeCase{"BIFF2 BOF", 0x0009, true, false, false},
                                           TypeCase{"BIFF3 BOF", 0x0209, true, false, false},
                                           TypeCase{"BIFF4 BOF", 0x0409, true, false, false},
                                           TypeCase{"BIFF5 BOF", 0x0809, true, false, false},
                                           TypeCase{"no BOF, bit clear", 0xEF09, true, false, false},
                                           TypeCase{"chart record", 0x1009, false, true, false},
                                           TypeCase{"bit set", 0x3309, false, true, false},
                                           TypeCase{"private", 0xFE09, false, true, true},
                                           TypeCase{"nearly private", 0xFF09, false, true, false},
                                           TypeCase{"other low byte", 0x080A, false, false, false}));

TEST_F(RecordStreamTest, NextRecord_StepsOverHeaderAndPayload) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Record(0x0042, Bytes(6)).Load(&size));
  EXPECT_EQ(NextRecord(block, 0), 10u);
}

TEST_F(RecordStreamTest, NextRecord_LengthIsUnsigned) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Record(0x0042, Bytes(0xFFFF)).Load(&size));
  EXPECT_EQ(NextRecord(block, 0), 0x10003u);
}

TEST_F(RecordStreamTest, NextRecord_OfBufEndIsTheFirstPatchArea) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Record(0x0042).BufEnd().Load(&size));
  EXPECT_EQ(NextRecord(block, 4), 8u);
}

TEST_F(RecordStreamTest, NextRecord_OfJumpsIsTheirTarget) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Detour(0x1234).Resume(0x5678).Load(&size));
  EXPECT_EQ(NextRecord(block, 0), 0x1234u);
  EXPECT_EQ(NextRecord(block, 8), 0x5678u);
}

TEST_F(RecordStreamTest, NextRecord_OnlyHighByteFEJumps) {
  for (uint16_t type : std::initializer_list<uint16_t>{0x10FF, 0xFDFF, 0x10FA, 0xFFFA, 0xFEFD, 0xFEF8}) {
    uint32_t size = 0;
    uint32_t buffer = StreamBuilder().Record(type, U32(0x1234)).Load(&size);
    EXPECT_EQ(NextRecord(OpenBlock(buffer), 0), 8u) << std::hex << type;
    MEMORYFREE(&buffer);
  }
}

TEST_F(RecordStreamTest, NextRecord_BehindTheBlockIsAnEmptyRecord) {
  uint32_t size = 0;
  const Block block = OpenBlock(StreamBuilder().Record(0x0042).Load(&size));
  EXPECT_EQ(NextRecord(block, 1000), 1004u);
}

TEST_F(RecordStreamTest, Walk_FollowsDetourAndResumeInLogicalOrder) {
  StreamBuilder stream;
  stream.Record(0x0001).Detour(20).Record(0x0002).BufEnd();  // 0, 4, 12, 16
  stream.Record(0x0003).Resume(12);                          // 20, 24
  uint32_t size = 0;
  const uint32_t buffer = stream.Load(&size);
  EXPECT_EQ(Visited(buffer, size), (std::vector<uint32_t>{0, 4, 20, 24, 12, 16}));
}

TEST_F(RecordStreamTest, Walk_VisitsSlackAndStopsAtBufEnd) {
  uint32_t size = 0;
  const uint32_t buffer =
      StreamBuilder().Slack(3).Record(0x0001).BufEnd().Record(0x0002).BufEnd().Load(&size);
  EXPECT_EQ(Visited(buffer, size), (std::vector<uint32_t>{0, 7, 11}));
}

TEST_F(RecordStreamTest, Walk_OfABlockFullOfEmptyRecordsReachesItsEnd) {
  const uint32_t handle = MEMORYALLOC(256);
  uint32_t visited = 0;
  Walk walk = StartWalk(OpenBlock(handle), 0);
  for (; walk.at < 256 && !walk.ended; Step(&walk)) ++visited;
  EXPECT_EQ(visited, 64u);
  EXPECT_FALSE(walk.ended);
}

TEST_F(RecordStreamTest, Walk_BehindTheBlockEndsWithItsBudget) {
  const uint32_t handle = MEMORYALLOC(256);
  uint32_t steps = 0;
  for (Walk walk = StartWalk(OpenBlock(handle), 0); !walk.ended; Step(&walk)) ++steps;
  EXPECT_EQ(steps, 65u);
}

TEST_F(RecordStreamTest, Walk_OfNoBlockEndsAtTheFirstStep) {
  Walk walk = StartWalk(OpenBlock(0), 0);
  Step(&walk);
  EXPECT_TRUE(walk.ended);
}

struct RingCase {
  const char* label;
  std::array<uint32_t, 3> targets;  // of DETOURs at 0, 8, 16
};

class Rings : public RecordStreamTest, public ::testing::WithParamInterface<RingCase> {};

TEST_P(Rings, EndWithinThreeTurns) {
  const auto& targets = GetParam().targets;
  uint32_t size = 0;
  const uint32_t buffer =
      StreamBuilder().Detour(targets[0]).Detour(targets[1]).Detour(targets[2]).Load(&size);
  uint32_t steps = 0;
  for (Walk walk = StartWalk(OpenBlock(buffer), 0); walk.at < size && !walk.ended; Step(&walk)) ++steps;
  EXPECT_LE(steps, 10u) << GetParam().label;
}

INSTANTIATE_TEST_SUITE_P(Detours, Rings,
                         ::testing::Values(RingCase{"names itself", {0, 0, 0}},
                                           RingCase{"ring of two", {8, 0, 0}},
                                           RingCase{"ring of three", {8, 16, 0}},
                                           RingCase{"tail into a ring", {8, 16, 8}}));

TEST_F(RecordStreamTest, Walk_RingAtFullLengthEnds) {
  StreamBuilder stream;
  for (int i = 0; i < 10000; ++i) stream.Record(0x0042, Bytes(4));
  stream.Detour(0);
  uint32_t size = 0;
  uint32_t steps = 0;
  for (Walk walk = StartWalk(OpenBlock(stream.Load(&size)), 0); !walk.ended; Step(&walk)) ++steps;
  EXPECT_GE(steps, 10000u);
  EXPECT_LE(steps, 40000u);
}

TEST_F(RecordStreamTest, IsFollowedBy10DB_LooksBehindTheRecord) {
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Record(0x1001, Bytes(2)).Record(0x10DB).Record(0x00DB).Load(&size);
  EXPECT_EQ(IsFollowedBy10DB(buffer, 0), 1);
  EXPECT_EQ(IsFollowedBy10DB(buffer, 6), 0);  // a 0x00DB lacks the bit
  EXPECT_EQ(IsFollowedBy10DB(buffer, 10), 0);
}

TEST_F(RecordStreamTest, IsFollowedBy10DB_PassesOverJumpsButNotSlack) {
  uint32_t size = 0;
  uint32_t buffer = StreamBuilder().Record(0x1001).Detour(12).Resume(20).Record(0x30DB).Load(&size);
  EXPECT_EQ(IsFollowedBy10DB(buffer, 0), 1);
  MEMORYFREE(&buffer);
  buffer = StreamBuilder().Record(0x1001).Slack(0).Record(0x10DB).Load(&size);
  EXPECT_EQ(IsFollowedBy10DB(buffer, 0), 0);
}

TEST_F(RecordStreamTest, IsFollowedBy10DB_InARingOfJumpsIs0) {
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Record(0x1001).Detour(12).Resume(4).Load(&size);
  EXPECT_EQ(IsFollowedBy10DB(buffer, 0), 0);
}

TEST_F(RecordStreamTest, MarkRecordSlack_ChangesTheTypeOnly) {
  uint32_t size = 0;
  const uint32_t buffer = StreamBuilder().Record(0x0203, {1, 2, 3}).Load(&size);
  MarkRecordSlack(OpenBlock(buffer), 0);
  EXPECT_EQ(testing::BlockContents(buffer, 7), (Bytes{0xFD, 0xFE, 3, 0, 1, 2, 3}));
}

struct NameCase {
  int32_t id;
  const char* name;
};

TEST_F(RecordStreamTest, StreamNameFromId_IsPaddedWithBlanks) {
  for (const NameCase& c :
       {NameCase{0, "0       "}, NameCase{123, "123     "}, NameCase{12345678, "12345678"},
        NameCase{-7, "-7      "}, NameCase{123456789, "12345678"}}) {
    uint8_t name[9] = {};
    StreamNameFromId(name, c.id);
    EXPECT_STREQ(reinterpret_cast<const char*>(name), c.name) << c.id;
  }
}

TEST_F(RecordStreamTest, ParseStreamId_StopsAtTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(ParseStreamId("123     "), 123);
  EXPECT_EQ(ParseStreamId("0       "), 0);
  EXPECT_EQ(ParseStreamId("12345678"), 12345678);
  EXPECT_EQ(ParseStreamId("45x"), 45);
  EXPECT_EQ(ParseStreamId(""), 0);
  EXPECT_EQ(ParseStreamId("Contents"), 0);
}

}  // namespace
}  // namespace tolvenar
