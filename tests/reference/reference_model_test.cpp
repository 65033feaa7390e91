// Any run of creations, records, replacements, deletions and compactions, beside a model that holds the objects as lists: what the walks
// meet is what the model holds, after every step.
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "reference/reference_fixture.h"

namespace tolvenar::testing {
namespace {

struct ModelObject {
  uint16_t kind_word;
  uint16_t id;
  Bytes head, end;
  std::vector<Bytes> records;
  bool stale = false;  // a chart edit whose entry has been through a compaction
};

class ReferenceModelTest : public ReferenceTest {
 protected:
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }

  void Restart(uint32_t seed) {
    MEMORYFREEALL();
    random_.seed(seed);
    objects_.clear();
    graph_ = 0;
    Load(kNewStream);
  }

  // A record of 5 to 16 bytes, so that many are shorter than a jump. Its first byte is its key; the rest is never the same.
  Bytes NewRecord(uint8_t key) {
    Bytes payload = {key};
    const uint32_t more = Below(12);
    for (uint32_t i = 0; i < more; ++i) payload.push_back(static_cast<uint8_t>(random_()));
    return Bytes{0xE5, 0x10, static_cast<uint8_t>(payload.size()), 0} + payload;
  }

  void CreateAny() {
    ModelObject object;
    const uint32_t kind = Below(5);
    if (kind == 4) {  // the pair of number and id may be there already
      const uint8_t number_less_1 = static_cast<uint8_t>(Below(2));
      object.kind_word = static_cast<uint16_t>(kKindEdit + number_less_1 * 256);
      object.id = static_cast<uint16_t>(4 + Below(2));
      object.head = Bytes{0xFB, 0x10, 5, 0, number_less_1} + U16(object.id) + U16(++graph_);
      object.end = kEditEnd;
    } else {
      object.kind_word = kind % 2 == 0 ? kKindTable : kKindGraph;
      object.id = LowestFreeRefId(buffer_, object.kind_word);
      object.head = kind % 2 == 0 ? TableHead(object.id) : GraphHead(object.id);
      object.end = kind % 2 == 0 ? kTableEnd : kGraphEnd;
    }
    ASSERT_EQ(Create(object.id, object.kind_word, object.head + object.end), 0);
    objects_.push_back(object);
  }

  // The object's records as a walk meets them, and the offsets of the last one of that key and of the end.
  struct Seen {
    std::vector<Bytes> records;
    uint32_t noted = kNoRecord;
    uint32_t end = 0;
  };
  Seen Look(const ModelObject& object, int key = -1) {
    Seen seen;
    ObjectWalk walk;
    EXPECT_EQ(StartObject(buffer_, object.id, object.kind_word, &walk), kRefDone);
    for (; !walk.ended; StepObject(&walk)) {
      const uint32_t at = walk.walk.at;
      if (!IsChart(Stream(), at, 0xE5)) continue;
      Bytes record(kHeaderSize + LengthAt(Stream(), at));
      CopyOut(Stream(), at, record.data(), static_cast<uint32_t>(record.size()));
      if (record[4] == key) seen.noted = at;
      seen.records.push_back(record);
    }
    EXPECT_TRUE(walk.seen);
    EXPECT_FALSE(walk.lost || walk.at_ref_end);
    seen.end = walk.walk.at;
    return seen;
  }

  // Replaces the last record of a key, or appends one.
  void PutAny(ModelObject* object) {
    const uint8_t key = static_cast<uint8_t>(Below(4));
    const Bytes bytes = NewRecord(key);
    const Seen seen = Look(*object, key);
    uint32_t record = MEMORYALLOC(static_cast<int32_t>(bytes.size()));
    CopyIn(OpenBlock(record), 0, bytes.data(), static_cast<uint32_t>(bytes.size()));
    ASSERT_EQ(
        PutObjectRecord(&buffer_, &size_, seen.noted, seen.end, &record, static_cast<uint32_t>(bytes.size())),
        kRefDone);
    const auto old = std::find_if(object->records.rbegin(), object->records.rend(),
                                  [&](const Bytes& one) { return one[4] == key; });
    ASSERT_EQ(seen.noted != kNoRecord, old != object->records.rend());
    if (old == object->records.rend()) {
      object->records.push_back(bytes);
    } else {
      *old = bytes;
    }
  }

  void DropRecord(ModelObject* object) {
    const uint8_t key = static_cast<uint8_t>(Below(4));
    const Seen seen = Look(*object, key);
    if (seen.noted == kNoRecord) return;
    MarkRecordSlack(Stream(), seen.noted);
    const auto old = std::find_if(object->records.rbegin(), object->records.rend(),
                                  [&](const Bytes& one) { return one[4] == key; });
    object->records.erase(std::next(old).base());
  }

  // Takes a table or graph out: entry, head, content and end become SLACK, and the jumps stay.
  void DropObject(size_t index) {
    const ModelObject object = objects_[index];
    ObjectWalk walk;
    ASSERT_EQ(StartObject(buffer_, object.id, object.kind_word, &walk), kRefDone);
    RetireRefEntry(buffer_, object.id, object.kind_word);
    for (; !walk.ended; StepObject(&walk)) {
      if (walk.seen && !IsJump(Stream(), walk.walk.at)) MarkRecordSlack(Stream(), walk.walk.at);
    }
    MarkRecordSlack(Stream(), walk.walk.at);
    objects_.erase(objects_.begin() + static_cast<ptrdiff_t>(index));
  }

  void Refresh() {
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    for (ModelObject& object : objects_) object.stale = (object.kind_word & 0xFF) == kKindEdit;
    Bytes body;
    for (const ModelObject& object : objects_) {
      body = body + object.head;
      for (const Bytes& record : object.records) body = body + record;
      body = body + object.end;
    }
    const Bytes start = RefRecord(0xFF, 8 + static_cast<uint32_t>(body.size())) + body + RefRecord(0xDA, 0) +
                        RefRecord(0xDB, 0);
    const Bytes found = BlockContents(buffer_, size_);
    ASSERT_EQ(found.size(), start.size() + 12 * objects_.size() + 8 + 4);
    EXPECT_EQ(Hex(Bytes(found.begin(), found.begin() + static_cast<ptrdiff_t>(start.size()))), Hex(start));
  }

  void StepAny() {
    const uint32_t what = Below(20);
    if (what < 4 || objects_.empty()) return CreateAny();
    if (what == 4) return Refresh();
    const size_t index = Below(static_cast<uint32_t>(objects_.size()));
    if ((objects_[index].kind_word & 0xFF) == kKindEdit) return;
    if (what == 5) return DropObject(index);
    if (what < 8) return DropRecord(&objects_[index]);
    PutAny(&objects_[index]);
  }

  // True when the entry that a lookup finds leads to the head of the first edit of that name.
  bool EditIsFound(const ModelObject& edit) {
    const auto first = std::find_if(objects_.begin(), objects_.end(), [&](const ModelObject& one) {
      return one.kind_word == edit.kind_word && one.id == edit.id;
    });
    if (first->stale) return true;
    const int32_t at = FindRefEntry(buffer_, edit.id, edit.kind_word);
    Walk walk = StartWalk(Stream(), static_cast<uint32_t>(at));
    while (at > 0 && !walk.ended && IsJump(Stream(), walk.at)) Step(&walk);
    Bytes head(kEditHeadSize);
    CopyOut(Stream(), walk.at, head.data(), kEditHeadSize);
    return at > 0 && head == first->head;
  }

  void ExpectModel() {
    for (const ModelObject& object : objects_) {
      if ((object.kind_word & 0xFF) == kKindEdit) {
        ASSERT_TRUE(EditIsFound(object)) << object.kind_word << " " << object.id;
      } else {
        ASSERT_EQ(Look(object).records, object.records) << object.kind_word << " " << object.id;
      }
    }
    ASSERT_EQ(LiveBlocks(), 1u);
  }

  std::mt19937 random_;
  std::vector<ModelObject> objects_;
  uint16_t graph_ = 0;
};

TEST_F(ReferenceModelTest, WalksMeetWhatTheModelHoldsAfterEveryStep) {
  for (uint32_t seed = 1; seed <= 120; ++seed) {
    Restart(seed);
    for (int step = 0; step < 150; ++step) {
      StepAny();
      ExpectModel();
      if (HasFatalFailure() || HasNonfatalFailure()) FAIL() << "seed " << seed << ", step " << step;
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
