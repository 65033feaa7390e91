// PatchRecord: into SLACK, round it by a detour, and what happens when the buffer can't grow.
#include <vector>

#include "foundation/biff_records.h"
#include "foundation/record_stream.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::BlockContents;
using testing::operator+;
using testing::Bytes;
using testing::StreamBuilder;
using testing::U16;
using testing::U32;

constexpr uint16_t kPatchType = 0x0AAA;

// One record of `total` bytes with the header, its payload 0xCC.
Bytes Patch(uint16_t total) {
  return U16(kPatchType) + U16(static_cast<uint16_t>(total - 4)) +
         Bytes(static_cast<size_t>(total - 4), 0xCC);
}

class PatchRecordTest : public testing::PoolTest {
 protected:
  void Load(const StreamBuilder& stream) { buffer_ = stream.Load(&size_); }

  int16_t Put(const Bytes& bytes, uint32_t at) {
    return PatchRecord(&buffer_, bytes.data(), at, static_cast<uint32_t>(bytes.size()), &size_);
  }

  Bytes Contents(uint32_t from, uint32_t to) {
    const Bytes all = BlockContents(buffer_, to);
    return Bytes(all.begin() + from, all.end());
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

TEST_F(PatchRecordTest, CountOfZero_IsDoneEvenWithoutABuffer) {
  uint8_t byte = 0;
  EXPECT_EQ(PatchRecord(&buffer_, &byte, 0, 0, &size_), kPatchDone);
  EXPECT_EQ(PatchRecord(&buffer_, &byte, 0, 0x10000, &size_), kPatchDone);  // the low 16 bits are 0
}

TEST_F(PatchRecordTest, NullBuffer_Gives1) {
  EXPECT_EQ(Put(Patch(8), 0), kPatchNoBuffer);
}

TEST_F(PatchRecordTest, SlackExactFit_LeavesNoSlack) {
  Load(StreamBuilder().Slack(20).Record(0x0042));
  const uint32_t size = size_;
  EXPECT_EQ(Put(Patch(24), 0), kPatchDone);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Contents(0, 24), Patch(24));
  EXPECT_EQ(Contents(24, 28), (Bytes{0x42, 0, 0, 0}));
}

TEST_F(PatchRecordTest, SlackFourBytesLonger_LeavesAnEmptySlack) {
  Load(StreamBuilder().Slack(20).Record(0x0042));
  EXPECT_EQ(Put(Patch(20), 0), kPatchDone);
  EXPECT_EQ(Contents(0, 20), Patch(20));
  EXPECT_EQ(Contents(20, 24), (Bytes{0xFD, 0xFE, 0, 0}));
  EXPECT_EQ(size_, 32u);
}

TEST_F(PatchRecordTest, SlackMuchLonger_KeepsTheRest) {
  Load(StreamBuilder().Slack(20, 0x55).Record(0x0042));
  EXPECT_EQ(Put(Patch(8), 0), kPatchDone);
  EXPECT_EQ(Contents(8, 12), (Bytes{0xFD, 0xFE, 12, 0}));
  EXPECT_EQ(Contents(12, 24), Bytes(12, 0x55));
}

TEST_F(PatchRecordTest, SlackOneToThreeBytesLongerThanFits_TakesTheDetour) {
  for (uint16_t n : std::initializer_list<uint16_t>{21, 22, 23, 25}) {
    Load(StreamBuilder().Slack(20).Record(0x0042));
    const uint32_t size = size_;
    EXPECT_EQ(Put(Patch(n), 0), kPatchDone);
    EXPECT_EQ(size_, size + n + 32u) << n;  // the patch, 24 displaced bytes, a RESUME
    EXPECT_EQ(Contents(0, 8), (Bytes{0xFF, 0xFE, 4, 0}) + U32(size)) << n;
    MEMORYFREEALL();
  }
}

TEST_F(PatchRecordTest, CarriedSlack_CanBeFilledLater) {
  Load(StreamBuilder().Slack(20).Record(0x0042));
  const uint32_t area = size_;
  Put(Patch(25), 0);
  const uint32_t size = size_;
  EXPECT_EQ(Put(Patch(24), area + 25), kPatchDone);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(testing::WalkedStream(buffer_), Patch(25) + Patch(24) + (Bytes{0x42, 0, 0, 0}));
}

TEST_F(PatchRecordTest, Detour_LaysPatchDisplacedBytesAndResume) {
  StreamBuilder stream;
  stream.Record(0x0042, Bytes(36))
      .Record(0x0203, {1, 2, 3, 4, 5, 6, 7, 8})
      .Record(0x0043, Bytes(940))
      .BufEnd();
  Load(stream);
  ASSERT_EQ(size_, 1000u);
  EXPECT_EQ(Put(Patch(20), 40), kPatchDone);
  EXPECT_EQ(size_, 1040u);
  EXPECT_EQ(Contents(1000, 1020), Patch(20));
  EXPECT_EQ(Contents(1020, 1032), (Bytes{0x03, 0x02, 8, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(Contents(1032, 1040), (Bytes{0xFA, 0xFE, 4, 0}) + U32(52));
  EXPECT_EQ(Contents(40, 48), (Bytes{0xFF, 0xFE, 4, 0}) + U32(1000));
  EXPECT_EQ(Contents(48, 52), (Bytes{5, 6, 7, 8}));  // dead bytes stay
}

TEST_F(PatchRecordTest, ShortRecord_DisplacesItsNeighbourToo) {
  StreamBuilder stream;
  stream.Record(0x0042, Bytes(36)).Record(0x0001, {1, 2}).Record(0x0002, {1, 2, 3, 4, 5, 6}).BufEnd();
  Load(stream);
  const uint32_t area = size_;
  EXPECT_EQ(Put(Patch(8), 40), kPatchDone);
  EXPECT_EQ(Contents(area + 8, area + 24), (Bytes{1, 0, 2, 0, 1, 2, 2, 0, 6, 0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(Contents(area + 24, area + 32), (Bytes{0xFA, 0xFE, 4, 0}) + U32(56));
}

TEST_F(PatchRecordTest, RecordAsLongAsADetour_IsDisplacedAlone) {
  Load(StreamBuilder().Record(0x0001, {1, 2, 3, 4}).Record(0x0002, {5, 6}).BufEnd());
  const uint32_t area = size_;
  EXPECT_EQ(Put(Patch(9), 0), kPatchDone);
  EXPECT_EQ(size_, area + 9 + 8 + 8);
  EXPECT_EQ(Contents(area + 9, size_), (Bytes{1, 0, 4, 0, 1, 2, 3, 4, 0xFA, 0xFE, 4, 0, 8, 0, 0, 0}));
  EXPECT_EQ(Contents(8, 14), (Bytes{2, 0, 2, 0, 5, 6}));
}

TEST_F(PatchRecordTest, TwoEmptyRecords_MakeRoomForTheDetourExactly) {
  Load(StreamBuilder().Record(0x0001).Record(0x0002).Record(0x0003).BufEnd());
  EXPECT_EQ(Put(Patch(8), 0), kPatchDone);
  EXPECT_EQ(size_, 16u + 8 + 8 + 8);
  EXPECT_EQ(Contents(8, 12), (Bytes{3, 0, 0, 0}));
  EXPECT_EQ(testing::WalkedStream(buffer_), Patch(8) + (Bytes{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}));
}

TEST_F(PatchRecordTest, ShortRecordBeforeADetour_CarriesTheDetourAlong) {
  Load(StreamBuilder().Record(0x0001).Record(0x0002, Bytes(4)).Record(0x0003).BufEnd());
  Put(Patch(8), 4);   // a DETOUR now stands at 4
  Put(Patch(12), 0);  // and is displaced with the record at 0
  EXPECT_EQ(testing::WalkedStream(buffer_),
            Patch(12) + (Bytes{1, 0, 0, 0}) + Patch(8) + (Bytes{2, 0, 4, 0, 0, 0, 0, 0, 3, 0, 0, 0}));
}

TEST_F(PatchRecordTest, SecondInsertionAtAnOffset_ComesFirst) {
  Load(StreamBuilder().Record(0x0042, Bytes(4)).BufEnd());
  Put(Patch(8), 0);
  const uint32_t area = size_;
  Put(Patch(12), 0);
  EXPECT_EQ(Contents(0, 8), (Bytes{0xFF, 0xFE, 4, 0}) + U32(area));
  EXPECT_EQ(testing::WalkedStream(buffer_), Patch(12) + Patch(8) + (Bytes{0x42, 0, 4, 0, 0, 0, 0, 0}));
}

TEST_F(PatchRecordTest, ReplacedRecord_LeavesTheWalk) {
  Load(StreamBuilder().Record(0x0042, Bytes(4)).Record(0x0043).BufEnd());
  MarkRecordSlack(OpenBlock(buffer_), 0);
  EXPECT_EQ(Put(Patch(8), 0), kPatchDone);
  EXPECT_EQ(size_, 16u);
  EXPECT_EQ(testing::WalkedStream(buffer_), Patch(8) + (Bytes{0x43, 0, 0, 0}));
}

TEST_F(PatchRecordTest, SeveralRecordsAtOnce_AllEnterTheWalk) {
  Load(StreamBuilder().Record(0x0042, Bytes(4)).BufEnd());
  EXPECT_EQ(Put(Patch(8) + Patch(9), 0), kPatchDone);
  EXPECT_EQ(testing::WalkedStream(buffer_), Patch(8) + Patch(9) + (Bytes{0x42, 0, 4, 0, 0, 0, 0, 0}));
}

TEST_F(PatchRecordTest, SlackOfNegativeLength_IsNotTakenForRoom) {
  Load(StreamBuilder().Slack(0x8000).BufEnd());
  const Bytes before = BlockContents(buffer_, size_);
  EXPECT_EQ(Put(Patch(8), 0), kPatchNoBuffer);  // 32772 displaced bytes can't be carried
  EXPECT_EQ(BlockContents(buffer_, size_), before);
}

TEST_F(PatchRecordTest, EofBeforeBufEnd_BothAreDisplaced) {
  Load(StreamBuilder().Record(0x0042).Record(0x000A).BufEnd());
  EXPECT_EQ(Put(Patch(8), 4), kPatchDone);
  EXPECT_EQ(testing::WalkedStream(buffer_), (Bytes{0x42, 0, 0, 0}) + Patch(8) + (Bytes{0x0A, 0, 0, 0}));
}

TEST_F(PatchRecordTest, AtTheBufEndOfAnUnpatchedBuffer_TheWalkMeetsThePatchThenTheEnd) {
  Load(StreamBuilder().Record(0x0042).BufEnd());
  EXPECT_EQ(Put(Patch(8), 4), kPatchDone);
  EXPECT_EQ(size_, 12u + 8 + 8 + 8);  // the DETOUR reaches 4 bytes behind the old end
  EXPECT_EQ(testing::WalkedStream(buffer_), (Bytes{0x42, 0, 0, 0}) + Patch(8));
}

TEST_F(PatchRecordTest, OffsetOutsideTheStream_Gives1AndChangesNothing) {
  Load(StreamBuilder().Record(0x0042).BufEnd());
  const Bytes before = BlockContents(buffer_, 256);
  for (uint32_t at : {8u, 100u, 256u, 0xFFFFFFFFu}) EXPECT_EQ(Put(Patch(8), at), kPatchNoBuffer) << at;
  EXPECT_EQ(BlockContents(buffer_, 256), before);
  EXPECT_EQ(size_, 8u);
}

TEST_F(PatchRecordTest, CountNegativeIn16Bits_Gives1AndChangesNothing) {
  Load(StreamBuilder().Slack(20).BufEnd());
  const Bytes before = BlockContents(buffer_, size_);
  const Bytes big(0x8000, 1);
  EXPECT_EQ(Put(big, 0), kPatchNoBuffer);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
}

TEST_F(PatchRecordTest, LargestPatch_IsLaidDown) {
  Load(StreamBuilder().Record(0x0042, Bytes(4)).BufEnd());
  EXPECT_EQ(Put(Patch(32767), 0), kPatchDone);
  EXPECT_EQ(testing::WalkedStream(buffer_).size(), 32767u + 8);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 4);
}

TEST_F(PatchRecordTest, GrowthBeyondTheSlot_MovesTheBuffer) {
  Load(StreamBuilder().Record(0x0042, Bytes(240)).BufEnd());
  const uint32_t old = buffer_;
  EXPECT_EQ(Put(Patch(20), 0), kPatchDone);
  EXPECT_NE(buffer_, old);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 3);  // 248 + 20 + 244 + 8 = 520 bytes
  EXPECT_EQ(MEMORYSIZE(buffer_), size_);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(PatchRecordTest, NoLargerSlot_Gives2AndReleasesTheBuffer) {
  Load(StreamBuilder().Record(0x0042, Bytes(240)).BufEnd());
  for (int i = 0; i < 8; ++i) MEMORYALLOC(1);
  EXPECT_EQ(Put(Patch(20), 0), kPatchNoMemory);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 8u);
  EXPECT_EQ(size_, 248u);
}

TEST_F(PatchRecordTest, RecordThatClaimsMoreThanTheStreamHas_StaysInsideTheBlock) {
  for (uint16_t length : std::initializer_list<uint16_t>{8, 100, 1000, 32763}) {
    StreamBuilder stream;
    stream.Raw(U16(0x0042) + U16(length)).BufEnd();
    Load(stream);
    EXPECT_EQ(Put(Patch(8), 0), kPatchDone) << length;
    EXPECT_EQ(Contents(0, 4), (Bytes{0xFF, 0xFE, 4, 0}));
    MEMORYFREEALL();
  }
}

}  // namespace
}  // namespace tolvenar
