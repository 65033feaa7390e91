// The system lets the file exports down: the n-th call of each kind fails, or falls short, for every n. The result is a stated one; the
// buffer, the table and the blocks of the pool are as stated; the file is the old one or the new one, whole, with nothing beside it; and
// the next call goes through.
#if !defined(_WIN32)

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>

#include "faults/fault_seam.h"
#include "faults/sweep.h"
#include "faults/system_faults.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "support/allocation_faults.h"
#include "support/workbook_file.h"
#include "tolvenar/tolvenar.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

// A call with the file that it finds; call.prepare makes what it holds in memory.
struct FileCall {
  Call call;
  void (*make_file)(Ground&);
  int32_t not_committed;  // what it answers when the file can't be put in place; 0: it writes none

  bool writes() const { return not_committed != 0; }
};

void PrintTo(const FileCall& one, std::ostream* out) {
  *out << one.call.name << " " << one.call.label;
}

namespace {

using enum Leaves;

constexpr int kMostCalls = 3000;
// A large stream, which lies in sectors of its own, and small ones, which share theirs.
constexpr uint32_t kLarge = 9000;

const Bytes kReference = {0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0,
                          0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
const Bytes kContents = {0xFF, 0x10, 4, 0, 1,    0,    0, 0, 0xFD, 0x10, 4, 0,
                         1,    0,    0, 0, 0xFE, 0x10, 4, 0, 0,    0,    0, 0};

void NoFile(Ground&) {}

void StampedBook(Ground& g) {
  OpenStream(g, TwoSheetBook(kBiff8, kLarge), kBiff8);
  ASSERT_EQ(::XLInsertReference(&g.buffer, g.table, &g.size, 7), 0);
  ASSERT_EQ(::XLSaveFile(g.Path().c_str(), &g.buffer, &g.table, &g.size), 0);
  ASSERT_TRUE(AddStream(g.Path(), "Notes", Bytes(100, 3)));
}

void SmallBook(Ground& g) {
  ASSERT_TRUE(WriteWorkbook(g.Path(), "Workbook", TwoSheetBook(kBiff8).Stream()));
}

void References(Ground& g) {
  ASSERT_TRUE(WriteWorkbook(g.Path(), "Contents", kContents));
  ASSERT_TRUE(AddStream(g.Path(), "1       ", kReference));
  ASSERT_TRUE(AddStream(g.Path(), "7       ", Bytes(kLarge, 1)));
}

void SetGeneration(Ground&) {
  BiffVersion = kBiff8;
}

// Another workbook than any file here holds.
void OtherBook(Ground& g) {
  OpenStream(g, TwoSheetBook(kBiff8, kLarge + 500), kBiff8);
}

void OtherReference(Ground& g) {
  g.buffer = StreamBuilder().Raw(kReference).Raw(Bytes{0xDB, 0x10, 4, 0, 9, 0, 0, 0}).Load(&g.size);
}

// Also that the table is released just where it is said to be.
int32_t SaveBook(Ground& g) {
  const int16_t result = ::XLSaveFile(g.Path().c_str(), &g.buffer, &g.table, &g.size);
  const bool kept = result == 4 || result == 101 || result == 102 || result == 111;
  EXPECT_EQ(g.table != 0, kept) << "after " << result;
  return result;
}

std::vector<FileCall> WorkbookFileCalls() {
  const auto open = [](Ground& g) { return ::XLOpenFile(g.Path().c_str(), &g.buffer, &g.size); };
  const auto numbers = [](Ground& g) { return ::DebugSaveFile(g.Path().c_str(), 5000); };
  const auto stamp = [](Ground& g) { return ::XLGetReference(g.Path().c_str()); };
  const std::vector<Failure> opening = {{101, kNone}, {102, kNone}, {5, kNone}, {6, kNone}};
  const std::vector<Failure> saving = {{4, kUnchanged}, {101, kLive}, {102, kLive}, {111, kLive},
                                       {103, kLive},    {6, kStale},  {105, kLive}};
  const std::vector<Failure> numbering = {{102, kNone}, {103, kNone}, {6, kNone}, {105, kNone}};
  const std::vector<Failure> stamping = {{-2, kNone}, {-3, kNone}, {-5, kNone}, {-7, kNone}};
  return {
      {{"XLOpenFile", "Large", Nothing, open, {0}, opening}, StampedBook, 0},
      {{"XLOpenFile", "Small", Nothing, open, {0}, opening}, SmallBook, 0},
      {{"XLSaveFile", "New", OtherBook, SaveBook, {0}, saving}, NoFile, 105},
      {{"XLSaveFile", "Existing", OtherBook, SaveBook, {0}, saving}, StampedBook, 105},
      {{"XLSaveFile", "ExistingSmall", OtherBook, SaveBook, {0}, saving}, SmallBook, 105},
      {{"DebugSaveFile", "New", Nothing, numbers, {0}, numbering}, NoFile, 105},
      {{"DebugSaveFile", "Existing", Nothing, numbers, {0}, numbering}, StampedBook, 105},
      {{"XLGetReference", "", SetGeneration, stamp, {7}, stamping}, StampedBook, 0},
  };
}

std::vector<FileCall> ReferenceFileCalls() {
  const auto create = [](Ground& g) { return ::XLCreateReference(g.Path().c_str()); };
  const auto drop = [](Ground& g) { return ::XLDeleteReference(g.Path().c_str(), 1); };
  const auto read = [](Ground& g) { return ::XLReadReference(g.Path().c_str(), &g.buffer, &g.size, 7); };
  const auto save = [](Ground& g) { return ::XLSaveReference(g.Path().c_str(), &g.buffer, &g.size, 1); };
  const std::vector<Failure> creating = {{-3, kNone},  {-11, kNone}, {-13, kNone}, {-15, kNone},
                                         {-20, kNone}, {-21, kNone}, {-24, kNone}, {-25, kNone},
                                         {-8, kNone},  {-26, kNone}, {-27, kNone}};
  const std::vector<Failure> dropping = {{-3, kNone},  {-11, kNone}, {-13, kNone}, {-15, kNone},
                                         {-20, kNone}, {-21, kNone}, {-24, kNone}, {-27, kNone}};
  const std::vector<Failure> reading = {{101, kNone}, {102, kNone}, {5, kNone}, {6, kNone}, {-10, kNone}};
  const std::vector<Failure> saving = {{4, kUnchanged}, {101, kLive}, {103, kLive}, {6, kNone}, {105, kLive}};
  return {
      {{"XLCreateReference", "", Nothing, create, {2}, creating}, References, -27},
      {{"XLDeleteReference", "", Nothing, drop, {0}, dropping}, References, -27},
      {{"XLReadReference", "", Nothing, read, {0}, reading}, References, 0},
      {{"XLSaveReference", "", OtherReference, save, {0}, saving}, References, 105},
  };
}

std::vector<FileCall> AllFileCalls() {
  std::vector<FileCall> calls = WorkbookFileCalls();
  for (const FileCall& one : ReferenceFileCalls()) calls.push_back(one);
  return calls;
}

// The file's bytes; nothing when there is no file.
std::optional<Bytes> File(const Ground& g) {
  if (!std::filesystem::exists(g.Path())) return std::nullopt;
  return FileBytes(g.Path());
}

// After -24 the new id is listed all the same, on purpose, and has no stream.
bool HasAnIdWithoutStream(const Ground& g) {
  const Bytes contents = {0xFF, 0x10, 4, 0, 2, 0, 0, 0, 0xFD, 0x10, 4, 0, 1, 0, 0, 0,
                          0xFD, 0x10, 4, 0, 2, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
  return ReadStream(g.Path(), "Contents") == contents && ReadStream(g.Path(), "1       ") == kReference &&
         ReadStream(g.Path(), "7       ") == Bytes(kLarge, 1) &&
         !ReadStream(g.Path(), "2       ").has_value();
}

class SystemFaults : public ::testing::TestWithParam<FileCall> {
 protected:
  void SetUp() override {
    Ground ground;
    GetParam().make_file(ground);
    ground.Release();
    old_ = File(ground);
    Renew(&ground);
    ASSERT_EQ(GetParam().call.done.count(GetParam().call.run(ground)), 1u);
    new_ = File(ground);
    ASSERT_EQ(old_ != new_, GetParam().writes());
  }

  // What the host holds, made anew; the file stays.
  static void Renew(Ground* ground) {
    MEMORYFREEALL();
    ground->buffer = ground->table = 0;
    GetParam().call.prepare(*ground);
  }

  // What must hold after a call with that result.
  void CheckFile(const Ground& ground, int32_t result, bool may_be_new, bool alone) const {
    const std::optional<Bytes> file = File(ground);
    if (GetParam().call.done.count(result) != 0) {
      EXPECT_TRUE(file == new_) << "a call that went through left no new file";
    } else if (GetParam().call.name == "XLCreateReference" && result == -24) {
      EXPECT_TRUE(file == old_ || HasAnIdWithoutStream(ground))
          << "after -24 the file is none that is stated";
    } else {
      EXPECT_TRUE(file == old_ || (may_be_new && file == new_))
          << "after " << result << " the file has changed";
    }
    if (alone) {
      EXPECT_EQ(ground.folder.Count(), file.has_value() ? 1u : 0u)
          << "after " << result << " something is left beside the file";
    }
  }

  // One call with a fault, and one more without. Returns whether the fault came about.
  template <typename MakeFault>
  bool TryFault(MakeFault make_fault, bool may_be_new, bool alone) {
    Ground ground;
    GetParam().make_file(ground);
    Renew(&ground);
    int32_t result = 0;
    bool fired = false;
    Call call = GetParam().call;
    call.run = [&](Ground& its) {
      const auto fault = make_fault();
      const int32_t its_result = GetParam().call.run(its);
      fired = fault->fired();
      return its_result;
    };
    RunOnce(call, &ground, 0, &result);
    CheckFile(ground, result, may_be_new, alone);
    results_.insert(result);
    if (File(ground) == old_) {
      Renew(&ground);
      RunOnce(GetParam().call, &ground, 0, &result);
      EXPECT_EQ(GetParam().call.done.count(result), 1u) << "the next call gives " << result;
      CheckFile(ground, result, false, true);
    }
    return fired;
  }

  // Lets the first call of the kind go wrong, then the second, until none is left. Returns how many there are.
  int FailEach(SystemCall kind, const Effect& effect) {
    // A folder that would not be brought to disk comes behind the new name. What can't be removed, or can't be told from another's
    // file, stays until the next call.
    const bool may_be_new = kind == SystemCall::kFlush;
    const bool others = kind == SystemCall::kLock && effect.error == EWOULDBLOCK;
    const bool alone = kind != SystemCall::kRemove && kind != SystemCall::kLook && !others;
    for (int n = 0; n < kMostCalls; ++n) {
      SCOPED_TRACE("call " + std::to_string(n) + ", error " + std::to_string(effect.error));
      const auto fault = [&] { return std::make_unique<SystemFault>(kind, effect, n); };
      if (!TryFault(fault, may_be_new, alone)) return n;
    }
    ADD_FAILURE() << "no end of calls";
    return kMostCalls;
  }

  // The same with each error, for one call and for good.
  int FailEachWith(SystemCall kind, std::initializer_list<int> errors) {
    int calls = 0;
    for (const int error : errors) {
      calls = FailEach(kind, {error, false});
      FailEach(kind, {error, true});
    }
    return calls;
  }

  // All results that were seen tell of a call that went through, or are `failure`.
  void ExpectOnlyDoneOr(int32_t failure) const {
    for (const int32_t result : results_) {
      EXPECT_TRUE(result == failure || GetParam().call.done.count(result) != 0) << result;
    }
  }

  std::optional<Bytes> old_;
  std::optional<Bytes> new_;
  std::set<int32_t> results_;
};

TEST_P(SystemFaults, OpenFails) {
  EXPECT_GE(FailEachWith(SystemCall::kOpen, {EACCES, EMFILE, EIO}), 1);
}

TEST_P(SystemFaults, ReadFails) {
  const int calls = FailEachWith(SystemCall::kRead, {EIO});
  EXPECT_EQ(calls > 0, old_.has_value());
}

TEST_P(SystemFaults, ReadFindsTheEndOfTheFile) {
  FailEach(SystemCall::kRead, {0, true});
  FailEach(SystemCall::kRead, {0, false});
}

TEST_P(SystemFaults, WriteFails) {
  const int calls = FailEachWith(SystemCall::kWrite, {ENOSPC, EIO, EFBIG});
  EXPECT_EQ(calls > 0, GetParam().writes());
  ExpectOnlyDoneOr(GetParam().not_committed);
}

TEST_P(SystemFaults, WriteMovesNothing) {
  FailEach(SystemCall::kWrite, {0, true});
}

TEST_P(SystemFaults, FlushFails) {
  const int calls = FailEachWith(SystemCall::kFlush, {EIO, ENOSPC});
  EXPECT_EQ(calls > 0, GetParam().writes());
  ExpectOnlyDoneOr(GetParam().not_committed);
}

TEST_P(SystemFaults, RoomIsRefused) {
  const int calls = FailEachWith(SystemCall::kRoom, {ENOSPC, EIO});
  EXPECT_EQ(calls > 0, GetParam().writes());
}

TEST_P(SystemFaults, NamingFails) {
  const int calls = FailEachWith(SystemCall::kName, {EIO, EACCES, ENOSPC});
  EXPECT_EQ(calls > 0, GetParam().writes());
  ExpectOnlyDoneOr(GetParam().not_committed);
}

TEST_P(SystemFaults, CutFails) {
  FailEachWith(SystemCall::kCut, {EIO});
}

TEST_P(SystemFaults, LockFails) {
  EXPECT_GE(FailEachWith(SystemCall::kLock, {ENOLCK, EWOULDBLOCK}), 1);
}

TEST_P(SystemFaults, LookFails) {
  EXPECT_GE(FailEachWith(SystemCall::kLook, {EIO, EACCES}), 1);
}

TEST_P(SystemFaults, RemovalFails) {
  FailEachWith(SystemCall::kRemove, {EIO});
}

// What a system does on an ordinary day is no failure.
TEST_P(SystemFaults, InterruptedAndPartialCalls_GoThrough) {
  for (const SystemCall kind : {SystemCall::kRead, SystemCall::kWrite}) {
    FailEach(kind, {EINTR, false});
    FailEach(kind, {0, true, Effect::kHalf});
    FailEach(kind, {0, false, Effect::kHalf});
  }
  for (const SystemCall kind : {SystemCall::kFlush, SystemCall::kRoom}) FailEach(kind, {EINTR, false});
  for (const int error : {EOPNOTSUPP, EINVAL}) FailEach(SystemCall::kRoom, {error, true});
  ExpectOnlyDoneOr(*GetParam().call.done.begin());
}

// The general allocator, whose failures the storage meets in its own tables.
TEST_P(SystemFaults, MemoryRefused) {
  for (const auto lasting : {AllocationFault::Lasting::kOnce, AllocationFault::Lasting::kForGood}) {
    int k = 0;
    const auto fault = [&] {
      return std::make_unique<AllocationFault>(k, AllocationFault::Requests::kAll, lasting);
    };
    while (k < kMostCalls && TryFault(fault, false, true)) {
      GiveLostSlots();
      ++k;
    }
    EXPECT_GT(k, 3);
    EXPECT_LT(k, kMostCalls);
  }
}

INSTANTIATE_TEST_SUITE_P(Exports, SystemFaults, ::testing::ValuesIn(AllFileCalls()), [](const auto& one) {
  const Call& call = one.param.call;
  return call.name + (call.label.empty() ? "" : "_" + call.label);
});

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
