// Patches against a model: a list of records that are inserted, replaced and taken out. However often a stream is patched, and wherever,
// its walk reads like the list.
#include <random>
#include <vector>

#include "foundation/record_stream.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::StreamBuilder;

class PatchModelTest : public testing::PoolTest {
 protected:
  uint32_t Random(uint32_t below) { return static_cast<uint32_t>(source_() % below); }

  // A record that differs from all others, header only now and then. Its low bytes are none of the private ones.
  Bytes NewRecord() {
    ++number_;
    const uint16_t type = static_cast<uint16_t>(number_ % 0xF0 << 8 | 0x42);
    return StreamBuilder()
        .Record(type, Bytes(Random(4) == 0 ? Random(4) : Random(40), static_cast<uint8_t>(number_)))
        .Stream();
  }

  void Load(uint32_t records) {
    StreamBuilder stream;
    for (uint32_t i = 0; i < records; ++i) {
      model_.push_back(NewRecord());
      stream.Raw(model_.back());
    }
    buffer_ = stream.Load(&size_);
  }

  // Where the walk meets the record of that number, SLACK left out.
  uint32_t Place(size_t number) const {
    const Block block = OpenBlock(buffer_);
    Walk walk = StartWalk(block, 0);
    for (;; Step(&walk)) {
      if (IsJump(block, walk.at) || IsPrivate(block, walk.at, kLowSlack)) continue;
      if (number-- == 0) return walk.at;
    }
  }

  void Put(uint32_t at, const Bytes& bytes) {
    ASSERT_EQ(PatchRecord(&buffer_, bytes.data(), at, static_cast<uint32_t>(bytes.size()), &size_),
              kPatchDone);
  }

  // One edit of the stream and of the list: a record more, another in the place of one, or one less.
  void Edit() {
    const size_t number = Random(static_cast<uint32_t>(model_.size()));
    const auto entry = model_.begin() + static_cast<ptrdiff_t>(number);
    const uint32_t at = Place(number);
    const uint32_t kind = Random(4);
    if (kind < 3 || model_.size() < 3) {
      const Bytes record = NewRecord();
      if (kind != 0) MarkRecordSlack(OpenBlock(buffer_), at);
      Put(at, record);
      if (kind == 0) model_.insert(entry, record);
      if (kind != 0) *entry = record;
    } else {
      MarkRecordSlack(OpenBlock(buffer_), at);
      model_.erase(entry);
    }
  }

  void ExpectReadsLikeTheModel() {
    Bytes expected;
    for (const Bytes& record : model_) expected.insert(expected.end(), record.begin(), record.end());
    ASSERT_EQ(testing::Hex(testing::WalkedStream(buffer_)), testing::Hex(expected));
  }

  std::mt19937 source_{5};
  uint32_t number_ = 0;
  std::vector<Bytes> model_;
  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

TEST_F(PatchModelTest, AnyEdits_TheWalkReadsLikeTheList) {
  for (int turn = 0; turn < 150; ++turn) {
    MEMORYFREEALL();
    model_.clear();
    Load(1 + Random(12));
    for (int edit = 0; edit < 40 && !HasFatalFailure(); ++edit) {
      Edit();
      ExpectReadsLikeTheModel();
    }
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace tolvenar
