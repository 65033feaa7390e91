// Memory that runs out at any place: a result, no crash, and the old file or the new one.
#if !defined(_WIN32)

#include <optional>

#include "platform/storage.h"
#include "support/allocation_faults.h"
#include "support/compound_check.h"
#include "support/storage_fixture.h"

namespace tolvenar::testing {
namespace {

class CompoundMemory : public StorageTest, public ::testing::WithParamInterface<bool> {
 protected:
  CompoundMemory() : StorageTest("/dev/shm") {}

  // Allocation number `count` fails, counted from 0; later ones too, if the parameter says so.
  void FailAt(int count) {
    fault_.emplace(count, AllocationFault::Requests::kAll,
                   GetParam() ? AllocationFault::Lasting::kForGood : AllocationFault::Lasting::kOnce);
  }

  // True when one has failed since.
  bool StopFailing() {
    const bool fired = fault_->fired();
    fault_.reset();
    return fired;
  }

  // Calls with nothing but what a host would allocate beforehand, so that only the library's allocations fail.
  static HRESULT PutOpened(platform::Storage* storage, const Bytes& bytes) {
    platform::Stream* stream = nullptr;
    HRESULT result = platform::StorageCreateStream(storage, u"s", platform::kModeReplace, &stream);
    uint32_t moved = 0;
    if (result == S_OK) {
      result = platform::StreamWrite(stream, bytes.data(), static_cast<uint32_t>(bytes.size()), &moved);
    }
    platform::StreamRelease(stream);
    const HRESULT committed = platform::StorageCommit(storage, 0);
    return result == S_OK ? committed : result;
  }

  static HRESULT ReadOpened(platform::Storage* storage, Bytes* bytes) {
    platform::Stream* stream = nullptr;
    HRESULT result = platform::StorageOpenStream(storage, u"s", platform::kModeExclusive, &stream);
    uint32_t moved = 0;
    if (result == S_OK) {
      result = platform::StreamRead(stream, bytes->data(), static_cast<uint32_t>(bytes->size()), &moved);
    }
    platform::StreamRelease(stream);
    return result;
  }

 private:
  std::optional<AllocationFault> fault_;
};

TEST_P(CompoundMemory, Save_ThatRunsOut_LeavesTheOldFile) {
  const std::string path = Make("file", {{"kept", Pattern(5000)}, {"s", Pattern(100, 1)}});
  const std::u16string wide = Widen(path);
  const Bytes before = ReadFile(path);
  const Bytes fresh = Pattern(9000, 2);
  int refused = 0;
  for (int count = 0;; ++count) {
    platform::Storage* storage = nullptr;
    FailAt(count);
    HRESULT result = platform::StorageOpen(wide.c_str(), platform::kModeExclusive, &storage);
    if (result == S_OK) result = PutOpened(storage, fresh);
    platform::StorageRelease(storage);
    if (!StopFailing()) break;
    ++refused;
    ASSERT_EQ(result, platform::kStgInsufficientMemory) << count;
    ASSERT_TRUE(ReadFile(path) == before) << count;
    ASSERT_EQ(Listing().size(), 1u) << count;
  }
  EXPECT_GT(refused, 10);
  EXPECT_TRUE(StreamOf(path, "s") == fresh);
}

TEST_P(CompoundMemory, Create_ThatRunsOut_LeavesNoFile) {
  const std::u16string wide = Widen(Path("file"));
  const Bytes fresh = Pattern(100);
  for (int count = 0;; ++count) {
    platform::Storage* storage = nullptr;
    FailAt(count);
    HRESULT result = platform::StorageCreate(wide.c_str(), platform::kModeExclusive, &storage);
    if (result == S_OK) result = PutOpened(storage, fresh);
    platform::StorageRelease(storage);
    if (!StopFailing()) break;
    ASSERT_EQ(result, platform::kStgInsufficientMemory) << count;
    ASSERT_TRUE(Listing().empty()) << count;
  }
  EXPECT_EQ(StreamOf(Path("file"), "s"), fresh);
}

TEST_P(CompoundMemory, Read_ThatRunsOut_SaysSo) {
  const std::string path = Make("file", {{"s", Pattern(100, 1)}});
  const std::u16string wide = Widen(path);
  Bytes bytes(100);
  for (int count = 0;; ++count) {
    platform::Storage* storage = nullptr;
    FailAt(count);
    HRESULT result = platform::StorageOpen(wide.c_str(), platform::kModeExclusive, &storage);
    if (result == S_OK) result = ReadOpened(storage, &bytes);
    platform::StorageRelease(storage);
    if (!StopFailing()) break;
    ASSERT_EQ(result, platform::kStgInsufficientMemory) << count;
  }
  EXPECT_EQ(bytes, Pattern(100, 1));
}

INSTANTIATE_TEST_SUITE_P(OnceAndForGood, CompoundMemory, ::testing::Bool());

class CompoundMemoryBound : public StorageTest {};

// A file may claim what it likes: memory is taken only for what it holds.
// Reads a byte of each of the two streams, and writes one into the small one; whether that can be done does not matter.
void TouchStreams(platform::Storage* storage, size_t at) {
  uint8_t byte = 0;
  for (const char16_t* name : {u"s", u"mini"}) {
    platform::Stream* stream = nullptr;
    EXPECT_EQ(platform::StorageOpenStream(storage, name, platform::kModeExclusive, &stream), S_OK) << at;
    EXPECT_LE(platform::StreamRead(stream, &byte, 1, nullptr), S_OK) << at;
    if (name[0] == u'm') {
      EXPECT_LE(platform::StreamWrite(stream, &byte, 1, nullptr), S_OK) << at;
    }
    platform::StreamRelease(stream);
  }
}

TEST_F(CompoundMemoryBound, HugeClaims_TakeNoMemory) {
  CompoundBuilder builder;
  builder.AddStream("s", Pattern(5000));
  builder.AddStream("mini", Pattern(100));
  const CompoundImage image = builder.Build();
  const std::u16string path = Widen(Path("file"));
  const size_t kCounts[] = {
      40, 44, 64, 72, image.EntryAt(0) + 120, image.EntryAt(1) + 120, image.EntryAt(2) + 120};
  for (const size_t at : kCounts) {
    CompoundImage damaged = image;
    damaged.PutU32(at, 0x7FFFFFFF);
    WriteFile(Path("file"), damaged.bytes);
    platform::Storage* storage = nullptr;
    ForgetRequests();
    if (platform::StorageOpen(path.c_str(), platform::kModeExclusive, &storage) == S_OK)
      TouchStreams(storage, at);
    platform::StorageRelease(storage);
    EXPECT_LE(LargestRequest(), image.bytes.size()) << at;
  }
}

// Told before a byte of the stream is looked at: it is not there at all.
TEST_F(CompoundMemoryBound, StreamThatWouldMakeTheFileLargerThanTheFormatAllows_IsRefused) {
  const uint8_t byte = 0;
  for (const uint32_t size : {4194302u * 512, 0x7FFFFF00u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    OpenFile file;
    ASSERT_EQ(file.Create(Path("file")), S_OK);
    platform::Stream* stream = nullptr;
    ASSERT_EQ(platform::StorageCreateStream(file.storage, u"s", platform::kModeExclusive, &stream), S_OK);
    EXPECT_EQ(platform::StreamWriteLent(stream, &byte, size, nullptr), platform::kStgMediumFull) << size;
    platform::StreamRelease(stream);
  }
}

}  // namespace
}  // namespace tolvenar::testing

#endif  // !_WIN32
